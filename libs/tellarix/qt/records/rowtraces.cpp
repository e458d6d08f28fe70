// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/rowtraces_p.h>

#include <tellarix/qt/records/recordrow_p.h>
#include <tellarix/qt/records/rowlook_p.h>
#include <tellarix/qt/scheme.h>

#include <QPainter>

#include <algorithm>

namespace Tellarix {
namespace Gui {

namespace {

// How much is left of a trace's colour while its filtered samples are still worked out.
constexpr double RawShare = 0.3;

/** @p share of one colour, the rest of the other. */
QColor mixed(const QColor &color, const QColor &other, double share)
{
    const auto mix = [share](double a, double b) { return share * a + (1 - share) * b; };
    return QColor::fromRgbF(mix(color.redF(), other.redF()), mix(color.greenF(), other.greenF()),
                            mix(color.blueF(), other.blueF()), color.alphaF());
}

/** Draws those of @p stretches, in ascending order, that lie in the view and are a pixel wide. */
void fillStretches(QPainter &painter, const RowTimes &times, const QRect &canvas,
                   const std::vector<Core::TimeWindow> &stretches, const QRect &area,
                   const QColor &color)
{
    const Core::Time right = times.right(canvas.width());
    auto it = std::lower_bound(
        stretches.begin(), stretches.end(), times.left(),
        [](const Core::TimeWindow &stretch, Core::Time time) { return stretch.endTime() < time; });

    QVector<QRect> rects;
    for (; it != stretches.end() && it->startTime() < right; ++it) {
        if (it->length().length() * times.pixelsPerSecond < 1)
            continue;
        const int x0 = canvas.left() + times.xOf(it->startTime());
        const int x1 = canvas.left() + times.xOf(it->endTime());
        const QRect rect =
            QRect(QPoint(x0, area.top()), QPoint(x1 - 1, area.bottom())).intersected(area);
        if (!rect.isEmpty())
            rects.append(rect);
    }
    if (rects.isEmpty())
        return;
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRects(rects);
}

QPen tracePen(const RecordRow &row, int slot, const RowLook &look)
{
    const RecordSlot &item = *row.items.at(slot);
    QPen pen = row.items.penOf(slot);
    if (!item.pen && (look.highlighted || !look.enabled))
        pen.setColor(look.enabledColor(look.text));
    if (row.isPale || row.filter.isAwaited(item))
        pen.setColor(mixed(pen.color(), look.background, RawShare));
    return pen;
}

} // namespace

void drawStretches(QPainter &painter, const RecordRow &row, const RowLook &look)
{
    const Scheme::Records &scheme = Scheme::Current().records;
    painter.save();
    for (const int slot : row.items.drawn()) {
        const RecordSlot &item = *row.items.at(slot);
        const QRect area = row.items.rectOf(slot, look.canvas);
        fillStretches(painter, row.times, look.canvas, item.gaps, area, scheme.gap);
        fillStretches(painter, row.times, look.canvas, item.overlaps, area, scheme.overlap);
    }
    painter.restore();
}

void drawTraces(QPainter &painter, const RecordRow &row, const RowLook &look)
{
    const Scheme::Records &scheme = Scheme::Current().records;
    painter.save();
    painter.setBrush(Qt::NoBrush);
    for (const int slot : row.items.drawn()) {
        const TraceInfo &info = row.shownTrace(*row.items.at(slot));
        if (info.poly == nullptr)
            continue;

        const QRect area = row.items.rectOf(slot, look.canvas);
        painter.setClipRect(area);
        painter.setRenderHint(QPainter::Antialiasing, false);
        if (scheme.offsetLine.color().alpha() > 0) {
            const int y = area.top() + row.rangeOf(slot).yOf(info.offset, area.height());
            painter.setPen(scheme.offsetLine);
            painter.drawLine(area.left(), y, area.right(), y);
        }

        painter.setPen(tracePen(row, slot, look));
        painter.setRenderHint(QPainter::Antialiasing, scheme.antiAliasing);
        painter.translate(area.topLeft());
        info.poly->draw(painter);
        painter.translate(-area.topLeft());
    }
    painter.restore();
}

} // namespace Gui
} // namespace Tellarix
