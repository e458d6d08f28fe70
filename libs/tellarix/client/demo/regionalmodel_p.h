// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <vector>

namespace Tellarix {
namespace Client {

/** A body wave at regional distance in a crust of one layer, 30 km thick, over the mantle. */
struct RegionalArrival
{
    const char *phase;
    bool isShear;
    double travelTime;     /**< in s */
    double takeOffAngle;   /**< at the source, in radians, 0 is straight down */
    double incidenceAngle; /**< at the surface, in radians, 0 is straight up */
    double spreading;      /**< geometric spreading of the amplitude, in 1/km */
};

/**
 * The body waves of a source at @p depthKm in the crust in order of time: direct waves (Pg, Sg),
 * reflections at the Moho (PmP, SmS) and, beyond the critical distance, head waves (Pn, Sn).
 */
std::vector<RegionalArrival> regionalArrivals(double distanceKm, double depthKm);

/** Amplitudes of body waves by direction, between -1 and 1. */
struct RadiationPattern
{
    double p;
    double sv;
    double sh;
};

/**
 * Radiation of a double couple; Aki and Richards (2002), equations 4.89 to 4.91. All angles in
 * radians, the take-off angle from straight down.
 */
RadiationPattern radiationPattern(double strike, double dip, double rake, double takeOffAngle,
                                  double azimuth);

} // namespace Client
} // namespace Tellarix
