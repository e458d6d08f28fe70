// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/slotfilter_p.h>

#include <tellarix/core/records/recordsequence.h>
#include <tellarix/qt/records/filteredrecords_p.h>
#include <tellarix/qt/records/filterjob_p.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace Tellarix {
namespace Gui {

namespace {

/** Samples that may be filtered in the GUI thread at once: some 10 ms for a band-pass. */
constexpr qint64 InlineSamples = 500000;

} // namespace

SlotFilter::SlotFilter(RecordSlots &items, std::function<void(int)> jobFinished)
    : _slots(items), _jobFinished(std::move(jobFinished))
{}

SlotFilter::~SlotFilter() = default;

void SlotFilter::setFilter(const Filter *filter)
{
    std::vector<std::unique_ptr<FilteredRecords>> shown;
    for (int i = 0; i < _slots.size(); ++i) {
        RecordSlot &item = *_slots.at(i);
        shown.push_back(std::move(item.filtered ? item.filtered : item.former));
        forget(i);
    }
    _filter.reset(filter != nullptr ? filter->clone() : nullptr);
    startAll();
    for (int i = 0; i < _slots.size(); ++i) {
        auto &former = shown[static_cast<size_t>(i)];
        // Raw traces between those of two filters would flicker.
        if (_slots.at(i)->job != nullptr)
            _slots.at(i)->former = std::move(former);
        else
            discard(former);
    }
}

void SlotFilter::setEnabled(bool enable)
{
    _isEnabled = enable;
    if (!enable)
        cancelAll();
    startAll();
}

void SlotFilter::setInBackground(bool enable)
{
    _isInBackground = enable;
    cancelAll();
    startAll();
}

// Filtered records

bool SlotFilter::isShown(const RecordSlot &slot) const
{
    return _isEnabled && _filter != nullptr && slot.raw != nullptr &&
           (!_isInBackground || slot.filtered != nullptr || slot.former != nullptr);
}

bool SlotFilter::isAwaited(const RecordSlot &slot) const
{
    return slot.job != nullptr && slot.filtered == nullptr && slot.former == nullptr;
}

RecordSequence *SlotFilter::records(RecordSlot &slot) const
{
    if (slot.raw == nullptr || _filter == nullptr)
        return nullptr;

    update(slot);
    return slot.filtered != nullptr ? slot.filtered->sequence() : nullptr;
}

RecordSequence *SlotFilter::shownRecords(RecordSlot &slot) const
{
    if (!isShown(slot))
        return slot.raw;
    RecordSequence *filtered = records(slot);
    return filtered != nullptr ? filtered : slot.former->sequence();
}

void SlotFilter::update(RecordSlot &slot) const
{
    if (!_isInBackground) {
        if (slot.filtered == nullptr)
            slot.filtered = makeFiltered(slot);
        slot.filtered->update(*slot.raw);
        return;
    }
    if (slot.filtered != nullptr && isNearlyFiltered(slot))
        slot.filtered->update(*slot.raw);
}

bool SlotFilter::isNearlyFiltered(const RecordSlot &slot) const
{
    const qint64 behind = slot.filtered->samplesBehind(*slot.raw);
    return behind >= 0 && behind <= InlineSamples;
}

std::unique_ptr<FilteredRecords> SlotFilter::makeFiltered(const RecordSlot &slot) const
{
    return std::make_unique<FilteredRecords>(std::unique_ptr<const Filter>(_filter->clone()),
                                             slot.raw->tolerance());
}

void SlotFilter::forget(int slot)
{
    RecordSlot &item = *_slots.at(slot);
    cancelJob(slot);
    discard(item.filtered);
    discard(item.former);
}

void SlotFilter::discard(std::unique_ptr<FilteredRecords> &records) const
{
    // Freeing the records of a day takes long enough to be felt.
    if (_isInBackground)
        FilterJob::Discard(std::move(records));
    records.reset();
}

bool SlotFilter::needsJob(const RecordSlot &slot) const
{
    return _isInBackground && (slot.filtered == nullptr || !isNearlyFiltered(slot));
}

Core::TimeWindow SlotFilter::feed(RecordSlot &slot, const Record *record) const
{
    const bool inUse = slot.filtered != nullptr && isShown(slot);
    return inUse ? slot.filtered->update(*slot.raw, record) : Core::TimeWindow();
}

// Jobs

void SlotFilter::start(int slot)
{
    RecordSlot &item = *_slots.at(slot);
    if (!_isInBackground || !_isEnabled || _filter == nullptr || item.raw == nullptr ||
        item.job != nullptr)
        return;

    if (item.filtered == nullptr && item.raw->isEmpty())
        item.filtered = makeFiltered(item);
    if (item.filtered != nullptr && isNearlyFiltered(item)) {
        item.filtered->update(*item.raw);
        return;
    }
    startJob(slot, makeFiltered(item));
}

void SlotFilter::startAll()
{
    for (int i = 0; i < _slots.size(); ++i)
        start(i);
}

void SlotFilter::startJob(int slot, std::unique_ptr<FilteredRecords> filtered)
{
    RecordSlot &item = *_slots.at(slot);
    ++_jobCount;
    item.job = std::make_unique<FilterJob>(std::move(filtered), *item.raw);
    FilterJob *job = item.job.get();
    // By value: whoever hears of it may delete this.
    QObject::connect(job, &FilterJob::finished, job,
                     [finished = _jobFinished, slot] { finished(slot); });
}

void SlotFilter::cancelJob(int slot)
{
    RecordSlot &item = *_slots.at(slot);
    if (item.job == nullptr)
        return;

    item.job.reset();
    --_jobCount;
}

void SlotFilter::cancelAll()
{
    for (int i = 0; i < _slots.size(); ++i) {
        cancelJob(i);
        discard(_slots.at(i)->former);
    }
}

bool SlotFilter::finishJob(int slot)
{
    RecordSlot &item = *_slots.at(slot);
    // The job is sending a signal.
    FilterJob *job = item.job.release();
    job->deleteLater();
    std::unique_ptr<FilteredRecords> filtered = job->takeResult();

    const qint64 behind = filtered->samplesBehind(*item.raw);
    if (behind > InlineSamples) {
        --_jobCount;
        startJob(slot, std::move(filtered));
        return false;
    }
    // Records that came late have to wait for the next job, but not those that are there.
    if (behind >= 0)
        filtered->update(*item.raw);
    FilterJob::Discard(std::exchange(item.filtered, std::move(filtered)));
    discard(item.former);
    if (behind < 0)
        startJob(slot, makeFiltered(item));
    ++_jobsDone;
    return true;
}

bool SlotFilter::isInProgress() const
{
    return std::any_of(_slots.begin(), _slots.end(),
                       [](const auto &slot) { return slot->job != nullptr; });
}

SlotFilter::Announcement SlotFilter::announcement()
{
    const bool inProgress = isInProgress();
    if (inProgress == _isAnnounced)
        return Announcement::None;

    _isAnnounced = inProgress;
    if (inProgress)
        return Announcement::Started;
    _jobCount = _jobsDone = 0;
    return Announcement::Finished;
}

} // namespace Gui
} // namespace Tellarix
