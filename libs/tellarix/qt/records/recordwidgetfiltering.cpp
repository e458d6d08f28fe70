// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/recordwidget.h>

#include <tellarix/qt/records/recordwidget_p.h>

#include <QPointer>

#include <algorithm>
#include <utility>

namespace Tellarix {
namespace Gui {

namespace {

/** Samples that may be filtered in the GUI thread at once: some 10 ms for a band-pass. */
constexpr qint64 InlineSamples = 500000;

} // namespace

bool RecordWidget::isFiltered(const Slot &slot) const
{
    return _filtering && _filter != nullptr && slot.raw != nullptr &&
           (!_backgroundFiltering || slot.filtered != nullptr);
}

bool RecordWidget::awaitsFiltered(const Slot &slot) const
{
    return slot.job != nullptr && slot.filtered == nullptr;
}

bool RecordWidget::isFilteringInProgress() const
{
    return std::any_of(_slots.begin(), _slots.end(),
                       [](const auto &slot) { return slot->job != nullptr; });
}

std::unique_ptr<FilteredRecords> RecordWidget::makeFiltered(const Slot &slot) const
{
    return std::make_unique<FilteredRecords>(
        std::unique_ptr<const Math::Filtering::InPlaceFilter<double>>(_filter->clone()),
        slot.raw->tolerance());
}

/** Brings filtered records up to date, in background mode only if that is done in a moment. */
void RecordWidget::updateFiltered(Slot &slot) const
{
    if (!_backgroundFiltering) {
        if (slot.filtered == nullptr)
            slot.filtered = makeFiltered(slot);
        slot.filtered->update(*slot.raw);
        return;
    }
    if (slot.filtered != nullptr && isNearlyFiltered(slot))
        slot.filtered->update(*slot.raw);
}

bool RecordWidget::isNearlyFiltered(const Slot &slot) const
{
    const qint64 behind = slot.filtered->samplesBehind(*slot.raw);
    return behind >= 0 && behind <= InlineSamples;
}

RecordSequence *RecordWidget::filteredRecords(int slot) const
{
    Slot *item = slotAt(slot);
    if (item == nullptr || item->raw == nullptr || _filter == nullptr)
        return nullptr;

    updateFiltered(*item);
    return item->filtered != nullptr ? item->filtered->sequence() : nullptr;
}

RecordSequence *RecordWidget::displayedRecords(int slot) const
{
    const Slot *item = slotAt(slot);
    if (item == nullptr)
        return nullptr;
    return isFiltered(*item) ? filteredRecords(slot) : item->raw;
}

void RecordWidget::setFilter(const Math::Filtering::InPlaceFilter<double> *filter)
{
    if (filter == nullptr && _filter == nullptr)
        return;

    for (int i = 0; i < slotCount(); ++i)
        forgetFiltered(i);
    _filter.reset(filter != nullptr ? filter->clone() : nullptr);
    filterAll();
    displayedRecordsChanged(_filtering);
}

void RecordWidget::enableFiltering(bool enable)
{
    if (enable == _filtering)
        return;

    _filtering = enable;
    if (!enable)
        cancelFiltering();
    filterAll();
    displayedRecordsChanged(_filter != nullptr);
}

void RecordWidget::setBackgroundFiltering(bool enable)
{
    if (enable == _backgroundFiltering)
        return;

    _backgroundFiltering = enable;
    cancelFiltering();
    filterAll();
    displayedRecordsChanged(_filtering && _filter != nullptr);
}

/** Tells that slots may show other records, if they do, and of jobs that were begun or ended. */
void RecordWidget::displayedRecordsChanged(bool areOthersShown)
{
    const QPointer<RecordWidget> alive(this);
    if (areOthersShown) {
        forgetExtrema();
        for (int i = 0; i < slotCount(); ++i) {
            if (_slots[static_cast<size_t>(i)]->raw != nullptr)
                notifyRecords(i);
        }
        updateAll();
    }
    if (alive)
        announceFiltering();
}

void RecordWidget::notifyRecords(int slot)
{
    slotAt(slot)->stretchesKnown = false;
    changedRecords(slot, displayedRecords(slot));
}

void RecordWidget::changedRecords(int, RecordSequence *)
{}

// In the background

void RecordWidget::forgetFiltered(int slot)
{
    Slot &item = *slotAt(slot);
    cancelJob(slot);
    // Freeing the records of a day takes long enough to be felt.
    if (_backgroundFiltering)
        FilterJob::Discard(std::move(item.filtered));
    item.filtered.reset();
}

void RecordWidget::cancelJob(int slot)
{
    Slot &item = *slotAt(slot);
    if (item.job == nullptr)
        return;

    item.job.reset();
    --_jobCount;
}

void RecordWidget::cancelFiltering()
{
    for (int i = 0; i < slotCount(); ++i)
        cancelJob(i);
}

void RecordWidget::filterAll()
{
    for (int i = 0; i < slotCount(); ++i)
        filterInBackground(i);
}

/** Starts a job for a slot unless one runs or there is next to nothing to do. */
void RecordWidget::filterInBackground(int slot)
{
    Slot &item = *slotAt(slot);
    if (!_backgroundFiltering || !_filtering || _filter == nullptr || item.raw == nullptr ||
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

void RecordWidget::startJob(int slot, std::unique_ptr<FilteredRecords> filtered)
{
    Slot &item = *slotAt(slot);
    ++_jobCount;
    item.job = std::make_unique<FilterJob>(std::move(filtered), *item.raw);
    connect(item.job.get(), &FilterJob::finished, this, [this, slot] { finishJob(slot); });
}

/** Filters a record that was fed; returns the window in which filtered samples have changed. */
Core::TimeWindow RecordWidget::filterFed(int slot, const Record *record)
{
    Slot &item = *slotAt(slot);
    if (!_backgroundFiltering || (item.filtered != nullptr && isNearlyFiltered(item))) {
        const bool inUse = item.filtered != nullptr && isFiltered(item);
        return inUse ? item.filtered->update(*item.raw, record) : Core::TimeWindow();
    }
    filterInBackground(slot);
    announceFiltering();
    return {};
}

void RecordWidget::finishJob(int slot)
{
    Slot &item = *slotAt(slot);
    // The job is sending a signal.
    FilterJob *job = item.job.release();
    job->deleteLater();
    std::unique_ptr<FilteredRecords> filtered = job->takeResult();

    const qint64 behind = filtered->samplesBehind(*item.raw);
    if (behind > InlineSamples) {
        --_jobCount;
        startJob(slot, std::move(filtered));
        return;
    }
    // Records that came late have to wait for the next job, but not those that are there.
    if (behind >= 0)
        filtered->update(*item.raw);
    FilterJob::Discard(std::exchange(item.filtered, std::move(filtered)));
    if (behind < 0)
        startJob(slot, makeFiltered(item));

    ++_jobsDone;
    forgetExtrema();
    notifyRecords(slot);
    const QPointer<RecordWidget> alive(this);
    updateAll();
    // A receiver may have ended all filtering, and that was told then.
    if (alive && _filteringAnnounced)
        emit filteringProgress(this, _jobsDone, _jobCount);
    if (alive)
        announceFiltering();
}

/** Tells once when the first job has begun and when none is left. */
void RecordWidget::announceFiltering()
{
    const bool inProgress = isFilteringInProgress();
    if (inProgress == _filteringAnnounced)
        return;

    _filteringAnnounced = inProgress;
    if (!inProgress)
        _jobCount = _jobsDone = 0;
    if (inProgress)
        emit filteringStarted(this);
    else
        emit filteringFinished(this);
}

} // namespace Gui
} // namespace Tellarix
