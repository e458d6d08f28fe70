// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/time.h>

#include <QHash>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace Tellarix {
namespace Core {
namespace {

constexpr int64_t UsecsPerSecond = 1000000;
constexpr int64_t SecondsPerDay = 86400;
constexpr int64_t UsecsPerDay = SecondsPerDay * UsecsPerSecond;
constexpr int64_t Highest = std::numeric_limits<int64_t>::max();
/** The lowest value is left to the invalid time; spans keep to the same range, which is symmetric.
 */
constexpr int64_t Lowest = -Highest;

int64_t saturatedSum(int64_t a, int64_t b)
{
    if (b > 0 && a > Highest - b)
        return Highest;
    if (b < 0 && a < Lowest - b)
        return Lowest;
    return std::max(a + b, Lowest);
}

int64_t saturatedDifference(int64_t a, int64_t b)
{
    return saturatedSum(a, -std::max(b, Lowest));
}

int64_t usecsOf(double seconds)
{
    const double usecs = std::round(seconds * UsecsPerSecond);
    if (usecs >= static_cast<double>(Highest))
        return Highest;
    if (usecs <= static_cast<double>(Lowest))
        return Lowest;
    return static_cast<int64_t>(usecs);
}

int64_t floorDivide(int64_t dividend, int64_t divisor)
{
    return dividend / divisor - (dividend % divisor < 0 ? 1 : 0);
}

bool isLeapYear(int64_t year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int daysInMonth(int64_t year, int month)
{
    constexpr int Days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeapYear(year) ? 29 : Days[month - 1];
}

// Years are counted from March, so that the leap day is the last of its year, within eras of 400
// years, which have 146097 days each. Day 0 of era 0, 0000-03-01, lies 719468 days before
// 1970-01-01.
constexpr int64_t DaysPerEra = 146097;
constexpr int64_t EraToEpoch = 719468;

/**
 * Days from 1970-01-01 to a date of the proleptic Gregorian calendar; Hinnant (2013), "chrono-
 * compatible low-level date algorithms".
 */
int64_t daysFromCivil(int64_t year, int month, int day)
{
    const int64_t marchYear = month > 2 ? year : year - 1;
    const int64_t era = floorDivide(marchYear, 400);
    const int64_t yearOfEra = marchYear - era * 400;
    const int64_t dayOfYear = (153 * ((month + 9) % 12) + 2) / 5 + day - 1;
    const int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * DaysPerEra + dayOfEra - EraToEpoch;
}

/** The inverse of daysFromCivil(), by the same source; the time of day is left alone. */
void setCivilFromDays(TimeFields &fields, int64_t days)
{
    const int64_t shifted = days + EraToEpoch;
    const int64_t era = floorDivide(shifted, DaysPerEra);
    const int64_t dayOfEra = shifted - era * DaysPerEra;
    const int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / (DaysPerEra - 1)) / 365;
    const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int64_t month = (5 * dayOfYear + 2) / 153;
    fields.day = static_cast<int>(dayOfYear - (153 * month + 2) / 5 + 1);
    fields.month = static_cast<int>(month < 10 ? month + 3 : month - 9);
    fields.year = static_cast<int>(yearOfEra + era * 400 + (fields.month <= 2 ? 1 : 0));
    fields.dayOfYear = static_cast<int>(days - daysFromCivil(fields.year, 1, 1) + 1);
}

bool isTimeOfDay(const TimeFields &fields)
{
    return fields.hour >= 0 && fields.hour < 24 && fields.minute >= 0 && fields.minute < 60 &&
           fields.second >= 0 && fields.second <= 60 && fields.usec >= 0 &&
           fields.usec < UsecsPerSecond;
}

bool isDate(const TimeFields &fields)
{
    return fields.month >= 1 && fields.month <= 12 && fields.day >= 1 &&
           fields.day <= daysInMonth(fields.year, fields.month);
}

/** The time of a day since 1970-01-01 and a time of day; not valid if it leaves the range. */
Time timeOfDay(int64_t days, const TimeFields &fields)
{
    constexpr int64_t HighestSecond = Highest / UsecsPerSecond;
    constexpr int64_t DaysBeyond = HighestSecond / SecondsPerDay + 2;
    if (!isTimeOfDay(fields) || days > DaysBeyond || days < -DaysBeyond)
        return {};

    const int64_t seconds =
        days * SecondsPerDay + fields.hour * 3600 + fields.minute * 60 + fields.second;
    // Below zero the fraction counts up from the second before, which may lie outside.
    const int64_t whole = seconds < 0 ? seconds + 1 : seconds;
    const int64_t fraction = seconds < 0 ? fields.usec - UsecsPerSecond : fields.usec;
    if (whole > HighestSecond || whole < -HighestSecond)
        return {};
    const bool isBeyond = whole > 0 ? fraction > Highest - whole * UsecsPerSecond
                                    : fraction < Lowest - whole * UsecsPerSecond;
    return isBeyond ? Time() : Time::FromUSecs(whole * UsecsPerSecond + fraction);
}

TimeFields timeFields(int hour, int minute, int second, int usec)
{
    TimeFields fields;
    fields.hour = hour;
    fields.minute = minute;
    fields.second = second;
    fields.usec = usec;
    return fields;
}

} // namespace

TimeSpan::TimeSpan(double seconds) : _usecs(std::isnan(seconds) ? 0 : usecsOf(seconds))
{}

TimeSpan::TimeSpan(int64_t seconds, int64_t microseconds)
{
    // Both fit when they have the same sign: no sum in between is larger than the whole.
    seconds = saturatedSum(seconds, microseconds / UsecsPerSecond);
    microseconds %= UsecsPerSecond;
    if (seconds > 0 && microseconds < 0) {
        --seconds;
        microseconds += UsecsPerSecond;
    } else if (seconds < 0 && microseconds > 0) {
        ++seconds;
        microseconds -= UsecsPerSecond;
    }
    constexpr int64_t HighestSecond = Highest / UsecsPerSecond;
    if (seconds > HighestSecond)
        _usecs = Highest;
    else if (seconds < -HighestSecond)
        _usecs = Lowest;
    else
        _usecs = saturatedSum(seconds * UsecsPerSecond, microseconds);
}

TimeSpan TimeSpan::operator+(TimeSpan other) const
{
    return FromUSecs(saturatedSum(_usecs, other._usecs));
}

TimeSpan TimeSpan::operator-(TimeSpan other) const
{
    return FromUSecs(saturatedDifference(_usecs, other._usecs));
}

void TimeSpan::elapsedTime(int *days, int *hours, int *minutes, int *seconds) const
{
    const int64_t whole = this->seconds();
    const auto set = [](int *target, int64_t value) {
        if (target)
            *target = static_cast<int>(value);
    };
    set(days, whole / 86400);
    set(hours, whole / 3600 % 24);
    set(minutes, whole / 60 % 60);
    set(seconds, whole % 60);
}

Time::Time(double seconds) : _usecs(std::isnan(seconds) ? Invalid : usecsOf(seconds))
{}

Time::Time(int year, int month, int day, int hour, int minute, int second, int usec)
{
    TimeFields fields = timeFields(hour, minute, second, usec);
    fields.year = year;
    fields.month = month;
    fields.day = day;
    *this = Time(fields);
}

Time::Time(const TimeFields &fields)
{
    if (isDate(fields))
        *this = timeOfDay(daysFromCivil(fields.year, fields.month, fields.day), fields);
}

Time Time::FromDayOfYear(int year, int dayOfYear, int hour, int minute, int second, int usec)
{
    if (dayOfYear < 1 || dayOfYear > (isLeapYear(year) ? 366 : 365))
        return {};

    return timeOfDay(daysFromCivil(year, 1, 1) + dayOfYear - 1,
                     timeFields(hour, minute, second, usec));
}

Time Time::GMT()
{
    using namespace std::chrono;
    const auto sinceEpoch = system_clock::now().time_since_epoch();
    return FromUSecs(duration_cast<std::chrono::microseconds>(sinceEpoch).count());
}

Time &Time::setUSecs(int usecs)
{
    const int64_t second = floorDivide(this->usecs(), UsecsPerSecond);
    const int64_t fraction = std::clamp<int64_t>(usecs, 0, UsecsPerSecond - 1);
    // Clamped first: at the ends of the range a second is cut in two.
    const int64_t start = std::max(second, Lowest / UsecsPerSecond) * UsecsPerSecond;
    _usecs = saturatedSum(start, fraction);
    return *this;
}

TimeSpan Time::elapsedTime() const
{
    return GMT() - *this;
}

TimeFields Time::fields() const
{
    const int64_t days = floorDivide(usecs(), UsecsPerDay);
    // Not by the start of the day: that of the first one lies outside of the range.
    const int64_t remainder = usecs() % UsecsPerDay;
    const int64_t usecOfDay = remainder < 0 ? remainder + UsecsPerDay : remainder;
    const int secondOfDay = static_cast<int>(usecOfDay / UsecsPerSecond);
    TimeFields fields = timeFields(secondOfDay / 3600, secondOfDay / 60 % 60, secondOfDay % 60,
                                   static_cast<int>(usecOfDay % UsecsPerSecond));
    setCivilFromDays(fields, days);
    return fields;
}

Time Time::operator+(TimeSpan span) const
{
    return FromUSecs(saturatedSum(usecs(), span.usecs()));
}

Time Time::operator-(TimeSpan span) const
{
    return FromUSecs(saturatedDifference(usecs(), span.usecs()));
}

TimeSpan Time::operator-(Time other) const
{
    return TimeSpan::FromUSecs(saturatedDifference(usecs(), other.usecs()));
}

uint qHash(const TimeSpan &span, uint seed)
{
    return ::qHash(static_cast<quint64>(span.usecs()), seed);
}

uint qHash(const Time &time, uint seed)
{
    // An invalid time and the one at 1970-01-01 differ in order, so they differ here, too.
    return ::qHash(static_cast<quint64>(time.usecs()), time.valid() ? seed : ~seed);
}

} // namespace Core
} // namespace Tellarix
