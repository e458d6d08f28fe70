// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>

#include <QPoint>
#include <QRect>

#include <functional>
#include <vector>

namespace Tellarix {
namespace Gui {
namespace Map {

/** Numbered points sorted into cells, so that those about a pixel are found without a look at the
 *  others. */
class TELLARIX_GUI_API PixelGrid
{
public:
    struct Point
    {
        QPoint pixel;
        int number;
    };

    /** Takes points by ascending number; those outside of @p area are left out. Linear. */
    void setPoints(const std::vector<Point> &points, const QRect &area);
    /** The largest number of a point near @p box for which @p matches says so, -1 without one. All
     *  points in the box are asked, and some more about it. */
    int last(const QRect &box, const std::function<bool(int)> &matches) const;

private:
    /** Columns and rows of cells; all of them are within the grid. */
    QRect cellsOf(const QRect &box) const;

    QRect _area;
    int _columns{0};
    std::vector<int> _starts;  /**< of each cell, and the end of the last one */
    std::vector<int> _numbers; /**< cell by cell, ascending in each */
};

} // namespace Map
} // namespace Gui
} // namespace Tellarix
