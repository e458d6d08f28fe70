// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <string>

namespace Norvu {
namespace Gui {

/** The axis of a spectrogram and the bands that cover it. */
struct NORVU_GUI_API SpectrogramSettings
{
    /** What the axis counts. */
    enum Mode
    {
        Frequencies = 0, /**< Hz */
        Periods = 1,     /**< seconds */
    };

    /** Leaves logarithmic without a value: whoever fills the fields by hand has to set it. */
    SpectrogramSettings();

    /**
     * Reads "name(lower,upper,divisions,bands)", where the name is "periods_log", "periods",
     * "freqs_log" or "freqs" in any case, as in "periods_log(0.1,100,10,64)". Text behind the
     * closing bracket is ignored.
     *
     * The fields are filled as they are read: a text with a known name that is wrong further on
     * leaves them partly changed.
     * @return true if the whole text was read and all four numbers are above 0
     */
    bool fromString(const std::string &text);

    double lower;     /**< first end of the axis, of row 0; may lie above upper */
    double upper;     /**< other end of the axis */
    int mode;         /**< a Mode; any other value makes an empty bank */
    int divisions;    /**< widths of a band that make up the whole axis */
    int bands;        /**< number of bands, that is rows; they overlap if above divisions */
    bool logarithmic; /**< the axis is laid out in the natural logarithm of its unit */
};

} // namespace Gui
} // namespace Norvu
