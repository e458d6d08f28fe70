// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/map/heatmapdensity.h>

#include <cstdint>
#include <vector>

namespace Norvu {
namespace Gui {
namespace Map {

/** Lines of a density field that one thread works on. */
struct DensityBand
{
    float *pixels; /**< first one of the line @p top */
    int width;
    int top;
    int bottom; /**< first line below the band */
};

/** Density of a disc at a squared distance from its centre, which is a whole number. T is the
 *  precision. */
template <typename T>
struct DiscKernel;

template <>
struct DiscKernel<double>
{
    explicit DiscKernel(int radius)
        : squaredRadius(static_cast<int64_t>(radius) * radius),
          perSquaredRadius(1.0 / static_cast<double>(squaredRadius))
    {}

    double at(double squaredDistance) const { return 1.0 - squaredDistance * perSquaredRadius; }

    int64_t squaredRadius;
    double perSquaredRadius;
};

template <>
struct DiscKernel<float>
{
    explicit DiscKernel(int radius)
        : squaredRadius(static_cast<int64_t>(static_cast<float>(radius) * radius)),
          divisor(static_cast<float>(squaredRadius))
    {}

    float at(double squaredDistance) const
    {
        return 1.0F - static_cast<float>(squaredDistance) / divisor;
    }

    int64_t squaredRadius;
    float divisor;
};

/** Half the width in pixels, without the centre, of the line of a disc @p dy off its centre; -1 if
 *  the disc doesn't reach that far. */
int halfWidthOf(int64_t squaredRadius, int radius, int64_t dy);

/** All values of a disc, made once for discs that occur often. */
template <typename T>
class DiscStamp
{
public:
    /** Values that can be read beyond each line: zeros, which change nothing. */
    static constexpr int Margin = 16;

    /** A stamp of no values. */
    DiscStamp() = default;
    explicit DiscStamp(int radius);

    bool isEmpty() const { return _values.empty(); }
    int halfWidth(int dy) const { return _halfWidths[static_cast<size_t>(dy < 0 ? -dy : dy)]; }
    /** Value at the centre of a line. */
    const T *center(int dy) const
    {
        const int line = dy < 0 ? -dy : dy;
        return _values.data() + static_cast<std::ptrdiff_t>(line) * _stride + _stride / 2;
    }

private:
    int _stride{0};
    std::vector<int> _halfWidths; /**< of the lines from the centre to the rim */
    std::vector<T> _values;
};

/**
 * Adds discs to a band.
 * @param numbers  @p count of them, which discs of @p discs reach into the band, in order
 * @param stamps   by radius; empty ones are for those that don't occur often
 */
template <typename T>
void addToBand(const DensityBand &band, const DensityDisc *discs, const int *numbers, int count,
               const std::vector<DiscStamp<T>> &stamps);

/** 0 if there is no larger one. */
float maximumOf(const float *values, int count);

} // namespace Map
} // namespace Gui
} // namespace Norvu
