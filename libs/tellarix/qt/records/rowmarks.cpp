// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/rowmarks_p.h>

#include <tellarix/qt/records/hairlines_p.h>
#include <tellarix/qt/records/recordmarker.h>
#include <tellarix/qt/records/recordmarkers_p.h>
#include <tellarix/qt/records/recordrow_p.h>
#include <tellarix/qt/records/rowlook_p.h>
#include <tellarix/qt/scheme.h>

#include <QFontInfo>
#include <QPainter>

#include <algorithm>

namespace Tellarix {
namespace Gui {

namespace {

constexpr int TextIndent = 4;
constexpr int TextGap = 2;
constexpr double TextBackgroundAlpha = 0.75;
constexpr double HighlightContrast = 3;

/** Draws text so that it can be read where a trace runs below it. */
void drawTextOnTrace(QPainter &painter, const QPoint &baseline, const QString &text,
                     const QColor &background)
{
    if (text.isEmpty())
        return;
    const QRect area = painter.fontMetrics().tightBoundingRect(text).translated(baseline);
    painter.fillRect(area.adjusted(-1, -1, 1, 1), withAlpha(background, TextBackgroundAlpha));
    painter.drawText(baseline, text);
}

QColor markerColor(const RecordMarker &marker, const QColor &color, const RowLook &look)
{
    if (!look.enabled)
        return look.enabledColor(color);
    if (!marker.isEnabled())
        return look.text;
    return look.highlighted ? readableColor(color, look.background, HighlightContrast) : color;
}

void drawMarker(QPainter &painter, RecordMarker &marker, bool isCurrent, RecordWidget *widget,
                int textSize, const RowLook &look)
{
    const int height = look.area.height();
    const int half = height / 2;
    int top = 0;
    int bottom = height;
    int textY = textSize + 1;
    if (marker.alignment() == Qt::AlignTop) {
        bottom = half - 1;
    } else if (marker.alignment() == Qt::AlignBottom) {
        top = half + 1;
        textY = height - 2;
    }
    const auto drawText = [&](int x) {
        if (textSize > 0)
            drawTextOnTrace(painter, QPoint(x + 2, textY), marker.renderText(), look.background);
    };

    const int lineWidth = Scheme::Current().records.lineWidth;
    QColor color = markerColor(marker, marker.color(), look);
    if (marker.isMoveCopyEnabled()) {
        QColor faint = color;
        faint.setAlpha(0x40);
        const int x = widget->mapTime(marker.time());
        painter.setPen(QPen(faint, lineWidth));
        painter.drawLine(x, top, x, bottom);
        drawText(x);
    }
    if (marker.isMovable() && marker.isModified()) {
        color = markerColor(marker, marker.modifiedColor(), look);
        top = 0;
        bottom = height;
    }
    const int x = widget->mapTime(marker.correctedTime());
    painter.setPen(color);
    drawText(x);
    marker.draw(painter, widget, x, top, bottom, color, isCurrent ? lineWidth + 1 : lineWidth);
}

} // namespace

void drawMarkers(QPainter &painter, const RecordMarkers &markers, const RecordMarker *current,
                 RecordWidget *widget, const RowLook &look)
{
    const int textSize = std::min(QFontInfo(look.font).pixelSize(), look.canvas.height() / 2);
    painter.save();
    painter.setClipRect(look.canvas);
    if (textSize > 0) {
        QFont textFont = look.font;
        textFont.setPixelSize(textSize);
        painter.setFont(textFont);
    }
    for (const auto &marker : markers) {
        if (!marker->isHidden())
            drawMarker(painter, *marker, marker.get() == current, widget, textSize, look);
    }
    painter.restore();
}

void drawSlotTexts(QPainter &painter, const RecordRow &row, const RowLook &look)
{
    const QFontMetrics metrics(look.font);
    painter.save();
    int indent = TextIndent;
    for (const int slot : row.items.drawn()) {
        const RecordSlot &item = *row.items.at(slot);
        const QString text = (item.label + QLatin1Char(' ') + item.id).trimmed();
        const QRect area = row.items.rectOf(slot, look.canvas);
        if (text.isEmpty() || area.height() < metrics.height() + TextGap)
            continue;
        // Overlaid slots stand beside each other, each in the colour of its trace.
        const bool overlaid = row.items.mode == RecordWidget::Overlaid;
        painter.setClipRect(area);
        painter.setPen(overlaid && !look.highlighted ? row.items.penOf(slot).color() : look.text);
        drawTextOnTrace(painter,
                        QPoint(area.left() + indent, area.top() + TextGap + metrics.ascent()), text,
                        look.background);
        if (overlaid)
            indent += metrics.horizontalAdvance(text) + 2 * TextIndent;
    }
    painter.restore();
}

void drawSelection(QPainter &painter, const RecordRow &row, const Core::TimeWindow &selection,
                   const RowLook &look)
{
    if (selection.isEmpty())
        return;

    const QRect canvas = look.canvas;
    const int start = canvas.left() + row.times.xOf(selection.startTime());
    const int end = canvas.left() + row.times.xOf(selection.endTime());
    const QRect band(QPoint(start, canvas.top()), QPoint(end, canvas.bottom()));
    painter.fillRect(band & canvas, Scheme::Current().records.selection);
}

void drawCursor(QPainter &painter, const RecordRow &row, const Core::Time &time,
                const RowLook &look)
{
    const QRect canvas = look.canvas;
    const int x = canvas.left() + row.times.xOf(time);
    if (!time.valid() || x < canvas.left() || x > canvas.right())
        return;

    painter.setPen(hairline(Scheme::Current().records.cursor));
    painter.drawLine(x, canvas.top(), x, canvas.bottom());
}

void drawFrame(QPainter &painter, const RecordRow &row, const RowLook &look)
{
    const QRect canvas = look.canvas;
    painter.setPen(look.gridMajor);
    if (row.items.mode == RecordWidget::InRows) {
        for (const int slot : row.items.drawn()) {
            const int top = row.items.rectOf(slot, canvas).top();
            painter.drawLine(canvas.left(), top, canvas.right(), top);
        }
    }
    drawRectangle(painter, look.frame, canvas);
}

} // namespace Gui
} // namespace Tellarix
