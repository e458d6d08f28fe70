// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/baseobject.h>
#include <tellarix/qt/api.h>
#include <tellarix/qt/map/decorator.h>

#include <QPoint>
#include <QPointF>
#include <QSize>

class QPainter;

namespace Tellarix {
namespace Gui {
namespace Map {

class Canvas;

/**
 * Something at a place of the map: where it is, which pixel that is in the present view, and how it
 * is painted.
 */
class TELLARIX_GUI_API Symbol
{
public:
    /** Later ones lie above former ones. */
    enum Priority
    {
        Lowest = 0,
        Low = 1,
        High = 2,
        Highest = 3
    };

    explicit Symbol(Decorator *decorator = nullptr);
    /** @param longitude, latitude  in degrees */
    Symbol(double longitude, double latitude, Decorator *decorator = nullptr);
    virtual ~Symbol();

    /** Whether a pixel of the canvas belongs to the symbol. */
    virtual bool isInside(int x, int y) const = 0;
    /** Finds the symbol's pixel in the canvas's view. It is clipped, that is not painted, if its
     *  place can't be shown or no part of its size, set about the pixel, lies on the canvas. */
    virtual void calculateMapPosition(const Canvas *canvas);

protected:
    /** Paints the symbol about position(). */
    virtual void customDraw(const Canvas *canvas, QPainter &painter) = 0;

public:
    virtual void setVisible(bool visible);
    /** The layer that holds the symbol has been shown or hidden. */
    virtual void layerVisibilityChanged(bool visible);

    /** Paints decorator and symbol, whether visible or not. */
    void draw(const Canvas *canvas, QPainter &painter);

    /** Longitude in x, latitude in y, in degrees. */
    const QPointF &location() const { return _location; }
    /** calculateMapPosition() has to follow before it is painted there. */
    void setLocation(const QPointF &location) { _location = location; }

    /** Pixel of the location in the view of the last calculateMapPosition(). */
    const QPoint &position() const { return _position; }
    /** In pixels. */
    const QSize &size() const { return _size; }
    void setSize(const QSize &size) { _size = size; }

    Priority priority() const { return _priority; }
    void setPriority(Priority priority) { _priority = priority; }

    /** Takes a share in the decorator; null removes the former one. */
    void setDecorator(Decorator *decorator) { _decorator = decorator; }
    Decorator *decorator() const { return _decorator.get(); }

    bool isClipped() const { return _clipped; }
    bool isVisible() const { return _visible; }

protected:
    QPointF _location;
    QPoint _position;
    QSize _size;
    Priority _priority{Lowest};
    bool _clipped{false};
    bool _visible{true};

private:
    Core::SmartPointer<Decorator> _decorator;
};

} // namespace Map
} // namespace Gui
} // namespace Tellarix
