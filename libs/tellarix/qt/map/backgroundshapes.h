// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>
#include <tellarix/qt/map/worlddata.h>

#include <QPointF>
#include <QPolygonF>
#include <QRectF>
#include <QVector>

#include <vector>

class QPainterPath;

namespace Tellarix {
namespace Gui {
namespace Map {

class Projection;

/** The part of a ring within a window, joined along the window's edges; Sutherland and Hodgman
 *  (1974). Empty if there is none. */
TELLARIX_GUI_API QPolygonF clippedRing(const QPolygonF &ring, const QRectF &window);

/** Shortens a line to its part within a window; false if there is none. Liang and Barsky (1984). */
TELLARIX_GUI_API bool clipLine(QPointF *from, QPointF *to, const QRectF &window);

/**
 * Leads from the world's shapes to what has to be painted of them in one view: in pixels, clipped
 * to a window, without nodes that lie on the pixel of the one before.
 *
 * Shapes appear as often as the window shows them: those at the date line on both sides of the
 * canvas. The cost is that of the nodes near the window; others are passed over by the boxes.
 */
class TELLARIX_GUI_API BackgroundShapes
{
public:
    /** @param window in pixels of the projection, beyond which nothing is of use. */
    BackgroundShapes(const Projection &projection, const QRectF &window);

    /** Adds the rings up to a rank to @p areas, and their edges to @p edges. Rings of less than
     * half a pixel are left out. The data's cuts at the date line and the south pole are no edges;
     * areas overlap there by a pixel on either side, so that no seam is left. */
    void addRings(QPainterPath *areas, QPainterPath *edges, const WorldShapes &shapes,
                  int highestRank) const;
    /** Adds lines. */
    void addLines(QPainterPath *path, const WorldShapes &shapes, int highestRank) const;

private:
    struct Node
    {
        QPointF pixel;
        int cuts; /**< flags of Cut */
    };
    /** Nodes between steps and pixels for one turn of the globe. */
    struct Turn
    {
        double origin;       /**< pixel of longitude 0 */
        double pixelPerStep; /**< eastwards */
        double degreePerStep;
        WorldBox window; /**< in steps */
    };

    template <typename Visit>
    void forEachVisible(const WorldShapes &shapes, int highestRank, Visit visit) const;
    Turn turnOf(const WorldShapes &shapes, int turn) const;
    double rowOf(double latitude) const;
    double exactRowOf(double latitude) const;
    bool isTiny(const WorldBox &box, const Turn &turn) const;
    void traceNodes(std::vector<Node> *result, const WorldShapes &shapes,
                    const WorldShapes::Shape &shape, const Turn &turn) const;
    void addPolyline(QPainterPath *path, const std::vector<Node> &nodes, bool closed) const;

    const Projection &_projection;
    QRectF _window;
    double _south;
    double _north;
    QVector<double> _rows; /**< from south to north, evenly spaced */
    double _rowsPerDegree;
};

} // namespace Map
} // namespace Gui
} // namespace Tellarix
