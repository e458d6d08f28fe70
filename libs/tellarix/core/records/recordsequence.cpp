// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/recordsequence.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace Tellarix {
namespace {

constexpr int LevelShift = 4;
static_assert(1 << LevelShift == RecordSequence::LevelRatio);

float rounded(double value)
{
    constexpr double Limit = std::numeric_limits<float>::max();
    return static_cast<float>(std::clamp(value, -Limit, Limit));
}

RecordSpan spanOf(const Record *record)
{
    constexpr double Infinity = std::numeric_limits<double>::infinity();
    const SampleSummary &summary = record->summary();
    const Core::TimeWindow window = record->timeWindow();
    RecordSpan span{window.startTime(), window.endTime(), Infinity, -Infinity, 0, 0, 0, false};
    if (summary.isEmpty())
        return span;

    const int n = record->sampleCount();
    span.minimum = summary.minimum;
    span.maximum = summary.maximum;
    span.isWhole = record->hasEndTime() && summary.count == n;
    span.first = rounded(record->data()->value(0));
    span.last = rounded(record->data()->value(n - 1));
    if (record->hasEndTime())
        span.sampleInterval = rounded(1 / record->samplingFrequency());
    return span;
}

bool isSame(const Record *a, const Record *b)
{
    if (a->sampleCount() == 0 && b->sampleCount() == 0)
        return true;
    if (a->sampleCount() != b->sampleCount() || a->dataType() != b->dataType())
        return false;
    const auto bytes =
        static_cast<size_t>(a->sampleCount()) * static_cast<size_t>(a->data()->elementSize());
    return std::memcmp(a->data()->data(), b->data()->data(), bytes) == 0;
}

void widen(std::pair<double, double> &range, double minimum, double maximum)
{
    range.first = std::min(range.first, minimum);
    range.second = std::max(range.second, maximum);
}

/** Numbers of the entries whose children all lie in [first, last). */
std::pair<int64_t, int64_t> parentsOf(int64_t first, int64_t last)
{
    return {(first + RecordSequence::LevelRatio - 1) >> LevelShift, last >> LevelShift};
}

} // namespace

RecordSequence::RecordSequence(double tolerance) : _tolerance(tolerance > 0 ? tolerance : 0)
{}

RecordSequence::~RecordSequence() = default;

void RecordSequence::clear()
{
    _records.clear();
    _spans.clear();
    _reaches.clear();
    _levels.clear();
    _firstNumber = 0;
}

Core::TimeWindow RecordSequence::timeWindow() const
{
    return isEmpty() ? Core::TimeWindow() : Core::TimeWindow(_spans[0].start, _reaches[size() - 1]);
}

int RecordSequence::firstEndingAfter(Core::Time time) const
{
    // Ends are in no order, but the first reach behind the time belongs to the record looked for.
    const auto reach = std::upper_bound(_reaches.begin(), _reaches.end(), time);
    return static_cast<int>(reach - _reaches.begin());
}

int RecordSequence::firstStartingFrom(Core::Time time) const
{
    const auto before = [](const RecordSpan &span, Core::Time t) { return span.start < t; };
    const auto span = std::lower_bound(_spans.begin(), _spans.end(), time, before);
    return static_cast<int>(span - _spans.begin());
}

/**
 * Calls @p inside(first, last) for runs of records that lie in the window with all their samples,
 * and @p partial(record, first sample, last sample) for others that have samples in it.
 */
template <typename Inside, typename Partial>
void RecordSequence::walkWindow(const Core::TimeWindow *window, Inside inside,
                                Partial partial) const
{
    if (!window || !window->valid()) {
        inside(0, size());
        return;
    }
    if (window->isEmpty())
        return;

    const auto single = [&](int index) {
        const RecordSpan &span = _spans[index];
        if (span.start >= window->startTime() && span.end <= window->endTime()) {
            inside(index, index + 1);
        } else if (span.end > window->startTime() || span.start >= window->startTime()) {
            const Record *record = at(index);
            partial(record, record->sampleIndex(window->startTime()),
                    record->sampleIndex(window->endTime()));
        }
    };

    const int firstInside = firstStartingFrom(window->startTime());
    const int last = firstStartingFrom(window->endTime());
    const int lastInside = std::min(last, firstEndingAfter(window->endTime()));
    for (int i = firstEndingAfter(window->startTime()); i < firstInside; ++i)
        single(i);
    if (firstInside < lastInside)
        inside(firstInside, lastInside);
    for (int i = std::max(firstInside, lastInside); i < last; ++i)
        single(i);
}

std::pair<double, double> RecordSequence::amplitudeRange(const Core::TimeWindow *window) const
{
    constexpr double Infinity = std::numeric_limits<double>::infinity();
    std::pair<double, double> range(Infinity, -Infinity);
    double low, high;
    walkWindow(
        window,
        [&](int first, int last) {
            if (recordExtrema(first, last, low, high))
                widen(range, low, high);
        },
        [&](const Record *record, int first, int last) {
            if (record->data() && record->data()->extrema(first, last, low, high))
                widen(range, low, high);
        });
    return range.first <= range.second ? range : std::make_pair(0.0, 0.0);
}

SampleSummary RecordSequence::summary(const Core::TimeWindow *window) const
{
    SampleSummary result;
    walkWindow(
        window, [&](int first, int last) { result.add(recordSummary(first, last)); },
        [&](const Record *record, int first, int last) {
            if (record->data())
                result.add(record->data()->summary(first, last));
        });
    return result;
}

bool RecordSequence::recordExtrema(int first, int last, double &minimum, double &maximum) const
{
    constexpr double Infinity = std::numeric_limits<double>::infinity();
    std::pair<double, double> range(Infinity, -Infinity);
    walkLevels(
        std::max(0, first), std::min(size(), last),
        [&](int from, int to) {
            for (int i = from; i < to; ++i)
                widen(range, _spans[i].minimum, _spans[i].maximum);
        },
        [&](const Level &level, int64_t from, int64_t to) {
            for (int64_t i = from; i < to; ++i) {
                const SampleSummary &entry = level.at(i).summary;
                if (!entry.isEmpty())
                    widen(range, entry.minimum, entry.maximum);
            }
        });
    if (range.first > range.second)
        return false;
    minimum = range.first;
    maximum = range.second;
    return true;
}

/**
 * Splits a run of records into records at its edges, for which it calls @p onRecords(first, last),
 * and entries of levels between, for which it calls @p onEntries(level, first, last).
 */
template <typename OnRecords, typename OnEntries>
void RecordSequence::walkLevels(int first, int last, OnRecords onRecords, OnEntries onEntries) const
{
    if (first >= last)
        return;

    int64_t from = _firstNumber + first;
    int64_t to = _firstNumber + last;
    const auto take = [&](size_t depth, int64_t begin, int64_t end) {
        if (begin >= end)
            return;
        if (depth == 0)
            onRecords(static_cast<int>(begin - _firstNumber), static_cast<int>(end - _firstNumber));
        else
            onEntries(_levels[depth - 1], begin, end);
    };
    for (size_t depth = 0;; ++depth) {
        const auto parents = parentsOf(from, to);
        if (depth == _levels.size() || parents.first >= parents.second) {
            take(depth, from, to);
            return;
        }
        take(depth, from, parents.first * LevelRatio);
        take(depth, parents.second * LevelRatio, to);
        from = parents.first;
        to = parents.second;
    }
}

SampleSummary RecordSequence::recordSummary(int first, int last) const
{
    SampleSummary result;
    walkLevels(
        std::max(0, first), std::min(size(), last),
        [&](int from, int to) {
            for (int i = from; i < to; ++i)
                result.add(at(i)->summary());
        },
        [&](const Level &level, int64_t from, int64_t to) {
            for (int64_t i = from; i < to; ++i)
                result.add(level.at(i).summary);
        });
    return result;
}

const RecordSpan &RecordSequence::widestEntry(int index, int last, Core::TimeSpan longest,
                                              int &next) const
{
    const RecordSpan *widest = &_spans[index];
    int64_t number = _firstNumber + index;
    int64_t records = 1;
    for (const Level &level : _levels) {
        records *= LevelRatio;
        if (number % LevelRatio || index + records > last)
            break;
        number >>= LevelShift;
        const RecordSpan &span = level.at(number).span;
        if (!span.isWhole || span.end - span.start > longest)
            break;
        widest = &span;
        next = static_cast<int>(index + records);
    }
    return *widest;
}

std::vector<Core::TimeWindow> RecordSequence::gaps() const
{
    std::vector<Core::TimeWindow> result;
    Core::Time reach;
    for (int i = 0; i < size(); ++i) {
        const RecordSpan &span = _spans[i];
        if (span.end <= span.start)
            continue;
        if (reach.valid() && span.start > reach && span.start - reach > toleranceOf(at(i)))
            result.emplace_back(reach, span.start);
        reach = std::max(reach, span.end);
    }
    return result;
}

std::vector<Core::TimeWindow> RecordSequence::overlaps() const
{
    std::vector<Core::TimeWindow> result;
    Core::Time reach;
    for (int i = 0; i < size(); ++i) {
        const RecordSpan &span = _spans[i];
        const Core::Time end = std::min(reach, span.end);
        if (span.start < end && end - span.start > toleranceOf(at(i))) {
            if (!result.empty() && span.start <= result.back().endTime())
                result.back().setEndTime(std::max(result.back().endTime(), end));
            else
                result.emplace_back(span.start, end);
        }
        reach = std::max(reach, span.end);
    }
    return result;
}

size_t RecordSequence::memorySize() const
{
    size_t bytes = sizeof(*this) + _records.memorySize() + _spans.memorySize() +
                   _reaches.memorySize() + _levels.capacity() * sizeof(Level);
    for (const Level &level : _levels)
        bytes += level.entries.memorySize();
    for (const RecordCPtr &record : _records)
        bytes += sizeof(Record) + (record->data() ? record->data()->memorySize() : 0);
    return bytes;
}

Core::TimeSpan RecordSequence::toleranceOf(const Record *record) const
{
    if (!record->hasEndTime() || record->sampleCount() == 0)
        return {};
    return Core::TimeSpan(_tolerance / record->samplingFrequency());
}

bool RecordSequence::covers(const Record *record) const
{
    if (isEmpty() || record->startTime() > _reaches[size() - 1])
        return false;
    if (!record->hasEndTime() || record->sampleCount() == 0)
        return holdsTwinOf(record);

    const Core::TimeSpan tolerance = toleranceOf(record);
    const Core::TimeSpan length = record->endTime() - record->startTime();
    const Core::TimeSpan margin =
        std::min(tolerance, Core::TimeSpan::FromUSecs(length.usecs() / 2));
    const Core::Time first = record->startTime() + margin;
    const Core::Time last = record->endTime() - margin;

    Core::Time reach = first;
    Core::Time latestStart = first;
    for (int i = firstEndingAfter(first); i < size() && _spans[i].start <= latestStart; ++i) {
        if (_spans[i].end <= reach || _spans[i].end == _spans[i].start)
            continue;
        reach = _spans[i].end;
        latestStart = reach + tolerance;
        if (reach >= last)
            return true;
    }
    return false;
}

bool RecordSequence::holdsTwinOf(const Record *record) const
{
    const Core::Time start = record->startTime();
    for (int i = firstStartingFrom(start); i < size() && _spans[i].start == start; ++i) {
        if (isSame(at(i), record))
            return true;
    }
    return false;
}

bool RecordSequence::insert(const Record *record)
{
    const RecordCPtr held(record);
    if (!held || !held->startTime().valid() || covers(record))
        return false;

    place(held);
    return true;
}

void RecordSequence::place(const RecordCPtr &record)
{
    if (isEmpty() || _spans[size() - 1].start <= record->startTime()) {
        append(record);
        return;
    }
    const auto after = [](Core::Time t, const RecordSpan &span) { return t < span.start; };
    const auto position =
        std::upper_bound(_spans.begin(), _spans.end(), record->startTime(), after);
    insertAt(static_cast<int>(position - _spans.begin()), record);
}

void RecordSequence::append(const RecordCPtr &record)
{
    const RecordSpan span = spanOf(record.get());
    _reaches.append(isEmpty() ? span.end : std::max(_reaches[size() - 1], span.end));
    _records.append(record);
    _spans.append(span);
    addToLevels({span, record->summary()});
}

void RecordSequence::insertAt(int index, const RecordCPtr &record)
{
    const bool front = _records.shiftsFront(index);
    const RecordSpan span = spanOf(record.get());
    _records.insert(index, record);
    _spans.insert(index, span);
    _reaches.insert(index, index > 0 ? std::max(_reaches[index - 1], span.end) : span.end);
    raiseReaches(index);

    if (front) {
        --_firstNumber;
        updateLevels(0, index + 1);
    } else {
        updateLevels(index, size());
    }
}

void RecordSequence::raiseReaches(int index)
{
    const Core::Time reach = _reaches[index];
    for (int i = index + 1; i < size() && _reaches[i] < reach; ++i)
        _reaches[i] = reach;
}

void RecordSequence::removeFront(int count)
{
    if (count >= size()) {
        RecordSequence::clear();
        return;
    }
    if (count <= 0)
        return;

    _records.removeFront(count);
    _spans.removeFront(count);
    _reaches.removeFront(count);
    Core::Time reach;
    for (int i = 0; i < size(); ++i) {
        reach = std::max(reach, _spans[i].end);
        if (_reaches[i] == reach)
            break;
        _reaches[i] = reach;
    }

    _firstNumber += count;
    int64_t number = _firstNumber;
    for (Level &level : _levels) {
        number >>= LevelShift;
        if (number > level.first)
            level.entries.removeFront(static_cast<int>(number - level.first));
        level.first = number;
    }
}

void RecordSequence::removeIf(const std::function<bool(const Record *)> &remove)
{
    std::vector<RecordCPtr> kept;
    for (const RecordCPtr &record : _records) {
        if (!remove(record.get()))
            kept.push_back(record);
    }
    if (kept.size() == static_cast<size_t>(size()))
        return;

    RecordSequence::clear();
    for (const RecordCPtr &record : kept)
        append(record);
}

void RecordSequence::Entry::add(const Entry &next)
{
    span.isWhole = span.isWhole && next.span.isWhole && next.span.continues(span.end);
    span.end = next.span.end;
    span.minimum = std::min(span.minimum, next.span.minimum);
    span.maximum = std::max(span.maximum, next.span.maximum);
    span.last = next.span.last;
    summary.add(next.summary);
}

void RecordSequence::addToLevels(const Entry &last)
{
    int64_t entry = _firstNumber + size() - 1;
    for (Level &level : _levels) {
        entry >>= LevelShift;
        if (entry == level.end())
            level.entries.append(last);
        else
            level.at(entry).add(last);
    }
    addTopLevel();
}

void RecordSequence::addTopLevel()
{
    const bool none = _levels.empty();
    if ((none ? size() : _levels.back().entries.size()) <= LevelRatio)
        return;

    const int64_t first = (none ? _firstNumber : _levels.back().first) >> LevelShift;
    const int64_t end = none ? _firstNumber + size() : _levels.back().end();
    _levels.emplace_back();
    _levels.back().first = first;
    updateLevel(_levels.size() - 1, first, ((end - 1) >> LevelShift) + 1);
}

/** Works out the entries again that hold records from index @p first to @p last. */
void RecordSequence::updateLevels(int first, int last)
{
    int64_t from = _firstNumber + first;
    int64_t to = _firstNumber + last;
    for (size_t level = 0; level < _levels.size(); ++level) {
        from >>= LevelShift;
        to = ((to - 1) >> LevelShift) + 1;
        updateLevel(level, from, to);
    }
    addTopLevel();
}

void RecordSequence::updateLevel(size_t index, int64_t first, int64_t last)
{
    Level &level = _levels[index];
    for (; first < level.first; --level.first)
        level.entries.insert(0, Entry());
    if (level.end() < last)
        level.entries.resize(static_cast<int>(last - level.first));
    for (int64_t number = first; number < last; ++number)
        level.at(number) = combinedEntry(index, number);
}

RecordSequence::Entry RecordSequence::combinedEntry(size_t level, int64_t number) const
{
    const int64_t begin = number * LevelRatio;
    const int64_t end = begin + LevelRatio;
    if (level == 0) {
        const int first = static_cast<int>(std::max(begin, _firstNumber) - _firstNumber);
        const int last = static_cast<int>(std::min(end - _firstNumber, int64_t(size())));
        Entry result{_spans[first], at(first)->summary()};
        for (int i = first + 1; i < last; ++i)
            result.add({_spans[i], at(i)->summary()});
        return result;
    }
    const Level &below = _levels[level - 1];
    const int64_t first = std::max(begin, below.first);
    Entry result = below.at(first);
    for (int64_t i = first + 1; i < std::min(end, below.end()); ++i)
        result.add(below.at(i));
    return result;
}

} // namespace Tellarix
