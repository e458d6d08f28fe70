// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/slidingvector.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <utility>
#include <vector>

namespace Tellarix {

/**
 * Where a record, or a run of neighbouring records, stands in time and between which values; kept
 * side by side in a sequence, so that a view need not look at the records themselves.
 */
struct RecordSpan
{
    Core::Time start;
    Core::Time end; /**< the start for a record without an end */
    double minimum; /**< infinite and above maximum if there is no finite sample */
    double maximum;
    float first; /**< first and last sample, rounded: hold them to minimum and maximum */
    float last;
    float sampleInterval; /**< of the first record in seconds; 0 without a usable rate */
    bool isWhole; /**< all samples are finite and follow each other without gap or overlap */

    bool hasSamples() const { return minimum <= maximum; }
    double firstValue() const { return std::clamp<double>(first, minimum, maximum); }
    double lastValue() const { return std::clamp<double>(last, minimum, maximum); }
    /** True if this span goes on where @p time is, to within half a sample. */
    bool continues(Core::Time time) const
    {
        return std::abs(start.usecs() - time.usecs()) <= 0.5E6 * sampleInterval;
    }
};

/**
 * Records of one stream in ascending order of their start times.
 *
 * Records may overlap or leave gaps: both are facts that a view shows. A record is dropped on
 * arrival if records of the sequence already cover it together: from its start plus the tolerance
 * to its end minus the tolerance, without a hole above the tolerance. A record without samples or
 * without an end covers nothing, and is itself dropped if the sequence holds the same one.
 *
 * Beside the records the sequence keeps their spans in one array and coarser levels above it, each
 * entry the summary of LevelRatio entries below, so that a view over many days reads a few hundred
 * entries and hardly a record. All of it is kept up to date as records are fed and trimmed.
 *
 * Access by index costs O(1) and the searches by time O(log n), overlaps or not. Feeding at the end
 * is amortised O(1); a late record costs a shift of the records before or behind it, whichever are
 * fewer.
 */
class TELLARIX_CORE_API RecordSequence
{
public:
    using Records = SlidingVector<RecordCPtr>;
    using const_iterator = Records::const_iterator;

    static constexpr int LevelRatio = 16;

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
    bool isEmpty() const { return _records.isEmpty(); }
    bool empty() const { return _records.isEmpty(); }
    int size() const { return _records.size(); }
    const Record *at(int index) const { return _records[index].get(); }
    const Record *front() const { return _records[0].get(); }
    const Record *back() const { return _records[_records.size() - 1].get(); }
    const_iterator begin() const { return _records.begin(); }
    const_iterator end() const { return _records.end(); }

    /** Spans of the records, in the order of the records. */
    const SlidingVector<RecordSpan> &spans() const { return _spans; }
    /** Latest end of each record and all records before it; ascending. */
    const SlidingVector<Core::Time> &reaches() const { return _reaches; }

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
     * spans and the levels above them alone.
     * @return false, leaving the results alone, if there is no finite sample
     */
    bool recordExtrema(int first, int last, double &minimum, double &maximum) const;

    /** Summary of the finite samples of the records from index @p first up to, but not including,
     *  @p last, from the levels. */
    SampleSummary recordSummary(int first, int last) const;

    /**
     * The span of the most records from index @p index on, before index @p last, that is whole and
     * not longer than @p longest; the span of the one record if there is no such run.
     * @param next  set to the index behind the span
     */
    const RecordSpan &widestSpan(int index, int last, Core::TimeSpan longest, int &next) const
    {
        next = index + 1;
        if (_levels.empty() || (_firstNumber + index) % LevelRatio)
            return _spans[index];
        return widestEntry(index, last, longest, next);
    }

    /** Stretches between neighbouring records, above the tolerance, that no sample covers. */
    std::vector<Core::TimeWindow> gaps() const;
    /** Stretches above the tolerance that more than one record covers, disjoint and ascending. */
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
    struct Entry
    {
        RecordSpan span;
        SampleSummary summary;

        void add(const Entry &next);
    };

    /** Entries that stand for LevelRatio entries each of the level below. */
    struct Level
    {
        int64_t first{0}; /**< number of the first entry */
        SlidingVector<Entry> entries;

        int64_t end() const { return first + entries.size(); }
        Entry &at(int64_t number) { return entries[static_cast<int>(number - first)]; }
        const Entry &at(int64_t number) const { return entries[static_cast<int>(number - first)]; }
    };

    const RecordSpan &widestEntry(int index, int last, Core::TimeSpan longest, int &next) const;
    Core::TimeSpan toleranceOf(const Record *record) const;
    bool covers(const Record *record) const;
    bool holdsTwinOf(const Record *record) const;
    void append(const RecordCPtr &record);
    void insertAt(int index, const RecordCPtr &record);
    void raiseReaches(int index);
    void addToLevels(const Entry &last);
    void addTopLevel();
    void updateLevels(int first, int last);
    void updateLevel(size_t level, int64_t first, int64_t last);
    Entry combinedEntry(size_t level, int64_t number) const;
    template <typename OnRecords, typename OnEntries>
    void walkLevels(int first, int last, OnRecords onRecords, OnEntries onEntries) const;
    template <typename Inside, typename Partial>
    void walkWindow(const Core::TimeWindow *window, Inside inside, Partial partial) const;

    double _tolerance;
    Records _records;
    SlidingVector<RecordSpan> _spans;
    SlidingVector<Core::Time> _reaches;
    /** Levels count records by numbers that stay when records leave or join at the front. */
    std::vector<Level> _levels;
    int64_t _firstNumber{0};
};

} // namespace Tellarix
