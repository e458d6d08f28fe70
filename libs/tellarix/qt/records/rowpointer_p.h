// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/timewindow.h>
#include <tellarix/qt/api.h>

#include <QPoint>

namespace Tellarix {
namespace Gui {

class RecordMarker;

/** What the left button does in a row between press and release. */
class TELLARIX_GUI_API PointerDrag
{
public:
    enum Kind
    {
        None,
        Press, /**< the button is down, but nothing has been moved yet */
        Select,
        Marker,
    };

    /** Smaller movements between press and release are a click of an unsteady hand. */
    static constexpr int ClickDistance = 3;

    Kind kind() const { return _kind; }
    /** Where the button was pressed. */
    const QPoint &start() const { return _start; }
    /** The marker that was grabbed, null without one. */
    RecordMarker *marker() const { return _marker; }
    /** True if a release at @p position ends a click. */
    bool isClick(const QPoint &position) const;
    /** Where the line of the grabbed marker lies when the pointer is at @p x. */
    int lineX(int x) const { return x - _grip; }

    void press(const QPoint &position);
    /** Takes a marker along, whose line lies at @p lineX. */
    void grab(RecordMarker *marker, int lineX);
    /** Begins to drag once the pointer has left the place of a click: the marker that was grabbed,
     *  otherwise a selection where that is possible. */
    void moveTo(const QPoint &position, bool canSelect);
    /** Ends all of it, or just gives up a marker that is gone. */
    void end();
    void forgetMarker();

private:
    Kind _kind{None};
    QPoint _start;
    int _grip{0}; /**< distance of the pointer from the line of the marker */
    RecordMarker *_marker{nullptr};
};

/** What a row shows and remembers of the pointer. */
struct RowPointer
{
    PointerDrag drag;
    RecordMarker *currentMarker{nullptr};
    Core::TimeWindow selection;
    Core::Time cursorTime;
    bool canSelect{false};
    bool isCursorShown{false};
    bool hasMoveShape{false}; /**< the pointer shows that a marker can be moved */
};

} // namespace Gui
} // namespace Tellarix
