// SPDX-License-Identifier: LGPL-3.0-or-later

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

/** Samples of a block of which findRunExtrema() can be given the extrema. */
constexpr int ExtremaBlock = 64;

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
 * Extrema of @p runs neighbouring runs of @p n samples: cheaper than findExtrema() for each.
 * @param edges  ascending indices, one more than there are runs: a run takes the samples from its
 *               edge up to the next one
 * @param blockMinima, blockMaxima  extrema of each ExtremaBlock samples, read instead of the
 *               samples of whole blocks inside a run, of which the last of all may be short;
 *               null if they are not known
 */
template <typename T>
void findRunExtrema(const T *samples, size_t n, const int *edges, size_t runs, T *minima, T *maxima,
                    const T *blockMinima = nullptr, const T *blockMaxima = nullptr);

/**
 * Extrema of consecutive blocks of samples, and the sums of groups of such blocks. The last block
 * and the last group may be short.
 *
 * @param blockSize       samples of a block, at least 1
 * @param blocksInSum     blocks of a group, at least 1; at most 32768 samples
 * @param minima, maxima  one entry for each block; one without a finite sample has its minimum
 *                        above its maximum
 * @param sums            one entry for each group
 * @return true if all samples are finite
 */
template <typename T>
bool summarizeBlocks(const T *samples, size_t n, size_t blockSize, size_t blocksInSum, T *minima,
                     T *maxima, double *sums);

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
TELLARIX_CORE_API void findRunExtrema(const int *, size_t, const int *, size_t, int *, int *,
                                      const int *, const int *);
template <>
TELLARIX_CORE_API void findRunExtrema(const float *, size_t, const int *, size_t, float *, float *,
                                      const float *, const float *);
template <>
TELLARIX_CORE_API void findRunExtrema(const double *, size_t, const int *, size_t, double *,
                                      double *, const double *, const double *);
template <>
TELLARIX_CORE_API bool summarizeBlocks(const int *, size_t, size_t, size_t, int *, int *, double *);
template <>
TELLARIX_CORE_API bool summarizeBlocks(const float *, size_t, size_t, size_t, float *, float *,
                                       double *);
template <>
TELLARIX_CORE_API bool summarizeBlocks(const double *, size_t, size_t, size_t, double *, double *,
                                       double *);

} // namespace Math
} // namespace Tellarix
