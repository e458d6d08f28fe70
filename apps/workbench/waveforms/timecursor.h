// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/overlay.h>

#include <tellarix/core/time.h>

#include <QPoint>
#include <QRect>
#include <QTimer>

class QScrollArea;

namespace Norvu {
namespace Gui {
class MultiTraceWidget;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class Bench;

/**
 * The time of the selection as a line through all rows of a view, or through the overview in their
 * place. A click on either chooses the time, and Escape takes it away.
 */
class TimeCursor : public Norvu::Gui::Overlay
{
    Q_OBJECT

public:
    /** Lies over the rows of @p view, which owns it. */
    TimeCursor(Bench *bench, Norvu::Gui::TraceView *view);

    /** Where the line is, in the rows' part of the view; empty while the time is out of sight. */
    const QRect &line() const { return _line; }

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private slots:
    void watchRows();
    void updateLine();
    void choose(const Tellarix::Core::Time &time);
    void clearTime();

private:
    Norvu::Gui::MultiTraceWidget *overview() const;
    QRect plotArea() const;
    bool isTurned() const;
    Tellarix::Core::Time timeAt(const QPoint &position) const;
    bool filterOverviewEvent(QEvent *event);

    Bench *_bench;
    Norvu::Gui::TraceView *_view;
    QScrollArea *_scrollArea;
    QTimer _rowsTimer;
    QRect _line;
    QPoint _press; /**< of the left button on the overview */
};

} // namespace Workbench
