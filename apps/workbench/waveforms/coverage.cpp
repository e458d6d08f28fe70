// SPDX-License-Identifier: LGPL-3.0-or-later

#include "coverage.h"

#include "datastretches.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/recordsequence.h>
#include <tellarix/qt/records/recordwidget.h>

#include <algorithm>

using namespace Tellarix;
using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace Workbench {

namespace {

/** Shorter gaps count as data. */
constexpr double ShortestGap = 1;

QVector<Core::TimeWindow> recordWindows(const Gui::RecordWidget &widget)
{
    QVector<Core::TimeWindow> windows;
    for (int slot = 0; slot < widget.slotCount(); ++slot) {
        if (!widget.records(slot))
            continue;
        for (const RecordCPtr &record : *widget.records(slot))
            windows.append(record->timeWindow());
    }
    return windows;
}

/** From the first to the last sample that a row holds. */
Core::TimeWindow heldWindow(const Gui::RecordWidget &widget)
{
    Core::TimeWindow held;
    for (int slot = 0; slot < widget.slotCount(); ++slot) {
        if (widget.records(slot) && !widget.records(slot)->isEmpty())
            held = held.united(widget.records(slot)->timeWindow());
    }
    return held;
}

/** Whether any of some disjoint, ascending windows overlaps @p window. */
bool overlapsAny(const QVector<Core::TimeWindow> &windows, const Core::TimeWindow &window)
{
    const auto next = std::upper_bound(
        windows.begin(), windows.end(), window.startTime(),
        [](const Core::Time &time, const Core::TimeWindow &item) { return time < item.endTime(); });
    return next != windows.end() && next->overlaps(window);
}

} // namespace

void Coverage::collect(const TraceView &view)
{
    clear();
    for (const Trace *row : view.items()) {
        const auto windows =
            mergedWindows(recordWindows(*row->recordWidget()), Core::TimeSpan(ShortestGap));
        _rows.insert(row, windows);
    }
    summarize();
}

void Coverage::add(const Trace *row, const QVector<Core::TimeWindow> &windows)
{
    QVector<Core::TimeWindow> all =
        mergedWindows(_rows.value(row) + windows, Core::TimeSpan(ShortestGap));
    const Core::TimeWindow held = heldWindow(*row->recordWidget());
    while (!all.isEmpty() && all.first().endTime() <= held.startTime())
        all.removeFirst();
    if (!all.isEmpty())
        all.first() = all.first().overlap(held);
    _rows.insert(row, all);
}

void Coverage::summarize()
{
    _windows.clear();
    for (const auto &windows : qAsConst(_rows))
        _windows += windows;
    _stretches = dataStretches(_windows);
    _windows = mergedWindows(_windows, Core::TimeSpan());
}

void Coverage::clear()
{
    _rows.clear();
    _windows.clear();
    _stretches.clear();
}

bool Coverage::hasData(const Trace *row, const Core::TimeWindow &window) const
{
    return overlapsAny(_rows.value(row), window);
}

bool Coverage::hasData(const Core::TimeWindow &window) const
{
    return overlapsAny(_windows, window);
}

Core::TimeWindow Coverage::extent() const
{
    return _windows.isEmpty()
               ? Core::TimeWindow()
               : Core::TimeWindow(_windows.first().startTime(), _windows.last().endTime());
}

} // namespace Workbench
