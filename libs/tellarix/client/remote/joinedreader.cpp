// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/joinedreader_p.h>

#include <tellarix/core/records/record.h>

#include <QThread>

#include <chrono>
#include <exception>

namespace Tellarix {
namespace IO {

namespace {

constexpr size_t MostMessages = 1000;
// Beside its samples a record takes so many bytes, more or less.
constexpr size_t RecordSize = 256;
constexpr std::chrono::milliseconds ClosePause(20);

size_t byteCount(const Record &record)
{
    return RecordSize + (record.data() ? record.data()->memorySize() : 0);
}

} // namespace

JoinedReader::JoinedReader(RecordStreamPtr stream, std::string name,
                           std::shared_ptr<JoinedMonitor> monitor, size_t mostBytes)
    : _stream(std::move(stream)), _name(std::move(name)), _monitor(std::move(monitor)),
      _mostBytes(mostBytes)
{
    _stream->setMessageHandler([this](const StreamMessage &message) { tell(message); });
    _thread.reset(QThread::create([this] { run(); }));
    _thread->start();
}

JoinedReader::~JoinedReader()
{
    {
        Lock lock(_monitor->mutex);
        // Opening a stream undoes a close() that came just before.
        while (!_threadEnded) {
            lock.unlock();
            _stream->close();
            lock.lock();
            _monitor->changed.wait_for(lock, ClosePause, [this] { return _threadEnded; });
        }
    }
    _thread->wait();
}

bool JoinedReader::isAtEnd(const Lock &) const
{
    return _items.empty() && _threadEnded;
}

bool JoinedReader::take(Item &item, const Lock &)
{
    if (_items.empty())
        return false;
    item = std::move(_items.front());
    _items.pop_front();
    _bytes -= byteCount(*item.record);
    _monitor->changed.notify_all();
    return true;
}

std::vector<StreamMessage> JoinedReader::takeMessages(const Lock &)
{
    std::vector<StreamMessage> messages;
    messages.swap(_messages);
    if (!messages.empty())
        _monitor->changed.notify_all();
    return messages;
}

void JoinedReader::run()
{
    // Streams are open to be added by others, and an exception must not end the program.
    try {
        read();
    } catch (const std::exception &exception) {
        tell({StreamMessage::Severity::Fault, _name, -1, exception.what()});
    }
    _stream->close();
    const Lock lock(_monitor->mutex);
    if (_state != State::Failed)
        _state = State::Ended;
    _threadEnded = true;
    _monitor->changed.notify_all();
}

void JoinedReader::read()
{
    const bool isOpen = _stream->open();
    {
        const Lock lock(_monitor->mutex);
        if (_monitor->closed)
            return;
        _state = isOpen ? State::Reading : State::Failed;
        _failure = isOpen ? std::string() : _stream->errorString();
        _monitor->changed.notify_all();
    }
    if (!isOpen) {
        tell({StreamMessage::Severity::Fault, _name, -1, _stream->errorString()});
        return;
    }
    RecordPtr record;
    while ((record = _stream->next()) && push(std::move(record))) {
    }
    // A stream lets go in next() of what belongs to its thread.
    _stream->close();
    _stream->next();
}

bool JoinedReader::push(RecordPtr record)
{
    Item item;
    item.originName = _stream->originName();
    item.originOffset = _stream->originOffset();
    const size_t size = byteCount(*record);
    item.record = std::move(record);

    Lock lock(_monitor->mutex);
    // One record always has room, however long it is.
    _monitor->changed.wait(
        lock, [&] { return _monitor->closed || _items.empty() || _bytes + size <= _mostBytes; });
    if (_monitor->closed)
        return false;
    _bytes += size;
    _items.push_back(std::move(item));
    _monitor->changed.notify_all();
    return true;
}

void JoinedReader::tell(const StreamMessage &message)
{
    Lock lock(_monitor->mutex);
    _monitor->changed.wait(lock,
                           [this] { return _monitor->closed || _messages.size() < MostMessages; });
    if (_monitor->closed)
        return;
    _messages.push_back(message);
    _monitor->changed.notify_all();
}

} // namespace IO
} // namespace Tellarix
