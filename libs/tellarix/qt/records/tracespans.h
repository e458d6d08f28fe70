#pragma once

#include <tellarix/qt/api.h>

#include <QPolygon>
#include <QPolygonF>
#include <QVector>

class QPainter;

namespace Tellarix {
namespace Gui {

/**
 * Draws polygons of a trace with the painter's pen.
 *
 * A polygon with clearly more points than pixel columns is drawn as one vertical span a column,
 * which covers the zigzag and its half of the way to the neighbouring columns, without
 * antialiasing; so is one that fits into a single column, so that it shows at all. Other polygons,
 * and all of them with a pen that is not solid, are drawn as polylines.
 *
 * @param polygons  with x ascending, or all with y ascending, where spans lie along x
 */
TELLARIX_GUI_API void drawTrace(QPainter &painter, const QVector<QPolygon> &polygons);
TELLARIX_GUI_API void drawTrace(QPainter &painter, const QVector<QPolygonF> &polygons);

} // namespace Gui
} // namespace Tellarix
