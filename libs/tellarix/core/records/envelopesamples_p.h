// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/envelopestretches_p.h>

namespace Tellarix {

/** What follows from a sampling frequency. */
struct SampleGrid
{
    SampleGrid() = default;
    SampleGrid(double samplingFrequency, double pixelsPerSecond);

    double samplingFrequency{0};
    double step{0}; /**< between samples in pixels */
    double samplesPerPixel{0};
    int alignment{1}; /**< samples at whose multiples column edges lie, a power of two */
};

// Samples of a record from index first up to last, the sample at index 0 standing at x, become
// columns of the stretch that is open.

/** Keeps all samples. */
void addSamples(EnvelopeStretches &stretches, const NumericArray &data, int first, int last,
                double x, double step);

/** Reduces the samples to first, smallest, largest and last value of each column.
 *  @param isFinite  true if all samples are known to be finite */
void addColumns(EnvelopeStretches &stretches, const NumericArray &data, int first, int last,
                double x, const SampleGrid &grid, bool isFinite);

} // namespace Tellarix
