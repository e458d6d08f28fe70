// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/spectrogram.h>

#include <norvu/gui/filterbank_p.h>
#include <norvu/gui/iirenvelope_p.h>
#include <norvu/gui/spectrogrambands.h>

#include <tellarix/core/math/average.h>
#include <tellarix/core/math/butterworth.h>
#include <tellarix/core/math/chainfilter.h>
#include <tellarix/core/math/extrema.h>
#include <tellarix/core/math/runningmean.h>
#include <tellarix/core/records/typedarray.h>

#include <QtGlobal>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <utility>

#ifdef Q_OS_LINUX
#include <sys/mman.h>
#endif

using namespace Tellarix::Math::Filtering;

namespace Norvu {
namespace Gui {

namespace {

constexpr int Order = 4;
/** More bands are a mistake in a setting, and would only fill the memory. */
constexpr int MostBands = 1 << 16;
/** Columns whose range is kept once it was worked out. */
constexpr int64_t BlockColumns = 512;

/** Truncated to int; the largest one for what lies beyond, 0 for what is not above it. */
int toColumns(double value)
{
    constexpr int Most = std::numeric_limits<int>::max();
    if (!(value > 0))
        return 0;
    return value < Most ? static_cast<int>(value) : Most;
}

constexpr size_t LargePage = 1 << 21;
constexpr size_t HugeBlock = 1 << 28;
/** Columns that a block has room for as a window of them moves on, which writes to all of it, as a
 *  multiple of those in it: with less it grows, with more it is made smaller. */
constexpr double LeastRoom = 1.25;
constexpr double MovingRoom = 1.4;
constexpr double MostRoom = 1.5;

/** The same for a block of so many bytes as it grows. What a big one has ahead takes addresses, but
 *  no memory before it is written to, while copies would take longer than the filters. */
double growingRoom(size_t size)
{
    if (size < LargePage)
        return 1.5;
    return size < HugeBlock ? 8 : 2;
}

int roomFor(int columns, double room)
{
    return toColumns(std::max(columns * room, static_cast<double>(columns)));
}

/** A big block for std::free(). It asks the system for large pages, which it hands over at much
 *  less cost than many small ones, as far as they fill. Null if there is no memory. */
void *allocateBigBlock(size_t size)
{
    const size_t rounded = (size + LargePage - 1) / LargePage * LargePage;
    void *block = std::aligned_alloc(LargePage, rounded);
#ifdef MADV_HUGEPAGE
    if (block)
        madvise(block, size / LargePage * LargePage, MADV_HUGEPAGE);
#endif
    return block;
}

/** A block in the place of @p block, which may be null, with the first @p used bytes of it. It is
 *  not cut where it lies, as many short matrices would leave the memory full of small gaps. Null if
 *  there is no memory, and then @p block stays. */
void *movedBlock(void *block, size_t used, size_t size)
{
    void *resized =
        size < LargePage ? std::malloc(std::max<size_t>(size, 1)) : allocateBigBlock(size);
    if (resized && block) {
        std::memcpy(resized, block, used);
        std::free(block);
    }
    return resized;
}

/** What a filter bank has to know of a chain that addFilter() made. */
template <typename T>
FilterBank::Band bandOf(const InPlaceFilter<T> &filter, double samplingFrequency)
{
    const auto &chain = static_cast<const ChainFilter<T> &>(filter);
    const auto *highPass = static_cast<const RunningMeanHighPass<T> *>(chain.at(0));
    const auto *bandpass = static_cast<const IIR::Butterworth<T> *>(chain.at(1));
    const auto *envelope = static_cast<const IIREnvelope<T> *>(chain.at(2));
    const auto *average = static_cast<const Average<T> *>(chain.at(3));
    const auto samplesIn = [samplingFrequency](double seconds) {
        return MeanWindow::samplesIn(seconds, samplingFrequency);
    };
    const IIREnvelope<T> scaled(envelope->frequency(), samplingFrequency);
    return {samplesIn(highPass->length()),
            IIR::butterworthSections(bandpass->band(), bandpass->order(), bandpass->lowerCorner(),
                                     bandpass->upperCorner(), samplingFrequency),
            static_cast<double>(scaled.gain()), samplesIn(average->length())};
}

/** A clone without a sampling frequency. */
template <typename T>
InPlaceFilter<T> *freshClone(const InPlaceFilter<T> &filter)
{
    InPlaceFilter<T> *clone = filter.clone();
    clone->setSamplingFrequency(0);
    return clone;
}

} // namespace

template <typename T>
Spectrogram<T>::Spectrogram() : _bank(std::make_unique<FilterBank>())
{}

template <typename T>
Spectrogram<T>::Spectrogram(const SpectrogramSettings &settings) : Spectrogram()
{
    init(settings);
}

template <typename T>
Spectrogram<T>::~Spectrogram()
{
    clearData();
}

template <typename T>
void Spectrogram<T>::init(const SpectrogramSettings &settings)
{
    _settings = settings;
    _minimum = 0;
    _maximum = 0;
    initFilters();
    resetted();
}

template <typename T>
void Spectrogram<T>::initFrom(const Spectrogram<T> &other)
{
    if (&other == this)
        return reset();

    clearData();
    _settings = other._settings;
    if (other._isFinished) {
        initFilters();
    } else {
        for (const InPlaceFilter<T> *filter : other._filters)
            _filters.push_back(freshClone(*filter));
        _rows = static_cast<int>(_filters.size());
    }
    resetted();
}

template <typename T>
void Spectrogram<T>::addFilter(double lowHz, double highHz, double highPassSeconds)
{
    auto chain = std::make_unique<ChainFilter<T>>();
    chain->add(new RunningMeanHighPass<T>(highPassSeconds, 0.0));
    chain->add(new IIR::ButterworthBandpass<T>(Order, lowHz, highHz, 0.0));
    chain->add(new IIREnvelope<T>(static_cast<T>(std::sqrt(lowHz * highHz))));
    chain->add(new Average<T>(1.0 / lowHz, 0.0));
    _filters.push_back(chain.release());
    if (_samplingFrequency > 0)
        adoptFilter(_filters.size() - 1);
}

/** Gives a filter its sampling frequency, in the bank if that takes it. */
template <typename T>
void Spectrogram<T>::adoptFilter(size_t index)
{
    InPlaceFilter<T> *filter = _filters[index];
    if (index != _bank->bandCount() || !_bank->add(bandOf(*filter, _samplingFrequency)))
        filter->setSamplingFrequency(_samplingFrequency);
}

template <typename T>
void Spectrogram<T>::initFilters()
{
    clearData();
    if (_settings.mode != SpectrogramSettings::Periods &&
        _settings.mode != SpectrogramSettings::Frequencies)
        return;

    _rows = 0;
    if (_settings.bands < 1)
        return;
    if (_settings.bands > MostBands) {
        qWarning("Spectrogram: %d bands are more than %d", _settings.bands, MostBands);
        return;
    }

    const SpectrogramBands bands(_settings);
    for (int i = 0; i < bands.count; ++i) {
        const SpectrogramBands::Corners corners = bands.corners(i);
        addFilter(corners.low, corners.high, bands.highPassSeconds);
    }
    _rows = static_cast<int>(_filters.size());
}

template <typename T>
void Spectrogram<T>::setColumnInterval(int samples)
{
    const int interval = std::max(samples, 1);
    if (interval == _columnInterval)
        return;
    resetData();
    _columnInterval = interval;
    if (_samplingFrequency > 0)
        _maxColumns = updatedLimit();
}

template <typename T>
void Spectrogram<T>::setMaximumSeconds(double seconds)
{
    _maximumSeconds = seconds;
    if (_samplingFrequency > 0)
        _maxColumns = updatedLimit();
}

template <typename T>
void Spectrogram<T>::setSamplingFrequency(double samplingFrequency)
{
    _samplingFrequency = samplingFrequency;
    _bank->clear();
    for (size_t i = 0; i < _filters.size(); ++i)
        adoptFilter(i);
    _maxColumns = updatedLimit();
}

template <typename T>
int Spectrogram<T>::updatedLimit() const
{
    if (!(_maximumSeconds > 0))
        return -1;
    const int columns = toColumns(_maximumSeconds * columnRate());
    // 0 would be no limit, and columns may be longer than what is wanted.
    return _columnInterval > 1 ? std::max(columns, 1) : columns;
}

/** Makes the block one for @p columns columns, at least those that there are, which begins with
 *  column 0. */
template <typename T>
bool Spectrogram<T>::reallocate(int columns)
{
    goBack();
    const size_t column = static_cast<size_t>(_rows) * sizeof(T);
    const size_t used = static_cast<size_t>(_columns) * column;
    const size_t size = static_cast<size_t>(columns) * column;
    void *block = columns < _blockColumns && size >= LargePage ? std::realloc(_block, size)
                                                               : movedBlock(_block, used, size);
    if (!block) {
        qWarning("Spectrogram: no memory for %d columns of %d bands", columns, _rows);
        return false;
    }
    _data = _block = static_cast<T *>(block);
    _blockColumns = columns;
    return true;
}

/** Columns of the block that lie before column 0. */
template <typename T>
int Spectrogram<T>::columnsBefore() const
{
    return _rows ? static_cast<int>((_data - _block) / _rows) : 0;
}

/** Moves the columns to the begin of the block. */
template <typename T>
void Spectrogram<T>::goBack()
{
    if (_data != _block)
        std::memmove(_block, _data, static_cast<size_t>(_columns) * _rows * sizeof(T));
    _data = _block;
}

/** Sees to it that the block holds at least @p columns behind _data. */
template <typename T>
bool Spectrogram<T>::makeRoom(int columns)
{
    if (!_block)
        return reallocate(columns);
    const int before = columnsBefore();
    if (columns <= _blockColumns - before)
        return true;
    // So much room that a window moves on by a good part of itself before it goes back again.
    if (columns <= _blockColumns && _blockColumns >= roomFor(_columns, LeastRoom)) {
        goBack();
        return true;
    }
    const double room = growingRoom(static_cast<size_t>(columns) * _rows * sizeof(T));
    const int wanted =
        before ? std::max(columns, roomFor(_columns, MovingRoom)) : roomFor(columns, room);
    return reallocate(wanted) || reallocate(columns);
}

/** Runs the filters that the bank does not run and fills rows without a filter with zeros. */
template <typename T>
ValueRange Spectrogram<T>::runFilters(int n, const T *samples, const MatrixColumns<T> &target)
{
    ValueRange range;
    Tellarix::TypedArray<T> scratch;
    const size_t count = static_cast<size_t>(n);
    for (size_t r = _bank->bandCount(); r < target.rows; ++r) {
        scratch.setData(n, samples);
        T *values = scratch.typedData();
        if (r < _filters.size())
            _filters[r]->apply(n, values);
        else
            std::fill_n(values, n, T(0));
        if (r == 0)
            range.widen(static_cast<double>(values[0]));
        for (size_t i = target.skip; i < count; ++i) {
            target.of(i)[r] = values[i];
            range.widen(static_cast<double>(values[i]));
        }
    }
    return range;
}

template <typename T>
void Spectrogram<T>::pushData(int n, const T *samples)
{
    if (n < 1 || _isFinished)
        return;
    if (_columnInterval > 1)
        return pushPeaks(n, samples);

    const bool isLimited = _maxColumns > 0;
    const int skip = isLimited ? std::max(0, n - _maxColumns) : 0;
    const int64_t wanted = int64_t(skip ? 0 : _columns) + (n - skip);
    const int64_t most = isLimited ? _maxColumns : std::numeric_limits<int>::max();
    const int newColumns = static_cast<int>(std::min(wanted, most));
    if (!isLimited && wanted > most) {
        qWarning("Spectrogram: no more than %d columns are possible", newColumns);
        return;
    }

    if (isLimited) // A ring overwrites columns.
        _blockRanges.clear();
    const bool isFresh = !_data;
    if (!makeRoom(newColumns))
        return;
    bool wrapped = false;
    if (isFresh) {
        _front = _head = 0;
        _minimum = std::numeric_limits<double>::infinity();
        _maximum = -_minimum;
    } else if (_head >= newColumns) {
        _head %= newColumns;
        wrapped = true;
    }
    const size_t rows = static_cast<size_t>(_rows);
    // Only a ring whose limit was raised grows elsewhere than at its head.
    if (newColumns > _columns && _head != _columns)
        std::fill(_data + _columns * rows, _data + newColumns * rows, T(0));
    _columns = newColumns;

    const MatrixColumns<T> target{_data, rows, static_cast<size_t>(newColumns),
                                  static_cast<size_t>(_head), static_cast<size_t>(skip)};
    ValueRange range;
    if (!rows)
        range.widen(0);
    range.widen(_bank->apply(n, samples, target));
    range.widen(runFilters(n, samples, target));
    _minimum = std::min(_minimum, range.minimum);
    _maximum = std::max(_maximum, range.maximum);

    const int64_t head = int64_t(_head) + n;
    _head = static_cast<int>(isLimited ? head % _maxColumns : head);
    if (isLimited && head >= _maxColumns && wrapped && _head > _front)
        _front = _head;
}

template <typename T>
void Spectrogram<T>::pushPeaks(int n, const T *samples)
{
    const size_t rows = static_cast<size_t>(_rows);
    if (!_data && _pendingSamples == 0) {
        _minimum = rows ? std::numeric_limits<double>::infinity() : 0;
        _maximum = -_minimum;
    }
    const int64_t seen = int64_t(_pendingSamples) + n;
    const int64_t columns = _columns + seen / _columnInterval;
    if (columns > std::numeric_limits<int>::max())
        return;
    if (columns > _columns && !makeRoom(static_cast<int>(columns)))
        return;

    _peaks.resize(rows, T(FilterBank::NoPeak));
    T *added = _data ? _data + static_cast<size_t>(_columns) * rows : nullptr;
    const PeakColumns<T> target{added, _peaks.data(), rows, static_cast<size_t>(_columnInterval),
                                static_cast<size_t>(_pendingSamples)};
    _bank->applyPeaks(n, samples, target);
    runFilters(n, samples, target);
    T *end = added + static_cast<size_t>(columns - _columns) * rows;
    std::replace(added, end, T(FilterBank::NoPeak), std::numeric_limits<T>::quiet_NaN());
    _pendingSamples = static_cast<int>(seen % _columnInterval);
    const int before = std::exchange(_columns, static_cast<int>(columns));
    _head = _columns;
    if (before < _columns) {
        const ValueRange range = rangeOf(before, _columns);
        _minimum = std::min(_minimum, range.minimum);
        _maximum = std::max(_maximum, range.maximum);
    }
    if (_maxColumns > 0 && _columns > _maxColumns)
        trimData(_columns - _maxColumns, _columns, nullptr);
}

/** Collects the peaks of the rows that the bank doesn't fill. Envelopes are not negative, so that
 *  nothing but not-a-number leaves NoPeak. */
template <typename T>
void Spectrogram<T>::runFilters(int n, const T *samples, const PeakColumns<T> &target)
{
    Tellarix::TypedArray<T> scratch;
    for (size_t r = _bank->bandCount(); r < target.rows; ++r) {
        scratch.setData(n, samples);
        if (r < _filters.size())
            _filters[r]->apply(n, scratch.typedData());
        else
            std::fill_n(scratch.typedData(), n, T(0));
        T *column = target.data + r;
        T &peak = target.pending[r];
        size_t count = target.pendingSamples;
        std::for_each(scratch.typedData(), scratch.typedData() + n, [&](T value) {
            peak = value > peak ? value : peak;
            if (++count < target.interval)
                return;
            *column = std::exchange(peak, T(FilterBank::NoPeak));
            column += target.rows;
            count = 0;
        });
    }
}

template <typename T>
void Spectrogram<T>::reset()
{
    resetData();
    _bank->clear();
    if (_isFinished)
        initFilters();
    for (InPlaceFilter<T> *&filter : _filters) {
        InPlaceFilter<T> *clone = freshClone(*filter);
        delete filter;
        filter = clone;
    }
    resetted();
}

template <typename T>
void Spectrogram<T>::resetData()
{
    std::free(_block);
    _data = _block = nullptr;
    _blockColumns = 0;
    _columns = _front = _head = 0;
    _pendingSamples = 0;
    _peaks.clear();
    _firstColumn = 0;
    _blockRanges.clear();
}

template <typename T>
void Spectrogram<T>::clearFilters()
{
    for (InPlaceFilter<T> *filter : _filters)
        delete filter;
    _filters = {};
    _bank = std::make_unique<FilterBank>();
}

template <typename T>
void Spectrogram<T>::finish()
{
    _isFinished = true;
    clearFilters();
    _peaks = {};
    if (_columns < _blockColumns)
        reallocate(_columns);
}

template <typename T>
size_t Spectrogram<T>::memorySize() const
{
    const size_t column = static_cast<size_t>(_rows) * sizeof(T);
    return static_cast<size_t>(_blockColumns) * column + _bank->memorySize();
}

template <typename T>
void Spectrogram<T>::clearData()
{
    clearFilters();
    resetData();
    _isFinished = false;
}

template <typename T>
void Spectrogram<T>::trimData(int first, int last, int *firstKept)
{
    if (firstKept)
        *firstKept = 0;
    if (last < 1 || _columns <= first)
        return resetData();
    if (first >= last || !_data)
        return;

    const int begin = std::max(first, 0);
    const int kept = std::min(_columns, last) - begin;
    if (firstKept)
        *firstKept = begin;
    const size_t rows = static_cast<size_t>(_rows);
    _data += static_cast<size_t>(begin) * rows;
    _firstColumn += begin;
    if (kept == _columns)
        return;

    if (last < _columns) {
        _pendingSamples = 0;
        _peaks.clear();
    }
    _columns = _head = kept;
    _front = 0;
    if (_blockColumns > roomFor(kept, MostRoom))
        reallocate(_isFinished ? kept : roomFor(kept, MovingRoom));
    findRange();
}

/** Range of the columns from @p first up to @p last. */
template <typename T>
ValueRange Spectrogram<T>::rangeOf(int first, int last) const
{
    const size_t rows = static_cast<size_t>(_rows);
    T minimum, maximum;
    ValueRange range;
    if (Tellarix::Math::findExtrema(_data + static_cast<size_t>(first) * rows,
                                    static_cast<size_t>(last - first) * rows, minimum, maximum)) {
        range.minimum = static_cast<double>(minimum);
        range.maximum = static_cast<double>(maximum);
    }
    return range;
}

/** Works out the range of all values; without a finite one the range stays. */
template <typename T>
void Spectrogram<T>::findRange()
{
    const int64_t end = _firstColumn + _columns;
    const int64_t first = (_firstColumn + BlockColumns - 1) / BlockColumns;
    const int64_t last = std::max(first, end / BlockColumns);
    const int64_t known = static_cast<int64_t>(_blockRanges.size());
    const int64_t gone = std::clamp<int64_t>(first - _firstBlock, 0, known);
    _blockRanges.erase(_blockRanges.begin(), _blockRanges.begin() + gone);
    _blockRanges.resize(static_cast<size_t>(std::min(known - gone, last - first)));
    _firstBlock = first;

    const auto columnOf = [this](int64_t block) {
        return static_cast<int>(block * BlockColumns - _firstColumn);
    };
    for (int64_t block = first + static_cast<int64_t>(_blockRanges.size()); block < last; ++block)
        _blockRanges.push_back(rangeOf(columnOf(block), columnOf(block + 1)));
    ValueRange range;
    if (first < last) {
        range = rangeOf(0, columnOf(first));
        range.widen(rangeOf(columnOf(last), _columns));
    } else {
        range = rangeOf(0, _columns);
    }
    for (const ValueRange &block : _blockRanges)
        range.widen(block);
    if (range.minimum <= range.maximum) {
        _minimum = range.minimum;
        _maximum = range.maximum;
    }
}

template <typename T>
void Spectrogram<T>::resetted()
{}

template class Spectrogram<float>;
template class Spectrogram<double>;

} // namespace Gui
} // namespace Norvu
