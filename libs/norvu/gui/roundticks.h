// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QString>
#include <QVector>

namespace Norvu {
namespace Gui {

/** A tick at a round value of an axis. */
struct NORVU_GUI_API RoundTick
{
    double value{0};
    double position{0}; /**< along the axis, from 0 at its begin to 1 at its end */
    QString text;       /**< empty for the minor ticks between the labelled ones */

    bool isMajor() const { return !text.isEmpty(); }
};

/**
 * Ticks at round values between the ends of an axis: on a linear one at multiples of 1, 2 or 5
 * times a power of ten, on a logarithmic one at decades, then at 1, 2 and 5 of each, then at every
 * digit, and within less than a decade at multiples too, as there is room.
 *
 * There are two labelled ticks at least if they find room at all, whatever it takes to make their
 * values less round; else there is one, if only in between. Minor ticks stand a quarter of
 * @p minimumDistance apart or more.
 *
 * @param begin, end       values at positions 0 and 1; end may lie below
 * @param logarithmic      equal ratios take equal distances; both ends have to be above 0
 * @param minimumDistance  of labelled ticks, as a share of the axis; 0.001 at least
 * @return in ascending order of position; empty for an axis that has no extent, is not finite or
 *         has no logarithm
 */
NORVU_GUI_API QVector<RoundTick> roundTicks(double begin, double end, bool logarithmic,
                                            double minimumDistance);

/** A value to at most ten digits, without needless ones: "0.05", "10", "2.5e6". There is an
 *  exponent below 0.001 and from a million on. */
NORVU_GUI_API QString roundNumberText(double value);

} // namespace Gui
} // namespace Norvu
