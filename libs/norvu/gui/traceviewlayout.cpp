// SPDX-License-Identifier: LGPL-3.0-or-later

#include "traceview.h"

#include "rowstack_p.h"
#include "traceranges_p.h"

#include <norvu/gui/trace.h>

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
    return coveredWindow(_items);
}

void TraceView::setCoveredTimeRange()
{
    const auto range = coveredRange(_items);
    setTimeRange(range.first, range.first == range.second ? range.first + 1.0 : range.second);
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
