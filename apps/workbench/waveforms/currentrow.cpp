// SPDX-License-Identifier: LGPL-3.0-or-later

#include "currentrow.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>

#include <QEvent>
#include <QScrollArea>
#include <QScrollBar>

#include <algorithm>
#include <utility>

using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace Workbench {

CurrentRow::CurrentRow(TraceView *view)
    : QObject(view), _view(view), _area(view->findChild<QScrollArea *>()), _rows(_area->widget())
{
    // A layout is done in steps, in the midst of which the scroll bar moves too.
    _timer.setSingleShot(true);
    _timer.setInterval(0);
    connect(&_timer, SIGNAL(timeout()), this, SLOT(look()));
    connect(_area->verticalScrollBar(), SIGNAL(valueChanged(int)), &_timer, SLOT(start()));
    connect(view, &TraceView::currentItemChanged, this, &CurrentRow::watch);
    _rows->installEventFilter(this);
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
    // All rows together also move as they are scrolled.
    const bool isRow = watched == _view->currentItem();
    const bool isShown = watched == _rows && event->type() == QEvent::Show;
    if (isShown || event->type() == QEvent::Resize || (isRow && event->type() == QEvent::Move)) {
        _hasMoved = true;
        _timer.start();
    }
    return QObject::eventFilter(watched, event);
}

void CurrentRow::look()
{
    if (_area->widget() != _rows)
        return; // the overview is in their place
    if (std::exchange(_hasMoved, false)) {
        if (_wasInSight)
            _view->ensureVisible(_view->currentItem());
        else
            restoreFirst();
    }
    const Trace *current = _view->currentItem();
    _wasInSight = current && isInSight(*current);
    noteFirst();
}

bool CurrentRow::isInSight(const Trace &row) const
{
    if (row.isHidden())
        return false;
    return QRect(QPoint(0, topOf(row)), row.size()).intersects(_area->viewport()->rect());
}

int CurrentRow::topOf(const Trace &row) const
{
    return row.mapTo(_rows, QPoint()).y() + _rows->y();
}

void CurrentRow::noteFirst()
{
    const QList<Trace *> rows = _view->items();
    const auto first = std::find_if(rows.begin(), rows.end(),
                                    [this](const Trace *row) { return isInSight(*row); });
    // Whoever is at the top stays there, whatever comes first.
    const bool isAtTop = _area->verticalScrollBar()->value() == 0;
    _first = isAtTop || first == rows.end() ? nullptr : *first;
    _firstTop = _first ? topOf(*_first) : 0;
}

void CurrentRow::restoreFirst()
{
    QScrollBar *bar = _area->verticalScrollBar();
    if (_first && !_first->isHidden())
        bar->setValue(bar->value() + topOf(*_first) - _firstTop);
}

} // namespace Workbench
