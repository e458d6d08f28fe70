// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/datamodel/focalmechanism.h>

#include <algorithm>
#include <cmath>

namespace Tellarix {
namespace DataModel {

namespace {

constexpr double DegreesPerRadian = 180.0 / M_PI;

/** North, east, down. */
struct Direction
{
    double north;
    double east;
    double down;
};

/** Into the range from 0 to 360. */
double turned(double degrees)
{
    const double rest = std::fmod(degrees, 360.0);
    return rest < 0 ? rest + 360.0 : rest;
}

} // namespace

FocalMechanism::~FocalMechanism() = default;

NodalPlane auxiliaryPlane(const NodalPlane &plane)
{
    const double strike = plane.strike().value() / DegreesPerRadian;
    const double dip = plane.dip().value() / DegreesPerRadian;
    const double rake = plane.rake().value() / DegreesPerRadian;

    Direction slip{
        std::cos(rake) * std::cos(strike) + std::cos(dip) * std::sin(rake) * std::sin(strike),
        std::cos(rake) * std::sin(strike) - std::cos(dip) * std::sin(rake) * std::cos(strike),
        -std::sin(dip) * std::sin(rake)};
    Direction normal{-std::sin(dip) * std::sin(strike), std::sin(dip) * std::cos(strike),
                     -std::cos(dip)};
    // The slip is the normal of the other plane, which points up out of the lower side.
    if (slip.down > 0) {
        slip = {-slip.north, -slip.east, -slip.down};
        normal = {-normal.north, -normal.east, -normal.down};
    }

    const double otherDip = std::acos(std::clamp(-slip.down, -1.0, 1.0));
    const double otherStrike = std::atan2(-slip.north, slip.east);
    const double alongStrike =
        normal.north * std::cos(otherStrike) + normal.east * std::sin(otherStrike);
    const double upDip = std::sin(otherDip) > 0 ? -normal.down / std::sin(otherDip)
                                                : normal.north * std::sin(otherStrike) -
                                                      normal.east * std::cos(otherStrike);
    return NodalPlane(turned(otherStrike * DegreesPerRadian), otherDip * DegreesPerRadian,
                      std::atan2(upDip, alongStrike) * DegreesPerRadian);
}

} // namespace DataModel
} // namespace Tellarix
