// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/math/geo.h>

#include <GeographicLib/Geodesic.hpp>

namespace Tellarix {
namespace Math {
namespace Geo {

namespace {

constexpr double Pi = 3.14159265358979323846;
constexpr double EquatorialRadius = 6378137; // metres, WGS84
constexpr double MetresPerDegree = Pi / 180 * EquatorialRadius;

/** From -180 to 180 degrees into 0 to 360. */
double compassDirection(double azimuth)
{
    return azimuth < 0 ? azimuth + 360.0 : azimuth;
}

struct Geodesic
{
    double length{0}; /**< metres */
    double azimuth{0};
    double backAzimuth{0};
};

Geodesic inverse(double latitude1, double longitude1, double latitude2, double longitude2)
{
    Geodesic line;
    double forward = 0;
    GeographicLib::Geodesic::WGS84().Inverse(latitude1, longitude1, latitude2, longitude2,
                                             line.length, line.azimuth, forward);
    line.azimuth = compassDirection(line.azimuth);
    line.backAzimuth = compassDirection(forward > 0 ? forward - 180.0 : forward + 180.0);
    return line;
}

void store(const Geodesic &line, double value, double *distance, double *azimuth,
           double *backAzimuth)
{
    *distance = value;
    if (azimuth)
        *azimuth = line.azimuth;
    if (backAzimuth)
        *backAzimuth = line.backAzimuth;
}

} // namespace

void delazi(double latitude1, double longitude1, double latitude2, double longitude2,
            double *distance, double *azimuth, double *backAzimuth)
{
    const Geodesic line = inverse(latitude1, longitude1, latitude2, longitude2);
    store(line, line.length / MetresPerDegree, distance, azimuth, backAzimuth);
}

void delaziKm(double latitude1, double longitude1, double latitude2, double longitude2,
              double *distanceKm, double *azimuth, double *backAzimuth)
{
    const Geodesic line = inverse(latitude1, longitude1, latitude2, longitude2);
    store(line, line.length / 1000.0, distanceKm, azimuth, backAzimuth);
}

void destination(double distanceKm, double azimuth, double latitude, double longitude,
                 double *resultLatitude, double *resultLongitude)
{
    GeographicLib::Geodesic::WGS84().Direct(latitude, longitude, azimuth, 1000.0 * distanceKm,
                                            *resultLatitude, *resultLongitude);
}

} // namespace Geo
} // namespace Math
} // namespace Tellarix
