// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/filterbank_p.h>

#include <tellarix/core/parallel.h>

#include <QThreadPool>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "norvu/gui/filterbank.cpp"
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

/** Band-passes and envelopes of @p n samples, a row each. */
HWY_INLINE void findEnvelopes(FilterBank::Group &group, size_t lane, const double *input, size_t n,
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
        store(hn::Sqrt(hn::MulAdd(x, x, hn::Mul(slope, slope))), rows[i]);
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

/** Moving averages of the envelopes in @p rows. */
template <bool IsFull, typename T>
HWY_INLINE void average(FilterBank::Group &group, size_t lane, size_t n,
                        const FilterBank::Lanes *rows, const FilterBank::Lanes *oldest, T *target,
                        size_t stride)
{
    const Tag tag;
    const Vector length = hn::Load(tag, group.length.values + lane);
    const Vector one = hn::Set(tag, 1.0);
    const Vector zero = hn::Zero(tag);
    Vector scale = hn::Div(one, length);
    Vector sum = hn::Load(tag, group.sum.values + lane);
    Vector low = hn::Load(tag, group.low.values + lane);
    Vector high = hn::Load(tag, group.high.values + lane);
    for (size_t i = 0; i < n; ++i) {
        if constexpr (!IsFull) {
            const int64_t count = group.seen + 1 + static_cast<int64_t>(i);
            scale = hn::Div(one, hn::Min(length, hn::Set(tag, static_cast<double>(count))));
        }
        const Vector newest = hn::Load(tag, rows[i].values + lane);
        sum = hn::Add(sum, hn::Sub(newest, hn::Load(tag, oldest[i].values + lane)));
        const Vector mean = hn::Max(hn::Mul(sum, scale), zero);
        low = hn::Min(low, mean);
        high = hn::Max(high, mean);
        storeAs(mean, target + i * stride + lane);
    }
    hn::Store(sum, tag, group.sum.values + lane);
    hn::Store(low, tag, group.low.values + lane);
    hn::Store(high, tag, group.high.values + lane);
}

template <typename T>
bool filter(FilterBank::Group &group, const double *input, size_t n, T *target, size_t stride)
{
    const Tag tag;
    FilterBank::Lanes oldest[FilterBank::TileLength];
    FilterBank::Lanes *rows = group.history.data() + group.next;
    for (size_t lane = 0; lane < FilterBank::Width; lane += hn::Lanes(tag))
        findEnvelopes(group, lane, input, n, rows);
    collectOldest(group, n, rows, oldest);
    const bool isFull = group.seen >= group.longest;
    bool isFinite = true;
    for (size_t lane = 0; lane < FilterBank::Width; lane += hn::Lanes(tag)) {
        if (isFull)
            average<true>(group, lane, n, rows, oldest, target, stride);
        else
            average<false>(group, lane, n, rows, oldest, target, stride);
        const Vector sum = hn::Load(tag, group.sum.values + lane);
        isFinite = isFinite && hn::AllTrue(tag, hn::IsFinite(sum));
    }
    return isFinite;
}

// The dispatcher wants plain functions.
bool filterFloat(FilterBank::Group &group, const double *input, size_t n, float *target,
                 size_t stride)
{
    return filter(group, input, n, target, stride);
}

bool filterDouble(FilterBank::Group &group, const double *input, size_t n, double *target,
                  size_t stride)
{
    return filter(group, input, n, target, stride);
}

} // namespace HWY_NAMESPACE
} // namespace Gui
} // namespace Norvu
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace Norvu {
namespace Gui {

HWY_EXPORT(filterFloat);
HWY_EXPORT(filterDouble);

namespace {

/** Samples between two looks at the state; counted along the signal. */
constexpr int64_t CheckInterval = 4096;
/** Sums are made afresh after that many lengths of the window, so that rounding can't grow. */
constexpr int64_t SumLifetime = 4;
constexpr double TinyState = 1E-250;
/** Samples times bands from which on threads are worth their start. */
constexpr size_t BigBlock = 1 << 19;
/** Groups that fill a line of the cache with values of either type. */
constexpr size_t GroupsOfPart = 2;

template <typename T>
bool filterGroup(FilterBank::Group &group, const double *input, size_t n, T *target, size_t stride)
{
    if constexpr (std::is_same_v<T, float>)
        return HWY_DYNAMIC_DISPATCH(filterFloat)(group, input, n, target, stride);
    else
        return HWY_DYNAMIC_DISPATCH(filterDouble)(group, input, n, target, stride);
}

/** As filterGroup(), with the care that the state needs now and then. */
template <typename T>
void advance(FilterBank::Group &group, const double *input, size_t n, T *target, size_t stride)
{
    for (size_t done = 0; done < n;) {
        const auto untilCheck = static_cast<size_t>(CheckInterval - group.seen % CheckInterval);
        const size_t length = std::min(n - done, untilCheck);
        group.makeRoom(length);
        const bool isFinite =
            filterGroup(group, input + done, length, target + done * stride, stride);
        group.next += length;
        group.seen += static_cast<int64_t>(length);
        done += length;
        if (!isFinite) {
            group.restart();
            group.isOverflown = true;
        }
        if (group.seen % CheckInterval == 0)
            group.fadeOut();
        const int64_t intervals = 1 + group.longest / CheckInterval;
        if (group.seen % (CheckInterval * intervals * SumLifetime) == 0)
            group.sumAfresh();
    }
}

} // namespace

void ValueRange::widen(double value)
{
    if (!std::isfinite(value))
        return;
    minimum = std::min(minimum, value);
    maximum = std::max(maximum, value);
}

void ValueRange::widen(const ValueRange &other)
{
    minimum = std::min(minimum, other.minimum);
    maximum = std::max(maximum, other.maximum);
}

void FilterBank::Group::set(size_t lane, const Band &band)
{
    gain.values[lane] = band.sections.empty() ? 0.0 : 1.0;
    for (size_t k = 0; k < Sections; ++k) {
        const bool isSilent = band.sections.empty();
        gain.values[lane] *= isSilent ? 0.0 : band.sections[k].b0;
        a1[k].values[lane] = isSilent ? 0.0 : band.sections[k].a1;
        a2[k].values[lane] = isSilent ? 0.0 : band.sections[k].a2;
    }
    slopeGain.values[lane] = band.slopeGain;
    lengths[lane] = band.averageLength;
    length.values[lane] = static_cast<double>(band.averageLength);
    longest = *std::max_element(lengths, lengths + Width);
}

void FilterBank::Group::restart()
{
    for (size_t k = 0; k < Sections; ++k)
        first[k] = second[k] = Lanes();
    last = sum = Lanes();
    history.clear();
    next = 0;
    seen = 0;
}

void FilterBank::Group::beginRange()
{
    isOverflown = false;
    const ValueRange range;
    std::fill_n(low.values, Width, range.minimum);
    std::fill_n(high.values, Width, range.maximum);
}

/** Room for @p n rows, at most a tile: the history grows to twice the longest window. */
void FilterBank::Group::makeRoom(size_t n)
{
    if (next + n <= history.size())
        return;
    const size_t kept = static_cast<size_t>(longest);
    const size_t most = kept + std::max<size_t>(kept, CheckInterval);
    if (history.size() < most) {
        history.resize(std::min(most, std::max(2 * history.size(), next + n)));
        return makeRoom(n);
    }
    std::move(history.begin() + static_cast<ptrdiff_t>(next - kept),
              history.begin() + static_cast<ptrdiff_t>(next), history.begin());
    next = kept;
}

/** Behind a long run of zeros the state fades into denormal numbers, which are very slow. */
void FilterBank::Group::fadeOut()
{
    for (size_t k = 0; k < Sections; ++k) {
        for (size_t lane = 0; lane < Width; ++lane) {
            double &one = first[k].values[lane];
            double &two = second[k].values[lane];
            if (std::max(std::abs(one), std::abs(two)) < TinyState)
                one = two = 0;
        }
    }
}

void FilterBank::Group::sumAfresh()
{
    sum = Lanes();
    for (size_t row = next - static_cast<size_t>(std::min(seen, longest)); row < next; ++row) {
        const auto back = static_cast<int64_t>(next - row);
        for (size_t lane = 0; lane < Width; ++lane)
            sum.values[lane] += back <= lengths[lane] ? history[row].values[lane] : 0.0;
    }
}

bool FilterBank::add(const Band &band)
{
    const bool isNext =
        !_bandCount || (band.highPassLength == _highPass.length() && _groups.front().seen == 0);
    const bool fits = isNext && band.highPassLength > 0 && band.averageLength > 0 &&
                      (band.sections.empty() || band.sections.size() == Sections) &&
                      std::all_of(band.sections.begin(), band.sections.end(),
                                  [](const auto &q) { return q.b1 == 0 && q.b2 == -q.b0; });
    if (!fits)
        return false;

    if (!_bandCount)
        _highPass.resize(band.highPassLength);
    const size_t lane = _bandCount % Width;
    if (lane == 0) {
        _groups.emplace_back();
        _groups.back().restart();
    }
    for (size_t i = lane; i < Width; ++i)
        _groups.back().set(i, band);
    ++_bandCount;
    return true;
}

void FilterBank::clear()
{
    _groups.clear();
    _bandCount = 0;
}

size_t FilterBank::memorySize() const
{
    size_t size = _groups.capacity() * sizeof(Group);
    for (const Group &group : _groups)
        size += group.history.capacity() * sizeof(Lanes);
    return size;
}

/** High-passed finite samples without the others, whose places are listed. */
struct FilterBank::Input
{
    std::vector<double> samples;
    std::vector<size_t> odd;

    size_t blockLength() const { return samples.size() + odd.size(); }
};

template <typename T>
FilterBank::Input FilterBank::highPass(int n, const T *samples)
{
    Input input;
    input.samples.reserve(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) {
        const double sample = static_cast<double>(samples[i]);
        if (std::isfinite(sample))
            input.samples.push_back(sample - _highPass.push(sample));
        else
            input.odd.push_back(static_cast<size_t>(i));
    }
    return input;
}

/** Filters with the groups from @p first up to @p last, tile by tile; gives the first value of the
 *  first band, not-a-number if the first sample is not finite. */
template <typename T>
double FilterBank::run(size_t first, size_t last, const Input &input,
                       const MatrixColumns<T> &target)
{
    const size_t n = input.blockLength();
    const size_t stride = (last - first) * Width;
    const size_t behind = std::min({last * Width, _bandCount, target.rows});
    const size_t rows = behind - std::min(behind, first * Width);
    std::vector<T> tile(TileLength * stride);
    double firstValue = std::numeric_limits<double>::quiet_NaN();
    auto odd = input.odd.begin();
    const double *source = input.samples.data();
    for (size_t i = 0; i < n;) {
        if (i == target.skip)
            std::for_each(&_groups[first], &_groups[first] + (last - first),
                          [](Group &group) { group.beginRange(); });
        const bool isStored = i >= target.skip;
        if (odd != input.odd.end() && *odd == i) {
            if (isStored)
                std::fill_n(target.of(i) + first * Width, rows,
                            std::numeric_limits<T>::quiet_NaN());
            ++odd;
            ++i;
            continue;
        }
        const size_t end = std::min(odd != input.odd.end() ? *odd : n, isStored ? n : target.skip);
        const size_t length = std::min(end - i, TileLength);
        for (size_t g = first; g < last; ++g)
            advance(_groups[g], source, length, tile.data() + (g - first) * Width, stride);
        if (i == 0)
            firstValue = static_cast<double>(tile.front());
        for (size_t k = 0; isStored && k < length; ++k)
            std::memcpy(target.of(i + k) + first * Width, tile.data() + k * stride,
                        rows * sizeof(T));
        source += length;
        i += length;
    }
    return firstValue;
}

/** Range of the stored values, by a look at each. */
template <typename T>
ValueRange FilterBank::rangeOf(size_t n, const MatrixColumns<T> &target) const
{
    ValueRange range;
    for (size_t i = target.skip; i < n; ++i) {
        for (size_t r = 0; r < std::min(_bandCount, target.rows); ++r)
            range.widen(static_cast<double>(target.of(i)[r]));
    }
    return range;
}

template <typename T>
ValueRange FilterBank::apply(int n, const T *samples, const MatrixColumns<T> &target)
{
    ValueRange range;
    if (!_bandCount || !target.rows || n < 1)
        return range;

    const Input input = highPass(n, samples);
    const size_t size = input.blockLength() * _bandCount;
    // One part a thread, since the more bands a part has the better it writes, but parts of whole
    // lines of the cache, which no two threads share.
    const size_t count = _groups.size();
    const auto threads = static_cast<size_t>(QThreadPool::globalInstance()->maxThreadCount());
    const size_t most = (count + GroupsOfPart - 1) / GroupsOfPart;
    const size_t parts = size < BigBlock ? 1 : std::clamp<size_t>(threads, 1, most);
    double firstValue = 0;
    Tellarix::Core::parallelFor(static_cast<int>(parts), [&](int number) {
        const auto part = static_cast<size_t>(number);
        const size_t end = std::min(count, most * (part + 1) / parts * GroupsOfPart);
        const double value = run(most * part / parts * GroupsOfPart, end, input, target);
        if (part == 0)
            firstValue = value;
    });
    range.widen(firstValue);

    ValueRange lanes;
    const bool isKnown = _bandCount <= target.rows && collectRange<T>(lanes);
    range.widen(isKnown ? lanes : rangeOf(input.blockLength(), target));
    return range;
}

/** Collects the range that the lanes have found; false if some value did not fit its type. */
template <typename T>
bool FilterBank::collectRange(ValueRange &range) const
{
    for (const Group &group : _groups) {
        for (size_t lane = 0; lane < Width; ++lane) {
            if (group.isOverflown || group.high.values[lane] > std::numeric_limits<T>::max())
                return false;
            range.widen(static_cast<double>(static_cast<T>(group.low.values[lane])));
            range.widen(static_cast<double>(static_cast<T>(group.high.values[lane])));
        }
    }
    return true;
}

template ValueRange FilterBank::apply(int, const float *, const MatrixColumns<float> &);
template ValueRange FilterBank::apply(int, const double *, const MatrixColumns<double> &);

} // namespace Gui
} // namespace Norvu

#endif
