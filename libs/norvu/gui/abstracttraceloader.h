// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QVector>

#include <tellarix/core/records/record.h>

namespace Tellarix {
namespace Gui {
class RecordStreamThread;
}
} // namespace Tellarix

namespace Norvu {
namespace Gui {

class Trace;
class TraceView;

/**
 * Fills a trace view with records in one modal step.
 *
 * A derived class makes the stream thread, sets it up and calls load(), which shows a progress
 * dialog until the stream has ended or the user cancels. Records arrive in receivedRecords(), which
 * gives them one by one to receivedRecord() unless it is overridden, in the thread of the user
 * interface; the rows are redrawn once a second.
 */
class NORVU_GUI_API AbstractTraceLoader : public QObject
{
    Q_OBJECT

public:
    explicit AbstractTraceLoader(QObject *parent = nullptr);
    ~AbstractTraceLoader() override;

    /** Sets the slot that takes all records; 0 at the start. With a negative one each record goes
     *  to the slot that its stream is bound to. */
    void setTargetSlot(int slot) { _targetSlot = slot; }
    int targetSlot() const { return _targetSlot; }

    /** Runs the stream under a modal dialog and returns when it has ended or was cancelled; derived
     *  classes set it up before. */
    void load(TraceView *view);

    /** What the stream of the last load told, such as damage in a file; empty if all was well. */
    QStringList messages() const;
    /** Why the last load() that failed could not use its source. */
    QString errorString() const;
    /** True if the user cancelled the last load. */
    bool wasCancelled() const { return _wasCancelled; }

protected slots:
    /** Redraws the rows if records have arrived since the last time. */
    void timeout();
    /** Colours each row: green with records in the target slot, red without. */
    void acquisitionFinished();
    /** Places a record, which comes with a reference for the receiver. */
    virtual void receivedRecord(Tellarix::Record *record) = 0;
    /** Places some records. */
    virtual void receivedRecords(const QVector<Tellarix::RecordPtr> &records);

protected:
    /** Takes over a stream thread and receives its records. */
    void setStream(Tellarix::Gui::RecordStreamThread *stream);
    /** Connects the stream; if that fails, tells @p text with "%1" replaced by its URL. */
    bool connectStream(const QString &text);
    /** Loads as above; if the source turns out to be no such source, tells @p text likewise. */
    bool loadOrTell(TraceView *view, const QString &text);
    /** Ends a load for which there is nothing to be read. */
    void finish(TraceView *view);
    /** Tells the user why nothing was loaded, by a message box unless it is overridden. */
    virtual void tell(const QString &text);
    /** True for a record that can be placed in time. */
    static bool hasEndTime(const Tellarix::Record &record);
    /** Hands a record to a slot of a row; one without a sequence there is dropped. */
    void feed(Trace *row, int slot, const Tellarix::Record *record);
    /** The same for several, at about the cost of one. */
    void feedAll(Trace *row, int slot, const QVector<Tellarix::RecordPtr> &records);

    Tellarix::Gui::RecordStreamThread *_stream{nullptr};
    QPointer<TraceView> _view; /**< that is being loaded */
    QTimer _timer;
    bool _dirty{false};
    int _targetSlot{0};

private:
    bool _wasCancelled{false};
};

} // namespace Gui
} // namespace Norvu
