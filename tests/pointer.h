// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QApplication>
#include <QMouseEvent>
#include <QVector>
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

/** Presses at the first place, moves through all others and releases at the last. */
inline void drag(QWidget &widget, const QVector<QPointF> &way,
                 Qt::MouseButton button = Qt::LeftButton,
                 Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    const auto send = [&](QEvent::Type type, const QPointF &position, Qt::MouseButton held) {
        QMouseEvent event(type, position, widget.mapToGlobal(position.toPoint()), button, held,
                          modifiers);
        QApplication::sendEvent(&widget, &event);
    };
    send(QEvent::MouseButtonPress, way.first(), button);
    for (int i = 1; i < way.size(); ++i)
        move(widget, way[i], button);
    send(QEvent::MouseButtonRelease, way.last(), Qt::NoButton);
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
