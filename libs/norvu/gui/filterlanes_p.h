// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/filterbank_p.h>

#include <cstddef>

namespace Norvu {
namespace Gui {

/**
 * Runs the bands of a group over at most FilterBank::TileLength samples for which it has room.
 * @param target  column of the first sample, with the group's first band
 * @param stride  values from one column to the next
 * @return false if the sum of some band has overflown
 */
template <typename T>
bool filterTile(FilterBank::Group &group, const double *input, size_t n, T *target, size_t stride);

/**
 * The same, but keeps the largest values up to each of @p ends alone, FilterBank::Width for each of
 * those that are reached; group.peak goes on behind the last one.
 * @param ends   ascending numbers of samples, the last one beyond @p first + @p n
 * @param first  number of the first sample
 */
template <typename T>
bool findTilePeaks(FilterBank::Group &group, const double *input, size_t n, T *peaks,
                   const size_t *ends, size_t first);

extern template bool filterTile(FilterBank::Group &, const double *, size_t, float *, size_t);
extern template bool filterTile(FilterBank::Group &, const double *, size_t, double *, size_t);
extern template bool findTilePeaks(FilterBank::Group &, const double *, size_t, float *,
                                   const size_t *, size_t);
extern template bool findTilePeaks(FilterBank::Group &, const double *, size_t, double *,
                                   const size_t *, size_t);

} // namespace Gui
} // namespace Norvu
