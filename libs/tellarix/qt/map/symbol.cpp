// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/canvas.h>
#include <tellarix/qt/map/symbol.h>

namespace Tellarix {
namespace Gui {
namespace Map {

Decorator::~Decorator() = default;

Symbol::Symbol(Decorator *decorator) : _decorator(decorator)
{}

Symbol::Symbol(double longitude, double latitude, Decorator *decorator)
    : _location(longitude, latitude), _decorator(decorator)
{}

Symbol::~Symbol() = default;

void Symbol::calculateMapPosition(const Canvas *canvas)
{
    _clipped = !canvas->projection()->project(_position, _location);
    if (_clipped)
        return;

    // Symbols stand on their place, or lie about it: both reach at most this far.
    const int width = _size.width() / 2 + 1;
    const int height = _size.height() + 1;
    const QRect reach(_position.x() - width, _position.y() - height, 2 * width + 1, 2 * height + 1);
    _clipped = !reach.intersects(QRect(QPoint(0, 0), canvas->size()));
}

void Symbol::setVisible(bool visible)
{
    _visible = visible;
}

void Symbol::layerVisibilityChanged(bool)
{}

void Symbol::draw(const Canvas *canvas, QPainter &painter)
{
    if (_decorator)
        _decorator->draw(canvas, painter, *this);
    customDraw(canvas, painter);
}

} // namespace Map
} // namespace Gui
} // namespace Tellarix
