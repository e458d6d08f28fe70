// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QObject>
#include <QTimer>

namespace Norvu {
namespace Gui {
class Trace;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class RowAddition;
class TraceRows;

/** What stands at the right of all rows of a view, equally wide, and the height that it needs. */
class RowMargins : public QObject
{
    Q_OBJECT

public:
    /** @param rows  tells what is added to rows */
    RowMargins(Norvu::Gui::TraceView *view, TraceRows *rows);

    /** An amplitude ruler with the unit. */
    void setRulersShown(bool show);
    /** Height of rows while nothing is added to them, in pixels. */
    void setRowHeight(int height);

public slots:
    /** To be called when there are other rows. */
    void update();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private slots:
    void followAddition();
    void updateRest();
    void updateWidths();

private:
    bool isAnyAdditionShown() const;
    void update(Norvu::Gui::Trace *row, RowAddition *addition);
    int neededHeight() const;
    void applyRowHeight();

    Norvu::Gui::TraceView *_view;
    TraceRows *_rows;
    QTimer _timer; /**< other widths settle until it ends */
    bool _rulersShown{false};
    bool _hasAdditions{false};
    bool _isRaised{false}; /**< rows are higher for what stands beside them */
    int _rowHeight{0};
};

} // namespace Workbench
