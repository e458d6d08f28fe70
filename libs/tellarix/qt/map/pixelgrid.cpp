// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/pixelgrid.h>

#include <cstddef>

namespace Tellarix {
namespace Gui {
namespace Map {

namespace {

/** Side of a cell in pixels: about the size of a symbol. */
constexpr int CellSize = 32;

} // namespace

QRect PixelGrid::cellsOf(const QRect &box) const
{
    const QRect inside = box & _area;
    if (inside.isEmpty())
        return QRect();

    const QPoint first = inside.topLeft() - _area.topLeft();
    const QPoint last = inside.bottomRight() - _area.topLeft();
    return QRect(QPoint(first.x() / CellSize, first.y() / CellSize),
                 QPoint(last.x() / CellSize, last.y() / CellSize));
}

void PixelGrid::setPoints(const std::vector<Point> &points, const QRect &area)
{
    _area = area;
    _columns = area.width() / CellSize + 1;
    const int rows = area.height() / CellSize + 1;
    const auto cellOf = [this](const QPoint &pixel) {
        const QRect cell = cellsOf(QRect(pixel, QSize(1, 1)));
        return static_cast<std::size_t>(cell.y() * _columns + cell.x());
    };

    _starts.assign(static_cast<std::size_t>(_columns * rows) + 1, 0);
    for (const Point &point : points) {
        if (_area.contains(point.pixel))
            ++_starts[cellOf(point.pixel) + 1];
    }
    for (std::size_t cell = 1; cell < _starts.size(); ++cell)
        _starts[cell] += _starts[cell - 1];

    _numbers.resize(static_cast<std::size_t>(_starts.back()));
    std::vector<int> next = _starts;
    for (const Point &point : points) {
        if (_area.contains(point.pixel))
            _numbers[static_cast<std::size_t>(next[cellOf(point.pixel)]++)] = point.number;
    }
}

int PixelGrid::last(const QRect &box, const std::function<bool(int)> &matches) const
{
    int best = -1;
    const QRect cells = cellsOf(box);
    for (int row = cells.top(); row <= cells.bottom(); ++row) {
        for (int column = cells.left(); column <= cells.right(); ++column) {
            const auto cell = static_cast<std::size_t>(row * _columns + column);
            for (int i = _starts[cell + 1] - 1; i >= _starts[cell]; --i) {
                const int number = _numbers[static_cast<std::size_t>(i)];
                if (number <= best)
                    break;
                if (matches(number))
                    best = number;
            }
        }
    }
    return best;
}

} // namespace Map
} // namespace Gui
} // namespace Tellarix
