// SPDX-License-Identifier: LGPL-3.0-or-later

#include "colorbar_p.h"

#include <QPainter>

namespace Norvu {
namespace Gui {

namespace {

constexpr int Inset = 2;

} // namespace

void ColorBar::setColor(const QColor &color)
{
    _color = color;
    update();
}

void ColorBar::paintEvent(QPaintEvent *event)
{
    const int right = width() - 1 - Inset;
    if (right < Inset || height() < 0)
        return;

    QPainter painter(this);
    painter.fillRect(QRect(QPoint(Inset, 0), QPoint(right, height() - 1)), _color);
    painter.end();
    QWidget::paintEvent(event);
}

} // namespace Gui
} // namespace Norvu
