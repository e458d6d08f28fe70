// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <vector>

namespace Norvu {
namespace Gui {
namespace Map {

/** What one event adds to a density field: a paraboloid of 1 at its centre and 0 at its rim. */
struct DensityDisc
{
    int x;      /**< pixel of the centre, at most 2^24 away from the field */
    int y;      /**< the same downwards */
    int radius; /**< in pixels; 1 to LargestRadius */
};

/** Farther away than any pixel of a picture; the density of such a disc is 1 all over. */
constexpr int LargestRadius = 1 << 30;

/** How the density of a disc is calculated before it is stored in single precision. */
enum class DiscPrecision
{
    Double,
    Single
};

/**
 * Radius in pixels that grows exponentially with the magnitude.
 *
 * What is no finite number counts as unknown and has the smallest disc, as have magnitudes of 0 and
 * below; discs end at LargestRadius.
 */
NORVU_GUI_API int exponentialRadius(double magnitude, float pixelPerDegree);

/**
 * Length in pixels of a square of twice the rupture area, with the same rules for the magnitude.
 * Area by the regression over all slip types of Wells and Coppersmith (1994).
 * @param areaFactor  the area is taken as so many times as large
 */
NORVU_GUI_API int ruptureRadius(double magnitude, int areaFactor, float pixelPerDegree);

/**
 * Fills a density field.
 *
 * Works on bands of lines in several threads. Each pixel sums up the discs in their order, so the
 * result has the same bits as a loop over discs and pixels.
 *
 * @param density      @p width x @p height, line by line; overwritten
 * @param discs        may lie outside of the field in part or whole
 * @param logarithmic  densities above 0 give way to their natural logarithms
 * @return the largest value of the field; 0 if none is above that
 */
NORVU_GUI_API float computeDensity(float *density, int width, int height,
                                   const std::vector<DensityDisc> &discs, DiscPrecision precision,
                                   bool logarithmic);

} // namespace Map
} // namespace Gui
} // namespace Norvu
