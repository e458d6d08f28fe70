// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/envelope.h>

#include <hwy/cache_control.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace Tellarix {
namespace {

/** Samples per pixel from which on columns are reduced. */
constexpr double DenseSamples = 2;
/** Longest record in pixels that counts to one column as a whole. */
constexpr double SnappedRecord = 0.5;
/** Blocks per pixel from which on column edges are moved to block edges. */
constexpr double SnappedBlocks = 3;
/** Ends of stretches that are remembered while others are drawn over them. */
constexpr size_t RememberedTails = 4;
/** Columns for which room is made beforehand. */
constexpr int UsualColumns = 8192;
/** Samples converted, or columns worked out, at a time. */
constexpr int ChunkSize = 256;
/** How many records ahead a span, a record, its array and its samples are fetched into the cache.
 */
constexpr int SpanAhead = 32;
constexpr int RecordAhead = 8;
constexpr int ArrayAhead = 5;
constexpr int SamplesAhead = 3;

/** Where a stretch was left for another one. */
struct Tail
{
    Core::Time end;
    double x{0};
    double value{0};
};

int columnAt(double x)
{
    constexpr double Limit = 1 << 30;
    const double limited = std::clamp(x, -Limit, Limit);
    const int truncated = static_cast<int>(limited);
    return truncated - (limited < truncated);
}

EnvelopeColumn pointAt(double x, double value)
{
    return {columnAt(x), x, x, value, value, value, value};
}

/** Where the line from the last value of @p a to the first value of @p b passes @p x. */
EnvelopeColumn crossing(const EnvelopeColumn &a, const EnvelopeColumn &b, double x)
{
    const double share = (x - a.lastX) / (b.firstX - a.lastX);
    return pointAt(x, a.last + share * (b.first - a.last));
}

/** What follows from a sampling frequency. */
struct SampleGrid
{
    double samplingFrequency{0};
    double step{0}; /**< between samples in pixels */
    double samplesPerPixel{0};
    int alignment{1}; /**< samples at whose multiples column edges lie, a power of two */
};

class EnvelopeBuilder
{
public:
    EnvelopeBuilder(const RecordSequence &records, const Core::TimeWindow &window,
                    double pixelsPerSecond, EnvelopeDetail detail, Envelope &envelope);

    void build();

private:
    double xOf(Core::Time time) const;
    double doubleColumnEnd(int column) const;

    void addRecords(const RecordBlock &block, int begin, int end);
    bool fitsColumn(const RecordSpan &span) const;
    bool widenOpenColumn(const RecordSpan &span);
    void addSpan(const RecordSpan &span);
    void prefetch(const RecordBlock &block, int position, int end) const;
    const SampleGrid &gridOf(double samplingFrequency);
    void addRecord(const Record *record, const RecordSpan &span);
    void addSamples(const NumericArray &data, int first, int last, double x, double step);
    void addColumns(const NumericArray &data, int first, int last, double x, bool isFinite);
    void addRuns(const NumericArray &data, const int *columns, const int *edges, int count,
                 double x, double step, bool isFinite);
    EnvelopeColumn *appendColumns(int count);
    void addTornRun(const NumericArray &data, int column, int first, int last, double x,
                    double step);

    void join(const RecordSpan &span);
    bool isOpenEmpty() const { return _envelope.columns.size() == _open.begin; }
    void add(const EnvelopeColumn &column, bool merge);
    void breakStretch(EnvelopeStretch::Cause cause);
    void closeStretch();
    void widenRange(const EnvelopeStretch &stretch);
    void cutStretch(EnvelopeStretch &stretch);
    bool mergesIntoPrevious(const EnvelopeStretch &stretch) const;

    const RecordSequence &_records;
    Core::TimeWindow _window;
    double _pixelsPerSecond;
    double _startUSecs;
    double _pixelsPerUSec;
    double _uSecsPerPixel;
    double _longestSnapped;     /**< of records in microseconds */
    double _longestInterval;    /**< of dense samples, in seconds */
    double _doubleColumnEnd{0}; /**< twice the microseconds where the open column ends */
    EnvelopeDetail _detail;
    int _columnCount;
    SampleGrid _grid;
    Envelope &_envelope;
    EnvelopeStretch _open{0, 0, EnvelopeStretch::Begin};
    bool _openIsDense{false};
    bool _previousIsDense{false};
    Core::Time _end;
    std::array<Tail, RememberedTails> _tails;
    size_t _nextTail{0};
};

EnvelopeBuilder::EnvelopeBuilder(const RecordSequence &records, const Core::TimeWindow &window,
                                 double pixelsPerSecond, EnvelopeDetail detail, Envelope &envelope)
    : _records(records), _window(window), _pixelsPerSecond(pixelsPerSecond),
      _startUSecs(static_cast<double>(window.startTime().usecs())),
      _pixelsPerUSec(pixelsPerSecond * 1E-6), _uSecsPerPixel(1 / _pixelsPerUSec),
      _longestSnapped(SnappedRecord / _pixelsPerUSec),
      _longestInterval(1 / (pixelsPerSecond * DenseSamples)), _detail(detail), _envelope(envelope)
{
    constexpr double MostColumns = 1 << 24;
    constexpr double Rounding = 1E-6;
    const double width = std::ceil(_window.length().length() * _pixelsPerSecond - Rounding);
    _columnCount = static_cast<int>(std::clamp(width, 1.0, MostColumns));
}

double EnvelopeBuilder::xOf(Core::Time time) const
{
    return (static_cast<double>(time.usecs()) - _startUSecs) * _pixelsPerUSec;
}

double EnvelopeBuilder::doubleColumnEnd(int column) const
{
    return 2 * (_startUSecs + (column + 1) * _uSecsPerPixel);
}

void EnvelopeBuilder::build()
{
    const int first = std::max(0, _records.firstEndingAfter(_window.startTime()) - 1);
    const int last = std::min(_records.size(), _records.firstStartingFrom(_window.endTime()) + 1);
    if (_detail == EnvelopeDetail::EverySample) {
        for (int i = first; i < last; ++i)
            addRecord(_records.at(i), _records.span(i));
    } else {
        _envelope.columns.reserve(static_cast<size_t>(std::min(_columnCount, UsualColumns)) + 2);
        for (int i = first, position; i < last;) {
            const RecordBlock &block = _records.blockOf(i, position);
            const int end = std::min(block.end(), position + last - i);
            addRecords(block, position, end);
            i += end - position;
        }
    }
    closeStretch();
}

/** Adds the records of a block from position @p begin to @p end. */
void EnvelopeBuilder::addRecords(const RecordBlock &block, int begin, int end)
{
    const Core::TimeSpan longest(SnappedRecord / _pixelsPerSecond);
    for (int i = begin, next; i < end; i = next) {
        const RecordSpan &span = block.widestSpan(i, end, longest, next);
        hwy::Prefetch(&span + SpanAhead);
        if (widenOpenColumn(span))
            continue;
        if (fitsColumn(span)) {
            addSpan(span);
            continue;
        }
        prefetch(block, i, end);
        addRecord(block.record(i).get(), span);
    }
}

/** True if @p span can be drawn without a look at its samples. */
bool EnvelopeBuilder::fitsColumn(const RecordSpan &span) const
{
    if (!span.isWhole || span.sampleInterval * _pixelsPerSecond * DenseSamples > 1)
        return false;
    const double begin = xOf(span.start);
    const double end = xOf(span.end);
    return end - begin <= SnappedRecord || (end - begin <= 1 && columnAt(begin) == columnAt(end));
}

/** The usual case of a view over many records, a shortcut of addSpan(). */
bool EnvelopeBuilder::widenOpenColumn(const RecordSpan &span)
{
    const auto begin = static_cast<double>(span.start.usecs());
    const auto end = static_cast<double>(span.end.usecs());
    if (!span.isWhole || span.start != _end || isOpenEmpty() || !_openIsDense ||
        begin + end >= _doubleColumnEnd || end - begin > _longestSnapped ||
        span.sampleInterval > _longestInterval)
        return false;

    _end = span.end;
    EnvelopeColumn &open = _envelope.columns.back();
    open.lastX = (end - _startUSecs) * _pixelsPerUSec - span.sampleInterval * _pixelsPerSecond;
    open.minimum = std::min(open.minimum, span.minimum);
    open.maximum = std::max(open.maximum, span.maximum);
    open.last = span.lastValue();
    return true;
}

void EnvelopeBuilder::addSpan(const RecordSpan &span)
{
    join(span);
    const double begin = xOf(span.start);
    const double end = xOf(span.end);
    const int column = columnAt(0.5 * (begin + end));
    const double last = std::max(begin, end - span.sampleInterval * _pixelsPerSecond);
    add({column, begin, last, span.firstValue(), span.minimum, span.maximum, span.lastValue()},
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
    const double spacing = record->samplingFrequency() / _pixelsPerSecond;
    if (!record->data() || !(spacing >= DenseSamples))
        return;
    const double x = xOf(block.span(position + SamplesAhead).start);
    record->data()->prefetchRuns((columnAt(x) + 1 - x) * spacing, spacing, _grid.alignment);
}

/** Divisions that need not be done for each record. */
const SampleGrid &EnvelopeBuilder::gridOf(double samplingFrequency)
{
    if (samplingFrequency == _grid.samplingFrequency)
        return _grid;

    _grid.samplingFrequency = samplingFrequency;
    _grid.step = _pixelsPerSecond / samplingFrequency;
    _grid.samplesPerPixel = 1 / _grid.step;
    _grid.alignment = 1;
    int block = NumericArray::BlockSize;
    for (int level = 0; level < NumericArray::Levels; ++level, block *= NumericArray::BlockRatio) {
        if (_grid.step * block * SnappedBlocks <= 1)
            _grid.alignment = block;
    }
    return _grid;
}

void EnvelopeBuilder::addRecord(const Record *record, const RecordSpan &span)
{
    if (span.end <= span.start || record->dataType() == DataType::Char)
        return;

    const NumericArray &data = *record->data();
    const double x = xOf(span.start);
    const double step = gridOf(record->samplingFrequency()).step;
    if (!(step > 0))
        return;

    int first = 0;
    int last = data.size();
    if (x < 0 || x + last * step > _columnCount) {
        const double before = std::ceil(-x / step) - 1;
        const double behind = std::ceil((_columnCount - x) / step) + 1;
        first = static_cast<int>(std::clamp(before, 0.0, data.size() - 1.0));
        last = static_cast<int>(std::clamp(behind, first + 1.0, double(data.size())));
    }

    join(span);
    if (_detail == EnvelopeDetail::EverySample || step * DenseSamples > 1 || last - first == 1)
        addSamples(data, first, last, x, step);
    else
        addColumns(data, first, last, x, span.isWhole);
}

void EnvelopeBuilder::addSamples(const NumericArray &data, int first, int last, double x,
                                 double step)
{
    double samples[ChunkSize];
    for (int from = first; from < last; from += ChunkSize) {
        const int to = std::min(last, from + ChunkSize);
        data.convert(from, to, samples);
        for (int i = from; i < to; ++i) {
            const double value = samples[i - from];
            if (std::isfinite(value))
                add(pointAt(x + i * step, value), false);
            else
                breakStretch(EnvelopeStretch::NotFinite);
        }
    }
}

void EnvelopeBuilder::addColumns(const NumericArray &data, int first, int last, double x,
                                 bool isFinite)
{
    const double step = _grid.step;
    const double samplesPerPixel = _grid.samplesPerPixel;
    const int64_t alignment = _grid.alignment;
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
        addRuns(data, columns, edges, count, x, step, isFinite);
    }
}

void EnvelopeBuilder::addRuns(const NumericArray &data, const int *columns, const int *edges,
                              int count, double x, double step, bool isFinite)
{
    if (!isFinite && data.firstNonFinite(edges[0], edges[count]) < edges[count]) {
        for (int i = 0; i < count; ++i)
            addTornRun(data, columns[i], edges[i], edges[i + 1], x, step);
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
        add(column, true);
    } while (++i < count && columns[i] <= _envelope.columns.back().column);

    // Filled in place: a copy of what was just written value by value would have to wait for it.
    EnvelopeColumn *target = appendColumns(count - i);
    for (; i < count; ++i)
        fill(*target++, i);
    _doubleColumnEnd = doubleColumnEnd(_envelope.columns.back().column);
}

EnvelopeColumn *EnvelopeBuilder::appendColumns(int count)
{
    const size_t size = _envelope.columns.size();
    _envelope.columns.resize(size + static_cast<size_t>(count));
    return _envelope.columns.data() + size;
}

/** Keeps what joins the columns at both sides and takes all between holes as one stretch. */
void EnvelopeBuilder::addTornRun(const NumericArray &data, int column, int first, int last,
                                 double x, double step)
{
    const auto addFinite = [&](int from, int to) {
        const int edges[] = {from, to};
        if (from < to)
            addRuns(data, &column, edges, 1, x, step, true);
    };
    const int hole = data.firstNonFinite(first, last);
    addFinite(first, hole);
    if (hole == last)
        return;

    breakStretch(EnvelopeStretch::NotFinite);
    const int lastHole = data.lastNonFinite(hole, last);

    double minimum, maximum;
    if (data.extrema(hole, lastHole, minimum, maximum)) {
        add({column, x + hole * step, x + lastHole * step, minimum, minimum, maximum, maximum},
            true);
        breakStretch(EnvelopeStretch::NotFinite);
    }
    addFinite(lastHole + 1, last);
}

/** Begins a new stretch unless @p span goes on where the last record ended. */
void EnvelopeBuilder::join(const RecordSpan &span)
{
    const Core::Time end = _end;
    _end = span.end;
    if (!end.valid() || span.continues(end))
        return;

    if (!isOpenEmpty()) {
        const EnvelopeColumn &tail = _envelope.columns.back();
        _tails[_nextTail++ % RememberedTails] = {end, tail.lastX, tail.last};
    }
    breakStretch(span.start < end ? EnvelopeStretch::Overlap : EnvelopeStretch::Gap);

    // A record that goes on behind another one than the last is joined to that by a point of it.
    const auto left = std::find_if(_tails.begin(), _tails.end(), [&](const Tail &tail) {
        return tail.end.valid() && span.continues(tail.end);
    });
    if (left != _tails.end())
        add(pointAt(left->x, left->value), false);
}

void EnvelopeBuilder::add(const EnvelopeColumn &column, bool merge)
{
    std::vector<EnvelopeColumn> &columns = _envelope.columns;
    const bool begins = isOpenEmpty();
    // Whole records and blocks may count to a column before the one where they begin.
    const int index = begins ? column.column : std::max(column.column, columns.back().column);

    if (begins)
        _openIsDense = merge;
    if (begins || !merge || columns.back().column != index) {
        columns.push_back(column);
        columns.back().column = index;
        _doubleColumnEnd = doubleColumnEnd(index);
        return;
    }
    EnvelopeColumn &open = columns.back();
    open.lastX = column.lastX;
    open.last = column.last;
    open.minimum = std::min(open.minimum, column.minimum);
    open.maximum = std::max(open.maximum, column.maximum);
}

void EnvelopeBuilder::breakStretch(EnvelopeStretch::Cause cause)
{
    closeStretch();
    _open.cause = cause;
}

void EnvelopeBuilder::closeStretch()
{
    EnvelopeStretch closed = _open;
    closed.end = _envelope.columns.size();
    if (closed.begin == closed.end)
        return;

    if (mergesIntoPrevious(closed)) {
        const EnvelopeColumn &column = _envelope.columns.back();
        EnvelopeColumn &previous = _envelope.columns[closed.begin - 1];
        previous.minimum = std::min(previous.minimum, column.minimum);
        previous.maximum = std::max(previous.maximum, column.maximum);
        previous.lastX = std::max(previous.lastX, column.lastX);
        previous.last = column.last;
        _envelope.columns.pop_back();
        widenRange(_envelope.stretches.back());
    } else {
        cutStretch(closed);
        if (closed.begin < closed.end) {
            widenRange(closed);
            _envelope.stretches.push_back(closed);
            _previousIsDense = _openIsDense;
        }
    }
    _open.begin = _envelope.columns.size();
}

void EnvelopeBuilder::widenRange(const EnvelopeStretch &stretch)
{
    constexpr double Infinity = std::numeric_limits<double>::infinity();
    double minimum = Infinity;
    double maximum = -Infinity;
    for (size_t i = stretch.begin; i < stretch.end; ++i) {
        const EnvelopeColumn &column = _envelope.columns[i];
        if (column.column < 0 || column.column >= _columnCount)
            continue;
        minimum = std::min(minimum, column.minimum);
        maximum = std::max(maximum, column.maximum);
    }
    if (minimum > maximum)
        return;
    const bool isFirst = _envelope.minimum > _envelope.maximum;
    _envelope.minimum = isFirst ? minimum : std::min(_envelope.minimum, minimum);
    _envelope.maximum = isFirst ? maximum : std::max(_envelope.maximum, maximum);
}

bool EnvelopeBuilder::mergesIntoPrevious(const EnvelopeStretch &stretch) const
{
    if (_envelope.stretches.empty() || !_openIsDense || !_previousIsDense)
        return false;
    const EnvelopeStretch &previous = _envelope.stretches.back();
    return stretch.end - stretch.begin == 1 && previous.end - previous.begin == 1 &&
           _envelope.columns[stretch.begin].column == _envelope.columns[previous.begin].column;
}

/** Takes away what lies outside of the window save one point on each side. */
void EnvelopeBuilder::cutStretch(EnvelopeStretch &stretch)
{
    std::vector<EnvelopeColumn> &columns = _envelope.columns;
    const auto begin = columns.begin() + static_cast<std::ptrdiff_t>(stretch.begin);
    auto first = begin;
    auto last = columns.end() - 1;
    if (last->column < 0 || first->column >= _columnCount) {
        columns.erase(begin, columns.end());
        stretch.end = stretch.begin;
        return;
    }

    while (first != last && (first + 1)->column < 0)
        ++first;
    while (last != first && (last - 1)->column >= _columnCount)
        --last;
    const double right = _columnCount;
    if (first != last && first->lastX < -1 && (first + 1)->firstX > -1)
        *first = crossing(*first, *(first + 1), -1);
    if (first != last && last->firstX > right && (last - 1)->lastX < right)
        *last = crossing(*(last - 1), *last, right);
    columns.erase(last + 1, columns.end());
    columns.erase(begin, first);
    stretch.end = columns.size();
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
