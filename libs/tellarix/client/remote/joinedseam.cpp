// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/joinedseam_p.h>

#include <algorithm>

namespace Tellarix {
namespace IO {

void JoinedSeam::notePast(const Record &record)
{
    Core::Time &end = _streams[record.streamID()].pastEnd;
    end = std::max(end, record.timeWindow().endTime());
}

bool JoinedSeam::noteLive(const Record &record, Core::Time start, bool isWhole)
{
    if (record.timeWindow().isEmpty())
        return false;
    Stream &stream = _streams[record.streamID()];
    if (stream.isLive) {
        fill(stream, record);
        return false;
    }
    stream.isLive = true;
    stream.codes = record.codes();
    stream.tolerance = Core::TimeSpan(0.5 / record.samplingFrequency());
    const Core::Time end = record.startTime();
    const Core::Time earliest = end - _longest;
    Core::Time begin = std::max(start, stream.pastEnd);
    if (!begin.valid() || !isWhole)
        begin = std::max(begin, earliest);
    stream.hole.set(begin, end);
    return !missing(stream).isEmpty();
}

bool JoinedSeam::fill(const Record &record)
{
    const auto stream = _streams.find(record.streamID());
    return stream != _streams.end() && fill(stream->second, record);
}

std::vector<JoinedSeam::Hole> JoinedSeam::holes() const
{
    std::vector<Hole> holes;
    for (const auto &[id, stream] : _streams) {
        const Core::TimeWindow window = missing(stream);
        if (!window.isEmpty())
            holes.push_back({stream.codes, window});
    }
    return holes;
}

std::vector<JoinedSeam::Hole> JoinedSeam::giveUp(Core::Time time)
{
    std::vector<Hole> holes;
    for (auto &[id, stream] : _streams) {
        const Core::TimeWindow window = missing(stream);
        if (window.isEmpty() || window.endTime() >= time)
            continue;
        holes.push_back({stream.codes, window});
        stream.hole = Core::TimeWindow();
        stream.filled = CoveredTime();
    }
    return holes;
}

bool JoinedSeam::fill(Stream &stream, const Record &record)
{
    const Core::TimeWindow part = stream.hole.overlap(record.timeWindow());
    if (part.isEmpty())
        return false;
    const CoveredTime missing = stream.filled.missingIn(part);
    stream.filled.add(part, stream.tolerance);
    return std::any_of(
        missing.windows().begin(), missing.windows().end(),
        [&](const Core::TimeWindow &window) { return window.length() > stream.tolerance; });
}

/** From the first to the last missing sample; empty if none is. */
Core::TimeWindow JoinedSeam::missing(const Stream &stream)
{
    Core::TimeWindow all;
    if (stream.hole.isEmpty())
        return all;
    const CoveredTime parts = stream.filled.missingIn(stream.hole);
    for (const Core::TimeWindow &window : parts.windows()) {
        if (window.length() > stream.tolerance)
            all = all.united(window);
    }
    return all;
}

} // namespace IO
} // namespace Tellarix
