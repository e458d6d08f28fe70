// SPDX-License-Identifier: LGPL-3.0-or-later

#include "livesource.h"

#include "bench/bench.h"
#include "bench/rowaddition.h"
#include "bench/streamstates.h"
#include "bench/tracerows.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/client/io/recordstream.h>
#include <tellarix/client/io/streamrequest.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/qt/records/recordstreamthread.h>
#include <tellarix/qt/records/recordwidget.h>

#include <algorithm>
#include <utility>

using namespace Tellarix;
using Norvu::Gui::Trace;

namespace Workbench {

namespace {

/** A record farther ahead would push all others out of its row. */
const Core::TimeSpan FarAhead(3600.0);
/** Data that were there before go on being kept if they are no older. */
const Core::TimeSpan LongestKept(7 * 86400.0);
/** Of a connection that comes and goes, a few lines say enough. */
constexpr int MostMessages = 5;
constexpr unsigned long EndMilliseconds = 80;

/** Length of the past that is asked for behind the `#` of a URL. */
Core::TimeSpan askedPast(const QString &source, Core::Time now)
{
    IO::StreamRequest request;
    std::string error;
    if (!IO::StreamRequest::parse(source.toStdString(), &request, &error))
        return Core::TimeSpan();
    const Core::Time start = request.windowAt(now).startTime();
    return start.valid() && start < now ? now - start : Core::TimeSpan();
}

} // namespace

LiveSource::LiveSource(const QString &source, Bench *bench, Core::TimeSpan length, QObject *parent)
    : TraceFileLoader(new Gui::RecordStreamThread(source.toStdString())), _source(source),
      _bench(bench), _askedLength(askedPast(source, bench->streamStates()->now())),
      _length(std::max(length, _askedLength))
{
    setParent(parent);
    connect(_stream, SIGNAL(finished()), this, SIGNAL(ended()));
    connect(_stream, SIGNAL(messageReceived(QString, bool)), this, SLOT(noteMessage(QString)));
}

LiveSource::~LiveSource()
{
    for (auto row = _rows.cbegin(); row != _rows.cend(); ++row)
        _bench->streamStates()->forget(row.key().toStdString());
    _stream->disconnect(this);
    close();
    if (_stream->wait(EndMilliseconds))
        return;
    // One that doesn't heed its end is left to itself.
    _stream->setParent(nullptr);
    connect(_stream, SIGNAL(finished()), _stream, SLOT(deleteLater()));
    if (_stream->isFinished())
        _stream->deleteLater();
}

bool LiveSource::isLive(const QString &source, const Core::TimeWindow &window)
{
    const IO::RecordStreamPtr stream = IO::RecordStream::Create(source.toStdString());
    if (!stream)
        return false;
    if (window.startTime().valid() || window.endTime().valid())
        stream->setTimeWindow(window);
    return stream->isLive();
}

void LiveSource::start(Norvu::Gui::TraceView *view, const Core::TimeWindow &window)
{
    _view = view;
    _stream->connect();
    _stream->setPersistent(true);
    _stream->setTimeWindow(window);
    _stream->start(QThread::InheritPriority);
}

void LiveSource::close()
{
    _stream->stop(false);
}

QString LiveSource::outage() const
{
    return _stream->outage();
}

// Rows

void LiveSource::setLength(Core::TimeSpan length)
{
    _length = std::max(length, _askedLength);
    for (const auto &row : std::as_const(_rows)) {
        if (row)
            applyLength(row, 0);
    }
}

/** Traces drawn of records that go have to be drawn anew. */
void LiveSource::applyLength(Trace *row, int slot)
{
    auto *records = dynamic_cast<RingBuffer *>(row->recordWidget()->records(slot));
    if (!records)
        return;
    records->setLength(_length);
    row->recordWidget()->updateRecords();
}

bool LiveSource::restoreRow(Trace *row)
{
    for (const auto &binding : _view ? _view->bindingsFor(row) : QList<QPair<std::string, int>>()) {
        if (!_rows.contains(QString::fromStdString(binding.first)))
            continue;
        if (!row->recordWidget()->records(binding.second))
            row->recordWidget()->setRecords(binding.second, makeRecords().release(), true);
        return true;
    }
    return false;
}

bool LiveSource::hasLostRows() const
{
    return !_rows.isEmpty() && rows().isEmpty();
}

QList<Trace *> LiveSource::rows() const
{
    QList<Trace *> rows;
    for (const auto &row : _rows) {
        if (row)
            rows.append(row);
    }
    return rows;
}

Trace *LiveSource::makeRow(const QString &label) const
{
    const RowAddition *addition = _bench->rows()->addition();
    return addition ? new Trace(label, addition->makeTraces(), Qt::green)
                    : new Trace(label, Qt::green);
}

std::unique_ptr<RecordSequence> LiveSource::makeRecords() const
{
    return std::make_unique<RingBuffer>(_length, 0.5);
}

/** A row of files becomes one that forgets, but nothing that it shows goes without need. */
Trace *LiveSource::adoptRow(const std::string &id)
{
    int slot = 0;
    Trace *row = _view->itemBoundTo(id, &slot);
    auto *records = row ? dynamic_cast<RingBuffer *>(row->recordWidget()->records(slot)) : nullptr;
    if (records && records->length() <= Core::TimeSpan()) {
        Core::TimeSpan kept = _length;
        if (!records->isEmpty())
            kept = std::max(kept, _bench->streamStates()->now() -
                                      records->timeWindow().startTime() + _length);
        if (kept > LongestKept)
            _messages.append(tr("%1: older data make room for those that come in now")
                                 .arg(QString::fromStdString(id)));
        records->setLength(std::min(kept, std::max(_length, LongestKept)));
    }
    return row;
}

// Records

/** False for a record that no row can take. */
bool LiveSource::isWanted(const Record &record)
{
    if (record.dataType() == DataType::Char || !hasEndTime(record))
        return false;
    const std::string id = record.streamID();
    const auto known = _rows.constFind(QString::fromStdString(id));
    if (known != _rows.constEnd() && !*known)
        return false;
    if (record.startTime() - _bench->streamStates()->now() < FarAhead)
        return true;
    if (_ahead.insert(id).second)
        noteMessage(
            tr("%1: its records lie in the future (%2) and are left out")
                .arg(QString::fromStdString(id), QString::fromStdString(record.startTime().iso())));
    return false;
}

void LiveSource::receivedRecord(Record *record)
{
    const RecordPtr held(record);
    if (!record || !_view || !isWanted(*record)) {
        const RecordPtr reference(record, false);
        return;
    }

    const std::string id = record->streamID();
    const QString key = QString::fromStdString(id);
    const bool isFirst = !_rows.contains(key);
    Trace *row = isFirst ? adoptRow(id) : _rows.value(key).data();
    const bool isNew = isFirst && !row;
    TraceFileLoader::receivedRecord(record);
    if (isNew)
        row = _view->itemBoundTo(id);
    if (!row)
        return;
    if (isFirst)
        _rows.insert(key, row);
    if (isNew)
        _newRows.append(row);
    _arrivals[row].append(record->timeWindow());
    _bench->streamStates()->note(id, record->timeWindow());
    emit arrived();
}

RowArrivals LiveSource::takeArrivals()
{
    return std::exchange(_arrivals, RowArrivals());
}

QList<Trace *> LiveSource::takeNewRows()
{
    QList<Trace *> rows;
    for (const auto &row : std::exchange(_newRows, {})) {
        if (row)
            rows.append(row);
    }
    return rows;
}

// Messages

void LiveSource::noteMessage(const QString &text)
{
    if (_messages.size() >= MostMessages || _messages.contains(text))
        ++_messagesLeftOut;
    else
        _messages.append(text);
    emit arrived();
}

QStringList LiveSource::takeMessages()
{
    QStringList messages = std::exchange(_messages, QStringList());
    if (_messagesLeftOut > 0)
        messages.append(tr("%1: %2 more messages").arg(_source).arg(_messagesLeftOut));
    _messagesLeftOut = 0;
    return messages;
}

void LiveSource::tell(const QString &)
{}

} // namespace Workbench
