// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/filteredrecords_p.h>

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/recordsequence.h>
#include <tellarix/core/records/typedarray.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace Tellarix {
namespace Gui {

namespace {

// So many at once share memory; those of a row that grows do not, as they come and go one by one.
constexpr int ManyRecords = 64;

bool canFilter(const Record &record)
{
    return record.dataType() != DataType::Char && record.samplingFrequency() > 0 &&
           record.hasEndTime();
}

bool continues(const Record &record, const Record &next)
{
    if (!canFilter(record) || !canFilter(next))
        return false;
    if (record.samplingFrequency() != next.samplingFrequency())
        return false;
    const double distance = (next.startTime() - record.endTime()).length();
    return std::abs(distance) * record.samplingFrequency() <= 0.5;
}

/** Index of @p record in @p sequence, -1 if it isn't there. */
int indexOf(const RecordSequence &sequence, const Record *record)
{
    const Core::Time start = record->startTime();
    for (int i = sequence.firstStartingFrom(start); i < sequence.size(); ++i) {
        if (sequence.at(i) == record)
            return i;
        if (sequence.at(i)->startTime() != start)
            break;
    }
    return -1;
}

bool isFinite(double sample)
{
    return std::isfinite(sample);
}

} // namespace

/** Holds just what the raw sequence holds: what that took is not judged again. */
class FilteredRecords::Sequence : public RecordSequence
{
public:
    using RecordSequence::place;
    using RecordSequence::RecordSequence;
    using RecordSequence::removeFront;

    bool feed(const Record *record) override { return insert(record); }
    RecordSequence *clone() const override { return new Sequence(tolerance()); }
};

FilteredRecords::FilteredRecords(std::unique_ptr<const Filter> prototype, double tolerance)
    : _prototype(std::move(prototype)), _sequence(std::make_unique<Sequence>(tolerance))
{}

FilteredRecords::~FilteredRecords() = default;

RecordSequence *FilteredRecords::sequence() const
{
    return _sequence.get();
}

/** True if nothing was put between the records that are known already, or before them. */
bool FilteredRecords::isBeginOf(const RecordSequence &raw) const
{
    const int size = _entries.size();
    return raw.size() >= size && (size == 0 || raw.at(size - 1) == _entries[size - 1].raw.get());
}

qint64 FilteredRecords::samplesBehind(const RecordSequence &raw)
{
    dropFront(raw);
    if (!isBeginOf(raw))
        return -1;
    qint64 count = 0;
    for (int i = _entries.size(); i < raw.size(); ++i)
        count += raw.at(i)->sampleCount();
    return count;
}

std::unique_ptr<RecordSequence> FilteredRecords::Copy(std::vector<RecordCPtr> records)
{
    auto sequence = std::make_unique<Sequence>();
    for (const RecordCPtr &record : records)
        sequence->place(record);
    return sequence;
}

Core::TimeWindow FilteredRecords::update(const RecordSequence &raw, const Record *fed,
                                         const std::atomic<bool> *cancelled)
{
    dropFront(raw);
    const int size = _entries.size();
    const bool grewAtEnd = isBeginOf(raw);
    if (!grewAtEnd && fed != nullptr && raw.size() == size + 1) {
        const int index = indexOf(raw, fed);
        if (index >= 0)
            return insertAt(index, raw.at(index));
    }

    for (int i = 0; i < size && !grewAtEnd; ++i) {
        // Records taken out of the middle change the history of those behind them.
        if (indexOf(raw, _entries[i].raw.get()) < 0) {
            _entries.clear();
            _sequence->clear();
            break;
        }
    }
    if (raw.size() >= _entries.size() + ManyRecords)
        _memory = new SampleMemory;
    Core::TimeWindow changed;
    for (int i = grewAtEnd ? size : 0; i < raw.size(); ++i) {
        if (cancelled != nullptr && cancelled->load(std::memory_order_relaxed))
            break;
        if (i >= _entries.size() || _entries[i].raw.get() != raw.at(i))
            changed = changed.united(insertAt(i, raw.at(i)));
    }
    _memory.reset();
    return changed;
}

void FilteredRecords::fill(const std::vector<RecordCPtr> &records,
                           const std::atomic<bool> &cancelled)
{
    Q_ASSERT(isEmpty());
    if (records.size() >= ManyRecords)
        _memory = new SampleMemory;
    for (const RecordCPtr &record : records) {
        if (cancelled.load(std::memory_order_relaxed))
            break;
        insertAt(_entries.size(), record.get());
    }
    _memory.reset();
}

void FilteredRecords::dropFront(const RecordSequence &raw)
{
    int dropped = 0;
    int filtered = 0;
    while (dropped < _entries.size() && indexOf(raw, _entries[dropped].raw.get()) < 0)
        filtered += _entries[dropped++].filtered != nullptr ? 1 : 0;
    if (dropped == 0)
        return;
    _entries.removeFront(dropped);
    _sequence->removeFront(filtered);
}

Core::TimeWindow FilteredRecords::insertAt(int index, const Record *record)
{
    Entry entry;
    entry.raw = record;
    _entries.insert(index, std::move(entry));

    const bool splitsRun = index > 0 && _entries[index - 1].continued;
    int begin = index;
    while (begin > 0 && _entries[begin - 1].continued)
        --begin;

    const int last = filterFrom(begin, index, splitsRun);
    if (begin != last)
        rebuildSequence();
    else if (_entries[index].filtered)
        _sequence->place(_entries[index].filtered);
    return Core::TimeWindow(_entries[begin].raw->timeWindow())
        .united(_entries[last].raw->timeWindow());
}

/**
 * Filters again from entry @p begin, where a run begins or goes on, up to the end of the last run
 * that the new entry at @p inserted changes. Returns the index of the last entry filtered.
 */
int FilteredRecords::filterFrom(int begin, int inserted, bool splitsRun)
{
    std::unique_ptr<Filter> filter;
    if (begin > 0 && continues(*_entries[begin - 1].raw, *_entries[begin].raw)) {
        filter = std::move(_entries[begin - 1].tail);
        _entries[begin - 1].continued = true;
    }

    for (int i = begin;; ++i) {
        Entry &entry = _entries[i];
        const bool nextHadHistory = i == inserted ? splitsRun : entry.continued;
        if (!filter && canFilter(*entry.raw))
            filter = freshFilter(*entry.raw, 0);
        entry.filtered = filter ? filtered(filter, *entry.raw) : RecordCPtr();

        const bool last = i + 1 == _entries.size();
        entry.continued = !last && continues(*entry.raw, *_entries[i + 1].raw);
        if (entry.continued) {
            entry.tail.reset();
            continue;
        }
        entry.tail = std::move(filter);
        if (last || (i >= inserted && !nextHadHistory))
            return i;
    }
}

void FilteredRecords::rebuildSequence()
{
    _sequence->clear();
    for (int i = 0; i < _entries.size(); ++i) {
        if (_entries[i].filtered)
            _sequence->place(_entries[i].filtered);
    }
}

std::unique_ptr<FilteredRecords::Filter> FilteredRecords::freshFilter(const Record &record,
                                                                      int firstSample) const
{
    std::unique_ptr<Filter> filter(_prototype->clone());
    filter->setStreamID(record.networkCode(), record.stationCode(), record.locationCode(),
                        record.channelCode());
    filter->setStartTime(record.startTime() +
                         Core::TimeSpan(firstSample / record.samplingFrequency()));
    filter->setSamplingFrequency(record.samplingFrequency());
    return filter;
}

RecordCPtr FilteredRecords::filtered(std::unique_ptr<Filter> &filter, const Record &record)
{
    const int count = record.sampleCount();
    _samples.resize(static_cast<size_t>(count));
    if (count > 0)
        record.data()->convert(0, count, _samples.data());

    // One sample that is not finite would stay in a recursive filter for good. Most records have
    // none, which is known of them without a look at each sample.
    auto it = _samples.begin();
    if (record.summary().count == count) {
        filter->apply(count, _samples.data());
        it = _samples.end();
    }
    while (it != _samples.end()) {
        const auto stop = std::find_if_not(it, _samples.end(), isFinite);
        filter->apply(static_cast<int>(stop - it), &*it);
        it = std::find_if(stop, _samples.end(), isFinite);
        if (it != stop)
            filter = freshFilter(record, static_cast<int>(it - _samples.begin()));
    }

    const Core::SmartPointer<FloatArray> result(_memory ? new FloatArray(count, *_memory)
                                                        : new FloatArray(count));
    std::transform(_samples.begin(), _samples.end(), result->typedData(),
                   [](double sample) { return static_cast<float>(sample); });
    return record.withData(result);
}

} // namespace Gui
} // namespace Tellarix
