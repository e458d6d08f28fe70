// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/amplitudeaxis_p.h>

#include <tellarix/qt/records/ruler.h>

#include <algorithm>
#include <cmath>

namespace Tellarix {
namespace Gui {

namespace {

constexpr double LargestPlain = 1E5;
constexpr double SmallestPlain = 1E-3;
constexpr int MaximumDigits = 6;
// Lines of text per distance of ticks: denser ticks would read as a block of text.
constexpr double LinesPerTick = 1.2;

/** Decimals that tell numbers apart that are multiples of @p spacing. */
int decimalsFor(double spacing)
{
    return std::clamp(static_cast<int>(std::ceil(-std::log10(spacing) - 1E-9)), 0, MaximumDigits);
}

QString withoutTrailingZeros(QString text)
{
    if (!text.contains('.'))
        return text;
    while (text.endsWith('0'))
        text.chop(1);
    if (text.endsWith('.'))
        text.chop(1);
    return text;
}

int yOf(double value, double lower, double upper, int height)
{
    return static_cast<int>(std::lround((upper - value) / (upper - lower) * (height - 1)));
}

QVector<AmplitudeTick> roundTicks(double lower, double upper, const AmplitudeAxisSpace &space)
{
    const double spacing =
        roundTickDistance((upper - lower) * LinesPerTick * space.lineHeight / space.height);
    const double largest = std::max(std::abs(lower), std::abs(upper));
    QVector<double> values = tickValues(lower, upper, spacing, 0);
    std::reverse(values.begin(), values.end());

    QVector<AmplitudeTick> ticks;
    for (const double value : values) {
        const int y = yOf(value, lower, upper, space.height);
        const bool isInside =
            y >= space.lineHeight / 2 && y <= space.height - (space.lineHeight + 1) / 2;
        const QString text = amplitudeText(value, spacing, largest);
        if (isInside && space.widthOf(text) <= space.textWidth)
            ticks.append({y, y, value, text});
    }
    return ticks;
}

QVector<AmplitudeTick> endTicks(double lower, double upper, const AmplitudeAxisSpace &space)
{
    const double largest = std::max(std::abs(lower), std::abs(upper));
    const int half = space.lineHeight / 2;
    QVector<AmplitudeTick> ticks{
        {0, half, upper, QString()},
        {space.height - 1, space.height - space.lineHeight + half, lower, QString()}};
    for (const double steps : {100.0, 10.0, 2.0}) {
        for (AmplitudeTick &tick : ticks)
            tick.text = amplitudeText(tick.value, (upper - lower) / steps, largest);
        if (space.widthOf(ticks[0].text) <= space.textWidth &&
            space.widthOf(ticks[1].text) <= space.textWidth)
            return ticks;
    }
    return {};
}

} // namespace

QVector<AmplitudeTick> amplitudeTicks(double lower, double upper, const AmplitudeAxisSpace &space)
{
    if (!(lower < upper) || !std::isfinite(upper - lower) || space.lineHeight < 1 ||
        space.height < 2 * space.lineHeight)
        return {};

    const QVector<AmplitudeTick> ticks = roundTicks(lower, upper, space);
    return ticks.size() >= 2 ? ticks : endTicks(lower, upper, space);
}

QString amplitudeText(double value, double spacing, double largest)
{
    if (!(spacing > 0) || std::abs(value) < 1E-6 * spacing)
        return QStringLiteral("0");
    if (largest < LargestPlain && largest >= SmallestPlain * 10 && spacing >= SmallestPlain)
        return withoutTrailingZeros(QString::number(value, 'f', decimalsFor(spacing)));

    const double digits = std::log10(std::abs(value) / spacing);
    const int decimals = std::clamp(static_cast<int>(std::ceil(digits - 1E-9)), 0, MaximumDigits);
    const QString text = QString::number(value, 'e', decimals);
    const int exponent = text.indexOf('e');
    return withoutTrailingZeros(text.left(exponent)) + text.mid(exponent);
}

} // namespace Gui
} // namespace Tellarix
