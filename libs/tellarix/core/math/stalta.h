// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/math/runningmean.h>

namespace Tellarix {
namespace Math {
namespace Filtering {

/**
 * Ratio of the short to the long term average of the absolute amplitudes, as triggers use it.
 *
 * Both averages are plain means over windows that end with the present sample. As long as fewer
 * samples than a window holds have been seen, its average is the mean of these: the ratio begins
 * at 1 and an onset can't be missed because the long window is still filling. Where the long term
 * average is 0 the ratio is 0. A sample that is not finite gives not-a-number and enters neither
 * window. Without a sampling frequency samples stay as they are.
 */
template <typename T>
class TELLARIX_CORE_API StaLta : public InPlaceFilter<T>
{
public:
    /** @param sta, lta  lengths of the windows in seconds; one below a sample holds one */
    StaLta(double sta, double lta, double samplingFrequency = 0);
    ~StaLta() override;

    double sta() const { return _sta; }
    double lta() const { return _lta; }

    void setSamplingFrequency(double samplingFrequency) override;
    /** Both lengths in seconds; the short one has to be below the long one. */
    int setParameters(int n, const double *parameters) override;
    void apply(int n, T *samples) override;
    InPlaceFilter<T> *clone() const override;

private:
    double ratio(double amplitude);

    double _sta;
    double _lta;
    double _samplingFrequency{0};
    MeanWindow _shortWindow;
    MeanWindow _longWindow;
    int _zeros{0}; /**< how many of the last samples are 0, counted up to the short window */
};

extern template class StaLta<float>;
extern template class StaLta<double>;

} // namespace Filtering
} // namespace Math
} // namespace Tellarix
