// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/envelopesamples_p.h>

#include <cmath>

namespace Tellarix {
namespace {

/** Blocks per pixel from which on column edges are moved to block edges. */
constexpr double SnappedBlocks = 3;
/** Samples converted, or columns worked out, at a time. */
constexpr int ChunkSize = 256;

void addRuns(EnvelopeStretches &stretches, const NumericArray &data, const int *columns,
             const int *edges, int count, double x, double step, bool isFinite);

/** Keeps what joins the columns at both sides and takes all between holes as one stretch. */
void addTornRun(EnvelopeStretches &stretches, const NumericArray &data, int column, int first,
                int last, double x, double step)
{
    const auto addFinite = [&](int from, int to) {
        const int edges[] = {from, to};
        if (from < to)
            addRuns(stretches, data, &column, edges, 1, x, step, true);
    };
    const int hole = data.firstNonFinite(first, last);
    addFinite(first, hole);
    if (hole == last)
        return;

    stretches.breakStretch(EnvelopeStretch::NotFinite);
    const int lastHole = data.lastNonFinite(hole, last);

    double minimum, maximum;
    if (data.extrema(hole, lastHole, minimum, maximum)) {
        stretches.add(
            {column, x + hole * step, x + lastHole * step, minimum, minimum, maximum, maximum},
            true);
        stretches.breakStretch(EnvelopeStretch::NotFinite);
    }
    addFinite(lastHole + 1, last);
}

void addRuns(EnvelopeStretches &stretches, const NumericArray &data, const int *columns,
             const int *edges, int count, double x, double step, bool isFinite)
{
    if (!isFinite && data.firstNonFinite(edges[0], edges[count]) < edges[count]) {
        for (int i = 0; i < count; ++i)
            addTornRun(stretches, data, columns[i], edges[i], edges[i + 1], x, step);
        return;
    }

    SampleRun runs[ChunkSize];
    data.summarizeRuns(edges, count, runs);
    const auto fill = [&](EnvelopeColumn &column, int i) {
        column.column = columns[i];
        column.firstX = x + edges[i] * step;
        column.lastX = x + (edges[i + 1] - 1) * step;
        column.first = runs[i].first;
        column.minimum = runs[i].minimum;
        column.maximum = runs[i].maximum;
        column.last = runs[i].last;
    };
    // Only the first ones can fall into the open column.
    EnvelopeColumn column;
    int i = 0;
    do {
        fill(column, i);
        stretches.add(column, true);
    } while (++i < count && columns[i] <= stretches.lastColumn());

    const int begin = i;
    stretches.append(count - begin,
                     [&](EnvelopeColumn &target, int index) { fill(target, begin + index); });
}

} // namespace

SampleGrid::SampleGrid(double samplingFrequency, double pixelsPerSecond)
    : samplingFrequency(samplingFrequency), step(pixelsPerSecond / samplingFrequency),
      samplesPerPixel(1 / step)
{
    int block = NumericArray::BlockSize;
    for (int level = 0; level < NumericArray::Levels; ++level, block *= NumericArray::BlockRatio) {
        if (step * block * SnappedBlocks <= 1)
            alignment = block;
    }
}

void addSamples(EnvelopeStretches &stretches, const NumericArray &data, int first, int last,
                double x, double step)
{
    double samples[ChunkSize];
    for (int from = first; from < last; from += ChunkSize) {
        const int to = std::min(last, from + ChunkSize);
        data.convert(from, to, samples);
        for (int i = from; i < to; ++i) {
            const double value = samples[i - from];
            if (std::isfinite(value))
                stretches.add(pointAt(x + i * step, value), false);
            else
                stretches.breakStretch(EnvelopeStretch::NotFinite);
        }
    }
}

void addColumns(EnvelopeStretches &stretches, const NumericArray &data, int first, int last,
                double x, const SampleGrid &grid, bool isFinite)
{
    const double step = grid.step;
    const double samplesPerPixel = grid.samplesPerPixel;
    const int64_t alignment = grid.alignment;
    int columns[ChunkSize];
    int edges[ChunkSize + 1];
    int column = columnAt(x + first * step);
    for (int from = first; from < last;) {
        int count = 0;
        edges[0] = from;
        for (; count < ChunkSize && from < last; ++column) {
            const double edge = (column + 1 - x) * samplesPerPixel;
            int64_t to = last;
            if (edge < last) {
                to = static_cast<int64_t>(edge);
                to += edge > static_cast<double>(to);
                to = (to + alignment / 2) & -alignment;
            }
            if (to <= from)
                continue;
            from = static_cast<int>(std::min<int64_t>(to, last));
            columns[count] = column;
            edges[++count] = from;
        }
        addRuns(stretches, data, columns, edges, count, x, step, isFinite);
    }
}

} // namespace Tellarix
