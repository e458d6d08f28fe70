// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/recordstreamthread.h>

#include <tellarix/core/records/record.h>

#include <QElapsedTimer>
#include <QMetaMethod>
#include <QPointer>
#include <QTimerEvent>

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>

namespace Tellarix {
namespace Gui {

namespace {

constexpr size_t MostRecords = 4096;
constexpr size_t MostBytes = 64 * 1024 * 1024;
constexpr int MostMessages = 1000;
// Taken at once: well below a slice, and enough for a few records of each stream of a file.
constexpr size_t MostTaken = 1024;
constexpr qint64 SliceMSecs = 8;

size_t byteCount(const Record &record)
{
    return record.data() ? record.data()->memorySize() : 0;
}

} // namespace

/** Records between the reader and the owner, and what was said about them. */
class RecordStreamThread::Queue
{
public:
    /**
     * Appends a record as soon as there is room.
     * @param wake  set if the owner has to be told
     * @return false if the queue was stopped
     */
    bool push(RecordPtr record, bool &wake)
    {
        const size_t bytes = byteCount(*record);
        std::unique_lock<std::mutex> lock(_mutex);
        while (!_stopped && (isFull() || (_readerWaits && !hasMuchRoom()))) {
            _readerWaits = true;
            _changed.wait(lock);
        }
        _readerWaits = false;
        if (_stopped)
            return false;

        _bytes += bytes;
        _records.push_back({std::move(record), bytes});
        wake = !_ownerAwake;
        _ownerAwake = true;
        return true;
    }

    /** The next records, at most so many, which count as delivered at the call of delivered(); none
     *  if there are none, and then the owner has to be woken for the next one. */
    QVector<RecordPtr> take(size_t most)
    {
        QVector<RecordPtr> taken;
        taken.reserve(static_cast<int>(most));
        const std::lock_guard<std::mutex> lock(_mutex);
        if (_records.empty()) {
            _ownerAwake = false;
            return taken;
        }

        for (; most > 0 && !_records.empty(); --most) {
            taken.append(std::move(_records.front().record));
            _bytes -= _records.front().bytes;
            _records.pop_front();
        }
        _isDelivering = true;
        if (_readerWaits && hasMuchRoom())
            _changed.notify_all();
        return taken;
    }

    /** Those that were taken last. */
    void delivered()
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        _isDelivering = false;
        if (_records.empty())
            _changed.notify_all();
    }

    /** Waits until the owner has got all records. */
    void waitUntilDelivered()
    {
        std::unique_lock<std::mutex> lock(_mutex);
        while (!_stopped && (!_records.empty() || _isDelivering))
            _changed.wait(lock);
    }

    void stop()
    {
        std::deque<Item> dropped; // freed without the lock
        const std::lock_guard<std::mutex> lock(_mutex);
        _stopped = true;
        dropped.swap(_records);
        _bytes = 0;
        _changed.notify_all();
    }

    bool isStopped() const
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        return _stopped;
    }

    void setOpenFailed()
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        _openFailed = true;
    }

    bool hasOpenFailed() const
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        return _openFailed;
    }

    /** False if there are too many messages already; then it is only counted. */
    bool addMessage(const QString &text)
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        if (_messages.size() >= MostMessages) {
            ++_furtherMessages;
            return false;
        }
        _messages.append(text);
        return true;
    }

    QStringList messages() const
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        QStringList result = _messages;
        if (_furtherMessages > 0)
            result.append(tr("... and %n more", nullptr, _furtherMessages));
        return result;
    }

private:
    struct Item
    {
        RecordPtr record;
        size_t bytes;
    };

    bool isFull() const { return _records.size() >= MostRecords || _bytes >= MostBytes; }
    // A reader that had to wait goes on when there is room for many, and so changes less often.
    bool hasMuchRoom() const
    {
        return _records.size() <= MostRecords / 2 && _bytes <= MostBytes / 2;
    }

    mutable std::mutex _mutex;
    std::condition_variable _changed;
    std::deque<Item> _records;
    size_t _bytes{0};
    bool _isDelivering{false};
    bool _ownerAwake{false};
    bool _readerWaits{false};
    bool _stopped{false};
    bool _openFailed{false};
    QStringList _messages;
    int _furtherMessages{0};
};

RecordStreamThread::RecordStreamThread(const std::string &recordStreamURL)
    : _url(recordStreamURL), _queue(std::make_shared<Queue>())
{
    qRegisterMetaType<Tellarix::Record *>("Tellarix::Record*");
}

RecordStreamThread::~RecordStreamThread()
{
    stop(true);
}

bool RecordStreamThread::connect()
{
    stop(true);
    continueLater(false);

    std::string error;
    _queue = std::make_shared<Queue>();
    _stream = IO::RecordStream::Create(_url, &error);
    _errorString = QString::fromStdString(error);
    if (!_stream)
        return false;

    _errorString.clear();
    // The stream may outlive its turn in this thread, but its queue then is another one.
    _stream->setMessageHandler([this, queue = _queue](const IO::StreamMessage &message) {
        report(*queue, QString::fromStdString(message.text()),
               message.severity == IO::StreamMessage::Severity::Fault);
    });
    return true;
}

void RecordStreamThread::setTimeWindow(const Core::TimeWindow &window)
{
    if (_stream && !isRunning())
        _stream->setTimeWindow(window);
}

void RecordStreamThread::setPersistent(bool persistent)
{
    if (_stream && !isRunning())
        _stream->setPersistent(persistent);
}

bool RecordStreamThread::addStream(const std::string &network, const std::string &station,
                                   const std::string &location, const std::string &channel)
{
    return addStream(network, station, location, channel, Core::TimeWindow());
}

bool RecordStreamThread::addStream(const std::string &network, const std::string &station,
                                   const std::string &location, const std::string &channel,
                                   const Core::TimeWindow &window)
{
    if (!_stream || isRunning()) {
        _errorString = _stream ? tr("Streams can't be added while %1 is being read")
                                     .arg(QString::fromStdString(_url))
                               : tr("%1 is not connected").arg(QString::fromStdString(_url));
        return false;
    }
    if (_stream->addStream(network, station, location, channel, window))
        return true;
    _errorString = QString::fromStdString(_stream->errorString());
    return false;
}

void RecordStreamThread::stop(bool waitForTermination)
{
    // In this order, so that a reader that is just opening the stream sees that it has to end.
    _queue->stop();
    if (_stream && isRunning())
        _stream->close();
    if (waitForTermination && QThread::currentThread() != this)
        wait();
}

double RecordStreamThread::progress() const
{
    return _stream ? _stream->progress() : -1;
}

QString RecordStreamThread::outage() const
{
    return _stream ? QString::fromStdString(_stream->outage()) : QString();
}

bool RecordStreamThread::hasOpenFailed() const
{
    return _queue->hasOpenFailed();
}

QStringList RecordStreamThread::messages() const
{
    return _queue->messages();
}

void RecordStreamThread::run()
{
    const std::shared_ptr<Queue> queue = _queue;
    const IO::RecordStreamPtr stream = _stream;
    if (!stream) {
        report(*queue, tr("%1 is not connected").arg(QString::fromStdString(_url)), true);
        return;
    }

    // Streams are open to be added by others, and an exception must not end the program.
    try {
        readRecords(*queue, *stream);
    } catch (const std::exception &exception) {
        report(*queue,
               QStringLiteral("%1: %2").arg(QString::fromStdString(_url),
                                            QString::fromLocal8Bit(exception.what())),
               true);
    }
    stream->close();
    queue->waitUntilDelivered();
}

void RecordStreamThread::readRecords(Queue &queue, IO::RecordStream &stream)
{
    if (queue.isStopped())
        return;
    if (!stream.open()) {
        const QString reason = QString::fromStdString(stream.errorString());
        const QString text = tr("%1 can't be opened").arg(QString::fromStdString(_url));
        if (queue.isStopped())
            return;
        queue.setOpenFailed();
        report(queue, reason.isEmpty() ? text : reason, true);
        return;
    }

    while (!queue.isStopped()) {
        RecordPtr record = stream.next();
        bool wake = false;
        if (!record || !queue.push(std::move(record), wake))
            return;
        if (wake)
            QMetaObject::invokeMethod(this, "deliver", Qt::QueuedConnection);
    }
}

void RecordStreamThread::report(Queue &queue, const QString &text, bool isFault)
{
    if (queue.addMessage(text))
        emit messageReceived(text, isFault);
}

void RecordStreamThread::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == _timer)
        deliver();
    else
        QThread::timerEvent(event);
}

void RecordStreamThread::deliver()
{
    const QPointer<RecordStreamThread> self(this);
    const std::shared_ptr<Queue> queue = _queue;

    static const QMetaMethod single = QMetaMethod::fromSignal(&RecordStreamThread::receivedRecord);
    QElapsedTimer elapsed;
    elapsed.start();
    for (;;) {
        const bool areSingle = isSignalConnected(single);
        const QVector<RecordPtr> records = queue->take(areSingle ? 1 : MostTaken);
        if (records.isEmpty())
            break;
        emit receivedRecords(records);
        if (self && areSingle)
            sendOne(records.first().get());
        queue->delivered();

        // A receiver may have deleted this object or connected it again.
        if (!self || queue != _queue)
            return;
        if (elapsed.elapsed() >= SliceMSecs) {
            continueLater(true);
            return;
        }
    }
    continueLater(false);
}

void RecordStreamThread::sendOne(Record *record)
{
    // Those who don't get the signal would never give their reference back.
    const int count = signalsBlocked() ? 0 : receivers(SIGNAL(receivedRecord(Tellarix::Record *)));
    for (int i = 0; i < count; ++i)
        intrusive_ptr_add_ref(record);
    emit receivedRecord(record);
}

void RecordStreamThread::continueLater(bool later)
{
    if (later && _timer == 0) {
        _timer = startTimer(0);
    } else if (!later && _timer != 0) {
        killTimer(_timer);
        _timer = 0;
    }
}

} // namespace Gui
} // namespace Tellarix
