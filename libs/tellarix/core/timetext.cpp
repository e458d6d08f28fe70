// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/strings.h>
#include <tellarix/core/time.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <locale.h>
#include <string_view>
#include <time.h>

namespace Tellarix {
namespace Core {
namespace {

constexpr int FractionDigits = 6;

/** Names of days and months are English, whatever the program's locale. */
locale_t englishLocale()
{
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/** Takes characters from the front of a text. */
class Reader
{
public:
    explicit Reader(std::string_view text) : _rest(text) {}

    bool atEnd() const { return _rest.empty(); }

    bool take(char c)
    {
        if (_rest.empty() || _rest.front() != c)
            return false;
        _rest.remove_prefix(1);
        return true;
    }

    /** Digits at the front, up to the first other character. */
    size_t digits() const
    {
        return static_cast<size_t>(std::find_if_not(_rest.begin(), _rest.end(), isDigit) -
                                   _rest.begin());
    }

    /** Takes all digits at the front as one number if there are @p least to @p most of them. */
    bool takeNumber(int &value, size_t least, size_t most)
    {
        const size_t count = digits();
        if (count < least || count > most)
            return false;

        value = 0;
        for (size_t i = 0; i < count; ++i)
            value = value * 10 + (_rest[i] - '0');
        _rest.remove_prefix(count);
        return true;
    }

    /** Takes at least one digit of a fraction; those beyond the sixth are dropped. */
    bool takeFraction(int &usec, size_t most)
    {
        const size_t count = std::min(digits(), most);
        if (count == 0)
            return false;

        usec = 0;
        for (size_t i = 0; i < FractionDigits; ++i)
            usec = usec * 10 + (i < count ? _rest[i] - '0' : 0);
        _rest.remove_prefix(count);
        return true;
    }

private:
    std::string_view _rest;
};

bool readDate(Reader &reader, TimeFields &fields)
{
    const bool negative = reader.take('-');
    if (!reader.takeNumber(fields.year, 4, 6))
        return false;
    if (negative)
        fields.year = -fields.year;
    if (!reader.take('-'))
        return reader.atEnd();

    if (reader.digits() == 3) {
        int dayOfYear = 0;
        reader.takeNumber(dayOfYear, 3, 3);
        const Time date = Time::FromDayOfYear(fields.year, dayOfYear);
        fields = date.fields();
        return date.valid();
    }
    if (!reader.takeNumber(fields.month, 1, 2))
        return false;
    return reader.take('-') ? reader.takeNumber(fields.day, 1, 2) : reader.atEnd();
}

bool readTimeOfDay(Reader &reader, TimeFields &fields)
{
    if (!reader.takeNumber(fields.hour, 1, 2))
        return false;
    if (!reader.take(':'))
        return true;
    if (!reader.takeNumber(fields.minute, 1, 2))
        return false;
    if (!reader.take(':'))
        return true;
    if (!reader.takeNumber(fields.second, 1, 2))
        return false;
    return !reader.take('.') || reader.takeFraction(fields.usec, std::string::npos);
}

/** Reads nothing, "Z", or an offset from UTC such as "+02:00", "+0200" or "+02". */
bool readZone(Reader &reader, TimeSpan &offset)
{
    if (reader.take('Z'))
        return true;

    const bool negative = reader.take('-');
    if (!negative && !reader.take('+'))
        return true;

    int hours = 0;
    int minutes = 0;
    if (reader.digits() == 4) {
        reader.takeNumber(hours, 4, 4);
        minutes = hours % 100;
        hours /= 100;
    } else if (!reader.takeNumber(hours, 2, 2) ||
               (reader.take(':') && !reader.takeNumber(minutes, 2, 2))) {
        return false;
    }
    if (hours > 23 || minutes > 59)
        return false;

    const int seconds = hours * 3600 + minutes * 60;
    offset = TimeSpan(negative ? -seconds : seconds);
    return true;
}

/** Reads the conversions that strptime lacks or takes for local time, and leaves it the others. */
class FormatReader
{
public:
    explicit FormatReader(const char *text) : _text(text)
    {
        _tm.tm_year = 70;
        _tm.tm_mday = 1;
    }

    Time read(std::string_view format)
    {
        size_t plainBegin = 0;
        for (size_t i = 0; i + 1 < format.size(); ++i) {
            if (format[i] != '%')
                continue;
            const char conversion = format[++i];
            if (conversion != 'f' && conversion != 's')
                continue;
            if (!readPlain(format.substr(plainBegin, i - 1 - plainBegin)))
                return {};
            if (!(conversion == 'f' ? readFraction() : readEpochSeconds()))
                return {};
            plainBegin = i + 1;
        }
        if (!readPlain(format.substr(plainBegin)) || *_text)
            return {};
        return result();
    }

private:
    bool readPlain(std::string_view format)
    {
        if (!format.empty())
            _text = strptime_l(_text, std::string(format).c_str(), &_tm, englishLocale());
        return _text;
    }

    bool readFraction()
    {
        Reader reader{std::string_view(_text)};
        const size_t digits = std::min<size_t>(reader.digits(), FractionDigits);
        if (!reader.takeFraction(_usec, FractionDigits))
            return false;
        _text += digits;
        return true;
    }

    bool readEpochSeconds()
    {
        const bool negative = *_text == '-';
        const char *number = _text + (negative ? 1 : 0);
        int64_t seconds = 0;
        const size_t digits = Reader{std::string_view(number)}.digits();
        if (digits == 0 || digits > 12)
            return false;
        for (size_t i = 0; i < digits; ++i)
            seconds = seconds * 10 + (number[i] - '0');
        _text = number + digits;

        const time_t epoch = negative ? -seconds : seconds;
        return gmtime_r(&epoch, &_tm) != nullptr;
    }

    Time result() const
    {
        TimeFields fields;
        fields.year = _tm.tm_year + 1900;
        fields.month = _tm.tm_mon + 1;
        fields.day = _tm.tm_mday;
        fields.hour = _tm.tm_hour;
        fields.minute = _tm.tm_min;
        fields.second = _tm.tm_sec;
        fields.usec = _usec;
        const Time time(fields);
        return time.valid() ? time - TimeSpan(static_cast<double>(_tm.tm_gmtoff)) : time;
    }

    const char *_text;
    std::tm _tm{};
    int _usec{0};
};

std::tm brokenDownTime(const TimeFields &fields)
{
    std::tm tm{};
    tm.tm_year = fields.year - 1900;
    tm.tm_mon = fields.month - 1;
    tm.tm_mday = fields.day;
    tm.tm_hour = fields.hour;
    tm.tm_min = fields.minute;
    tm.tm_sec = fields.second;
    tm.tm_yday = fields.dayOfYear - 1;
    tm.tm_zone = "UTC";
    return tm;
}

/** 0 for a Sunday; 1970-01-01 was a Thursday. */
int weekday(Time time)
{
    constexpr int64_t UsecsPerDay = 86400000000;
    const int64_t days = time.usecs() / UsecsPerDay - (time.usecs() % UsecsPerDay < 0 ? 1 : 0);
    return static_cast<int>(((days + 4) % 7 + 7) % 7);
}

/** Replaces the conversions that strftime lacks or takes for local time. */
std::string expandFormat(const char *format, const TimeFields &fields, int64_t epochSeconds)
{
    char fraction[FractionDigits + 1];
    std::snprintf(fraction, sizeof fraction, "%06u", static_cast<unsigned>(fields.usec) % 1000000u);

    std::string expanded;
    for (const char *c = format; *c; ++c) {
        if (*c != '%' || !c[1]) {
            expanded += *c;
        } else if (c[1] == 'f') {
            expanded += fraction;
            ++c;
        } else if (c[1] >= '1' && c[1] <= '6' && c[2] == 'f') {
            expanded.append(fraction, static_cast<size_t>(c[1] - '0'));
            c += 2;
        } else if (c[1] == 's') {
            expanded += std::to_string(epochSeconds);
            ++c;
        } else {
            expanded.append(c, 2);
            ++c;
        }
    }
    return expanded;
}

} // namespace

Time Time::FromString(const std::string &text)
{
    const std::string plain = trimmed(text);
    Reader reader(plain);
    TimeFields fields;
    TimeSpan offset;
    if (!readDate(reader, fields))
        return {};
    if (reader.take('T') || reader.take(' ')) {
        if (!readTimeOfDay(reader, fields) || !readZone(reader, offset))
            return {};
    } else {
        reader.take('Z');
    }
    if (!reader.atEnd())
        return {};

    const Time local(fields);
    return local.valid() ? local - offset : local;
}

Time Time::FromString(const std::string &text, const char *format)
{
    if (text.find('\0') != std::string::npos)
        return {};

    return FormatReader(text.c_str()).read(format);
}

bool Time::fromString(const std::string &text)
{
    const Time time = FromString(text);
    if (time.valid())
        *this = time;
    return time.valid();
}

bool Time::fromString(const std::string &text, const char *format)
{
    const Time time = FromString(text, format);
    if (time.valid())
        *this = time;
    return time.valid();
}

std::string Time::iso() const
{
    if (!valid())
        return {};

    const TimeFields f = fields();
    char text[80];
    const int length = std::snprintf(text, sizeof text, "%s%04d-%02d-%02dT%02d:%02d:%02d.%06dZ",
                                     f.year < 0 ? "-" : "", std::abs(f.year), f.month, f.day,
                                     f.hour, f.minute, f.second, f.usec);
    return std::string(text, static_cast<size_t>(length));
}

std::string Time::toString(const char *format) const
{
    if (!valid() || !*format)
        return {};

    const TimeFields f = fields();
    std::tm tm = brokenDownTime(f);
    tm.tm_wday = weekday(*this);
    const int64_t epochSeconds = (usecs() - f.usec) / 1000000;
    // A blank in front tells an empty result from a buffer that is too small.
    const std::string expanded = ' ' + expandFormat(format, f, epochSeconds);
    std::string text(std::max<size_t>(64, 4 * expanded.size()), '\0');
    size_t length = 0;
    while ((length =
                strftime_l(text.data(), text.size(), expanded.c_str(), &tm, englishLocale())) == 0)
        text.resize(2 * text.size());
    return text.substr(1, length - 1);
}

} // namespace Core
} // namespace Tellarix
