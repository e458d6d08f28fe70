// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>

#include <QString>
#include <QVector>

#include <functional>

namespace Tellarix {
namespace Gui {

/** A labelled tick of an amplitude axis, y counted from its top. */
struct AmplitudeTick
{
    int y;     /**< of the tick */
    int textY; /**< of the middle of the text, which stays inside the axis */
    double value;
    QString text;
};

/** Sizes that an amplitude axis has to keep to, in pixels. */
struct AmplitudeAxisSpace
{
    int height;     /**< of the axis */
    int lineHeight; /**< of a line of text */
    int textWidth;  /**< room for texts */
    std::function<int(const QString &)> widthOf;
};

/**
 * Labelled ticks of an axis from @p lower at the bottom to @p upper at the top, from the top down.
 *
 * Ticks stand at multiples of 1, 2 or 5 times a power of ten. Where fewer than two of them find
 * room the ends of the range are labelled instead. Texts neither touch each other nor leave the
 * space; an axis lower than two lines has no ticks.
 */
TELLARIX_GUI_API QVector<AmplitudeTick> amplitudeTicks(double lower, double upper,
                                                       const AmplitudeAxisSpace &space);

/**
 * Compact text of an amplitude, to be told from one that is @p spacing away: "0", "-12.5",
 * "1.5e+06".
 * @param largest  largest amplitude of the axis, which decides between the two forms for all
 */
TELLARIX_GUI_API QString amplitudeText(double value, double spacing, double largest);

} // namespace Gui
} // namespace Tellarix
