// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/remote/cachefolder.h>
#include <tellarix/client/remote/cachesegment_p.h>
#include <tellarix/client/remote/coveredtime_p.h>

#include <atomic>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Tellarix {
namespace IO {

/** A stream, or streams by `*` and `?`, in a window of time. */
struct TELLARIX_CLIENT_API CacheRequest
{
    std::string network;
    std::string station;
    std::string location;
    std::string channel;
    Core::TimeWindow window;

    std::string pattern() const;
    bool isPattern() const { return pattern().find_first_of("*?") != std::string::npos; }
    bool matches(const StreamCodes &codes) const;
};

/**
 * One visit to a source by way of its cache: ask() for all that is wanted, then readNext() until it
 * is false, then ask the source for missing(), keep() what comes, and finish() if all of it came.
 */
class TELLARIX_CLIENT_API CacheVisit
{
public:
    /** @param closed  ends what takes long; has to outlive the visit */
    CacheVisit(CacheFolder &folder, Core::Time now, const std::atomic<bool> &closed);

    /** Finds out what is known; both ends of the window have to be set. */
    void ask(const CacheRequest &request);
    bool knowsAny() const { return !_days.empty(); }

    /** Reads the known records of a day of a stream; false if there is no further one. */
    bool readNext(std::deque<RecordPtr> &records);

    /** What only the source has; known once all that is known was read. */
    std::vector<CacheRequest> missing() const;
    /** Keeps a record of the source if it is one that was missing. */
    void keep(const Record &record);
    /** Writes what was kept. */
    void write();
    /** Writes what was kept, and that there is nothing else in what was missing. */
    void finish();

private:
    using DayName = std::pair<std::string, Core::Time>; /**< id and day */

    struct Asked
    {
        CacheRequest request;
        CoveredTime missing;
        std::set<std::string> streams; /**< ids that are known to match */
    };
    struct Pending
    {
        CacheSegment segment;
        CoveredTime stretches;
    };
    struct Arrival
    {
        CoveredTime stretches;
        Core::Time end; /**< of the record that came last */
    };

    CoveredTime known(const std::string &name, const Core::TimeWindow &window,
                      std::set<std::string> *streams);
    void askAgain(const DayName &day);
    Core::TimeWindow settled(const Core::TimeWindow &window) const;
    void append(const DayName &name, CacheSegment &segment);
    void finish(const Asked &asked);
    void finishStream(const std::string &id, const CoveredTime &missing);

    CacheFolder &_folder;
    const Core::Time _now;
    const Core::Time _late; /**< from then on data may still come */
    const std::atomic<bool> &_closed;
    std::vector<Asked> _asked;
    std::set<DayName> _days; /**< those with known records that were not read yet */
    std::map<DayName, Pending> _pending;
    int64_t _pendingBytes{0};
    std::map<std::string, Arrival> _arrivals;
    std::map<std::string, StreamCodesCPtr> _codes;
};

} // namespace IO
} // namespace Tellarix
