// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/fdsnpieces_p.h>

#include <tellarix/core/strings.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>

namespace Tellarix {
namespace IO {

namespace {

constexpr int StreamsOfPattern = 8;
constexpr double SecondsPerHour = 3600;
constexpr double ShortWindow = 600;
constexpr double ShortestWindow = 10;

bool hasWildcard(const std::string &code)
{
    return code.find_first_of("*?") != std::string::npos;
}

/** True if all codes that @p pattern lets through are let through by @p wider as well. */
bool isWithin(const std::string &pattern, const std::string &wider)
{
    // One character of the pattern stands for any number then.
    const bool isOpen = pattern.find('*') != std::string::npos;
    return pattern == wider || ((!isOpen || wider.find('?') == std::string::npos) &&
                                Core::wildcardMatch(wider, pattern));
}

bool isWithin(const FdsnLine &line, const FdsnLine &wider)
{
    const StreamCodes &codes = line.codes;
    return wider.window.contains(line.window) && isWithin(codes.network(), wider.codes.network()) &&
           isWithin(codes.station(), wider.codes.station()) &&
           isWithin(codes.location(), wider.codes.location()) &&
           isWithin(codes.channel(), wider.codes.channel());
}

Core::TimeWindow coverOf(const FdsnLines &lines)
{
    Core::TimeWindow cover;
    for (const FdsnLine &line : lines)
        cover = cover.united(line.window);
    return cover;
}

/** The part of all lines that lies in a window. */
FdsnLines clipped(const FdsnLines &lines, const Core::TimeWindow &window)
{
    FdsnLines result;
    for (const FdsnLine &line : lines) {
        const Core::TimeWindow part = line.window.overlap(window);
        if (!part.isEmpty())
            result.push_back({line.codes, part});
    }
    return result;
}

} // namespace

bool FdsnLine::isPattern() const
{
    return hasWildcard(codes.network()) || hasWildcard(codes.station()) ||
           hasWildcard(codes.location()) || hasWildcard(codes.channel());
}

FdsnPieces::FdsnPieces(FdsnLines lines, const FdsnPieceSizes &sizes)
    : _lines(std::move(lines)), _window(coverOf(_lines)),
      _groupSize(static_cast<size_t>(sizes.streams))
{
    int streams = 0;
    for (const FdsnLine &line : _lines)
        streams += line.isPattern() ? StreamsOfPattern : 1;
    streams = std::clamp(streams, 1, sizes.streams);
    _length = Core::TimeSpan(
        std::clamp(sizes.streamHours * SecondsPerHour / streams, sizes.shortest, sizes.longest));
    _groups = static_cast<int64_t>((_lines.size() + _groupSize - 1) / _groupSize);
    _stretches = static_cast<int64_t>(std::ceil(_window.length().length() / _length.length()));
}

Core::TimeWindow FdsnPieces::stretch(int64_t index) const
{
    const Core::Time start =
        _window.startTime() + Core::TimeSpan::FromUSecs(index / _groups * _length.usecs());
    return Core::TimeWindow(start, _length);
}

FdsnLines FdsnPieces::at(int64_t index) const
{
    const size_t begin = static_cast<size_t>(index % _groups) * _groupSize;
    const size_t end = std::min(begin + _groupSize, _lines.size());
    const FdsnLines group(_lines.begin() + static_cast<std::ptrdiff_t>(begin),
                          _lines.begin() + static_cast<std::ptrdiff_t>(end));
    return clipped(group, stretch(index));
}

FdsnLines withoutCoveredFdsnLines(const FdsnLines &lines)
{
    FdsnLines patterns;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(patterns),
                 [](const FdsnLine &line) { return line.isPattern(); });
    FdsnLines result;
    std::set<std::string> known;
    for (const FdsnLine &line : lines) {
        const bool isCovered =
            std::any_of(patterns.begin(), patterns.end(), [&](const FdsnLine &wider) {
                return isWithin(line, wider) && !isWithin(wider, line);
            });
        if (!isCovered && known.insert(fdsnLinesText({line})).second)
            result.push_back(line);
    }
    return result;
}

std::vector<FdsnLines> splitFdsnStreams(const FdsnLines &lines)
{
    if (lines.size() < 2)
        return {};
    const auto middle = lines.begin() + static_cast<std::ptrdiff_t>(lines.size() / 2);
    return {FdsnLines(lines.begin(), middle), FdsnLines(middle, lines.end())};
}

std::vector<FdsnLines> splitFdsnLines(const FdsnLines &lines)
{
    const Core::TimeWindow cover = coverOf(lines);
    const double length = cover.length().length();
    if (length < 2 * ShortWindow && lines.size() > 1)
        return splitFdsnStreams(lines);
    if (length < 2 * ShortestWindow)
        return {};
    const Core::Time middle =
        cover.startTime() + Core::TimeSpan::FromUSecs(cover.length().usecs() / 2);
    std::vector<FdsnLines> halves = {clipped(lines, {cover.startTime(), middle}),
                                     clipped(lines, {middle, cover.endTime()})};
    return halves;
}

QByteArray fdsnBody(const FdsnLines &lines)
{
    // The end of a window is not part of it, but servers count it in.
    const Core::TimeSpan instant = Core::TimeSpan::FromUSecs(1);
    const auto text = [](Core::Time time) { return time.toString("%Y-%m-%dT%H:%M:%S.%6f"); };
    std::string body;
    for (const FdsnLine &line : lines) {
        const std::string &location = line.codes.location();
        body += line.codes.network() + ' ' + line.codes.station() + ' ' +
                (location.empty() ? "--" : location) + ' ' + line.codes.channel() + ' ' +
                text(line.window.startTime()) + ' ' + text(line.window.endTime() - instant) + '\n';
    }
    return QByteArray::fromStdString(body);
}

std::string fdsnLinesText(const FdsnLines &lines)
{
    if (lines.empty())
        return "nothing";
    const Core::TimeWindow cover = coverOf(lines);
    const size_t count = lines.size() - 1;
    const std::string others =
        count == 0 ? "" : " and " + std::to_string(count) + (count == 1 ? " other" : " others");
    return lines.front().codes.id() + others + " from " + cover.startTime().iso() + " to " +
           cover.endTime().iso();
}

} // namespace IO
} // namespace Tellarix
