// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QChar>
#include <QFont>
#include <QString>

class QAbstractSpinBox;
class QToolButton;

namespace Norvu {
namespace Gui {

/**
 * A button of one icon inside an input box, at its left edge.
 *
 * Shared by the inputs of this library; not part of its interface.
 */
struct BoxButton
{
    /**
     * Adds the button to @p box, which owns it, and moves the box's text to the right by the room
     * that the button takes.
     *
     * @param boxClass  name of the box's class for its style sheet
     * @param name      object name of the button
     * @param face      icon font; its size is taken from the font of the box
     * @param gap       pixels between button and text
     */
    static BoxButton addTo(QAbstractSpinBox *box, const QString &boxClass, const QString &name,
                           const QFont &face, int gap);

    /** Shows @p glyph and fits the button's size to it. */
    void setGlyph(QChar glyph);

    QToolButton *button = nullptr;
    int margin = 0; /**< left margin of the button in pixels */
};

} // namespace Gui
} // namespace Norvu
