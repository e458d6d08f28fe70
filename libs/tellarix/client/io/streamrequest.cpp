// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/streamrequest.h>

#include <tellarix/core/strings.h>

#include <cmath>

namespace Tellarix {
namespace IO {

namespace {

constexpr double LongestSpan = 1E10; // in seconds: some three hundred years

/** Seconds of a unit; 0 if there is no such unit. */
double secondsOf(const std::string &unit)
{
    if (unit == "s")
        return 1;
    if (unit == "min")
        return 60;
    if (unit == "h")
        return 3600;
    return unit == "d" ? 86400 : 0;
}

bool beginsWith(const std::string &text, const char *beginning)
{
    return text.rfind(beginning, 0) == 0;
}

/** Where the part behind `#` begins; npos without one. */
size_t requestPosition(const std::string &text)
{
    const size_t position = text.rfind('#');
    if (position == std::string::npos)
        return position;
    const std::string part = text.substr(position + 1);
    const bool isRequest =
        beginsWith(part, "streams=") || beginsWith(part, "from=") || beginsWith(part, "to=");
    return isRequest ? position : std::string::npos;
}

bool addStreams(const std::string &ids, StreamRequest *request, std::string *error)
{
    for (const std::string &id : Core::split(ids, ",", false)) {
        const StreamCodesCPtr codes = StreamCodes::FromID(Core::trimmed(id));
        if (!codes) {
            *error = "streams: \"" + id + "\" has not the four parts NET.STA.LOC.CHA";
            return false;
        }
        request->streams.push_back(codes);
    }
    return true;
}

bool setTime(const std::string &name, const std::string &text, std::string *end, std::string *error)
{
    Core::Time time;
    if (!relativeTime(text, Core::Time::GMT(), &time)) {
        *error = name + ": \"" + text + "\" is no time; write 2024-01-05T10:11:12, -6h or now";
        return false;
    }
    *end = text;
    return true;
}

bool addPart(const std::string &part, StreamRequest *request, std::string *error)
{
    const size_t sign = part.find('=');
    const std::string name = part.substr(0, sign);
    const std::string value = sign == std::string::npos ? "" : part.substr(sign + 1);
    if (name == "streams")
        return addStreams(value, request, error);
    if (name == "from" || name == "to")
        return setTime(name, value, name == "from" ? &request->from : &request->to, error);
    *error = "\"" + part + "\" is none of streams=, from= and to=";
    return false;
}

} // namespace

bool relativeTime(const std::string &text, Core::Time now, Core::Time *time)
{
    if (text == "now") {
        *time = now;
        return true;
    }
    if (text.empty() || (text[0] != '-' && text[0] != '+'))
        return time->fromString(text);
    const size_t unit = text.find_first_not_of("0123456789.", 1);
    double count = 0;
    if (unit == std::string::npos || !Core::fromString(count, text.substr(1, unit - 1)))
        return false;
    const double span = count * secondsOf(text.substr(unit));
    if (!(span > 0) || span > LongestSpan)
        return false;
    *time = now + Core::TimeSpan(text[0] == '-' ? -span : span);
    return true;
}

bool StreamRequest::parse(const std::string &text, StreamRequest *request, std::string *error)
{
    *request = StreamRequest();
    const size_t position = requestPosition(text);
    request->url = text.substr(0, position);
    if (position == std::string::npos)
        return true;
    for (const std::string &part : Core::split(text.substr(position + 1), "&", false)) {
        if (!addPart(part, request, error))
            return false;
    }
    return true;
}

std::string StreamRequest::text() const
{
    std::string ids;
    for (const StreamCodesCPtr &codes : streams)
        ids += (ids.empty() ? "" : ",") + codes->id();
    std::string request;
    const auto add = [&](const char *name, const std::string &value) {
        if (!value.empty())
            request += (request.empty() ? "#" : "&") + std::string(name) + "=" + value;
    };
    add("streams", ids);
    add("from", from);
    add("to", to);
    return url + request;
}

Core::TimeWindow StreamRequest::windowAt(Core::Time now) const
{
    Core::Time start;
    Core::Time end;
    relativeTime(from, now, &start);
    relativeTime(to, now, &end);
    return {start, end};
}

} // namespace IO
} // namespace Tellarix
