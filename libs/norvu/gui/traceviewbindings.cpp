// SPDX-License-Identifier: LGPL-3.0-or-later

#include "traceview.h"

#include "rowlabel_p.h"
#include "streambindings_p.h"
#include "tracetoolbar_p.h"

#include <norvu/gui/trace.h>
#include <tellarix/core/records/record.h>

#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/qt/records/recordwidget.h>

#include <QAction>

#include <memory>

namespace Norvu {
namespace Gui {

using Tellarix::RecordSequence;
using Tellarix::Core::TimeWindow;
using Tellarix::Gui::RecordWidget;

namespace {

/** Records of @p source that overlap @p window; null if there are none. */
std::unique_ptr<RecordSequence> recordsWithin(const RecordSequence &source,
                                              const TimeWindow &window)
{
    std::unique_ptr<RecordSequence> target;
    for (const Tellarix::RecordCPtr &record : source) {
        if (!record->timeWindow().overlaps(window))
            continue;
        if (!target)
            target = std::make_unique<Tellarix::RingBuffer>(0, 0.5);
        target->feed(record.get());
    }
    return target;
}

void copySlotSettings(const RecordWidget *source, RecordWidget *target, int slot)
{
    if (const double *scale = source->recordScale(slot))
        target->setRecordScale(slot, *scale);
    target->setRecordLabel(slot, source->recordLabel(slot));
}

} // namespace

bool TraceView::bindItem(const std::string &id, Trace *row, int slot)
{
    _bindings->bind(id, row, slot);
    return true;
}

bool TraceView::unbind(const std::string &id)
{
    return _bindings->unbind(id);
}

Trace *TraceView::itemBoundTo(const std::string &id, int *slot) const
{
    return _bindings->find(id, slot);
}

void TraceView::removeItemBoundTo(const std::string &id)
{
    if (Trace *row = itemBoundTo(id))
        removeItem(row);
}

QList<QPair<std::string, int>> TraceView::bindingsFor(Trace *row) const
{
    return _bindings->of(row);
}

void TraceView::clearBindings(const Trace *row)
{
    _bindings->unbind(row);
}

void TraceView::clearDataSlot(int slot)
{
    visitRows([slot](Trace *row) { row->recordWidget()->setRecords(slot, nullptr, true); });
}

void TraceView::markRequested(Trace *row)
{
    row->_dataRequested = true;
    --_emptyDataSlots;
}

void TraceView::markNotRequested(Trace *row)
{
    if (!row->_dataRequested)
        return;

    row->_dataRequested = false;
    ++_emptyDataSlots;
}

void TraceView::subscribedToData(Trace *row)
{
    markRequested(row);
}

bool TraceView::beginDataRequest()
{
    return false;
}

void TraceView::requestData(Trace *)
{}

void TraceView::endDataRequest()
{}

void TraceView::loadData()
{
    const QPointer<TraceView> alive(this);
    emit loadDataRequested();
    if (!alive)
        return;

    bool isRequesting = false;
    bool isRefused = false;
    visitRows([&](Trace *row) {
        if (isRefused || row->_dataRequested)
            return;
        isRefused = !isRequesting && !beginDataRequest();
        if (isRefused)
            return;

        isRequesting = true;
        markRequested(row);
        requestData(row);
    });

    if (alive && isRequesting)
        endDataRequest();
    if (alive && !isRefused)
        updateToolbar();
}

void TraceView::updateToolbar()
{
    if (!_toolBar || !_toolBar->hasLoadAction())
        return;

    _toolBar->setLoadingEnabled(_emptyDataSlots >= 1);
    if (_emptyDataSlots < 0)
        qWarning("[TRACEVIEW] Semaphore error: empty data slots < 0: %d", _emptyDataSlots);
}

void TraceView::resetSelectedTraces()
{
    const bool isAlive = visitRows([this](Trace *row) {
        if (!row->isSelected())
            return;
        const QPointer<Trace> present(row);
        row->reset();
        if (present)
            markNotRequested(row);
    });
    if (isAlive)
        updateToolbar();
}

void TraceView::resetDataStateOfAllTraces()
{
    for (Trace *row : std::as_const(_items))
        markNotRequested(row);
    updateToolbar();
}

void TraceView::cleanTraces()
{
    visitRows([this](Trace *row) {
        const RecordSequence *records = row->recordWidget()->records(0);
        if (!records || records->isEmpty())
            removeTraceItem(row);
    });
}

bool TraceView::copyDataFrom(const TraceView *other)
{
    return copyRows(other, nullptr);
}

bool TraceView::copyDataFrom(const TraceView *other, const TimeWindow &window)
{
    return copyRows(other, &window);
}

bool TraceView::copyRows(const TraceView *other, const TimeWindow *window)
{
    bool hasCopied = false;
    const QPointer<TraceView> alive(this);
    const QList<Trace *> rows = other->items();
    const QVector<QPointer<const Trace>> sources(rows.begin(), rows.end());
    for (const QPointer<const Trace> &source : sources) {
        Trace *copy = alive && source ? copyRow(source, window) : nullptr;
        if (!copy)
            continue;
        addItem(copy, NoRecordID);
        hasCopied = true;
    }
    return hasCopied;
}

Trace *TraceView::copyRow(const Trace *source, const TimeWindow *window) const
{
    Trace *copy = nullptr;
    const RecordWidget *widget = source->recordWidget();
    for (int slot = 0; slot < widget->slotCount(); ++slot) {
        RecordSequence *records = widget->records(slot);
        if (!records || records->isEmpty())
            continue;

        std::unique_ptr<RecordSequence> selection;
        if (window) {
            selection = recordsWithin(*records, *window);
            records = selection.get();
        }
        if (!records)
            continue;

        if (!copy)
            copy = copyWithoutRecords(source);
        if (copy->recordWidget()->setRecords(slot, records, selection != nullptr))
            selection.release();
        copySlotSettings(widget, copy->recordWidget(), slot);
    }
    return copy;
}

Trace *TraceView::copyWithoutRecords(const Trace *source)
{
    Trace *copy = source->clone();
    for (int slot = 0; slot < source->metaDataCount(); ++slot)
        copy->setMetaData(slot, source->metaData(slot));
    copy->_labelWidget->copyTexts(*source->_labelWidget);
    return copy;
}

} // namespace Gui
} // namespace Norvu
