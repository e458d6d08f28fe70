// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QApplication>
#include <QMouseEvent>
#include <QWheelEvent>
#include <QWidget>

/** What the pointer does to widgets, sent at once and without a window system. */
namespace Pointer {

/** Moves to a place in the widget while @p held buttons are down. */
inline void move(QWidget &widget, const QPointF &position, Qt::MouseButtons held = Qt::NoButton)
{
    QMouseEvent event(QEvent::MouseMove, position, widget.mapToGlobal(position.toPoint()),
                      Qt::NoButton, held, Qt::NoModifier);
    QApplication::sendEvent(&widget, &event);
}

inline void leave(QWidget &widget)
{
    QEvent event(QEvent::Leave);
    QApplication::sendEvent(&widget, &event);
}

/** Turns the wheel; 120 units are one notch of 15 degrees. */
inline void turnWheel(QWidget &widget, const QPointF &position, const QPoint &units,
                      Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QWheelEvent event(position, widget.mapToGlobal(position.toPoint()), QPoint(), units,
                      Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&widget, &event);
}

} // namespace Pointer
