// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/recordstream.h>

#include <array>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>

namespace Tellarix {
namespace IO {

class JoinedCoverage;
class JoinedReader;
class JoinedSeam;
struct JoinedMonitor;

/**
 * A source for the past and a live source for the present as one: "joined://?past=URL&live=URL".
 *
 * | option    | default | meaning                                                            |
 * |-----------|---------|--------------------------------------------------------------------|
 * | past      |         | URL of the source for the past, percent-encoded                    |
 * | live      |         | URL of the live source, percent-encoded                            |
 * | overlap   | 3600    | seconds before the present from which on the live source is asked  |
 * | hold      | 256     | MB of live records that are held while the past is being read      |
 * | again     | 60      | seconds before the seam is asked for again, doubled each further   |
 * |           |         | time, up to an hour                                                |
 * | lag       | 86400   | seconds for which an archive that lags behind is asked for the     |
 * |           |         | seam; 0 for never                                                  |
 *
 * Both are opened and read at the same time. The past is asked for each window up to the present
 * and delivered first; then come the live records, but for those that are doubled: of the same
 * stream with the same start and number of samples, or wholly within what the past has delivered.
 * One that reaches beyond that is delivered whole.
 *
 * If the archive lags behind by more than the overlap, something is missing between its end and the
 * first live record of a stream. This seam is asked for again as long as the live source goes on,
 * until the archive has it or it is older than `lag`, and of the last `lag` only unless the archive
 * could not be asked before. What it brings comes between the live records, but only records with
 * samples that were missing. It is asked of the source itself: a cache in front of it believes for
 * a while that there is nothing.
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
    std::string outage() const override;
    /** That of the past; unknown when live records are delivered. */
    double progress() const override;

private:
    using ReaderPtr = std::shared_ptr<JoinedReader>;

    using Lock = std::unique_lock<std::mutex>;

    bool setOption(const std::string &name, const std::string &text);
    bool checkUrl(const char *name, const std::string &url);
    ReaderPtr makeReader(bool isLive, Core::Time now, size_t mostBytes);
    ReaderPtr makeSeamReader();
    void endReaders();
    std::array<ReaderPtr, 3> readers() const { return {_past, _live, _again}; }
    RecordPtr take(const Lock &lock);
    bool accepts(const ReaderPtr &reader, const Record &record);
    bool noteLive(const Record &record);
    bool endReader(Lock &lock);
    bool isSeamDue() const;
    void askForSeam(Lock &lock);
    void scheduleSeam();
    void planSeam();
    void tellSeam(const std::string &text);
    bool isDecided(const Lock &lock) const;
    bool isAnyOpen(const Lock &lock) const;
    bool hasMessages(const Lock &lock) const;
    void passMessages(Lock &lock);

    std::string _pastUrl;
    std::string _liveUrl;
    double _overlap{0};
    double _hold{0};
    double _firstPause{0};
    double _lag{0};

    std::shared_ptr<JoinedMonitor> _monitor;
    ReaderPtr _past; /**< null as soon as it has ended */
    ReaderPtr _live;
    ReaderPtr _again; /**< of the past, for the seam; null while it isn't asked */
    std::unique_ptr<JoinedSeam> _seam;
    bool _hasPastCome{false};
    bool _hasPastFailed{false};
    bool _isLagTold{false};
    double _pause{0}; /**< seconds before the seam is asked for again */
    std::optional<std::chrono::steady_clock::time_point> _nextAsk; /**< for the seam */
    std::set<std::string> _faults;              /**< those of the past that were told */
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
