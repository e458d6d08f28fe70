// SPDX-License-Identifier: LGPL-3.0-or-later

#include "amplitudecolors.h"

#include <algorithm>
#include <cmath>

namespace Workbench {

namespace {

/** 50 dB, as far as a table with evenly spaced entries resolves the colours at the lower end. */
constexpr double DynamicRange = 300;
/** Part of the colours at either end in which differences can hardly be seen. */
constexpr double Indistinct = 0.08;

} // namespace

bool ColorRange::isValid() const
{
    return std::isfinite(lower) && std::isfinite(upper) && lower < upper &&
           (!logarithmic || lower > 0);
}

QPair<double, double> ColorRange::endsFor(double minimum, double maximum) const
{
    if (mode == Fixed)
        return {lower, upper};
    // Where there is nothing but zeros everything has the first colour.
    if (logarithmic)
        return maximum > 0 ? qMakePair(maximum / DynamicRange, maximum)
                           : qMakePair(1 / DynamicRange, 1.0);
    return {minimum, maximum > minimum ? maximum : minimum + 1};
}

bool AmplitudeColors::isUsable() const
{
    return !gradient.isEmpty() && lower < upper && (!logarithmic || lower > 0);
}

/** From 0 at the first colour to 1 at the last. */
double AmplitudeColors::positionOf(double amplitude) const
{
    const double position = logarithmic ? std::log(amplitude / lower) / std::log(upper / lower)
                                        : (amplitude - lower) / (upper - lower);
    return std::clamp(position, 0.0, 1.0);
}

bool AmplitudeColors::fillTable(ColorTable &table, double factor) const
{
    if (!isUsable())
        return false;

    const double first = gradient.firstKey();
    const double span = gradient.lastKey() - first;
    table.fill(lower / factor, upper / factor, [&](double key) {
        return gradient.colorAt(first + positionOf(key * factor) * span, discrete).rgba();
    });
    return true;
}

bool AmplitudeColors::isAbove(double amplitude) const
{
    return isUsable() && positionOf(amplitude) < Indistinct;
}

bool AmplitudeColors::isBelow(double amplitude) const
{
    return isUsable() && positionOf(amplitude) > 1 - Indistinct;
}

bool AmplitudeColors::operator==(const AmplitudeColors &other) const
{
    return lower == other.lower && upper == other.upper && logarithmic == other.logarithmic &&
           discrete == other.discrete && gradient == other.gradient;
}

} // namespace Workbench
