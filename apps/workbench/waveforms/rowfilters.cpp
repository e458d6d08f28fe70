// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowfilters.h"

#include "bench/bench.h"
#include "bench/rowaddition.h"
#include "bench/stations.h"
#include "bench/tracerows.h"
#include "rowdatakeys.h"
#include "rowunits.h"

#include <norvu/gui/traceview.h>
#include <tellarix/core/math/filterparser.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/recordsequence.h>
#include <tellarix/qt/records/recordwidget.h>

using namespace Tellarix;
using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace Workbench {

RowFilters::RowFilters(Bench *bench, TraceView *view) : QObject(view), _bench(bench), _view(view)
{
    connect(_bench->stations(), SIGNAL(changed()), this, SLOT(updateUnits()));
}

std::set<double> RowFilters::samplingFrequencies() const
{
    std::set<double> rates;
    for (const Trace *row : _view->items()) {
        const RecordSequence *records = row->recordWidget()->records(0);
        if (records && !records->isEmpty())
            rates.insert(records->front()->samplingFrequency());
    }
    return rates;
}

QStringList RowFilters::problems() const
{
    QStringList texts;
    for (const double rate : samplingFrequencies()) {
        const std::string problem = Math::Filtering::filterProblem(_filterText, rate);
        if (!problem.empty())
            texts.append(tr("Streams at %1 Hz: %2").arg(rate).arg(problem.c_str()));
    }
    return texts;
}

QStringList RowFilters::setFilter(const QString &text)
{
    const std::string definition = text.toStdString();
    _filterText = definition;
    _view->setFilter(Math::Filtering::parseFilter<double>(definition).release());
    _filter = Math::Filtering::FilterDefinition();
    Math::Filtering::parseFilterDefinition(definition, _filter);
    update();
    return problems();
}

void RowFilters::update()
{
    for (Trace *row : _view->items())
        fit(row);
    updateUnits();
    emit misfits(problems());
}

/** A filter that can't work at a row's sampling frequency would make a flat line of it. */
void RowFilters::fit(Trace *row)
{
    Gui::RecordWidget *widget = row->recordWidget();
    const RecordSequence *records = widget->records(0);
    if (!records || records->isEmpty())
        return;
    const QString problem = QString::fromStdString(
        Math::Filtering::filterProblem(_filterText, records->front()->samplingFrequency()));
    const bool isRaw = !problem.isEmpty();
    if (isRaw && widget->filter())
        widget->setFilter(nullptr);
    else if (!isRaw && !widget->filter() && _view->hasFilter())
        widget->setFilter(Math::Filtering::parseFilter<double>(_filterText).get());
    const bool isTold = isRaw && _view->isFilterEnabled();
    widget->setTracesPale(isTold);
    row->setData(MisfitKey, isTold ? tr("Not filtered: %1").arg(problem) : QString());
    emit fitted(row);
}

void RowFilters::updateUnits()
{
    bool hasChanged = false;
    for (Trace *row : _view->items()) {
        if (!updateUnit(row))
            continue;
        hasChanged = true;
        if (_bench->rows()->addition())
            _bench->rows()->addition()->followUnit(row);
    }
    // One range for all rows is one in their units.
    if (hasChanged)
        _view->updateTraceNormalization();
}

/** False if the row's units stay as they are. */
bool RowFilters::updateUnit(Trace *row) const
{
    Gui::RecordWidget *widget = row->recordWidget();
    bool hasChanged = false;
    for (int slot = 0; slot < widget->slotCount(); ++slot) {
        const RecordSequence *records = widget->records(slot);
        std::optional<SampleUnit> unit =
            records ? unitOf(*records, _bench->stations()->inventory()) : std::nullopt;
        if (unit && _view->isFilterEnabled() && widget->filter())
            unit = unitBehind(_filter, *unit);

        const double *scale = widget->recordScale(slot);
        const QString text = unit ? unit->text : QString();
        if (widget->recordUnit(slot) == text && (scale ? *scale : 1) == (unit ? unit->scale : 1))
            continue;
        hasChanged = true;
        widget->setRecordUnit(slot, text);
        if (unit)
            widget->setRecordScale(slot, unit->scale);
        else
            widget->removeRecordScale(slot);
    }
    widget->showScaledValues(true);
    return hasChanged;
}

} // namespace Workbench
