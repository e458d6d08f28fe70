// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/legendlayout.h>

#include <algorithm>

namespace Tellarix {
namespace Gui {
namespace Map {

namespace {

enum Place
{
    Near,
    Middle,
    Far
};

Place rowOf(Qt::Alignment alignment)
{
    return alignment.testFlag(Qt::AlignTop)      ? Near
           : alignment.testFlag(Qt::AlignBottom) ? Far
                                                 : Middle;
}

Place columnOf(Qt::Alignment alignment)
{
    return alignment.testFlag(Qt::AlignLeft)    ? Near
           : alignment.testFlag(Qt::AlignRight) ? Far
                                                : Middle;
}

/** Start of a box of @p length in @p room from @p start. */
int startOf(Place place, int start, int room, int length)
{
    return place == Near     ? start
           : place == Middle ? start + (room - length) / 2
                             : start + room - length;
}

bool fits(const LegendBox &box, const QRect &room)
{
    return !box.size.isEmpty() && box.size.width() <= room.width() &&
           box.size.height() <= room.height();
}

/** Height of the stack in the middle of a column, as far as it fits. */
int middleHeight(const QVector<LegendBox> &boxes, Place column, const QRect &room, int gap)
{
    int height = -gap;
    for (const LegendBox &box : boxes) {
        if (rowOf(box.alignment) == Middle && columnOf(box.alignment) == column &&
            fits(box, room) && height + gap + box.size.height() <= room.height())
            height += gap + box.size.height();
    }
    return height;
}

} // namespace

QVector<QRect> layOutLegends(const QVector<LegendBox> &boxes, const QSize &canvas, int margin,
                             int gap)
{
    const QRect room =
        QRect(QPoint(0, 0), canvas).marginsRemoved(QMargins(margin, margin, margin, margin));
    int next[3][3]; // top of the next box, or, in the lower row, the bottom edge
    for (const Place column : {Near, Middle, Far}) {
        next[Near][column] = room.top();
        next[Middle][column] =
            startOf(Middle, room.top(), room.height(), middleHeight(boxes, column, room, gap));
        next[Far][column] = room.top() + room.height();
    }

    QVector<QRect> result;
    for (const LegendBox &box : boxes) {
        result.append(QRect());
        if (!fits(box, room))
            continue;

        const Place row = rowOf(box.alignment);
        const Place column = columnOf(box.alignment);
        int &position = next[row][column];
        const QRect rect(QPoint(startOf(column, room.left(), room.width(), box.size.width()),
                                row == Far ? position - box.size.height() : position),
                         box.size);
        if (!room.contains(rect) ||
            std::any_of(result.cbegin(), result.cend(), [&](const QRect &r) {
                return r.adjusted(-gap, -gap, gap, gap).intersects(rect);
            }))
            continue;

        result.last() = rect;
        position = row == Far ? rect.top() - gap : rect.top() + rect.height() + gap;
    }
    return result;
}

} // namespace Map
} // namespace Gui
} // namespace Tellarix
