// SPDX-License-Identifier: LGPL-3.0-or-later

#include "distanceaxis.h"

#include <QPainter>

namespace Workbench {

DistanceAxis::DistanceAxis(QWidget *parent) : Ruler(parent, Qt::WindowFlags(), Left)
{
    setAutoScaleEnabled(true);
    setInteractive(false);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void DistanceAxis::setUnit(const QString &unit)
{
    if (unit == _unit)
        return;

    _unit = unit;
    update();
}

void DistanceAxis::setDistances(double nearest, double farthest)
{
    // A vertical ruler begins at the bottom.
    isVertical() ? setRange(farthest, nearest) : setRange(nearest, farthest);
}

QSize DistanceAxis::sizeHint() const
{
    const QSize size = Ruler::sizeHint();
    return isVertical() ? size : size + QSize(0, fontMetrics().height());
}

bool DistanceAxis::getTickText(double value, double nextValue, int line, QString &text) const
{
    if (!Ruler::getTickText(value, nextValue, line, text))
        return false;
    if (value < 0 && text != "0")
        text.clear();
    return true;
}

void DistanceAxis::paintEvent(QPaintEvent *event)
{
    Ruler::paintEvent(event);

    QPainter painter(this);
    const int line = fontMetrics().height();
    QRect room(0, height() - line, width(), line);
    if (isVertical()) {
        painter.translate(0, height());
        painter.rotate(-90);
        room = QRect(0, 0, height(), line);
    }
    const QString title = tr("Distance (%1)").arg(_unit);
    const bool hasRoom = fontMetrics().horizontalAdvance(title) <= room.width();
    painter.drawText(room, Qt::AlignCenter, hasRoom ? title : _unit);
}

} // namespace Workbench
