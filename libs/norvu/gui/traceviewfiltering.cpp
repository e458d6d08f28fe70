// SPDX-License-Identifier: LGPL-3.0-or-later

#include "traceview.h"

#include "filteringcount_p.h"

#include <norvu/gui/trace.h>

#include <tellarix/qt/records/recordwidget.h>

#include <utility>

namespace Norvu {
namespace Gui {

using Tellarix::Gui::RecordWidget;

void TraceView::setFilter(Tellarix::Math::Filtering::InPlaceFilter<double> *filter)
{
    if (filter != _filter)
        delete std::exchange(_filter, filter);

    if (changeFiltering([this](RecordWidget *widget) { widget->setFilter(_filter); }) &&
        applyNormMode())
        emit layoutOrContentChanged();
}

void TraceView::setFilterEnabled(bool enable)
{
    if (enable == _filterEnabled)
        return;

    _filterEnabled = enable;
    if (changeFiltering([enable](RecordWidget *widget) { widget->enableFiltering(enable); }) &&
        applyNormMode())
        emit layoutOrContentChanged();
}

void TraceView::setBackgroundFiltering(bool enable)
{
    if (enable == _backgroundFiltering)
        return;

    _backgroundFiltering = enable;
    const auto change = [enable](RecordWidget *widget) { widget->setBackgroundFiltering(enable); };
    if (changeFiltering(change) && _filter && _filterEnabled && applyNormMode())
        emit layoutOrContentChanged();
}

// In the background

/** Changes all rows and then tells of those that filter now, all together; false if the view is
 *  gone. */
bool TraceView::changeFiltering(const std::function<void(RecordWidget *)> &change)
{
    const QPointer<TraceView> alive(this);
    const bool wasChanging = std::exchange(_filterIsChanging, true);
    if (!visitRows([&change](Trace *row) { change(row->recordWidget()); }))
        return false;

    _filterIsChanging = wasChanging;
    const int previousTotal = _filtering->restart();
    const int count = _filtering->total();
    if (count > 0)
        emit filteringProgress(0, count);
    else if (previousTotal > 0)
        emit filteringProgress(previousTotal, previousTotal);
    return !alive.isNull();
}

void TraceView::watchFiltering(RecordWidget *widget)
{
    connect(widget, SIGNAL(filteringStarted(Tellarix::Gui::RecordWidget *)), this,
            SLOT(countFilteringRow(Tellarix::Gui::RecordWidget *)));
    connect(widget, SIGNAL(filteringFinished(Tellarix::Gui::RecordWidget *)), this,
            SLOT(finishFilteringRow(Tellarix::Gui::RecordWidget *)));
}

void TraceView::countFilteringRow(RecordWidget *widget)
{
    _filtering->add(widget);
    if (!_filterIsChanging)
        emit filteringProgress(_filtering->done(), _filtering->total());
}

void TraceView::finishFilteringRow(RecordWidget *widget)
{
    if (_filtering->remove(widget))
        tellFilteringProgress();
}

void TraceView::tellFilteringProgress()
{
    if (_filterIsChanging)
        return;

    const int total = _filtering->total();
    const int done = _filtering->done();
    const bool isLast = _filtering->isIdle();
    const QPointer<TraceView> alive(this);
    if (isLast) {
        _filtering->restart();
        applyNormMode();
    }
    if (alive)
        emit filteringProgress(done, total);
    if (alive && isLast)
        emit layoutOrContentChanged();
}

} // namespace Gui
} // namespace Norvu
