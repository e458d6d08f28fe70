#pragma once

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/slidingvector.h>

#include <utility>
#include <vector>

namespace Tellarix {

/** Where a record stands in time and between which values, kept side by side in a sequence. */
struct RecordSpan
{
    Core::Time start;
    Core::Time end; /**< the start for a record without an end */
    double minimum; /**< above maximum if the record has no finite sample */
    double maximum;

    bool hasSamples() const { return minimum <= maximum; }
};

/**
 * Records of one stream in ascending order of their start times.
 *
 * Records may overlap or leave gaps: both are facts that a view shows. A record is dropped on
 * arrival if the sequence already covers all of it, within the tolerance. Beside the records the
 * sequence keeps their spans in one array and coarser levels above it, each entry the extrema of
 * LevelRatio entries below, so that a view over many days reads a few hundred entries and no
 * record. All of it is kept up to date as records are fed and trimmed.
 *
 * Access by index and the search by time cost O(1) and O(log n). Feeding at the end is amortised
 * O(1); a late record costs a shift of what lies behind it.
 */
class TELLARIX_CORE_API RecordSequence
{
public:
    using Records = SlidingVector<RecordCPtr>;
    using const_iterator = Records::const_iterator;

    static constexpr int LevelRatio = 16;

    /** @param tolerance  difference in samples up to which times count as equal */
    explicit RecordSequence(double tolerance = 0.5);
    virtual ~RecordSequence();

    RecordSequence(const RecordSequence &) = delete;
    RecordSequence &operator=(const RecordSequence &) = delete;

    /**
     * Adds a record and drops what the sequence then need not hold any more.
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

    /** From the start of the first record to the latest end; an invalid window if empty. */
    Core::TimeWindow timeWindow() const;

    /** Index of the first record whose end lies behind @p time; size() if there is none. */
    int firstEndingAfter(Core::Time time) const;
    /** Index of the first record that starts at or behind @p time; size() if there is none. */
    int firstStartingFrom(Core::Time time) const;

    /**
     * Smallest and largest finite sample in @p window, or in all records if it is null.
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

    /** Stretches between neighbouring records that no sample covers. */
    std::vector<Core::TimeWindow> gaps() const;
    /** Stretches that more than one record covers. */
    std::vector<Core::TimeWindow> overlaps() const;

    /** Memory of the sequence's own arrays and its records in bytes, samples included. */
    size_t memorySize() const;

protected:
    /** Puts a record at its place; false if it is null, has no start time or is covered already. */
    bool insert(const Record *record);
    /** Removes the first @p count records. */
    void removeFront(int count);

private:
    struct Level;

    bool covers(const Core::TimeWindow &window, double samplingFrequency) const;
    void insertAt(int index, const Record *record);
    void updateLevels(int index);

    double _tolerance;
    Records _records;
    SlidingVector<RecordSpan> _spans;
    std::vector<Level> _levels;
    Core::TimeSpan _longest;
};

} // namespace Tellarix
