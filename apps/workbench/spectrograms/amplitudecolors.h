// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/utils/lut.h>
#include <tellarix/qt/gradient.h>

#include <QPair>

namespace Workbench {

using ColorTable = Norvu::Utils::LUT<double, unsigned int>;

/** How the range of amplitudes that the colours span is found. */
struct ColorRange
{
    enum Mode
    {
        Automatic = 0, /**< each row by its own values */
        Shared = 1,    /**< one for all rows, by the values of all */
        Fixed = 2,     /**< one for all rows, between lower and upper */
    };

    Mode mode{Automatic};
    double lower{0}; /**< only for Fixed, in the unit of the rows */
    double upper{1};
    bool logarithmic{true}; /**< equal ratios of amplitudes are equally far apart */

    bool isValid() const;
    /** The ends for rows whose values reach from @p minimum to @p maximum; a logarithmic range
     *  that follows its rows reaches 50 dB down from the maximum. */
    QPair<double, double> endsFor(double minimum, double maximum) const;
};

/** Which amplitude has which colour: the keys of a gradient stretched over a range. */
struct AmplitudeColors
{
    Tellarix::Gui::Gradient gradient;
    bool discrete{false}; /**< one colour from stop to stop */
    double lower{0};      /**< amplitude of the first stop; above 0 if logarithmic */
    double upper{1};      /**< amplitude of the last stop, above lower */
    bool logarithmic{false};

    /**
     * Fills a table whose keys are amplitudes divided by @p factor.
     * @return false, leaving the table alone, without stops or a range
     */
    bool fillTable(ColorTable &table, double factor) const;

    /** Whether so large an amplitude has hardly another colour than the first, and so small a one
     *  hardly another than the last. */
    bool isAbove(double amplitude) const;
    bool isBelow(double amplitude) const;

    bool operator==(const AmplitudeColors &other) const;

private:
    bool isUsable() const;
    double positionOf(double amplitude) const;
};

} // namespace Workbench
