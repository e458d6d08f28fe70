// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/typedarray.h>

#include <cmath>
#include <limits>
#include <random>
#include <utility>
#include <vector>

namespace RecordTesting {

using namespace Tellarix;

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr double Infinity = std::numeric_limits<double>::infinity();

inline Core::Time at(double seconds)
{
    return Core::Time(1704448800.0) + Core::TimeSpan(seconds);
}

inline Core::TimeWindow window(double start, double end)
{
    return {at(start), at(end)};
}

inline RecordCPtr makeRecord(Core::Time start, double samplingFrequency, ArrayPtr data)
{
    static const StreamCodesCPtr codes(new StreamCodes("GE", "APE", "", "BHZ"));
    return new Record(codes, start, samplingFrequency, std::move(data));
}

/** A record of samples 0, 1, 2, ... that begins @p start seconds after the time base. */
inline RecordCPtr ramp(double start, int samples, double samplingFrequency = 1.0)
{
    ArrayPtr data(new IntArray(samples));
    for (int i = 0; i < samples; ++i)
        static_cast<IntArray *>(data.get())->typedData()[i] = i;
    return makeRecord(at(start), samplingFrequency, data);
}

template <typename T>
ArrayPtr arrayOf(const std::vector<T> &samples)
{
    return new TypedArray<T>(static_cast<int>(samples.size()), samples.data());
}

/** Random samples, of which about one in @p rarity is not finite where the type allows it. */
template <typename T>
std::vector<T> randomSamples(std::mt19937 &random, int n, int rarity)
{
    std::vector<T> samples;
    std::uniform_int_distribution<int> value(-1000000, 1000000);
    std::uniform_int_distribution<int> oddity(0, std::max(1, rarity) * 3);
    for (int i = 0; i < n; ++i) {
        samples.push_back(static_cast<T>(value(random)));
        if constexpr (std::is_floating_point_v<T>) {
            const double odd[] = {NaN, Infinity, -Infinity};
            const int which = oddity(random);
            if (rarity > 0 && which < 3)
                samples.back() = static_cast<T>(odd[which]);
        }
    }
    return samples;
}

/** The plain form of NumericArray::summary(). */
inline SampleSummary plainSummary(const NumericArray &array, int first, int last)
{
    SampleSummary result;
    for (int i = std::max(0, first); i < std::min(array.size(), last); ++i) {
        const double v = array.value(i);
        if (std::isfinite(v))
            result.add({v, v, v, 1});
    }
    return result;
}

} // namespace RecordTesting
