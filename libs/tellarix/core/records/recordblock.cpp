// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/recordblock.h>

#include <tellarix/core/records/record.h>

#include <limits>

namespace Tellarix {

RecordDigest::RecordDigest(const Record *record)
    : minimum(std::numeric_limits<double>::infinity()),
      maximum(-std::numeric_limits<double>::infinity())
{
    const SampleSummary &summary = record->summary();
    const Core::TimeWindow window = record->timeWindow();
    start = window.startTime();
    end = window.endTime();
    if (summary.isEmpty())
        return;

    const int n = record->sampleCount();
    minimum = summary.minimum;
    maximum = summary.maximum;
    isWhole = record->hasEndTime() && summary.count == n;
    first = record->firstValue();
    last = record->lastValue();
    if (record->hasEndTime())
        sampleInterval = static_cast<float>(
            std::min<double>(1 / record->samplingFrequency(), std::numeric_limits<float>::max()));
}

RecordBlock::RecordBlock(bool growsToFront) : _begin(growsToFront ? Capacity : 0)
{
    const auto free = static_cast<size_t>(_begin);
    _records.resize(free);
    _digests.resize(free);
    _sums.resize(free);
    _reaches.resize(free);
    _runs.resize(free / RunLength);
    _holes.resize(free / RunLength);
}

const RecordDigest &RecordBlock::widestRun(int position, int last, Core::TimeSpan longest,
                                           int &next) const
{
    const auto fits = [&](const RecordDigest &digest, int behind) {
        return behind <= last && digest.isWhole && digest.end - digest.start <= longest;
    };
    if (!fits(run(position).digest, runEnd(position)))
        return digest(position);
    const bool all = position == begin() && fits(_whole.digest, end());
    next = all ? end() : runEnd(position);
    return all ? _whole.digest : run(position).digest;
}

int RecordBlock::firstStartingFrom(Core::Time time) const
{
    const auto before = [](const RecordDigest &digest, Core::Time t) { return digest.start < t; };
    const auto digest = std::lower_bound(_digests.begin() + _begin, _digests.end(), time, before);
    return static_cast<int>(digest - _digests.begin());
}

int RecordBlock::firstStartingBehind(Core::Time time) const
{
    const auto after = [](Core::Time t, const RecordDigest &digest) { return t < digest.start; };
    const auto digest = std::upper_bound(_digests.begin() + _begin, _digests.end(), time, after);
    return static_cast<int>(digest - _digests.begin());
}

int RecordBlock::firstReachingBehind(Core::Time time) const
{
    // Ends are in no order, but the first reach behind the time belongs to the record looked for.
    const auto reach = std::upper_bound(_reaches.begin() + _begin, _reaches.end(), time);
    return static_cast<int>(reach - _reaches.begin());
}

bool RecordBlock::extend(Core::Time &reach, int position, Core::TimeSpan tolerance,
                         Core::Time goal) const
{
    while (position < end() && reach < goal) {
        const bool isRun = position % RunLength == 0 && position > _begin;
        if (isRun && reachAt(position - 1).valid() && holeIn(position) <= tolerance) {
            position = runEnd(position);
            reach = std::max(reach, reachAt(position - 1));
            continue;
        }
        const RecordDigest &next = digest(position++);
        if (!next.hasExtent())
            continue;
        if (next.start > reach + tolerance)
            return false;
        reach = std::max(reach, next.end);
    }
    return true;
}

void RecordBlock::append(const RecordCPtr &record)
{
    Q_ASSERT(canAppend());
    const int position = end();
    _records.push_back(record);
    _digests.emplace_back(record.get());
    _sums.push_back({record->summary().sum, record->summary().count});
    _reaches.emplace_back();

    const RecordRun run = single(position);
    if (position % RunLength == 0) {
        _runs.push_back(run);
        _holes.emplace_back();
    } else {
        _runs.back().add(run);
    }
    addReach(position);
    if (size() == 1)
        _whole = run;
    else
        _whole.add(run);
}

void RecordBlock::insert(int position, const RecordCPtr &record)
{
    Q_ASSERT(!isFull());
    if (position == end() && canAppend()) {
        append(record);
        return;
    }

    const bool movesFront = _begin > 0;
    const RecordDigest digest(record.get());
    const Sum sum{record->summary().sum, record->summary().count};
    insertInto(_records, position, record);
    insertInto(_digests, position, digest);
    insertInto(_sums, position, sum);
    if (movesFront)
        --_begin;
    _reaches.resize(_digests.size());
    _runs.resize(static_cast<size_t>((end() + RunLength - 1) / RunLength));
    _holes.resize(_runs.size());
    update(movesFront ? _begin : position, movesFront ? position : end());
}

/** Shifts what lies before @p position if there are free places in front, else what lies behind. */
template <typename T>
void RecordBlock::insertInto(std::vector<T> &items, int position, const T &item)
{
    const auto place = items.begin() + position;
    if (_begin > 0)
        *(std::move(items.begin() + _begin, place, items.begin() + _begin - 1)) = item;
    else
        items.insert(place, item);
}

void RecordBlock::removeFront(int count)
{
    Q_ASSERT(count < size());
    for (; count > 0; --count)
        _records[static_cast<size_t>(_begin++)].reset();
    update(_begin, _begin + 1);
}

std::unique_ptr<RecordBlock> RecordBlock::split()
{
    constexpr size_t Middle = Capacity / 2;
    static_assert(Middle % RunLength == 0);
    Q_ASSERT(isFull());
    auto second = std::make_unique<RecordBlock>();
    for (size_t i = Middle; i < _records.size(); ++i)
        second->append(_records[i]);
    _records.resize(Middle);
    _digests.resize(Middle);
    _sums.resize(Middle);
    _reaches.resize(Middle);
    _runs.resize(Middle / RunLength);
    _holes.resize(Middle / RunLength);
    updateWhole();
    return second;
}

size_t RecordBlock::memorySize() const
{
    return sizeof(*this) + _records.capacity() * sizeof(RecordCPtr) +
           _digests.capacity() * sizeof(RecordDigest) + _sums.capacity() * sizeof(Sum) +
           _reaches.capacity() * sizeof(Core::Time) +
           _runs.capacity() * (sizeof(RecordRun) + sizeof(Core::TimeSpan));
}

/** Works out again what is known of records from position @p first to @p last, and of those behind
 *  whose reach changes with them. */
void RecordBlock::update(int first, int last)
{
    for (int i = first / RunLength * RunLength; i < end(); i += RunLength) {
        const Core::Time before = reachAt(runEnd(i) - 1);
        updateRun(i);
        if (runEnd(i) >= last && reachAt(runEnd(i) - 1) == before)
            break;
    }
    updateWhole();
}

void RecordBlock::updateRun(int position)
{
    const int first = std::max(_begin, position);
    const auto index = static_cast<size_t>(position / RunLength);
    _runs[index] = single(first);
    _holes[index] = Core::TimeSpan();
    for (int i = first; i < runEnd(position); ++i) {
        addReach(i);
        if (i > first)
            _runs[index].add(single(i));
    }
}

void RecordBlock::updateWhole()
{
    _whole = run(_begin);
    for (int i = (_begin / RunLength + 1) * RunLength; i < end(); i += RunLength)
        _whole.add(run(i));
}

/** Sets the reach up to @p position from the one before, and notes the hole between them. */
void RecordBlock::addReach(int position)
{
    const RecordDigest &next = digest(position);
    const Core::Time before = position > _begin ? reachAt(position - 1) : Core::Time();
    if (next.hasExtent() && before.valid() && next.start > before) {
        Core::TimeSpan &hole = _holes[static_cast<size_t>(position / RunLength)];
        hole = std::max(hole, next.start - before);
    }
    _reaches[static_cast<size_t>(position)] =
        next.hasExtent() ? std::max(before, next.end) : before;
}

} // namespace Tellarix
