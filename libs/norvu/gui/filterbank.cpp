// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/filterbank_p.h>

#include <norvu/gui/filterlanes_p.h>

#include <tellarix/core/parallel.h>

#include <QThreadPool>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Norvu {
namespace Gui {

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

/** Has @p filter run over so many of @p n samples at a time as the group has room for, from the
 *  first one on, with the care that the state needs now and then. */
template <typename Filter>
void advance(FilterBank::Group &group, size_t n, Filter filter)
{
    for (size_t done = 0; done < n;) {
        const auto untilCheck = static_cast<size_t>(CheckInterval - group.seen % CheckInterval);
        const size_t length = std::min({n - done, untilCheck, FilterBank::TileLength});
        group.makeRoom(length);
        const bool isFinite = filter(done, length);
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
            advance(_groups[g], length, [&](size_t done, size_t count) {
                return filterTile(_groups[g], source + done, count,
                                  tile.data() + (g - first) * Width + done * stride, stride);
            });
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

/** Numbers of finite samples up to the end of each column, and one that is never reached. */
std::vector<size_t> FilterBank::columnEnds(const Input &input, size_t interval, size_t pending)
{
    std::vector<size_t> ends;
    auto odd = input.odd.begin();
    for (size_t end = interval - pending; end <= input.blockLength(); end += interval) {
        odd = std::lower_bound(odd, input.odd.end(), end);
        ends.push_back(end - static_cast<size_t>(odd - input.odd.begin()));
    }
    ends.push_back(std::numeric_limits<size_t>::max());
    return ends;
}

/** Filters with group @p number alone, whose history thus stays in the cache. */
template <typename T>
void FilterBank::runPeaks(size_t number, const Input &input, const std::vector<size_t> &ends,
                          const PeakColumns<T> &target)
{
    Group &group = _groups[number];
    const size_t band = number * Width;
    const size_t rows = std::min(Width, _bandCount - band);
    std::copy_n(target.pending + band, rows, group.peak.values);
    T peaks[(TileLength + 1) * Width];
    size_t column = 0;
    advance(group, input.samples.size(), [&](size_t first, size_t count) {
        const bool isFinite = findTilePeaks(group, input.samples.data() + first, count, peaks,
                                            ends.data() + column, first);
        for (const T *peak = peaks; ends[column] <= first + count; ++column, peak += Width)
            std::memcpy(target.data + column * target.rows + band, peak, rows * sizeof(T));
        return isFinite;
    });
    std::transform(group.peak.values, group.peak.values + rows, target.pending + band,
                   [](double peak) { return static_cast<T>(peak); });
}

template <typename T>
void FilterBank::applyPeaks(int n, const T *samples, const PeakColumns<T> &target)
{
    if (!_bandCount || n < 1)
        return;

    const Input input = highPass(n, samples);
    const std::vector<size_t> ends = columnEnds(input, target.interval, target.pendingSamples);
    const auto run = [&](int number) {
        runPeaks(static_cast<size_t>(number), input, ends, target);
    };
    Tellarix::Core::parallelFor(static_cast<int>(_groups.size()), run,
                                input.samples.size() * _bandCount < BigBlock ? 1 : 0);
}

template void FilterBank::applyPeaks(int, const float *, const PeakColumns<float> &);
template void FilterBank::applyPeaks(int, const double *, const PeakColumns<double> &);
template ValueRange FilterBank::apply(int, const float *, const MatrixColumns<float> &);
template ValueRange FilterBank::apply(int, const double *, const MatrixColumns<double> &);

} // namespace Gui
} // namespace Norvu
