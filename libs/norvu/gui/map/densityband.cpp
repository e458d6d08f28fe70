// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/map/densityband_p.h>

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "norvu/gui/map/densityband.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

// Compiled once for each instruction set; the best one is chosen as the program runs.
HWY_BEFORE_NAMESPACE();
namespace Norvu {
namespace Gui {
namespace Map {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Doubles = hn::CappedTag<double, 8>;
using Floats = hn::Rebind<float, Doubles>;
using WideFloats = hn::CappedTag<float, 16>;

inline hn::VFromD<Floats> added(hn::VFromD<Doubles> values, hn::VFromD<Floats> old)
{
    return hn::DemoteTo(Floats(), hn::Add(values, hn::PromoteTo(Doubles(), old)));
}

/** Adds lanes of a disc, given their squared distances. */
template <typename T>
struct LaneKernel;

template <>
struct LaneKernel<double>
{
    explicit LaneKernel(const DiscKernel<double> &kernel)
        : one(hn::Set(Doubles(), 1.0)), factor(hn::Set(Doubles(), kernel.perSquaredRadius))
    {}

    hn::VFromD<Floats> add(hn::VFromD<Doubles> squaredDistance, hn::VFromD<Floats> old) const
    {
        return added(hn::Sub(one, hn::Mul(squaredDistance, factor)), old);
    }

    hn::VFromD<Doubles> one;
    hn::VFromD<Doubles> factor;
};

template <>
struct LaneKernel<float>
{
    explicit LaneKernel(const DiscKernel<float> &kernel)
        : one(hn::Set(Floats(), 1.0F)), divisor(hn::Set(Floats(), kernel.divisor))
    {}

    hn::VFromD<Floats> add(hn::VFromD<Doubles> squaredDistance, hn::VFromD<Floats> old) const
    {
        const auto distance = hn::DemoteTo(Floats(), squaredDistance);
        return hn::Add(hn::Sub(one, hn::Div(distance, divisor)), old);
    }

    hn::VFromD<Floats> one;
    hn::VFromD<Floats> divisor;
};

/** Adds @p count pixels of a line; the first is @p dx to the right of the centre. Distances are
 *  whole numbers that a double holds. */
template <typename T>
void addLine(float *pixels, int count, double dx, double dy, const DiscKernel<T> &kernel,
             const LaneKernel<T> &laneKernel)
{
    const Doubles tag;
    const Floats floats;
    const auto lanes = static_cast<int>(hn::Lanes(tag));
    const auto step = hn::Set(tag, lanes);
    const auto dySquared = hn::Set(tag, dy * dy);
    auto distance = hn::Iota(tag, dx);
    int i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto squared = hn::Add(hn::Mul(distance, distance), dySquared);
        hn::StoreU(laneKernel.add(squared, hn::LoadU(floats, pixels + i)), floats, pixels + i);
        distance = hn::Add(distance, step);
    }
    for (; i < count; ++i) {
        const double x = dx + i;
        pixels[i] = static_cast<float>(kernel.at(x * x + dy * dy) + pixels[i]);
    }
}

inline void addLanes(const double *values, float *pixels)
{
    const Floats floats;
    hn::StoreU(added(hn::LoadU(Doubles(), values), hn::LoadU(floats, pixels)), floats, pixels);
}

inline void addLanes(const float *values, float *pixels)
{
    const WideFloats tag;
    hn::StoreU(hn::Add(hn::LoadU(tag, values), hn::LoadU(tag, pixels)), tag, pixels);
}

/** Adds @p count values of a stamp. Up to @p room, zeros may be added to pixels behind them. */
template <typename T>
void addStamped(float *pixels, int count, int room, const T *values)
{
    const auto lanes = static_cast<int>(hn::Lanes(hn::CappedTag<T, 64 / sizeof(T)>()));
    int i = 0;
    for (; i < count && i + lanes <= room; i += lanes)
        addLanes(values + i, pixels + i);
    for (; i < count; ++i)
        pixels[i] = static_cast<float>(values[i] + pixels[i]);
}

/** The pixels of a disc's line that lie in a band. */
struct LineSpan
{
    LineSpan(const DensityBand &band, const DensityDisc &disc, int y, int half)
        : left(std::max(disc.x - half, 0)), count(std::min(disc.x + half + 1, band.width) - left),
          pixels(band.pixels + static_cast<std::ptrdiff_t>(y - band.top) * band.width + left)
    {}

    int left;
    int count; /**< 0 or below if there are none */
    float *pixels;
};

template <typename T>
void addDisc(const DensityBand &band, const DensityDisc &disc)
{
    const DiscKernel<T> kernel(disc.radius);
    const LaneKernel<T> laneKernel(kernel);
    const int end = std::min(disc.y + disc.radius + 1, band.bottom);
    for (int y = std::max(disc.y - disc.radius, band.top); y < end; ++y) {
        const int dy = y - disc.y;
        const LineSpan span(band, disc, y, halfWidthOf(kernel.squaredRadius, disc.radius, dy));
        addLine(span.pixels, span.count, span.left - disc.x, dy, kernel, laneKernel);
    }
}

template <typename T>
void addStamp(const DensityBand &band, const DensityDisc &disc, const DiscStamp<T> &stamp)
{
    const int end = std::min(disc.y + disc.radius + 1, band.bottom);
    for (int y = std::max(disc.y - disc.radius, band.top); y < end; ++y) {
        const int dy = y - disc.y;
        const LineSpan span(band, disc, y, stamp.halfWidth(dy));
        if (span.count > 0)
            addStamped(span.pixels, span.count, band.width - span.left,
                       stamp.center(dy) + (span.left - disc.x));
    }
}

template <typename T>
void addDiscs(const DensityBand &band, const DensityDisc *discs, const int *numbers, int count,
              const std::vector<DiscStamp<T>> &stamps)
{
    for (int i = 0; i < count; ++i) {
        const DensityDisc &disc = discs[numbers[i]];
        const auto radius = static_cast<size_t>(disc.radius);
        if (radius < stamps.size() && !stamps[radius].isEmpty())
            addStamp(band, disc, stamps[radius]);
        else
            addDisc<T>(band, disc);
    }
}

// The dispatcher wants plain functions.
void addDiscsDouble(const DensityBand &band, const DensityDisc *discs, const int *numbers,
                    int count, const std::vector<DiscStamp<double>> &stamps)
{
    addDiscs(band, discs, numbers, count, stamps);
}

void addDiscsSingle(const DensityBand &band, const DensityDisc *discs, const int *numbers,
                    int count, const std::vector<DiscStamp<float>> &stamps)
{
    addDiscs(band, discs, numbers, count, stamps);
}

float largest(const float *values, int count)
{
    const WideFloats tag;
    const auto lanes = static_cast<int>(hn::Lanes(tag));
    auto maxima = hn::Zero(tag);
    int i = 0;
    for (; i + lanes <= count; i += lanes)
        maxima = hn::Max(maxima, hn::LoadU(tag, values + i));
    float result = hn::GetLane(hn::MaxOfLanes(tag, maxima));
    for (; i < count; ++i)
        result = std::max(result, values[i]);
    return result;
}

} // namespace HWY_NAMESPACE
} // namespace Map
} // namespace Gui
} // namespace Norvu
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

#include <cmath>

namespace Norvu {
namespace Gui {
namespace Map {

HWY_EXPORT(addDiscsDouble);
HWY_EXPORT(addDiscsSingle);
HWY_EXPORT(largest);

template <>
void addToBand(const DensityBand &band, const DensityDisc *discs, const int *numbers, int count,
               const std::vector<DiscStamp<double>> &stamps)
{
    HWY_DYNAMIC_DISPATCH(addDiscsDouble)(band, discs, numbers, count, stamps);
}

template <>
void addToBand(const DensityBand &band, const DensityDisc *discs, const int *numbers, int count,
               const std::vector<DiscStamp<float>> &stamps)
{
    HWY_DYNAMIC_DISPATCH(addDiscsSingle)(band, discs, numbers, count, stamps);
}

float maximumOf(const float *values, int count)
{
    return HWY_DYNAMIC_DISPATCH(largest)(values, count);
}

int halfWidthOf(int64_t squaredRadius, int radius, int64_t dy)
{
    const int64_t rest = squaredRadius - dy * dy;
    if (rest < 0)
        return -1;

    // The root of so large a number may be off by one.
    auto half = static_cast<int64_t>(std::sqrt(static_cast<double>(rest)));
    while (half * half > rest)
        --half;
    while ((half + 1) * (half + 1) <= rest)
        ++half;
    return static_cast<int>(std::min<int64_t>(half, radius));
}

template <typename T>
DiscStamp<T>::DiscStamp(int radius)
    : _stride(2 * radius + 1 + 2 * Margin), _halfWidths(static_cast<size_t>(radius) + 1),
      _values(static_cast<size_t>(radius + 1) * static_cast<size_t>(_stride))
{
    const DiscKernel<T> kernel(radius);
    for (int dy = 0; dy <= radius; ++dy) {
        const int half = halfWidthOf(kernel.squaredRadius, radius, dy);
        _halfWidths[static_cast<size_t>(dy)] = half;
        T *center = _values.data() + static_cast<std::ptrdiff_t>(dy) * _stride + _stride / 2;
        for (int dx = -half; dx <= half; ++dx)
            center[dx] = kernel.at(static_cast<double>(dx) * dx + static_cast<double>(dy) * dy);
    }
}

template class DiscStamp<double>;
template class DiscStamp<float>;

} // namespace Map
} // namespace Gui
} // namespace Norvu

#endif
