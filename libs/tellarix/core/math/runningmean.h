// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/math/filter.h>

#include <cstdlib>
#include <memory>

namespace Tellarix {
namespace Math {
namespace Filtering {

/**
 * The mean of the samples that lie at most a given time back, the present one included.
 *
 * As long as fewer samples have been seen, it is the mean of these. The sum is made afresh in each
 * round of the window, so that rounding errors don't grow. A sample that is not finite doesn't
 * enter the window.
 */
class TELLARIX_CORE_API MeanWindow
{
public:
    /** Longer windows are a mistake in a setting. */
    static constexpr int LongestLength = 1 << 28;

    /** Samples of a window, from 1 to LongestLength; 0 without a usable sampling frequency. */
    static int samplesIn(double seconds, double samplingFrequency);
    /** Window of @p length samples, at least one; forgets all samples. Throws std::bad_alloc if
     *  there is no memory for it. */
    void resize(int length);
    int length() const { return static_cast<int>(_length); }
    /** Takes a finite sample in and gives the mean. */
    double push(double sample) { return push(_sums, sample); }
    /** Replaces @p n samples by what @p operation makes of each and the mean; faster than push().
     *  A sample that is not finite becomes not-a-number. For the filters of this header. */
    template <typename T, typename Operation>
    void transform(int n, T *samples, Operation operation);

private:
    struct Sums
    {
        size_t next{0};
        size_t count{0};
        double all{0};
        double fresh{0}; /**< of this round alone */
    };

    double push(Sums &sums, double sample)
    {
        const size_t length = _length;
        double &oldest = _samples[sums.next];
        if (sums.count < length)
            ++sums.count;
        sums.all += sample - oldest; // 0 as long as the window is not full
        oldest = sample;
        sums.fresh += sample;
        if (++sums.next == length) {
            sums.next = 0;
            sums.all = sums.fresh;
            sums.fresh = 0;
        }
        return sums.all / static_cast<double>(sums.count);
    }

    struct Free
    {
        void operator()(double *samples) const { std::free(samples); }
    };

    /** Zeros from the system, which take no memory before they are written to: a long window costs
     *  no more than the samples that it has seen. */
    std::unique_ptr<double[], Free> _samples;
    size_t _length{0};
    Sums _sums;
};

/** Base of the filters that work with the mean of a window of fixed length in seconds. */
template <typename T>
class TELLARIX_CORE_API WindowFilter : public InPlaceFilter<T>
{
public:
    /** @param length  in seconds; a window below one sample holds one */
    explicit WindowFilter(double length, double samplingFrequency = 0);
    ~WindowFilter() override;

    double length() const { return _length; }

    void setSamplingFrequency(double samplingFrequency) override;
    /** One parameter: the length in seconds, above 0. */
    int setParameters(int n, const double *parameters) override;

protected:
    /** False without a usable sampling frequency: samples then stay as they are. */
    bool isReady() const { return _window.length() > 0; }
    double samplingFrequency() const { return _samplingFrequency; }
    MeanWindow &window() { return _window; }

private:
    double _length;
    double _samplingFrequency{0};
    MeanWindow _window;
};

/** Replaces each sample by the running mean. */
template <typename T>
class TELLARIX_CORE_API RunningMean : public WindowFilter<T>
{
public:
    using WindowFilter<T>::WindowFilter;
    ~RunningMean() override;
    void apply(int n, T *samples) override;
    InPlaceFilter<T> *clone() const override;
};

/** Subtracts the running mean from each sample. */
template <typename T>
class TELLARIX_CORE_API RunningMeanHighPass : public WindowFilter<T>
{
public:
    using WindowFilter<T>::WindowFilter;
    ~RunningMeanHighPass() override;
    void apply(int n, T *samples) override;
    InPlaceFilter<T> *clone() const override;
};

extern template class WindowFilter<float>;
extern template class WindowFilter<double>;
extern template class RunningMean<float>;
extern template class RunningMean<double>;
extern template class RunningMeanHighPass<float>;
extern template class RunningMeanHighPass<double>;

} // namespace Filtering
} // namespace Math
} // namespace Tellarix
