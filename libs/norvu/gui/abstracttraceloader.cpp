// SPDX-License-Identifier: LGPL-3.0-or-later

#include "abstracttraceloader.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/recordsequence.h>
#include <tellarix/qt/records/recordstreamthread.h>
#include <tellarix/qt/records/recordwidget.h>

#include <QMessageBox>
#include <QProgressDialog>

namespace Norvu {
namespace Gui {

namespace {

constexpr int RefreshInterval = 1000;

} // namespace

AbstractTraceLoader::AbstractTraceLoader(QObject *parent) : QObject(parent)
{
    connect(&_timer, SIGNAL(timeout()), this, SLOT(timeout()));
}

AbstractTraceLoader::~AbstractTraceLoader() = default;

QStringList AbstractTraceLoader::messages() const
{
    return _stream ? _stream->messages() : QStringList();
}

QString AbstractTraceLoader::errorString() const
{
    return _stream ? _stream->errorString() : QString();
}

void AbstractTraceLoader::setStream(Tellarix::Gui::RecordStreamThread *stream)
{
    _stream = stream;
    _stream->setParent(this);
    connect(_stream, SIGNAL(receivedRecords(QVector<Tellarix::RecordPtr>)), this,
            SLOT(receivedRecords(QVector<Tellarix::RecordPtr>)));
}

void AbstractTraceLoader::receivedRecords(const QVector<Tellarix::RecordPtr> &records)
{
    const QPointer<AbstractTraceLoader> alive(this);
    for (auto record = records.begin(); alive && record != records.end(); ++record) {
        intrusive_ptr_add_ref(record->get());
        receivedRecord(record->get());
    }
}

bool AbstractTraceLoader::connectStream(const QString &text)
{
    _stream->stop(true);
    if (_stream->connect())
        return true;

    tell(text.arg(_stream->recordStreamURL().c_str()));
    return false;
}

void AbstractTraceLoader::tell(const QString &text)
{
    QMessageBox::critical(nullptr, tr("Error"), text, QMessageBox::Ok);
}

bool AbstractTraceLoader::loadOrTell(TraceView *view, const QString &text)
{
    const QPointer<AbstractTraceLoader> alive(this);
    load(view);
    if (!alive || !_stream->hasOpenFailed())
        return true;

    tell(text.arg(_stream->recordStreamURL().c_str()));
    return false;
}

void AbstractTraceLoader::load(TraceView *view)
{
    if (!_stream)
        return;
    _view = view;
    _dirty = false;

    QProgressDialog dialog;
    dialog.setWindowModality(Qt::ApplicationModal);
    dialog.setRange(0, 0);
    dialog.setLabelText(tr("Loading waveforms"));
    connect(_stream, SIGNAL(finished()), &dialog, SLOT(accept()));
    connect(this, SIGNAL(destroyed()), &dialog, SLOT(reject()));

    _stream->start(QThread::InheritPriority);
    _timer.start(RefreshInterval);
    const QPointer<AbstractTraceLoader> alive(this);
    const bool wasCancelled = dialog.exec() != QDialog::Accepted;
    if (!alive)
        return;

    _wasCancelled = wasCancelled;
    if (_wasCancelled)
        _stream->stop(true);
    finish(_view);
}

void AbstractTraceLoader::finish(TraceView *view)
{
    const QPointer<AbstractTraceLoader> alive(this);
    _view = view;
    acquisitionFinished();
    if (alive)
        _view = nullptr;
}

void AbstractTraceLoader::timeout()
{
    if (!_dirty || !_view)
        return;

    _dirty = false;
    _view->updateRecords();
}

void AbstractTraceLoader::acquisitionFinished()
{
    _dirty = false;
    _timer.stop();
    if (!_view)
        return;

    for (int i = 0; i < _view->count(); ++i) {
        Trace *row = _view->itemAt(i);
        const Tellarix::RecordSequence *records = row->recordWidget()->records(_targetSlot);
        row->setColor(records && !records->isEmpty() ? Qt::green : Qt::red);
    }
    _view->updateRecords();
}

bool AbstractTraceLoader::hasEndTime(const Tellarix::Record &record)
{
    return record.hasEndTime();
}

void AbstractTraceLoader::feed(Trace *row, int slot, const Tellarix::Record *record)
{
    Tellarix::RecordSequence *records = row->recordWidget()->records(slot);
    if (!records)
        return;

    records->feed(record);
    // Whoever hears of the record may delete this loader.
    _dirty = true;
    row->recordWidget()->fed(slot, record);
}

void AbstractTraceLoader::feedAll(Trace *row, int slot, const QVector<Tellarix::RecordPtr> &records)
{
    Tellarix::RecordSequence *sequence = row->recordWidget()->records(slot);
    if (!sequence)
        return;

    for (const Tellarix::RecordPtr &record : records)
        sequence->feed(record.get());
    _dirty = true;
    row->recordWidget()->fedAll(slot, records);
}

} // namespace Gui
} // namespace Norvu
