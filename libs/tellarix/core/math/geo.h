// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>

namespace Tellarix {
namespace Math {
namespace Geo {

/**
 * Distance and directions between two points on the WGS84 ellipsoid; Karney, Algorithms for
 * geodesics (2013).
 *
 * @param latitude1, longitude1, latitude2, longitude2  in degrees
 * @param distance     length along the surface in degrees of the equator (111.3195 km), so that a
 *                     degree of longitude there is 1; a quarter of a meridian is 89.849, since the
 *                     earth is flattened
 * @param azimuth      direction at the first point, 0 to 360 degrees clockwise from north; may be
 *                     null
 * @param backAzimuth  direction at the second point back to the first; may be null
 * Coordinates that are no numbers, or latitudes beyond a pole, give not-a-number.
 */
TELLARIX_CORE_API void delazi(double latitude1, double longitude1, double latitude2,
                              double longitude2, double *distance, double *azimuth = nullptr,
                              double *backAzimuth = nullptr);

/** The same with the distance along the ellipsoid in km. */
TELLARIX_CORE_API void delaziKm(double latitude1, double longitude1, double latitude2,
                                double longitude2, double *distanceKm, double *azimuth = nullptr,
                                double *backAzimuth = nullptr);

/** The point at a distance and direction from another one. */
TELLARIX_CORE_API void destination(double distanceKm, double azimuth, double latitude,
                                   double longitude, double *resultLatitude,
                                   double *resultLongitude);

} // namespace Geo
} // namespace Math
} // namespace Tellarix
