// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/viewhistory.h>

namespace Tellarix {
namespace Gui {
namespace Map {

void ViewHistory::leave(const View &view, Kind kind, qint64 now)
{
    constexpr qint64 OneStep = 1000;
    constexpr int Most = 100;

    const bool goesOn = kind != Jump && kind == _lastKind && now - _lastTime <= OneStep;
    _lastKind = kind;
    _lastTime = now;
    _future.clear();
    if (goesOn)
        return;

    if (_past.size() == Most)
        _past.removeFirst();
    _past.append(view);
}

View ViewHistory::go(QVector<View> &from, QVector<View> &to, const View &present)
{
    if (from.isEmpty())
        return present;

    to.append(present);
    _lastKind = Jump;
    return from.takeLast();
}

} // namespace Map
} // namespace Gui
} // namespace Tellarix
