// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/math/filter.h>

namespace Tellarix {
namespace Math {
namespace Filtering {

/**
 * Derivative with respect to time: the difference from the previous sample times the sampling
 * frequency. The first value is 0.
 *
 * The difference looks back only, since a central one needs a sample that has not come yet: the
 * result is exact for straight lines and stands half a sample late; at the frequency f its gain is
 * 2 fs sin(pi f / fs), 0.6 % low at an eighth of the Nyquist frequency. A sample that is not finite
 * gives not-a-number and is passed over. Without a sampling frequency samples stay as they are.
 */
template <typename T>
class TELLARIX_CORE_API Differentiate : public InPlaceFilter<T>
{
public:
    explicit Differentiate(double samplingFrequency = 0);
    ~Differentiate() override;

    void setSamplingFrequency(double samplingFrequency) override;
    /** Takes none. */
    int setParameters(int n, const double *parameters) override;
    void apply(int n, T *samples) override;
    InPlaceFilter<T> *clone() const override;

private:
    double _samplingFrequency{0};
    double _previous{0};
    bool _started{false};
};

extern template class Differentiate<float>;
extern template class Differentiate<double>;

} // namespace Filtering
} // namespace Math
} // namespace Tellarix
