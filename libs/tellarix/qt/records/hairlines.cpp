// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/hairlines_p.h>

#include <QPaintEngine>
#include <QPainter>

namespace Tellarix {
namespace Gui {
namespace {

/** True if lines of @p pen cover one pixel each, so that they can be filled: that takes a fraction
 *  of the time of stroking them. */
bool fillsPixels(const QPainter &painter, const QPen &pen)
{
    return pen.style() == Qt::SolidLine && pen.widthF() <= 1 &&
           pen.brush().style() == Qt::SolidPattern &&
           painter.paintEngine()->type() == QPaintEngine::Raster &&
           painter.deviceTransform().type() <= QTransform::TxTranslate;
}

} // namespace

QPen hairline(const QColor &color)
{
    QPen pen(color, 1);
    pen.setCosmetic(true);
    return pen;
}

void drawRectangle(QPainter &painter, const QPen &pen, const QRect &rect)
{
    if (!fillsPixels(painter, pen) || rect.width() < 2 || rect.height() < 2) {
        painter.setPen(pen);
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(rect.adjusted(0, 0, -1, -1));
        return;
    }
    const QColor color = pen.color();
    painter.fillRect(rect.left(), rect.top(), rect.width(), 1, color);
    painter.fillRect(rect.left(), rect.bottom(), rect.width(), 1, color);
    painter.fillRect(rect.left(), rect.top() + 1, 1, rect.height() - 2, color);
    painter.fillRect(rect.right(), rect.top() + 1, 1, rect.height() - 2, color);
}

void drawLines(QPainter &painter, const QPen &pen, const QVector<QLine> &lines)
{
    if (!fillsPixels(painter, pen)) {
        painter.setPen(pen);
        painter.drawLines(lines);
        return;
    }
    for (const QLine &line : lines)
        painter.fillRect(QRect(line.p1(), line.p2()), pen.color());
}

} // namespace Gui
} // namespace Tellarix
