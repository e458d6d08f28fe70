// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QAction>
#include <QMouseEvent>
#include <QPointer>
#include <QtTest>

#include <functional>
#include <utility>
#include <vector>

/** A receiver that does its deed when a signal comes for the first time. */
class Interference
{
public:
    Interference(QObject *sender, const char *signal, const std::function<void()> &deed)
    {
        QObject::connect(sender, signal, &_action, SLOT(trigger()));
        QObject::connect(&_action, &QAction::triggered, [this, deed] {
            if (!std::exchange(done, true))
                deed();
        });
    }

    bool done{false};

private:
    QAction _action;
};

/** Something done to a widget, in the course of which a signal comes. */
template <typename Widget>
struct Case
{
    const char *name;
    const char *signal;
    std::function<void(Widget &)> act;
    std::function<void(Widget &)> deed{}; /**< of the receiver; none to delete the widget */
    std::function<QObject *(Widget &)> sender{[](Widget &widget) { return &widget; }};
};

template <typename Widget>
void addRows(const std::vector<Case<Widget>> &cases)
{
    QTest::addColumn<int>("index");
    for (size_t i = 0; i < cases.size(); ++i)
        QTest::newRow(cases[i].name) << static_cast<int>(i);
}

/** Runs the case of the present row with a widget, and deletes that if it is left. */
template <typename Widget>
void run(const std::vector<Case<Widget>> &cases, Widget *widget)
{
    QFETCH(int, index);
    const Case<Widget> &item = cases[static_cast<size_t>(index)];
    const QPointer<Widget> alive(widget);
    const auto deed = [&] { item.deed ? item.deed(*alive) : delete alive.data(); };
    const Interference interference(item.sender(*widget), item.signal, deed);
    item.act(*widget);
    QVERIFY(interference.done);
    QCOMPARE(alive.isNull(), !item.deed);
    if (alive)
        alive->grab();
    delete alive;
}

/** Sends a mouse event, unless the widget is gone; one that goes on the way must not leave the
 *  event to its parent, which nobody can ask for any more. */
inline void sendMouse(const QPointer<QWidget> &widget, QEvent::Type type, const QPoint &position,
                      Qt::MouseButton button, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    if (!widget)
        return;
    QMouseEvent event(type, position, widget->mapToGlobal(position),
                      type == QEvent::MouseMove ? Qt::NoButton : button,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : button, modifiers);
    QCoreApplication::sendEvent(widget, &event);
    QVERIFY(widget || event.isAccepted());
}

/** Presses at one place, moves to another one and releases there. */
inline void dragMouse(const QPointer<QWidget> &widget, const QPoint &from, const QPoint &to,
                      Qt::MouseButton button = Qt::LeftButton,
                      Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    sendMouse(widget, QEvent::MouseButtonPress, from, button, modifiers);
    if (to != from)
        sendMouse(widget, QEvent::MouseMove, to, button, modifiers);
    sendMouse(widget, QEvent::MouseButtonRelease, to, button, modifiers);
}
