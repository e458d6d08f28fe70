// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <vector>

namespace Tellarix {
namespace Client {

/** A point of a path; longitudes beyond 180 degrees lead across the date line. */
struct DemoPoint
{
    double latitude;
    double longitude;
};

/** A belt of earthquakes along a boundary of plates, roughly. */
struct DemoZone
{
    enum Kind
    {
        Subduction,
        Slab, /**< the deep part of one */
        Ridge,
        Transform,
        Collision
    };

    const char *name;
    Kind kind;
    double rate; /**< share of the earthquakes, to that of the other zones */
    std::vector<DemoPoint> path;
    int dipSide{0}; /**< of a subducted plate: 1 to the right of the path, -1 to its left */
    double minimumDepthKm{0};
    double maximumDepthKm{0};
    double dip{45};
};

/** A part of the country around the demonstration's earthquake. */
struct DemoDistrict
{
    const char *name;
    double latitude;
    double longitude;
    double extentKm;
    double rate; /**< share of the local earthquakes, to that of the other districts */
};

const std::vector<DemoZone> &demoZones();
const std::vector<DemoDistrict> &demoDistricts();

} // namespace Client
} // namespace Tellarix
