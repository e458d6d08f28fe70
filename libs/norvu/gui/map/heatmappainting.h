// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>
#include <norvu/utils/lut.h>

class QImage;

namespace Norvu {
namespace Gui {
namespace Map {

using DensityTable = Utils::LUT<double, unsigned int>;

/** How the densities of a field become colours, and these become part of a picture. */
struct DensityPainting
{
    const DensityTable *table; /**< not null */
    float scale;               /**< from densities to keys of the table */
    bool multiply;             /**< with what is there; else laid over it by alpha */
    bool everywhere;           /**< also where no density is above 0 */
};

/** Scale for a maximum. Without one it is infinite, which gives all densities the first entry. */
NORVU_GUI_API float densityScale(const DensityTable &table, float maximum);

/** Lays the entries of a table on white: what is see-through becomes paler and opaque. */
NORVU_GUI_API void flattenOnWhite(DensityTable &table);

/**
 * Paints densities into a picture, whose alpha stays. Channels are mixed in whole numbers and
 * rounded down. Works on lines in several threads.
 *
 * @param image    of 32 bits a pixel, with alpha, if any, in the uppermost byte
 * @param density  as many as the picture has pixels
 */
NORVU_GUI_API void paintDensity(QImage &image, const float *density,
                                const DensityPainting &painting);

} // namespace Map
} // namespace Gui
} // namespace Norvu
