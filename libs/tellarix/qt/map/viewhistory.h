// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>
#include <tellarix/qt/map/projection.h>

#include <QVector>

namespace Tellarix {
namespace Gui {
namespace Map {

/** The views that somebody has been at, to go back to. Holds the last hundred. */
class TELLARIX_GUI_API ViewHistory
{
public:
    /** How a view is left. Steps of one kind that follow each other within a second count as one;
     *  jumps never do. */
    enum Kind
    {
        Jump,
        Zoom,
        Pan
    };

    /** Tells that @p view is about to be left, at a time in milliseconds. What could be gone
     * forward to is forgotten. */
    void leave(const View &view, Kind kind, qint64 now);

    bool canGoBack() const { return !_past.isEmpty(); }
    bool canGoForward() const { return !_future.isEmpty(); }
    /** The view to go to from @p present, which is given back if there is none. */
    View back(const View &present) { return go(_past, _future, present); }
    View forward(const View &present) { return go(_future, _past, present); }

private:
    View go(QVector<View> &from, QVector<View> &to, const View &present);

    QVector<View> _past;
    QVector<View> _future;
    Kind _lastKind{Jump};
    qint64 _lastTime{0};
};

} // namespace Map
} // namespace Gui
} // namespace Tellarix
