// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/recordstream.h>
#include <tellarix/core/records/record.h>
#include <tellarix/qt/api.h>

#include <QStringList>
#include <QThread>
#include <QVector>

#include <memory>
#include <string>

namespace Tellarix {
namespace Gui {

/**
 * Runs a record stream in a thread of its own and hands its records to the thread that owns this
 * object, by its event loop.
 *
 * Every slot that is connected to receivedRecord() gets a reference of its own, which it adopts
 * with `RecordPtr record(pointer, false)`. Whoever takes millions of records connects
 * receivedRecords() instead, which gives those that have come meanwhile at once. At most 4096
 * records or 64 MB of samples wait at a time: the reader pauses when the owner is slow. The owner
 * takes them in slices of a few milliseconds, so that it stays responsive. finished() comes behind
 * the last record.
 *
 * The order of calls is connect(), then setTimeWindow() and addStream() as needed, then start();
 * a thread that has ended or was stopped begins with connect() again. Use stop(true) to wait for
 * the thread: plain wait() would keep the owner from taking the records that the thread waits for.
 */
class TELLARIX_GUI_API RecordStreamThread : public QThread
{
    Q_OBJECT

public:
    explicit RecordStreamThread(const std::string &recordStreamURL);
    /** Stops the stream and waits for it. */
    ~RecordStreamThread() override;

    const std::string &recordStreamURL() const { return _url; }

    /** Makes the stream; false with an errorString() if the URL can't be used. Stops a running one
     *  first; forgets streams, window and messages of before. A source that turns out to be
     * unusable when it is read ends the thread with a message. */
    bool connect();
    const QString &errorString() const { return _errorString; }
    /** Limits the records to a window; between connect() and start(). */
    void setTimeWindow(const Core::TimeWindow &window);
    /** Whether a live source whose server can't be reached is waited for; between connect() and
     *  start(). It ends with a message otherwise. */
    void setPersistent(bool persistent);
    /** Asks for a stream; between connect() and start(). False with an errorString() if the stream
     *  can't be had from such a source. */
    bool addStream(const std::string &network, const std::string &station,
                   const std::string &location, const std::string &channel);
    bool addStream(const std::string &network, const std::string &station,
                   const std::string &location, const std::string &channel,
                   const Core::TimeWindow &window);

    /** Ends the stream, also in the middle of a blocked read; records that still wait are
     *  dropped. @param waitForTermination  returns only when the thread has ended */
    void stop(bool waitForTermination);

    /** Share of the source that has been read, 0 to 1; negative if unknown. */
    double progress() const;
    /** Whom the stream waits for and why; empty if its server is there. */
    QString outage() const;
    /** True if the source that was read last could not be opened; the messages tell why. */
    bool hasOpenFailed() const;
    /** Messages of the stream so far, faults and notes; the first 1000, then a line that counts the
     *  others. */
    QStringList messages() const;

    // The signal of QObject keeps its name beside connect() above.
    using QThread::connect;

signals:
    /** A record, with a reference for the receiver. */
    void receivedRecord(Tellarix::Record *record);
    /** The same records, none of them null, some at a time in their order. */
    void receivedRecords(const QVector<Tellarix::RecordPtr> &records);
    /** The stream reported damage or a note; for the first 1000. Emitted by the reader: connected
     *  objects of the owner's thread get it queued. */
    void messageReceived(const QString &text, bool isFault);

protected:
    void run() override;
    void timerEvent(QTimerEvent *event) override;

private:
    class Queue;

    void readRecords(Queue &queue, IO::RecordStream &stream);
    void report(Queue &queue, const QString &text, bool isFault);
    Q_INVOKABLE void deliver();
    void sendOne(Record *record);
    void continueLater(bool later);

    std::string _url;
    QString _errorString;
    IO::RecordStreamPtr _stream;
    std::shared_ptr<Queue> _queue; // of one run, from connect() on
    int _timer{0};
};

} // namespace Gui
} // namespace Tellarix
