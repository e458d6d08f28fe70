// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/recordmarkers_p.h>

#include <tellarix/qt/records/recordmarker.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace Tellarix {
namespace Gui {

namespace {

/** True if a marker is drawn at this y of a row. */
bool standsAt(const RecordMarker &marker, int y, int height)
{
    if (marker.isMovable() && marker.isModified())
        return true;
    if (marker.alignment() == Qt::AlignTop)
        return y < height / 2;
    return marker.alignment() != Qt::AlignBottom || y > height / 2;
}

} // namespace

RecordMarkers::RecordMarkers() = default;
RecordMarkers::~RecordMarkers() = default;

RecordMarker *RecordMarkers::at(int index) const
{
    return index >= 0 && index < size() ? _items[static_cast<size_t>(index)].get() : nullptr;
}

RecordMarker *RecordMarkers::find(const QString &text) const
{
    const auto it = std::find_if(_items.begin(), _items.end(),
                                 [&text](const auto &item) { return item->text() == text; });
    return it != _items.end() ? it->get() : nullptr;
}

RecordMarkers::Items::const_iterator RecordMarkers::iteratorOf(const RecordMarker *marker) const
{
    return std::find_if(_items.begin(), _items.end(),
                        [marker](const auto &item) { return item.get() == marker; });
}

bool RecordMarkers::contains(const RecordMarker *marker) const
{
    return iteratorOf(marker) != _items.end();
}

void RecordMarkers::add(RecordMarker *marker)
{
    _items.emplace_back(marker);
}

bool RecordMarkers::release(RecordMarker *marker)
{
    const auto it = iteratorOf(marker);
    if (it == _items.end())
        return false;

    _items[static_cast<size_t>(it - _items.begin())].release();
    _items.erase(it);
    return true;
}

RecordMarkers::Items RecordMarkers::takeAll()
{
    return std::exchange(_items, {});
}

RecordMarker *RecordMarkers::nearest(const QPoint &position, int tolerance, int height,
                                     const std::function<int(const Core::Time &)> &xOf) const
{
    RecordMarker *nearest = nullptr;
    int distance = tolerance;
    for (const auto &marker : _items) {
        if (marker->isHidden() || !standsAt(*marker, position.y(), height))
            continue;
        // At the same distance the one that is painted last is the one that is seen.
        const int own = std::abs(xOf(marker->correctedTime()) - position.x());
        if (own <= distance) {
            distance = own;
            nearest = marker.get();
        }
    }
    return nearest;
}

} // namespace Gui
} // namespace Tellarix
