#include <norvu/gui/spectrogramtile_p.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "norvu/gui/spectrogramtile.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

// Compiled once for each instruction set; the best one is chosen as the program runs.
HWY_BEFORE_NAMESPACE();
namespace Norvu {
namespace Gui {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Rows of a tile lie so far apart that a column doesn't crowd one set of the cache.
constexpr int TileStride = TileWidth + 16;

template <typename T>
constexpr T PerWeight = static_cast<T>(2.3283064365386963e-10);

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

/** Values of a line, as many as there are lanes for doubles. */
template <typename T>
struct LineValues
{
    using Tag = hn::Rebind<T, hn::ScalableTag<double>>;
    using Vector = hn::VFromD<Tag>;

    LineValues(const LineMix<T> &line, const T *tile)
        : lower(tile + line.row * TileStride), isMixed(line.mixed),
          lowerWeight(hn::Set(Tag(), line.lowerWeight)),
          upperWeight(hn::Set(Tag(), line.upperWeight)), perWeight(hn::Set(Tag(), PerWeight<T>))
    {}

    Vector at(int x) const
    {
        const auto value = hn::LoadU(Tag(), lower + x);
        if (!isMixed)
            return value;
        const auto upper = hn::LoadU(Tag(), lower + TileStride + x);
        return hn::Mul(hn::Add(hn::Mul(value, lowerWeight), hn::Mul(upper, upperWeight)),
                       perWeight);
    }

    const T *lower;
    bool isMixed;
    Vector lowerWeight;
    Vector upperWeight;
    Vector perWeight;
};

/** Colours values. What no int can hold and what is no number has the first colour. */
struct Colors
{
    using Tag = hn::ScalableTag<double>;
    using IndexTag = hn::Rebind<int32_t, Tag>;
    using PixelTag = hn::Rebind<uint32_t, Tag>;

    template <typename Vector>
    auto of(Vector values) const
    {
        const Tag tag;
        auto index = [&] {
            if constexpr (sizeof(hn::TFromV<Vector>) == sizeof(double))
                return values;
            else
                return hn::PromoteTo(tag, values);
        }();
        index = hn::Mul(hn::Sub(index, hn::Set(tag, table.minKey)), hn::Set(tag, table.scale));
        index = hn::IfThenElseZero(hn::Lt(index, hn::Set(tag, 2147483648.0)), index);
        index = hn::Min(hn::Max(index, hn::Zero(tag)), hn::Set(tag, table.size - 1.0));
        return hn::GatherIndex(PixelTag(), table.pixels, hn::DemoteTo(IndexTag(), index));
    }

    const PixelTable table;
};

template <typename T>
void drawLine(const LineMix<T> &line, const T *tile, int width, const PixelTable &table,
              unsigned int *pixels)
{
    const LineValues<T> values(line, tile);
    const Colors colors{table};
    const Colors::PixelTag tag;
    const auto lanes = static_cast<int>(hn::Lanes(tag));
    int x = 0;
    for (; x + lanes <= width; x += lanes)
        hn::StoreU(colors.of(values.at(x)), tag, pixels + x);
    if (x == width)
        return;
    HWY_ALIGN uint32_t rest[hn::MaxLanes(tag)];
    hn::Store(colors.of(values.at(x)), tag, rest);
    std::copy_n(rest, width - x, pixels + x);
}

template <typename T>
void drawTile(const ColumnMix<T> *columns, int width, int rows, const LineMix<T> *lines, int height,
              const PixelTable &table, unsigned int *bottom, std::ptrdiff_t stride)
{
    std::vector<T> tile(static_cast<size_t>(rows) * TileStride);
    for (int x = 0; x < width; ++x)
        mixColumn(columns[x], rows, tile.data() + x);
    for (int y = 0; y < height; ++y)
        drawLine(lines[y], tile.data(), width, table, bottom - y * stride);
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
