// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>

#include <QMetaType>
#include <QString>

#include <cstdint>
#include <limits>
#include <string>

namespace Tellarix {
namespace Core {

/** A span of time, signed, in whole microseconds. */
class TELLARIX_CORE_API TimeSpan
{
public:
    constexpr TimeSpan() = default;

    /** A span of @p seconds, rounded to the nearest microsecond and limited to what 64 bits hold;
     *  not-a-number gives zero. */
    explicit TimeSpan(double seconds);
    /** A span of whole seconds and microseconds, which may have any sign and size, with the same
     *  limits. */
    TimeSpan(int64_t seconds, int64_t microseconds);

    static constexpr TimeSpan FromUSecs(int64_t usecs)
    {
        TimeSpan span;
        span._usecs = usecs;
        return span;
    }

    /** Whole seconds, truncated toward zero. */
    constexpr int64_t seconds() const { return _usecs / 1000000; }
    /** What seconds() leaves over, with the sign of the span, in microseconds. */
    constexpr int64_t microseconds() const { return _usecs % 1000000; }
    constexpr int64_t usecs() const { return _usecs; }
    /** The span in seconds. */
    constexpr double length() const { return static_cast<double>(_usecs) * 1E-6; }
    constexpr explicit operator double() const { return length(); }
    /** Breaks the span into whole days and the hours, minutes and seconds that remain, truncated
     *  toward zero and all with the sign of the span; null pointers are passed over. */
    void elapsedTime(int *days, int *hours, int *minutes, int *seconds) const;

    /** The opposite span; that of the lowest value is the highest. */
    constexpr TimeSpan operator-() const
    {
        return FromUSecs(_usecs == std::numeric_limits<int64_t>::min()
                             ? std::numeric_limits<int64_t>::max()
                             : -_usecs);
    }
    TimeSpan operator+(TimeSpan other) const;
    TimeSpan operator-(TimeSpan other) const;
    TimeSpan operator*(double factor) const { return TimeSpan(length() * factor); }
    TimeSpan operator/(double divisor) const { return TimeSpan(length() / divisor); }
    TimeSpan &operator+=(TimeSpan other) { return *this = *this + other; }
    TimeSpan &operator-=(TimeSpan other) { return *this = *this - other; }

    constexpr bool operator==(TimeSpan other) const { return _usecs == other._usecs; }
    constexpr bool operator!=(TimeSpan other) const { return _usecs != other._usecs; }
    constexpr bool operator<(TimeSpan other) const { return _usecs < other._usecs; }
    constexpr bool operator<=(TimeSpan other) const { return _usecs <= other._usecs; }
    constexpr bool operator>(TimeSpan other) const { return _usecs > other._usecs; }
    constexpr bool operator>=(TimeSpan other) const { return _usecs >= other._usecs; }

private:
    int64_t _usecs{0};
};

/** Calendar fields of a Time in UTC. */
struct TimeFields
{
    int year{1970};
    int month{1};     /**< 1 to 12 */
    int day{1};       /**< 1 to 31 */
    int hour{0};      /**< 0 to 23 */
    int minute{0};    /**< 0 to 59 */
    int second{0};    /**< 0 to 59; 60 is taken for a leap second and carried over */
    int usec{0};      /**< 0 to 999999 */
    int dayOfYear{1}; /**< 1 to 366; ignored where fields are turned into a time */
};

/**
 * An absolute UTC time in microseconds since 1970-01-01, without leap seconds.
 *
 * A default time is not valid: it compares below every other time and counts as 1970-01-01 in
 * arithmetic, so that times relative to an unset alignment stay usable. Sums that would leave the
 * 64 bit range stop at its ends.
 */
class TELLARIX_CORE_API Time
{
public:
    constexpr Time() = default;
    /** A time of @p seconds since 1970-01-01, rounded to microseconds; NaN gives an invalid time.
     */
    explicit Time(double seconds);
    /** A time from calendar fields; fields out of range give an invalid time. */
    Time(int year, int month, int day, int hour = 0, int minute = 0, int second = 0, int usec = 0);
    explicit Time(const TimeFields &fields);

    static constexpr Time FromUSecs(int64_t usecs)
    {
        Time time;
        time._usecs = usecs;
        return time;
    }
    /** A time from a year and a day of the year (1 to 366). */
    static Time FromDayOfYear(int year, int dayOfYear, int hour = 0, int minute = 0, int second = 0,
                              int usec = 0);
    /** The present time. */
    static Time GMT();
    /**
     * Reads an ISO 8601 text in UTC: "2024-01-05", "2024-01-05T10:11:12.345678Z", with a blank in
     * place of the T, with a day of the year ("2024-005T..."), with fewer fields or digits. Digits
     * of the fraction beyond the sixth are dropped; an offset ("+02:00") in place of the Z counts.
     * White space around the text is allowed.
     * @return an invalid time if @p text is anything else
     */
    static Time FromString(const std::string &text);
    /**
     * Reads the whole of @p text by a format of the conversions of strptime: %Y %y %m %b %B %h %d
     * %e %j %a %A %w %H %k %I %l %p %P %M %S %z %Z %n %t %% and the short forms %D %F %T %R %r %c
     * %x %X; besides, %f stands for a fraction of up to 6 digits and %s for seconds since
     * 1970-01-01. English names, without regard to case; zones are "UTC", "GMT", "Z" or an offset.
     * Fields that the format leaves out are those of 1970-01-01T00:00:00, an hour without %p is in
     * the morning.
     * @return an invalid time if @p text is of another form, if its fields contradict each other (a
     *         weekday that is not that of the date), or if the format holds another conversion
     */
    static Time FromString(const std::string &text, const char *format);
    /** Sets this time from a text as FromString does; false leaves it as it was. */
    bool fromString(const std::string &text);
    bool fromString(const std::string &text, const char *format);

    constexpr bool valid() const { return _usecs != Invalid; }
    constexpr explicit operator bool() const { return valid(); }

    /** Whole seconds since 1970-01-01, truncated toward zero; 0 for an invalid time. */
    constexpr int64_t seconds() const { return usecs() / 1000000; }
    /** What seconds() leaves over, in microseconds, with the sign of the time. */
    constexpr int64_t microseconds() const { return usecs() % 1000000; }
    /** Microseconds since 1970-01-01; 0 for an invalid time. */
    constexpr int64_t usecs() const { return valid() ? _usecs : 0; }
    /** Seconds since 1970-01-01 as a double; about 0.2 microseconds are lost today. */
    constexpr double toDouble() const { return static_cast<double>(usecs()) * 1E-6; }
    /** Replaces the fraction of the second, as fields() has it, by @p usecs (0 to 999999). */
    Time &setUSecs(int usecs);
    /** The time that has passed since this one. */
    TimeSpan elapsedTime() const;

    TimeFields fields() const;

    /** "2024-01-05T10:11:12.345678Z", always with six digits; empty for an invalid time. */
    std::string iso() const;
    /** Text by a strftime format, in which %f stands for the six digits of the fraction and %1f to
     *  %6f for its first digits, truncated; English names; empty for an invalid time. */
    std::string toString(const char *format) const;

    Time operator+(TimeSpan span) const;
    Time operator-(TimeSpan span) const;
    TimeSpan operator-(Time other) const;
    Time &operator+=(TimeSpan span) { return *this = *this + span; }
    Time &operator-=(TimeSpan span) { return *this = *this - span; }

    constexpr bool operator==(Time other) const { return _usecs == other._usecs; }
    constexpr bool operator!=(Time other) const { return _usecs != other._usecs; }
    constexpr bool operator<(Time other) const { return _usecs < other._usecs; }
    constexpr bool operator<=(Time other) const { return _usecs <= other._usecs; }
    constexpr bool operator>(Time other) const { return _usecs > other._usecs; }
    constexpr bool operator>=(Time other) const { return _usecs >= other._usecs; }

private:
    static constexpr int64_t Invalid = std::numeric_limits<int64_t>::min();
    int64_t _usecs{Invalid};
};

TELLARIX_CORE_API uint qHash(const TimeSpan &span, uint seed = 0);
TELLARIX_CORE_API uint qHash(const Time &time, uint seed = 0);

} // namespace Core
} // namespace Tellarix

Q_DECLARE_TYPEINFO(Tellarix::Core::TimeSpan, Q_PRIMITIVE_TYPE);
Q_DECLARE_TYPEINFO(Tellarix::Core::Time, Q_PRIMITIVE_TYPE);
Q_DECLARE_METATYPE(Tellarix::Core::Time)
Q_DECLARE_METATYPE(Tellarix::Core::TimeSpan)
