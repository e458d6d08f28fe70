#include <tellarix/core/math/extrema.h>

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace Tellarix {
namespace Math {
namespace {

template <typename T>
bool isFinite(T value)
{
    if constexpr (std::is_floating_point_v<T>)
        return std::isfinite(value);
    else
        return true;
}

} // namespace

template <typename T>
Extrema<T> summarize(const T *samples, size_t n)
{
    Extrema<T> result;
    for (size_t i = 0; i < n; ++i) {
        if (!isFinite(samples[i]))
            continue;
        result.minimum = std::min(result.minimum, samples[i]);
        result.maximum = std::max(result.maximum, samples[i]);
        result.sum += static_cast<double>(samples[i]);
        ++result.count;
    }
    return result;
}

template <typename T>
bool findExtrema(const T *samples, size_t n, T &minimum, T &maximum)
{
    const Extrema<T> result = summarize(samples, n);
    minimum = result.minimum;
    maximum = result.maximum;
    return result.count > 0;
}

template <typename T>
bool summarizeBlocks(const T *samples, size_t n, size_t blockSize, T *minima, T *maxima,
                     double *sums)
{
    size_t finite = 0;
    for (size_t first = 0, block = 0; first < n; first += blockSize, ++block) {
        const Extrema<T> result = summarize(samples + first, std::min(blockSize, n - first));
        minima[block] = result.minimum;
        maxima[block] = result.maximum;
        sums[block] = result.sum;
        finite += result.count;
    }
    return finite == n;
}

template TELLARIX_CORE_API Extrema<int> summarize(const int *, size_t);
template TELLARIX_CORE_API Extrema<float> summarize(const float *, size_t);
template TELLARIX_CORE_API Extrema<double> summarize(const double *, size_t);
template TELLARIX_CORE_API bool findExtrema(const int *, size_t, int &, int &);
template TELLARIX_CORE_API bool findExtrema(const float *, size_t, float &, float &);
template TELLARIX_CORE_API bool findExtrema(const double *, size_t, double &, double &);
template TELLARIX_CORE_API bool summarizeBlocks(const int *, size_t, size_t, int *, int *,
                                                double *);
template TELLARIX_CORE_API bool summarizeBlocks(const float *, size_t, size_t, float *, float *,
                                                double *);
template TELLARIX_CORE_API bool summarizeBlocks(const double *, size_t, size_t, double *, double *,
                                                double *);

} // namespace Math
} // namespace Tellarix
