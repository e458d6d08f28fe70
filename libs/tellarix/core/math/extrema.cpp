#include <tellarix/core/math/extrema.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tellarix/core/math/extrema.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

// Compiled once for each instruction set; the best one is chosen as the program runs.
HWY_BEFORE_NAMESPACE();
namespace Tellarix {
namespace Math {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

template <typename T>
void widen(T &minimum, T &maximum, T value)
{
    if (std::is_floating_point_v<T> && !std::isfinite(value))
        return;
    minimum = std::min(minimum, value);
    maximum = std::max(maximum, value);
}

/** The samples, with those that are not finite replaced by the extreme found so far. */
template <typename Tag, typename Vector>
Vector finiteOr(Tag, Vector samples, Vector extreme)
{
    if constexpr (std::is_floating_point_v<hn::TFromD<Tag>>)
        return hn::IfThenElse(hn::IsFinite(samples), samples, extreme);
    else
        return samples;
}

template <typename T>
void extremaOf(const T *samples, size_t n, T &minimum, T &maximum)
{
    const hn::ScalableTag<T> tag;
    const size_t width = hn::Lanes(tag);
    minimum = Extrema<T>().minimum;
    maximum = Extrema<T>().maximum;
    if (n < width) {
        for (size_t i = 0; i < n; ++i)
            widen(minimum, maximum, samples[i]);
        return;
    }

    auto low = hn::Set(tag, minimum);
    auto high = hn::Set(tag, maximum);
    auto otherLow = low;
    auto otherHigh = high;
    size_t i = 0;
    for (; i + 2 * width <= n; i += 2 * width) {
        const auto value = hn::LoadU(tag, samples + i);
        const auto other = hn::LoadU(tag, samples + i + width);
        low = hn::Min(low, finiteOr(tag, value, low));
        high = hn::Max(high, finiteOr(tag, value, high));
        otherLow = hn::Min(otherLow, finiteOr(tag, other, otherLow));
        otherHigh = hn::Max(otherHigh, finiteOr(tag, other, otherHigh));
    }
    // Up to two vectors are left; the last may cover samples again, which extrema don't mind.
    for (const size_t at : {std::min(i, n - width), n - width}) {
        const auto value = hn::LoadU(tag, samples + at);
        low = hn::Min(low, finiteOr(tag, value, low));
        high = hn::Max(high, finiteOr(tag, value, high));
    }
    minimum = hn::GetLane(hn::MinOfLanes(tag, hn::Min(low, otherLow)));
    maximum = hn::GetLane(hn::MaxOfLanes(tag, hn::Max(high, otherHigh)));
}

/** Adds samples in two halves of 16 bits each, whose sums fit for up to 32768 samples. */
inline double sumOf(const int *samples, size_t n)
{
    const hn::ScalableTag<int32_t> tag;
    const hn::RebindToUnsigned<decltype(tag)> wholeTag;
    const size_t width = hn::Lanes(tag);
    const auto mask = hn::Set(wholeTag, 0xFFFFu);
    auto upper = hn::Zero(tag);
    auto lower = hn::Zero(wholeTag);
    size_t i = 0;
    for (; i + width <= n; i += width) {
        const auto value = hn::LoadU(tag, samples + i);
        upper = hn::Add(upper, hn::ShiftRight<16>(value));
        lower = hn::Add(lower, hn::And(hn::BitCast(wholeTag, value), mask));
    }
    double sum = 65536.0 * hn::GetLane(hn::SumOfLanes(tag, upper)) +
                 hn::GetLane(hn::SumOfLanes(wholeTag, lower));
    for (; i < n; ++i)
        sum += samples[i];
    return sum;
}

/** Sum of the finite samples in double; takes those that are not finite off @p finite. */
template <typename T>
double sumOf(const T *samples, size_t n, size_t &finite)
{
    const hn::ScalableTag<double> tag;
    const hn::Rebind<T, decltype(tag)> sampleTag;
    const size_t width = hn::Lanes(tag);
    auto total = hn::Zero(tag);
    size_t i = 0;
    for (; i + width <= n; i += width) {
        auto value = hn::Zero(tag);
        if constexpr (std::is_same_v<T, double>)
            value = hn::LoadU(tag, samples + i);
        else
            value = hn::PromoteTo(tag, hn::LoadU(sampleTag, samples + i));
        const auto usable = hn::IsFinite(value);
        if (HWY_UNLIKELY(!hn::AllTrue(tag, usable)))
            finite -= width - hn::CountTrue(tag, usable);
        total = hn::Add(total, hn::IfThenElseZero(usable, value));
    }
    double sum = hn::GetLane(hn::SumOfLanes(tag, total));
    for (; i < n; ++i) {
        if (std::isfinite(samples[i]))
            sum += static_cast<double>(samples[i]);
        else
            --finite;
    }
    return sum;
}

template <typename T>
size_t blocksOf(const T *samples, size_t n, size_t blockSize, T *minima, T *maxima, double *sums)
{
    size_t finite = n;
    for (size_t first = 0, block = 0; first < n; first += blockSize, ++block) {
        const size_t size = std::min(blockSize, n - first);
        extremaOf(samples + first, size, minima[block], maxima[block]);
        if constexpr (std::is_floating_point_v<T>)
            sums[block] = sumOf(samples + first, size, finite);
        else
            sums[block] = sumOf(samples + first, size);
    }
    return finite;
}

template <typename T>
void runsOf(const T *samples, const int *edges, size_t runs, T *minima, T *maxima)
{
    for (size_t i = 0; i < runs; ++i) {
        extremaOf(samples + edges[i], static_cast<size_t>(edges[i + 1] - edges[i]), minima[i],
                  maxima[i]);
    }
}

// The dispatcher wants plain functions.
#define TELLARIX_EXTREMA_OF(Name, T)                                                               \
    void extrema##Name(const T *samples, size_t n, T &minimum, T &maximum)                         \
    {                                                                                              \
        extremaOf(samples, n, minimum, maximum);                                                   \
    }                                                                                              \
    size_t blocks##Name(const T *samples, size_t n, size_t blockSize, T *minima, T *maxima,        \
                        double *sums)                                                              \
    {                                                                                              \
        return blocksOf(samples, n, blockSize, minima, maxima, sums);                              \
    }                                                                                              \
    void runs##Name(const T *samples, const int *edges, size_t runs, T *minima, T *maxima)         \
    {                                                                                              \
        runsOf(samples, edges, runs, minima, maxima);                                              \
    }

TELLARIX_EXTREMA_OF(Int, int)
TELLARIX_EXTREMA_OF(Float, float)
TELLARIX_EXTREMA_OF(Double, double)

#undef TELLARIX_EXTREMA_OF

} // namespace HWY_NAMESPACE
} // namespace Math
} // namespace Tellarix
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace Tellarix {
namespace Math {

HWY_EXPORT(extremaInt);
HWY_EXPORT(extremaFloat);
HWY_EXPORT(extremaDouble);
HWY_EXPORT(blocksInt);
HWY_EXPORT(blocksFloat);
HWY_EXPORT(blocksDouble);
HWY_EXPORT(runsInt);
HWY_EXPORT(runsFloat);
HWY_EXPORT(runsDouble);

template <typename T>
Extrema<T> summarize(const T *samples, size_t n)
{
    constexpr size_t ChunkSize = 32768;
    Extrema<T> result;
    for (size_t first = 0; first < n; first += ChunkSize) {
        Extrema<T> chunk;
        const size_t size = std::min(ChunkSize, n - first);
        const auto blocks = [] {
            if constexpr (std::is_same_v<T, int>)
                return HWY_DYNAMIC_DISPATCH(blocksInt);
            else if constexpr (std::is_same_v<T, float>)
                return HWY_DYNAMIC_DISPATCH(blocksFloat);
            else
                return HWY_DYNAMIC_DISPATCH(blocksDouble);
        }();
        result.count +=
            blocks(samples + first, size, size, &chunk.minimum, &chunk.maximum, &chunk.sum);
        result.minimum = std::min(result.minimum, chunk.minimum);
        result.maximum = std::max(result.maximum, chunk.maximum);
        result.sum += chunk.sum;
    }
    return result;
}

template <>
bool findExtrema(const int *samples, size_t n, int &minimum, int &maximum)
{
    HWY_DYNAMIC_DISPATCH(extremaInt)(samples, n, minimum, maximum);
    return minimum <= maximum;
}

template <>
bool findExtrema(const float *samples, size_t n, float &minimum, float &maximum)
{
    HWY_DYNAMIC_DISPATCH(extremaFloat)(samples, n, minimum, maximum);
    return minimum <= maximum;
}

template <>
bool findExtrema(const double *samples, size_t n, double &minimum, double &maximum)
{
    HWY_DYNAMIC_DISPATCH(extremaDouble)(samples, n, minimum, maximum);
    return minimum <= maximum;
}

template <>
bool summarizeBlocks(const int *samples, size_t n, size_t blockSize, int *minima, int *maxima,
                     double *sums)
{
    return HWY_DYNAMIC_DISPATCH(blocksInt)(samples, n, blockSize, minima, maxima, sums) == n;
}

template <>
bool summarizeBlocks(const float *samples, size_t n, size_t blockSize, float *minima, float *maxima,
                     double *sums)
{
    return HWY_DYNAMIC_DISPATCH(blocksFloat)(samples, n, blockSize, minima, maxima, sums) == n;
}

template <>
bool summarizeBlocks(const double *samples, size_t n, size_t blockSize, double *minima,
                     double *maxima, double *sums)
{
    return HWY_DYNAMIC_DISPATCH(blocksDouble)(samples, n, blockSize, minima, maxima, sums) == n;
}

template <>
void findRunExtrema(const int *samples, const int *edges, size_t runs, int *minima, int *maxima)
{
    HWY_DYNAMIC_DISPATCH(runsInt)(samples, edges, runs, minima, maxima);
}

template <>
void findRunExtrema(const float *samples, const int *edges, size_t runs, float *minima,
                    float *maxima)
{
    HWY_DYNAMIC_DISPATCH(runsFloat)(samples, edges, runs, minima, maxima);
}

template <>
void findRunExtrema(const double *samples, const int *edges, size_t runs, double *minima,
                    double *maxima)
{
    HWY_DYNAMIC_DISPATCH(runsDouble)(samples, edges, runs, minima, maxima);
}

template Extrema<int> summarize(const int *, size_t);
template Extrema<float> summarize(const float *, size_t);
template Extrema<double> summarize(const double *, size_t);

} // namespace Math
} // namespace Tellarix

#endif
