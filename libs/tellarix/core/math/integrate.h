// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/math/filter.h>

namespace Tellarix {
namespace Math {
namespace Filtering {

/**
 * Integral over time from the first sample on, by the trapezoid rule; the first value is 0.
 *
 * At low frequencies the rule is exact to second order. A mean in the samples becomes a ramp, so
 * put a high pass in front. A sample that is not finite gives not-a-number and is passed over.
 * Without a sampling frequency samples stay as they are.
 */
template <typename T>
class TELLARIX_CORE_API Integrate : public InPlaceFilter<T>
{
public:
    explicit Integrate(double samplingFrequency = 0);
    ~Integrate() override;

    void setSamplingFrequency(double samplingFrequency) override;
    /** Takes none. */
    int setParameters(int n, const double *parameters) override;
    void apply(int n, T *samples) override;
    InPlaceFilter<T> *clone() const override;

private:
    double _samplingFrequency{0};
    double _sum{0};
    double _previous{0};
    bool _started{false};
};

extern template class Integrate<float>;
extern template class Integrate<double>;

} // namespace Filtering
} // namespace Math
} // namespace Tellarix
