// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>
#include <norvu/gui/spectrogramsettings.h>

namespace Norvu {
namespace Gui {

/**
 * How the bands of a spectrogram divide its axis.
 *
 * Bands have the same width and distance in the unit of the axis or, if that is logarithmic, in its
 * natural logarithm: the first one begins at the lower end of the settings, the last one ends at
 * the upper end. Settings that make no sense give values that are not finite.
 */
struct NORVU_GUI_API SpectrogramBands
{
    /** Corners of a band in Hz, the lower one first. */
    struct Corners
    {
        double low;
        double high;
    };

    SpectrogramBands() = default;
    explicit SpectrogramBands(const SpectrogramSettings &settings);

    Corners corners(int band) const;
    /** Centre of a band in the unit of the axis; bands may be given between two of them. */
    double centre(double band) const;
    /** Which band has this centre; not finite if @p value has no logarithm. */
    double bandOf(double value) const;

    int count{0};
    bool hasPeriods{true}; /**< seconds instead of Hz */
    bool isLogarithmic{false};
    /** Seconds of the running mean that is taken off before the bands: the longest period of a
     *  period axis, but the shortest one of a frequency axis. */
    double highPassSeconds{0};

private:
    double toValue(double coordinate) const;
    double toCoordinate(double value) const;

    double _begin{0}; /**< where the first band begins */
    double _width{0}; /**< of a band; negative if the axis descends */
    double _step{0};  /**< from band to band */
};

} // namespace Gui
} // namespace Norvu
