// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowtimescale_p.h"

#include <tellarix/qt/records/recordwidget.h>

#include <QPointer>

namespace Norvu {
namespace Gui {

void RowTimeScale::follow()
{
    const QPointer<RowTimeScale> alive(this);
    setScale(_widget->timeScale());
    if (alive)
        setRange(_widget->tmin(), _widget->tmax());
}

void RowTimeScale::resizeEvent(QResizeEvent *event)
{
    const QPointer<RowTimeScale> alive(this);
    TimeScale::resizeEvent(event);
    // The record widget only finds its scale when it gets its size, just before this axis.
    if (alive)
        follow();
}

} // namespace Gui
} // namespace Norvu
