// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/cachevisit_p.h>

#include <tellarix/core/strings.h>

#include <algorithm>

namespace Tellarix {
namespace IO {

namespace {

constexpr int64_t UsecsPerDay = int64_t(86400) * 1000000;
const Core::TimeSpan Day = Core::TimeSpan::FromUSecs(UsecsPerDay);
constexpr int64_t MostPendingBytes = 16 * 1024 * 1024;
// Pieces that lie so near to each other are asked for as one.
const Core::TimeSpan AskTolerance = Core::TimeSpan::FromUSecs(int64_t(600) * 1000000);
// Between records that came together, so little is not worth to be asked for again.
const Core::TimeSpan ShortGap = Core::TimeSpan::FromUSecs(int64_t(60) * 1000000);

Core::Time dayOf(Core::Time time)
{
    const int64_t rest = time.usecs() % UsecsPerDay;
    return Core::Time::FromUSecs(time.usecs() - (rest < 0 ? rest + UsecsPerDay : rest));
}

/** Calls @p visitor with each day that a window touches, and its part of the window. */
template <typename Visitor>
void forEachDay(const Core::TimeWindow &window, const Visitor &visitor)
{
    for (Core::Time day = dayOf(window.startTime()); day < window.endTime(); day += Day)
        visitor(day, window.overlap({day, day + Day}));
}

} // namespace

std::string CacheRequest::pattern() const
{
    return network + '.' + station + '.' + location + '.' + channel;
}

bool CacheRequest::matches(const StreamCodes &codes) const
{
    return Core::wildcardMatch(network, codes.network()) &&
           Core::wildcardMatch(station, codes.station()) &&
           Core::wildcardMatch(location, codes.location()) &&
           Core::wildcardMatch(channel, codes.channel());
}

CacheVisit::CacheVisit(CacheFolder &folder, Core::Time now, const std::atomic<bool> &closed)
    : _folder(folder), _now(now), _late(now - Core::TimeSpan(folder.settings().lateMinutes * 60)),
      _closed(closed)
{}

void CacheVisit::ask(const CacheRequest &request)
{
    Asked asked;
    asked.request = request;
    if (request.isPattern())
        asked.missing =
            known(request.pattern(), request.window, &asked.streams).missingIn(request.window);
    else
        asked.streams.insert(request.pattern());

    for (const std::string &id : asked.streams) {
        const CoveredTime missing = known(id, request.window, nullptr).missingIn(request.window);
        for (const Core::TimeWindow &window : missing.windows())
            asked.missing.add(window, AskTolerance);
    }
    _asked.push_back(std::move(asked));
}

bool CacheVisit::readNext(std::deque<RecordPtr> &records)
{
    if (_days.empty() || _closed)
        return false;

    const DayName name = *_days.begin();
    _days.erase(_days.begin());
    StreamCodesCPtr &codes = _codes[name.first];
    if (!codes)
        codes = StreamCodes::FromID(name.first);

    // One that was fetched again takes the place of the old one.
    std::map<std::pair<Core::Time, int>, RecordPtr> byStart;
    bool isSound = codes != nullptr;
    isSound = isSound &&
              _folder.read(name.first, name.second, _now, true,
                           [&](const CacheSegment &segment) {
                               std::vector<RecordPtr> found;
                               isSound = segment.readRecords(codes, found) && isSound;
                               for (RecordPtr &record : found)
                                   byStart[{record->startTime(), record->sampleCount()}] = record;
                           }) &&
              isSound;
    if (!isSound)
        askAgain(name);
    for (const auto &item : byStart)
        records.push_back(item.second);
    return true;
}

std::vector<CacheRequest> CacheVisit::missing() const
{
    std::vector<CacheRequest> requests;
    for (const Asked &asked : _asked) {
        for (const Core::TimeWindow &window : asked.missing.windows()) {
            requests.push_back(asked.request);
            requests.back().window = window;
        }
    }
    return requests;
}

void CacheVisit::keep(const Record &record)
{
    if (record.startTime() >= _late ||
        std::none_of(_asked.begin(), _asked.end(), [&](const Asked &asked) {
            return !asked.missing.isEmpty() && asked.request.matches(*record.codes());
        }))
        return;

    Arrival &arrival = _arrivals[record.streamID()];
    Core::TimeWindow window = record.timeWindow();
    // Times are rounded: what follows within half a sample leaves no gap.
    if (arrival.end.valid() && arrival.end < window.startTime() &&
        (window.startTime() - arrival.end).length() * record.samplingFrequency() <= 0.5)
        window.setStartTime(arrival.end);
    arrival.end = window.endTime();
    arrival.stretches.add(window);

    Pending &pending = _pending[{record.streamID(), dayOf(record.startTime())}];
    const int before = pending.segment.records.size();
    pending.segment.appendRecord(record);
    pending.stretches.add(settled(window));
    _pendingBytes += pending.segment.records.size() - before;
    if (_pendingBytes > MostPendingBytes)
        write();
}

void CacheVisit::write()
{
    for (auto &[name, pending] : _pending) {
        for (const Core::TimeWindow &window : pending.stretches.windows())
            pending.segment.stretches.push_back({window, false});
        append(name, pending.segment);
    }
    _pending.clear();
    _pendingBytes = 0;
}

void CacheVisit::finish()
{
    write();
    for (Asked &asked : _asked) {
        for (const auto &arrival : _arrivals) {
            const StreamCodesCPtr codes = StreamCodes::FromID(arrival.first);
            if (codes && asked.request.matches(*codes))
                asked.streams.insert(arrival.first);
        }
        finish(asked);
    }
}

/**
 * The stretches of a stream or pattern that are known; a record belongs to the file of the day in
 * which it starts.
 * @param streams  gets the streams of a pattern; null for a stream
 */
CoveredTime CacheVisit::known(const std::string &name, const Core::TimeWindow &window,
                              std::set<std::string> *streams)
{
    CoveredTime result;
    forEachDay({window.startTime() - Day, window.endTime()}, [&](Core::Time day, auto) {
        CoveredTime ofDay;
        bool hasRecords = false;
        std::vector<std::string> ids;
        if (_closed || !_folder.read(name, day, _now, false, [&](const CacheSegment &segment) {
                for (const AskedTime &stretch : segment.stretches) {
                    ofDay.add(stretch.window);
                    hasRecords =
                        hasRecords || (!stretch.isEmpty && stretch.window.overlaps(window));
                }
                ids.insert(ids.end(), segment.streams.begin(), segment.streams.end());
            }))
            return;
        for (const Core::TimeWindow &stretch : ofDay.windows())
            result.add(stretch);
        if (streams)
            streams->insert(ids.begin(), ids.end());
        else if (hasRecords)
            _days.insert({name, day});
    });
    return result;
}

/** What was known of a day is not. */
void CacheVisit::askAgain(const DayName &day)
{
    for (Asked &asked : _asked) {
        // Its last records may have run far into the next day.
        if (asked.streams.count(day.first))
            asked.missing.add(asked.request.window.overlap({day.second, day.second + Day + Day}),
                              AskTolerance);
    }
}

/** The part of a window in which nothing comes late any more; may be empty. */
Core::TimeWindow CacheVisit::settled(const Core::TimeWindow &window) const
{
    return {window.startTime(), std::min(window.endTime(), _late)};
}

void CacheVisit::append(const DayName &name, CacheSegment &segment)
{
    segment.asked = _now;
    if (!_closed)
        _folder.append(name.first, name.second, segment);
}

void CacheVisit::finish(const Asked &asked)
{
    CoveredTime missing;
    for (const Core::TimeWindow &window : asked.missing.windows())
        missing.add(settled(window));
    for (const std::string &id : asked.streams)
        finishStream(id, missing);
    if (!asked.request.isPattern())
        return;

    std::map<Core::Time, CacheSegment> days;
    for (const Core::TimeWindow &window : missing.windows()) {
        forEachDay(window, [&](Core::Time day, const Core::TimeWindow &part) {
            days[day].stretches.push_back({part, asked.streams.empty()});
        });
    }
    for (auto &[day, segment] : days) {
        segment.streams.assign(asked.streams.begin(), asked.streams.end());
        append({asked.request.pattern(), day}, segment);
    }
}

/** Writes down that a stream has nothing between what has come of it. */
void CacheVisit::finishStream(const std::string &id, const CoveredTime &missing)
{
    const CoveredTime &came = _arrivals[id].stretches;
    std::map<Core::Time, CacheSegment> days;
    for (const Core::TimeWindow &window : missing.windows()) {
        const CoveredTime rests = came.missingIn(window);
        for (const Core::TimeWindow &rest : rests.windows()) {
            const bool isBetween =
                window.startTime() < rest.startTime() && rest.endTime() < window.endTime();
            const bool isEmpty = !isBetween || rest.length() > ShortGap;
            forEachDay(rest, [&](Core::Time day, const Core::TimeWindow &part) {
                days[day].stretches.push_back({part, isEmpty});
            });
        }
    }
    for (auto &[day, segment] : days)
        append({id, day}, segment);
}

} // namespace IO
} // namespace Tellarix
