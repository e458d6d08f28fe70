// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/recordstream.h>
#include <tellarix/client/remote/httpclient.h>
#include <tellarix/client/remote/serveroutage_p.h>
#include <tellarix/core/records/formats/miniseed.h>
#include <tellarix/core/records/formats/recordscanner.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace Tellarix {
namespace IO {

/**
 * The records of one miniSEED file on a web server.
 *
 * Where the server knows ranges, only the part of a large file is fetched that the window needs:
 * its borders are found by halves, from the times of records here and there. If records turn out
 * not to be in the order of time, the rest of the file is read as well. What breaks off is asked
 * for again from there on. A file that isn't there has no records.
 *
 * A stream that was opened lets go of its connection when next() gives null; the thread that opened
 * it has to call that, also after close().
 */
class HttpArchiveFile : public RecordStream
{
public:
    /** @param outage  of the server; has to outlive the file */
    HttpArchiveFile(const QUrl &url, const HttpSettings &settings, ServerOutage &outage);
    ~HttpArchiveFile() override;

    bool setSource(const std::string &) override { return true; }
    bool open() override;
    RecordPtr next() override;
    void close() override;

    std::string originName() const override { return _name; }
    int64_t originOffset() const override { return _originOffset; }
    double progress() const override { return _progress; }

    /** True if it failed since the server doesn't answer at all. */
    bool isServerLost() const { return _isServerLost; }

private:
    /** Bytes from the first up to, but not including, the second. */
    using Part = std::pair<qint64, qint64>;

    /** A record somewhere in the file. */
    struct Probe
    {
        qint64 offset{0};
        Core::TimeWindow window;
    };

    using Range = std::pair<Probe, Probe>;

    bool begin();
    void setParts();
    Part findPart();
    std::optional<Range> halve(Range range, const std::function<bool(const Probe &)> &isBefore);
    bool probe(qint64 offset, Probe &found);
    bool ask(qint64 first, qint64 last);
    bool askOnce(qint64 first, qint64 last);
    bool skip(qint64 size);
    bool isWorthRetrying() const;
    void pause(int tries);
    bool readMore();
    bool askOnwards();
    void nextPart();
    RecordPtr decodeFound();
    void checkOrder(const Core::TimeWindow &window);
    Core::TimeWindow wanted() const;
    void tell(StreamMessage::Severity severity, int64_t offset, const std::string &cause);
    void setClient(std::unique_ptr<HttpClient> client);

    const QUrl _url;
    const HttpSettings _settings;
    ServerOutage &_outage;
    const std::string _name;
    std::unique_ptr<HttpClient> _client;
    std::mutex _clientMutex; /**< close() comes from any thread */
    std::condition_variable _closing;
    std::atomic<bool> _closed{true};
    std::atomic<bool> _isServerLost{false};
    std::atomic<double> _progress{-1};

    bool _hasRanges{false};
    bool _isAbsent{false};
    qint64 _size{-1};
    std::deque<Part> _parts; /**< to be read, the first of them now */
    qint64 _position{0};     /**< of the next byte of the file */
    qint64 _asked{0};        /**< up to there bytes are on their way */
    qint64 _blockSize{0};
    qint64 _base{0};    /**< where the scanner's bytes begin in the file */
    Core::Time _latest; /**< start of a record so far */
    bool _isOrdered{true};
    Formats::RecordScanner _scanner;
    Formats::MiniSeedDecoder _decoder;
    int64_t _originOffset{-1};
    int _messages{0};
};

} // namespace IO
} // namespace Tellarix
