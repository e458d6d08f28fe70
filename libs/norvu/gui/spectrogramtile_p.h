// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/pixeltable_p.h>

#include <cstddef>

namespace Norvu {
namespace Gui {

/** The values of a column of pixels: the sum of two columns of a matrix by their weights of
 *  2^32 in all. */
template <typename T>
struct ColumnMix
{
    const T *left;
    const T *right; /**< null: the left column as it stands */
    T leftWeight;
    T rightWeight;
};

/** The values of a line of pixels, in the same way from rows of mixed columns. */
template <typename T>
struct LineMix
{
    int row;    /**< the lower of two neighbouring rows */
    bool mixed; /**< false: the row as it stands */
    T lowerWeight;
    T upperWeight;
};

/** Columns of pixels of one tile at most. */
constexpr int TileWidth = 128;

/**
 * Draws up to TileWidth columns of pixels: mixes their columns of the matrix, then two rows a line.
 * Arithmetic is in T, without fused operations.
 *
 * @param columns  @p width of them
 * @param rows     values of a column
 * @param lines    @p height of them, from the bottom upwards
 * @param bottom   leftmost pixel of the last line
 * @param stride   pixels of a line of the picture
 */
template <typename T>
void drawSpectrogramTile(const ColumnMix<T> *columns, int width, int rows, const LineMix<T> *lines,
                         int height, const PixelTable &table, unsigned int *bottom,
                         std::ptrdiff_t stride);

} // namespace Gui
} // namespace Norvu
