// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>

#include <QPolygon>
#include <QPolygonF>
#include <QVector>

#include <vector>

class QPainter;

namespace Tellarix {
namespace Gui {

/** Pixels of consecutive columns that are covered, from low to high, both included; a low above
 *  the high covers nothing. */
struct TraceBars
{
    int first{0}; /**< the first column */
    std::vector<int> low;
    std::vector<int> high;

    int size() const { return static_cast<int>(low.size()); }
};

/**
 * Fills bars with the painter's brush; painters draw them fastest without a pen and antialiasing.
 *
 * @param turned  columns are counted along y, and their pixels along x
 */
TELLARIX_GUI_API void fillBars(QPainter &painter, const TraceBars &bars, bool turned);

/**
 * Draws polygons of a trace with the painter's pen.
 *
 * A polygon with clearly more points than pixel columns is drawn as one vertical bar a column,
 * which covers the zigzag and its half of the way to the neighbouring columns, without
 * antialiasing; so is one that fits into a single column, so that it shows at all. Other polygons,
 * and all of them with a pen that is not solid, are drawn as polylines.
 *
 * @param polygons  with x ascending, or all with y ascending, where bars lie along x
 */
TELLARIX_GUI_API void drawTrace(QPainter &painter, const QVector<QPolygon> &polygons);
TELLARIX_GUI_API void drawTrace(QPainter &painter, const QVector<QPolygonF> &polygons);

/** The pixels of a trace under a pen of one pixel. */
struct TraceInk
{
    std::vector<TraceBars> bars; /**< of each polygon; none of those drawn as polylines */
    bool turned{false};          /**< time goes along y */
};

/** Works out what drawTrace() would otherwise find out again for each picture. */
TELLARIX_GUI_API TraceInk makeTraceInk(const QVector<QPolygon> &polygons);
TELLARIX_GUI_API TraceInk makeTraceInk(const QVector<QPolygonF> &polygons);

/** Draws polygons with the ink that was made of them. */
TELLARIX_GUI_API void drawTrace(QPainter &painter, const QVector<QPolygon> &polygons,
                                const TraceInk &ink);
TELLARIX_GUI_API void drawTrace(QPainter &painter, const QVector<QPolygonF> &polygons,
                                const TraceInk &ink);

} // namespace Gui
} // namespace Tellarix
