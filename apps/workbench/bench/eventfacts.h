// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/time.h>

#include <QString>

#include <optional>

namespace Workbench {

/** What panels tell each other of an event. */
struct EventFacts
{
    QString publicID;
    Tellarix::Core::Time originTime;
    double latitude{0};  /**< in degrees, north is positive */
    double longitude{0}; /**< in degrees, east is positive */
    std::optional<double> depthKm;
    std::optional<double> magnitude;
    QString region; /**< for the user; may be empty */
};

/** The same in all that is known; numbers that are none count as equal, so that an event always
 *  equals its copy. */
bool operator==(const EventFacts &a, const EventFacts &b);
inline bool operator!=(const EventFacts &a, const EventFacts &b)
{
    return !(a == b);
}

} // namespace Workbench
