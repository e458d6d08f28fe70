// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/record.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Tellarix {
namespace {

float rounded(double value)
{
    constexpr double Limit = std::numeric_limits<float>::max();
    return static_cast<float>(std::clamp(value, -Limit, Limit));
}

bool isUsableRate(double samplingFrequency)
{
    return samplingFrequency > 0 && std::isfinite(samplingFrequency);
}

/** Start plus @p samples / rate. The span is worked out apart in extended precision, since seconds
 *  since 1970 in a double would lose part of a microsecond. */
Core::Time timeOfSample(Core::Time start, int samples, double samplingFrequency)
{
    // Most rates are whole numbers, for which whole numbers do, at a fraction of the time.
    constexpr double MostWhole = 1E6;
    const auto rate = static_cast<int64_t>(std::min(samplingFrequency, MostWhole));
    const long double span =
        static_cast<double>(rate) == samplingFrequency
            ? static_cast<long double>((int64_t(samples) * 2000000 + rate) / (2 * rate))
            : roundl(samples * 1E6L / samplingFrequency);
    const int64_t room = start.usecs() > 0 ? std::numeric_limits<int64_t>::max() - start.usecs()
                                           : std::numeric_limits<int64_t>::max();
    if (span > static_cast<long double>(room))
        return {};
    return Core::Time::FromUSecs(start.usecs() + static_cast<int64_t>(span));
}

} // namespace

RecordError::~RecordError() = default;

Record::Record(StreamCodesCPtr codes, Core::Time startTime, double samplingFrequency, ArrayPtr data,
               int timingQuality)
    : _timingQuality(timingQuality), _codes(std::move(codes)), _startTime(startTime),
      _samplingFrequency(samplingFrequency), _data(std::move(data))
{
    Q_ASSERT(_codes);
    if (sampleCount() == 0)
        _endTime = _startTime;
    else if (_startTime.valid() && isUsableRate(_samplingFrequency))
        _endTime = timeOfSample(_startTime, sampleCount(), _samplingFrequency);

    if (_data) {
        _data->buildPyramid();
        _summary = _data->summary();
    }
    if (!_summary.isEmpty()) {
        _firstValue = rounded(_data->value(0));
        _lastValue = rounded(_data->value(sampleCount() - 1));
    }
}

Record::~Record() = default;

Core::Time Record::endTime() const
{
    if (!hasEndTime())
        throw RecordError(streamID() + ": the record has no end time");
    return _endTime;
}

Core::TimeWindow Record::timeWindow() const
{
    return {_startTime, hasEndTime() ? _endTime : _startTime};
}

Core::Time Record::sampleTime(int index) const
{
    if (index <= 0 || !hasEndTime() || sampleCount() == 0)
        return _startTime;
    const Core::Time time = timeOfSample(_startTime, index, _samplingFrequency);
    return time.valid() ? time : _endTime;
}

int Record::sampleIndex(Core::Time time) const
{
    const int n = sampleCount();
    if (time <= _startTime || n == 0)
        return 0;
    if (!hasEndTime() || time > _endTime)
        return n;

    const double usecs = static_cast<double>((time - _startTime).usecs());
    const double estimate = std::ceil(usecs * _samplingFrequency * 1E-6);
    int index = estimate >= n ? n : static_cast<int>(estimate);
    while (index > 0 && sampleTime(index - 1) >= time)
        --index;
    while (index < n && sampleTime(index) < time)
        ++index;
    return index;
}

Core::SmartPointer<Record> Record::withData(ArrayPtr data) const
{
    return new Record(_codes, _startTime, _samplingFrequency, std::move(data), _timingQuality);
}

} // namespace Tellarix
