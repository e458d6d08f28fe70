// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/math/filter.h>

#include <cmath>
#include <limits>

namespace Norvu {
namespace Gui {

/**
 * Envelope of a narrow-band signal about one frequency.
 *
 * The first difference, scaled by 1 / (2 pi f dt), stands in for the quadrature component, so that
 * no Hilbert transform is needed. Without a sampling frequency the envelope is the absolute value.
 * A sample that is not finite gives not-a-number and leaves the state as it was.
 */
template <typename T>
class IIREnvelope : public Tellarix::Math::Filtering::InPlaceFilter<T>
{
public:
    /** @param frequency, samplingFrequency  in Hz */
    explicit IIREnvelope(T frequency, double samplingFrequency = 0) : _frequency(frequency)
    {
        setSamplingFrequency(samplingFrequency);
    }
    ~IIREnvelope() override = default;

    T frequency() const { return _frequency; }
    /** Factor of the first difference; 0 without a sampling frequency. */
    T gain() const { return _gain; }

    void setSamplingFrequency(double samplingFrequency) override
    {
        constexpr double TwoPi = 6.283185307179586;
        const T omega = static_cast<T>(TwoPi * static_cast<double>(_frequency));
        const T dt = static_cast<T>(1.0 / samplingFrequency);
        _lastSample = 0;
        _gain = T(1) / (omega * dt);
        // A band of no frequency holds no signal: an infinite gain would make it not-a-number.
        if (!std::isfinite(_gain))
            _gain = 0;
    }
    /** There are no parameters. */
    int setParameters(int, const double *) override { return 0; }
    void apply(int n, T *samples) override
    {
        const double gain = static_cast<double>(_gain);
        for (int i = 0; i < n; ++i) {
            const T sample = samples[i];
            if (!std::isfinite(sample)) {
                samples[i] = std::numeric_limits<T>::quiet_NaN();
                continue;
            }
            const double x = static_cast<double>(sample);
            const double y = gain * (x - static_cast<double>(_lastSample));
            samples[i] = static_cast<T>(std::sqrt(x * x + y * y));
            _lastSample = sample;
        }
    }
    /** A new envelope of the same frequency without a sampling frequency. */
    Tellarix::Math::Filtering::InPlaceFilter<T> *clone() const override
    {
        return new IIREnvelope<T>(_frequency);
    }

private:
    T _lastSample{0};
    T _frequency;
    T _gain{0};
};

} // namespace Gui
} // namespace Norvu
