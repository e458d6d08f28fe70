// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/timewindow.h>

#include <string>

namespace Tellarix {
namespace IO {

/** The name of a day file in an archive, "NET.STA.LOC.CHA.TYPE.YEAR.DAY". */
struct TELLARIX_CLIENT_API DayFileName
{
    StreamCodesCPtr codes;
    std::string type;
    Core::Time day;

    /** False if @p name is of another form. */
    bool parse(const std::string &name);
    std::string text() const;
    /** "YEAR/NET/STA/CHA.TYPE", where the file lies in the tree. */
    std::string folder() const;
    /** The day and the one after it, into which the last records may run. */
    Core::TimeWindow cover() const;
};

/** Checks the text behind "type=": one letter of those that archives have. */
TELLARIX_CLIENT_API bool isDayFileType(const std::string &text);

/** True if a text is a number of so many digits. */
TELLARIX_CLIENT_API bool isNumber(const std::string &text, size_t digits);

} // namespace IO
} // namespace Tellarix
