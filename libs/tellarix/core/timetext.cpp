// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/strings.h>
#include <tellarix/core/time.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <iterator>
#include <limits>
#include <locale.h>
#include <optional>
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

bool isBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
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
        return count >= least && count <= most && takeDigits(value, most);
    }

    /** Takes one to @p most digits as a number. */
    template <typename T>
    bool takeDigits(T &value, size_t most)
    {
        const size_t count = std::min(digits(), most);
        value = 0;
        for (size_t i = 0; i < count; ++i)
            value = value * 10 + (_rest[i] - '0');
        _rest.remove_prefix(count);
        return count > 0;
    }

    /** Takes @p word without regard to case. */
    bool takeWord(const std::string &word)
    {
        if (compareNoCase(std::string(_rest.substr(0, word.size())), word) != 0)
            return false;
        _rest.remove_prefix(word.size());
        return true;
    }

    void takeBlanks()
    {
        while (!_rest.empty() && isBlank(_rest.front()))
            _rest.remove_prefix(1);
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

/** 0 for a Sunday; 1970-01-01 was a Thursday. */
int weekday(Time time)
{
    constexpr int64_t UsecsPerDay = 86400000000;
    const int64_t days = time.usecs() / UsecsPerDay - (time.usecs() % UsecsPerDay < 0 ? 1 : 0);
    return static_cast<int>(((days + 4) % 7 + 7) % 7);
}

/** Text and value of a name that a format may ask for. */
struct Name
{
    const char *text;
    int value;
};

// Longer names come first where they begin with a shorter one.
constexpr Name MonthNames[] = {
    {"January", 1},   {"February", 2},  {"March", 3},  {"April", 4},     {"May", 5},
    {"June", 6},      {"July", 7},      {"August", 8}, {"September", 9}, {"October", 10},
    {"November", 11}, {"December", 12}, {"Jan", 1},    {"Feb", 2},       {"Mar", 3},
    {"Apr", 4},       {"Jun", 6},       {"Jul", 7},    {"Aug", 8},       {"Sep", 9},
    {"Oct", 10},      {"Nov", 11},      {"Dec", 12}};
constexpr Name WeekdayNames[] = {{"Sunday", 0},   {"Monday", 1}, {"Tuesday", 2},  {"Wednesday", 3},
                                 {"Thursday", 4}, {"Friday", 5}, {"Saturday", 6}, {"Sun", 0},
                                 {"Mon", 1},      {"Tue", 2},    {"Wed", 3},      {"Thu", 4},
                                 {"Fri", 5},      {"Sat", 6}};
constexpr Name HalfDayNames[] = {{"AM", 0}, {"PM", 1}};
constexpr Name ZoneNames[] = {{"UTC", 0}, {"GMT", 0}, {"Z", 0}};

/** What a text tells of a time. Fields that it doesn't have are not set. */
struct ToldFields
{
    using Field = std::optional<int>;

    Field year;
    Field month;
    Field day;
    Field dayOfYear;
    Field weekday; /**< 0 for a Sunday */
    Field hour;
    Field hourOfHalfDay; /**< 1 to 12 */
    Field isAfternoon;
    Field minute;
    Field second;
    Field usec;
    Field zone; /**< seconds that the fields are ahead of UTC */
    std::optional<int64_t> epochSeconds;
};

/** A conversion for a number of up to @p digits digits. */
struct NumberConversion
{
    char conversion;
    ToldFields::Field ToldFields::*field;
    size_t digits;
    int lowest;
    int highest;
};

constexpr NumberConversion NumberConversions[] = {
    {'Y', &ToldFields::year, 4, 0, 9999},        {'m', &ToldFields::month, 2, 1, 12},
    {'d', &ToldFields::day, 2, 1, 31},           {'e', &ToldFields::day, 2, 1, 31},
    {'j', &ToldFields::dayOfYear, 3, 1, 366},    {'w', &ToldFields::weekday, 1, 0, 6},
    {'H', &ToldFields::hour, 2, 0, 23},          {'k', &ToldFields::hour, 2, 0, 23},
    {'I', &ToldFields::hourOfHalfDay, 2, 1, 12}, {'l', &ToldFields::hourOfHalfDay, 2, 1, 12},
    {'M', &ToldFields::minute, 2, 0, 59},        {'S', &ToldFields::second, 2, 0, 60}};

/** The conversions that stand for others. */
const char *expandedConversion(char conversion)
{
    switch (conversion) {
    case 'D':
    case 'x':
        return "%m/%d/%y";
    case 'F':
        return "%Y-%m-%d";
    case 'T':
    case 'X':
        return "%H:%M:%S";
    case 'R':
        return "%H:%M";
    case 'r':
        return "%I:%M:%S %p";
    case 'c':
        return "%a %b %e %H:%M:%S %Y";
    default:
        return nullptr;
    }
}

/** Reads a text by a format and works out the time that all fields of it agree on. */
class FormatReader
{
public:
    explicit FormatReader(std::string_view text) : _reader(text) {}

    Time read(const char *format) { return readAll(format) && _reader.atEnd() ? result() : Time(); }

private:
    bool readAll(const char *format)
    {
        for (; *format; ++format) {
            if (isBlank(*format))
                _reader.takeBlanks();
            else if (*format != '%' ? !_reader.take(*format) : !readConversion(*++format))
                return false;
        }
        return true;
    }

    /** False also for the end of the format and for what no time can be made of. */
    bool readConversion(char conversion)
    {
        for (const NumberConversion &entry : NumberConversions) {
            if (entry.conversion == conversion)
                return readNumber(_told.*entry.field, entry.digits, entry.lowest, entry.highest);
        }
        if (const char *expanded = expandedConversion(conversion))
            return readAll(expanded);

        switch (conversion) {
        case '%':
            return _reader.take('%');
        case 'n':
        case 't':
            _reader.takeBlanks();
            return true;
        case 'a':
        case 'A':
            return readName(_told.weekday, WeekdayNames);
        case 'b':
        case 'B':
        case 'h':
            return readName(_told.month, MonthNames);
        case 'p':
        case 'P':
            return readName(_told.isAfternoon, HalfDayNames);
        case 'Z':
            return readName(_told.zone, ZoneNames);
        case 'y':
            return readShortYear();
        case 'f':
            return readFraction();
        case 's':
            return readEpochSeconds();
        case 'z':
            return readOffset();
        default:
            return false;
        }
    }

    /** Sets a field; what is told twice has to be the same. */
    template <typename T>
    static bool tell(std::optional<T> &field, T value)
    {
        const bool agrees = !field || *field == value;
        field = value;
        return agrees;
    }

    bool readNumber(ToldFields::Field &field, size_t digits, int lowest, int highest)
    {
        int value = 0;
        _reader.takeBlanks();
        return _reader.takeDigits(value, digits) && value >= lowest && value <= highest &&
               tell(field, value);
    }

    template <size_t Count>
    bool readName(ToldFields::Field &field, const Name (&names)[Count])
    {
        _reader.takeBlanks();
        const Name *name =
            std::find_if(std::begin(names), std::end(names),
                         [this](const Name &entry) { return _reader.takeWord(entry.text); });
        return name != std::end(names) && tell(field, name->value);
    }

    /** Two digits of a year stand for 1969 to 2068. */
    bool readShortYear()
    {
        constexpr int FirstYear = 1969;
        ToldFields::Field twoDigits;
        if (!readNumber(twoDigits, 2, 0, 99))
            return false;
        return tell(_told.year, *twoDigits + (*twoDigits < FirstYear % 100 ? 2000 : 1900));
    }

    bool readFraction()
    {
        int usec = 0;
        return _reader.takeFraction(usec, FractionDigits) && tell(_told.usec, usec);
    }

    bool readEpochSeconds()
    {
        // Seconds count down to the one below zero in which the earliest time lies.
        constexpr int64_t Highest = std::numeric_limits<int64_t>::max() / 1000000;
        const bool isNegative = _reader.take('-');
        int64_t seconds = 0;
        if (!_reader.takeDigits(seconds, 13) || seconds > Highest + (isNegative ? 1 : 0))
            return false;
        return tell(_told.epochSeconds, isNegative ? -seconds : seconds);
    }

    bool readOffset()
    {
        TimeSpan offset;
        _reader.takeBlanks();
        return !_reader.atEnd() && readZone(_reader, offset) &&
               tell(_told.zone, static_cast<int>(offset.seconds()));
    }

    Time result() const
    {
        const TimeSpan zone = TimeSpan::FromUSecs(int64_t(_told.zone.value_or(0)) * 1000000);
        const TimeSpan fraction = TimeSpan::FromUSecs(_told.usec.value_or(0));
        if (_told.epochSeconds) {
            const int64_t below = *_told.epochSeconds < 0 ? 1 : 0;
            const Time time = Time::FromUSecs((*_told.epochSeconds + below) * 1000000) +
                              (fraction - TimeSpan::FromUSecs(below * 1000000));
            return agreesWith((time + zone).fields()) ? time : Time();
        }
        const TimeFields fields = localFields();
        const Time local(fields);
        return local.valid() && agreesWith(fields) ? local + (fraction - zone) : Time();
    }

    TimeFields localFields() const
    {
        TimeFields fields;
        fields.year = _told.year.value_or(1970);
        fields.month = _told.month.value_or(1);
        fields.day = _told.day.value_or(1);
        if (_told.dayOfYear && !_told.month && !_told.day) {
            const Time date = Time::FromDayOfYear(fields.year, *_told.dayOfYear);
            fields = date.fields();
        } else {
            fields.dayOfYear = Time(fields).fields().dayOfYear;
        }
        const int halfDay = _told.isAfternoon.value_or(0) ? 12 : 0;
        const int hour = _told.hourOfHalfDay ? *_told.hourOfHalfDay % 12 + halfDay : 0;
        fields.hour = _told.hour.value_or(hour);
        fields.minute = _told.minute.value_or(0);
        fields.second = _told.second.value_or(0);
        return fields;
    }

    /** True if nothing that was told contradicts @p fields. */
    bool agreesWith(const TimeFields &fields) const
    {
        const auto agrees = [](const ToldFields::Field &told, int value) {
            return !told || *told == value;
        };
        const int hourOfHalfDay = (fields.hour + 11) % 12 + 1;
        return agrees(_told.year, fields.year) && agrees(_told.month, fields.month) &&
               agrees(_told.day, fields.day) && agrees(_told.dayOfYear, fields.dayOfYear) &&
               agrees(_told.weekday, weekday(Time(fields.year, fields.month, fields.day))) &&
               agrees(_told.hour, fields.hour) && agrees(_told.hourOfHalfDay, hourOfHalfDay) &&
               agrees(_told.isAfternoon, fields.hour >= 12 ? 1 : 0) &&
               agrees(_told.minute, fields.minute) && agrees(_told.second, fields.second);
    }

    Reader _reader;
    ToldFields _told;
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
    return FormatReader(text).read(format);
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
    const int64_t epochSeconds = usecs() / 1000000 - (usecs() % 1000000 < 0 ? 1 : 0);
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
