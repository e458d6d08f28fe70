// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/timewindow.h>

#include <string>
#include <vector>

namespace Tellarix {
namespace IO {

/**
 * A source together with what is wanted of it, as one text: a URL with a part behind `#`,
 *
 *     seedlink://host:18000#streams=XX.ABC..HH?,XX.*.00.BHZ&from=-6h&to=now
 *
 * with `streams` as patterns NET.STA.LOC.CHA, of which an empty location is empty, and `from` and
 * `to` as relativeTime() takes them. Each of the three may be left out. A URL without such a part,
 * and one whose `#` is followed by something else, is a source of which all is wanted.
 */
struct TELLARIX_CLIENT_API StreamRequest
{
    std::string url;                      /**< without that part */
    std::vector<StreamCodesCPtr> streams; /**< patterns; none stands for all */
    /** As written, e.g. "-6h"; empty if that end is open. */
    std::string from;
    std::string to;

    /** False, with the reason, if a stream hasn't four parts or a time is none. */
    static bool parse(const std::string &text, StreamRequest *request, std::string *error);
    std::string text() const;

    /** The window at the time @p now; ends may be unset. */
    Core::TimeWindow windowAt(Core::Time now) const;
};

/**
 * A time as `Time::fromString` reads it, "now", or so long before or, with "+", behind now: "-6h",
 * with the units s, min, h and d.
 * @return false, leaving @p time alone, if it is none of these
 */
TELLARIX_CLIENT_API bool relativeTime(const std::string &text, Core::Time now, Core::Time *time);

} // namespace IO
} // namespace Tellarix
