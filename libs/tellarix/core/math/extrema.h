#pragma once

#include <tellarix/core/api.h>

#include <cstddef>
#include <limits>

namespace Tellarix {
namespace Math {

/** Minimum, maximum and sum of a run of samples; not-a-number and infinite samples don't count. */
template <typename T>
struct Extrema
{
    using Limits = std::numeric_limits<T>;

    T minimum{Limits::has_infinity ? Limits::infinity() : Limits::max()};
    T maximum{Limits::has_infinity ? -Limits::infinity() : Limits::lowest()};
    double sum{0};
    size_t count{0}; /**< finite samples; with 0 the minimum lies above the maximum */
};

// All of them are there for samples of type int, float and double and use the vector instructions
// that the machine has.

/** Extrema and sum of @p n samples; sums are kept in double. */
template <typename T>
Extrema<T> summarize(const T *samples, size_t n);

/**
 * Extrema alone of @p n samples: cheaper than summarize().
 * @return false if no sample is finite; the minimum is then above the maximum
 */
template <typename T>
bool findExtrema(const T *samples, size_t n, T &minimum, T &maximum);

/**
 * Extrema of @p runs neighbouring runs of samples: cheaper than findExtrema() for each.
 * @param edges  ascending indices, one more than there are runs: a run takes the samples from its
 *               edge up to the next one
 */
template <typename T>
void findRunExtrema(const T *samples, const int *edges, size_t runs, T *minima, T *maxima);

/**
 * Extrema and sums of consecutive blocks of @p blockSize samples, the last of which may be short.
 *
 * @param blockSize             at least 1, at most 32768
 * @param minima, maxima, sums  one entry for each block; a block without a finite sample has its
 *                              minimum above its maximum and sum 0
 * @return true if all samples are finite
 */
template <typename T>
bool summarizeBlocks(const T *samples, size_t n, size_t blockSize, T *minima, T *maxima,
                     double *sums);

extern template TELLARIX_CORE_API Extrema<int> summarize(const int *, size_t);
extern template TELLARIX_CORE_API Extrema<float> summarize(const float *, size_t);
extern template TELLARIX_CORE_API Extrema<double> summarize(const double *, size_t);
template <>
TELLARIX_CORE_API bool findExtrema(const int *, size_t, int &, int &);
template <>
TELLARIX_CORE_API bool findExtrema(const float *, size_t, float &, float &);
template <>
TELLARIX_CORE_API bool findExtrema(const double *, size_t, double &, double &);
template <>
TELLARIX_CORE_API void findRunExtrema(const int *, const int *, size_t, int *, int *);
template <>
TELLARIX_CORE_API void findRunExtrema(const float *, const int *, size_t, float *, float *);
template <>
TELLARIX_CORE_API void findRunExtrema(const double *, const int *, size_t, double *, double *);
template <>
TELLARIX_CORE_API bool summarizeBlocks(const int *, size_t, size_t, int *, int *, double *);
template <>
TELLARIX_CORE_API bool summarizeBlocks(const float *, size_t, size_t, float *, float *, double *);
template <>
TELLARIX_CORE_API bool summarizeBlocks(const double *, size_t, size_t, double *, double *,
                                       double *);

} // namespace Math
} // namespace Tellarix
