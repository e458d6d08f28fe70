// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/time.h>

namespace Tellarix {
namespace Core {

/** A pair of times: from the start up to, but not including, the end. */
class TELLARIX_CORE_API TimeWindow
{
public:
    constexpr TimeWindow() = default;
    constexpr TimeWindow(Time start, Time end) : _start(start), _end(end) {}
    TimeWindow(Time start, TimeSpan length) : _start(start), _end(start + length) {}

    constexpr Time startTime() const { return _start; }
    constexpr Time endTime() const { return _end; }
    void setStartTime(Time start) { _start = start; }
    void setEndTime(Time end) { _end = end; }
    void set(Time start, Time end) { *this = TimeWindow(start, end); }

    /** True when both ends are set. */
    constexpr bool valid() const { return _start.valid() && _end.valid(); }
    constexpr explicit operator bool() const { return valid(); }
    /** True when the window holds no time at all: not valid, or the end not behind the start. */
    constexpr bool isEmpty() const { return !valid() || _end <= _start; }

    /** End minus start; negative for a reversed window. */
    TimeSpan length() const { return _end - _start; }

    /** True if @p time lies in the window; the end is not part of it. */
    constexpr bool contains(Time time) const { return time >= _start && time < _end; }
    /** True if @p other lies wholly in this window. */
    constexpr bool contains(const TimeWindow &other) const
    {
        return other._start >= _start && other._end <= _end;
    }
    /** True if the two share more than an end point. */
    constexpr bool overlaps(const TimeWindow &other) const
    {
        return _start < other._end && other._start < _end;
    }
    /** The stretch that both cover; an invalid window if there is none. */
    TimeWindow overlap(const TimeWindow &other) const;
    /** The smallest window that holds both; an invalid one does not count. */
    TimeWindow united(const TimeWindow &other) const;

    constexpr bool operator==(const TimeWindow &other) const
    {
        return _start == other._start && _end == other._end;
    }
    constexpr bool operator!=(const TimeWindow &other) const { return !(*this == other); }

private:
    Time _start;
    Time _end;
};

} // namespace Core
} // namespace Tellarix

Q_DECLARE_TYPEINFO(Tellarix::Core::TimeWindow, Q_MOVABLE_TYPE);
Q_DECLARE_METATYPE(Tellarix::Core::TimeWindow)
