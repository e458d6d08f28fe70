// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/math/extrema.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tellarix/core/math/extrema.cpp"
#include <hwy/cache_control.h>
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
size_t blocksOf(const T *samples, size_t n, size_t blockSize, size_t blocksInSum, T *minima,
                T *maxima, double *sums)
{
    size_t finite = n;
    const size_t groupSize = blockSize * blocksInSum;
    for (size_t group = 0; group < n; group += groupSize) {
        const size_t end = std::min(group + groupSize, n);
        for (size_t first = group; first < end; first += blockSize)
            extremaOf(samples + first, std::min(blockSize, end - first), *minima++, *maxima++);
        // By now the group lies in the cache.
        if constexpr (std::is_floating_point_v<T>)
            *sums++ = sumOf(samples + group, end - group, finite);
        else
            *sums++ = sumOf(samples + group, end - group);
    }
    return finite;
}

/** Extrema of a run of at least ExtremaBlock samples, and of the blocks from @p firstBlock up to
 *  @p lastBlock in it, at least one. */
template <typename T>
void blockRunOf(const T *samples, int first, int last, int firstBlock, int lastBlock,
                const T *blockMinima, const T *blockMaxima, T &minimum, T &maximum)
{
    const hn::ScalableTag<T> tag;
    const int width = static_cast<int>(hn::Lanes(tag));
    const auto blocks = static_cast<size_t>(lastBlock - firstBlock);
    if (blocks > static_cast<size_t>(width)) {
        T above, below;
        extremaOf(blockMinima + firstBlock, blocks, minimum, above);
        extremaOf(blockMaxima + firstBlock, blocks, below, maximum);
    } else {
        minimum = *std::min_element(blockMinima + firstBlock, blockMinima + lastBlock);
        maximum = *std::max_element(blockMaxima + firstBlock, blockMaxima + lastBlock);
    }

    const bool isWhole = first == firstBlock * ExtremaBlock && last <= lastBlock * ExtremaBlock;
    if (isWhole)
        return;

    // Always a whole block of vectors at each end, some of them more than once, so that there is no
    // branch that can't be foreseen. What they cover beyond the ends lies in the run as well.
    const int headLast = std::min(std::max(first, firstBlock * ExtremaBlock - width), last - width);
    const int tailFirst = std::min(last - width, lastBlock * ExtremaBlock);
    auto low = hn::Set(tag, minimum);
    auto high = hn::Set(tag, maximum);
    auto otherLow = low;
    auto otherHigh = high;
    for (int i = 0; i < ExtremaBlock; i += width) {
        const auto head = hn::LoadU(tag, samples + std::min(first + i, headLast));
        const auto tail = hn::LoadU(tag, samples + std::max(last - width - i, tailFirst));
        low = hn::Min(low, finiteOr(tag, head, low));
        high = hn::Max(high, finiteOr(tag, head, high));
        otherLow = hn::Min(otherLow, finiteOr(tag, tail, otherLow));
        otherHigh = hn::Max(otherHigh, finiteOr(tag, tail, otherHigh));
    }
    minimum = hn::GetLane(hn::MinOfLanes(tag, hn::Min(low, otherLow)));
    maximum = hn::GetLane(hn::MaxOfLanes(tag, hn::Max(high, otherHigh)));
}

/** Fetches the block of @p index into the cache. */
template <typename T>
void prefetchBlock(const T *samples, int index)
{
    constexpr int Line = 64;
    const T *block = samples + index / ExtremaBlock * ExtremaBlock;
    for (int i = 0; i < ExtremaBlock; i += Line / int(sizeof(T)))
        hwy::Prefetch(block + i);
}

template <typename T>
void runsOf(const T *samples, size_t n, const int *edges, size_t runs, T *minima, T *maxima,
            const T *blockMinima, const T *blockMaxima)
{
    constexpr size_t Ahead = 4;
    const int size = static_cast<int>(n);
    for (size_t i = 0; i < runs; ++i) {
        const int first = edges[i];
        const int last = edges[i + 1];
        const int firstBlock = (first + ExtremaBlock - 1) / ExtremaBlock;
        // The last block of all may be short.
        const int lastBlock = (last == size ? last + ExtremaBlock - 1 : last) / ExtremaBlock;
        if (!blockMinima || firstBlock >= lastBlock || last - first < ExtremaBlock) {
            extremaOf(samples + first, static_cast<size_t>(last - first), minima[i], maxima[i]);
            continue;
        }
        if (i + Ahead < runs && edges[i + Ahead] % ExtremaBlock)
            prefetchBlock(samples, edges[i + Ahead]);
        blockRunOf(samples, first, last, firstBlock, lastBlock, blockMinima, blockMaxima, minima[i],
                   maxima[i]);
    }
}

// The dispatcher wants plain functions.
#define TELLARIX_EXTREMA_OF(Name, T)                                                               \
    void extrema##Name(const T *samples, size_t n, T &minimum, T &maximum)                         \
    {                                                                                              \
        extremaOf(samples, n, minimum, maximum);                                                   \
    }                                                                                              \
    size_t blocks##Name(const T *samples, size_t n, size_t blockSize, size_t blocksInSum,          \
                        T *minima, T *maxima, double *sums)                                        \
    {                                                                                              \
        return blocksOf(samples, n, blockSize, blocksInSum, minima, maxima, sums);                 \
    }                                                                                              \
    void runs##Name(const T *samples, size_t n, const int *edges, size_t runs, T *minima,          \
                    T *maxima, const T *blockMinima, const T *blockMaxima)                         \
    {                                                                                              \
        runsOf(samples, n, edges, runs, minima, maxima, blockMinima, blockMaxima);                 \
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
            blocks(samples + first, size, size, 1, &chunk.minimum, &chunk.maximum, &chunk.sum);
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
bool summarizeBlocks(const int *samples, size_t n, size_t blockSize, size_t blocksInSum,
                     int *minima, int *maxima, double *sums)
{
    return HWY_DYNAMIC_DISPATCH(blocksInt)(samples, n, blockSize, blocksInSum, minima, maxima,
                                           sums) == n;
}

template <>
bool summarizeBlocks(const float *samples, size_t n, size_t blockSize, size_t blocksInSum,
                     float *minima, float *maxima, double *sums)
{
    return HWY_DYNAMIC_DISPATCH(blocksFloat)(samples, n, blockSize, blocksInSum, minima, maxima,
                                             sums) == n;
}

template <>
bool summarizeBlocks(const double *samples, size_t n, size_t blockSize, size_t blocksInSum,
                     double *minima, double *maxima, double *sums)
{
    return HWY_DYNAMIC_DISPATCH(blocksDouble)(samples, n, blockSize, blocksInSum, minima, maxima,
                                              sums) == n;
}

template <>
void findRunExtrema(const int *samples, size_t n, const int *edges, size_t runs, int *minima,
                    int *maxima, const int *blockMinima, const int *blockMaxima)
{
    HWY_DYNAMIC_DISPATCH(runsInt)
    (samples, n, edges, runs, minima, maxima, blockMinima, blockMaxima);
}

template <>
void findRunExtrema(const float *samples, size_t n, const int *edges, size_t runs, float *minima,
                    float *maxima, const float *blockMinima, const float *blockMaxima)
{
    HWY_DYNAMIC_DISPATCH(runsFloat)
    (samples, n, edges, runs, minima, maxima, blockMinima, blockMaxima);
}

template <>
void findRunExtrema(const double *samples, size_t n, const int *edges, size_t runs, double *minima,
                    double *maxima, const double *blockMinima, const double *blockMaxima)
{
    HWY_DYNAMIC_DISPATCH(runsDouble)
    (samples, n, edges, runs, minima, maxima, blockMinima, blockMaxima);
}

template Extrema<int> summarize(const int *, size_t);
template Extrema<float> summarize(const float *, size_t);
template Extrema<double> summarize(const double *, size_t);

} // namespace Math
} // namespace Tellarix

#endif
