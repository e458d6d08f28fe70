// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/backgroundshapes.h>

#include <tellarix/qt/map/projection.h>

#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace Tellarix {
namespace Gui {
namespace Map {

namespace {

/** Nodes nearer to the one before than this, in pixels, make no difference that could be seen. */
constexpr double NodeDistance = 0.7;
/** Rings that are smaller both ways are left out, in pixels. */
constexpr double SmallestRing = 0.5;
/** How far cuts of the data overlap, in pixels. */
constexpr double CutOverlap = 1;

enum Cut
{
    WestCut = 0x1,
    EastCut = 0x2,
    SouthCut = 0x4
};

/** Adds the part of a ring at which @p inside gives no negative number, joined along the line at
 *  which it gives 0. */
template <typename Inside>
QPolygonF clippedHalf(const QPolygonF &ring, Inside inside)
{
    QPolygonF result;
    if (ring.isEmpty())
        return result;

    result.reserve(ring.size() + 8);
    QPointF last = ring.last();
    double lastInside = inside(last);
    for (const QPointF &point : ring) {
        const double pointInside = inside(point);
        if ((pointInside < 0) != (lastInside < 0))
            result.append(last + (point - last) * (lastInside / (lastInside - pointInside)));
        if (pointInside >= 0)
            result.append(point);
        last = point;
        lastInside = pointInside;
    }
    return result;
}

/** One edge of clipLine(): keeps of the range @p from to @p to the part at which
 *  start + t * slope isn't negative. */
bool clipRange(double *from, double *to, double start, double slope)
{
    if (slope == 0)
        return start >= 0;
    const double crossing = -start / slope;
    if (slope > 0)
        *from = std::max(*from, crossing);
    else
        *to = std::min(*to, crossing);
    return *from <= *to;
}

bool isDisjoint(const WorldBox &a, const WorldBox &b)
{
    return a.east < b.west || a.west > b.east || a.north < b.south || a.south > b.north;
}

bool contains(const WorldBox &outer, const WorldBox &inner)
{
    return inner.west >= outer.west && inner.east <= outer.east && inner.south >= outer.south &&
           inner.north <= outer.north;
}

int cutsOf(const WorldNode &node, int stepsPerDegree)
{
    return (node.east == -180 * stepsPerDegree ? WestCut : 0) |
           (node.east == 180 * stepsPerDegree ? EastCut : 0) |
           (node.north == -90 * stepsPerDegree ? SouthCut : 0);
}

qint32 toStep(double value)
{
    // Far enough from any node, and from overflow.
    constexpr double Limit = 1 << 30;
    return static_cast<qint32>(qBound(-Limit, value, Limit));
}

} // namespace

QPolygonF clippedRing(const QPolygonF &ring, const QRectF &window)
{
    QPolygonF result = clippedHalf(ring, [&](const QPointF &p) { return p.x() - window.left(); });
    result = clippedHalf(result, [&](const QPointF &p) { return window.right() - p.x(); });
    result = clippedHalf(result, [&](const QPointF &p) { return p.y() - window.top(); });
    return clippedHalf(result, [&](const QPointF &p) { return window.bottom() - p.y(); });
}

bool clipLine(QPointF *from, QPointF *to, const QRectF &window)
{
    const QPointF start = *from;
    const QPointF way = *to - start;
    double first = 0, last = 1;
    if (!clipRange(&first, &last, start.x() - window.left(), way.x()) ||
        !clipRange(&first, &last, window.right() - start.x(), -way.x()) ||
        !clipRange(&first, &last, start.y() - window.top(), way.y()) ||
        !clipRange(&first, &last, window.bottom() - start.y(), -way.y()))
        return false;

    if (last < 1)
        *to = start + last * way;
    if (first > 0)
        *from = start + first * way;
    return true;
}

BackgroundShapes::BackgroundShapes(const Projection &projection, const QRectF &window)
    : _projection(projection), _window(window)
{
    // What the globe's edges cut off is not clipped: it may lie beside what is seen.
    const QRectF globe = projection.globe();
    const double height = projection.view().size.height() / 2;
    const double centerHeight = (globe.center().y() - height) / projection.view().pixelPerDegree;
    const double half = projection.heightOf(projection.maximumLatitude());
    const auto latitudeOf = [&](double row) {
        const double aboveEquator =
            centerHeight + (height - row) / projection.view().pixelPerDegree;
        return projection.latitudeAt(qBound(-half, aboveEquator, half));
    };
    _south = latitudeOf(window.bottom());
    _north = latitudeOf(window.top());

    // Fine enough that a straight line between two entries stays within some hundredths of a pixel.
    constexpr int Entries = 2048;
    _rowsPerDegree = Entries / std::max(_north - _south, 1e-9);
    _rows.resize(Entries + 2);
    for (int i = 0; i < _rows.size(); ++i)
        _rows[i] = exactRowOf(_south + i / _rowsPerDegree);
}

double BackgroundShapes::exactRowOf(double latitude) const
{
    const double limit = _projection.maximumLatitude();
    QPointF pixel;
    _projection.project(pixel,
                        QPointF(_projection.view().center.x(), qBound(-limit, latitude, limit)));
    return pixel.y();
}

double BackgroundShapes::rowOf(double latitude) const
{
    if (!(latitude >= _south && latitude <= _north))
        return exactRowOf(latitude);
    const double position = (latitude - _south) * _rowsPerDegree;
    const int index = static_cast<int>(position);
    return _rows[index] + (_rows[index + 1] - _rows[index]) * (position - index);
}

BackgroundShapes::Turn BackgroundShapes::turnOf(const WorldShapes &shapes, int turn) const
{
    const View &view = _projection.view();
    const double steps = shapes.stepsPerDegree;
    Turn result;
    result.origin = view.size.width() / 2 +
                    (turn * 360.0 - nearestTurn(view.center.x(), 0)) * view.pixelPerDegree;
    result.pixelPerStep = view.pixelPerDegree / steps;
    result.degreePerStep = 1 / steps;
    result.window = {toStep(std::floor((_window.left() - result.origin) / result.pixelPerStep)),
                     toStep(std::ceil((_window.right() - result.origin) / result.pixelPerStep)),
                     toStep(std::floor(_south * steps)), toStep(std::ceil(_north * steps))};
    return result;
}

bool BackgroundShapes::isTiny(const WorldBox &box, const Turn &turn) const
{
    return (box.east - box.west) * turn.pixelPerStep < SmallestRing &&
           rowOf(box.south * turn.degreePerStep) - rowOf(box.north * turn.degreePerStep) <
               SmallestRing;
}

void BackgroundShapes::traceNodes(std::vector<Node> *result, const WorldShapes &shapes,
                                  const WorldShapes::Shape &shape, const Turn &turn) const
{
    result->clear();
    const auto add = [&](const WorldNode &node, bool always) {
        const QPointF pixel(turn.origin + node.east * turn.pixelPerStep,
                            rowOf(node.north * turn.degreePerStep));
        const int cuts = cutsOf(node, shapes.stepsPerDegree);
        if (always || cuts || std::abs(pixel.x() - result->back().pixel.x()) >= NodeDistance ||
            std::abs(pixel.y() - result->back().pixel.y()) >= NodeDistance)
            result->push_back({pixel, cuts});
    };

    const WorldNode *nodes = shapes.nodes.constData() + shape.first;
    for (int start = 0, chunk = shape.firstChunk; start < shape.count;
         start += WorldShapes::ChunkLength, ++chunk) {
        const int end = std::min(start + WorldShapes::ChunkLength, shape.count);
        // A chunk beyond one edge of the window can be replaced by a straight line, for no part of
        // that crosses the edge either.
        const bool beyond = isDisjoint(shapes.chunks[chunk], turn.window);
        for (int i = start; i < end; i += beyond ? std::max(end - start - 1, 1) : 1)
            add(nodes[i], i == 0 || i == shape.count - 1);
    }
}

template <typename Visit>
void BackgroundShapes::forEachVisible(const WorldShapes &shapes, int highestRank, Visit visit) const
{
    for (const int number : {-1, 0, 1}) {
        const Turn turn = turnOf(shapes, number);
        for (const WorldShapes::Shape &shape : shapes.shapes) {
            if (shape.rank <= highestRank && !isDisjoint(shape.box, turn.window))
                visit(shape, turn);
        }
    }
}

void BackgroundShapes::addRings(QPainterPath *areas, QPainterPath *edges, const WorldShapes &shapes,
                                int highestRank) const
{
    std::vector<Node> nodes;
    QPolygonF ring;
    forEachVisible(shapes, highestRank, [&](const WorldShapes::Shape &shape, const Turn &turn) {
        if (isTiny(shape.box, turn))
            return;

        traceNodes(&nodes, shapes, shape, turn);
        addPolyline(edges, nodes, true);
        ring.clear();
        for (const Node &node : nodes) {
            const int side = (node.cuts & EastCut ? 1 : 0) - (node.cuts & WestCut ? 1 : 0);
            ring.append(node.pixel + QPointF(side * CutOverlap, 0));
        }
        if (!contains(turn.window, shape.box))
            ring = clippedRing(ring, _window);
        if (ring.size() < 3)
            return;
        areas->addPolygon(ring);
        areas->closeSubpath();
    });
}

void BackgroundShapes::addLines(QPainterPath *path, const WorldShapes &shapes,
                                int highestRank) const
{
    std::vector<Node> nodes;
    forEachVisible(shapes, highestRank, [&](const WorldShapes::Shape &shape, const Turn &turn) {
        traceNodes(&nodes, shapes, shape, turn);
        addPolyline(path, nodes, false);
    });
}

void BackgroundShapes::addPolyline(QPainterPath *path, const std::vector<Node> &nodes,
                                   bool closed) const
{
    bool connected = false;
    const auto add = [&](const Node &start, const Node &end) {
        QPointF from = start.pixel, to = end.pixel;
        if ((start.cuts & end.cuts) || !clipLine(&from, &to, _window)) {
            connected = false;
            return;
        }
        if (!connected)
            path->moveTo(from);
        path->lineTo(to);
        connected = to == end.pixel;
    };
    for (size_t i = 1; i < nodes.size(); ++i)
        add(nodes[i - 1], nodes[i]);
    if (closed)
        add(nodes.back(), nodes.front());
}

} // namespace Map
} // namespace Gui
} // namespace Tellarix
