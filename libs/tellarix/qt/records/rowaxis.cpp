// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/rowaxis_p.h>

#include <tellarix/qt/records/amplitudeaxis_p.h>
#include <tellarix/qt/records/hairlines_p.h>
#include <tellarix/qt/records/recordrow_p.h>
#include <tellarix/qt/records/rowlook_p.h>

#include <QFontInfo>
#include <QPainter>

#include <algorithm>

namespace Tellarix {
namespace Gui {

namespace {

constexpr int TickLength = 4;
constexpr int TextGap = 2;
constexpr int SmallestAxis = 20;
constexpr int SmallestFont = 7;
constexpr double AxisFontScale = 0.85;
// Height over pixel size of common fonts.
constexpr double FontLeading = 1.25;

int textWidthOf(const AxisColumn &axis)
{
    return axis.width - axis.spacing - TickLength - 2 * TextGap;
}

QVector<AmplitudeTick> axisTicks(double lower, double upper, int height, int textWidth,
                                 const QFont &font)
{
    const QFontMetrics metrics(font);
    AmplitudeAxisSpace space;
    space.height = height;
    space.lineHeight = metrics.height();
    space.textWidth = textWidth;
    space.widthOf = [&metrics](const QString &text) { return metrics.horizontalAdvance(text); };
    return amplitudeTicks(lower, upper, space);
}

void drawAxis(QPainter &painter, const RecordRow &row, int slot, const RowLook &look)
{
    const QRect area = row.items.rectOf(slot, look.canvas);
    if (area.height() < SmallestAxis)
        return;

    const bool onLeft = row.axis.position == RecordWidget::AxisLeft;
    const int outward = onLeft ? -1 : 1;
    const int spacing = row.axis.spacing;
    const int axis = onLeft ? area.left() - spacing - 1 : area.right() + spacing + 1;
    const int tickEnd = axis + outward * TickLength;
    const int textEnd = tickEnd + outward * TextGap;
    const int textWidth = textWidthOf(row.axis);
    const QFont textFont = axisFont(look.font, area.height());
    const int lineHeight = QFontMetrics(textFont).height();
    const auto drawText = [&](int middle, const QString &text) {
        const QRect rect(onLeft ? textEnd - textWidth : textEnd + 1, middle - lineHeight / 2,
                         textWidth, lineHeight);
        painter.drawText(rect, (onLeft ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter, text);
    };

    painter.setFont(textFont);
    painter.setPen(look.text);
    int top = 0;
    const QString unit = row.items.at(slot)->unit;
    if (!unit.isEmpty() && area.height() >= 4 * lineHeight &&
        QFontMetrics(textFont).horizontalAdvance(unit) <= textWidth) {
        drawText(area.top() + lineHeight / 2, unit);
        top = lineHeight;
    }

    QVector<QLine> lines{QLine(axis, area.top(), axis, area.bottom())};
    for (const AmplitudeTick &tick : slotTicks(row, slot, look)) {
        const int y = area.top() + tick.y;
        lines.append(QLine(std::min(axis, tickEnd), y, std::max(axis, tickEnd), y));
        if (tick.textY - lineHeight / 2 >= top)
            drawText(area.top() + tick.textY, tick.text);
    }
    drawLines(painter, look.frame, lines);
}

} // namespace

QFont axisFont(const QFont &font, int height)
{
    const int largest = qRound(AxisFontScale * QFontInfo(font).pixelSize());
    QFont result = font;
    result.setPixelSize(
        std::max(SmallestFont, std::min(largest, static_cast<int>(height / 2 / FontLeading))));
    return result;
}

QVector<AmplitudeTick> slotTicks(const RecordRow &row, int slot, const RowLook &look)
{
    const ShownRange range = row.rangeOf(slot);
    const int height = row.items.rectOf(slot, look.canvas).height();
    if (range.empty)
        return {};

    const double factor = row.shownFactor(slot);
    const auto [lower, upper] = std::minmax({range.lower * factor, range.upper * factor});
    auto ticks =
        axisTicks(lower, upper, height, row.axis.drawn ? textWidthOf(row.axis) : look.area.width(),
                  axisFont(look.font, height));
    // The axis stands on its head with a negative scale or a descending range, but not with both.
    if ((range.upper - range.lower) * factor < 0) {
        for (AmplitudeTick &tick : ticks) {
            tick.y = height - 1 - tick.y;
            tick.textY = height - 1 - tick.textY;
        }
    }
    return ticks;
}

void drawAxes(QPainter &painter, const RecordRow &row, const RowLook &look)
{
    if (!row.axis.drawn)
        return;

    painter.save();
    const RecordSlots &items = row.items;
    for (const int slot : items.drawn()) {
        const bool isOverlaid = items.mode == RecordWidget::Overlaid;
        drawAxis(painter, row, isOverlaid && items.isDrawn(items.current) ? items.current : slot,
                 look);
        if (isOverlaid)
            break;
    }
    painter.restore();
}

} // namespace Gui
} // namespace Tellarix
