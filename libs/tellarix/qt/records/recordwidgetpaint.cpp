// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/recordwidget.h>

#include <tellarix/core/parallel.h>
#include <tellarix/qt/records/amplitudeaxis_p.h>
#include <tellarix/qt/records/hairlines_p.h>
#include <tellarix/qt/records/recordmarker.h>
#include <tellarix/qt/records/recordwidget_p.h>
#include <tellarix/qt/records/ruler.h>
#include <tellarix/qt/scheme.h>

#include <QFontInfo>
#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

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
// Rows below this height get no horizontal lines: they would only clutter the trace.
constexpr int SmallestGridRow = 60;
constexpr double SmallestGridPixels = 3;
constexpr double TextBackgroundAlpha = 0.75;
constexpr double HighlightContrast = 3;
constexpr QRgb DisabledColor = 0xffa0a0a0;
// How much is left of a trace's colour while its filtered samples are still worked out.
constexpr double RawShare = 0.3;

QColor withAlpha(QColor color, double alpha)
{
    color.setAlphaF(alpha * color.alphaF());
    return color;
}

/** @p share of one colour, the rest of the other. */
QColor mixed(const QColor &color, const QColor &other, double share)
{
    const auto mix = [share](double a, double b) { return share * a + (1 - share) * b; };
    return QColor::fromRgbF(mix(color.redF(), other.redF()), mix(color.greenF(), other.greenF()),
                            mix(color.blueF(), other.blueF()), color.alphaF());
}

/** Draws those of @p stretches, in ascending order, that lie in the view and are a pixel wide. */
void fillStretches(QPainter &painter, const RecordWidget &widget,
                   const std::vector<Core::TimeWindow> &stretches, const QRect &area,
                   const QColor &color)
{
    const Core::Time left = widget.leftTime();
    const Core::Time right = widget.rightTime();
    auto it = std::lower_bound(
        stretches.begin(), stretches.end(), left,
        [](const Core::TimeWindow &stretch, Core::Time time) { return stretch.endTime() < time; });

    QVector<QRect> rects;
    for (; it != stretches.end() && it->startTime() < right; ++it) {
        if (it->length().length() * widget.timeScale() < 1)
            continue;
        const int x0 = widget.mapTime(it->startTime());
        const int x1 = widget.mapTime(it->endTime());
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

AbstractRecordPolyline *makePolyline(bool smooth, const RecordSequence &sequence,
                                     const RecordWidget &widget, double lower, double upper,
                                     double offset, int height)
{
    const bool optimize = Scheme::Current().records.optimize;
    const auto fill = [&](auto *polyline) {
        polyline->create(&sequence, widget.leftTime(), widget.rightTime(), widget.timeScale(),
                         lower, upper, offset, height, nullptr, nullptr, optimize);
        polyline->prepareDrawing();
        return polyline;
    };
    if (smooth)
        return fill(new RecordPolylineF);
    return fill(new RecordPolyline);
}

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

/** A font for axis texts: a bit smaller than @p font, and so small that two lines of it fit into
 *  @p height. */
QFont axisFont(const QFont &font, int height)
{
    const int largest = qRound(AxisFontScale * QFontInfo(font).pixelSize());
    QFont result = font;
    result.setPixelSize(
        std::max(SmallestFont, std::min(largest, static_cast<int>(height / 2 / FontLeading))));
    return result;
}

} // namespace

void RecordWidget::paintEvent(QPaintEvent *)
{
    if (_preparation && isDirty())
        _preparation();
    prepareTraces();

    QPainter painter(this);
    const Look colors = look();
    const QRect canvas = canvasRect();
    const auto paintHook = [&](void (RecordWidget::*hook)(QPainter &), const QPoint &origin) {
        painter.save();
        painter.setClipRect(canvas);
        painter.translate(origin);
        (this->*hook)(painter);
        painter.restore();
    };

    drawBackground(painter);
    paintHook(&RecordWidget::drawCustomBackground, canvas.topLeft());
    drawStretches(painter);
    drawGrid(painter, colors);
    paintHook(&RecordWidget::customPaintTracesBegin, QPoint());
    drawTraces(painter, colors);
    paintHook(&RecordWidget::customPaintTracesEnd, QPoint());
    drawMarkers(painter, colors);
    drawSlotTexts(painter, colors);
    drawSelection(painter);
    drawCursor(painter);
    drawFrame(painter, colors);
    drawAxes(painter, colors);
}

void RecordWidget::drawCustomBackground(QPainter &)
{}

void RecordWidget::customPaintTracesBegin(QPainter &)
{}

void RecordWidget::customPaintTracesEnd(QPainter &)
{}

RecordWidget::Look RecordWidget::look() const
{
    const Scheme::Records &scheme = Scheme::Current().records;
    Look result;
    result.highlighted = foregroundRole() == QPalette::HighlightedText;
    result.text = palette().color(foregroundRole());
    result.background =
        autoFillBackground() ? scheme.background : palette().color(backgroundRole());
    result.frame = result.highlighted ? hairline(withAlpha(result.text, 0.5)) : scheme.frame;
    result.gridMajor =
        result.highlighted ? hairline(withAlpha(result.text, 0.3)) : scheme.gridMajor;
    result.gridMinor =
        result.highlighted ? hairline(withAlpha(result.text, 0.15)) : scheme.gridMinor;
    return result;
}

// Traces

bool RecordWidget::isDirty() const
{
    const QVector<int> drawn = drawnSlots();
    return std::any_of(drawn.begin(), drawn.end(), [this](int slot) {
        const Slot &item = *slotAt(slot);
        return item.traces[isFiltered(item) ? 1 : 0].dirty;
    });
}

void RecordWidget::setPreparation(std::function<void()> preparation)
{
    _preparation = std::move(preparation);
}

void RecordWidget::prepare(const QVector<RecordWidget *> &widgets)
{
    // Shared by all of them, and to be made by this thread.
    Scheme::Current();

    QVector<RecordWidget *> outdated;
    std::copy_if(widgets.begin(), widgets.end(), std::back_inserter(outdated),
                 [](const RecordWidget *widget) { return widget->isDirty(); });
    Core::parallelFor(outdated.size(), [&](int i) { outdated[i]->prepareTraces(); });
}

void RecordWidget::prepareTraces()
{
    for (const int slot : drawnSlots()) {
        Slot &item = *slotAt(slot);
        if (item.traces[isFiltered(item) ? 1 : 0].dirty)
            buildTrace(slot);
        if (!item.stretchesKnown) {
            item.stretchesKnown = true;
            item.gaps.clear();
            item.overlaps.clear();
            if (item.raw != nullptr) {
                item.gaps = item.raw->gaps();
                item.overlaps = item.raw->overlaps();
            }
        }
        item.drawnStart = item.raw != nullptr ? item.raw->timeWindow().startTime() : Core::Time();
    }
}

void RecordWidget::buildTrace(int slot)
{
    Slot &item = *slotAt(slot);
    const ShownRange range = shownRange(slot);
    const Extrema &extrema = extremaOf(item);
    TraceInfo &info = item.traces[isFiltered(item) ? 1 : 0];

    info.dirty = false;
    info.amplMin = extrema.minimum;
    info.amplMax = extrema.maximum;
    info.offset = extrema.mean;
    info.absMax = std::max(extrema.mean - extrema.minimum, extrema.maximum - extrema.mean);
    info.yOffset = range.offset;
    info.fyMin = range.lower - range.offset;
    info.fyMax = range.upper - range.offset;
    info.yMin = info.fyMin * _magnification;
    info.yMax = info.fyMax * _magnification;

    const RecordSequence *sequence = displayedRecords(slot);
    const QRect area = slotRect(slot);
    if (sequence == nullptr || range.empty || area.isEmpty()) {
        info.poly.reset();
        return;
    }
    info.poly = makePolyline(Scheme::Current().records.antiAliasing, *sequence, *this, info.fyMin,
                             info.fyMax, info.yOffset, area.height());
}

void RecordWidget::drawTraces(QPainter &painter, const Look &colors)
{
    const Scheme::Records &scheme = Scheme::Current().records;
    painter.save();
    painter.setBrush(Qt::NoBrush);
    for (const int slot : drawnSlots()) {
        const Slot &item = *slotAt(slot);
        const TraceInfo &info = item.traces[isFiltered(item) ? 1 : 0];
        if (info.poly == nullptr)
            continue;

        const QRect area = slotRect(slot);
        painter.setClipRect(area);
        painter.setRenderHint(QPainter::Antialiasing, false);
        if (scheme.offsetLine.color().alpha() > 0) {
            const int y = mapAmplitude(slot, info.offset);
            painter.setPen(scheme.offsetLine);
            painter.drawLine(area.left(), y, area.right(), y);
        }

        QPen pen = recordPen(slot);
        if (!item.pen && (colors.highlighted || !isEnabled()))
            pen.setColor(isEnabled() ? colors.text : QColor(DisabledColor));
        if (_tracesPale || awaitsFiltered(item))
            pen.setColor(mixed(pen.color(), colors.background, RawShare));
        painter.setPen(pen);
        painter.setRenderHint(QPainter::Antialiasing, scheme.antiAliasing);
        painter.translate(area.topLeft());
        info.poly->draw(painter);
        painter.translate(-area.topLeft());
    }
    painter.restore();
}

// What lies behind the traces

void RecordWidget::drawBackground(QPainter &painter) const
{
    if (autoFillBackground())
        painter.fillRect(canvasRect(), Scheme::Current().records.background);
}

void RecordWidget::drawStretches(QPainter &painter) const
{
    const Scheme::Records &scheme = Scheme::Current().records;
    painter.save();
    for (const int slot : drawnSlots()) {
        const Slot &item = *slotAt(slot);
        const QRect area = slotRect(slot);
        fillStretches(painter, *this, item.gaps, area, scheme.gap);
        fillStretches(painter, *this, item.overlaps, area, scheme.overlap);
    }
    painter.restore();
}

void RecordWidget::drawGrid(QPainter &painter, const Look &colors) const
{
    painter.save();
    painter.setClipRect(canvasRect());
    drawTimeGrid(painter, colors.gridMinor, _gridMinor);
    drawAmplitudeGrid(painter, colors);
    drawTimeGrid(painter, colors.gridMajor, _gridMajor);

    if (_alignment.valid()) {
        const QRect canvas = canvasRect();
        const int x = mapTime(0.0);
        painter.setPen(hairline(Scheme::Current().records.alignment));
        if (x >= canvas.left() && x <= canvas.right())
            painter.drawLine(x, canvas.top(), x, canvas.bottom());
    }
    painter.restore();
}

void RecordWidget::drawTimeGrid(QPainter &painter, const QPen &pen, double spacing) const
{
    if (!(_gridMajor > 0) || !(spacing * _pixelsPerSecond >= SmallestGridPixels) ||
        !std::isfinite(spacing) || pen.color().alpha() == 0)
        return;

    const QRect canvas = canvasRect();
    const double right = _tmin + canvas.width() / _pixelsPerSecond;
    QVector<QLine> lines;
    for (const double seconds : tickValues(_tmin, right, spacing, _gridOffset)) {
        const int x = mapTime(seconds);
        lines.append(QLine(x, canvas.top(), x, canvas.bottom()));
    }
    drawLines(painter, pen, lines);
}

/** Lines at round values: of the range that was set, otherwise at the ticks of the axis. */
void RecordWidget::drawAmplitudeGrid(QPainter &painter, const Look &colors) const
{
    if (colors.gridMinor.color().alpha() == 0)
        return;

    QVector<QLine> lines;
    const bool isSet = _gridLower != _gridUpper;
    for (const int slot : drawnSlots()) {
        const QRect area = slotRect(slot);
        const bool hasGrid = isSet ? _drawMode != InRows || slot == _currentSlot
                                   : _drawAxis && area.height() >= SmallestGridRow;
        if (!hasGrid)
            continue;

        for (const int y : isSet ? rangeGridLines(area.height()) : tickLines(slot))
            lines.append(QLine(area.left(), area.top() + y, area.right(), area.top() + y));
        if (_drawMode == Overlaid)
            break;
    }
    drawLines(painter, colors.gridMinor, lines);
}

/** Lines of the range that was set, at the distances of a ruler's ticks. */
QVector<int> RecordWidget::rangeGridLines(int height) const
{
    if (height < 2)
        return {};

    const double range = _gridUpper - _gridLower;
    const double pixels = fontMetrics().height() + fontMetrics().averageCharWidth();
    QVector<int> result;
    for (const double value :
         tickValues(std::min(_gridLower, _gridUpper), std::max(_gridLower, _gridUpper),
                    roundTickDistance(pixels * std::abs(range) / height), 0))
        result.append(static_cast<int>(std::lround((_gridUpper - value) / range * (height - 1))));
    return result;
}

QVector<int> RecordWidget::tickLines(int slot) const
{
    QVector<int> result;
    const QFont textFont = axisFont(font(), slotRect(slot).height());
    for (const AmplitudeTick &tick : slotTicks(slot, textFont))
        result.append(tick.y);
    return result;
}

// What lies above the traces

void RecordWidget::drawMarkers(QPainter &painter, const Look &colors)
{
    const QRect canvas = canvasRect();
    const int textSize = std::min(QFontInfo(font()).pixelSize(), canvas.height() / 2);
    painter.save();
    painter.setClipRect(canvas);
    if (textSize > 0) {
        QFont textFont = font();
        textFont.setPixelSize(textSize);
        painter.setFont(textFont);
    }
    for (const auto &marker : _markers) {
        if (!marker->isHidden())
            drawMarker(painter, *marker, textSize, colors);
    }
    painter.restore();
}

void RecordWidget::drawMarker(QPainter &painter, RecordMarker &marker, int textSize,
                              const Look &colors)
{
    const int height = this->height();
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
            drawTextOnTrace(painter, QPoint(x + 2, textY), marker.renderText(), colors.background);
    };
    const auto colorFor = [&](const QColor &color) {
        if (!isEnabled())
            return QColor(DisabledColor);
        if (!marker.isEnabled())
            return colors.text;
        return colors.highlighted ? readableColor(color, colors.background, HighlightContrast)
                                  : color;
    };

    const int lineWidth = Scheme::Current().records.lineWidth;
    QColor color = colorFor(marker.color());
    if (marker.isMoveCopyEnabled()) {
        QColor faint = color;
        faint.setAlpha(0x40);
        const int x = mapTime(marker.time());
        painter.setPen(QPen(faint, lineWidth));
        painter.drawLine(x, top, x, bottom);
        drawText(x);
    }
    if (marker.isMovable() && marker.isModified()) {
        color = colorFor(marker.modifiedColor());
        top = 0;
        bottom = height;
    }
    const int x = mapTime(marker.correctedTime());
    painter.setPen(color);
    drawText(x);
    marker.draw(painter, this, x, top, bottom, color,
                &marker == _currentMarker ? lineWidth + 1 : lineWidth);
}

void RecordWidget::drawSlotTexts(QPainter &painter, const Look &colors) const
{
    const QFontMetrics metrics = fontMetrics();
    painter.save();
    int indent = TickLength;
    for (const int slot : drawnSlots()) {
        const Slot &item = *slotAt(slot);
        const QString text = (item.label + QLatin1Char(' ') + item.id).trimmed();
        const QRect area = slotRect(slot);
        if (text.isEmpty() || area.height() < metrics.height() + TextGap)
            continue;
        // Overlaid slots stand beside each other, each in the colour of its trace.
        const bool overlaid = _drawMode == Overlaid;
        painter.setClipRect(area);
        painter.setPen(overlaid && !colors.highlighted ? recordPen(slot).color() : colors.text);
        drawTextOnTrace(painter,
                        QPoint(area.left() + indent, area.top() + TextGap + metrics.ascent()), text,
                        colors.background);
        if (overlaid)
            indent += metrics.horizontalAdvance(text) + 2 * TickLength;
    }
    painter.restore();
}

void RecordWidget::drawSelection(QPainter &painter) const
{
    if (_selection.isEmpty())
        return;

    const QRect canvas = canvasRect();
    const QRect band(QPoint(mapTime(_selection.startTime()), canvas.top()),
                     QPoint(mapTime(_selection.endTime()), canvas.bottom()));
    painter.fillRect(band & canvas, Scheme::Current().records.selection);
}

void RecordWidget::drawCursor(QPainter &painter) const
{
    const QRect canvas = canvasRect();
    const int x = mapTime(_cursorTime);
    if (!_cursorShown || !_cursorTime.valid() || x < canvas.left() || x > canvas.right())
        return;

    painter.setPen(hairline(Scheme::Current().records.cursor));
    painter.drawLine(x, canvas.top(), x, canvas.bottom());
}

void RecordWidget::drawFrame(QPainter &painter, const Look &colors) const
{
    const QRect canvas = canvasRect();
    painter.setPen(colors.gridMajor);
    if (_drawMode == InRows) {
        for (const int slot : drawnSlots()) {
            const int top = slotRect(slot).top();
            painter.drawLine(canvas.left(), top, canvas.right(), top);
        }
    }
    drawRectangle(painter, colors.frame, canvas);
}

// Amplitude axis

QVector<AmplitudeTick> RecordWidget::axisTicks(double lower, double upper, int height,
                                               const QFont &textFont) const
{
    const QFontMetrics metrics(textFont);
    AmplitudeAxisSpace space;
    space.height = height;
    space.lineHeight = metrics.height();
    space.textWidth = _drawAxis ? _axisWidth - _axisSpacing - TickLength - 2 * TextGap : width();
    space.widthOf = [&metrics](const QString &text) { return metrics.horizontalAdvance(text); };
    return amplitudeTicks(lower, upper, space);
}

QVector<AmplitudeTick> RecordWidget::slotTicks(int slot, const QFont &textFont) const
{
    const ShownRange range = shownRange(slot);
    const int height = slotRect(slot).height();
    if (range.empty)
        return {};

    const double factor = shownFactor(slot);
    auto ticks = axisTicks(std::min(range.lower * factor, range.upper * factor),
                           std::max(range.lower * factor, range.upper * factor), height, textFont);
    // The axis stands on its head with a negative scale or a descending range, but not with both.
    if ((range.upper - range.lower) * factor < 0) {
        for (AmplitudeTick &tick : ticks) {
            tick.y = height - 1 - tick.y;
            tick.textY = height - 1 - tick.textY;
        }
    }
    return ticks;
}

void RecordWidget::drawAxes(QPainter &painter, const Look &colors) const
{
    if (!_drawAxis)
        return;

    painter.save();
    const QVector<int> rows = drawnSlots();
    if (_drawMode == Overlaid && !rows.isEmpty())
        drawAxis(painter, colors, rows.contains(_currentSlot) ? _currentSlot : rows.first());
    else
        std::for_each(rows.begin(), rows.end(), [&](int slot) { drawAxis(painter, colors, slot); });
    painter.restore();
}

void RecordWidget::drawAxis(QPainter &painter, const Look &colors, int slot) const
{
    const QRect area = slotRect(slot);
    if (area.height() < SmallestAxis)
        return;

    const bool onLeft = _axisPosition == AxisLeft;
    const int outward = onLeft ? -1 : 1;
    const int axis = onLeft ? area.left() - _axisSpacing - 1 : area.right() + _axisSpacing + 1;
    const int tickEnd = axis + outward * TickLength;
    const int textEnd = tickEnd + outward * TextGap;
    const int textWidth = _axisWidth - _axisSpacing - TickLength - 2 * TextGap;
    const QFont textFont = axisFont(font(), area.height());
    const int lineHeight = QFontMetrics(textFont).height();
    const auto drawText = [&](int middle, const QString &text) {
        const QRect rect(onLeft ? textEnd - textWidth : textEnd + 1, middle - lineHeight / 2,
                         textWidth, lineHeight);
        painter.drawText(rect, (onLeft ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter, text);
    };

    painter.setFont(textFont);
    painter.setPen(colors.text);
    int top = 0;
    const QString unit = recordUnit(slot);
    if (!unit.isEmpty() && area.height() >= 4 * lineHeight &&
        QFontMetrics(textFont).horizontalAdvance(unit) <= textWidth) {
        drawText(area.top() + lineHeight / 2, unit);
        top = lineHeight;
    }

    QVector<QLine> lines{QLine(axis, area.top(), axis, area.bottom())};
    for (const AmplitudeTick &tick : slotTicks(slot, textFont)) {
        const int y = area.top() + tick.y;
        lines.append(QLine(std::min(axis, tickEnd), y, std::max(axis, tickEnd), y));
        if (tick.textY - lineHeight / 2 >= top)
            drawText(area.top() + tick.textY, tick.text);
    }
    drawLines(painter, colors.frame, lines);
}

} // namespace Gui
} // namespace Tellarix
