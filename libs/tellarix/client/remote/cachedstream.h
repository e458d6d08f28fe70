// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/recordstream.h>
#include <tellarix/client/remote/cachefolder.h>

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Tellarix {
namespace IO {

class CacheVisit;
class JoinedCoverage;

/**
 * A remote source with a cache on disk in front of it: "cached+SCHEME://SOURCE" for the schemes
 * fdsnws+https, fdsnws+http, archive+https and archive+http, or "cached://?source=URL" for any.
 *
 * | option | default                   | meaning                                         |
 * |--------|---------------------------|-------------------------------------------------|
 * | source |                           | URL of the source, percent-encoded              |
 * | folder | that of the user's caches | where records are kept                          |
 * | size   | 2048                      | MB that all sources may take there              |
 * | age    | 30                        | days after which a source is asked again        |
 * | empty  | 24                        | hours for which it holds that there is nothing  |
 * | late   | 60                        | minutes before the present always asked for     |
 *
 * What is known of the requested streams and windows is delivered first, exactly as it once came;
 * then the source is asked for what is missing, and not at all if nothing is. A stretch is known
 * when its records have come, or when the source has ended without a fault and without records in
 * it. Requests with an open end or of more than ten years go to the source as they are.
 *
 * Where the folder can't be used, one note tells it, and all comes from the source. Records that
 * were not written yet when close() comes are not kept.
 */
class TELLARIX_CLIENT_API CachedStream : public RecordStream
{
public:
    /** @param scheme  of the source, for URLs without options; empty for "cached://" */
    explicit CachedStream(std::string scheme = std::string());
    ~CachedStream() override;

    bool setSource(const std::string &source) override;
    /** The URL of what it stands in front of. */
    const std::string &sourceUrl() const { return _url; }
    /** Fails if nothing is known and the source can't be opened. */
    bool isLive() const override { return isLiveBy(_url); }
    bool open() override;
    RecordPtr next() override;
    void close() override;

    std::string originName() const override;
    int64_t originOffset() const override;
    double progress() const override;
    std::string outage() const override;

private:
    bool setOption(const std::string &name, const std::string &text);
    void visitCache();
    void visitCache(const Request &request);
    bool openSource();
    bool requestOf(RecordStream &source) const;
    RecordPtr nextKnown();
    RecordPtr nextOfSource();
    void endSource();
    void sweep() const;
    void setSourceStream(const RecordStreamPtr &source);
    void tellFailure();

    const std::string _scheme;
    std::string _url;
    CacheSettings _settings;

    std::unique_ptr<CacheFolder> _folder;
    std::unique_ptr<CacheVisit> _visit;
    std::vector<Request> _passedOn;             /**< those that the cache has no part in */
    std::unique_ptr<JoinedCoverage> _delivered; /**< from the cache */
    std::deque<RecordPtr> _known;               /**< read from the cache */
    RecordStreamPtr _source;                    /**< null before and after it is read */
    mutable std::mutex _sourceMutex;            /**< close() comes from any thread */
    bool _isSourceDone{false};
    bool _hasFault{false};
    bool _hasToldFailure{false};
    std::atomic<bool> _closed{true};
};

} // namespace IO
} // namespace Tellarix
