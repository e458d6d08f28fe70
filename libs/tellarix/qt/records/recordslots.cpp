// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/recordslots_p.h>

#include <tellarix/core/records/recordsequence.h>
#include <tellarix/qt/records/filteredrecords_p.h>
#include <tellarix/qt/records/filterjob_p.h>
#include <tellarix/qt/scheme.h>

namespace Tellarix {
namespace Gui {

// One slot

RecordSlot::RecordSlot() = default;

RecordSlot::~RecordSlot()
{
    setRaw(nullptr, false);
}

void RecordSlot::setRaw(RecordSequence *sequence, bool own)
{
    filtered.reset();
    former.reset();
    job.reset();
    if (ownsRaw && raw != sequence)
        delete raw;
    raw = sequence;
    ownsRaw = own && sequence != nullptr;
}

void RecordSlot::findStretches()
{
    if (stretchesKnown)
        return;

    stretchesKnown = true;
    gaps.clear();
    overlaps.clear();
    if (raw != nullptr) {
        gaps = raw->gaps();
        overlaps = raw->overlaps();
    }
}

void RecordSlot::forgetTraces()
{
    traces[0].dirty = true;
    traces[1].dirty = true;
}

void RecordSlot::forgetExtrema()
{
    extrema[0].known = false;
    extrema[1].known = false;
}

// All of them

RecordSlots::RecordSlots() = default;
RecordSlots::~RecordSlots() = default;

RecordSlot *RecordSlots::at(int slot) const
{
    return slot >= 0 && slot < size() ? _items[static_cast<size_t>(slot)].get() : nullptr;
}

void RecordSlots::resize(int count)
{
    if (count < size())
        _items.resize(static_cast<size_t>(count));
    while (size() < count)
        _items.push_back(std::make_unique<RecordSlot>());
}

bool RecordSlots::isDrawn(int slot) const
{
    const RecordSlot *item = at(slot);
    return item != nullptr && item->visible && (mode != DrawMode::Single || slot == current);
}

QVector<int> RecordSlots::drawn() const
{
    QVector<int> result;
    for (int i = 0; i < size(); ++i) {
        if (isDrawn(i))
            result.append(i);
    }
    return result;
}

QRect RecordSlots::rectOf(int slot, const QRect &canvas) const
{
    if (!isDrawn(slot))
        return {};
    if (mode != DrawMode::InRows)
        return canvas;

    const QVector<int> rows = drawn();
    const int row = rows.indexOf(slot);
    const auto topOf = [&](int index) {
        return canvas.top() + static_cast<int>(qint64(canvas.height()) * index / rows.size());
    };
    return QRect(canvas.left(), topOf(row), canvas.width(), topOf(row + 1) - topOf(row));
}

int RecordSlots::slotAt(int y, const QRect &canvas) const
{
    for (const int slot : drawn()) {
        const QRect area = rectOf(slot, canvas);
        if (y >= area.top() && y <= area.bottom())
            return slot;
    }
    return -1;
}

QPen RecordSlots::penOf(int slot) const
{
    const RecordSlot *item = at(slot);
    if (item != nullptr && item->pen)
        return *item->pen;

    const Scheme::Records &scheme = Scheme::Current().records;
    const bool overlaid = mode == DrawMode::Overlaid && slot > 0;
    QPen pen(overlaid ? scheme.alternateForeground : scheme.foreground, scheme.lineWidth);
    pen.setCosmetic(true);
    return pen;
}

} // namespace Gui
} // namespace Tellarix
