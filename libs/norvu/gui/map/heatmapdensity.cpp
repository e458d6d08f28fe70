// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/map/densityband_p.h>
#include <norvu/gui/map/heatmapdensity.h>

#include <tellarix/core/parallel.h>

#include <QtGlobal>

#include <algorithm>
#include <cmath>

namespace Norvu {
namespace Gui {
namespace Map {

namespace {

/** Discs above it would crowd the cache with their stamps. */
constexpr int LargestStamp = 48;

/** A band of these stays in the second level of the cache. */
constexpr int PixelsOfBand = 1 << 16;

template <typename T>
int wholePixels(T radius, int smallest)
{
    if (!(radius > static_cast<T>(smallest)))
        return smallest;
    return radius < static_cast<T>(LargestRadius) ? static_cast<int>(radius) : LargestRadius;
}

/** Which discs reach into which band of lines, in the order of the discs. */
class BandLists
{
public:
    BandLists(const std::vector<DensityDisc> &discs, int width, int height)
        : _width(width), _height(height),
          _lines(qBound(1, PixelsOfBand / std::max(width, 1), std::max(height, 1))),
          _begin(static_cast<size_t>(count()) + 1)
    {
        for (const DensityDisc &disc : discs) {
            for (int band = firstBand(disc); band < endBand(disc); ++band)
                ++_begin[static_cast<size_t>(band) + 1];
        }
        for (size_t band = 1; band < _begin.size(); ++band)
            _begin[band] += _begin[band - 1];

        _numbers.resize(static_cast<size_t>(_begin.back()));
        std::vector<int> next = _begin;
        for (size_t number = 0; number < discs.size(); ++number) {
            for (int band = firstBand(discs[number]); band < endBand(discs[number]); ++band)
                _numbers[static_cast<size_t>(next[static_cast<size_t>(band)]++)] =
                    static_cast<int>(number);
        }
    }

    int count() const { return (_height + _lines - 1) / _lines; }

    DensityBand band(float *density, int band) const
    {
        const int top = band * _lines;
        return {density + static_cast<std::ptrdiff_t>(top) * _width, _width, top,
                std::min(top + _lines, _height)};
    }

    const int *numbers(int band) const
    {
        return _numbers.data() + _begin[static_cast<size_t>(band)];
    }

    int numberCount(int band) const
    {
        return _begin[static_cast<size_t>(band) + 1] - _begin[static_cast<size_t>(band)];
    }

private:
    int firstBand(const DensityDisc &disc) const
    {
        return std::max(disc.y - disc.radius, 0) / _lines;
    }

    /** Not above firstBand() if the disc lies outside. */
    int endBand(const DensityDisc &disc) const
    {
        const bool outside =
            disc.x - disc.radius >= _width || disc.x + disc.radius < 0 || disc.y + disc.radius < 0;
        return outside ? 0 : std::min(disc.y + disc.radius, _height - 1) / _lines + 1;
    }

    int _width;
    int _height;
    int _lines; /**< of a band */
    std::vector<int> _begin;
    std::vector<int> _numbers;
};

template <typename T>
std::vector<DiscStamp<T>> stampsFor(const std::vector<DensityDisc> &discs)
{
    // A stamp is dearer than a disc: it has to be worth it.
    constexpr int Often = 4;
    int occurrences[LargestStamp + 1] = {};
    for (const DensityDisc &disc : discs) {
        if (disc.radius <= LargestStamp)
            ++occurrences[disc.radius];
    }
    std::vector<DiscStamp<T>> stamps(LargestStamp + 1);
    for (int radius = 1; radius <= LargestStamp; ++radius) {
        if (occurrences[radius] >= Often)
            stamps[static_cast<size_t>(radius)] = DiscStamp<T>(radius);
    }
    return stamps;
}

void takeLogarithms(float *values, std::ptrdiff_t count)
{
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        if (values[i] > 0)
            values[i] = std::log(values[i]);
    }
}

template <typename T>
float fill(float *density, int width, int height, const std::vector<DensityDisc> &discs,
           bool logarithmic)
{
    const BandLists lists(discs, width, height);
    const std::vector<DiscStamp<T>> stamps = stampsFor<T>(discs);
    std::vector<float> maxima(static_cast<size_t>(lists.count()));
    Tellarix::Core::parallelFor(lists.count(), [&](int number) {
        const DensityBand band = lists.band(density, number);
        const int pixels = (band.bottom - band.top) * width;
        std::fill_n(band.pixels, pixels, 0.0F);
        addToBand(band, discs.data(), lists.numbers(number), lists.numberCount(number), stamps);
        if (logarithmic)
            takeLogarithms(band.pixels, pixels);
        maxima[static_cast<size_t>(number)] = maximumOf(band.pixels, pixels);
    });
    return *std::max_element(maxima.begin(), maxima.end());
}

} // namespace

int exponentialRadius(double magnitude, float pixelPerDegree)
{
    constexpr int Smallest = 5;
    constexpr double KilometersPerDegree = 111.13291490135191;
    if (!std::isfinite(magnitude))
        return Smallest;

    const double degrees = magnitude * (std::exp(magnitude / 1.01 - 0.13) / KilometersPerDegree);
    return wholePixels(degrees * pixelPerDegree, Smallest);
}

int ruptureRadius(double magnitude, int areaFactor, float pixelPerDegree)
{
    constexpr int Smallest = 3;
    constexpr float KilometersPerDegree = 111.13291F;
    if (!std::isfinite(magnitude))
        return Smallest;

    const double area = static_cast<float>(std::pow(10, (magnitude - 4.07) / 0.98));
    const auto kilometers = static_cast<float>(std::sqrt(areaFactor * (area + area)));
    return wholePixels(kilometers / KilometersPerDegree * pixelPerDegree, Smallest);
}

float computeDensity(float *density, int width, int height, const std::vector<DensityDisc> &discs,
                     DiscPrecision precision, bool logarithmic)
{
    if (width < 1 || height < 1)
        return 0;
    return precision == DiscPrecision::Double
               ? fill<double>(density, width, height, discs, logarithmic)
               : fill<float>(density, width, height, discs, logarithmic);
}

} // namespace Map
} // namespace Gui
} // namespace Norvu
