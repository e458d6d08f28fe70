// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/map/originsymbol.h>

#include <tellarix/qt/scheme.h>

#include <QPainter>
#include <QPen>

namespace Norvu {
namespace Gui {
namespace Map {

namespace {

using Tellarix::Gui::Scheme;

const Scheme::Map &mapScheme()
{
    return Scheme::Current().map;
}

} // namespace

OriginSymbol::OriginSymbol()
{
    init();
}

OriginSymbol::OriginSymbol(double longitude, double latitude, double depth,
                           Tellarix::Gui::Map::Decorator *decorator)
    : AnnotatedSymbol(longitude, latitude), _depth(depth)
{
    setDecorator(decorator);
    init();
}

void OriginSymbol::init()
{
    constexpr int DefaultSize = 20;
    _color = Qt::black;
    setPriority(Highest);
    setSize(QSize(DefaultSize, DefaultSize));
    depthColorCoding();
    updateSize();
}

int OriginSymbol::getSize(double magnitude)
{
    const int smallest = mapScheme().originSymbolMinimumSize;
    // Wider than all screens; what is no number is as small as can be.
    constexpr double Largest = 1 << 15;
    const double size = (magnitude - 1.2) * 4.9;
    return size > smallest ? static_cast<int>(qMin(size, Largest)) : smallest;
}

void OriginSymbol::updateSize()
{
    const int size = getSize(_preferredMagnitudeValue);
    setSize(QSize(size, size));
}

void OriginSymbol::setPreferredMagnitudeValue(double magnitude)
{
    _preferredMagnitudeValue = magnitude;
    updateSize();
}

void OriginSymbol::setDepth(double depth)
{
    _depth = depth;
    depthColorCoding();
}

void OriginSymbol::setDefaultColor()
{
    depthColorCoding();
}

void OriginSymbol::depthColorCoding()
{
    const Scheme::Map &scheme = mapScheme();
    _fillColor = QColor();
    _color = scheme.depthGradient.colorAt(_depth, scheme.depthGradientIsDiscrete);
}

bool OriginSymbol::isInside(int x, int y) const
{
    const QPoint half(size().width() / 2, size().height() / 2);
    return QRect(position() - half, position() + half).contains(x, y);
}

void OriginSymbol::drawShadow(QPainter &)
{}

QPoint OriginSymbol::annotationOffset() const
{
    return QPoint(0, 2 * (-2 - size().height()));
}

void OriginSymbol::setBrush(QPainter &painter) const
{
    const bool outlined = mapScheme().filledOutlines;
    if (outlined && !_filled)
        return;

    QColor color = _fillColor.isValid() ? _fillColor : _color;
    if (!_fillColor.isValid() && !_filled)
        color.setAlpha(color.alpha() / 2);
    painter.setBrush(color);
}

void OriginSymbol::customDraw(const Tellarix::Gui::Map::Canvas *canvas, QPainter &painter)
{
    AnnotatedSymbol::customDraw(canvas, painter);

    QPen pen(_color, mapScheme().filledOutlines ? 4 : 2);
    pen.setJoinStyle(Qt::MiterJoin);
    painter.setPen(pen);
    setBrush(painter);
    const QPoint half(size().width() / 2, size().height() / 2);
    painter.drawEllipse(QRect(position() - half, size()));
}

} // namespace Map
} // namespace Gui
} // namespace Norvu
