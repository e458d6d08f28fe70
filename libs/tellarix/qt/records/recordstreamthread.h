#pragma once

#include <tellarix/client/io/recordstream.h>
#include <tellarix/qt/api.h>

#include <QStringList>
#include <QThread>

#include <memory>
#include <string>

namespace Tellarix {
namespace Gui {

/**
 * Runs a record stream in a thread of its own and hands its records to the thread that owns this
 * object, by its event loop.
 *
 * Every slot that is connected to receivedRecord() gets a reference of its own, which it adopts
 * with `RecordPtr record(pointer, false)`. At most a bounded number of records waits at a time: the
 * reader pauses when the owner is slow. finished() comes behind the last record. A thread that was
 * stopped may be connected and started again.
 */
class TELLARIX_GUI_API RecordStreamThread : public QThread
{
    Q_OBJECT

public:
    explicit RecordStreamThread(const std::string &recordStreamURL);
    /** Stops the stream and waits for it. */
    ~RecordStreamThread() override;

    const std::string &recordStreamURL() const { return _url; }

    /** Makes and sets up the stream; false with an errorString() if the URL can't be used or its
     *  source can't be opened. Forgets streams and window that were asked for before. */
    bool connect();
    const QString &errorString() const { return _errorString; }
    /** Limits the records to a window; before start(). */
    void setTimeWindow(const Core::TimeWindow &window);
    /** Asks for a stream; before start(). */
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
    /** Messages of the stream so far, faults and notes. */
    QStringList messages() const;

    // The signal of QObject keeps its name beside connect() above.
    using QThread::connect;

signals:
    /** A record, with a reference for the receiver. */
    void receivedRecord(Tellarix::Record *record);
    /** The stream reported damage or a note. */
    void messageReceived(const QString &text, bool isFault);

protected:
    void run() override;
    bool event(QEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    struct Queue;

    void deliver();

    std::string _url;
    QString _errorString;
    IO::RecordStreamPtr _stream;
    std::unique_ptr<Queue> _queue;
};

} // namespace Gui
} // namespace Tellarix
