// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/math/stalta.h>

#include <tellarix/core/math/finite_p.h>

#include <algorithm>
#include <cmath>

namespace Tellarix {
namespace Math {
namespace Filtering {

template <typename T>
StaLta<T>::StaLta(double sta, double lta, double samplingFrequency) : _sta(sta), _lta(lta)
{
    setSamplingFrequency(samplingFrequency);
}

template <typename T>
StaLta<T>::~StaLta() = default;

template <typename T>
void StaLta<T>::setSamplingFrequency(double samplingFrequency)
{
    _samplingFrequency = samplingFrequency;
    _shortWindow.resize(MeanWindow::samplesIn(_sta, samplingFrequency));
    _longWindow.resize(MeanWindow::samplesIn(_lta, samplingFrequency));
    _zeros = 0;
}

template <typename T>
int StaLta<T>::setParameters(int n, const double *parameters)
{
    if (n < 2)
        return -n - 1;
    for (int i = 0; i < 2; ++i) {
        if (!(parameters[i] > 0 && std::isfinite(parameters[i])))
            return -i - 1;
    }
    if (parameters[1] <= parameters[0])
        return -2;

    _sta = parameters[0];
    _lta = parameters[1];
    setSamplingFrequency(_samplingFrequency);
    return 2;
}

template <typename T>
double StaLta<T>::ratio(double amplitude)
{
    const double sta = _shortWindow.push(amplitude);
    const double lta = _longWindow.push(amplitude);
    // Running sums keep rounding errors, whose ratio would be anything, when a signal falls silent.
    _zeros = amplitude == 0 ? std::min(_zeros + 1, _shortWindow.length()) : 0;
    if (_zeros == _shortWindow.length() || !(sta > 0) || !(lta > 0))
        return 0;
    return sta / lta;
}

template <typename T>
void StaLta<T>::apply(int n, T *samples)
{
    if (_shortWindow.length() == 0 || _longWindow.length() == 0)
        return;
    forEachFinite(n, samples, [this](double sample) { return ratio(std::abs(sample)); });
}

template <typename T>
InPlaceFilter<T> *StaLta<T>::clone() const
{
    return new StaLta<T>(_sta, _lta, _samplingFrequency);
}

template class StaLta<float>;
template class StaLta<double>;

} // namespace Filtering
} // namespace Math
} // namespace Tellarix
