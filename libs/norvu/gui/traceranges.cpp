// SPDX-License-Identifier: LGPL-3.0-or-later

#include "traceranges_p.h"

#include <norvu/gui/trace.h>

#include <tellarix/core/records/recordsequence.h>
#include <tellarix/qt/records/recordwidget.h>

#include <algorithm>
#include <cmath>

namespace Norvu {
namespace Gui {

using Tellarix::Core::TimeSpan;
using Tellarix::Core::TimeWindow;
using Tellarix::Gui::RecordWidget;

namespace {

using Range = std::pair<double, double>;

/** Scales of reversed polarity swap the ends of a range: taken as they come, lower and upper ends
 * of several rows would cut off what these rows show. */
Range inOrder(double a, double b)
{
    return std::minmax({a, b});
}

const Tellarix::RecordSequence *normalizedRecords(const RecordWidget *widget)
{
    const int slot = widget->currentRecords();
    // What is still being filtered is shown raw, and has to fit into the row until it is done.
    if (widget->isFilteringInProgress())
        return widget->displayedRecords(slot);
    return widget->isFilteringEnabled() ? widget->filteredRecords(slot) : widget->records(slot);
}

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

} // namespace

double displayedScale(const RecordWidget *widget)
{
    const double *scale = widget->recordScale(widget->currentRecords());
    return scale && *scale != 0.0 && std::isfinite(*scale) ? *scale : 1.0;
}

Range commonAmplitudeRange(const QList<Trace *> &rows, const WindowOfRow &windowOf)
{
    bool isFirst = true;
    Range common{0.0, 0.0};
    for (const Trace *row : rows) {
        const RecordWidget *widget = row->recordWidget();
        const Tellarix::RecordSequence *records = normalizedRecords(widget);
        if (!records)
            continue;

        const TimeWindow window = windowOf ? windowOf(widget) : TimeWindow();
        const Range samples = records->amplitudeRange(windowOf ? &window : nullptr);
        const double scale = displayedScale(widget);
        const Range range = inOrder(samples.first * scale, samples.second * scale);
        common.first = isFirst ? range.first : std::min(common.first, range.first);
        common.second = isFirst ? range.second : std::max(common.second, range.second);
        isFirst = false;
    }
    return common;
}

TimeWindow coveredWindow(const QList<Trace *> &rows)
{
    TimeWindow covered;
    visitCoveredWindows(rows, [&covered](const RecordWidget *, const TimeWindow &window) {
        covered = covered.united(window);
    });
    return covered;
}

Range coveredRange(const QList<Trace *> &rows)
{
    bool isFirst = true;
    Range range{0.0, 0.0};
    visitCoveredWindows(rows, [&](const RecordWidget *widget, const TimeWindow &window) {
        const double start = (window.startTime() - widget->alignment()).length();
        const double end = (window.endTime() - widget->alignment()).length();
        range.first = isFirst ? start : std::min(range.first, start);
        range.second = isFirst ? end : std::max(range.second, end);
        isFirst = false;
    });
    return range;
}

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

} // namespace Gui
} // namespace Norvu
