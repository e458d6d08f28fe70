// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>

class QScrollArea;

namespace Norvu {
namespace Gui {
class Trace;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

/** Keeps the current row in sight where rows are sorted, grouped, or made higher, and else the
 * first one that is in sight at its place. Only the user scrolls them away. */
class CurrentRow : public QObject
{
    Q_OBJECT

public:
    /** @param view  owns this object */
    explicit CurrentRow(Norvu::Gui::TraceView *view);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private slots:
    void watch(Norvu::Gui::Trace *old, Norvu::Gui::Trace *row);
    void look();

private:
    bool isInSight(const Norvu::Gui::Trace &row) const;
    int topOf(const Norvu::Gui::Trace &row) const;
    void noteFirst();
    void restoreFirst();

    Norvu::Gui::TraceView *_view;
    QScrollArea *_area;
    QWidget *_rows; /**< what is scrolled */
    QTimer _timer;
    bool _hasMoved{false}; /**< among the rows, since look() */
    bool _wasInSight{false};
    QPointer<Norvu::Gui::Trace> _first; /**< of those in sight, unless nothing is scrolled */
    int _firstTop{0};                   /**< in the view port */
};

} // namespace Workbench
