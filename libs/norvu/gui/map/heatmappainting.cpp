// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/map/heatmappainting.h>
#include <norvu/gui/pixeltable_p.h>

#include <tellarix/core/parallel.h>

#include <QImage>

#include <algorithm>
#include <cstdint>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "norvu/gui/map/heatmappainting.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
#include <norvu/gui/pixellookup_inl_p.h>

// Compiled once for each instruction set; the best one is chosen as the program runs.
HWY_BEFORE_NAMESPACE();
namespace Norvu {
namespace Gui {
namespace Map {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
namespace lanes = Norvu::Gui::HWY_NAMESPACE;

using Densities = hn::ScalableTag<float>;
using Pixels = hn::ScalableTag<uint32_t>;
using PixelLanes = hn::VFromD<Pixels>;

/** Pixels that are looked up and mixed in one go; a multiple of any lanes. */
constexpr int ChunkSize = 64;

constexpr uint32_t LowByte = 0xFF;
constexpr uint32_t RedAndBlue = 0xFF00FF;
constexpr uint32_t Alpha = 0xFF000000;

/** x / 255, rounded down, in both halves of each lane; up to 255 * 255. */
inline PixelLanes by255(PixelLanes x)
{
    const Pixels tag;
    const auto mask = hn::Set(tag, RedAndBlue);
    const auto share = hn::And(hn::ShiftRight<8>(x), mask);
    const auto sum = hn::Add(hn::Add(x, hn::Set(tag, 0x10001)), share);
    return hn::And(hn::ShiftRight<8>(sum), mask);
}

inline PixelLanes pixelOf(PixelLanes alphaOf, PixelLanes redAndBlue, PixelLanes green)
{
    const auto alpha = hn::And(alphaOf, hn::Set(Pixels(), Alpha));
    return hn::Or(alpha, hn::Or(redAndBlue, hn::ShiftLeft<8>(green)));
}

struct Blending
{
    static PixelLanes mixed(PixelLanes color, PixelLanes old)
    {
        const Pixels tag;
        const auto two = hn::Set(tag, RedAndBlue);
        const auto one = hn::Set(tag, LowByte);
        const auto share = hn::ShiftRight<24>(color);
        const auto rest = hn::Sub(one, share);
        const auto redAndBlue =
            hn::Add(hn::Mul(hn::And(color, two), share), hn::Mul(hn::And(old, two), rest));
        const auto green = hn::Add(hn::Mul(hn::And(hn::ShiftRight<8>(color), one), share),
                                   hn::Mul(hn::And(hn::ShiftRight<8>(old), one), rest));
        return pixelOf(old, by255(redAndBlue), by255(green));
    }
};

struct Multiplying
{
    template <int Shift>
    static PixelLanes product(PixelLanes color, PixelLanes old)
    {
        const auto mask = hn::Set(Pixels(), LowByte);
        return hn::Mul(hn::And(hn::ShiftRight<Shift>(color), mask),
                       hn::And(hn::ShiftRight<Shift>(old), mask));
    }

    static PixelLanes mixed(PixelLanes color, PixelLanes old)
    {
        const auto redAndBlue =
            hn::Or(product<0>(color, old), hn::ShiftLeft<16>(product<16>(color, old)));
        return pixelOf(old, by255(redAndBlue), by255(product<8>(color, old)));
    }
};

inline bool isAnyAboveZero(const float *density)
{
    const Densities tag;
    auto largest = hn::Zero(tag);
    for (int i = 0; i < ChunkSize; i += static_cast<int>(hn::Lanes(tag)))
        largest = hn::Max(largest, hn::LoadU(tag, density + i));
    return hn::GetLane(hn::MaxOfLanes(tag, largest)) > 0;
}

/** Paints a chunk, all of it or only what has a density. */
template <typename Mixing, bool Everywhere>
void paintChunk(const float *density, uint32_t *pixels, const PixelTable &table, float scale)
{
    if (!Everywhere && !isAnyAboveZero(density))
        return;

    const Densities tag;
    const Pixels pixelTag;
    const auto count = static_cast<int>(hn::Lanes(tag));
    const auto factor = hn::Set(tag, scale);
    const lanes::Indices entries(table);
    HWY_ALIGN int32_t indices[ChunkSize];
    HWY_ALIGN unsigned int colors[ChunkSize];
    for (int i = 0; i < ChunkSize; i += count)
        lanes::storeIndices(entries, hn::Mul(hn::LoadU(tag, density + i), factor), indices + i);
    lanes::lookUp(table.pixels, indices, ChunkSize, colors);
    for (int i = 0; i < ChunkSize; i += count) {
        const auto old = hn::LoadU(pixelTag, pixels + i);
        auto result = Mixing::mixed(hn::LoadU(pixelTag, colors + i), old);
        if (!Everywhere) {
            const auto above = hn::Gt(hn::LoadU(tag, density + i), hn::Zero(tag));
            result = hn::IfThenElse(hn::RebindMask(pixelTag, above), result, old);
        }
        hn::StoreU(result, pixelTag, pixels + i);
    }
}

template <typename Mixing, bool Everywhere>
void paintLine(const float *density, uint32_t *pixels, int width, const PixelTable &table,
               float scale)
{
    int x = 0;
    for (; x + ChunkSize <= width; x += ChunkSize)
        paintChunk<Mixing, Everywhere>(density + x, pixels + x, table, scale);
    if (x == width)
        return;

    float lastDensity[ChunkSize] = {};
    uint32_t lastPixels[ChunkSize] = {};
    std::copy(density + x, density + width, lastDensity);
    std::copy(pixels + x, pixels + width, lastPixels);
    paintChunk<Mixing, Everywhere>(lastDensity, lastPixels, table, scale);
    std::copy(lastPixels, lastPixels + width - x, pixels + x);
}

// The dispatcher wants plain functions.
void paint(const float *density, uint32_t *pixels, int width, const PixelTable &table,
           const DensityPainting &painting)
{
    const auto line =
        painting.multiply
            ? (painting.everywhere ? paintLine<Multiplying, true> : paintLine<Multiplying, false>)
            : (painting.everywhere ? paintLine<Blending, true> : paintLine<Blending, false>);
    line(density, pixels, width, table, painting.scale);
}

} // namespace HWY_NAMESPACE
} // namespace Map
} // namespace Gui
} // namespace Norvu
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace Norvu {
namespace Gui {
namespace Map {

HWY_EXPORT(paint);

float densityScale(const DensityTable &table, float maximum)
{
    return static_cast<float>(table._maxKey / maximum);
}

void flattenOnWhite(DensityTable &table)
{
    for (int i = 0; i < table._size; ++i) {
        const QRgb entry = table._table[i];
        const int alpha = qAlpha(entry);
        const auto onWhite = [alpha](int channel) {
            return (channel * alpha + (255 - alpha) * 255) / 255;
        };
        table._table[i] = qRgb(onWhite(qRed(entry)), onWhite(qGreen(entry)), onWhite(qBlue(entry)));
    }
}

void paintDensity(QImage &image, const float *density, const DensityPainting &painting)
{
    Q_ASSERT(image.isNull() || image.depth() == 32);
    // Many lines at a time: each is so short a work that handing it over would show.
    constexpr int Lines = 32;
    const int width = image.width();
    const int height = image.height();
    const PixelTable table{painting.table->_minKey, painting.table->_scale, painting.table->_size,
                           painting.table->_table};
    uchar *bits = image.bits();
    const std::ptrdiff_t stride = image.bytesPerLine();
    Tellarix::Core::parallelFor((height + Lines - 1) / Lines, [&](int band) {
        for (int y = band * Lines; y < std::min((band + 1) * Lines, height); ++y) {
            HWY_DYNAMIC_DISPATCH(paint)
            (density + static_cast<std::ptrdiff_t>(y) * width,
             reinterpret_cast<uint32_t *>(bits + y * stride), width, table, painting);
        }
    });
}

} // namespace Map
} // namespace Gui
} // namespace Norvu

#endif
