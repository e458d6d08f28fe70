// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/filterlanes_p.h>

#include <algorithm>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "norvu/gui/filterlanes.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

// Compiled once for each instruction set; the best one is chosen as the program runs.
HWY_BEFORE_NAMESPACE();
namespace Norvu {
namespace Gui {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Tag = hn::CappedTag<double, FilterBank::Width>;
using Vector = hn::Vec<Tag>;

/** A section with the numerator 1 - 1/z^2 in transposed direct form II. */
HWY_INLINE Vector section(Vector x, Vector a1, Vector a2, Vector &first, Vector &second)
{
    const Vector y = hn::Add(x, first);
    first = hn::NegMulAdd(a1, y, second);
    second = hn::NegMulSub(a2, y, x);
    return y;
}

/** Band-passes and squares of the envelopes of @p n samples, a row each. */
HWY_INLINE void findSquares(FilterBank::Group &group, size_t lane, const double *input, size_t n,
                            FilterBank::Lanes *rows)
{
    const Tag tag;
    const auto load = [&](const FilterBank::Lanes &lanes) {
        return hn::Load(tag, lanes.values + lane);
    };
    const auto store = [&](Vector v, FilterBank::Lanes &lanes) {
        hn::Store(v, tag, lanes.values + lane);
    };
    const Vector gain = load(group.gain);
    const Vector slopeGain = load(group.slopeGain);
    const Vector a10 = load(group.a1[0]), a11 = load(group.a1[1]);
    const Vector a12 = load(group.a1[2]), a13 = load(group.a1[3]);
    const Vector a20 = load(group.a2[0]), a21 = load(group.a2[1]);
    const Vector a22 = load(group.a2[2]), a23 = load(group.a2[3]);
    Vector first0 = load(group.first[0]), first1 = load(group.first[1]);
    Vector first2 = load(group.first[2]), first3 = load(group.first[3]);
    Vector second0 = load(group.second[0]), second1 = load(group.second[1]);
    Vector second2 = load(group.second[2]), second3 = load(group.second[3]);
    Vector last = load(group.last);
    for (size_t i = 0; i < n; ++i) {
        Vector x = hn::Mul(gain, hn::Set(tag, input[i]));
        x = section(x, a10, a20, first0, second0);
        x = section(x, a11, a21, first1, second1);
        x = section(x, a12, a22, first2, second2);
        x = section(x, a13, a23, first3, second3);
        const Vector slope = hn::Mul(slopeGain, hn::Sub(x, last));
        last = x;
        store(hn::MulAdd(x, x, hn::Mul(slope, slope)), rows[i]);
    }
    store(first0, group.first[0]);
    store(first1, group.first[1]);
    store(first2, group.first[2]);
    store(first3, group.first[3]);
    store(second0, group.second[0]);
    store(second1, group.second[1]);
    store(second2, group.second[2]);
    store(second3, group.second[3]);
    store(last, group.last);
}

template <typename T>
HWY_INLINE void storeAs(Vector value, T *target)
{
    const Tag tag;
    if constexpr (std::is_same_v<T, double>)
        hn::StoreU(value, tag, target);
    else
        hn::StoreU(hn::DemoteTo(hn::Rebind<T, Tag>(), value), hn::Rebind<T, Tag>(), target);
}

HWY_INLINE void findEnvelopes(size_t n, FilterBank::Lanes *rows)
{
    const Tag tag;
    for (size_t i = 0; i < n; ++i) {
        for (size_t lane = 0; lane < FilterBank::Width; lane += hn::Lanes(tag))
            hn::Store(hn::Sqrt(hn::Load(tag, rows[i].values + lane)), tag, rows[i].values + lane);
    }
}

/** Envelopes that leave the windows of the bands; zero as long as a window is not full. */
HWY_INLINE void collectOldest(const FilterBank::Group &group, size_t n,
                              const FilterBank::Lanes *rows, FilterBank::Lanes *oldest)
{
    for (size_t lane = 0; lane < FilterBank::Width; ++lane) {
        const int64_t length = group.lengths[lane];
        const size_t missing =
            static_cast<size_t>(std::clamp<int64_t>(length - group.seen, 0, int64_t(n)));
        for (size_t i = 0; i < missing; ++i)
            oldest[i].values[lane] = 0;
        for (size_t i = missing; i < n; ++i)
            oldest[i].values[lane] = rows[static_cast<int64_t>(i) - length].values[lane];
    }
}

/**
 * The moving averages of the envelopes in @p rows, one row after the other. Once all windows are
 * full the rows hold squares, of which the root is taken here: it takes its time while the rest
 * goes on, which the sections before, each of which waits for another, don't let it do.
 */
template <bool IsFull>
class MovingAverage
{
public:
    HWY_INLINE MovingAverage(FilterBank::Group &group, size_t lane, FilterBank::Lanes *rows,
                             const FilterBank::Lanes *oldest)
        : _group(group), _lane(lane), _rows(rows), _oldest(oldest)
    {
        const Tag tag;
        _length = hn::Load(tag, group.length.values + lane);
        _scale = hn::Div(hn::Set(tag, 1.0), _length);
        _sum = hn::Load(tag, group.sum.values + lane);
        for (size_t k = 0; k < hn::Lanes(tag); ++k)
            _leaving[k] = rows - group.lengths[lane + k];
    }

    HWY_INLINE Vector at(size_t i)
    {
        const Tag tag;
        Vector newest = hn::Load(tag, _rows[i].values + _lane);
        Vector leaving;
        if constexpr (IsFull) {
            newest = hn::Sqrt(newest);
            hn::Store(newest, tag, _rows[i].values + _lane);
            leaving = leavingAt(i);
        } else {
            leaving = hn::Load(tag, _oldest[i].values + _lane);
            const int64_t count = _group.seen + 1 + static_cast<int64_t>(i);
            _scale = hn::Div(hn::Set(tag, 1.0),
                             hn::Min(_length, hn::Set(tag, static_cast<double>(count))));
        }
        _sum = hn::Add(_sum, hn::Sub(newest, leaving));
        return hn::Max(hn::Mul(_sum, _scale), hn::Zero(tag));
    }

    /** Stores the sum; false if it has overflown. */
    HWY_INLINE bool finish()
    {
        const Tag tag;
        hn::Store(_sum, tag, _group.sum.values + _lane);
        return hn::AllTrue(tag, hn::IsFinite(_sum));
    }

private:
    /** Each lane from the row that its window leaves: whole rows are read, since a blend with what
     *  lies in memory takes one instruction. */
    HWY_INLINE Vector leavingAt(size_t i) const
    {
        const Tag tag;
        Vector result = hn::Load(tag, _leaving[0][i].values + _lane);
        for (size_t k = 1; k < hn::MaxLanes(tag); ++k) {
            const auto isLane = hn::Eq(hn::Iota(tag, 0), hn::Set(tag, static_cast<double>(k)));
            result = hn::IfThenElse(isLane, hn::Load(tag, _leaving[k][i].values + _lane), result);
        }
        return result;
    }

    FilterBank::Group &_group;
    const size_t _lane;
    FilterBank::Lanes *const _rows;
    const FilterBank::Lanes *const _oldest;
    const FilterBank::Lanes *_leaving[FilterBank::Width];
    Vector _length;
    Vector _scale;
    Vector _sum;
};

template <bool IsFull, typename T>
HWY_INLINE bool average(FilterBank::Group &group, size_t lane, size_t n, FilterBank::Lanes *rows,
                        const FilterBank::Lanes *oldest, T *target, size_t stride)
{
    const Tag tag;
    MovingAverage<IsFull> averages(group, lane, rows, oldest);
    Vector low = hn::Load(tag, group.low.values + lane);
    Vector high = hn::Load(tag, group.high.values + lane);
    for (size_t i = 0; i < n; ++i) {
        const Vector mean = averages.at(i);
        low = hn::Min(low, mean);
        high = hn::Max(high, mean);
        storeAs(mean, target + i * stride + lane);
    }
    hn::Store(low, tag, group.low.values + lane);
    hn::Store(high, tag, group.high.values + lane);
    return averages.finish();
}

template <bool IsFull, typename T>
HWY_INLINE bool peaksOf(FilterBank::Group &group, size_t lane, size_t n, FilterBank::Lanes *rows,
                        const FilterBank::Lanes *oldest, T *peaks, const size_t *ends, size_t first)
{
    const Tag tag;
    MovingAverage<IsFull> averages(group, lane, rows, oldest);
    Vector peak = hn::Load(tag, group.peak.values + lane);
    for (size_t i = 0;; ++ends, peaks += FilterBank::Width) {
        const size_t end = std::min(*ends - first, n);
        for (; i < end; ++i)
            peak = hn::Max(peak, averages.at(i));
        if (*ends - first > n)
            break;
        storeAs(peak, peaks + lane);
        peak = hn::Set(tag, FilterBank::NoPeak);
    }
    hn::Store(peak, tag, group.peak.values + lane);
    return averages.finish();
}

/** Runs the band-passes and the envelopes, and hands these over to @p operation, vector by vector,
 *  with whether all windows are full. */
template <typename Operation>
HWY_INLINE bool filter(FilterBank::Group &group, const double *input, size_t n, Operation operation)
{
    const Tag tag;
    FilterBank::Lanes oldest[FilterBank::TileLength];
    FilterBank::Lanes *rows = group.history.data() + group.next;
    for (size_t lane = 0; lane < FilterBank::Width; lane += hn::Lanes(tag))
        findSquares(group, lane, input, n, rows);
    const bool isFull = group.seen >= group.longest;
    if (!isFull) {
        findEnvelopes(n, rows);
        collectOldest(group, n, rows, oldest);
    }
    bool isFinite = true;
    for (size_t lane = 0; lane < FilterBank::Width; lane += hn::Lanes(tag)) {
        const bool isLaneFinite = isFull ? operation(std::true_type(), lane, rows, oldest)
                                         : operation(std::false_type(), lane, rows, oldest);
        isFinite = isFinite && isLaneFinite;
    }
    return isFinite;
}

template <typename T>
HWY_INLINE bool filterWhole(FilterBank::Group &group, const double *input, size_t n, T *target,
                            size_t stride)
{
    return filter(group, input, n, [&](auto isFull, size_t lane, auto *rows, const auto *oldest) {
        return average<decltype(isFull)::value>(group, lane, n, rows, oldest, target, stride);
    });
}

template <typename T>
HWY_INLINE bool filterPeaks(FilterBank::Group &group, const double *input, size_t n, T *peaks,
                            const size_t *ends, size_t first)
{
    return filter(group, input, n, [&](auto isFull, size_t lane, auto *rows, const auto *oldest) {
        return peaksOf<decltype(isFull)::value>(group, lane, n, rows, oldest, peaks, ends, first);
    });
}

// The dispatcher wants plain functions.
#define NORVU_FILTER_LANES(Name, T)                                                                \
    bool filter##Name(FilterBank::Group &group, const double *input, size_t n, T *target,          \
                      size_t stride)                                                               \
    {                                                                                              \
        return filterWhole(group, input, n, target, stride);                                       \
    }                                                                                              \
    bool peaks##Name(FilterBank::Group &group, const double *input, size_t n, T *peaks,            \
                     const size_t *ends, size_t first)                                             \
    {                                                                                              \
        return filterPeaks(group, input, n, peaks, ends, first);                                   \
    }

NORVU_FILTER_LANES(Float, float)
NORVU_FILTER_LANES(Double, double)

#undef NORVU_FILTER_LANES

} // namespace HWY_NAMESPACE
} // namespace Gui
} // namespace Norvu
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace Norvu {
namespace Gui {

HWY_EXPORT(filterFloat);
HWY_EXPORT(filterDouble);
HWY_EXPORT(peaksFloat);
HWY_EXPORT(peaksDouble);

template <typename T>
bool filterTile(FilterBank::Group &group, const double *input, size_t n, T *target, size_t stride)
{
    if constexpr (std::is_same_v<T, float>)
        return HWY_DYNAMIC_DISPATCH(filterFloat)(group, input, n, target, stride);
    else
        return HWY_DYNAMIC_DISPATCH(filterDouble)(group, input, n, target, stride);
}

template <typename T>
bool findTilePeaks(FilterBank::Group &group, const double *input, size_t n, T *peaks,
                   const size_t *ends, size_t first)
{
    if constexpr (std::is_same_v<T, float>)
        return HWY_DYNAMIC_DISPATCH(peaksFloat)(group, input, n, peaks, ends, first);
    else
        return HWY_DYNAMIC_DISPATCH(peaksDouble)(group, input, n, peaks, ends, first);
}

template bool filterTile(FilterBank::Group &, const double *, size_t, float *, size_t);
template bool filterTile(FilterBank::Group &, const double *, size_t, double *, size_t);
template bool findTilePeaks(FilterBank::Group &, const double *, size_t, float *, const size_t *,
                            size_t);
template bool findTilePeaks(FilterBank::Group &, const double *, size_t, double *, const size_t *,
                            size_t);

} // namespace Gui
} // namespace Norvu

#endif
