// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/coveredtime_p.h>

#include <algorithm>

namespace Tellarix {
namespace IO {

namespace {

// Messages of a log are few; a source that makes them up must not fill the memory.
constexpr size_t MostMoments = 100000;

bool isSpan(const Record &record)
{
    return record.hasEndTime() && record.endTime() > record.startTime();
}

Core::TimeSpan halfSample(const Record &record)
{
    return Core::TimeSpan(0.5 / record.samplingFrequency());
}

} // namespace

void CoveredTime::add(const Core::TimeWindow &window, Core::TimeSpan tolerance)
{
    if (window.isEmpty())
        return;

    Core::TimeWindow united = window;
    auto first = std::lower_bound(
        _windows.begin(), _windows.end(), window.startTime() - tolerance,
        [](const Core::TimeWindow &stretch, Core::Time time) { return stretch.endTime() < time; });
    auto last = first;
    for (; last != _windows.end() && last->startTime() <= window.endTime() + tolerance; ++last)
        united = united.united(*last);
    if (first == last) {
        _windows.insert(first, united);
        return;
    }
    *first = united;
    _windows.erase(first + 1, last);
}

bool CoveredTime::covers(const Core::TimeWindow &window, Core::TimeSpan tolerance) const
{
    const auto behind =
        std::upper_bound(_windows.begin(), _windows.end(), window.startTime() + tolerance,
                         [](Core::Time time, const Core::TimeWindow &stretch) {
                             return time < stretch.startTime();
                         });
    return behind != _windows.begin() && window.endTime() <= (behind - 1)->endTime() + tolerance;
}

CoveredTime CoveredTime::missingIn(const Core::TimeWindow &window) const
{
    CoveredTime missing;
    Core::Time reached = window.startTime();
    for (const Core::TimeWindow &stretch : _windows) {
        missing.add({reached, std::min(stretch.startTime(), window.endTime())});
        reached = std::max(reached, stretch.endTime());
    }
    missing.add({reached, window.endTime()});
    return missing;
}

void JoinedCoverage::add(const Record &record)
{
    Stream &stream = _streams[record.streamID()];
    if (isSpan(record))
        stream.stretches.add(record.timeWindow(), halfSample(record));
    else if (stream.moments.size() < MostMoments)
        stream.moments.insert({record.startTime(), record.sampleCount()});
}

bool JoinedCoverage::holds(const Record &record) const
{
    const auto stream = _streams.find(record.streamID());
    if (stream == _streams.end())
        return false;
    if (isSpan(record))
        return stream->second.stretches.covers(record.timeWindow(), halfSample(record));
    return stream->second.moments.count({record.startTime(), record.sampleCount()}) > 0;
}

} // namespace IO
} // namespace Tellarix
