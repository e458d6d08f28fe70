// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/dayfilename.h>

#include <tellarix/core/strings.h>

#include <cstring>

namespace Tellarix {
namespace IO {

namespace {

const char *const KnownTypes = "DELTCRO";
constexpr double SecondsPerDay = 86400;

} // namespace

bool DayFileName::parse(const std::string &name)
{
    const std::vector<std::string> parts = Core::split(name, ".", false);
    int year = 0;
    int dayOfYear = 0;
    if (parts.size() != 7 || !isNumber(parts[5], 4) || !isNumber(parts[6], 3) ||
        !Core::fromString(year, parts[5]) || !Core::fromString(dayOfYear, parts[6]))
        return false;
    codes.reset(new StreamCodes(parts[0], parts[1], parts[2], parts[3]));
    type = parts[4];
    day = Core::Time::FromDayOfYear(year, dayOfYear);
    return day.valid();
}

std::string DayFileName::text() const
{
    return codes->id() + '.' + type + day.toString(".%Y.%j");
}

std::string DayFileName::folder() const
{
    return day.toString("%Y/") + codes->network() + '/' + codes->station() + '/' +
           codes->channel() + '.' + type;
}

Core::TimeWindow DayFileName::cover() const
{
    return Core::TimeWindow(day, Core::TimeSpan(2 * SecondsPerDay));
}

bool isDayFileType(const std::string &text)
{
    return text.size() == 1 && std::strchr(KnownTypes, text[0]);
}

bool isNumber(const std::string &text, size_t digits)
{
    return text.size() == digits && text.find_first_not_of("0123456789") == std::string::npos;
}

} // namespace IO
} // namespace Tellarix
