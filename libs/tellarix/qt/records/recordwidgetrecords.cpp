// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/recordwidget.h>

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/recordsequence.h>
#include <tellarix/qt/records/filteredrecords_p.h>
#include <tellarix/qt/records/pacedupdate_p.h>
#include <tellarix/qt/records/recordrow_p.h>

#include <QPointer>

#include <algorithm>
#include <utility>

namespace Tellarix {
namespace Gui {

// Filtering

const Math::Filtering::InPlaceFilter<double> *RecordWidget::filter() const
{
    return _row->filter.filter();
}

void RecordWidget::setFilter(const Math::Filtering::InPlaceFilter<double> *filter)
{
    if (filter == nullptr && this->filter() == nullptr)
        return;

    _row->filter.setFilter(filter);
    showOtherRecords(isFilteringEnabled());
}

bool RecordWidget::isFilteringEnabled() const
{
    return _row->filter.isEnabled();
}

void RecordWidget::enableFiltering(bool enable)
{
    if (enable == isFilteringEnabled())
        return;

    _row->filter.setEnabled(enable);
    showOtherRecords(filter() != nullptr);
}

bool RecordWidget::isBackgroundFilteringEnabled() const
{
    return _row->filter.isInBackground();
}

void RecordWidget::setBackgroundFiltering(bool enable)
{
    if (enable == isBackgroundFilteringEnabled())
        return;

    _row->filter.setInBackground(enable);
    showOtherRecords(isFilteringEnabled() && filter() != nullptr);
}

bool RecordWidget::isFilteringInProgress() const
{
    return _row->filter.isInProgress();
}

/** Tells that slots may show other records, if they do, and of jobs that were begun or ended. */
void RecordWidget::showOtherRecords(bool areOthersShown)
{
    const QPointer<RecordWidget> alive(this);
    if (areOthersShown) {
        _row->forgetExtrema();
        for (int i = 0; i < slotCount(); ++i) {
            // A slot that goes on with those of the filter before shows what it did.
            if (records(i) != nullptr && _row->items.at(i)->former == nullptr)
                notifyRecords(i);
        }
        updateAll();
    }
    if (alive)
        announceFiltering();
}

void RecordWidget::notifyRecords(int slot)
{
    _row->items.at(slot)->stretchesKnown = false;
    changedRecords(slot, displayedRecords(slot));
}

void RecordWidget::changedRecords(int, RecordSequence *)
{}

void RecordWidget::finishJob(int slot)
{
    if (!_row->filter.finishJob(slot))
        return;

    _row->forgetExtrema();
    notifyRecords(slot);
    const QPointer<RecordWidget> alive(this);
    updateAll();
    // A receiver may have ended all filtering, and that was told then.
    if (alive && _row->filter.isAnnounced())
        emit filteringProgress(this, _row->filter.jobsDone(), _row->filter.jobCount());
    if (alive)
        announceFiltering();
}

/** Tells once when the first job has begun and when none is left. */
void RecordWidget::announceFiltering()
{
    switch (_row->filter.announcement()) {
    case SlotFilter::Announcement::Started:
        emit filteringStarted(this);
        break;
    case SlotFilter::Announcement::Finished:
        emit filteringFinished(this);
        break;
    case SlotFilter::Announcement::None:
        break;
    }
}

// New records

void RecordWidget::fed(int slot, const Record *record)
{
    RecordSlot *item = _row->items.at(slot);
    if (item == nullptr || item->raw == nullptr || record == nullptr)
        return;

    const ShownRange before = _row->rangeOf(slot);
    Core::TimeWindow changed =
        touchedWindow(*item->raw, *record).united(std::exchange(_fedBefore, Core::TimeWindow()));
    const QPointer<RecordWidget> alive(this);
    changed = changed.united(filterFed(slot, record));
    // A receiver of its signal may have taken the slot away.
    item = alive ? _row->items.at(slot) : nullptr;
    if (item == nullptr || item->raw == nullptr)
        return;

    item->stretchesKnown = false;
    item->forgetTraces();
    item->forgetExtrema();
    if (!_row->items.isDrawn(slot))
        return;

    const QRect area = _row->items.rectOf(slot, canvasRect());
    if (_row->rangeOf(slot).looksOther(before, area.height())) {
        _row->forgetTraces();
        _fedUpdate->add(rect());
        emit traceUpdated(this);
        return;
    }

    const auto updateColumns = [&](const Core::TimeWindow &window) {
        _fedUpdate->add(area & QRect(QPoint(mapTime(window.startTime()) - 1, area.top()),
                                     QPoint(mapTime(window.endTime()) + 1, area.bottom())));
    };
    updateColumns(changed);
    const Core::Time start = item->raw->timeWindow().startTime();
    if (item->drawnStart.valid() && start > item->drawnStart)
        updateColumns(Core::TimeWindow(item->drawnStart, start));
}

void RecordWidget::fedAll(int slot, const QVector<RecordPtr> &records)
{
    const RecordSlot *item = _row->items.at(slot);
    if (item == nullptr || item->raw == nullptr || records.isEmpty())
        return;

    const auto [first, last] =
        std::minmax_element(records.begin(), records.end(), [](const auto &a, const auto &b) {
            return a->startTime() < b->startTime();
        });
    _fedBefore = touchedWindow(*item->raw, **first);
    for (const RecordPtr &record : records)
        _fedBefore = _fedBefore.united(record->timeWindow());
    fed(slot, last->get());
}

/** Filters a record that was fed; returns the window in which filtered samples have changed. */
Core::TimeWindow RecordWidget::filterFed(int slot, const Record *record)
{
    RecordSlot &item = *_row->items.at(slot);
    if (!_row->filter.needsJob(item))
        return _row->filter.feed(item, record);

    _row->filter.start(slot);
    announceFiltering();
    return {};
}

void RecordWidget::updateRecords()
{
    _row->filter.startAll();
    setDirty();
    update();
    emit traceUpdated(this);
}

} // namespace Gui
} // namespace Tellarix
