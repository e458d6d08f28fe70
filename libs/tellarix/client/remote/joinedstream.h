// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/recordstream.h>

#include <memory>
#include <mutex>
#include <string>

namespace Tellarix {
namespace IO {

class JoinedCoverage;
class JoinedReader;
struct JoinedMonitor;

/**
 * A source for the past and a live source for the present as one: "joined://?past=URL&live=URL".
 *
 * | option    | default | meaning                                                            |
 * |-----------|---------|--------------------------------------------------------------------|
 * | past      |         | URL of the source for the past, percent-encoded                    |
 * | live      |         | URL of the live source, percent-encoded                            |
 * | overlap   | 3600    | seconds before the present from which on the live source is asked; |
 * |           |         | more than the archive lags behind                                  |
 * | hold      | 256     | MB of live records that are held while the past is being read      |
 *
 * Both are opened and read at the same time. The past is asked for each window up to the present
 * and delivered first; then come the live records, but for those that are doubled: of the same
 * stream with the same start and number of samples, or wholly within what the past has delivered.
 * One that reaches beyond that is delivered whole.
 *
 * If live records fill what is held, the live source is not read until the past has been: what
 * comes meanwhile waits at its server, as far as that keeps it, and is not lost here. A source that
 * fails is told by a message, and the other goes on.
 */
class TELLARIX_CLIENT_API JoinedStream : public RecordStream
{
public:
    JoinedStream();
    ~JoinedStream() override;

    bool setSource(const std::string &source) override;
    /** Waits until one of the sources is open; fails if neither can be opened. */
    bool isLive() const override { return isLiveBy(_liveUrl); }
    bool open() override;
    RecordPtr next() override;
    void close() override;

    std::string originName() const override { return _originName; }
    int64_t originOffset() const override { return _originOffset; }
    /** That of the past; unknown when live records are delivered. */
    double progress() const override;

private:
    using ReaderPtr = std::shared_ptr<JoinedReader>;

    using Lock = std::unique_lock<std::mutex>;

    bool setOption(const std::string &name, const std::string &text);
    bool checkUrl(const char *name, const std::string &url);
    ReaderPtr makeReader(bool isLive, Core::Time now, size_t mostBytes);
    void endReaders();
    bool isDecided(const Lock &lock) const;
    bool isAnyOpen(const Lock &lock) const;
    bool hasMessages(const Lock &lock) const;
    void passMessages(Lock &lock);

    std::string _pastUrl;
    std::string _liveUrl;
    double _overlap{0};
    double _hold{0};

    std::shared_ptr<JoinedMonitor> _monitor;
    ReaderPtr _past; /**< null as soon as it has ended */
    ReaderPtr _live;
    std::unique_ptr<JoinedCoverage> _delivered; /**< of the past */
    std::string _originName;
    int64_t _originOffset{-1};
};

/** The part of a window, of which either end may be unset, for a source of the past and for one of
 *  the present that is asked from @p overlap before @p now on. */
struct TELLARIX_CLIENT_API JoinedWindows
{
    JoinedWindows(const Core::TimeWindow &window, Core::Time now, Core::TimeSpan overlap);

    Core::TimeWindow past;
    Core::TimeWindow live;
    bool hasPast;
    bool hasLive;
};

} // namespace IO
} // namespace Tellarix
