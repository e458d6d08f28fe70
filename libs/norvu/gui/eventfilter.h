// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <optional>

namespace Norvu {
namespace Gui {

/** Bounds on the events that are loaded, each inclusive; what is unset bounds nothing. */
struct EventFilter
{
    std::optional<double> fromLatitude; /**< degrees */
    std::optional<double> toLatitude;
    std::optional<double> fromLongitude; /**< degrees; from above to gives nothing, also across the
                                              date line */
    std::optional<double> toLongitude;
    std::optional<double> fromDepth; /**< km */
    std::optional<double> toDepth;
    std::optional<double> fromMagnitude;
    std::optional<double> toMagnitude;
};

} // namespace Gui
} // namespace Norvu
