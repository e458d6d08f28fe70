// SPDX-License-Identifier: LGPL-3.0-or-later

#include "traceview.h"

#include <norvu/gui/trace.h>

#include <tellarix/qt/records/recordwidget.h>

#include <QScopedValueRollback>

#include <utility>

namespace Norvu {
namespace Gui {

using Tellarix::Gui::RecordWidget;

void TraceView::setFilter(Tellarix::Math::Filtering::InPlaceFilter<double> *filter)
{
    if (filter != _filter)
        delete std::exchange(_filter, filter);

    changeFiltering([this](RecordWidget *widget) { widget->setFilter(_filter); });
    applyNormMode();
    emit layoutOrContentChanged();
}

void TraceView::setFilterEnabled(bool enable)
{
    if (enable == _filterEnabled)
        return;

    _filterEnabled = enable;
    changeFiltering([enable](RecordWidget *widget) { widget->enableFiltering(enable); });
    applyNormMode();
    emit layoutOrContentChanged();
}

void TraceView::setBackgroundFiltering(bool enable)
{
    if (enable == _backgroundFiltering)
        return;

    _backgroundFiltering = enable;
    changeFiltering([enable](RecordWidget *widget) { widget->setBackgroundFiltering(enable); });
    if (!_filter || !_filterEnabled)
        return;
    applyNormMode();
    emit layoutOrContentChanged();
}

// In the background

/** Changes all rows and then tells of those that filter now, all together. */
void TraceView::changeFiltering(const std::function<void(RecordWidget *)> &change)
{
    const int previousTotal = _filteringTotal;
    {
        const QScopedValueRollback<bool> changing(_filterIsChanging, true);
        for (Trace *row : std::as_const(_items))
            change(row->recordWidget());
    }
    const int count = _filteringRows.size();
    _filteringTotal = count;
    if (count > 0)
        emit filteringProgress(0, count);
    else if (previousTotal > 0)
        emit filteringProgress(previousTotal, previousTotal);
}

void TraceView::watchFiltering(RecordWidget *widget)
{
    connect(widget, SIGNAL(filteringStarted(Tellarix::Gui::RecordWidget *)), this,
            SLOT(countFilteringRow(Tellarix::Gui::RecordWidget *)));
    connect(widget, SIGNAL(filteringFinished(Tellarix::Gui::RecordWidget *)), this,
            SLOT(finishFilteringRow(Tellarix::Gui::RecordWidget *)));
    connect(widget, SIGNAL(destroyed(QObject *)), this, SLOT(forgetFilteringRow(QObject *)));
}

void TraceView::countFilteringRow(RecordWidget *widget)
{
    _filteringRows.insert(widget);
    ++_filteringTotal;
    if (!_filterIsChanging)
        emit filteringProgress(_filteringTotal - _filteringRows.size(), _filteringTotal);
}

void TraceView::finishFilteringRow(RecordWidget *widget)
{
    forgetFilteringRow(widget);
}

void TraceView::forgetFilteringRow(QObject *widget)
{
    if (!_filteringRows.remove(widget) || _filterIsChanging)
        return;

    const int total = _filteringTotal;
    const bool isLast = _filteringRows.isEmpty();
    if (isLast) {
        _filteringTotal = 0;
        applyNormMode();
    }
    emit filteringProgress(total - _filteringRows.size(), total);
    if (isLast)
        emit layoutOrContentChanged();
}

} // namespace Gui
} // namespace Norvu
