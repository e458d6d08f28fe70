// SPDX-License-Identifier: LGPL-3.0-or-later

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
    if ((settings.mode != SpectrogramSettings::Periods &&
         settings.mode != SpectrogramSettings::Frequencies) ||
        settings.bands < 1)
        return;

    const SpectrogramBands bands(settings);
    if (std::isfinite(bands.centre(0)) && std::isfinite(bands.centre(bands.count - 1)))
        _bands = bands;
}

QString SpectrogramAxis::unit() const
{
    if (isEmpty())
        return QString();
    return hasPeriods() ? QStringLiteral("s") : QStringLiteral("Hz");
}

double SpectrogramAxis::valueOfRow(double row) const
{
    return isEmpty() ? NaN : _bands.centre(row);
}

double SpectrogramAxis::valueAt(double position) const
{
    return valueOfRow(std::min(std::max(0.0, position * rows()), rows() - 1.0));
}

double SpectrogramAxis::positionOf(double value) const
{
    if (isEmpty() || (isLogarithmic() && !(value > 0)))
        return NaN;
    if (isSingleValue())
        return 0.5;
    return _bands.bandOf(value) / rows();
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

    const double last = (rows() - 1.0) / rows();
    auto result = roundTicks(firstValue(), lastValue(), isLogarithmic(), minimumDistance / last);
    for (RoundTick &tick : result)
        tick.position *= last;
    return result;
}

} // namespace Gui
} // namespace Norvu
