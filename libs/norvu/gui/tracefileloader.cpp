// SPDX-License-Identifier: LGPL-3.0-or-later

#include "tracefileloader.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/qt/records/recordstreamthread.h>
#include <tellarix/qt/records/recordwidget.h>

namespace Norvu {
namespace Gui {

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
    Trace *row = _view->itemBoundTo(record->streamID(), &slot);
    if (_targetSlot >= 0)
        slot = _targetSlot;
    if (!row && _targetSlot >= 0)
        row = addRowFor(*record);
    if (row)
        feed(row, slot, record);
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
