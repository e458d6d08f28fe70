#include <tellarix/core/time.h>

#include <QHash>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <locale.h>
#include <time.h>

namespace Tellarix {
namespace Core {

namespace {

constexpr int64_t UsecsPerSecond = 1000000;
constexpr int64_t SecondsPerDay = 86400;
constexpr int64_t Lowest = std::numeric_limits<int64_t>::min();
constexpr int64_t Highest = std::numeric_limits<int64_t>::max();
/** The lowest value that a time may have; the one below it marks an invalid time. */
constexpr int64_t LowestTime = Lowest + 1;

int64_t saturatedSum(int64_t a, int64_t b)
{
    int64_t sum = 0;
    if (!__builtin_add_overflow(a, b, &sum))
        return sum;
    return a < 0 ? Lowest : Highest;
}

int64_t saturatedDifference(int64_t a, int64_t b)
{
    int64_t difference = 0;
    if (!__builtin_sub_overflow(a, b, &difference))
        return difference;
    return a < 0 ? Lowest : Highest;
}

int64_t usecsOf(double seconds)
{
    // 2^63 is exact in double, and the first value that does not fit.
    constexpr double Limit = 9223372036854775808.0;
    const double usecs = std::nearbyint(seconds * 1E6);
    if (usecs >= Limit)
        return Highest;
    if (usecs < -Limit)
        return Lowest;
    return static_cast<int64_t>(usecs);
}

int64_t floorDivide(int64_t value, int64_t divisor)
{
    const int64_t quotient = value / divisor;
    return value % divisor < 0 ? quotient - 1 : quotient;
}

/** Days since 1970-01-01 of a proleptic Gregorian date; H. Hinnant, chrono-compatible low-level
 *  date algorithms (2013): years begin in March, eras have 400 years. */
int64_t daysFromCivil(int64_t year, int month, int day)
{
    year -= month <= 2;
    const int64_t era = floorDivide(year, 400);
    const int64_t yearOfEra = year - era * 400;
    const int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

/** The inverse of daysFromCivil(). */
void civilFromDays(int64_t days, int64_t &year, int &month, int &day)
{
    days += 719468;
    const int64_t era = floorDivide(days, 146097);
    const int64_t dayOfEra = days - era * 146097;
    const int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
    day = static_cast<int>(dayOfYear - (153 * monthFromMarch + 2) / 5 + 1);
    month = static_cast<int>(monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9);
    year = yearOfEra + era * 400 + (month <= 2);
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

bool isInRange(int value, int lowest, int highest)
{
    return value >= lowest && value <= highest;
}

bool isClockTime(int hour, int minute, int second, int usec)
{
    return isInRange(hour, 0, 23) && isInRange(minute, 0, 59) && isInRange(second, 0, 60) &&
           isInRange(usec, 0, 999999);
}

Time timeOf(int64_t days, int hour, int minute, int second, int usec)
{
    const int64_t seconds = days * SecondsPerDay + hour * 3600 + minute * 60 + second;
    int64_t usecs = 0;
    if (__builtin_mul_overflow(seconds, UsecsPerSecond, &usecs))
        return Time();
    usecs = saturatedSum(usecs, usec);
    return Time::FromUSecs(std::max(usecs, LowestTime));
}

/** Reads up to @p most digits; the number of digits read, 0 if there is none. */
int readDigits(const char *&text, int most, int &value)
{
    int digits = 0;
    value = 0;
    while (digits < most && *text >= '0' && *text <= '9') {
        value = value * 10 + (*text++ - '0');
        ++digits;
    }
    return digits;
}

/** Reads digits of a fraction of a second; those beyond the sixth are dropped. */
bool readFraction(const char *&text, int &usec)
{
    const int digits = readDigits(text, 6, usec);
    for (int i = digits; i < 6; ++i)
        usec *= 10;
    while (*text >= '0' && *text <= '9')
        ++text;
    return digits > 0;
}

bool readChar(const char *&text, char wanted)
{
    if (*text != wanted)
        return false;
    ++text;
    return true;
}

/** Reads "Z", an offset such as "+02:00" or nothing; the offset in seconds. */
bool readZone(const char *&text, int &offset)
{
    offset = 0;
    if (readChar(text, 'Z') || *text == '\0')
        return true;
    if (*text != '+' && *text != '-')
        return false;

    const int sign = *text++ == '-' ? -1 : 1;
    int hours = 0;
    int minutes = 0;
    if (readDigits(text, 2, hours) != 2)
        return false;
    readChar(text, ':');
    if (readDigits(text, 2, minutes) == 1)
        return false;
    offset = sign * (hours * 3600 + minutes * 60);
    return hours < 24 && minutes < 60;
}

/** Reads "-MM-DD", "-DDD", "-MM" or nothing behind a year. */
bool readDate(const char *&text, int year, int64_t &days)
{
    int month = 1;
    int day = 1;
    if (readChar(text, '-')) {
        const int digits = readDigits(text, 3, month);
        if (digits == 3) {
            days = daysFromCivil(year, 1, 1) + month - 1;
            return isInRange(month, 1, isLeapYear(year) ? 366 : 365);
        }
        if (digits != 2 || !isInRange(month, 1, 12))
            return false;
        if (readChar(text, '-') && readDigits(text, 2, day) != 2)
            return false;
    }
    days = daysFromCivil(year, month, day);
    return isInRange(day, 1, daysInMonth(year, month));
}

/** Reads "HH[:MM[:SS[.f]]]". */
bool readClock(const char *&text, TimeFields &fields)
{
    if (readDigits(text, 2, fields.hour) != 2)
        return false;
    if (!readChar(text, ':'))
        return true;
    if (readDigits(text, 2, fields.minute) != 2)
        return false;
    if (!readChar(text, ':'))
        return true;
    if (readDigits(text, 2, fields.second) != 2)
        return false;
    return !readChar(text, '.') || readFraction(text, fields.usec);
}

Time parseIso(const std::string &source)
{
    const size_t first = source.find_first_not_of(" \t\r\n");
    if (first == std::string::npos)
        return Time();
    const size_t last = source.find_last_not_of(" \t\r\n");
    const std::string trimmed = source.substr(first, last - first + 1);
    const char *text = trimmed.c_str();

    const bool isNegative = readChar(text, '-');
    int year = 0;
    if (readDigits(text, 6, year) < 4)
        return Time();

    int64_t days = 0;
    if (!readDate(text, isNegative ? -year : year, days))
        return Time();

    TimeFields fields;
    int offset = 0;
    if (*text == 'T' || *text == ' ') {
        ++text;
        if (!readClock(text, fields) || !readZone(text, offset))
            return Time();
    } else {
        readChar(text, 'Z');
    }
    if (text != trimmed.c_str() + trimmed.size() ||
        !isClockTime(fields.hour, fields.minute, fields.second, fields.usec))
        return Time();
    return timeOf(days, fields.hour, fields.minute, fields.second, fields.usec) -
           TimeSpan::FromUSecs(offset * UsecsPerSecond);
}

/** Names of days and months are English, whatever the program's locale is. */
locale_t englishLocale()
{
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

/** State of reading a text by a format. */
struct FormatReader
{
    std::tm fields{};
    int usec{0};
    bool hasSeconds{false};
    long long seconds{0};

    /** Reads one conversion, "%c" or a literal run without %f and %s. */
    const char *read(const char *text, const std::string &format)
    {
        return strptime_l(text, format.c_str(), &fields, englishLocale());
    }
};

/** The format's next piece: "%f", "%s", or all up to the next of these. */
std::string nextPiece(const char *&format)
{
    const char *begin = format;
    while (*format) {
        const bool isConversion = format[0] == '%' && format[1];
        if (isConversion && (format[1] == 'f' || format[1] == 's')) {
            if (format == begin)
                format += 2;
            break;
        }
        format += isConversion ? 2 : 1;
    }
    return std::string(begin, format);
}

const char *readSeconds(const char *text, FormatReader &reader)
{
    char *end = nullptr;
    reader.seconds = std::strtoll(text, &end, 10);
    reader.hasSeconds = true;
    return end == text ? nullptr : end;
}

const char *readPiece(const char *text, const std::string &piece, FormatReader &reader)
{
    if (piece == "%f")
        return readFraction(text, reader.usec) ? text : nullptr;
    if (piece == "%s")
        return readSeconds(text, reader);
    return reader.read(text, piece);
}

/** True if the format asks for a day of the year. */
bool usesDayOfYear(const char *format)
{
    return std::strstr(format, "%j") != nullptr;
}

/** The digits of a "%f" or "%1f" to "%6f" at @p format, 0 if it is anything else. */
int fractionDigits(const char *format, int &length)
{
    if (format[0] != '%')
        return 0;
    if (format[1] == 'f') {
        length = 2;
        return 6;
    }
    if (format[1] >= '1' && format[1] <= '6' && format[2] == 'f') {
        length = 3;
        return format[1] - '0';
    }
    return 0;
}

/** The format with the fraction conversions replaced by digits and %s by the seconds, so that
 *  strftime, which knows neither, can do the rest. */
std::string withFraction(const char *format, int usec, int64_t seconds)
{
    char digits[8];
    std::snprintf(digits, sizeof(digits), "%06d", usec);

    std::string result;
    for (const char *at = format; *at;) {
        int length = 0;
        if (const int count = fractionDigits(at, length)) {
            result.append(digits, static_cast<size_t>(count));
            at += length;
        } else if (at[0] == '%' && at[1] == 's') {
            result += std::to_string(seconds);
            at += 2;
        } else if (at[0] == '%' && at[1]) {
            result.append(at, 2);
            at += 2;
        } else {
            result += *at++;
        }
    }
    return result;
}

} // namespace

TimeSpan::TimeSpan(double seconds) : _usecs(std::isnan(seconds) ? 0 : usecsOf(seconds))
{}

TimeSpan TimeSpan::operator+(TimeSpan other) const
{
    return FromUSecs(saturatedSum(_usecs, other._usecs));
}

TimeSpan TimeSpan::operator-(TimeSpan other) const
{
    return FromUSecs(saturatedDifference(_usecs, other._usecs));
}

Time::Time(double seconds)
{
    if (!std::isnan(seconds))
        _usecs = std::max(usecsOf(seconds), LowestTime);
}

Time::Time(int year, int month, int day, int hour, int minute, int second, int usec)
{
    if (!isInRange(month, 1, 12) || !isInRange(day, 1, daysInMonth(year, month)) ||
        !isClockTime(hour, minute, second, usec))
        return;
    *this = timeOf(daysFromCivil(year, month, day), hour, minute, second, usec);
}

Time::Time(const TimeFields &fields)
    : Time(fields.year, fields.month, fields.day, fields.hour, fields.minute, fields.second,
           fields.usec)
{}

Time Time::FromDayOfYear(int year, int dayOfYear, int hour, int minute, int second, int usec)
{
    if (!isInRange(dayOfYear, 1, isLeapYear(year) ? 366 : 365) ||
        !isClockTime(hour, minute, second, usec))
        return Time();
    return timeOf(daysFromCivil(year, 1, 1) + dayOfYear - 1, hour, minute, second, usec);
}

Time Time::GMT()
{
    namespace chrono = std::chrono;
    return FromUSecs(
        chrono::duration_cast<chrono::microseconds>(chrono::system_clock::now().time_since_epoch())
            .count());
}

Time Time::FromString(const std::string &text)
{
    return parseIso(text);
}

Time Time::FromString(const std::string &text, const char *format)
{
    FormatReader reader;
    reader.fields.tm_year = 70;
    reader.fields.tm_mday = 1;

    const char *at = text.c_str();
    const char *rest = format;
    while (at && *rest)
        at = readPiece(at, nextPiece(rest), reader);
    if (!at || at != text.c_str() + text.size())
        return Time();

    const std::tm &fields = reader.fields;
    const int year = fields.tm_year + 1900;
    if (reader.hasSeconds)
        return timeOf(0, 0, 0, 0, reader.usec) +
               TimeSpan::FromUSecs(reader.seconds * UsecsPerSecond);
    if (usesDayOfYear(format))
        return FromDayOfYear(year, fields.tm_yday + 1, fields.tm_hour, fields.tm_min, fields.tm_sec,
                             reader.usec);
    return Time(year, fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min,
                fields.tm_sec, reader.usec);
}

bool Time::fromString(const std::string &text)
{
    const Time time = FromString(text);
    if (!time.valid())
        return false;
    *this = time;
    return true;
}

bool Time::fromString(const std::string &text, const char *format)
{
    const Time time = FromString(text, format);
    if (!time.valid())
        return false;
    *this = time;
    return true;
}

Time &Time::setUSecs(int usecs)
{
    const int64_t whole = floorDivide(this->usecs(), UsecsPerSecond) * UsecsPerSecond;
    _usecs = std::max(saturatedSum(whole, usecs), LowestTime);
    return *this;
}

TimeSpan Time::elapsedTime() const
{
    return GMT() - *this;
}

TimeFields Time::fields() const
{
    const int64_t seconds = floorDivide(usecs(), UsecsPerSecond);
    const int64_t days = floorDivide(seconds, SecondsPerDay);
    const int secondOfDay = static_cast<int>(seconds - days * SecondsPerDay);

    TimeFields fields;
    int64_t year = 0;
    civilFromDays(days, year, fields.month, fields.day);
    fields.year = static_cast<int>(year);
    fields.hour = secondOfDay / 3600;
    fields.minute = secondOfDay / 60 % 60;
    fields.second = secondOfDay % 60;
    fields.usec = static_cast<int>(usecs() - seconds * UsecsPerSecond);
    fields.dayOfYear = static_cast<int>(days - daysFromCivil(year, 1, 1)) + 1;
    return fields;
}

std::string Time::iso() const
{
    if (!valid())
        return std::string();

    const TimeFields at = fields();
    char text[48];
    std::snprintf(text, sizeof(text), "%04d-%02d-%02dT%02d:%02d:%02d.%06dZ", at.year, at.month,
                  at.day, at.hour, at.minute, at.second, at.usec);
    return text;
}

std::string Time::toString(const char *format) const
{
    if (!valid() || !*format)
        return std::string();

    const TimeFields at = fields();
    std::tm tm{};
    tm.tm_year = at.year - 1900;
    tm.tm_mon = at.month - 1;
    tm.tm_mday = at.day;
    tm.tm_hour = at.hour;
    tm.tm_min = at.minute;
    tm.tm_sec = at.second;
    tm.tm_yday = at.dayOfYear - 1;
    const int64_t days = floorDivide(usecs(), UsecsPerSecond * SecondsPerDay);
    tm.tm_wday = static_cast<int>((days % 7 + 11) % 7); // 1970-01-01 was a Thursday

    // strftime gives 0 both for an empty text and for a buffer that is too small.
    const std::string pattern =
        withFraction(format, at.usec, floorDivide(usecs(), UsecsPerSecond)) + ".";
    std::string text(pattern.size() + 64, '\0');
    size_t length = 0;
    while ((length = strftime_l(&text[0], text.size(), pattern.c_str(), &tm, englishLocale())) == 0)
        text.resize(2 * text.size());
    text.resize(length - 1);
    return text;
}

Time Time::operator+(TimeSpan span) const
{
    return FromUSecs(std::max(saturatedSum(usecs(), span.usecs()), LowestTime));
}

Time Time::operator-(TimeSpan span) const
{
    return FromUSecs(std::max(saturatedDifference(usecs(), span.usecs()), LowestTime));
}

TimeSpan Time::operator-(Time other) const
{
    return TimeSpan::FromUSecs(saturatedDifference(usecs(), other.usecs()));
}

uint qHash(const TimeSpan &span, uint seed)
{
    return ::qHash(static_cast<qint64>(span.usecs()), seed);
}

uint qHash(const Time &time, uint seed)
{
    return ::qHash(static_cast<qint64>(time.usecs()), seed) ^ (time.valid() ? 0U : 1U);
}

} // namespace Core
} // namespace Tellarix
