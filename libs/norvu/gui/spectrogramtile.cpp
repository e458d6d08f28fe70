// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/spectrogramtile_p.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include <hwy/cache_control.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "norvu/gui/spectrogramtile.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
#include <norvu/gui/pixellookup_inl_p.h>

// Compiled once for each instruction set; the best one is chosen as the program runs.
HWY_BEFORE_NAMESPACE();
namespace Norvu {
namespace Gui {
namespace HWY_NAMESPACE {

// Rows of a tile lie so far apart that a column doesn't crowd one set of the cache.
constexpr int TileStride = TileWidth + 16;

// Lines of pixels from the one that is drawn to the one that is fetched.
constexpr int FetchedAhead = 2;

// The same for columns, which lie far apart where a pixel stands for many.
constexpr int ColumnsAhead = 8;

template <typename T>
constexpr T PerWeight = static_cast<T>(2.3283064365386963e-10);

/** Fetches a column and its neighbour, which lie behind each other. */
template <typename T>
void fetchColumn(const ColumnMix<T> &column, int rows)
{
    constexpr int CacheLine = 64 / sizeof(T);
    const int count = column.right == nullptr ? rows : 2 * rows;
    for (int row = 0; row < count; row += CacheLine)
        hwy::Prefetch(column.left + row);
}

/** Mixes one column and puts it upright into the rows of a tile. */
template <typename T>
void mixColumn(const ColumnMix<T> &column, int rows, T *tile)
{
    if (column.right == nullptr) {
        for (int row = 0; row < rows; ++row)
            tile[row * TileStride] = column.left[row];
        return;
    }

    const hn::ScalableTag<T> tag;
    const auto lanes = static_cast<int>(hn::Lanes(tag));
    HWY_ALIGN T mixed[hn::MaxLanes(tag)];
    const auto leftWeight = hn::Set(tag, column.leftWeight);
    const auto rightWeight = hn::Set(tag, column.rightWeight);
    const auto perWeight = hn::Set(tag, PerWeight<T>);
    int row = 0;
    for (; row + lanes <= rows; row += lanes) {
        const auto right = hn::Mul(hn::LoadU(tag, column.right + row), rightWeight);
        const auto left = hn::Mul(hn::LoadU(tag, column.left + row), leftWeight);
        hn::Store(hn::Mul(hn::Add(right, left), perWeight), tag, mixed);
        for (int i = 0; i < lanes; ++i)
            tile[(row + i) * TileStride] = mixed[i];
    }
    for (; row < rows; ++row) {
        tile[row * TileStride] =
            (column.right[row] * column.rightWeight + column.left[row] * column.leftWeight) *
            PerWeight<T>;
    }
}

/** Fetches a line of pixels before it is written: stores alone wait for each line of the cache. */
inline void fetchLine(const unsigned int *pixels, int width)
{
    constexpr int CacheLine = 64 / sizeof(unsigned int);
    for (int x = 0; x < width; x += CacheLine)
        hwy::Prefetch(pixels + x);
}

template <typename T>
void drawLine(const LineMix<T> &line, const T *tile, int width, const PixelTable &table,
              unsigned int *pixels)
{
    const hn::ScalableTag<T> tag;
    const auto lanes = static_cast<int>(hn::Lanes(tag));
    const auto lowerWeight = hn::Set(tag, line.lowerWeight);
    const auto upperWeight = hn::Set(tag, line.upperWeight);
    const auto perWeight = hn::Set(tag, PerWeight<T>);
    const Indices entries(table);
    const T *lower = tile + line.row * TileStride;
    const T *upper = line.mixed ? lower + TileStride : lower;

    HWY_ALIGN int32_t indices[TileStride];
    for (int x = 0; x < width; x += lanes) {
        auto values = hn::LoadU(tag, lower + x);
        if (line.mixed) {
            const auto upperValues = hn::LoadU(tag, upper + x);
            values =
                hn::Mul(hn::Add(hn::Mul(values, lowerWeight), hn::Mul(upperValues, upperWeight)),
                        perWeight);
        }
        storeIndices(entries, values, indices + x);
    }
    lookUp(table.pixels, indices, width, pixels);
}

template <typename T>
void drawTile(const ColumnMix<T> *columns, int width, int rows, const LineMix<T> *lines, int height,
              const PixelTable &table, unsigned int *bottom, std::ptrdiff_t stride)
{
    std::vector<T> tile(static_cast<size_t>(rows) * TileStride);
    for (int x = 0; x < width; ++x) {
        if (x + ColumnsAhead < width)
            fetchColumn(columns[x + ColumnsAhead], rows);
        mixColumn(columns[x], rows, tile.data() + x);
    }
    for (int y = 0; y < height; ++y) {
        unsigned int *pixels = bottom - y * stride;
        if (y + FetchedAhead < height)
            fetchLine(pixels - FetchedAhead * stride, width);
        drawLine(lines[y], tile.data(), width, table, pixels);
    }
}

// The dispatcher wants plain functions.
#define NORVU_DRAW_TILE(Name, T)                                                                   \
    void drawTile##Name(const ColumnMix<T> *columns, int width, int rows, const LineMix<T> *lines, \
                        int height, const PixelTable &table, unsigned int *bottom,                 \
                        std::ptrdiff_t stride)                                                     \
    {                                                                                              \
        drawTile(columns, width, rows, lines, height, table, bottom, stride);                      \
    }

NORVU_DRAW_TILE(Float, float)
NORVU_DRAW_TILE(Double, double)

#undef NORVU_DRAW_TILE

} // namespace HWY_NAMESPACE
} // namespace Gui
} // namespace Norvu
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace Norvu {
namespace Gui {

HWY_EXPORT(drawTileFloat);
HWY_EXPORT(drawTileDouble);

template <>
void drawSpectrogramTile(const ColumnMix<float> *columns, int width, int rows,
                         const LineMix<float> *lines, int height, const PixelTable &table,
                         unsigned int *bottom, std::ptrdiff_t stride)
{
    HWY_DYNAMIC_DISPATCH(drawTileFloat)
    (columns, width, rows, lines, height, table, bottom, stride);
}

template <>
void drawSpectrogramTile(const ColumnMix<double> *columns, int width, int rows,
                         const LineMix<double> *lines, int height, const PixelTable &table,
                         unsigned int *bottom, std::ptrdiff_t stride)
{
    HWY_DYNAMIC_DISPATCH(drawTileDouble)
    (columns, width, rows, lines, height, table, bottom, stride);
}

} // namespace Gui
} // namespace Norvu

#endif
