// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/measurement.h>

#include <tellarix/core/records/numericarray.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/recordsequence.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace Tellarix {

namespace {

constexpr int ChunkSize = 4096;

/** Sum of (sample - mean)^2 over the finite samples from @p first up to @p last. */
double squaredDeviations(const NumericArray &samples, int first, int last, double mean)
{
    std::array<double, ChunkSize> chunk;
    double result = 0;
    for (int begin = first; begin < last; begin += ChunkSize) {
        const int end = std::min(begin + ChunkSize, last);
        samples.convert(begin, end, chunk.data());
        // Sums of chunks are added up, so that small terms aren't lost in a large total.
        double sum = 0;
        for (int i = 0; i < end - begin; ++i) {
            const double deviation = chunk[i] - mean;
            sum += std::isfinite(deviation) ? deviation * deviation : 0.0;
        }
        result += sum;
    }
    return result;
}

double squaredDeviations(const RecordSequence &records, const Core::TimeWindow &window, double mean)
{
    double result = 0;
    const int last = records.firstStartingFrom(window.endTime());
    for (int i = records.firstEndingAfter(window.startTime()); i < last; ++i) {
        const Record &record = *records.at(i);
        if (record.data())
            result += squaredDeviations(*record.data(), record.sampleIndex(window.startTime()),
                                        record.sampleIndex(window.endTime()), mean);
    }
    return result;
}

bool isCovered(const RecordSequence &records, const Core::TimeWindow &window)
{
    Core::Time reach = window.startTime();
    Core::TimeSpan tolerance;
    const int last = records.firstStartingFrom(window.endTime());
    for (int i = records.firstEndingAfter(reach); i < last; ++i) {
        const Core::TimeWindow covered = records.at(i)->timeWindow();
        if (covered.isEmpty())
            continue;
        tolerance = Core::TimeSpan(records.tolerance() / records.at(i)->samplingFrequency());
        if (covered.startTime() - reach > tolerance)
            return false;
        reach = std::max(reach, covered.endTime());
    }
    return window.endTime() - reach <= tolerance;
}

} // namespace

Measurement measure(const RecordSequence &records, const Core::TimeWindow &window, double scale)
{
    Measurement result;
    if (window.isEmpty())
        return result;

    result.span = window.length();
    result.frequency = 1.0 / result.span.length();
    result.hasGap = !isCovered(records, window);

    const SampleSummary summary = records.summary(&window);
    if (summary.isEmpty())
        return result;

    result.count = summary.count;
    result.minimum = scale * summary.minimum;
    result.maximum = scale * summary.maximum;
    if (scale < 0)
        std::swap(result.minimum, result.maximum);
    result.peakToPeak = result.maximum - result.minimum;
    result.mean = scale * summary.mean();
    result.rms = std::abs(scale) * std::sqrt(squaredDeviations(records, window, summary.mean()) /
                                             static_cast<double>(summary.count));
    return result;
}

} // namespace Tellarix
