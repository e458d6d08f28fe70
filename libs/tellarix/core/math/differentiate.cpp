// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/math/differentiate.h>

#include <tellarix/core/math/finite_p.h>

namespace Tellarix {
namespace Math {
namespace Filtering {

template <typename T>
Differentiate<T>::Differentiate(double samplingFrequency) : _samplingFrequency(samplingFrequency)
{}

template <typename T>
Differentiate<T>::~Differentiate() = default;

template <typename T>
void Differentiate<T>::setSamplingFrequency(double samplingFrequency)
{
    _samplingFrequency = samplingFrequency;
    _previous = 0;
    _started = false;
}

template <typename T>
int Differentiate<T>::setParameters(int, const double *)
{
    return 0;
}

template <typename T>
void Differentiate<T>::apply(int n, T *samples)
{
    if (!isSamplingFrequency(_samplingFrequency))
        return;
    forEachFinite(n, samples, [&](double sample) {
        const double difference = _started ? sample - _previous : 0.0;
        _started = true;
        _previous = sample;
        return difference * _samplingFrequency;
    });
}

template <typename T>
InPlaceFilter<T> *Differentiate<T>::clone() const
{
    return new Differentiate<T>(_samplingFrequency);
}

template class Differentiate<float>;
template class Differentiate<double>;

} // namespace Filtering
} // namespace Math
} // namespace Tellarix
