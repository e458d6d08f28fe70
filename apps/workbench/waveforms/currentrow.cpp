// SPDX-License-Identifier: LGPL-3.0-or-later

#include "currentrow.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>

#include <QEvent>
#include <QScrollArea>
#include <QScrollBar>

#include <utility>

using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace Workbench {

CurrentRow::CurrentRow(TraceView *view)
    : QObject(view), _view(view), _area(view->findChild<QScrollArea *>())
{
    // A layout is done in steps, in the midst of which the scroll bar moves too.
    _timer.setSingleShot(true);
    _timer.setInterval(0);
    connect(&_timer, SIGNAL(timeout()), this, SLOT(look()));
    connect(_area->verticalScrollBar(), SIGNAL(valueChanged(int)), &_timer, SLOT(start()));
    connect(view, &TraceView::currentItemChanged, this, &CurrentRow::watch);
}

void CurrentRow::watch(Trace *old, Trace *row)
{
    if (old)
        old->removeEventFilter(this);
    if (row)
        row->installEventFilter(this);
    _hasMoved = false;
    _timer.start();
}

bool CurrentRow::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Move || event->type() == QEvent::Resize) {
        _hasMoved = true;
        _timer.start();
    }
    return QObject::eventFilter(watched, event);
}

void CurrentRow::look()
{
    if (std::exchange(_hasMoved, false) && _wasInSight)
        _view->ensureVisible(_view->currentItem());
    _wasInSight = isInSight();
}

bool CurrentRow::isInSight() const
{
    const Trace *row = _view->currentItem();
    if (!row || row->isHidden())
        return false;
    const QPoint place = row->mapTo(_area->widget(), QPoint()) + _area->widget()->pos();
    return QRect(place, row->size()).intersects(_area->viewport()->rect());
}

} // namespace Workbench
