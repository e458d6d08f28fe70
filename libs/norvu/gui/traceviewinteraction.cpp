// SPDX-License-Identifier: LGPL-3.0-or-later

#include "traceview.h"

#include "rowstack_p.h"

#include <norvu/gui/trace.h>

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollArea>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace Norvu {
namespace Gui {

namespace {

constexpr int SmallestRowHeight = 16;

} // namespace

void TraceView::keyPressEvent(QKeyEvent *event)
{
    QScrollBar *bar = _scrollArea->verticalScrollBar();
    switch (event->key()) {
    case Qt::Key_Space:
        activateCurrentRow();
        break;
    case Qt::Key_Plus:
        selectPattern();
        break;
    case Qt::Key_Minus:
        deselectPattern();
        break;
    case Qt::Key_A:
        if (event->modifiers() == Qt::ControlModifier)
            selectAll();
        break;
    case Qt::Key_Home:
        _currentItem ? selectNextShown(0, 1) : bar->setValue(0);
        break;
    case Qt::Key_End:
        _currentItem ? selectNextShown(-1, -1) : bar->setValue(bar->maximum());
        break;
    case Qt::Key_Up:
        selectPreviousRow();
        break;
    case Qt::Key_Down:
        selectNextRow();
        break;
    default:
        event->ignore();
    }
}

void TraceView::activateCurrentRow()
{
    if (!_currentItem)
        return;

    const QPointer<TraceView> alive(this);
    setSelectedTrace(indexOf(_currentItem));
    if (alive && _currentItem)
        emit itemActivated(_currentItem);
}

bool TraceView::mapToContents(const QPoint &position, QPoint &contentsPosition) const
{
    // Another widget may stand in for the rows.
    if (!isAncestorOf(_contents))
        return false;

    contentsPosition = _contents->mapFrom(this, position);
    return _contents->rect().contains(contentsPosition);
}

void TraceView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;

    _pressPos = event->pos();
    _dragging = false;
    _dragItems.clear();
}

void TraceView::mouseReleaseEvent(QMouseEvent *event)
{
    event->ignore();
    if (_dragging) {
        _dragging = false;
        _dragItems.clear();
        return;
    }
    if (event->button() != Qt::LeftButton) {
        QFrame::mouseReleaseEvent(event);
        return;
    }

    QPoint position;
    if (_selectionMode == QAbstractItemView::NoSelection || !mapToContents(event->pos(), position))
        return;

    const QPointer<TraceView> alive(this);
    const bool isMultiple = allowsMultipleSelection();
    if (isMultiple && event->modifiers().testFlag(Qt::ShiftModifier) && _currentItem)
        selectUpTo(_contents->rowAt(position), event);
    else if (isMultiple && event->modifiers().testFlag(Qt::ControlModifier))
        toggleRow(_contents->rowAt(position), event);
    else
        selectOnly(_contents->rowAt(position), event);

    // A view that is gone has no parent to which the event could go on.
    if (!alive)
        event->accept();
    else if (!event->isAccepted())
        QFrame::mouseReleaseEvent(event);
}

void TraceView::selectUpTo(Trace *row, QMouseEvent *event)
{
    const int from = _contents->indexOf(_currentItem);
    const int to = row ? _contents->indexOf(row) : -1;
    const QList<Trace *> rows = _contents->rowsBetween(std::min(from, to), std::max(from, to));
    const QPointer<TraceView> alive(this);
    if (row)
        updateCurrentTrace(row);
    if (!alive || from < 0 || to < 0)
        return;

    event->accept();
    setSelected(rows, true);
}

void TraceView::toggleRow(Trace *row, QMouseEvent *event)
{
    if (!row)
        return;

    event->accept();
    const QPointer<TraceView> alive(this);
    updateCurrentTrace(row);
    if (alive && _items.contains(row))
        setSelected({row}, !row->isSelected());
}

void TraceView::selectOnly(Trace *row, QMouseEvent *event)
{
    event->setAccepted(!_items.isEmpty());
    if (setOnlySelected(row, true))
        emit itemSelectionChanged();
}

void TraceView::mouseDoubleClickEvent(QMouseEvent *event)
{
    event->ignore();
    QPoint position;
    if (event->button() != Qt::LeftButton || !mapToContents(event->pos(), position) ||
        !_currentItem)
        return;

    event->accept();
    const QPointer<TraceView> alive(this);
    emit itemDoubleClicked(_currentItem);
    if (alive && _currentItem)
        emit itemActivated(_currentItem);
}

void TraceView::mouseMoveEvent(QMouseEvent *event)
{
    if (!event->buttons().testFlag(Qt::LeftButton) ||
        _selectionMode == QAbstractItemView::NoSelection)
        return;

    if (!_dragging) {
        // The first small step starts a drag; a pointer that leaps starts none.
        const int distance = (event->pos() - _pressPos).manhattanLength();
        if (distance >= QApplication::startDragDistance())
            return;
        _dragging = true;
    }
    const QPointer<TraceView> alive(this);
    if (_dragItems.isEmpty())
        takeDragItems();

    QPoint position;
    if (alive && mapToContents(event->pos(), position))
        moveDragItemsTo(_contents->rowAt(position));
}

void TraceView::takeDragItems()
{
    QPoint position;
    Trace *row = mapToContents(_pressPos, position) ? _contents->rowAt(position) : nullptr;
    const QPointer<TraceView> alive(this);
    if (row)
        updateCurrentTrace(row);
    if (!alive)
        return;
    if (_items.contains(row) && !row->isSelected() && setOnlySelected(row))
        emit itemSelectionChanged();
    if (!alive)
        return;

    const QList<Trace *> rows = _contents->allRows();
    std::copy_if(rows.begin(), rows.end(), std::back_inserter(_dragItems),
                 [](const Trace *candidate) { return candidate->isSelected(); });
}

void TraceView::moveDragItemsTo(Trace *target)
{
    if (!target || _dragItems == QList<Trace *>{target})
        return;

    int layoutIndex = _contents->indexOf(target);
    int itemIndex = _items.indexOf(target);
    for (Trace *row : std::as_const(_dragItems)) {
        _contents->remove(row);
        _items.removeOne(row);
    }
    for (Trace *row : std::as_const(_dragItems)) {
        _contents->insert(layoutIndex++, row);
        _items.insert(std::min(itemIndex++, _items.count()), row);
    }
}

void TraceView::focusChanged()
{
    update();
    for (Trace *row : std::as_const(_items)) {
        if (row->isSelected())
            row->update();
    }
}

void TraceView::focusInEvent(QFocusEvent *)
{
    focusChanged();
}

void TraceView::focusOutEvent(QFocusEvent *)
{
    focusChanged();
}

void TraceView::enterEvent(QEvent *)
{
    update();
}

void TraceView::leaveEvent(QEvent *)
{
    update();
}

void TraceView::paintEvent(QPaintEvent *event)
{
    QFrame::paintEvent(event);
}

void TraceView::horizontalZoomIn()
{
    const double center = (_tmin + _tmax) / 2;
    const double quarter = (_tmax - _tmin) / 4;
    setTimeRange(center - quarter, center + quarter);
}

void TraceView::horizontalZoomOut()
{
    const double center = (_tmin + _tmax) / 2;
    const double range = _tmax - _tmin;
    setTimeRange(center - range, center + range);
}

void TraceView::scrollLeft()
{
    const double step = (_tmax - _tmin) * 0.125;
    setTimeRange(_tmin - step, _tmax - step);
}

void TraceView::scrollRight()
{
    const double step = (_tmax - _tmin) * 0.125;
    setTimeRange(_tmin + step, _tmax + step);
}

void TraceView::verticalZoomIn()
{
    setMinimumRowHeight(2 * std::min(_minRowHeight, height()));
}

void TraceView::verticalZoomOut()
{
    setMinimumRowHeight(_minRowHeight < 2 * SmallestRowHeight ? SmallestRowHeight
                                                              : _minRowHeight >> 1);
}

} // namespace Gui
} // namespace Norvu
