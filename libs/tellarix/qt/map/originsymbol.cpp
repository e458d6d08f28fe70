// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/originsymbol.h>
#include <tellarix/qt/scheme.h>

#include <QPainter>
#include <QtMath>

#include <cmath>

namespace Tellarix {
namespace Gui {

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
    _magnitude = magnitude;
    updateSize();
}

void OriginSymbol::setDepth(double depth)
{
    const Scheme::Map &map = Scheme::Current().map;
    _depth = depth;
    _color = std::isfinite(depth) ? map.depthGradient.colorAt(depth, map.depthGradientIsDiscrete)
                                  : QColor(Qt::gray);
}

bool OriginSymbol::isInside(int x, int y) const
{
    const QPoint offset = QPoint(x, y) - _position;
    return 4 * QPoint::dotProduct(offset, offset) <= _size.width() * _size.width();
}

void OriginSymbol::customDraw(const Map::Canvas *, QPainter &painter)
{
    QColor fill = _color;
    fill.setAlpha(_selected ? 255 : _color.alpha() / 2);
    painter.setBrush(fill);
    painter.setPen(QPen(_color.darker(130), 1));
    const QRectF disc(_position.x() - _size.width() / 2.0, _position.y() - _size.height() / 2.0,
                      _size.width(), _size.height());
    painter.drawEllipse(disc);
    if (!_selected)
        return;

    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QPalette().color(QPalette::Highlight), 2));
    painter.drawEllipse(disc.adjusted(-3, -3, 3, 3));
}

} // namespace Gui
} // namespace Tellarix
