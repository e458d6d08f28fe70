// SPDX-License-Identifier: LGPL-3.0-or-later

#include "timecursor.h"

#include "bench/bench.h"
#include "bench/selection.h"

#include <norvu/gui/multitracewidget.h>
#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/scheme.h>

#include <QAction>
#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollArea>

#include <algorithm>
#include <cmath>

using namespace Tellarix;
using Norvu::Gui::MultiTraceWidget;
using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace Workbench {

TimeCursor::TimeCursor(Bench *bench, TraceView *view)
    : Overlay(view->findChild<QScrollArea *>()->viewport()), _bench(bench), _view(view),
      _scrollArea(view->findChild<QScrollArea *>())
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    // What is chosen goes with the selection of rows.
    for (const QAction *action : _view->actions()) {
        if (action->shortcut() == QKeySequence(Qt::Key_Escape))
            connect(action, SIGNAL(triggered()), this, SLOT(clearTime()));
    }
    connect(_bench->selection(), SIGNAL(timeChanged()), this, SLOT(updateLine()));
    // Once for any number of rows that are added one by one.
    _rowsTimer.setSingleShot(true);
    connect(&_rowsTimer, SIGNAL(timeout()), this, SLOT(watchRows()));
    connect(_view, SIGNAL(layoutOrContentChanged()), &_rowsTimer, SLOT(start()));
    connect(_view, SIGNAL(displayChanged(double, double, double)), this, SLOT(updateLine()));
    connect(_view, SIGNAL(alignmentChanged(Tellarix::Core::Time)), this, SLOT(updateLine()));
    connect(_view, SIGNAL(rulerSpacingChanged(int)), this, SLOT(updateLine()));
    watchRows();
}

void TimeCursor::watchRows()
{
    for (const Trace *row : _view->items())
        connect(row->recordWidget(), SIGNAL(timeClicked(Tellarix::Core::Time)), this,
                SLOT(choose(Tellarix::Core::Time)), Qt::UniqueConnection);
    if (overview())
        overview()->installEventFilter(this);
    raise();
    updateLine();
}

/** Clicks with other keys are about rows alone. */
void TimeCursor::choose(const Core::Time &time)
{
    if (QApplication::keyboardModifiers() == Qt::NoModifier)
        _bench->selection()->setTime(time);
}

void TimeCursor::clearTime()
{
    _bench->selection()->setTime(Core::Time());
}

/** The overview while it stands in the place of the rows, else null. */
MultiTraceWidget *TimeCursor::overview() const
{
    return qobject_cast<MultiTraceWidget *>(_scrollArea->widget());
}

bool TimeCursor::isTurned() const
{
    return overview() && overview()->orientation() == Qt::Horizontal;
}

/** Where time runs from the start of the visible window to its end, in the cursor's pixels. */
QRect TimeCursor::plotArea() const
{
    if (const MultiTraceWidget *widget = overview()) {
        return widget->drawingArea().translated(mapFromGlobal(widget->mapToGlobal(QPoint())));
    }
    const QList<Trace *> rows = _view->items();
    const auto row = std::find_if(rows.begin(), rows.end(),
                                  [](const Trace *candidate) { return candidate->isVisible(); });
    if (row == rows.end())
        return QRect();
    const Gui::RecordWidget *widget = (*row)->recordWidget();
    const QRect canvas =
        widget->canvasRect().translated(mapFromGlobal(widget->mapToGlobal(QPoint())));
    return QRect(canvas.left(), 0, canvas.width(), height());
}

void TimeCursor::updateLine()
{
    const Core::Time time = _bench->selection()->time();
    const Core::TimeWindow visible = _view->visibleTimeWindow();
    const QRect area = plotArea();
    QRect line;
    if (time.valid() && !visible.isEmpty() && !area.isEmpty()) {
        const double share = (time - visible.startTime()).length() / visible.length().length();
        if (share >= 0 && share < 1) {
            line =
                isTurned()
                    ? QRect(area.left(), area.top() + int(share * area.height()), area.width(), 1)
                    : QRect(area.left() + int(share * area.width()), area.top(), 1, area.height());
        }
    }
    if (line == _line)
        return;
    update(QRegion(_line) + line);
    _line = line;
}

void TimeCursor::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(_line, Gui::Scheme::Current().records.cursor);
}

void TimeCursor::resizeEvent(QResizeEvent *event)
{
    Overlay::resizeEvent(event);
    updateLine();
}

Core::Time TimeCursor::timeAt(const QPoint &position) const
{
    const QRect area = plotArea();
    const Core::TimeWindow visible = _view->visibleTimeWindow();
    if (area.isEmpty() || !area.contains(position))
        return Core::Time();
    const double share = isTurned() ? (position.y() - area.top()) / double(area.height())
                                    : (position.x() - area.left()) / double(area.width());
    return visible.startTime() + visible.length() * share;
}

/** The overview selects rows by itself. */
bool TimeCursor::filterOverviewEvent(QEvent *event)
{
    if (event->type() == QEvent::Resize || event->type() == QEvent::Paint)
        updateLine();
    if (event->type() != QEvent::MouseButtonPress && event->type() != QEvent::MouseButtonRelease)
        return false;
    const auto *mouse = static_cast<const QMouseEvent *>(event);
    if (mouse->button() != Qt::LeftButton)
        return false;
    if (event->type() == QEvent::MouseButtonPress) {
        _press = mouse->globalPos();
        return false;
    }
    const Core::Time time = timeAt(mapFromGlobal(_press));
    if (time.valid() &&
        (mouse->globalPos() - _press).manhattanLength() < QApplication::startDragDistance())
        choose(time);
    return false;
}

bool TimeCursor::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == overview())
        return filterOverviewEvent(event);
    // The widget in the place of the rows is known only when it has settled there.
    if (watched == parent() && event->type() == QEvent::ChildAdded)
        QMetaObject::invokeMethod(this, "watchRows", Qt::QueuedConnection);
    return Overlay::eventFilter(watched, event);
}

} // namespace Workbench
