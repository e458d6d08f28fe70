// SPDX-License-Identifier: LGPL-3.0-or-later

#include "sourceloader.h"

#include "bench/rowaddition.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/client/io/recordstream.h>
#include <tellarix/core/records/record.h>
#include <tellarix/qt/records/recordstreamthread.h>
#include <tellarix/qt/records/recordwidget.h>

#include <algorithm>
#include <iterator>

namespace Workbench {

namespace {

constexpr int RefreshMilliseconds = 500;
const Tellarix::Core::TimeSpan LongestBreak(60);

} // namespace

SourceLoader::SourceLoader(const QString &source, const RowAddition *addition, QObject *parent)
    : TraceFileLoader(new Tellarix::Gui::RecordStreamThread(source.toStdString())), _source(source),
      _addition(addition)
{
    setParent(parent);
    _timer.setInterval(RefreshMilliseconds);
    connect(_stream, SIGNAL(finished()), this, SLOT(finish()));
}

bool SourceLoader::isUsable(const std::string &source, QString *error)
{
    std::string reason;
    if (Tellarix::IO::RecordStream::Create(source, &reason))
        return true;
    *error = QString::fromStdString(reason);
    return false;
}

void SourceLoader::start(Norvu::Gui::TraceView *view, const Tellarix::Core::TimeWindow &window)
{
    _view = view;
    _stream->connect();
    _stream->setTimeWindow(window);
    _timer.start();
    _stream->start(QThread::InheritPriority);
}

void SourceLoader::stop()
{
    _stream->disconnect(this);
    _stream->stop(true);
    acquisitionFinished();
    _view = nullptr;
}

void SourceLoader::finish()
{
    acquisitionFinished();
    _view = nullptr;
    emit ended();
}

double SourceLoader::progress() const
{
    return _stream->progress();
}

QString SourceLoader::outage() const
{
    return _stream->outage();
}

void SourceLoader::receivedRecords(const QVector<Tellarix::RecordPtr> &records)
{
    for (const Tellarix::RecordPtr &record : records) {
        if (record->dataType() == Tellarix::DataType::Char) {
            ++_textCount;
            continue;
        }
        ++_waveformCount;
        noteArrival(record->timeWindow());
    }
    placeAll(_skipped.isEmpty() ? records : withoutSkipped(records));
}

QVector<Tellarix::RecordPtr>
SourceLoader::withoutSkipped(const QVector<Tellarix::RecordPtr> &records) const
{
    QVector<Tellarix::RecordPtr> kept;
    std::copy_if(records.begin(), records.end(), std::back_inserter(kept),
                 [this](const Tellarix::RecordPtr &record) {
                     return !_skipped.contains(QString::fromStdString(record->streamID()));
                 });
    return kept;
}

void SourceLoader::tell(const QString &)
{}

/** Records that go on where the last ones were are no window of their own. */
void SourceLoader::noteArrival(const Tellarix::Core::TimeWindow &window)
{
    const bool goesOn = !_arrivals.isEmpty() &&
                        window.startTime() >= _arrivals.last().startTime() &&
                        window.startTime() - _arrivals.last().endTime() < LongestBreak;
    if (window.isEmpty())
        return;
    if (goesOn)
        _arrivals.last() = _arrivals.last().united(window);
    else
        _arrivals.append(window);
}

Norvu::Gui::Trace *SourceLoader::makeRow(const QString &label) const
{
    return _addition ? new Norvu::Gui::Trace(label, _addition->makeTraces(), Qt::black)
                     : TraceFileLoader::makeRow(label);
}

} // namespace Workbench
