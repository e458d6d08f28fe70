// SPDX-License-Identifier: LGPL-3.0-or-later

#include "stretchplan.h"

#include <algorithm>

using Norvu::Gui::SpectrogramSettings;
using Tellarix::Core::Time;
using Tellarix::Core::TimeSpan;
using Tellarix::Core::TimeWindow;

namespace Workbench {

namespace {

/** Values that are worked out at once: some milliseconds, and tens where memory is slow. */
constexpr double PieceValues = 4E6;
/** Longest periods of the axis until the filters have forgotten that there was nothing before. */
constexpr double RunIn = 3;
/** What is worked out beside the visible window on either side, in parts of it. */
constexpr double Margin = 0.25;
/** Columns that make up a pixel, from which on coarser ones are made. */
constexpr int FinestColumns = 8;
constexpr int LongestInterval = 1 << 20;
/** Panning makes a stretch longer until it has so many times the length that is wanted. */
constexpr double LongestStretch = 3;
/** Memory in parts of what the stretch takes, from which on it is a waste. */
constexpr double Oversized = 1.5;

double longestPeriod(const SpectrogramSettings &axis)
{
    return axis.mode == SpectrogramSettings::Periods ? std::max(axis.lower, axis.upper)
                                                     : 1 / std::min(axis.lower, axis.upper);
}

} // namespace

TimeWindow StretchPlan::visibleData() const
{
    return _view.data.isEmpty() ? TimeWindow() : _view.data.overlap(_view.visible);
}

TimeWindow StretchPlan::stretch() const
{
    const TimeSpan margin(_view.visible.length().length() * Margin);
    const TimeSpan runIn(RunIn * longestPeriod(_view.axis));
    const Time start = _view.visible.startTime() - margin - runIn;
    return {std::max(start, _view.data.startTime()), _view.visible.endTime() + margin};
}

int StretchPlan::columnInterval() const
{
    int interval = 1;
    while (interval < LongestInterval && 2 * interval <= _view.samplesPerPixel)
        interval *= 2;
    return interval;
}

bool StretchPlan::fits(int interval) const
{
    const int wanted = columnInterval();
    return interval <= wanted && wanted < FinestColumns * interval;
}

double StretchPlan::memory() const
{
    const TimeWindow data = _view.data.overlap(stretch());
    return data.isEmpty() ? 0
                          : data.length().length() * _view.samplingFrequency / columnInterval() *
                                _view.axis.bands * sizeof(float);
}

bool StretchPlan::isExceededBy(double bytes) const
{
    return bytes > Oversized * memory();
}

bool StretchPlan::canGoOn(const TimeWindow &done) const
{
    const TimeWindow wanted = stretch();
    return done.startTime() <= visibleData().startTime() && done.endTime() >= wanted.startTime() &&
           (wanted.endTime() - done.startTime()).length() <=
               LongestStretch * wanted.length().length();
}

TimeSpan StretchPlan::pieceLength() const
{
    return TimeSpan(std::max(1.0, PieceValues / (_view.samplingFrequency * _view.axis.bands)));
}

TimeWindow StretchPlan::withNextPiece(const TimeWindow &done) const
{
    const Time end = stretch().endTime();
    const Time next = done.endTime() + pieceLength();
    return {done.startTime(), next < _view.data.endTime() ? std::min(next, end) : end};
}

} // namespace Workbench
