// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/spectrogramsettings.h>
#include <tellarix/core/timewindow.h>

namespace Workbench {

/** What a row shows, as far as its spectrogram goes. */
struct RowView
{
    Tellarix::Core::TimeWindow visible;
    Tellarix::Core::TimeWindow data; /**< of all records; empty without any */
    double samplingFrequency{0};     /**< 0 without records that have one */
    double samplesPerPixel{1};       /**< pixels of the screen */
    Norvu::Gui::SpectrogramSettings axis;
};

/**
 * What of a row's spectrogram is worked out, and in which pieces: a stretch about what is visible,
 * from its start to its end, with columns that fit the pixels.
 */
class StretchPlan
{
public:
    explicit StretchPlan(const RowView &view) : _view(view) {}

    /** What there is of the visible window; may be empty. */
    Tellarix::Core::TimeWindow visibleData() const;
    /** The visible window, some more to pan into, and what the filters need to run in. Behind the
     *  data it goes on, for records that arrive live. */
    Tellarix::Core::TimeWindow stretch() const;
    /** Samples of a column, of which one or two make up a pixel. */
    int columnInterval() const;
    /** Whether columns of @p interval samples are fine enough for the pixels, and not so fine that
     *  they are a waste. */
    bool fits(int interval) const;
    /** Bytes that the stretch takes. */
    double memory() const;
    /** Whether @p bytes are much more than what the stretch takes. */
    bool isExceededBy(double bytes) const;

    /** Whether what has been worked out is better made longer than begun anew. */
    bool canGoOn(const Tellarix::Core::TimeWindow &done) const;
    /** @p done with the next piece. */
    Tellarix::Core::TimeWindow withNextPiece(const Tellarix::Core::TimeWindow &done) const;

private:
    Tellarix::Core::TimeSpan pieceLength() const;

    RowView _view;
};

} // namespace Workbench
