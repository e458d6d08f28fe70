// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "norvu/ink.h"

#include <tellarix/qt/records/ruler.h>

#include <QApplication>
#include <QResizeEvent>

namespace TestUtils {

/** Resizes a widget that isn't shown, so that it learns of it at once. */
inline void resizeTo(QWidget &widget, int width, int height)
{
    const QSize before = widget.size();
    widget.resize(width, height);
    QResizeEvent event(widget.size(), before);
    QApplication::sendEvent(&widget, &event);
}

inline QImage picture(QWidget &widget)
{
    return Ink::picture(widget, QWidget::DrawChildren);
}

/** What a random case was, for the message of its failure. */
inline QByteArray describe(unsigned seed, const Tellarix::Gui::Ruler &ruler)
{
    return QByteArray("seed ") + QByteArray::number(seed) + ": " +
           QByteArray::number(ruler.lower(), 'g', 17) + " to " +
           QByteArray::number(ruler.upper(), 'g', 17) + " on " + QByteArray::number(ruler.width());
}

/** Opens up the labels of a ruler. */
template <class Base>
class Probe : public Base
{
public:
    using Base::Base;
    using Base::labels;
    using Base::lineCount;

    QVector<Tellarix::Gui::RulerLabel> placedLabels(int line) const
    {
        return Tellarix::Gui::layoutLabels(labels(line), Base::rulerLength(), 1);
    }
    QStringList texts(int line) const
    {
        QStringList result;
        for (const Tellarix::Gui::RulerLabel &label : placedLabels(line))
            result.append(label.text);
        return result;
    }
    /** Number of labels in a line that fit where they want to stand, but were left out. */
    int droppedInside(int line) const
    {
        int fitting = 0;
        for (const Tellarix::Gui::RulerLabel &label : labels(line)) {
            const double start = label.position - 0.5 * label.extent;
            fitting += start >= 0 && start + label.extent <= Base::rulerLength() ? 1 : 0;
        }
        int placed = 0;
        for (const Tellarix::Gui::RulerLabel &label : placedLabels(line))
            placed += label.start == label.position - 0.5 * label.extent ? 1 : 0;
        return fitting - placed;
    }
};

} // namespace TestUtils
