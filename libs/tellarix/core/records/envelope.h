// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/forward.h>
#include <tellarix/core/timewindow.h>

#include <vector>

namespace Tellarix {

/** What a stretch of a trace shows within one pixel column: one sample or a run of them. */
struct EnvelopeColumn
{
    int column;    /**< pixel column, 0 at the start time; also just beside the window */
    double firstX; /**< where the first and the last sample stand, in pixels */
    double lastX;
    double first;
    double minimum;
    double maximum;
    double last;
};

/** Columns without a gap between them, ascending in x. */
struct EnvelopeStretch
{
    /** What separates a stretch from the one before. */
    enum Cause
    {
        Begin,     /**< there is none before */
        Gap,       /**< no sample for more than half a sample interval */
        Overlap,   /**< a record that starts before the samples before it end */
        NotFinite, /**< samples that are not a number or infinite */
    };

    size_t begin; /**< index of the first column */
    size_t end;   /**< index behind the last column */
    Cause cause;
};

/** A trace reduced to what pixel columns can show. */
struct Envelope
{
    std::vector<EnvelopeColumn> columns;
    std::vector<EnvelopeStretch> stretches; /**< by the start of their records */
    double minimum{0};                      /**< smallest and largest sample seen in the window */
    double maximum{-1};                     /**< below minimum if there is none */
};

/** Which samples an envelope keeps. */
enum class EnvelopeDetail
{
    Columns, /**< all of them below two samples a pixel, otherwise four values a column */
    EverySample,
};

/**
 * Reduces the samples of @p records in @p window to pixel columns at @p pixelsPerSecond.
 *
 * A stretch goes on to the sample before and behind the window; where these stand farther than one
 * pixel outside, the line is cut there. Records of at most half a pixel count as a whole to the
 * column of their middle, and blocks of samples shorter than a third of a pixel to the column in
 * which most of them lies: so the cost goes with the number of columns and of records in the
 * window, of which runs of LevelRatio and more count as one where they are short enough, and not
 * with the number of samples. Records without a rate and text show nothing.
 *
 * Stretches that would begin and end in one column together share a single stretch there, so that
 * their number is bounded by the columns however torn the data are.
 *
 * @return an empty envelope for an empty window or a scale that is not above 0 and finite
 */
TELLARIX_CORE_API Envelope makeEnvelope(const RecordSequence &records,
                                        const Core::TimeWindow &window, double pixelsPerSecond,
                                        EnvelopeDetail detail = EnvelopeDetail::Columns);
/** The same into @p envelope, whose memory is used again. */
TELLARIX_CORE_API void makeEnvelope(Envelope &envelope, const RecordSequence &records,
                                    const Core::TimeWindow &window, double pixelsPerSecond,
                                    EnvelopeDetail detail = EnvelopeDetail::Columns);

} // namespace Tellarix
