// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/time.h>
#include <tellarix/qt/api.h>

#include <QPoint>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace Tellarix {
namespace Gui {

class RecordMarker;

/** The markers of a row, in the order in which they are painted. Owns them. */
class TELLARIX_GUI_API RecordMarkers
{
public:
    using Items = std::vector<std::unique_ptr<RecordMarker>>;

    RecordMarkers();
    ~RecordMarkers();

    int size() const { return static_cast<int>(_items.size()); }
    bool isEmpty() const { return _items.empty(); }
    /** Null if there is no such marker. */
    RecordMarker *at(int index) const;
    RecordMarker *find(const QString &text) const;
    bool contains(const RecordMarker *marker) const;
    Items::const_iterator begin() const { return _items.begin(); }
    Items::const_iterator end() const { return _items.end(); }

    void add(RecordMarker *marker);
    /** Gives a marker up without deleting it; false if it isn't here. */
    bool release(RecordMarker *marker);
    Items takeAll();

    /**
     * The visible marker nearest to @p position, at most @p tolerance away.
     * @param height  of the row: some markers stand in one half of it only
     * @param xOf     pixel of a time
     */
    RecordMarker *nearest(const QPoint &position, int tolerance, int height,
                          const std::function<int(const Core::Time &)> &xOf) const;

private:
    Items::const_iterator iteratorOf(const RecordMarker *marker) const;

    Items _items;
};

} // namespace Gui
} // namespace Tellarix
