// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/forward.h>
#include <tellarix/core/timewindow.h>

#include <cstdint>

namespace Tellarix {

/** What can be read off a trace between two times. Without samples all amplitudes are 0. */
struct Measurement
{
    Core::TimeSpan span;
    double frequency{0}; /**< 1 / span in Hz; 0 without a span */
    double minimum{0};   /**< amplitudes are those of the samples times the scale */
    double maximum{0};
    double peakToPeak{0};
    double mean{0};
    double rms{0};      /**< root of the mean square about the mean */
    int64_t count{0};   /**< finite samples */
    bool hasGap{false}; /**< records leave a part of the window uncovered */
};

/**
 * Measures the samples in a window, each sample of overlapping records by itself. Not-a-number and
 * infinite samples don't count. Scans the samples, which takes some milliseconds per million.
 *
 * @param window  a reversed or invalid one has neither span nor samples
 * @param scale   factor from samples to amplitudes; a negative one exchanges minimum and maximum
 */
TELLARIX_CORE_API Measurement measure(const RecordSequence &records, const Core::TimeWindow &window,
                                      double scale = 1.0);

} // namespace Tellarix
