// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/rowpointer_p.h>

namespace Tellarix {
namespace Gui {

bool PointerDrag::isClick(const QPoint &position) const
{
    return (position - _start).manhattanLength() < ClickDistance;
}

void PointerDrag::press(const QPoint &position)
{
    _kind = Press;
    _start = position;
    _marker = nullptr;
}

void PointerDrag::grab(RecordMarker *marker, int lineX)
{
    _marker = marker;
    _grip = _start.x() - lineX;
}

void PointerDrag::moveTo(const QPoint &position, bool canSelect)
{
    if (_kind != Press || isClick(position))
        return;
    if (_marker != nullptr)
        _kind = Marker;
    else if (canSelect)
        _kind = Select;
}

void PointerDrag::end()
{
    _kind = None;
    _marker = nullptr;
}

void PointerDrag::forgetMarker()
{
    if (_marker != nullptr)
        end();
}

} // namespace Gui
} // namespace Tellarix
