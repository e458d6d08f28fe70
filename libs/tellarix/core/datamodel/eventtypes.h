// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>

#include <string>

namespace Tellarix {
namespace DataModel {

/** The types of events that QuakeML 1.2 knows, in its order. */
class TELLARIX_CORE_API EEventTypeNames
{
public:
    /** How many there are. */
    static int count();
    /** The text of the type at @p index, such as "not existing" (0) or "earthquake"; "" if there is
     *  none. */
    static const char *name(int index);
    /** The index of a type's text, -1 if there is none. */
    static int indexOf(const std::string &name);
};

} // namespace DataModel
} // namespace Tellarix
