// SPDX-License-Identifier: LGPL-3.0-or-later

#include "traceview.h"

#include "traceranges_p.h"

#include <norvu/gui/trace.h>

#include <tellarix/qt/records/recordwidget.h>

namespace Norvu {
namespace Gui {

using Tellarix::Gui::RecordWidget;

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
    WindowOfRow window;
    if (byWindow)
        window = [this](const RecordWidget *widget) { return windowOf(widget); };
    const auto common = commonAmplitudeRange(_items, window);
    return visitRows([&](Trace *row) {
        RecordWidget *widget = row->recordWidget();
        const double scale = displayedScale(widget);
        widget->setAmplRange(common.first / scale, common.second / scale);
    });
}

} // namespace Gui
} // namespace Norvu
