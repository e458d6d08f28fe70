#include <norvu/gui/spectrogramaxis.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Norvu {
namespace Gui {

namespace {

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

} // namespace

SpectrogramAxis::SpectrogramAxis(const SpectrogramSettings &settings)
{
    const bool isPeriods = settings.mode == SpectrogramSettings::Periods;
    if ((!isPeriods && settings.mode != SpectrogramSettings::Frequencies) || settings.bands < 1)
        return;

    _hasPeriods = isPeriods;
    _logarithmic = settings.logarithmic;
    _begin = _logarithmic ? std::log(settings.lower) : settings.lower;
    const double span = (_logarithmic ? std::log(settings.upper) : settings.upper) - _begin;
    _width = span / settings.divisions;
    _step = settings.bands > 1 ? (span - _width) / (settings.bands - 1) : 0.0;
    _rows = settings.bands;
    if (!std::isfinite(firstValue()) || !std::isfinite(lastValue()))
        *this = SpectrogramAxis();
}

QString SpectrogramAxis::unit() const
{
    if (isEmpty())
        return QString();
    return _hasPeriods ? QStringLiteral("s") : QStringLiteral("Hz");
}

SpectrogramAxis::Band SpectrogramAxis::band(int row) const
{
    const double begin = row * _step + _begin;
    double low = toValue(begin);
    double high = toValue(begin + _width);
    if (_hasPeriods) {
        low = 1.0 / low;
        high = 1.0 / high;
    }
    return {std::min(low, high), std::max(low, high)};
}

double SpectrogramAxis::toValue(double coordinate) const
{
    return _logarithmic ? std::exp(coordinate) : coordinate;
}

double SpectrogramAxis::valueOfRow(double row) const
{
    return isEmpty() ? NaN : toValue(_begin + 0.5 * _width + row * _step);
}

double SpectrogramAxis::valueAt(double position) const
{
    return valueOfRow(std::min(std::max(0.0, position * _rows), _rows - 1.0));
}

double SpectrogramAxis::positionOf(double value) const
{
    if (isEmpty() || (_logarithmic && !(value > 0)))
        return NaN;
    if (isSingleValue())
        return 0.5;
    const double coordinate = _logarithmic ? std::log(value) : value;
    return (coordinate - _begin - 0.5 * _width) / _step / _rows;
}

QVector<RoundTick> SpectrogramAxis::ticks(double minimumDistance) const
{
    if (isEmpty())
        return {};
    if (isSingleValue()) {
        constexpr int Digits = 3;
        const double value = QString::number(firstValue(), 'g', Digits).toDouble();
        return {{value, 0.5, roundNumberText(value)}};
    }

    const double last = (_rows - 1.0) / _rows;
    auto result = roundTicks(firstValue(), lastValue(), _logarithmic, minimumDistance / last);
    for (RoundTick &tick : result)
        tick.position *= last;
    return result;
}

} // namespace Gui
} // namespace Norvu
