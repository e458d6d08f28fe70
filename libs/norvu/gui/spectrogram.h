// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>
#include <norvu/gui/spectrogramsettings.h>

#include <tellarix/core/baseobject.h>
#include <tellarix/core/math/filter.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace Norvu {
namespace Gui {

class FilterBank;
struct ValueRange;
template <typename T>
struct MatrixColumns;
template <typename T>
struct PeakColumns;

/**
 * Turns evenly spaced samples into a time/frequency matrix by a bank of band-pass filters, each
 * followed by an envelope and a moving average.
 *
 * Each sample gives one column and each band one row, so that samples can be pushed in blocks of
 * any length without a window: the matrix doesn't depend on how a signal is cut. Values are
 * envelope amplitudes in the unit of the samples. A sample that is not finite gives a column of
 * not-a-number and is otherwise passed over; the range of values takes no notice of it.
 *
 * There are instances for `float` and `double`; arithmetic and state are in double in both. A
 * spectrogram belongs to one thread at a time.
 */
template <typename T>
class NORVU_GUI_API Spectrogram : public Tellarix::Core::BaseObject
{
public:
    Spectrogram();
    explicit Spectrogram(const SpectrogramSettings &settings);
    Spectrogram(const Spectrogram &) = delete;
    Spectrogram &operator=(const Spectrogram &) = delete;
    ~Spectrogram() override;

    /** Drops everything and builds the bank of @p settings; sampling frequency, column interval
     *  and limit stay. */
    void init(const SpectrogramSettings &settings);
    /** Drops everything and takes settings and bank of @p other over, but neither its data nor
     *  its sampling frequency, which has to be set again. */
    void initFrom(const Spectrogram<T> &other);
    /**
     * Appends a band: a running-mean high-pass, a band-pass of order 4, an envelope about the
     * geometric mean of the corners and a moving average over the longest period of the band.
     * For initFilters(), which sets the number of rows afterwards.
     * @param lowHz, highHz    corners of the band in ascending order
     * @param highPassSeconds  length of the running mean that is subtracted
     */
    void addFilter(double lowHz, double highHz, double highPassSeconds);
    /** Drops the data and builds the bank from the settings in force. It stays empty without a
     *  known mode or bands, and with more than 65536 of them, which is logged. */
    void initFilters();
    const SpectrogramSettings &settings() const { return _settings; }

    /**
     * Keeps one column for so many samples, with the largest value of each band among them, instead
     * of one for each sample: for views of long times, in which a pixel stands for many samples.
     * The filters see all samples nevertheless. Drops the data if it is another interval, but not
     * the state of the filters: to be set before the first pushData().
     * @param samples  1, as at the start, and below for a column for each sample
     */
    void setColumnInterval(int samples);
    int columnInterval() const { return _columnInterval; }
    /** Columns a second; 0 without a sampling frequency. */
    double columnRate() const { return _samplingFrequency / _columnInterval; }
    /** Samples that were pushed since the last column was complete; 0 with a column for each. */
    int pendingSamples() const { return _pendingSamples; }

    /**
     * Limits the matrix to the latest columns: once full it is a ring, which data() shows in the
     * order of storage, or, with a column interval, drops the oldest columns. Takes effect with the
     * next pushData().
     * @param seconds  0 and below for no limit; with a column interval one column stays at least
     */
    void setMaximumSeconds(double seconds);
    /** Sampling frequency in Hz; resets the filters. To be set before the first pushData(). */
    void setSamplingFrequency(double samplingFrequency);
    double samplingFrequency() const { return _samplingFrequency; }

    /** Filters @p n samples and appends as many columns, or one for each column interval that they
     *  complete; n below 1 does nothing. If there is not enough memory, this is logged and no
     *  column is appended. */
    void pushData(int n, const T *samples);

    /** The matrix of rows() x columns(), column by column: band r of column c stands at index
     *  c * rows() + r. Null while empty; valid until the next change. */
    const T *data() const { return _data; }
    int columns() const { return _columns; }
    int rows() const { return _rows; }
    /** Smallest and largest value; values that a ring has overwritten still count. Infinity and
     *  its negative while samples have been pushed that made no finite value. */
    double minimum() const { return _minimum; }
    double maximum() const { return _maximum; }
    bool isNull() const { return _columns == 0; }

    /** Bytes of the matrix, with the room for more columns, and of what the filters remember. Room
     *  that no column has filled yet may take addresses only. */
    size_t memorySize() const;

    /**
     * Gives back what only further samples would need, that is the filters and the room for more
     * columns. pushData() does nothing from now on; init(), initFrom() and reset() begin anew, with
     * the bank of the settings.
     */
    void finish();
    /** Drops the data and the state of the filters, which have no sampling frequency then. */
    void reset();
    /** Drops the data; the state of the filters and the range of values stay. */
    void resetData();
    /** Drops data and filters. */
    void clearData();

    /**
     * Keeps the columns from @p first up to, but not including, @p last and works out the range of
     * values anew. Nothing happens if @p first is not below @p last, unless the matrix ends before
     * @p first or @p last is below 1: then all data is dropped. Pending samples go with the last
     * column. Not for a ring.
     * @param firstKept  may be null; set to the old number of the first column kept, else to 0
     */
    virtual void trimData(int first, int last, int *firstKept);
    /** Called at the end of init(), initFrom() and reset(). */
    virtual void resetted();

private:
    void adoptFilter(size_t index);
    void clearFilters();
    int columnsBefore() const;
    void goBack();
    bool makeRoom(int columns);
    bool reallocate(int columns);
    ValueRange rangeOf(int first, int last) const;
    void findRange();
    ValueRange runFilters(int n, const T *samples, const MatrixColumns<T> &target);
    int updatedLimit() const;
    void pushPeaks(int n, const T *samples);
    void runFilters(int n, const T *samples, const PeakColumns<T> &target);

    /** One ChainFilter for each band, owned. Those that _bank runs only describe their bands: they
     *  have no sampling frequency and no state. */
    std::vector<Tellarix::Math::Filtering::InPlaceFilter<T> *> _filters;
    /** Runs as many of the first filters as share a sampling frequency and a high-pass, that is all
     *  of a bank from the settings; the others run by themselves. */
    std::unique_ptr<FilterBank> _bank;
    /** Column 0, within a block that has room for more columns before and behind. */
    T *_data{nullptr};
    T *_block{nullptr};
    int _blockColumns{0};
    /** Columns that were trimmed off the front: data() begins with that column of the signal. */
    int64_t _firstColumn{0};
    /** Ranges of whole blocks of columns, so that a trim need not look at each value again. Blocks
     *  are counted along the signal, from _firstBlock on. */
    std::vector<ValueRange> _blockRanges;
    int64_t _firstBlock{0};
    int _maxColumns{-1};
    int _columns{0};
    int _front{0};
    int _head{0};
    int _rows{0};
    int _columnInterval{1};
    bool _isFinished{false};
    int _pendingSamples{0};
    std::vector<T> _peaks; /**< of the pending samples, for each band */
    double _samplingFrequency{0};
    double _maximumSeconds{-1};
    double _minimum{0};
    double _maximum{0};
    SpectrogramSettings _settings;
};

extern template class Spectrogram<float>;
extern template class Spectrogram<double>;

} // namespace Gui
} // namespace Norvu
