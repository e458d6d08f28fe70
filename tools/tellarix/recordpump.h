// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "sourceoptions.h"

#include <tellarix/client/io/recordstream.h>

#include <QCoreApplication>
#include <QString>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Tellarix {
namespace Tool {

/**
 * Brings the records of several sources to one receiver, until all have ended, nothing has come
 * for the time-out of the request, or somebody ends it.
 *
 * Each server is read by a thread of its own; files are read by one thread, one after the other.
 */
class RecordPump
{
    Q_DECLARE_TR_FUNCTIONS(Tellarix::Tool::RecordPump)

public:
    /** All of it is called by the thread of run(). */
    struct Receiver
    {
        /** Gets a record and where it came from; false ends the pump. */
        std::function<bool(const RecordPtr &record, const std::string &origin, int64_t offset)>
            take;
        /** Gets messages of sources; without it they go to standard error. */
        std::function<void(const QString &message)> tell;
        /** Called about once a second; false ends the pump. May be missing. */
        std::function<bool()> wake;
    };

    explicit RecordPump(SourceRequest request = {});
    ~RecordPump();

    RecordPump(const RecordPump &) = delete;
    RecordPump &operator=(const RecordPump &) = delete;

    void setRequest(SourceRequest request) { _request = std::move(request); }
    const SourceRequest &request() const { return _request; }
    /** Whether live sources that can't be reached are waited for; they have failed otherwise. */
    void setPersistent(bool persistent) { _isPersistent = persistent; }

    /** False if something could not be read. What has come until the end is delivered. */
    bool run(const Receiver &receiver);
    /** Makes run() return soon, also one that is still to come; any thread may call it. */
    void end();
    bool isEnded() const { return _isEnded; }

private:
    using Clock = std::chrono::steady_clock;

    struct Item
    {
        RecordPtr record; /**< null for messages */
        std::shared_ptr<const std::string> origin;
        int64_t offset{-1};
        QString message;
        bool isFault{false};
    };

    /** A thread with the sources that it reads. */
    struct Lane
    {
        QStringList urls;
        std::thread thread;
        IO::RecordStreamPtr stream; /**< the one that is being read */
    };

    void startLanes();
    void read(Lane &lane);
    void readSource(Lane &lane, const QString &url);
    bool readRecords(IO::RecordStream &stream);
    bool open(IO::RecordStream &stream) const;
    void setStream(Lane &lane, const IO::RecordStreamPtr &stream);
    void push(Item item);
    void tell(const QString &message, bool isFault);

    bool gather(Clock::time_point until, std::vector<Item> *items);
    void deliver(std::vector<Item> items, const Receiver &receiver);
    void wake(const Receiver &receiver);
    void closeStreams();

    SourceRequest _request;
    bool _isPersistent{false};
    std::atomic<bool> _isEnded{false};    /**< by end() or the receiver */
    std::atomic<bool> _isTimedOut{false}; /**< nothing has come for too long */
    bool _isRefused{false};               /**< the receiver takes no more */
    bool _isComplete{true};

    std::mutex _mutex;
    std::condition_variable _itemsCame;
    std::condition_variable _itemsLeft;
    std::vector<Item> _items;
    int64_t _samples{0}; /**< of the items */
    size_t _running{0};  /**< lanes whose thread isn't done */
    std::vector<std::unique_ptr<Lane>> _lanes;
};

} // namespace Tool
} // namespace Tellarix
