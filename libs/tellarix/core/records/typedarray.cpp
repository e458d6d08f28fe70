// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/typedarray.h>

#include <tellarix/core/math/extrema.h>

#include <hwy/cache_control.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <numeric>
#include <type_traits>

namespace Tellarix {
namespace {

constexpr int BlockSize = NumericArray::BlockSize;
constexpr int BlockRatio = NumericArray::BlockRatio;
constexpr int Levels = NumericArray::Levels;

template <typename T>
constexpr bool HasSummary = !std::is_same_v<T, char>;

/** Where the entries of each level begin; the last number is the count of all entries. There is no
 *  level above one of a single entry. */
struct LevelOffsets
{
    explicit LevelOffsets(int samples)
    {
        int entries = samples / BlockSize + (samples % BlockSize != 0);
        for (int level = 0; level < Levels; ++level) {
            begin[level + 1] = begin[level] + entries;
            entries = entries > 1 ? (entries + BlockRatio - 1) / BlockRatio : 0;
        }
    }

    int entries(int level) const { return begin[level + 1] - begin[level]; }
    int total() const { return begin[Levels]; }
    /** Entries of the lowest level have no sum. */
    int sums() const { return total() - entries(0); }

    int begin[Levels + 1] = {0, 0, 0, 0};
};

/** Indices from first up to, but not including, last. */
struct Run
{
    int first;
    int last;

    bool isEmpty() const { return first >= last; }
    /** The parents that hold only children of this run, of @p count children in all. A last parent
     *  that is short of children counts as full. */
    Run parents(int count, int ratio) const
    {
        return {first / ratio + (first % ratio != 0),
                last / ratio + (last == count && last % ratio != 0)};
    }
};

template <typename T>
bool canHavePyramid(int size)
{
    return HasSummary<T> && size >= 2 * BlockSize;
}

size_t alignedToDouble(size_t bytes)
{
    return (bytes + sizeof(double) - 1) / sizeof(double) * sizeof(double);
}

template <typename T>
size_t allocationSize(int size)
{
    if (size <= 0)
        return 0;
    const size_t samples = static_cast<size_t>(size) * sizeof(T);
    if (!canHavePyramid<T>(size))
        return samples;
    const LevelOffsets offsets(size);
    return alignedToDouble(samples) + static_cast<size_t>(offsets.sums()) * sizeof(double) +
           static_cast<size_t>(offsets.total()) * 2 * sizeof(T);
}

template <typename Target, typename Source>
Target convertSample(Source value)
{
    if constexpr (std::is_floating_point_v<Target> || std::is_same_v<Target, Source>) {
        return static_cast<Target>(value);
    } else {
        using Limits = std::numeric_limits<Target>;
        const double wide = static_cast<double>(value);
        if (std::isnan(wide))
            return 0;
        if (wide <= Limits::lowest())
            return Limits::lowest();
        return wide >= Limits::max() ? Limits::max() : static_cast<Target>(wide);
    }
}

/** Samples below an entry of a level, of @p size samples in all. */
int64_t samplesOf(int level, int entry, int size)
{
    int64_t samples = BlockSize;
    for (int i = 0; i < level; ++i)
        samples *= BlockRatio;
    return std::min(samples, size - entry * samples);
}

template <typename T>
SampleSummary toSummary(const Math::Extrema<T> &extrema)
{
    SampleSummary summary;
    if (!extrema.count)
        return summary;
    summary.minimum = static_cast<double>(extrema.minimum);
    summary.maximum = static_cast<double>(extrema.maximum);
    summary.sum = extrema.sum;
    summary.count = static_cast<int64_t>(extrema.count);
    return summary;
}

} // namespace

/** Where the three columns of the pyramid lie, all levels of a column behind each other. Sums begin
 *  with the second level. */
template <typename T>
struct TypedArray<T>::Pyramid
{
    LevelOffsets offsets;
    double *sums;
    T *minima;
    T *maxima;

    double &sum(int level, int i) const
    {
        return sums[offsets.begin[level] - offsets.begin[1] + i];
    }

    /** Works out a level from the one below. */
    void combine(int level) const
    {
        const int below = offsets.begin[level - 1];
        const int count = offsets.entries(level - 1);
        for (int i = 0; i < offsets.entries(level); ++i) {
            const int first = i * BlockRatio;
            const int last = std::min(count, first + BlockRatio);
            const int entry = offsets.begin[level] + i;
            minima[entry] = *std::min_element(minima + below + first, minima + below + last);
            maxima[entry] = *std::max_element(maxima + below + first, maxima + below + last);
            if (level > 1)
                sum(level, i) = std::accumulate(&sum(level - 1, first), &sum(level - 1, last), 0.0);
        }
    }
};

template <typename T>
TypedArray<T>::TypedArray(int size) : _size(std::max(0, size)), _block(allocationSize<T>(_size))
{}

template <typename T>
TypedArray<T>::TypedArray(int size, SampleMemory &memory)
    : _size(std::max(0, size)), _block(memory.allocate(allocationSize<T>(_size)))
{}

template <typename T>
TypedArray<T>::TypedArray(int size, const T *samples) : TypedArray(size)
{
    if (_size)
        std::memcpy(_block.data(), samples, static_cast<size_t>(_size) * sizeof(T));
}

template <typename T>
TypedArray<T>::TypedArray(const TypedArray &other)
    : NumericArray(other), _size(other._size), _block(allocationSize<T>(_size)),
      _hasPyramid(other._hasPyramid)
{
    if (!_size)
        return;
    const size_t bytes = static_cast<size_t>(_size) * sizeof(T);
    std::memcpy(samples(), other.samples(), _hasPyramid ? allocationSize<T>(_size) : bytes);
    if (other._counts) {
        const int entries = LevelOffsets(_size).total();
        _counts.reset(new int[static_cast<size_t>(entries)]);
        std::copy_n(other._counts.get(), entries, _counts.get());
    }
}

template <typename T>
TypedArray<T> &TypedArray<T>::operator=(const TypedArray &other)
{
    if (this == &other)
        return *this;
    TypedArray copy(other);
    std::swap(_size, copy._size);
    std::swap(_block, copy._block);
    std::swap(_counts, copy._counts);
    std::swap(_hasPyramid, copy._hasPyramid);
    return *this;
}

template <typename T>
TypedArray<T>::~TypedArray() = default;

template <typename T>
Core::SmartPointer<TypedArray<T>> TypedArray<T>::Convert(const NumericArray &other)
{
    const int n = other.size();
    Core::SmartPointer<TypedArray<T>> result(new TypedArray<T>(n));
    if constexpr (std::is_same_v<T, char>) {
        for (int i = 0; i < n; ++i)
            result->samples()[i] = convertSample<T>(other.value(i));
    } else {
        other.convert(0, n, result->samples());
    }
    return result;
}

template <typename T>
Core::SmartPointer<const TypedArray<T>> TypedArray<T>::From(const ArrayCPtr &other)
{
    if (!other)
        return nullptr;
    if (const auto *same = dynamic_cast<const TypedArray<T> *>(other.get()))
        return same;
    return Convert(*other);
}

template <typename T>
void TypedArray<T>::setData(int n, const T *samples)
{
    *this = TypedArray<T>(n, samples);
}

template <typename T>
void TypedArray<T>::resize(int size)
{
    if (size == _size) {
        dropPyramid();
        return;
    }
    TypedArray<T> resized(size);
    const size_t kept = static_cast<size_t>(std::min(_size, resized._size));
    if (kept)
        std::memcpy(resized.samples(), samples(), kept * sizeof(T));
    std::swap(_size, resized._size);
    std::swap(_block, resized._block);
    dropPyramid();
}

template <typename T>
T *TypedArray<T>::typedData()
{
    dropPyramid();
    return samples();
}

template <typename T>
DataType TypedArray<T>::dataType() const
{
    if constexpr (std::is_same_v<T, char>)
        return DataType::Char;
    else if constexpr (std::is_same_v<T, int>)
        return DataType::Int;
    else if constexpr (std::is_same_v<T, float>)
        return DataType::Float;
    else
        return DataType::Double;
}

template <typename T>
size_t TypedArray<T>::memorySize() const
{
    size_t bytes = sizeof(*this) + allocationSize<T>(_size);
    if (_counts)
        bytes += static_cast<size_t>(LevelOffsets(_size).total()) * sizeof(int);
    return bytes;
}

template <typename T>
typename TypedArray<T>::Pyramid TypedArray<T>::pyramid() const
{
    const LevelOffsets offsets(_size);
    char *base = reinterpret_cast<char *>(samples()) +
                 alignedToDouble(static_cast<size_t>(_size) * sizeof(T));
    auto *sums = reinterpret_cast<double *>(base);
    auto *minima = reinterpret_cast<T *>(sums + offsets.sums());
    return {offsets, sums, minima, minima + offsets.total()};
}

template <typename T>
void TypedArray<T>::dropPyramid()
{
    _hasPyramid = false;
    _counts.reset();
}

template <typename T>
void TypedArray<T>::buildPyramid()
{
    if (_hasPyramid || !canHavePyramid<T>(_size))
        return;

    if constexpr (HasSummary<T>) {
        const Pyramid to = pyramid();
        const bool allFinite =
            Math::summarizeBlocks(samples(), static_cast<size_t>(_size), BlockSize, BlockRatio,
                                  to.minima, to.maxima, to.sums);
        for (int level = 1; level < Levels; ++level)
            to.combine(level);
        if (!allFinite)
            countFinite();
        _hasPyramid = true;
    }
}

template <typename T>
void TypedArray<T>::countFinite()
{
    if constexpr (std::is_floating_point_v<T>) {
        const LevelOffsets offsets(_size);
        _counts.reset(new int[static_cast<size_t>(offsets.total())]());
        for (int level = 0; level < Levels; ++level) {
            int *counts = _counts.get() + offsets.begin[level];
            const int *below = level ? _counts.get() + offsets.begin[level - 1] : nullptr;
            const int children = level ? offsets.entries(level - 1) : _size;
            const int ratio = level ? BlockRatio : BlockSize;
            if (offsets.entries(level) == 0)
                return;
            for (int i = 0; i < children; ++i)
                counts[i / ratio] += level ? below[i] : int(std::isfinite(samples()[i]));
        }
    }
}

/**
 * Splits a range into runs of samples, for which it calls @p scan(first, last), and runs of pyramid
 * entries of level @p lowest and those above, for which it calls @p merge(level, first, last).
 */
template <typename T>
template <typename Scan, typename Merge>
void TypedArray<T>::walk(int first, int last, int lowest, Scan scan, Merge merge) const
{
    const int block = lowest ? BlockSize * BlockRatio : BlockSize;
    Run run = Run{first, last}.parents(_size, block);
    if (!_hasPyramid || run.isEmpty()) {
        scan(first, last);
        return;
    }
    if (first < run.first * block)
        scan(first, run.first * block);
    if (last != _size && run.last * block < last)
        scan(run.last * block, last);

    const LevelOffsets offsets(_size);
    for (int level = lowest;; ++level) {
        const int entries = offsets.entries(level);
        const bool top = level + 1 == Levels || offsets.entries(level + 1) == 0;
        const Run above = top ? Run{0, 0} : run.parents(entries, BlockRatio);
        if (above.isEmpty()) {
            merge(level, run.first, run.last);
            return;
        }
        if (run.first < above.first * BlockRatio)
            merge(level, run.first, above.first * BlockRatio);
        if (run.last != entries && above.last * BlockRatio < run.last)
            merge(level, above.last * BlockRatio, run.last);
        run = above;
    }
}

template <typename T>
SampleSummary TypedArray<T>::summary(int first, int last) const
{
    first = std::max(0, first);
    last = std::min(_size, last);
    SampleSummary result;
    if (first >= last)
        return result;

    if constexpr (HasSummary<T>) {
        const auto scan = [&](int from, int to) {
            const auto n = static_cast<size_t>(to - from);
            result.add(toSummary(Math::summarize(samples() + from, n)));
        };
        const auto merge = [&](int level, int from, int to) {
            const Pyramid p = pyramid();
            for (int i = from; i < to; ++i) {
                const int entry = p.offsets.begin[level] + i;
                const auto count =
                    _counts ? _counts[static_cast<size_t>(entry)] : samplesOf(level, i, _size);
                result.add({static_cast<double>(p.minima[entry]),
                            static_cast<double>(p.maxima[entry]), p.sum(level, i), count});
            }
        };
        walk(first, last, 1, scan, merge);
    }
    return result;
}

template <typename T>
bool TypedArray<T>::findExtrema(int first, int last, T &minimum, T &maximum) const
{
    minimum = Math::Extrema<T>().minimum;
    maximum = Math::Extrema<T>().maximum;
    if constexpr (HasSummary<T>) {
        const auto scan = [&](int from, int to) {
            T low, high;
            Math::findExtrema(samples() + from, static_cast<size_t>(to - from), low, high);
            minimum = std::min(minimum, low);
            maximum = std::max(maximum, high);
        };
        const auto merge = [&](int level, int from, int to) {
            const Pyramid p = pyramid();
            const int offset = p.offsets.begin[level];
            for (int i = offset + from; i < offset + to; ++i) {
                minimum = std::min(minimum, p.minima[i]);
                maximum = std::max(maximum, p.maxima[i]);
            }
        };
        walk(first, last, 0, scan, merge);
    }
    return minimum <= maximum;
}

template <typename T>
bool TypedArray<T>::extrema(int first, int last, double &minimum, double &maximum) const
{
    first = std::max(0, first);
    last = std::min(_size, last);
    T low, high;
    if (first >= last || !findExtrema(first, last, low, high))
        return false;
    minimum = static_cast<double>(low);
    maximum = static_cast<double>(high);
    return true;
}

template <typename T>
void TypedArray<T>::summarizeRuns(const int *edges, int count, SampleRun *runs) const
{
    if constexpr (HasSummary<T>) {
        constexpr int Chunk = 64;
        /** Shorter runs are put together of the lowest level alone. */
        constexpr int LongRun = 8 * BlockSize * BlockRatio;
        const Pyramid blocks = _hasPyramid ? pyramid() : Pyramid{LevelOffsets(0), {}, {}, {}};
        T minima[Chunk];
        T maxima[Chunk];
        while (count > 0) {
            const int n = std::min(Chunk, count);
            if (edges[n] - edges[0] < n * LongRun) {
                Math::findRunExtrema(samples(), static_cast<size_t>(_size), edges,
                                     static_cast<size_t>(n), minima, maxima, blocks.minima,
                                     blocks.maxima);
            } else {
                for (int i = 0; i < n; ++i)
                    findExtrema(edges[i], edges[i + 1], minima[i], maxima[i]);
            }
            for (int i = 0; i < n; ++i) {
                runs[i] = {static_cast<double>(samples()[edges[i]]), static_cast<double>(minima[i]),
                           static_cast<double>(maxima[i]),
                           static_cast<double>(samples()[edges[i + 1] - 1])};
            }
            edges += n;
            runs += n;
            count -= n;
        }
    }
}

template <typename T>
void TypedArray<T>::prefetchRuns(double firstEdge, double spacing, int alignment) const
{
    constexpr int MostEdges = 8;
    constexpr int Line = 64 / sizeof(T);
    if (!_hasPyramid)
        return;
    const Pyramid blocks = pyramid();
    hwy::Prefetch(blocks.minima);
    hwy::Prefetch(blocks.maxima);
    hwy::Prefetch(samples());
    hwy::Prefetch(samples() + _size - 1);
    // Of whole blocks nothing but the first sample and the one before it is read.
    const bool isSnapped = alignment >= BlockSize;
    const double shift = isSnapped ? 0.5 * alignment : 0;
    const int multiple = isSnapped ? alignment : BlockSize;
    for (int i = 0; i < MostEdges && firstEdge + shift < _size; ++i, firstEdge += spacing) {
        const T *block =
            samples() + static_cast<int>(std::max(0.0, firstEdge + shift)) / multiple * multiple;
        hwy::Prefetch(block);
        for (int k = Line; k < BlockSize && !isSnapped; k += Line)
            hwy::Prefetch(block + k);
    }
}

template <typename T>
int TypedArray<T>::firstNonFinite(int first, int last) const
{
    first = std::max(0, first);
    last = std::max(first, std::min(_size, last));
    if constexpr (std::is_floating_point_v<T>) {
        if (_hasPyramid && !_counts)
            return last;
        while (first < last) {
            const int block = first / BlockSize;
            if (_counts && first % BlockSize == 0 &&
                _counts[static_cast<size_t>(block)] == samplesOf(0, block, _size)) {
                first = std::min<int64_t>(last, (block + 1) * int64_t(BlockSize));
                continue;
            }
            if (!std::isfinite(samples()[first]))
                return first;
            ++first;
        }
    }
    return last;
}

template <typename T>
int TypedArray<T>::lastNonFinite(int first, int last) const
{
    first = std::max(0, first);
    last = std::max(first, std::min(_size, last));
    if constexpr (std::is_floating_point_v<T>) {
        if (_hasPyramid && !_counts)
            return -1;
        for (int i = last - 1; i >= first; --i) {
            const int block = i / BlockSize;
            const bool atEnd = i + 1 == _size || (i + 1) % BlockSize == 0;
            if (_counts && atEnd &&
                _counts[static_cast<size_t>(block)] == samplesOf(0, block, _size)) {
                i = block * BlockSize;
                continue;
            }
            if (!std::isfinite(samples()[i]))
                return i;
        }
    }
    return -1;
}

template <typename T>
template <typename Target>
void TypedArray<T>::convertTo(int first, int last, Target *target) const
{
    first = std::max(0, first);
    last = std::min(_size, last);
    for (int i = first; i < last; ++i)
        target[i - first] = convertSample<Target>(samples()[i]);
}

template <typename T>
void TypedArray<T>::convert(int first, int last, float *target) const
{
    convertTo(first, last, target);
}

template <typename T>
void TypedArray<T>::convert(int first, int last, double *target) const
{
    convertTo(first, last, target);
}

template <typename T>
void TypedArray<T>::convert(int first, int last, int *target) const
{
    convertTo(first, last, target);
}

template class TypedArray<char>;
template class TypedArray<int>;
template class TypedArray<float>;
template class TypedArray<double>;

} // namespace Tellarix
