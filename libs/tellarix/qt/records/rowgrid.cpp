// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/rowgrid_p.h>

#include <tellarix/qt/records/amplitudeaxis_p.h>
#include <tellarix/qt/records/hairlines_p.h>
#include <tellarix/qt/records/recordrow_p.h>
#include <tellarix/qt/records/rowaxis_p.h>
#include <tellarix/qt/records/rowlook_p.h>
#include <tellarix/qt/records/ruler.h>
#include <tellarix/qt/scheme.h>

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace Tellarix {
namespace Gui {

namespace {

// Rows below this height get no horizontal lines: they would only clutter the trace.
constexpr int SmallestGridRow = 60;
constexpr double SmallestGridPixels = 3;

void drawTimeGrid(QPainter &painter, const RecordRow &row, const QRect &canvas, const QPen &pen,
                  double spacing)
{
    const RowTimes &times = row.times;
    if (!(row.grid.major > 0) || !(spacing * times.pixelsPerSecond >= SmallestGridPixels) ||
        !std::isfinite(spacing) || pen.color().alpha() == 0)
        return;

    const double right = times.tmin + canvas.width() / times.pixelsPerSecond;
    QVector<QLine> lines;
    for (const double seconds : tickValues(times.tmin, right, spacing, row.grid.offset)) {
        const int x = canvas.left() + times.xOf(seconds);
        lines.append(QLine(x, canvas.top(), x, canvas.bottom()));
    }
    drawLines(painter, pen, lines);
}

/** Lines of the range that was set, at the distances of a ruler's ticks. */
QVector<int> rangeGridLines(const RowGrid &grid, int height, const QFont &font)
{
    if (height < 2)
        return {};

    const QFontMetrics metrics(font);
    const double range = grid.upper - grid.lower;
    const double pixels = metrics.height() + metrics.averageCharWidth();
    const auto [lower, upper] = std::minmax(grid.lower, grid.upper);
    QVector<int> result;
    for (const double value :
         tickValues(lower, upper, roundTickDistance(pixels * std::abs(range) / height), 0))
        result.append(static_cast<int>(std::lround((grid.upper - value) / range * (height - 1))));
    return result;
}

QVector<int> tickLines(const RecordRow &row, int slot, const RowLook &look)
{
    QVector<int> result;
    for (const AmplitudeTick &tick : slotTicks(row, slot, look))
        result.append(tick.y);
    return result;
}

/** Lines at round values: of the range that was set, otherwise at the ticks of the axis. */
void drawAmplitudeGrid(QPainter &painter, const RecordRow &row, const RowLook &look)
{
    if (look.gridMinor.color().alpha() == 0)
        return;

    QVector<QLine> lines;
    const RecordSlots &items = row.items;
    const bool isSet = row.grid.lower != row.grid.upper;
    for (const int slot : items.drawn()) {
        const QRect area = items.rectOf(slot, look.canvas);
        const bool hasGrid = isSet ? items.mode != RecordWidget::InRows || slot == items.current
                                   : row.axis.drawn && area.height() >= SmallestGridRow;
        if (!hasGrid)
            continue;

        for (const int y : isSet ? rangeGridLines(row.grid, area.height(), look.font)
                                 : tickLines(row, slot, look))
            lines.append(QLine(area.left(), area.top() + y, area.right(), area.top() + y));
        if (items.mode == RecordWidget::Overlaid)
            break;
    }
    drawLines(painter, look.gridMinor, lines);
}

} // namespace

void drawGrid(QPainter &painter, const RecordRow &row, const RowLook &look)
{
    const QRect canvas = look.canvas;
    painter.save();
    painter.setClipRect(canvas);
    drawTimeGrid(painter, row, canvas, look.gridMinor, row.grid.minor);
    drawAmplitudeGrid(painter, row, look);
    drawTimeGrid(painter, row, canvas, look.gridMajor, row.grid.major);

    if (row.times.alignment.valid()) {
        const int x = canvas.left() + row.times.xOf(0.0);
        painter.setPen(hairline(Scheme::Current().records.alignment));
        if (x >= canvas.left() && x <= canvas.right())
            painter.drawLine(x, canvas.top(), x, canvas.bottom());
    }
    painter.restore();
}

} // namespace Gui
} // namespace Tellarix
