// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "pointer.h"

#include <norvu/gui/gradientwidget.h>

#include <QtTest>

namespace GradientTesting {

using Tellarix::Gui::Gradient;

struct Stop
{
    double key;
    QColor color;
    QString tag{};
};

inline Gradient gradientOf(const QVector<Stop> &stops)
{
    Gradient gradient;
    for (const Stop &stop : stops)
        gradient.setColorAt(stop.key, stop.color, stop.tag);
    return gradient;
}

/** Where the handle of a key stands in a bar that is painted without steps. */
inline QPoint handleOf(const QWidget &bar, const Gradient &gradient, double key)
{
    const double span = gradient.lastKey() - gradient.firstKey();
    const double share = span > 0 ? (key - gradient.firstKey()) / span : 0;
    return QPoint(static_cast<int>(share * (bar.width() - 1)), bar.height() - 2);
}

inline void clickHandle(QWidget &bar, const Gradient &gradient, double key,
                        Qt::KeyboardModifiers modifiers)
{
    // Other than the pointer, a click of a test leaves no place behind.
    Pointer::leave(bar);
    QTest::mouseClick(&bar, Qt::LeftButton, modifiers, handleOf(bar, gradient, key));
}

} // namespace GradientTesting
