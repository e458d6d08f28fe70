// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/envelope.h>

#include <tellarix/core/records/envelopesamples_p.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/recordsequence.h>

#include <hwy/cache_control.h>

#include <algorithm>
#include <cmath>

namespace Tellarix {
namespace {

/** Samples per pixel from which on columns are reduced. */
constexpr double DenseSamples = 2;
/** Longest record in pixels that counts to one column as a whole. */
constexpr double SnappedRecord = 0.5;
/** Columns for which room is made beforehand. */
constexpr int UsualColumns = 8192;
/** How many records ahead a digest, a record, its array and its samples are fetched into the cache.
 */
constexpr int DigestsAhead = 32;
constexpr int RecordAhead = 8;
constexpr int ArrayAhead = 5;
constexpr int SamplesAhead = 3;

/** Goes over the records of a window and decides how each of them becomes columns. */
class EnvelopeBuilder
{
public:
    EnvelopeBuilder(const RecordSequence &records, const Core::TimeWindow &window,
                    double pixelsPerSecond, EnvelopeDetail detail, Envelope &envelope);

    void build();

private:
    void addRecords(const RecordBlock &block, int begin, int end);
    bool fitsColumn(const RecordDigest &digest) const;
    void addDigest(const RecordDigest &digest);
    void prefetch(const RecordBlock &block, int position, int end) const;
    const SampleGrid &gridOf(double samplingFrequency);
    void addRecord(const Record *record, const RecordDigest &digest);

    const RecordSequence &_records;
    Core::TimeWindow _window;
    EnvelopeScale _scale;
    double _longestSnapped;  /**< of records in microseconds */
    double _longestInterval; /**< of dense samples, in seconds */
    EnvelopeDetail _detail;
    SampleGrid _grid;
    Envelope &_envelope;
    EnvelopeStretches _stretches;
};

EnvelopeBuilder::EnvelopeBuilder(const RecordSequence &records, const Core::TimeWindow &window,
                                 double pixelsPerSecond, EnvelopeDetail detail, Envelope &envelope)
    : _records(records), _window(window), _scale(window, pixelsPerSecond),
      _longestSnapped(SnappedRecord / _scale.pixelsPerUSec),
      _longestInterval(1 / (pixelsPerSecond * DenseSamples)), _detail(detail), _envelope(envelope),
      _stretches(_scale, envelope)
{}

void EnvelopeBuilder::build()
{
    const int first = std::max(0, _records.firstEndingAfter(_window.startTime()) - 1);
    const int last = std::min(_records.size(), _records.firstStartingFrom(_window.endTime()) + 1);
    if (_detail == EnvelopeDetail::EverySample) {
        for (int i = first; i < last; ++i)
            addRecord(_records.at(i), _records.digest(i));
    } else {
        _envelope.columns.reserve(static_cast<size_t>(std::min(_scale.columnCount, UsualColumns)) +
                                  2);
        for (int i = first, position; i < last;) {
            const RecordBlock &block = _records.blockOf(i, position);
            const int end = std::min(block.end(), position + last - i);
            addRecords(block, position, end);
            i += end - position;
        }
    }
    _stretches.close();
}

/** Adds the records of a block from position @p begin to @p end. */
void EnvelopeBuilder::addRecords(const RecordBlock &block, int begin, int end)
{
    const Core::TimeSpan longest(SnappedRecord / _scale.pixelsPerSecond);
    for (int i = begin, next; i < end; i = next) {
        const RecordDigest &digest = block.widestDigest(i, end, longest, next);
        hwy::Prefetch(&digest + DigestsAhead);
        if (_stretches.widen(digest, _longestSnapped, _longestInterval))
            continue;
        if (fitsColumn(digest)) {
            addDigest(digest);
            continue;
        }
        prefetch(block, i, end);
        addRecord(block.record(i).get(), digest);
    }
}

/** True if @p digest can be drawn without a look at its samples. */
bool EnvelopeBuilder::fitsColumn(const RecordDigest &digest) const
{
    if (!digest.isWhole || digest.sampleInterval * _scale.pixelsPerSecond * DenseSamples > 1)
        return false;
    const double begin = _scale.xOf(digest.start);
    const double end = _scale.xOf(digest.end);
    return end - begin <= SnappedRecord || (end - begin <= 1 && columnAt(begin) == columnAt(end));
}

void EnvelopeBuilder::addDigest(const RecordDigest &digest)
{
    _stretches.join(digest);
    const double begin = _scale.xOf(digest.start);
    const double end = _scale.xOf(digest.end);
    const int column = columnAt(0.5 * (begin + end));
    const double last = std::max(begin, end - digest.sampleInterval * _scale.pixelsPerSecond);
    _stretches.add({column, begin, last, digest.firstValue(), digest.minimum, digest.maximum,
                    digest.lastValue()},
                   true);
}

/** Has what the records behind @p position need on the way by the time that it is read. */
void EnvelopeBuilder::prefetch(const RecordBlock &block, int position, int end) const
{
    if (position + RecordAhead < end)
        hwy::Prefetch(block.record(position + RecordAhead).get());
    if (position + ArrayAhead < end)
        hwy::Prefetch(block.record(position + ArrayAhead)->data());
    if (position + SamplesAhead >= end)
        return;

    const Record *record = block.record(position + SamplesAhead).get();
    const double spacing = record->samplingFrequency() / _scale.pixelsPerSecond;
    if (!record->data() || !(spacing >= DenseSamples))
        return;
    const double x = _scale.xOf(block.digest(position + SamplesAhead).start);
    record->data()->prefetchRuns((columnAt(x) + 1 - x) * spacing, spacing, _grid.alignment);
}

/** Divisions that need not be done for each record. */
const SampleGrid &EnvelopeBuilder::gridOf(double samplingFrequency)
{
    if (samplingFrequency != _grid.samplingFrequency)
        _grid = SampleGrid(samplingFrequency, _scale.pixelsPerSecond);
    return _grid;
}

void EnvelopeBuilder::addRecord(const Record *record, const RecordDigest &digest)
{
    if (digest.end <= digest.start || record->dataType() == DataType::Char)
        return;

    const NumericArray &data = *record->data();
    const double x = _scale.xOf(digest.start);
    const double step = gridOf(record->samplingFrequency()).step;
    if (!(step > 0))
        return;

    int first = 0;
    int last = data.size();
    if (x < 0 || x + last * step > _scale.columnCount) {
        const double before = std::ceil(-x / step) - 1;
        const double behind = std::ceil((_scale.columnCount - x) / step) + 1;
        first = static_cast<int>(std::clamp(before, 0.0, data.size() - 1.0));
        last = static_cast<int>(std::clamp(behind, first + 1.0, double(data.size())));
    }

    _stretches.join(digest);
    if (_detail == EnvelopeDetail::EverySample || step * DenseSamples > 1 || last - first == 1)
        addSamples(_stretches, data, first, last, x, step);
    else
        addColumns(_stretches, data, first, last, x, _grid, digest.isWhole);
}

} // namespace

Envelope makeEnvelope(const RecordSequence &records, const Core::TimeWindow &window,
                      double pixelsPerSecond, EnvelopeDetail detail)
{
    Envelope envelope;
    makeEnvelope(envelope, records, window, pixelsPerSecond, detail);
    return envelope;
}

void makeEnvelope(Envelope &envelope, const RecordSequence &records, const Core::TimeWindow &window,
                  double pixelsPerSecond, EnvelopeDetail detail)
{
    const Envelope empty;
    envelope.columns.clear();
    envelope.stretches.clear();
    envelope.minimum = empty.minimum;
    envelope.maximum = empty.maximum;
    if (window.isEmpty() || !(pixelsPerSecond > 0) || !std::isfinite(pixelsPerSecond))
        return;
    EnvelopeBuilder(records, window, pixelsPerSecond, detail, envelope).build();
}

} // namespace Tellarix
