// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/math/butterworth.h>
#include <tellarix/core/math/runningmean.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace Norvu {
namespace Gui {

/** The columns of a matrix that a block of samples fills, in a ring. */
template <typename T>
struct MatrixColumns
{
    T *data;
    size_t rows;
    size_t columns;
    size_t head; /**< column of the first sample that is stored */
    size_t skip; /**< samples at the begin of the block that are filtered, but not stored */

    /** Column of sample @p i, which is not skipped. */
    T *of(size_t i) const { return data + (head + i - skip) % columns * rows; }
};

/** Columns of the largest values of each row among so many samples. */
template <typename T>
struct PeakColumns
{
    T *data;    /**< a column of rows for each interval that is completed */
    T *pending; /**< largest values since the last column, NoPeak without any; carried on */
    size_t rows;
    size_t interval;       /**< samples of a column */
    size_t pendingSamples; /**< samples since the last column */
};

/** Smallest and largest finite value. */
struct ValueRange
{
    double minimum{std::numeric_limits<double>::infinity()};
    double maximum{-std::numeric_limits<double>::infinity()};

    void widen(double value);
    void widen(const ValueRange &other);
};

/**
 * Runs the bands of a spectrogram side by side in vector lanes.
 *
 * Each band is the chain that Spectrogram::addFilter() makes: a running-mean high-pass, which all
 * bands share, a band-pass of four sections, an envelope and a moving average. Arithmetic and
 * state are in double; results are those of the chain in double but for rounding, and don't depend
 * on how a signal is cut into blocks. As in the chain, a sample that is not finite gives
 * not-a-number and changes no state. A band in which a sum overflows begins afresh.
 */
class FilterBank
{
public:
    static constexpr int Sections = 4;

    struct Band
    {
        int highPassLength;                                           /**< in samples */
        std::vector<Tellarix::Math::Filtering::IIR::Biquad> sections; /**< none: no signal */
        double slopeGain;  /**< of the envelope's first difference */
        int averageLength; /**< in samples */
    };

    /**
     * Appends a band.
     * @return false if it is no such band, if it does not share the high-pass of the others, or if
     *         these have seen samples already
     */
    bool add(const Band &band);
    void clear();
    size_t bandCount() const { return _bandCount; }
    /** Bytes of the state of all bands. */
    size_t memorySize() const;

    /**
     * Filters @p n samples into the first bandCount() rows of @p target, as far as it has them;
     * big blocks with all processors.
     * @return range of the values that are stored and of the first one of row 0
     */
    template <typename T>
    ValueRange apply(int n, const T *samples, const MatrixColumns<T> &target);

    /** Filters @p n samples into columns of peaks, with as many rows at least as there are bands;
     *  big blocks with all processors. A column of nothing but samples that are not finite is
     *  NoPeak. */
    template <typename T>
    void applyPeaks(int n, const T *samples, const PeakColumns<T> &target);

    /** Below any envelope. */
    static constexpr double NoPeak = -1;
    /** Bands whose numbers stand side by side: one line of the cache. */
    static constexpr size_t Width = 8;
    /** Samples that all bands work on before the next ones, so that their values stay in the
     *  first-level cache. */
    static constexpr size_t TileLength = 96;
    struct alignas(64) Lanes
    {
        double values[Width];
    };

    /** Coefficients and state of neighbouring bands; lanes behind the last band repeat it. */
    struct Group
    {
        Lanes gain;
        Lanes a1[Sections];
        Lanes a2[Sections];
        Lanes slopeGain;
        Lanes length;
        Lanes first[Sections];
        Lanes second[Sections];
        Lanes last;
        Lanes sum;
        Lanes low;
        Lanes high;
        Lanes peak; /**< largest values since the last column of peaks */
        int64_t lengths[Width];
        int64_t longest;
        /** Envelopes of the last samples, at least those of the longest window. */
        std::vector<Lanes> history;
        size_t next; /**< row of the next sample */
        int64_t seen;
        bool isOverflown; /**< in the present block */

        void set(size_t lane, const Band &band);
        void restart();
        void beginRange();
        void makeRoom(size_t n);
        void fadeOut();
        void sumAfresh();
    };

private:
    struct Input;

    template <typename T>
    Input highPass(int n, const T *samples);
    template <typename T>
    double run(size_t first, size_t last, const Input &input, const MatrixColumns<T> &target);
    static std::vector<size_t> columnEnds(const Input &input, size_t interval, size_t pending);
    template <typename T>
    void runPeaks(size_t number, const Input &input, const std::vector<size_t> &ends,
                  const PeakColumns<T> &target);
    template <typename T>
    bool collectRange(ValueRange &range) const;
    template <typename T>
    ValueRange rangeOf(size_t n, const MatrixColumns<T> &target) const;

    size_t _bandCount{0};
    std::vector<Group> _groups;
    Tellarix::Math::Filtering::MeanWindow _highPass;
};

} // namespace Gui
} // namespace Norvu
