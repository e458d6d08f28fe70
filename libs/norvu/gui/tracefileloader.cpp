// SPDX-License-Identifier: LGPL-3.0-or-later

#include "tracefileloader.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/qt/records/recordstreamthread.h>
#include <tellarix/qt/records/recordwidget.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace Norvu {
namespace Gui {

namespace {

/** Records of one stream on their way to a row, which may be gone before they are fed. */
struct Delivery
{
    const Tellarix::StreamCodes *codes;
    QPointer<Trace> row;
    int slot;
    QVector<Tellarix::RecordPtr> records;
};

} // namespace

TraceFileLoader::TraceFileLoader(const std::string &file, QObject *)
    : TraceFileLoader(new Tellarix::Gui::RecordStreamThread("file://" + file))
{}

TraceFileLoader::TraceFileLoader(Tellarix::Gui::RecordStreamThread *stream)
    : AbstractTraceLoader(nullptr)
{
    setStream(stream);
}

bool TraceFileLoader::load(TraceView *view, const Tellarix::Core::TimeWindow &window)
{
    const QString text = tr("Could not open %1");
    if (!connectStream(text))
        return false;

    _stream->setTimeWindow(window);
    return loadOrTell(view, text);
}

void TraceFileLoader::receivedRecord(Tellarix::Record *record)
{
    const Tellarix::RecordPtr reference(record, false);
    if (!record || !_view || !hasEndTime(*record))
        return;

    int slot = 0;
    if (Trace *row = rowFor(*record, slot))
        feed(row, slot, record);
}

void TraceFileLoader::placeAll(const QVector<Tellarix::RecordPtr> &records)
{
    const QPointer<AbstractTraceLoader> alive(this);
    std::vector<Delivery> deliveries;
    // Neighbours often are of one stream, whose records share their codes.
    size_t current = 0;
    for (const Tellarix::RecordPtr &record : records) {
        if (!alive || !_view || !hasEndTime(*record))
            continue;
        const Tellarix::StreamCodes *codes = record->codes().get();
        if (current >= deliveries.size() || deliveries[current].codes != codes) {
            const auto delivery =
                std::find_if(deliveries.begin(), deliveries.end(),
                             [codes](const Delivery &item) { return item.codes == codes; });
            current = static_cast<size_t>(delivery - deliveries.begin());
        }
        if (current == deliveries.size()) {
            int slot = 0;
            Trace *row = rowFor(*record, slot);
            deliveries.push_back({codes, row, slot, {}});
        }
        deliveries[current].records.append(record);
    }
    for (const Delivery &delivery : deliveries) {
        if (alive && _view && delivery.row)
            feedAll(delivery.row, delivery.slot, delivery.records);
    }
}

/** The row of a record's stream, with a new one if it has none; null if there shall be none. */
Trace *TraceFileLoader::rowFor(const Tellarix::Record &record, int &slot)
{
    Trace *row = _view->itemBoundTo(record.streamID(), &slot);
    if (_targetSlot >= 0)
        slot = _targetSlot;
    return row || _targetSlot < 0 ? row : addRowFor(record);
}

Trace *TraceFileLoader::makeRow(const QString &label) const
{
    return new Trace(label, Qt::black);
}

std::unique_ptr<Tellarix::RecordSequence> TraceFileLoader::makeRecords() const
{
    return std::make_unique<Tellarix::RingBuffer>(-1, 0.5);
}

Trace *TraceFileLoader::addRowFor(const Tellarix::Record &record)
{
    const QString codes[] = {record.networkCode().c_str(), record.stationCode().c_str(),
                             record.locationCode().c_str(), record.channelCode().c_str()};
    const QPointer<Trace> row(makeRow(record.streamID().c_str()));
    for (int key = 0; key < 4; ++key)
        row->setData(key, codes[key]);
    _view->addItem(row, TraceView::NoRecordID);
    if (!_view || !row)
        return nullptr;
    _view->bindItem(record.streamID(), row, _targetSlot);

    std::unique_ptr<Tellarix::RecordSequence> records = makeRecords();
    if (row->recordWidget()->setRecords(_targetSlot, records.get(), true))
        records.release();
    else
        qWarning("Failed to allocate trace");
    return row;
}

} // namespace Gui
} // namespace Norvu
