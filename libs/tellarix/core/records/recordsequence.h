// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/recordblock.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

namespace Tellarix {

/**
 * Records of one stream in ascending order of their start times.
 *
 * Records may overlap or leave gaps: both are facts that a view shows. A record is dropped on
 * arrival if records of the sequence already cover it together: from its start plus the tolerance
 * to its end minus the tolerance, without a hole above the tolerance. A record without samples or
 * without an end covers nothing, and is itself dropped if the sequence holds the same one.
 *
 * The records lie in blocks of a few hundred, each with the digests of its records and the
 * summaries of runs of them, so that a view over many days reads some entries per block and hardly
 * a record. All of it is kept up to date as records are fed and trimmed.
 *
 * With n records, access by index costs O(1) as long as no record came late and O(log n) then, and
 * the searches by time O(log n), overlaps or not. Feeding at the end is amortised O(1), into the
 * middle a pass over one block and one number per block, in whatever order records come and however
 * many of them overlap.
 */
class TELLARIX_CORE_API RecordSequence
{
public:
    /** Goes over the records in their order; holds until the sequence changes. */
    class const_iterator
    {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = RecordCPtr;
        using difference_type = std::ptrdiff_t;
        using pointer = const RecordCPtr *;
        using reference = const RecordCPtr &;

        const_iterator() = default;
        const_iterator(const RecordSequence *sequence, int index)
            : _sequence(sequence), _index(index)
        {}

        reference operator*() const { return _sequence->recordAt(_index); }
        pointer operator->() const { return &**this; }
        const_iterator &operator++()
        {
            ++_index;
            return *this;
        }
        const_iterator operator++(int)
        {
            const const_iterator before = *this;
            ++_index;
            return before;
        }
        bool operator==(const const_iterator &other) const { return _index == other._index; }
        bool operator!=(const const_iterator &other) const { return _index != other._index; }

    private:
        const RecordSequence *_sequence{nullptr};
        int _index{0};
    };

    /** @param tolerance  difference in samples up to which times count as equal, 0 or more */
    explicit RecordSequence(double tolerance = 0.5);
    virtual ~RecordSequence();

    RecordSequence(const RecordSequence &) = delete;
    RecordSequence &operator=(const RecordSequence &) = delete;

    /**
     * Adds a record and drops what the sequence then need not hold any more. The sequence shares
     * the record; one that is not taken and that nobody else holds is deleted.
     * @return false if the record was not taken: null, without a start time, already covered, or
     *         outside of what the sequence holds
     */
    virtual bool feed(const Record *record) = 0;
    /** An empty sequence of the same kind and settings, owned by the caller. */
    virtual RecordSequence *clone() const = 0;
    /** Removes all records. */
    virtual void clear();

    double tolerance() const { return _tolerance; }
    bool isEmpty() const { return _size == 0; }
    bool empty() const { return _size == 0; }
    int size() const { return _size; }
    const Record *at(int index) const { return recordAt(index).get(); }
    const Record *front() const { return at(0); }
    const Record *back() const { return at(_size - 1); }
    const_iterator begin() const { return {this, 0}; }
    const_iterator end() const { return {this, _size}; }

    /** Digest of the record at @p index. */
    const RecordDigest &digest(int index) const
    {
        const Place place = placeOf(index);
        return blockAt(place).digest(place.position);
    }

    /** From the start of the first record to the latest end; an invalid window if empty. */
    Core::TimeWindow timeWindow() const;

    /** Index of the first record whose end lies behind @p time; size() if there is none. */
    int firstEndingAfter(Core::Time time) const;
    /** Index of the first record that starts at or behind @p time; size() if there is none. */
    int firstStartingFrom(Core::Time time) const;

    /**
     * Smallest and largest finite sample in @p window, or in all records if it is null or invalid.
     * @return (0, 0) if there is no such sample
     */
    std::pair<double, double> amplitudeRange(const Core::TimeWindow *window = nullptr) const;
    /** Summary of the finite samples in @p window, or in all records if it is null or invalid. */
    SampleSummary summary(const Core::TimeWindow *window = nullptr) const;

    /**
     * Extrema of the records from index @p first up to, but not including, @p last, from the
     * digests and summaries alone.
     * @return false, leaving the results alone, if there is no finite sample
     */
    bool recordExtrema(int first, int last, double &minimum, double &maximum) const;

    /** Summary of the finite samples of the records from index @p first up to, but not including,
     *  @p last, from the summaries that are kept. */
    SampleSummary recordSummary(int first, int last) const;

    /** The block that holds the record at @p index, whose place in it goes to @p position. A loop
     *  over many records is fastest block by block. */
    const RecordBlock &blockOf(int index, int &position) const
    {
        const Place place = placeOf(index);
        position = place.position;
        return blockAt(place);
    }

    /** Times between neighbouring records, above the tolerance, that no sample covers. */
    std::vector<Core::TimeWindow> gaps() const;
    /** Times above the tolerance that more than one record covers, disjoint and ascending. */
    std::vector<Core::TimeWindow> overlaps() const;

    /** Memory of the sequence's own arrays and its records in bytes, samples included. */
    size_t memorySize() const;

protected:
    /** Puts a record at its place; false if it is null, has no start time or is covered already. */
    bool insert(const Record *record);
    /** Puts a record with a start time at its place, whether it is covered already or not. */
    void place(const RecordCPtr &record);
    /** Removes the first @p count records. */
    void removeFront(int count);
    /** Removes all records for which @p remove is true. */
    void removeIf(const std::function<bool(const Record *)> &remove);

private:
    struct Slot
    {
        std::unique_ptr<RecordBlock> block;
        /** Number of the record at position 0 of the block. Numbers count the records through and
         *  stay when others leave at the front. */
        int64_t first;
        Core::Time start; /**< of the first record */
        Core::Time reach; /**< latest end of the records with an extent in this block and before */
    };

    /** Where a record lies. */
    struct Place
    {
        size_t slot;
        int position;
    };

    const RecordBlock &blockAt(const Place &place) const { return *_slots[place.slot].block; }
    const RecordCPtr &recordAt(int index) const
    {
        const Place place = placeOf(index);
        return blockAt(place).record(place.position);
    }
    Place placeOf(int index) const
    {
        const int64_t number = _firstNumber + index;
        // Records that came in order fill their blocks.
        const int64_t guess = (number - _slots.front().first) / RecordBlock::Capacity;
        auto slot = std::min(static_cast<size_t>(guess), _slots.size() - 1);
        if (slot + 1 < _slots.size() && _slots[slot + 1].first <= number)
            slot = slotOf(number);
        return {slot, static_cast<int>(number - _slots[slot].first)};
    }
    size_t slotOf(int64_t number) const;
    int indexOf(const Place &place) const
    {
        return static_cast<int>(_slots[place.slot].first + place.position - _firstNumber);
    }
    Place firstPlaceBehind(Core::Time time) const;
    Core::TimeSpan toleranceOf(const Record *record) const;
    bool covers(const Record *record) const;
    Core::Time reachBefore(const Place &place) const;
    bool holdsTwinOf(const Record *record) const;
    void append(const RecordCPtr &record);
    void insertAt(Place place, const RecordCPtr &record);
    Place makeRoom(Place place);
    void addSlot(size_t slot, std::unique_ptr<RecordBlock> block, int64_t first);
    void updateSlot(size_t slot);
    template <typename Visit>
    void walkRuns(int first, int last, Visit visit) const;
    template <typename Inside, typename Partial>
    void walkWindow(const Core::TimeWindow *window, Inside inside, Partial partial) const;

    double _tolerance;
    std::vector<Slot> _slots;
    int _size{0};
    int64_t _firstNumber{0};
};

} // namespace Tellarix
