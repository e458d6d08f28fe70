// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/math/filter.h>
#include <tellarix/qt/records/recordslots_p.h>

#include <functional>
#include <memory>

namespace Tellarix {
namespace Gui {

/**
 * Keeps the filtered records of slots, at once or by jobs in threads of their own.
 *
 * It says nothing to anybody but by the function that it is given: whoever starts, ends or cancels
 * something here asks announcement() afterwards for what has to be told.
 */
class TELLARIX_GUI_API SlotFilter
{
public:
    using Filter = Math::Filtering::InPlaceFilter<double>;

    enum class Announcement
    {
        None,
        Started,  /**< a job runs, and none did when it was asked before */
        Finished, /**< none runs any more */
    };

    /**
     * @param items        outlive this
     * @param jobFinished  is called with a slot whose job is done, and leads to finishJob()
     */
    SlotFilter(RecordSlots &items, std::function<void(int)> jobFinished);
    ~SlotFilter();
    SlotFilter(const SlotFilter &) = delete;
    SlotFilter &operator=(const SlotFilter &) = delete;

    const Filter *filter() const { return _filter.get(); }
    /** Keeps a clone. What was filtered by another one is shown as long as a job has to work it out
     *  anew. */
    void setFilter(const Filter *filter);
    bool isEnabled() const { return _isEnabled; }
    void setEnabled(bool enable);
    bool isInBackground() const { return _isInBackground; }
    void setInBackground(bool enable);

    /** True if a slot shows its filtered records. */
    bool isShown(const RecordSlot &slot) const;
    /** True if a slot shows raw records until its first filtered ones are there. */
    bool isAwaited(const RecordSlot &slot) const;
    /** The filtered records as far as they can be had at once; null if there are none. */
    RecordSequence *records(RecordSlot &slot) const;
    /** The records that a slot shows. */
    RecordSequence *shownRecords(RecordSlot &slot) const;
    /** Brings filtered records up to date, in background mode only if that is done in a moment. */
    void update(RecordSlot &slot) const;

    /** Cancels what is under way for a slot, and drops its filtered records. */
    void forget(int slot);
    /** Starts a job for a slot unless one runs or there is next to nothing to do. */
    void start(int slot);
    void startAll();
    /** True if a record that is fed to a slot has to wait for a job. */
    bool needsJob(const RecordSlot &slot) const;
    /** Filters a record that was fed to a slot without a need for a job; returns the window in
     *  which filtered samples that are shown have changed. */
    Core::TimeWindow feed(RecordSlot &slot, const Record *record) const;
    /** Takes what a job has made; false if another job has to go on with it. */
    bool finishJob(int slot);

    bool isInProgress() const;
    Announcement announcement();
    /** True if announcement() has told of jobs that run and not of their end. */
    bool isAnnounced() const { return _isAnnounced; }
    /** Jobs since the first of them began, and those of them that are done. */
    int jobCount() const { return _jobCount; }
    int jobsDone() const { return _jobsDone; }

private:
    bool isNearlyFiltered(const RecordSlot &slot) const;
    std::unique_ptr<FilteredRecords> makeFiltered(const RecordSlot &slot) const;
    void startJob(int slot, std::unique_ptr<FilteredRecords> filtered);
    void discard(std::unique_ptr<FilteredRecords> &records) const;
    void cancelJob(int slot);
    void cancelAll();

    RecordSlots &_slots;
    std::function<void(int)> _jobFinished;
    std::unique_ptr<Filter> _filter;
    bool _isEnabled{false};
    bool _isInBackground{false};
    bool _isAnnounced{false};
    int _jobCount{0};
    int _jobsDone{0};
};

} // namespace Gui
} // namespace Tellarix
