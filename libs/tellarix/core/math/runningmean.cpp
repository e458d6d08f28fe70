#include <tellarix/core/math/runningmean.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Tellarix {
namespace Math {
namespace Filtering {

namespace {

/** Windows beyond this are a mistake in a setting, and would only fill the memory. */
constexpr double LongestWindow = 1 << 28;

template <typename T, typename Operation>
void forEachFinite(int n, T *samples, Operation operation)
{
    for (int i = 0; i < n; ++i) {
        const double sample = static_cast<double>(samples[i]);
        samples[i] = std::isfinite(sample) ? static_cast<T>(operation(sample))
                                           : std::numeric_limits<T>::quiet_NaN();
    }
}

} // namespace

void MeanWindow::resize(int length)
{
    _samples.assign(static_cast<size_t>(length), 0.0);
    _next = 0;
    _count = 0;
    _sum = 0;
    _freshSum = 0;
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
    const double samples = std::nearbyint(_length * samplingFrequency);
    if (!(samplingFrequency > 0) || !std::isfinite(samples)) {
        _window.resize(0);
        return;
    }
    _window.resize(static_cast<int>(std::min(std::max(1.0, samples), LongestWindow)));
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
    MeanWindow &window = this->window();
    forEachFinite(n, samples, [&](double sample) { return window.push(sample); });
}

template <typename T>
InPlaceFilter<T> *RunningMean<T>::clone() const
{
    return new RunningMean<T>(this->length());
}

template <typename T>
RunningMeanHighPass<T>::~RunningMeanHighPass() = default;

template <typename T>
void RunningMeanHighPass<T>::apply(int n, T *samples)
{
    if (!this->isReady())
        return;
    MeanWindow &window = this->window();
    forEachFinite(n, samples, [&](double sample) { return sample - window.push(sample); });
}

template <typename T>
InPlaceFilter<T> *RunningMeanHighPass<T>::clone() const
{
    return new RunningMeanHighPass<T>(this->length());
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
