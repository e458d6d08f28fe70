// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/math/runningmean.h>

#include <tellarix/core/math/finite_p.h>

#include <algorithm>
#include <cmath>
#include <new>

namespace Tellarix {
namespace Math {
namespace Filtering {

int MeanWindow::samplesIn(double seconds, double samplingFrequency)
{
    const double samples = std::nearbyint(seconds * samplingFrequency);
    if (!isSamplingFrequency(samplingFrequency) || !std::isfinite(samples))
        return 0;
    return static_cast<int>(std::clamp(samples, 1.0, double(LongestLength)));
}

void MeanWindow::resize(int length)
{
    _length = static_cast<size_t>(length);
    _samples.reset(_length ? static_cast<double *>(std::calloc(_length, sizeof(double))) : nullptr);
    if (_length && !_samples)
        throw std::bad_alloc();
    _sums = Sums();
}

template <typename T, typename Operation>
void MeanWindow::transform(int n, T *samples, Operation operation)
{
    // A copy on the stack, which the compiler keeps in registers.
    Sums sums = _sums;
    forEachFinite(n, samples, [&](double sample) { return operation(sample, push(sums, sample)); });
    _sums = sums;
}

template <typename T>
WindowFilter<T>::WindowFilter(double length, double samplingFrequency) : _length(length)
{
    setSamplingFrequency(samplingFrequency);
}

template <typename T>
WindowFilter<T>::~WindowFilter() = default;

template <typename T>
void WindowFilter<T>::setSamplingFrequency(double samplingFrequency)
{
    _samplingFrequency = samplingFrequency;
    _window.resize(MeanWindow::samplesIn(_length, samplingFrequency));
}

template <typename T>
int WindowFilter<T>::setParameters(int n, const double *parameters)
{
    if (n < 1 || !(parameters[0] > 0 && std::isfinite(parameters[0])))
        return -1;
    _length = parameters[0];
    setSamplingFrequency(_samplingFrequency);
    return 1;
}

template <typename T>
RunningMean<T>::~RunningMean() = default;

template <typename T>
void RunningMean<T>::apply(int n, T *samples)
{
    if (!this->isReady())
        return;
    this->window().transform(n, samples, [](double, double mean) { return mean; });
}

template <typename T>
InPlaceFilter<T> *RunningMean<T>::clone() const
{
    return new RunningMean<T>(this->length(), this->samplingFrequency());
}

template <typename T>
RunningMeanHighPass<T>::~RunningMeanHighPass() = default;

template <typename T>
void RunningMeanHighPass<T>::apply(int n, T *samples)
{
    if (!this->isReady())
        return;
    this->window().transform(n, samples, [](double sample, double mean) { return sample - mean; });
}

template <typename T>
InPlaceFilter<T> *RunningMeanHighPass<T>::clone() const
{
    return new RunningMeanHighPass<T>(this->length(), this->samplingFrequency());
}

template class WindowFilter<float>;
template class WindowFilter<double>;
template class RunningMean<float>;
template class RunningMean<double>;
template class RunningMeanHighPass<float>;
template class RunningMeanHighPass<double>;

} // namespace Filtering
} // namespace Math
} // namespace Tellarix
