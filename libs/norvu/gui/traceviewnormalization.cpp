// SPDX-License-Identifier: LGPL-3.0-or-later

#include "traceview.h"

#include <norvu/gui/trace.h>

#include <tellarix/core/records/recordsequence.h>
#include <tellarix/qt/records/recordwidget.h>

#include <algorithm>
#include <cmath>

namespace Norvu {
namespace Gui {

using Tellarix::Gui::RecordWidget;

namespace {

using Range = std::pair<double, double>;

/** Scales of reversed polarity swap the ends of a range: taken as they come, lower and upper ends
 * of several rows would cut off what these rows show. */
Range inOrder(double a, double b)
{
    return std::minmax({a, b});
}

/** Factor of the displayed slot from samples to physical values, 1 if there is no usable one. */
double displayedScale(const RecordWidget *widget)
{
    const double *scale = widget->recordScale(widget->currentRecords());
    return scale && *scale != 0.0 && std::isfinite(*scale) ? *scale : 1.0;
}

const Tellarix::RecordSequence *normalizedRecords(const RecordWidget *widget)
{
    const int slot = widget->currentRecords();
    // What is still being filtered is shown raw, and has to fit into the row until it is done.
    if (widget->isFilteringInProgress())
        return widget->displayedRecords(slot);
    return widget->isFilteringEnabled() ? widget->filteredRecords(slot) : widget->records(slot);
}

} // namespace

void TraceView::setNormalizionMode(NormalizationModes mode)
{
    if (mode == _normMode)
        return;

    _normMode = mode;
    updateTraceNormalization();
}

void TraceView::setWindowNormalization(bool enable)
{
    NormalizationModes mode = _normMode;
    setNormalizionMode(mode.setFlag(WindowNormalization, enable));
}

void TraceView::setAllTracesNormalization(bool enable)
{
    NormalizationModes mode = _normMode;
    setNormalizionMode(mode.setFlag(AllTracesNormalization, enable));
}

void TraceView::updateTraceNormalization()
{
    setTimeRange(_tmin, _tmax);
}

/** Normalizes the rows, which tell of it; false if the view is gone. */
bool TraceView::applyNormMode()
{
    const bool byWindow = _normMode.testFlag(WindowNormalization);
    const bool common = _normMode.testFlag(AllTracesNormalization);
    if (common && !applyCommonAmplitudeRange())
        return false;

    return visitRows([&](Trace *row) {
        const QPointer<RecordWidget> widget(row->recordWidget());
        widget->setAmplAutoScaleEnabled(!common);
        if (widget)
            widget->setNormalizationWindow(byWindow ? windowOf(widget)
                                                    : Tellarix::Core::TimeWindow());
    });
}

bool TraceView::applyCommonAmplitudeRange()
{
    const bool byWindow = _normMode.testFlag(WindowNormalization);
    bool isFirst = true;
    Range common{0.0, 0.0};
    for (Trace *row : std::as_const(_items)) {
        const RecordWidget *widget = row->recordWidget();
        const Tellarix::RecordSequence *records = normalizedRecords(widget);
        if (!records)
            continue;

        const Tellarix::Core::TimeWindow window = windowOf(widget);
        const Range samples = records->amplitudeRange(byWindow ? &window : nullptr);
        const double scale = displayedScale(widget);
        const Range range = inOrder(samples.first * scale, samples.second * scale);
        common.first = isFirst ? range.first : std::min(common.first, range.first);
        common.second = isFirst ? range.second : std::max(common.second, range.second);
        isFirst = false;
    }

    return visitRows([&](Trace *row) {
        RecordWidget *widget = row->recordWidget();
        const double scale = displayedScale(widget);
        widget->setAmplRange(common.first / scale, common.second / scale);
    });
}

} // namespace Gui
} // namespace Norvu
