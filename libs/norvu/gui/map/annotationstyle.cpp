// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/map/annotations.h>
#include <norvu/gui/map/annotationstyle.h>

#include <QFontMetrics>
#include <QPainter>

namespace Norvu {
namespace Gui {

namespace {

/** Measures a text in the painter's font, unless that has been done before. */
void measure(AnnotationStyle::Extent &extent, const QString &text, const QPainter &painter)
{
    // A painter that has begun on nothing, such as an image without pixels, has no device.
    const QPaintDevice *device = painter.device();
    const int resolution = device ? device->logicalDpiY() : 0;
    if (resolution > 0 && extent.resolution == resolution && extent.text == text &&
        extent.font == painter.font())
        return;

    const QFontMetrics metrics = painter.fontMetrics();
    extent = {text, painter.font(), resolution, metrics.boundingRect(text).size(),
              metrics.height()};
}

} // namespace

AnnotationStyle::AnnotationStyle(QObject *parent) : QObject(parent)
{
    const QColor border(160, 160, 164);
    _palettes[0] = {QColor(192, 192, 192), border, QColor(32, 32, 32, 192)};
    _palettes[1] = {QColor(0, 0, 0), border, QColor(255, 255, 255, 192)};
    _font.setPointSize(9);
}

void AnnotationStyle::draw(QPainter &painter, const AnnotationItem &item)
{
    constexpr double Radius = 3.0;
    const Palette &colors = palette(item.highlighted);
    painter.setFont(_font);
    painter.setBrush(colors.brush);
    painter.setPen(colors.borderPen);
    painter.drawRoundedRect(item.rect, Radius, Radius, Qt::AbsoluteSize);
    painter.setPen(colors.textPen);
    painter.drawText(item.rect, Qt::AlignCenter | Qt::TextSingleLine, item.text);
}

QRect AnnotationStyle::itemRect(QPainter &painter, const AnnotationItem &item,
                                const QPoint &anchor) const
{
    painter.setFont(_font);
    if (item.text.isEmpty())
        return QRect();

    measure(item.extent, item.text, painter);
    const QSize text = item.extent.size;
    const int margin = item.extent.lineHeight / 4;
    const int left = anchor.x() - text.width() / 2;
    return QRect(QPoint(left - margin, anchor.y() - (text.height() - 1) - 2 * margin),
                 QPoint(left + text.width() - 1 + margin, anchor.y()));
}

void AnnotationStyle::setPalette(bool highlighted, const Palette &palette)
{
    _palettes[highlighted ? 1 : 0] = palette;
}

void AnnotationStyle::setFont(const QFont &font)
{
    _font = font;
}

} // namespace Gui
} // namespace Norvu
