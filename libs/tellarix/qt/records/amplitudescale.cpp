// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/amplitudescale_p.h>

#include <tellarix/core/records/recordsequence.h>

#include <algorithm>
#include <cmath>

namespace Tellarix {
namespace Gui {

namespace {

// Share of half of the data's range that is left free at top and bottom.
constexpr double Margin = 0.05;
// Sums and differences of amplitudes within these limits stay finite.
constexpr double AmplitudeLimit = 1E250;

double limited(double amplitude)
{
    return std::clamp(amplitude, -AmplitudeLimit, AmplitudeLimit);
}

} // namespace

TraceExtrema TraceExtrema::Of(const RecordSequence &sequence, const Core::TimeWindow &window)
{
    TraceExtrema result;
    result.known = true;
    const SampleSummary summary = sequence.summary(window.isEmpty() ? nullptr : &window);
    result.empty = summary.isEmpty();
    if (result.empty)
        return result;
    result.minimum = limited(summary.minimum);
    result.maximum = limited(summary.maximum);
    result.mean = std::clamp(summary.mean(), result.minimum, result.maximum);
    return result;
}

TraceExtrema TraceExtrema::scaled(double factor) const
{
    TraceExtrema result = *this;
    result.minimum *= factor;
    result.maximum *= factor;
    result.mean *= factor;
    return result;
}

int ShownRange::offsetY(int height) const
{
    return static_cast<int>(std::lround((upper - offset) / (upper - lower) * (height - 1)));
}

int ShownRange::yOf(double value, int height) const
{
    constexpr double Limit = 1 << 30;
    const double share = (upper - value) / (upper - lower);
    if (std::isnan(share))
        return height / 2;
    return static_cast<int>(std::lround(std::clamp(share * (height - 1), -Limit, Limit)));
}

double ShownRange::valueAt(int y, int height) const
{
    if (height < 2)
        return 0.5 * lower + 0.5 * upper;
    const double share = static_cast<double>(y) / (height - 1);
    return upper - share * (upper - lower);
}

bool ShownRange::looksOther(const ShownRange &other, int height) const
{
    // The mean moves with every record, but hardly ever by a pixel.
    return empty != other.empty || lower != other.lower || upper != other.upper ||
           offsetY(height) != other.offsetY(height);
}

void AmplitudeScale::setRange(double lower, double upper)
{
    minimum = limited(lower);
    maximum = limited(upper);
}

ShownRange AmplitudeScale::rangeOf(const TraceExtrema &extrema) const
{
    ShownRange range;
    double lower = minimum;
    double upper = maximum;
    range.offset = 0.5 * lower + 0.5 * upper;
    if (automatic) {
        if (extrema.empty)
            return {};
        const double margin = Margin * 0.5 * (extrema.maximum - extrema.minimum);
        lower = extrema.minimum - margin;
        upper = extrema.maximum + margin;
        range.offset = extrema.mean;
    }
    // A constant trace runs through the middle of a range that its size suggests.
    if (lower == upper) {
        const double half = lower != 0 ? 0.1 * std::abs(lower) : 1.0;
        lower -= half;
        upper += half;
    }
    range.empty = false;
    range.lower = range.offset + (lower - range.offset) / magnification;
    range.upper = range.offset + (upper - range.offset) / magnification;
    return range;
}

} // namespace Gui
} // namespace Tellarix
