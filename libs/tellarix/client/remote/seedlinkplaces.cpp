// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/seedlinkplaces.h>

#include <tellarix/client/remote/seedlinkprotocol.h>
#include <tellarix/core/strings.h>

#include <algorithm>

namespace Tellarix {
namespace IO {

namespace {

constexpr size_t MostRecent = 2048;
const Core::TimeSpan Memory(3600.0);
// Streams that ended long ago don't lead the others back to their end: those of a station not for
// longer than this, and those of many not for longer than what is remembered.
const Core::TimeSpan LongestReturn(86400.0);
const char *const Heading = "seedlink places 1 ";

} // namespace

void SeedLinkPlaces::noteLoss()
{
    Core::Time latest;
    for (const auto &[id, station] : _stations) {
        for (const auto &[streamId, stream] : station.streams)
            latest = std::max(latest, stream.latestEnd);
    }
    for (auto &[id, station] : _stations) {
        for (auto &[streamId, stream] : station.streams)
            stream.isInDoubt = stream.isInDoubt ||
                               (stream.latestEnd.valid() && stream.latestEnd >= latest - Memory);
    }
}

void SeedLinkPlaces::beginConnection()
{
    for (auto &[id, station] : _stations) {
        station.isResumed = station.isHeard = false;
        for (auto &[streamId, stream] : station.streams)
            stream.isChecked = false;
    }
}

SeedLinkPlaces::Verdict SeedLinkPlaces::take(const std::string &stationId,
                                             const std::string &streamId, uint32_t sequence,
                                             const Core::TimeWindow &record,
                                             double samplingFrequency, bool isAhead)
{
    Station &station = _stations[stationId];
    Stream &stream = station.streams[streamId];
    _lost = Core::TimeWindow();
    if (station.isResumed && !isAhead &&
        isDoubtful(station, stream, sequence, record, samplingFrequency)) {
        station.isByTime = true;
        return Verdict::Doubtful;
    }

    const Key key(record.startTime().usecs(), record.endTime().usecs());
    const bool known = isKnown(stream, key, !station.isResumed);
    _last = {&station, &stream, station.sequence, stream.latestEnd};
    station.isHeard = true;
    station.isByTime = false;
    station.sequence = sequence;
    stream.isChecked = true;
    // A server that still has what lies in front of a gap has lost nothing in it.
    const bool isInDoubt = stream.isInDoubt && !isAhead;
    stream.isInDoubt = stream.isInDoubt && isAhead;
    if (known)
        return Verdict::Known;
    if (isInDoubt && isBehindGap(stream, record.startTime(), samplingFrequency))
        _lost.set(stream.latestEnd, record.startTime());
    if (!isAhead)
        stream.latestEnd = std::max(stream.latestEnd, record.endTime());
    remember(stream, key);
    return Verdict::New;
}

std::optional<uint32_t> SeedLinkPlaces::resume(const std::string &station)
{
    const auto known = _stations.find(station);
    if (known == _stations.end() || known->second.isByTime)
        return std::nullopt;
    known->second.isResumed = known->second.sequence.has_value();
    return known->second.sequence;
}

Core::Time SeedLinkPlaces::timeOf(const std::string &pattern) const
{
    Core::Time earliest;
    Core::Time latest;
    bool isAllRemembered = true;
    for (const auto &[id, station] : _stations) {
        if (!Core::wildcardMatch(pattern, id))
            continue;
        for (const auto &[streamId, stream] : station.streams) {
            if (!stream.latestEnd.valid())
                continue;
            earliest = earliest.valid() ? std::min(earliest, stream.latestEnd) : stream.latestEnd;
            latest = std::max(latest, stream.latestEnd);
            isAllRemembered = isAllRemembered && !stream.floor.valid();
        }
    }
    if (isAllRemembered)
        return Core::Time();
    const bool isOne = pattern.find_first_of("*?") == std::string::npos;
    return std::max(earliest, latest - (isOne ? LongestReturn : Memory));
}

bool SeedLinkPlaces::doubtSilent()
{
    bool any = false;
    for (auto &[id, station] : _stations) {
        if (!station.isResumed || station.isHeard)
            continue;
        station.isByTime = true;
        any = true;
    }
    return any;
}

void SeedLinkPlaces::doubtAll()
{
    for (auto &[id, station] : _stations)
        station.isByTime = true;
}

std::string SeedLinkPlaces::toText(const std::string &server) const
{
    std::string text = Heading + server + '\n';
    for (const auto &[id, station] : _stations) {
        const auto sequence = &station == _last.station ? _last.sequence : station.sequence;
        for (const auto &[streamId, stream] : station.streams) {
            const Core::Time end = &stream == _last.stream ? _last.latestEnd : stream.latestEnd;
            if (sequence && end.valid() && (id + streamId).find(' ') == std::string::npos)
                text +=
                    id + ' ' + streamId + ' ' + std::to_string(*sequence) + ' ' + end.iso() + '\n';
        }
    }
    return text + "end\n";
}

bool SeedLinkPlaces::fromText(const std::string &text, const std::string &server)
{
    const std::vector<std::string> lines = Core::split(text, "\n");
    const std::string heading = Heading;
    if (lines.size() < 2 || lines.front().compare(0, heading.size(), heading) != 0 ||
        lines.back() != "end")
        return false;

    std::map<std::string, Station> stations;
    for (size_t i = 1; i + 1 < lines.size(); ++i) {
        const std::vector<std::string> fields = Core::split(lines[i], " ");
        int sequence = -1;
        Core::Time end;
        if (fields.size() != 4 || !Core::fromString(sequence, fields[2]) || sequence < 0 ||
            sequence >= static_cast<int>(SeedLinkSequences) || !end.fromString(fields[3]))
            return false;
        Station &station = stations[fields[0]];
        station.sequence = static_cast<uint32_t>(sequence);
        Stream &stream = station.streams[fields[1]];
        stream.latestEnd = stream.floor = end;
    }
    _stations = std::move(stations);
    _last = Undo();
    noteLoss();
    if (lines.front().substr(heading.size()) != server)
        doubtAll();
    return true;
}

bool SeedLinkPlaces::isKnown(const Stream &stream, Key key, bool isByTime)
{
    if (std::find(stream.recent.rbegin(), stream.recent.rend(), key) != stream.recent.rend())
        return true;
    // What was forgotten meanwhile was had; only late records may still come from before.
    return isByTime && stream.floor.valid() && key.second <= stream.floor.usecs();
}

/** True if the first record of a stream behind a new connection is not one that may follow. */
bool SeedLinkPlaces::isDoubtful(const Station &station, const Stream &stream, uint32_t sequence,
                                const Core::TimeWindow &record, double samplingFrequency)
{
    if (!station.isHeard && !isSeedLinkSequenceBehind(sequence, *station.sequence))
        return true;
    if (stream.isChecked || !stream.latestEnd.valid())
        return false;
    return isBehindGap(stream, record.startTime(), samplingFrequency) ||
           isKnown(stream, Key(record.startTime().usecs(), record.endTime().usecs()), false);
}

bool SeedLinkPlaces::isBehindGap(const Stream &stream, Core::Time start, double samplingFrequency)
{
    const double tolerance = samplingFrequency > 0 ? std::max(1.0, 2 / samplingFrequency) : 1;
    return start > stream.latestEnd + Core::TimeSpan(tolerance);
}

void SeedLinkPlaces::remember(Stream &stream, Key key)
{
    stream.recent.push_back(key);
    const int64_t oldest = (stream.latestEnd - Memory).usecs();
    while (stream.recent.size() > MostRecent || stream.recent.front().second < oldest) {
        const Core::Time end = Core::Time::FromUSecs(stream.recent.front().second);
        stream.floor = std::max(stream.floor, std::min(end, stream.latestEnd));
        stream.recent.pop_front();
    }
}

} // namespace IO
} // namespace Tellarix
