// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/recordsequence.h>

#include <tellarix/core/records/record.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace Tellarix {
namespace {

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

} // namespace

RecordSequence::RecordSequence(double tolerance) : _tolerance(tolerance > 0 ? tolerance : 0)
{}

RecordSequence::~RecordSequence() = default;

void RecordSequence::clear()
{
    _slots.clear();
    _size = 0;
    _firstNumber = 0;
}

Core::TimeWindow RecordSequence::timeWindow() const
{
    if (isEmpty())
        return {};
    return {_slots.front().start, std::max(_slots.back().reach, digest(size() - 1).start)};
}

int RecordSequence::firstEndingAfter(Core::Time time) const
{
    if (isEmpty())
        return 0;
    // A record without an extent ends behind the time if it starts there, as do all that follow.
    const int started = indexOf(firstPlaceBehind(time));
    const auto before = [](Core::Time t, const Slot &slot) { return t < slot.reach; };
    const auto slot = std::upper_bound(_slots.begin(), _slots.end(), time, before);
    if (slot == _slots.end())
        return started;
    const auto number = static_cast<size_t>(slot - _slots.begin());
    return std::min(started, indexOf({number, slot->block->firstReachingBehind(time)}));
}

int RecordSequence::firstStartingFrom(Core::Time time) const
{
    const auto before = [](const Slot &slot, Core::Time t) { return slot.start < t; };
    const auto behind = std::lower_bound(_slots.begin(), _slots.end(), time, before);
    if (behind == _slots.begin())
        return 0;
    const auto slot = static_cast<size_t>(behind - _slots.begin()) - 1;
    return indexOf({slot, _slots[slot].block->firstStartingFrom(time)});
}

/** The place of the first record that starts behind @p time, or the end of the block before. */
RecordSequence::Place RecordSequence::firstPlaceBehind(Core::Time time) const
{
    const auto after = [](Core::Time t, const Slot &slot) { return t < slot.start; };
    const auto behind = std::upper_bound(_slots.begin(), _slots.end(), time, after);
    if (behind == _slots.begin())
        return {0, _slots.front().block->begin()};
    const auto slot = static_cast<size_t>(behind - _slots.begin()) - 1;
    return {slot, _slots[slot].block->firstStartingBehind(time)};
}

size_t RecordSequence::slotOf(int64_t number) const
{
    const auto after = [](int64_t n, const Slot &slot) { return n < slot.first; };
    const auto behind = std::upper_bound(_slots.begin(), _slots.end(), number, after);
    return static_cast<size_t>(behind - _slots.begin()) - 1;
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
        const RecordDigest &digest = this->digest(index);
        if (digest.start >= window->startTime() && digest.end <= window->endTime()) {
            inside(index, index + 1);
        } else if (digest.end > window->startTime() || digest.start >= window->startTime()) {
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
    walkRuns(first, last,
             [&](const RecordRun &run) { widen(range, run.digest.minimum, run.digest.maximum); });
    if (range.first > range.second)
        return false;
    minimum = range.first;
    maximum = range.second;
    return true;
}

SampleSummary RecordSequence::recordSummary(int first, int last) const
{
    SampleSummary result;
    walkRuns(first, last, [&](const RecordRun &run) { result.add(run.summary()); });
    return result;
}

/** Calls @p visit(run) for the blocks and runs that lie as a whole among the records from index
 *  @p first to @p last, and for the single records at the edges. */
template <typename Visit>
void RecordSequence::walkRuns(int first, int last, Visit visit) const
{
    first = std::max(0, first);
    last = std::min(size(), last);
    if (first >= last)
        return;

    const Place from = placeOf(first);
    const Place to = placeOf(last - 1);
    for (size_t slot = from.slot; slot <= to.slot; ++slot) {
        const RecordBlock &block = *_slots[slot].block;
        const int begin = slot == from.slot ? from.position : block.begin();
        const int end = slot == to.slot ? to.position + 1 : block.end();
        if (end - begin == block.size()) {
            visit(block.whole());
            continue;
        }
        for (int i = begin; i < end;) {
            if (i % RecordBlock::RunLength || block.runEnd(i) > end) {
                visit(block.single(i++));
            } else {
                visit(block.run(i));
                i = block.runEnd(i);
            }
        }
    }
}

std::vector<Core::TimeWindow> RecordSequence::gaps() const
{
    std::vector<Core::TimeWindow> result;
    Core::Time reach;
    for (int i = 0; i < size(); ++i) {
        const RecordDigest &digest = this->digest(i);
        if (!digest.hasExtent())
            continue;
        if (reach.valid() && digest.start > reach && digest.start - reach > toleranceOf(at(i)))
            result.emplace_back(reach, digest.start);
        reach = std::max(reach, digest.end);
    }
    return result;
}

std::vector<Core::TimeWindow> RecordSequence::overlaps() const
{
    std::vector<Core::TimeWindow> result;
    Core::Time reach;
    for (int i = 0; i < size(); ++i) {
        const RecordDigest &digest = this->digest(i);
        const Core::Time end = std::min(reach, digest.end);
        if (digest.start < end && end - digest.start > toleranceOf(at(i))) {
            if (!result.empty() && digest.start <= result.back().endTime())
                result.back().setEndTime(std::max(result.back().endTime(), end));
            else
                result.emplace_back(digest.start, end);
        }
        reach = std::max(reach, digest.end);
    }
    return result;
}

size_t RecordSequence::memorySize() const
{
    size_t bytes = sizeof(*this) + _slots.capacity() * sizeof(Slot);
    for (const Slot &slot : _slots)
        bytes += slot.block->memorySize();
    for (const RecordCPtr &record : *this)
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
    if (isEmpty())
        return false;
    if (!record->hasEndTime() || record->sampleCount() == 0)
        return holdsTwinOf(record);

    const Core::TimeSpan tolerance = toleranceOf(record);
    const Core::TimeSpan length = record->endTime() - record->startTime();
    const Core::TimeSpan margin =
        std::min(tolerance, Core::TimeSpan::FromUSecs(length.usecs() / 2));
    const Core::Time first = record->startTime() + margin;
    const Core::Time last = record->endTime() - margin;
    if (_slots.back().reach < last)
        return false;

    const Place behind = firstPlaceBehind(first);
    Core::Time reach = reachBefore(behind);
    if (reach <= first)
        return false;
    // What starts up to here is done with: the rest has to go on without a hole.
    for (size_t slot = behind.slot; slot < _slots.size() && reach < last; ++slot) {
        const RecordBlock &block = *_slots[slot].block;
        if (!block.extend(reach, slot == behind.slot ? behind.position : block.begin(), tolerance,
                          last))
            return false;
    }
    return reach >= last;
}

/** Latest end of the records with an extent before @p place; not valid without one. */
Core::Time RecordSequence::reachBefore(const Place &place) const
{
    const Core::Time before = place.slot > 0 ? _slots[place.slot - 1].reach : Core::Time();
    const RecordBlock &block = blockAt(place);
    return place.position > block.begin() ? std::max(before, block.reachAt(place.position - 1))
                                          : before;
}

bool RecordSequence::holdsTwinOf(const Record *record) const
{
    const Core::Time start = record->startTime();
    for (int i = firstStartingFrom(start); i < size() && digest(i).start == start; ++i) {
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
    if (isEmpty() || digest(size() - 1).start <= record->startTime())
        append(record);
    else
        insertAt(firstPlaceBehind(record->startTime()), record);
}

void RecordSequence::append(const RecordCPtr &record)
{
    if (_slots.empty() || !_slots.back().block->canAppend())
        addSlot(_slots.size(), std::make_unique<RecordBlock>(), _firstNumber + _size);
    _slots.back().block->append(record);
    ++_size;
    updateSlot(_slots.size() - 1);
}

void RecordSequence::insertAt(Place place, const RecordCPtr &record)
{
    place = makeRoom(place);
    _slots[place.slot].block->insert(place.position, record);
    ++_size;
    // What lies before a record in the first block moves to the front, else what lies behind.
    if (place.slot == 0)
        _slots.front().first = --_firstNumber - _slots.front().block->begin();
    for (size_t slot = place.slot + 1; place.slot > 0 && slot < _slots.size(); ++slot)
        ++_slots[slot].first;
    updateSlot(place.slot);
}

/** Makes room for a record at @p place, which then may lie in another block. */
RecordSequence::Place RecordSequence::makeRoom(Place place)
{
    RecordBlock &block = *_slots[place.slot].block;
    if (!block.isFull())
        return place;

    const int64_t first = _slots[place.slot].first;
    // Records that come in order from here on, or in reverse order, fill the block that is new.
    if (place.position == 0) {
        addSlot(place.slot, std::make_unique<RecordBlock>(true), first);
        return {place.slot, RecordBlock::Capacity};
    }
    if (place.position == block.end()) {
        addSlot(place.slot + 1, std::make_unique<RecordBlock>(), first + block.end());
        return {place.slot + 1, 0};
    }
    std::unique_ptr<RecordBlock> second = block.split();
    const int kept = block.end();
    addSlot(place.slot + 1, std::move(second), first + kept);
    updateSlot(place.slot);
    updateSlot(place.slot + 1);
    return place.position <= kept ? place : Place{place.slot + 1, place.position - kept};
}

/** Adds a block; what the slot says of its times is left to updateSlot(). */
void RecordSequence::addSlot(size_t slot, std::unique_ptr<RecordBlock> block, int64_t first)
{
    const auto position = _slots.begin() + static_cast<std::ptrdiff_t>(slot);
    _slots.insert(position, Slot{std::move(block), first, {}, {}});
}

void RecordSequence::updateSlot(size_t slot)
{
    const RecordBlock &block = *_slots[slot].block;
    const Core::Time before = slot > 0 ? _slots[slot - 1].reach : Core::Time();
    const Core::Time reach = std::max(before, block.reach());
    _slots[slot].start = block.start();
    _slots[slot].reach = reach;
    for (++slot; slot < _slots.size() && _slots[slot].reach < reach; ++slot)
        _slots[slot].reach = reach;
}

void RecordSequence::removeFront(int count)
{
    if (count >= size()) {
        RecordSequence::clear();
        return;
    }
    if (count <= 0)
        return;

    _size -= count;
    _firstNumber += count;
    const size_t slot = slotOf(_firstNumber);
    _slots.erase(_slots.begin(), _slots.begin() + static_cast<std::ptrdiff_t>(slot));
    RecordBlock &block = *_slots.front().block;
    const auto position = static_cast<int>(_firstNumber - _slots.front().first);
    if (position > block.begin())
        block.removeFront(position - block.begin());
    _slots.front().start = block.start();

    Core::Time reach;
    for (Slot &kept : _slots) {
        reach = std::max(reach, kept.block->reach());
        if (kept.reach == reach)
            break;
        kept.reach = reach;
    }
}

void RecordSequence::removeIf(const std::function<bool(const Record *)> &remove)
{
    std::vector<RecordCPtr> kept;
    for (const RecordCPtr &record : *this) {
        if (!remove(record.get()))
            kept.push_back(record);
    }
    if (kept.size() == static_cast<size_t>(size()))
        return;

    RecordSequence::clear();
    for (const RecordCPtr &record : kept)
        append(record);
}

} // namespace Tellarix
