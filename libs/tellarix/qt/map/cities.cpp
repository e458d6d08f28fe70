// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/cities.h>

#include <tellarix/qt/map/projection.h>

#include <algorithm>

namespace Tellarix {
namespace Gui {
namespace Map {

namespace {

/** From the middle of a dot to its name, in pixels. */
constexpr double TextDistance = 6;
/** A dot with some air about it. */
constexpr double DotRadius = 4;
/** Empty room kept between names. */
constexpr double Air = 4;
/** No reader looks at more. */
constexpr int MostCities = 400;

class Room
{
public:
    Room(const QRectF &canvas, const QVector<QRectF> &occupied)
        : _canvas(canvas), _occupied(occupied)
    {}

    bool isFree(const QRectF &rect) const
    {
        return _canvas.contains(rect) &&
               std::none_of(_occupied.begin(), _occupied.end(),
                            [&](const QRectF &taken) { return taken.intersects(rect); });
    }
    void take(const QRectF &rect) { _occupied.append(rect); }

private:
    QRectF _canvas;
    QVector<QRectF> _occupied;
};

QRectF dotRect(const QPointF &dot)
{
    return QRectF(dot.x() - DotRadius, dot.y() - DotRadius, 2 * DotRadius, 2 * DotRadius);
}

/** A free rectangle beside a dot; null if there is none. */
QRectF freeRect(const Room &room, const QPointF &dot, const QSizeF &size)
{
    const double left = dot.x() - size.width() / 2, top = dot.y() - size.height() / 2;
    for (const QPointF &corner :
         {QPointF(dot.x() + TextDistance, top), QPointF(dot.x() - TextDistance - size.width(), top),
          QPointF(left, dot.y() - DotRadius - size.height()), QPointF(left, dot.y() + DotRadius)}) {
        const QRectF rect(corner, size);
        if (room.isFree(rect.adjusted(-Air, 0, Air, 0)))
            return rect;
    }
    return QRectF();
}

} // namespace

QVector<CityLabel> layoutCities(const QVector<WorldPlace> &places, const Projection &projection,
                                int highestRank, const QVector<QRectF> &occupied,
                                const std::function<QSizeF(const WorldPlace &)> &textSize)
{
    QVector<CityLabel> result;
    const QRectF canvas(QPointF(0, 0), projection.view().size);
    Room room(canvas.intersected(projection.globe()), occupied);
    for (const WorldPlace &place : places) {
        QPointF dot;
        if (place.rank > highestRank || !projection.project(dot, place.position) ||
            !room.isFree(dotRect(dot)))
            continue;
        const QRectF text = freeRect(room, dot, textSize(place));
        if (text.isNull())
            continue;
        room.take(text);
        room.take(dotRect(dot));
        result.append({&place, dot, text});
        if (result.size() == MostCities)
            break;
    }
    return result;
}

} // namespace Map
} // namespace Gui
} // namespace Tellarix
