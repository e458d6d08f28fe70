// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>
#include <norvu/gui/spectrogramsettings.h>

#include <QString>

namespace Norvu {
namespace Gui {

/** Tells why SpectrogramSettings::fromString() refuses a text, naming the first thing that is wrong
 *  in it; empty if it doesn't. */
NORVU_GUI_API QString spectrogramSettingsProblem(const QString &text);

/**
 * Tells which bands hold no signal at a sampling frequency in Hz, so that their rows are 0
 * throughout: those that reach half of it or more, those without width, and all of them if the
 * running mean is so short that it takes the samples themselves off, as with frequencies above some
 * two thirds of the sampling frequency. Empty if there are none.
 */
NORVU_GUI_API QString spectrogramRateProblem(const SpectrogramSettings &settings,
                                             double samplingFrequency);

} // namespace Gui
} // namespace Norvu
