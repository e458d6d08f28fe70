// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/math/filter.h>

#include <complex>
#include <vector>

namespace Tellarix {
namespace Math {
namespace Filtering {
namespace IIR {

/** A second-order section H(z) = (b0 + b1/z + b2/z^2) / (1 + a1/z + a2/z^2). */
struct TELLARIX_CORE_API Biquad
{
    double b0{1};
    double b1{0};
    double b2{0};
    double a1{0};
    double a2{0};

    /** Value at the angular frequency @p omega in radians per sample. */
    std::complex<double> response(double omega) const;
};

/** Which frequencies a Butterworth filter lets through. */
enum class Band
{
    Lowpass,
    Highpass,
    Bandpass,
    Bandstop,
};

/**
 * Sections of a digital Butterworth filter: the analogue prototype, its band transformation and the
 * bilinear transform with pre-warped corners (Oppenheim and Schafer, Discrete-Time Signal
 * Processing, chapter 7). A band form of order n has n sections, the others (n + 1) / 2.
 *
 * @param order              order of the prototype, 1 and above
 * @param lower, upper       corner frequencies in Hz; the low-pass uses upper, the high-pass lower
 * @param samplingFrequency  in Hz
 * @return nothing if a corner is not above 0, not below the Nyquist frequency or not a number, if
 *         the corners are not in ascending order, or if the order is below 1
 */
TELLARIX_CORE_API std::vector<Biquad> butterworthSections(Band band, int order, double lower,
                                                          double upper, double samplingFrequency);

/**
 * A filter of second-order sections in transposed direct form II, with coefficients and state in
 * double. A sample that is not finite gives not-a-number and leaves the state as it was.
 *
 * Without a usable sampling frequency (not above 0, not finite) samples stay as they are. With
 * corners that do not fit the sampling frequency isValid() is false and all finite samples become
 * 0: such a band holds no signal.
 */
template <typename T>
class TELLARIX_CORE_API Butterworth : public InPlaceFilter<T>
{
public:
    Butterworth(Band band, int order, double lower, double upper, double samplingFrequency = 0);
    ~Butterworth() override;

    Band band() const { return _band; }
    int order() const { return _order; }
    double lowerCorner() const { return _lower; }
    double upperCorner() const { return _upper; }
    const std::vector<Biquad> &sections() const { return _sections; }
    /** False as long as there is no sampling frequency that the corners fit. */
    bool isValid() const { return !_sections.empty(); }
    /** Complex response at a frequency in Hz. */
    std::complex<double> response(double frequency) const;

    void setSamplingFrequency(double samplingFrequency) override;
    /** Order and corner, or order and both corners. */
    int setParameters(int n, const double *parameters) override;
    void apply(int n, T *samples) override;
    InPlaceFilter<T> *clone() const override;

private:
    struct State
    {
        double first{0};
        double second{0};
    };

    template <int Count>
    void run(int n, T *samples);
    static inline void runCascade(int n, T *samples, const Biquad *sections, State *states,
                                  int count);
    void runBlock(int n, T *samples);
    void checkState();

    Band _band;
    int _order;
    double _lower;
    double _upper;
    double _samplingFrequency{0};
    std::vector<Biquad> _sections;
    std::vector<State> _states;
    int _samplesSinceCheck{0};
};

/** Passes what lies below @p corner (Hz). */
template <typename T>
class ButterworthLowpass : public Butterworth<T>
{
public:
    ButterworthLowpass(int order, double corner, double samplingFrequency = 0)
        : Butterworth<T>(Band::Lowpass, order, 0, corner, samplingFrequency)
    {}
};

/** Passes what lies above @p corner (Hz). */
template <typename T>
class ButterworthHighpass : public Butterworth<T>
{
public:
    ButterworthHighpass(int order, double corner, double samplingFrequency = 0)
        : Butterworth<T>(Band::Highpass, order, corner, 0, samplingFrequency)
    {}
};

/** Passes what lies between two corners (Hz). */
template <typename T>
class ButterworthBandpass : public Butterworth<T>
{
public:
    ButterworthBandpass(int order, double lower, double upper, double samplingFrequency = 0)
        : Butterworth<T>(Band::Bandpass, order, lower, upper, samplingFrequency)
    {}
};

/** Takes out what lies between two corners (Hz). */
template <typename T>
class ButterworthBandstop : public Butterworth<T>
{
public:
    ButterworthBandstop(int order, double lower, double upper, double samplingFrequency = 0)
        : Butterworth<T>(Band::Bandstop, order, lower, upper, samplingFrequency)
    {}
};

extern template class Butterworth<float>;
extern template class Butterworth<double>;

} // namespace IIR
} // namespace Filtering
} // namespace Math
} // namespace Tellarix
