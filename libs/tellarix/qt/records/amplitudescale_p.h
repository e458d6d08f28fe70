// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/timewindow.h>
#include <tellarix/qt/api.h>

namespace Tellarix {

class RecordSequence;

namespace Gui {

/** Extrema of the samples that count for the automatic range, worked out on demand. */
struct TELLARIX_GUI_API TraceExtrema
{
    bool known{false};
    bool empty{true}; /**< no finite sample; the rest means nothing */
    double minimum{0};
    double maximum{0};
    double mean{0};

    /** The same with all values multiplied by @p factor, which is above 0. */
    TraceExtrema scaled(double factor) const;
    /** Extrema of the finite samples of @p sequence in @p window, of all if that is empty. */
    static TraceExtrema Of(const RecordSequence &sequence, const Core::TimeWindow &window);
};

/** Amplitudes at bottom and top of a slot; a descending range turns the trace over. */
struct TELLARIX_GUI_API ShownRange
{
    bool empty{true}; /**< nothing to show: automatic, but without finite samples */
    double lower{-1};
    double upper{1};
    double offset{0};

    /** Pixel of the offset below the top of a slot. */
    int offsetY(int height) const;
    /** Pixel of a value below the top of a slot, limited to what an int holds; and back. */
    int yOf(double value, int height) const;
    double valueAt(int y, int height) const;
    /** False if a trace drawn for the other range would look the same at this height. */
    bool looksOther(const ShownRange &other, int height) const;
};

/** How amplitudes are scaled: to a fixed range, or to what the data span. */
struct TELLARIX_GUI_API AmplitudeScale
{
    double minimum{-1}; /**< of the fixed range, at the bottom also if it is the larger one */
    double maximum{1};
    double magnification{1}; /**< about the mean of the data or the middle of the fixed range */
    bool automatic{true};
    Core::TimeWindow normalizationWindow; /**< what counts for the automatic range; empty: all */

    /** Both are limited so that sums and differences of them stay finite. */
    void setRange(double lower, double upper);
    /** Range of a slot with these extrema. */
    ShownRange rangeOf(const TraceExtrema &extrema) const;
};

} // namespace Gui
} // namespace Tellarix
