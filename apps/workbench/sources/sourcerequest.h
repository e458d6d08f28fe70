// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "bench/eventfacts.h"
#include "datasource.h"

#include <tellarix/core/timewindow.h>

#include <optional>
#include <string>
#include <vector>

namespace Workbench {

/** Which time of its streams a source is asked for. */
struct RequestTimes
{
    /** So long before the present, as in "-6h", and then live; empty for a window. */
    QString span;
    Tellarix::Core::TimeWindow window;
};

/**
 * One text that opens streams of a source, see Tellarix::IO::StreamRequest. A source with both
 * services is asked as joined streams for what reaches into the last hour, in which archives have
 * gaps; otherwise the past is asked for windows, and the live service for what goes on. The past
 * comes by way of the cache on disk if @p isCached.
 *
 * @param streams  patterns NET.STA.LOC.CHA
 */
QString requestText(const DataSource &source, const std::vector<std::string> &streams,
                    const RequestTimes &times, bool isCached, Tellarix::Core::Time now);

/** From a minute before the origin until the slowest waves have come to the farthest station, but
 *  from 5 to 30 minutes; 30 without a distance. */
Tellarix::Core::TimeWindow windowAround(const EventFacts &event, std::optional<double> farthestKm);

} // namespace Workbench
