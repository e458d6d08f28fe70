// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/spectrogrambands.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace Norvu {
namespace Gui {

SpectrogramBands::SpectrogramBands(const SpectrogramSettings &settings)
    : count(settings.bands), hasPeriods(settings.mode == SpectrogramSettings::Periods),
      isLogarithmic(settings.logarithmic)
{
    const double greater = std::max(settings.lower, settings.upper);
    highPassSeconds = hasPeriods ? greater : 1.0 / greater;
    _begin = toCoordinate(settings.lower);
    const double span = toCoordinate(settings.upper) - _begin;
    _width = span / settings.divisions;
    _step = count > 1 ? (span - _width) / (count - 1) : 0.0;
}

SpectrogramBands::Corners SpectrogramBands::corners(int band) const
{
    const double begin = band * _step + _begin;
    Corners result{toValue(begin), toValue(begin + _width)};
    if (hasPeriods)
        result = {1.0 / result.low, 1.0 / result.high};
    if (result.low > result.high)
        std::swap(result.low, result.high);
    return result;
}

double SpectrogramBands::centre(double band) const
{
    return toValue(_begin + 0.5 * _width + band * _step);
}

double SpectrogramBands::bandOf(double value) const
{
    return (toCoordinate(value) - _begin - 0.5 * _width) / _step;
}

double SpectrogramBands::toValue(double coordinate) const
{
    return isLogarithmic ? std::exp(coordinate) : coordinate;
}

double SpectrogramBands::toCoordinate(double value) const
{
    return isLogarithmic ? std::log(value) : value;
}

} // namespace Gui
} // namespace Norvu
