// SPDX-License-Identifier: LGPL-3.0-or-later

#include "traceview.h"

#include "rowstack_p.h"

#include <norvu/gui/trace.h>

#include <tellarix/core/records/recordsequence.h>
#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/records/timescale.h>

#include <QLayout>
#include <QScrollArea>

#include <algorithm>
#include <cmath>

namespace Norvu {
namespace Gui {

using Tellarix::Core::TimeSpan;
using Tellarix::Core::TimeWindow;
using Tellarix::Gui::RecordWidget;

namespace {

/** Calls @p visit(widget, window) for the window of each slot of @p rows that holds records. */
template <typename Visitor>
void visitCoveredWindows(const QList<Trace *> &rows, Visitor visit)
{
    for (Trace *row : rows) {
        const RecordWidget *widget = row->recordWidget();
        for (int slot = 0; slot < widget->slotCount(); ++slot) {
            const Tellarix::RecordSequence *records = widget->records(slot);
            if (records && !records->isEmpty())
                visit(widget, records->timeWindow());
        }
    }
}

/** The window that a view of the length of @p visible has to show to bring @p window into sight. */
TimeWindow windowShowing(const TimeWindow &window, TimeWindow visible, bool center)
{
    const TimeSpan length = visible.length();
    if (window.startTime() < visible.startTime())
        visible.set(window.startTime(), window.startTime() + length);
    else if (window.endTime() > visible.endTime())
        visible.set(window.endTime() - length, window.endTime());

    if (window.startTime() < visible.startTime())
        visible.setStartTime(window.startTime());
    if (window.endTime() > visible.endTime())
        visible.setEndTime(window.endTime());

    const TimeSpan shown = visible.length();
    if (!center || window.length() >= shown)
        return visible;
    return TimeWindow(window.startTime() - (shown - window.length()) / 2.0, shown);
}

} // namespace

void TraceView::changeItems(const std::function<void()> &change)
{
    _contents->changeTogether(change);
}

void TraceView::setMinimumRowHeight(int height)
{
    _minRowHeight = height;
    for (Trace *row : std::as_const(_items))
        row->recordWidget()->setMinimumHeight(height);
}

void TraceView::setColorIndicatorEnabled(bool enable)
{
    if (enable == _colorIndicator)
        return;

    _colorIndicator = enable;
    const int barWidth = enable ? ColorBarWidth : 0;
    for (Trace *row : std::as_const(_items))
        row->setColorBarWidth(barWidth);

    updateRulerSpacing();
}

void TraceView::updateRulerSpacing()
{
    const int width = Trace::FixedLabelWidth(_colorIndicator ? ColorBarWidth : 0) + _nameWidth;
    if (_rulerSpacer->width() > _rulerSpacer->height())
        _rulerSpacer->setFixedSize(width, 0);
    else
        _rulerSpacer->setFixedSize(0, width);
    emit rulerSpacingChanged(width);
}

void TraceView::setNameWidth(int pixels)
{
    if (pixels == _nameWidth)
        return;

    _nameWidth = pixels;
    for (Trace *row : std::as_const(_items))
        applyNameWidth(row);
    updateRulerSpacing();
}

void TraceView::applyNameWidth(Trace *row) const
{
    row->setSpacing(Trace::FixedLabelWidth(0) + _nameWidth);
}

int TraceView::rulerSpacing() const
{
    return std::max(_rulerSpacer->width(), _rulerSpacer->height());
}

void TraceView::setExtraSpacing(int pixels)
{
    _extraSpacer->setFixedSize(pixels, pixels);
}

int TraceView::extraSpacing() const
{
    return _extraSpacer->width();
}

void TraceView::setTimeScaleVisible(bool visible)
{
    _timeScale->parentWidget()->setVisible(visible);
}

void TraceView::alignTimeScale()
{
    // A scroll bar takes room from the rows: the time scale must end where they do.
    const int scrollBarWidth = _scrollArea->width() - _scrollArea->viewport()->width();
    QLayout *layout = _timeScale->parentWidget()->layout();
    QMargins margins = layout->contentsMargins();
    margins.setRight(Trace::Padding() + std::max(scrollBarWidth, 0));
    layout->setContentsMargins(margins);
}

void TraceView::setAlignment(Tellarix::Core::Time time)
{
    for (Trace *row : std::as_const(_items))
        row->recordWidget()->setAlignment(time);
    const QPointer<TraceView> alive(this);
    _timeScale->setAlignment(time);
    if (alive)
        emit alignmentChanged(time);
}

void TraceView::setTimeRange(double tmin, double tmax)
{
    if (!std::isfinite(tmin) || !std::isfinite(tmax))
        return;

    _tmin = tmin;
    _tmax = tmax;
    const int width = _timeScale->width();
    if (width < 1)
        return;

    const double length = tmax - tmin;
    const QPointer<TraceView> alive(this);
    if (applyNormMode())
        _timeScale->setScale(width / (length > 0 ? length : 1.0));
    if (alive)
        _timeScale->setRange(tmin, tmax);
    if (!alive)
        return;

    // The ruler limits what it is asked for.
    _tmin = _timeScale->lower();
    _tmax = _timeScale->upper();
    const double scale = _timeScale->scale();
    for (Trace *row : std::as_const(_items)) {
        row->recordWidget()->setTimeScale(scale);
        row->recordWidget()->setTimeRange(_tmin, _tmax);
    }
    emit displayChanged(_tmin, _tmax, scale);
}

void TraceView::prepareVisibleRows()
{
    QVector<RecordWidget *> widgets;
    for (Trace *row : std::as_const(_items)) {
        if (!row->recordWidget()->visibleRegion().isEmpty())
            widgets.append(row->recordWidget());
    }
    RecordWidget::prepare(widgets);
}

void TraceView::setVisibleTimeWindow(TimeWindow window)
{
    setTimeRange(_timeScale->valueOf(window.startTime()), _timeScale->valueOf(window.endTime()));
}

TimeWindow TraceView::visibleTimeWindow() const
{
    return TimeWindow(_timeScale->timeAt(_tmin), _timeScale->timeAt(_tmax));
}

TimeWindow TraceView::windowOf(const RecordWidget *widget) const
{
    const Tellarix::Core::Time alignment = widget->alignment();
    return TimeWindow(alignment + TimeSpan(_tmin), alignment + TimeSpan(_tmax));
}

TimeWindow TraceView::coveredTimeWindow() const
{
    TimeWindow covered;
    visitCoveredWindows(_items, [&covered](const RecordWidget *, const TimeWindow &window) {
        covered = covered.united(window);
    });
    return covered;
}

void TraceView::setCoveredTimeRange()
{
    bool isFirst = true;
    double minimum = 0.0;
    double maximum = 0.0;
    visitCoveredWindows(_items, [&](const RecordWidget *widget, const TimeWindow &window) {
        const double start = (window.startTime() - widget->alignment()).length();
        const double end = (window.endTime() - widget->alignment()).length();
        minimum = isFirst ? start : std::min(minimum, start);
        maximum = isFirst ? end : std::max(maximum, end);
        isFirst = false;
    });
    setTimeRange(minimum, minimum == maximum ? minimum + 1.0 : maximum);
}

void TraceView::resetView()
{
    const QPointer<TraceView> alive(this);
    setAlignment(_timeScale->alignment());
    if (alive)
        setCoveredTimeRange();
    if (alive)
        emit viewReset();
}

void TraceView::ensureVisible(const Trace *row)
{
    if (!row)
        return;

    const QRect geometry = row->geometry();
    _scrollArea->ensureVisible(geometry.x() + geometry.width() / 2,
                               geometry.y() + geometry.height() / 2, geometry.width() / 2,
                               geometry.height() / 2);
}

void TraceView::ensureVisible(TimeWindow window, bool center)
{
    if (!window.valid())
        return;

    setVisibleTimeWindow(windowShowing(window, visibleTimeWindow(), center));
}

void TraceView::changedTimeInterval(double dA, double dT, double ofs)
{
    for (Trace *row : std::as_const(_items))
        row->recordWidget()->setGridSpacing(dA, dT, ofs);
}

} // namespace Gui
} // namespace Norvu
