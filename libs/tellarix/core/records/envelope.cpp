#include <tellarix/core/records/envelope.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace Tellarix {
namespace {

/** Samples per pixel from which on columns are reduced. */
constexpr double DenseSamples = 2;
/** Longest record in pixels that counts to one column as a whole. */
constexpr double SnappedRecord = 0.5;
/** Blocks per pixel from which on column edges are moved to block edges. */
constexpr double SnappedBlocks = 8;
/** Ends of stretches that are remembered while others are drawn over them. */
constexpr size_t RememberedTails = 4;
/** Samples converted at a time. */
constexpr int ChunkSize = 1024;

/** The last sample of a record that is part of the envelope. */
struct Tail
{
    Core::Time end;
    bool isFinite{false};
    double x{0};
    double value{0};
};

int columnAt(double x)
{
    constexpr double Limit = 1 << 30;
    return static_cast<int>(std::floor(std::clamp(x, -Limit, Limit)));
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

class EnvelopeBuilder
{
public:
    EnvelopeBuilder(const RecordSequence &records, const Core::TimeWindow &window,
                    double pixelsPerSecond, EnvelopeDetail detail);

    Envelope build();

private:
    double xOf(Core::Time time) const;

    void addSpan(const RecordSpan &span);
    void addRecord(const Record *record, const RecordSpan &span);
    void addSamples(const NumericArray &data, int first, int last, double x, double step);
    void addColumns(const NumericArray &data, int first, int last, double x, double step);
    void addRun(const NumericArray &data, int column, int first, int last, double x, double step);
    void addTornRun(const NumericArray &data, int column, int first, int last, double x,
                    double step);

    void join(const RecordSpan &span);
    void leaveTail(Core::Time end);
    void add(EnvelopeColumn column, bool merge);
    void breakStretch(EnvelopeStretch::Cause cause);
    void closeStretch();
    void cutStretch(EnvelopeStretch &stretch);
    bool mergesIntoPrevious(const EnvelopeStretch &stretch) const;

    const RecordSequence &_records;
    Core::TimeWindow _window;
    double _pixelsPerSecond;
    EnvelopeDetail _detail;
    int _columnCount;
    Envelope _envelope;
    EnvelopeStretch _open{0, 0, EnvelopeStretch::Begin};
    bool _openIsDense{false};
    bool _previousIsDense{false};
    Tail _tail;
    std::array<Tail, RememberedTails> _tails;
    size_t _nextTail{0};
};

EnvelopeBuilder::EnvelopeBuilder(const RecordSequence &records, const Core::TimeWindow &window,
                                 double pixelsPerSecond, EnvelopeDetail detail)
    : _records(records), _window(window), _pixelsPerSecond(pixelsPerSecond), _detail(detail)
{
    constexpr double MostColumns = 1 << 24;
    constexpr double Rounding = 1E-6;
    const double width = std::ceil(_window.length().length() * _pixelsPerSecond - Rounding);
    _columnCount = static_cast<int>(std::clamp(width, 1.0, MostColumns));
}

double EnvelopeBuilder::xOf(Core::Time time) const
{
    return (time - _window.startTime()).length() * _pixelsPerSecond;
}

Envelope EnvelopeBuilder::build()
{
    const int first = std::max(0, _records.firstEndingAfter(_window.startTime()) - 1);
    const int last = std::min(_records.size(), _records.firstStartingFrom(_window.endTime()) + 1);
    const Core::TimeSpan longest(SnappedRecord / _pixelsPerSecond);
    const bool sparse = _detail == EnvelopeDetail::EverySample;

    for (int i = first, next; i < last; i = next) {
        const RecordSpan &span =
            sparse ? _records.spans()[i] : _records.widestSpan(i, last, longest, next);
        if (sparse)
            next = i + 1;
        if (span.end <= span.start)
            continue;
        const bool dense = span.sampleInterval * _pixelsPerSecond * DenseSamples <= 1;
        const double begin = xOf(span.start);
        const double end = xOf(span.end);
        const bool inOneColumn = end - begin <= SnappedRecord ||
                                 (end - begin <= 1 && std::floor(begin) == std::floor(end));
        if (!sparse && dense && span.isWhole && inOneColumn)
            addSpan(span);
        else
            addRecord(_records.at(i), span);
    }
    closeStretch();
    return std::move(_envelope);
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
    leaveTail(span.end);
}

void EnvelopeBuilder::addRecord(const Record *record, const RecordSpan &span)
{
    if (record->dataType() == DataType::Char)
        return;

    const NumericArray &data = *record->data();
    const double x = xOf(span.start);
    const double step = _pixelsPerSecond / record->samplingFrequency();
    const double before = std::ceil(-x / step) - 1;
    const double behind = std::ceil((_columnCount - x) / step) + 1;
    const int first = static_cast<int>(std::clamp(before, 0.0, data.size() - 1.0));
    const int last = static_cast<int>(std::clamp(behind, first + 1.0, double(data.size())));

    join(span);
    if (_detail == EnvelopeDetail::EverySample || step * DenseSamples > 1 || last - first == 1)
        addSamples(data, first, last, x, step);
    else
        addColumns(data, first, last, x, step);
    leaveTail(span.end);
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
                                 double step)
{
    int64_t alignment = 1;
    for (int64_t block = NumericArray::BlockSize; step * block * SnappedBlocks <= 1;
         block *= NumericArray::BlockRatio)
        alignment = block;

    int column = columnAt(x + first * step);
    for (int from = first; from < last; ++column) {
        const double edge = std::ceil((column + 1 - x) / step);
        int64_t to = static_cast<int64_t>(edge);
        if (alignment > 1)
            to = (to + alignment / 2) / alignment * alignment;
        to = std::min<int64_t>(to, last);
        if (to <= from)
            continue;
        addRun(data, column, from, static_cast<int>(to), x, step);
        from = static_cast<int>(to);
    }
}

void EnvelopeBuilder::addRun(const NumericArray &data, int column, int first, int last, double x,
                             double step)
{
    double minimum, maximum;
    if (data.firstNonFinite(first, last) < last) {
        addTornRun(data, column, first, last, x, step);
        return;
    }
    data.extrema(first, last, minimum, maximum);
    add({column, x + first * step, x + (last - 1) * step, data.value(first), minimum, maximum,
         data.value(last - 1)},
        true);
}

/** Keeps what joins the columns at both sides and takes all between holes as one stretch. */
void EnvelopeBuilder::addTornRun(const NumericArray &data, int column, int first, int last,
                                 double x, double step)
{
    const int hole = data.firstNonFinite(first, last);
    const int lastHole = data.lastNonFinite(first, last);
    if (first < hole)
        addRun(data, column, first, hole, x, step);
    breakStretch(EnvelopeStretch::NotFinite);

    double minimum, maximum;
    if (data.extrema(hole, lastHole, minimum, maximum)) {
        add({column, x + hole * step, x + lastHole * step, minimum, minimum, maximum, maximum},
            true);
        breakStretch(EnvelopeStretch::NotFinite);
    }
    if (lastHole + 1 < last)
        addRun(data, column, lastHole + 1, last, x, step);
}

/** Begins a new stretch unless @p span goes on where the last record ended. */
void EnvelopeBuilder::join(const RecordSpan &span)
{
    if (_tail.end.valid() && span.continues(_tail.end))
        return;

    if (_tail.end.valid())
        _tails[_nextTail++ % RememberedTails] = _tail;
    const bool overlaps = _tail.end.valid() && span.start < _tail.end;
    if (_tail.end.valid())
        breakStretch(overlaps ? EnvelopeStretch::Overlap : EnvelopeStretch::Gap);

    // A record that goes on behind another one than the last is joined to that by a point of it.
    const auto left = std::find_if(_tails.begin(), _tails.end(), [&](const Tail &tail) {
        return tail.isFinite && span.continues(tail.end);
    });
    if (left != _tails.end())
        add(pointAt(left->x, left->value), false);
}

void EnvelopeBuilder::leaveTail(Core::Time end)
{
    _tail.end = end;
    _tail.isFinite = _open.begin < _envelope.columns.size();
    if (!_tail.isFinite)
        return;
    _tail.x = _envelope.columns.back().lastX;
    _tail.value = _envelope.columns.back().last;
}

void EnvelopeBuilder::add(EnvelopeColumn column, bool merge)
{
    std::vector<EnvelopeColumn> &columns = _envelope.columns;
    const bool begins = columns.size() == _open.begin;
    // Whole records and blocks may count to a column before the one where they begin.
    if (!begins)
        column.column = std::max(column.column, columns.back().column);

    if (column.column >= 0 && column.column < _columnCount) {
        if (_envelope.minimum > _envelope.maximum) {
            _envelope.minimum = column.minimum;
            _envelope.maximum = column.maximum;
        } else {
            _envelope.minimum = std::min(_envelope.minimum, column.minimum);
            _envelope.maximum = std::max(_envelope.maximum, column.maximum);
        }
    }

    if (begins)
        _openIsDense = merge;
    if (begins || !merge || columns.back().column != column.column) {
        columns.push_back(column);
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
    } else {
        cutStretch(closed);
        if (closed.begin < closed.end) {
            _envelope.stretches.push_back(closed);
            _previousIsDense = _openIsDense;
        }
    }
    _open.begin = _envelope.columns.size();
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
    if (window.isEmpty() || !(pixelsPerSecond > 0) || !std::isfinite(pixelsPerSecond))
        return {};
    return EnvelopeBuilder(records, window, pixelsPerSecond, detail).build();
}

} // namespace Tellarix
