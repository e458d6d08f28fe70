// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/math/integrate.h>

#include <tellarix/core/math/finite_p.h>

namespace Tellarix {
namespace Math {
namespace Filtering {

template <typename T>
Integrate<T>::Integrate(double samplingFrequency) : _samplingFrequency(samplingFrequency)
{}

template <typename T>
Integrate<T>::~Integrate() = default;

template <typename T>
void Integrate<T>::setSamplingFrequency(double samplingFrequency)
{
    _samplingFrequency = samplingFrequency;
    _sum = 0;
    _previous = 0;
    _started = false;
}

template <typename T>
int Integrate<T>::setParameters(int, const double *)
{
    return 0;
}

template <typename T>
void Integrate<T>::apply(int n, T *samples)
{
    if (!isSamplingFrequency(_samplingFrequency))
        return;
    const double halfInterval = 0.5 / _samplingFrequency;
    forEachFinite(n, samples, [&](double sample) {
        if (_started)
            _sum += (_previous + sample) * halfInterval;
        _started = true;
        _previous = sample;
        return _sum;
    });
}

template <typename T>
InPlaceFilter<T> *Integrate<T>::clone() const
{
    return new Integrate<T>(_samplingFrequency);
}

template class Integrate<float>;
template class Integrate<double>;

} // namespace Filtering
} // namespace Math
} // namespace Tellarix
