// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/pacedupdate_p.h>

#include <QWidget>

#include <utility>

namespace Tellarix {
namespace Gui {

PacedUpdate::PacedUpdate(QWidget *widget, int interval) : _widget(widget), _interval(interval)
{}

void PacedUpdate::add(const QRect &area)
{
    if (area.isEmpty())
        return;

    _area += area;
    if (!_timer.isActive())
        paint();
}

void PacedUpdate::flush()
{
    _widget->update(std::exchange(_area, QRegion()));
}

void PacedUpdate::paint()
{
    if (_area.isEmpty()) {
        _timer.stop();
        return;
    }
    flush();
    _timer.start(_interval, this);
}

void PacedUpdate::timerEvent(QTimerEvent *)
{
    paint();
}

} // namespace Gui
} // namespace Tellarix
