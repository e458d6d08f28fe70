// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>
#include <norvu/gui/eventfilter.h>

#include <tellarix/client/io/databaseinterface.h>
#include <tellarix/core/time.h>

#include <string>

namespace Norvu {
namespace Gui {

/** What the statements of the event list select: the events whose preferred origins lie within a
 *  time window, inclusive at both ends and to the second, and within the bounds of a filter. */
struct EventQuery
{
    Tellarix::Core::Time begin;
    Tellarix::Core::Time end;
    EventFilter filter;
};

/** Fields of a row of eventRowStatement(), in their order. */
enum class EventField
{
    OriginTime,
    OriginMicroseconds, /**< despite the name of its column */
    Magnitude,
    MagnitudeType,
    PhaseCount,
    Latitude,
    Longitude,
    Depth,
    EvaluationStatus,
    EvaluationMode,
    Strike,
    Dip,
    Rake,
    PublicID,
    EventType,
    Region,
    Count,
};

/** Gives one row with the number of events. */
NORVU_GUI_API std::string eventCountStatement(const Tellarix::IO::DatabaseInterface &database,
                                              const EventQuery &query);
/** Gives a row for each event, in no particular order. */
NORVU_GUI_API std::string eventRowStatement(const Tellarix::IO::DatabaseInterface &database,
                                            const EventQuery &query);

} // namespace Gui
} // namespace Norvu
