// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/recordwidget.h>

#include <tellarix/qt/records/recordrow_p.h>

#include <QPointer>

namespace Tellarix {
namespace Gui {

int RecordWidget::slotCount() const
{
    return _row->items.size();
}

RecordSlot *RecordWidget::makeSlot(int slot)
{
    if (slot < 0 || slot >= RecordSlots::Maximum)
        return nullptr;
    // Without a word: whoever asked for the slot is not done with it.
    if (slot >= slotCount()) {
        _row->items.resize(slot + 1);
        _row->forgetTraces();
        update();
    }
    return _row->items.at(slot);
}

bool RecordWidget::setSlotCount(int count)
{
    if (count < 0 || count > RecordSlots::Maximum)
        return false;
    if (count == slotCount())
        return true;

    const QPointer<RecordWidget> alive(this);
    const int present = slotCount();
    for (int i = count; alive && i < present; ++i)
        setRecords(i, nullptr);
    if (!alive)
        return true;

    if (count < slotCount())
        _row->items.resize(count);
    makeSlot(count - 1);
    updateAll();
    return true;
}

bool RecordWidget::setRecords(int slot, RecordSequence *sequence, bool owner)
{
    if (slot < 0 || slot >= RecordSlots::Maximum)
        return false;
    if (sequence == nullptr && slot >= slotCount())
        return true;

    RecordSlot *item = makeSlot(slot);
    _row->filter.forget(slot);
    item->setRaw(sequence, owner);
    _row->filter.start(slot);
    _row->forgetExtrema();
    notifyRecords(slot);
    const QPointer<RecordWidget> alive(this);
    updateAll();
    if (alive)
        announceFiltering();
    return true;
}

RecordSequence *RecordWidget::records(int slot) const
{
    const RecordSlot *item = _row->items.at(slot);
    return item != nullptr ? item->raw : nullptr;
}

RecordSequence *RecordWidget::filteredRecords(int slot) const
{
    RecordSlot *item = _row->items.at(slot);
    return item != nullptr ? _row->filter.records(*item) : nullptr;
}

RecordSequence *RecordWidget::displayedRecords(int slot) const
{
    return _row->shownRecords(slot);
}

bool RecordWidget::ownsRecords(int slot) const
{
    const RecordSlot *item = _row->items.at(slot);
    return item != nullptr && item->ownsRaw;
}

void RecordWidget::clearRecords()
{
    const QPointer<RecordWidget> alive(this);
    for (int i = 0; alive && i < slotCount(); ++i)
        setRecords(i, nullptr);
}

int RecordWidget::currentRecords() const
{
    return _row->items.current;
}

void RecordWidget::setCurrentRecords(int slot)
{
    if (slot < 0 || slot == _row->items.current)
        return;

    _row->items.current = slot;
    updateAll();
}

// What is set for a slot

const double *RecordWidget::recordScale(int slot) const
{
    const RecordSlot *item = _row->items.at(slot);
    return item != nullptr && item->scale ? &*item->scale : nullptr;
}

void RecordWidget::setRecordScale(int slot, double scale)
{
    RecordSlot *item = makeSlot(slot);
    if (item == nullptr || item->scale == scale)
        return;

    item->scale = scale;
    updateAll();
}

void RecordWidget::removeRecordScale(int slot)
{
    RecordSlot *item = _row->items.at(slot);
    if (item == nullptr || !item->scale)
        return;

    item->scale.reset();
    updateAll();
}

QString RecordWidget::recordLabel(int slot) const
{
    const RecordSlot *item = _row->items.at(slot);
    return item != nullptr ? item->label : QString();
}

QString RecordWidget::recordID(int slot) const
{
    const RecordSlot *item = _row->items.at(slot);
    return item != nullptr ? item->id : QString();
}

QString RecordWidget::recordUnit(int slot) const
{
    const RecordSlot *item = _row->items.at(slot);
    return item != nullptr ? item->unit : QString();
}

void RecordWidget::setRecordLabel(int slot, const QString &label)
{
    if (RecordSlot *item = makeSlot(slot)) {
        item->label = label;
        update();
    }
}

void RecordWidget::setRecordID(int slot, const QString &id)
{
    if (RecordSlot *item = makeSlot(slot)) {
        item->id = id;
        update();
    }
}

void RecordWidget::setRecordUnit(int slot, const QString &unit)
{
    if (RecordSlot *item = makeSlot(slot)) {
        item->unit = unit;
        update();
    }
}

QPen RecordWidget::recordPen(int slot) const
{
    return _row->items.penOf(slot);
}

void RecordWidget::setRecordPen(int slot, const QPen &pen)
{
    if (RecordSlot *item = makeSlot(slot)) {
        item->pen = pen;
        update();
    }
}

void RecordWidget::removeRecordPen(int slot)
{
    RecordSlot *item = _row->items.at(slot);
    if (item == nullptr || !item->pen)
        return;
    item->pen.reset();
    update();
}

bool RecordWidget::isRecordVisible(int slot) const
{
    const RecordSlot *item = _row->items.at(slot);
    return item != nullptr && item->visible;
}

void RecordWidget::setRecordVisible(int slot, bool visible)
{
    RecordSlot *item = makeSlot(slot);
    if (item == nullptr || item->visible == visible)
        return;

    item->visible = visible;
    updateAll();
}

TraceInfo *RecordWidget::traceInfo(int slot, bool filtered) const
{
    RecordSlot *item = _row->items.at(slot);
    return item != nullptr ? &item->traces[filtered ? 1 : 0] : nullptr;
}

} // namespace Gui
} // namespace Tellarix
