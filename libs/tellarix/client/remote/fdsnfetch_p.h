// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/recordstream.h>
#include <tellarix/client/remote/fdsnaddress.h>
#include <tellarix/client/remote/fdsnpieces_p.h>
#include <tellarix/client/remote/serveroutage_p.h>
#include <tellarix/core/records/formats/recordscanner.h>

#include <chrono>
#include <deque>
#include <mutex>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace Tellarix {
namespace IO {

/** How records are asked for. */
struct FdsnSettings
{
    int parallel{4};
    int tries{8}; /**< of one request that brings nothing though the server is there */
    OutageSettings outage;
    QByteArray header; /**< lines that come before those of the streams */
    HttpSettings http;
    FdsnPieceSizes sizes;
};

/** A name of a record that is the same whenever a server sends it. */
std::string fdsnRecordKey(const Record &record);

/** What those who ask one server side by side have in common. */
class FdsnExchange : public ServerOutage
{
public:
    void open(const std::string &server, Tell tell);
    /** Whether a text of some kind has not been told yet; false from the 1000th on. */
    bool isNew(const std::string &text);

    /** The server has answered, so that it is there and the address is right. */
    std::atomic<bool> hasAnswered{false};
    /** It has taken a request. */
    std::atomic<bool> hasServed{false};

private:
    std::mutex _toldMutex;
    std::set<std::string> _told;
};

/** Who takes what comes of a piece; called by the thread that fetches it. */
struct FdsnReceiver
{
    /** May wait; false ends the fetching. */
    std::function<bool(const RecordPtr &record)> take;
    std::function<void(StreamMessage::Severity severity, const std::string &cause)> tell;
};

/** Fetches the records of one piece after another, whatever the server does meanwhile. */
class FdsnFetch
{
public:
    FdsnFetch(const FdsnAddress &address, const FdsnSettings &settings, FdsnExchange &exchange);

    /** False if nothing can be had from the server at all, which has been told. */
    bool run(const FdsnLines &lines, const FdsnReceiver &receiver);
    void cancel() { _client.cancel(); }

private:
    using Severity = StreamMessage::Severity;
    /** What came of a request. */
    enum class Outcome
    {
        Done,
        Again,        /**< the rest of it, soon */
        Split,        /**< it was too large */
        SplitStreams, /**< some of the streams are the trouble */
        GivenUp,      /**< and told */
        Hopeless,     /**< and told: the server can't be used */
        Ended
    };
    struct StreamProgress
    {
        Core::Time lastStart;
        Core::Time restart; /**< where the samples end that have come, less half an interval */
        bool ordered{true};
    };

    Outcome ask(const FdsnLines &lines);
    bool isServerThere();
    Outcome judgeFailure(const FdsnLines &lines, const HttpAnswer &answer);
    Outcome judgeStatus(const FdsnLines &lines);
    Outcome tryAgain(const FdsnLines &lines, const std::string &cause);
    Outcome giveUp(const FdsnLines &lines, const std::string &cause);
    Outcome giveUpAll(const std::string &cause);
    void tellOfBytes(const FdsnLines &lines);
    Outcome readRecords(const FdsnLines &lines);
    bool isPage(const QByteArray &head) const;
    bool takeRecord();
    FdsnLines restOf(const FdsnLines &lines) const;
    std::chrono::milliseconds pauseLength() const;

    const FdsnAddress &_address;
    const FdsnSettings &_settings;
    FdsnExchange &_exchange;
    const FdsnReceiver *_receiver{nullptr};
    HttpClient _client;
    Formats::RecordScanner _scanner;
    Formats::MiniSeedDecoder _decoder;
    int _failures{0}; /**< one after another, without a record in between */
    std::unordered_map<std::string, StreamProgress> _progress;
    std::unordered_set<std::string> _earlier; /**< records of the requests before in the piece */
    std::vector<std::string> _current;        /**< those of this request */
};

} // namespace IO
} // namespace Tellarix
