// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/map/annotatedsymbol.h>

#include <QColor>
#include <QPolygon>

namespace Norvu {
namespace Gui {
namespace Map {

/** A station: a small kite that stands on its place with its tip, and casts a shadow. */
class NORVU_GUI_API StationSymbol : public AnnotatedSymbol
{
public:
    /** Of the scheme's station symbol size. */
    StationSymbol();
    StationSymbol(double longitude, double latitude);

    /** The kite whose tip is at (@p x, @p y): roof, right shoulder, tip, left shoulder. It is one
     *  and three quarters of @p size high. */
    static QPolygon generateShape(int x, int y, int size);

    /** In pixels; counts as 0 below it and as 1024 above. */
    void setSize(int size);
    int size() const { return _size.width(); }
    void setPen(const QColor &color) { _pen = color; }
    const QColor &pen() const { return _pen; }
    void setFill(const QColor &color) { _fill = color; }
    const QColor &fill() const { return _fill; }
    void setPenWidth(double width) { _penWidth = width; }
    double penWidth() const { return _penWidth; }
    /** The outline with its tip at (0, 0). */
    const QPolygon &stationPolygon() const { return _stationPolygon; }

    /** Whether a pixel is in the kite. */
    bool isInside(int x, int y) const override;
    /** Stations of one size share their shadow. */
    void drawShadow(QPainter &painter) override;
    QPoint annotationOffset() const override;

protected:
    void customDraw(const Tellarix::Gui::Map::Canvas *canvas, QPainter &painter) override;

private:
    double _penWidth{1.5};
    QPolygon _stationPolygon;
    QColor _fill{45, 105, 191};
    QColor _pen{68, 68, 68, 128};
};

} // namespace Map
} // namespace Gui
} // namespace Norvu
