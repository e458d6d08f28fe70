// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/toolbutton.h>

#include <QPalette>
#include <QStyleOptionToolButton>

namespace Norvu {
namespace Gui {

ToolButton::ToolButton(QWidget *parent) : QToolButton(parent)
{}

void ToolButton::paintEvent(QPaintEvent *event)
{
    QStyleOptionToolButton option;
    initStyleOption(&option);

    // Painting is the one moment at which the style's own view of the mouse is known. A palette
    // that stays the same causes no further repaint, so this settles after one round.
    if (!(option.state & QStyle::State_MouseOver) && !isDown()) {
        QPalette colors = palette();
        colors.setBrush(QPalette::ButtonText, colors.color(QPalette::HighlightedText));
        setPalette(colors);
    } else {
        setPalette(QPalette());
    }

    QToolButton::paintEvent(event);
}

} // namespace Gui
} // namespace Norvu
