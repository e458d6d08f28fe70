// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/baseobject.h>
#include <tellarix/core/math/extrema.h>

#include <cstdint>

namespace Tellarix {

/** Types of samples; the numbers are fixed. */
enum class DataType
{
    Char = 0,   /**< text, 1 byte */
    Int = 1,    /**< 32-bit signed integers */
    Float = 2,  /**< single precision */
    Double = 3, /**< double precision */
};

/** Minimum, maximum and sum of a run of samples. Not-a-number and infinite samples don't count. */
struct SampleSummary
{
    double minimum{0};
    double maximum{0};
    double sum{0};
    int64_t count{0}; /**< finite samples; with 0 the other values mean nothing */

    bool isEmpty() const { return count == 0; }
    double mean() const { return count ? sum / static_cast<double>(count) : 0.0; }

    /** Widens this summary by another one. */
    void add(const SampleSummary &other)
    {
        if (other.isEmpty())
            return;
        if (isEmpty()) {
            *this = other;
            return;
        }
        minimum = other.minimum < minimum ? other.minimum : minimum;
        maximum = other.maximum > maximum ? other.maximum : maximum;
        sum += other.sum;
        count += other.count;
    }
};

/** What a run of samples shows in a pixel column. */
struct SampleRun
{
    double first;
    double minimum;
    double maximum;
    double last;
};

/**
 * A contiguous array of samples of one numeric type, behind a common interface.
 *
 * The array can carry a pyramid: minimum and maximum of each 64, 1024 and 16384 samples, and from
 * the second level on their sum. With it extrema() costs at most a few hundred samples and
 * summary() two thousand, however long the range.
 */
class TELLARIX_CORE_API NumericArray : public Core::BaseObject
{
public:
    /** Samples in a block of the lowest level; each further level takes BlockRatio of them. */
    static constexpr int BlockSize = Math::ExtremaBlock;
    static constexpr int BlockRatio = 16;
    static constexpr int Levels = 3;

    virtual DataType dataType() const = 0;
    /** Number of samples. */
    virtual int size() const = 0;
    /** The samples as they lie in memory; null when there are none. */
    virtual const void *data() const = 0;
    /** Size of one sample in bytes. */
    virtual int elementSize() const = 0;
    /** Memory taken by samples and pyramid in bytes. */
    virtual size_t memorySize() const = 0;

    /** Sample @p index converted to double. */
    virtual double value(int index) const = 0;

    /** Builds the pyramid if there is none yet. Not safe against concurrent readers. */
    virtual void buildPyramid() = 0;

    /** Summary of the samples from @p first up to, but not including, @p last, cut to the array. */
    virtual SampleSummary summary(int first, int last) const = 0;
    SampleSummary summary() const { return summary(0, size()); }

    /**
     * Minimum and maximum of the samples from @p first up to @p last, cut to the array; cheaper
     * than summary().
     * @return false, leaving the results alone, if the range holds no finite sample
     */
    virtual bool extrema(int first, int last, double &minimum, double &maximum) const = 0;

    /**
     * Summarises @p count neighbouring runs of samples, all of which must be finite: run i takes
     * the samples from index @p edges[i] up to, but not including, @p edges[i + 1]. Much cheaper
     * than extrema() for each. Text gives no values.
     * @param edges  strictly ascending indices in the array, one more than there are runs
     */
    virtual void summarizeRuns(const int *edges, int count, SampleRun *runs) const = 0;

    /**
     * Fetches into the cache what summarizeRuns() will read for runs that border on each other at
     * samples @p firstEdge, @p firstEdge + @p spacing and so on; of long arrays only the begin.
     * Takes effect some hundred nanoseconds later.
     * @param spacing    above 0
     * @param alignment  power of two, to multiples of which borders are rounded
     */
    virtual void prefetchRuns(double firstEdge, double spacing, int alignment) const = 0;

    /** Index of the first sample from @p first up to @p last that is not finite; the end of the
     *  range, cut to the array, if all are. Skips whole blocks with the pyramid. */
    virtual int firstNonFinite(int first, int last) const = 0;
    /** Index of the last such sample, -1 if all are finite. */
    virtual int lastNonFinite(int first, int last) const = 0;

    /** Copies the samples from @p first up to @p last, converted, to @p target. */
    virtual void convert(int first, int last, float *target) const = 0;
    virtual void convert(int first, int last, double *target) const = 0;
    virtual void convert(int first, int last, int *target) const = 0;

    /** Mean of the finite samples, 0 if there are none. */
    double mean() const { return summary().mean(); }
    double minimum() const { return summary().minimum; }
    double maximum() const { return summary().maximum; }
};

using ArrayPtr = Core::SmartPointer<NumericArray>;
using ArrayCPtr = Core::SmartPointer<const NumericArray>;

} // namespace Tellarix
