// SPDX-License-Identifier: LGPL-3.0-or-later

#include "traceview.h"

#include "crosshair_p.h"
#include "filteringcount_p.h"
#include "rowstack_p.h"
#include "streambindings_p.h"

#include <norvu/gui/trace.h>

#include <tellarix/core/datamodel/stream.h>
#include <tellarix/core/datamodel/utils.h>
#include <tellarix/core/records/recordsequence.h>
#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/records/timescale.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace Norvu {
namespace Gui {

namespace {

/** Distances that are no number go last: an order needs them to be somewhere. */
bool distanceAndLabelLessThan(const Trace *a, const Trace *b)
{
    const double distanceA = a->data(TraceDistance).toDouble();
    const double distanceB = b->data(TraceDistance).toDouble();
    const bool isNaNA = std::isnan(distanceA);
    const bool isNaNB = std::isnan(distanceB);
    if (isNaNA != isNaNB)
        return isNaNB;
    if (!isNaNA && distanceA != distanceB)
        return distanceA < distanceB;
    return a->label() < b->label();
}

QString recordIDText(const Tellarix::DataModel::Stream *stream,
                     TraceView::RecordIDStrategy strategy)
{
    const QString code(stream->code().c_str());
    switch (strategy) {
    case TraceView::ComponentRecordID:
        return QStringLiteral("%1").arg(code.right(1));
    case TraceView::ChannelRecordID:
        return code;
    case TraceView::NoRecordID:
        break;
    }
    return QString();
}

} // namespace

bool TraceView::addItem(Trace *row, RecordIDStrategy strategy)
{
    Q_ASSERT(row && !_items.contains(row));

    const QPointer<Tellarix::Gui::RecordWidget> widget(row->recordWidget());
    widget->setMinimumHeight(_minRowHeight);
    row->setColorBarWidth(_colorIndicator ? ColorBarWidth : 0);
    if (_nameWidth > 0)
        applyNameWidth(row);

    _items.append(row);
    row->_view = this;
    _contents->append(row);
    row->setFocusProxy(this);
    widget->setMouseTracking(true);
    widget->installEventFilter(this);
    widget->setPreparation([this] { prepareVisibleRows(); });

    ++_emptyDataSlots;
    updateToolbar();

    watchFiltering(widget);
    applyViewTo(widget);
    if (widget)
        bindStreams(row, strategy);
    // Without the view its rows are gone as well.
    if (widget)
        emit layoutOrContentChanged();
    return true;
}

void TraceView::applyViewTo(const QPointer<Tellarix::Gui::RecordWidget> &widget)
{
    if (!widget->alignment().valid() && _timeScale->alignment().valid())
        widget->setAlignment(_timeScale->alignment());

    const bool byWindow = _normMode.testFlag(WindowNormalization);
    const bool common = _normMode.testFlag(AllTracesNormalization);
    const Tellarix::Core::TimeWindow window = windowOf(widget);
    const Tellarix::RecordSequence *records = widget->records(widget->currentRecords());
    // Steps that the widget tells of, so that it may be gone before the next one.
    const std::function<void()> steps[] = {
        [&] {
            if (!common || !records)
                return;
            const auto range = records->amplitudeRange(byWindow ? &window : nullptr);
            widget->setAmplRange(range.first, range.second);
        },
        [&] { widget->setBackgroundFiltering(_backgroundFiltering); },
        [&] {
            if (_filter)
                widget->setFilter(_filter);
        },
        [&] { widget->setAmplAutoScaleEnabled(!common); },
        [&] {
            widget->setTimeScale(_timeScale->scale());
            widget->setGridSpacing(_timeScale->majorSpacing(), _timeScale->minorSpacing(),
                                   _timeScale->offset());
            widget->setTimeRange(_tmin, _tmax);
            widget->enableFiltering(_filterEnabled);
        },
        [&] { widget->setNormalizationWindow(byWindow ? window : Tellarix::Core::TimeWindow()); },
    };
    for (const auto &step : steps) {
        if (!widget)
            return;
        step();
    }
}

void TraceView::bindStreams(Trace *row, RecordIDStrategy strategy)
{
    const QPointer<Trace> present(row);
    for (int slot = 0; present && slot < row->metaDataCount(); ++slot) {
        Tellarix::DataModel::Stream *stream = row->metaData(slot);
        if (!stream)
            continue;

        if (stream->gain() != 0.0)
            row->recordWidget()->setRecordScale(slot, 1.0 / stream->gain());
        if (!present)
            return;
        if (strategy != NoRecordID)
            row->recordWidget()->setRecordID(slot, recordIDText(stream, strategy));
        bindItem(Tellarix::DataModel::id(stream, "", true), row, slot);
    }
}

void TraceView::setItems(QList<Trace *> rows)
{
    const QPointer<TraceView> alive(this);
    const QVector<QPointer<Trace>> added(rows.begin(), rows.end());
    removeItems();
    for (const QPointer<Trace> &row : added) {
        if (!alive)
            delete row;
        else if (row)
            addItem(row, NoRecordID);
    }
}

void TraceView::removeItem(Trace *row)
{
    const QPointer<TraceView> alive(this);
    if (row && row == _currentItem)
        updateCurrentTrace(nullptr);
    if (!alive || !_items.contains(row))
        return;

    removeTraceItem(row);
    if (alive)
        emit layoutOrContentChanged();
}

/** Deletes a row of the list. */
void TraceView::removeTraceItem(Trace *row)
{
    const QPointer<TraceView> alive(this);
    const QPointer<Trace> present(row);
    const bool wasFiltering = forgetItem(row);
    if (row == _currentItem)
        updateCurrentTrace(nullptr);
    delete present;
    if (alive && wasFiltering)
        tellFilteringProgress();
}

/** Takes a row that is about to go out of the list and all that goes with it; true if it was being
 *  filtered in the background. */
bool TraceView::forgetItem(Trace *row)
{
    if (!row->_dataRequested) {
        --_emptyDataSlots;
        updateToolbar();
    }
    clearBindings(row);
    _items.removeOne(row);
    return releaseItem(row);
}

/** Parts from a row; true if it was being filtered in the background. */
bool TraceView::releaseItem(Trace *row)
{
    row->_view = nullptr;
    row->recordWidget()->disconnect(this);
    _dragItems.removeAll(row);
    _crosshairOverlay->forget(row);
    return _filtering->remove(row->recordWidget());
}

/** Forgets a row that is being deleted by someone else. */
void TraceView::forgetDeletedItem(Trace *row)
{
    const bool wasFiltering = forgetItem(row);
    const bool wasCurrent = row == _currentItem;
    if (wasCurrent)
        _currentItem = nullptr;

    // A receiver that deletes the view now would delete the row once more.
    const auto tell = [this, wasFiltering, wasCurrent] {
        const QPointer<TraceView> alive(this);
        if (wasCurrent && !_currentItem)
            emit currentItemChanged(nullptr, nullptr);
        if (alive && wasFiltering)
            tellFilteringProgress();
        if (alive)
            emit layoutOrContentChanged();
    };
    QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
}

void TraceView::removeItems()
{
    for (Trace *row : std::as_const(_items))
        _contents->remove(row);
    const QPointer<TraceView> alive(this);
    updateCurrentTrace(nullptr);
    if (!alive)
        return;

    _bindings->clear();
    bool wasFiltering = false;
    while (alive && !_items.isEmpty()) {
        Trace *row = _items.takeFirst();
        wasFiltering |= releaseItem(row);
        delete row;
    }
    if (!alive)
        return;
    _emptyDataSlots = 0;
    if (wasFiltering)
        tellFilteringProgress();
}

void TraceView::clear()
{
    const QPointer<TraceView> alive(this);
    removeItems();
    if (alive)
        emit itemSelectionCleared();
    if (alive)
        emit layoutOrContentChanged();
}

Trace *TraceView::itemAt(int index) const
{
    return _items.value(index, nullptr);
}

int TraceView::indexOf(Trace *row) const
{
    return _items.indexOf(row);
}

void TraceView::sort(bool (*lessThan)(const Trace *, const Trace *))
{
    const QPointer<TraceView> alive(this);
    emit distanceValuesRequired();
    if (!alive)
        return;

    // Bounded also for a comparison that contradicts itself.
    std::stable_sort(_items.begin(), _items.end(), lessThan);
    _contents->setOrder(_items);

    emit layoutOrContentChanged();
}

void TraceView::sortView()
{
    sort(distanceAndLabelLessThan);
}

void TraceView::updateView()
{
    setCoveredTimeRange();
}

void TraceView::updateRecords()
{
    visitRows([](Trace *row) { row->recordWidget()->updateRecords(); });
}

} // namespace Gui
} // namespace Norvu
