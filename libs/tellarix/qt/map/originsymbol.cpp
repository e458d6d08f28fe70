// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/originsymbol.h>
#include <tellarix/qt/scheme.h>

#include <QCache>
#include <QImage>
#include <QPaintEngine>
#include <QPainter>
#include <QtMath>

#include <cmath>
#include <utility>

namespace Tellarix {
namespace Gui {

namespace {

/** Colours that differ in the rest look the same: a picture for each of them would not stay in the
 *  processor's cache. */
constexpr QRgb VisibleBits = 0xfffcfcfc;

void drawDisc(QPainter &painter, const QPointF &middle, int diameter, const QColor &color,
              int fillAlpha)
{
    QColor fill = color;
    fill.setAlpha(fillAlpha);
    painter.setBrush(fill);
    painter.setPen(QPen(color.darker(130), 1));
    painter.drawEllipse(middle, diameter / 2.0, diameter / 2.0);
}

/** Two rings, so that one of them stands out from whatever is below. */
void drawRings(QPainter &painter, const QPointF &middle, int diameter)
{
    const double radius = diameter / 2.0 + 3;
    painter.setBrush(Qt::NoBrush);
    for (const auto &[role, width] : {std::pair(QPalette::Base, 5), {QPalette::Highlight, 2}}) {
        painter.setPen(QPen(QPalette().color(role), width));
        painter.drawEllipse(middle, radius, radius);
    }
}

/** Whether a picture of a disc, painted at a whole pixel, looks like the disc itself. */
bool paintsPixels(const QPainter &painter)
{
    const QTransform &transform = painter.transform();
    return painter.paintEngine()->type() == QPaintEngine::Raster &&
           transform.type() <= QTransform::TxTranslate &&
           transform.dx() == std::floor(transform.dx()) &&
           transform.dy() == std::floor(transform.dy()) &&
           painter.device()->devicePixelRatioF() == 1 &&
           painter.testRenderHint(QPainter::Antialiasing);
}

/** A translucent disc about the middle pixel of an image: smooth shapes cost ten times as much as
 *  their pictures. For the GUI thread. */
QImage discImage(int diameter, const QColor &color)
{
    constexpr int MostBytes = 8 << 20;
    static QCache<quint64, QImage> images(MostBytes);
    const quint64 key = quint64(diameter) << 32 | color.rgba();
    if (const QImage *image = images.object(key))
        return *image;

    const int half = diameter / 2 + 2;
    auto *image = new QImage(2 * half + 1, 2 * half + 1, QImage::Format_ARGB32_Premultiplied);
    image->fill(Qt::transparent);
    QPainter painter(image);
    painter.setRenderHint(QPainter::Antialiasing);
    drawDisc(painter, QPointF(half + 0.5, half + 0.5), diameter, color, color.alpha() / 2);
    painter.end();
    images.insert(key, image, static_cast<int>(image->sizeInBytes()));
    return *image;
}

} // namespace

OriginSymbol::OriginSymbol(double longitude, double latitude, double depth,
                           Map::Decorator *decorator)
    : Symbol(longitude, latitude, decorator)
{
    setDepth(depth);
    updateSize();
}

int OriginSymbol::diameterOf(double magnitude)
{
    const int smallest = Scheme::Current().map.originSymbolMinimumSize;
    // No earthquake is larger; what is no number is as small as can be.
    constexpr double Largest = 10;
    if (!(magnitude > 0))
        return smallest;
    return qMax(smallest, static_cast<int>((qMin(magnitude, Largest) - 1.2) * 4.9));
}

void OriginSymbol::updateSize()
{
    const int diameter = diameterOf(_magnitude);
    setSize(QSize(diameter, diameter));
}

void OriginSymbol::setPreferredMagnitudeValue(double magnitude)
{
    _magnitude = std::isfinite(magnitude) ? magnitude : 0;
    updateSize();
}

void OriginSymbol::setDepth(double depth)
{
    const Scheme::Map &map = Scheme::Current().map;
    _depth = depth;
    _discDiameter = -1;
    const QColor color = std::isfinite(depth)
                             ? map.depthGradient.colorAt(depth, map.depthGradientIsDiscrete)
                             : QColor(Qt::gray);
    _color = QColor::fromRgba(color.rgba() & VisibleBits);
}

void OriginSymbol::setOpacity(double opacity)
{
    _opacity = opacity > 0 ? qMin(opacity, 1.0) : 0;
}

bool OriginSymbol::isInside(int x, int y) const
{
    const qint64 dx = x - _position.x();
    const qint64 dy = y - _position.y();
    return 4 * (dx * dx + dy * dy) <= qint64(_size.width()) * _size.width();
}

void OriginSymbol::customDraw(const Map::Canvas *, QPainter &painter)
{
    const int diameter = _size.width();
    if (!_selected && paintsPixels(painter)) {
        if (std::exchange(_discDiameter, diameter) != diameter)
            _disc = discImage(diameter, _color);
        const double outer = painter.opacity();
        painter.setOpacity(outer * _opacity);
        painter.drawImage(_position - QPoint(_disc.width() / 2, _disc.height() / 2), _disc);
        painter.setOpacity(outer);
        return;
    }

    // Positions are the middles of pixels.
    const QPointF middle = QPointF(_position) + QPointF(0.5, 0.5);
    const double outer = painter.opacity();
    painter.setOpacity(_selected ? outer : outer * _opacity);
    drawDisc(painter, middle, diameter, _color, _selected ? 255 : _color.alpha() / 2);
    painter.setOpacity(outer);
    if (_selected)
        drawRings(painter, middle, diameter);
}

} // namespace Gui
} // namespace Tellarix
