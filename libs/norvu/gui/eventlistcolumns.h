// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

namespace Norvu {
namespace Gui {

/** The columns of the event list, in their order. */
class NORVU_GUI_API EEventListColumnsNames
{
public:
    enum Column
    {
        OriginTime,
        Magnitude,
        MagnitudeType,
        PhaseCount,
        Latitude,
        Longitude,
        Depth,
        Status,
        Mechanism,
        PublicID,
        EventType,
        Region,
        Count,
    };

    /** Text above a column, to be translated in the context of the list; "" if there is none. */
    static const char *name(int column);
};

} // namespace Gui
} // namespace Norvu
