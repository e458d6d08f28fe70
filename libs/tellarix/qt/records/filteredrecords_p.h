// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/math/filter.h>
#include <tellarix/core/records/forward.h>
#include <tellarix/core/records/samplememory.h>
#include <tellarix/core/records/slidingvector.h>
#include <tellarix/core/timewindow.h>

#include <atomic>
#include <memory>
#include <vector>

namespace Tellarix {
namespace Gui {

/**
 * Keeps a filtered twin of a record sequence in step with it.
 *
 * Records that continue each other within half a sample at the same rate form a run, which is
 * filtered as one signal: the filter's state at the end of each run is kept, so a record that
 * continues a run is filtered alone. A gap, an overlap, another rate and samples that are not
 * finite begin with a fresh filter. A record that arrives late is filtered together with the part
 * of its run that it changes, so the result never depends on the order of arrival.
 */
class FilteredRecords
{
public:
    using Filter = Math::Filtering::InPlaceFilter<double>;

    /** @param prototype  is cloned for each run; not null */
    FilteredRecords(std::unique_ptr<const Filter> prototype, double tolerance);
    ~FilteredRecords();

    RecordSequence *sequence() const;

    /**
     * Takes in what @p raw got since the last call and drops what it dropped.
     * @param fed        the record that was fed, if known; saves a walk over all records
     * @param cancelled  once true, the rest is left undone, for the next call
     * @return the window of the records that were filtered; invalid if there were none
     */
    Core::TimeWindow update(const RecordSequence &raw, const Record *fed = nullptr,
                            const std::atomic<bool> *cancelled = nullptr);
    /** The same for what holds nothing yet, from the records of a sequence in its order, which need
     *  not be put into one of their own first. */
    void fill(const std::vector<RecordCPtr> &records, const std::atomic<bool> &cancelled);
    bool isEmpty() const { return _entries.size() == 0; }
    /**
     * Number of samples that update() would have to filter if @p raw got records at its end only;
     * -1 if it got others as well, so that records would have to be filtered again.
     */
    qint64 samplesBehind(const RecordSequence &raw);

    /** A sequence that holds just @p records, which are in order. */
    static std::unique_ptr<RecordSequence> Copy(std::vector<RecordCPtr> records);

private:
    class Sequence;

    struct Entry
    {
        RecordCPtr raw;
        RecordCPtr filtered;          /**< null for a record that can't be filtered */
        bool continued{false};        /**< the next record belongs to the same run */
        std::unique_ptr<Filter> tail; /**< state behind the last record of a run */
    };

    bool isBeginOf(const RecordSequence &raw) const;
    void dropFront(const RecordSequence &raw);
    Core::TimeWindow insertAt(int index, const Record *record);
    int filterFrom(int begin, int inserted, bool splitsRun);
    void rebuildSequence();
    std::unique_ptr<Filter> freshFilter(const Record &record, int firstSample) const;
    RecordCPtr filtered(std::unique_ptr<Filter> &filter, const Record &record);

    std::unique_ptr<const Filter> _prototype;
    std::unique_ptr<Sequence> _sequence;
    SlidingVector<Entry> _entries;
    std::vector<double> _samples;
    SampleMemoryPtr _memory; /**< while many records are filtered */
};

} // namespace Gui
} // namespace Tellarix
