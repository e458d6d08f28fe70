// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/recordstream.h>

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

class QThread;

namespace Tellarix {
namespace IO {

/** What the readers of one stream and its user share. */
struct JoinedMonitor
{
    std::mutex mutex;
    std::condition_variable changed;
    bool closed{false}; /**< nothing is read any more */
};

/**
 * Reads a record stream in a thread of its own; what it gives waits in a bounded queue.
 *
 * Whatever takes a lock is called with that of the monitor held, whose condition tells of all
 * changes. To end a reader set the monitor's flag, let go of its lock, and call close().
 */
class TELLARIX_CLIENT_API JoinedReader
{
public:
    using Lock = std::unique_lock<std::mutex>;

    struct Item
    {
        RecordPtr record;
        std::string originName;
        int64_t originOffset{-1};
    };

    enum class State
    {
        Opening,
        Reading,
        Failed, /**< could not be opened */
        Ended,
    };

    /**
     * Begins to open and read the stream.
     * @param name       of the source in messages of the reader's own
     * @param mostBytes  the reader pauses when the samples that wait take so much
     */
    JoinedReader(RecordStreamPtr stream, std::string name, std::shared_ptr<JoinedMonitor> monitor,
                 size_t mostBytes);
    /** Waits for the thread; the monitor's flag has to be set before unless it has ended. */
    ~JoinedReader();

    State state(const Lock &) const { return _state; }
    /** Why it could not be opened. */
    const std::string &failure(const Lock &) const { return _failure; }
    /** True if all records were taken and no other will come. */
    bool isAtEnd(const Lock &lock) const;
    /** The next record; false if none waits. */
    bool take(Item &item, const Lock &);
    bool hasMessages(const Lock &) const { return !_messages.empty(); }
    /** The messages that have come since the last call. */
    std::vector<StreamMessage> takeMessages(const Lock &);

    /** Makes the thread end soon; any thread may call it, without the lock. */
    void close() { _stream->close(); }
    double progress() const { return _stream->progress(); }
    std::string outage() const { return _stream->outage(); }

private:
    void run();
    void read();
    bool push(RecordPtr record);
    void tell(const StreamMessage &message);

    const RecordStreamPtr _stream;
    const std::string _name;
    const std::shared_ptr<JoinedMonitor> _monitor;
    const size_t _mostBytes;

    State _state{State::Opening};
    std::string _failure;
    std::deque<Item> _items;
    size_t _bytes{0};
    std::vector<StreamMessage> _messages;
    bool _threadEnded{false};
    std::unique_ptr<QThread> _thread;
};

} // namespace IO
} // namespace Tellarix
