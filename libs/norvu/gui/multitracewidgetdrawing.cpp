// SPDX-License-Identifier: LGPL-3.0-or-later

#include "multitracewidget.h"

#include "multitracewiggles_p.h"

#include <norvu/gui/gradients.h>
#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>

#include <tellarix/qt/records/recordmarker.h>
#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/scheme.h>

#include <QFontInfo>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace Norvu {
namespace Gui {

using Tellarix::Core::Time;
using Tellarix::Core::TimeSpan;
using Tellarix::Core::TimeWindow;
using Tellarix::Gui::RecordMarker;
using Tellarix::Gui::RecordWidget;
using Tellarix::Gui::Scheme;
using Tellarix::Gui::TimeScale;

namespace {

constexpr QRgb DisabledColor = 0xffa0a0a0;
constexpr int MoveCopyAlpha = 0x40;
/** Of what is left raw while the other rows are filtered. */
constexpr double PaleOpacity = 0.3;
// No view has room for more lines; spacings that ask for more are no spacings.
constexpr double MostGridLines = 16384;
// Farther away a line is nowhere near the picture.
constexpr double FarthestLine = 1 << 20;

} // namespace

/** What the polylines of all rows have in common. */
struct MultiTraceWidget::Display
{
    double lower; /**< visible range in seconds relative to the alignment */
    double upper;
    float pixelsPerSecond;
    bool windowNormalization;
    bool commonRange;
    bool antiAliasing;
    bool optimize;

    TimeWindow windowOf(const RecordWidget *widget) const
    {
        const Time alignment = widget->alignment();
        return TimeWindow(alignment + TimeSpan(lower), alignment + TimeSpan(upper));
    }
};

void MultiTraceWidget::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QRect area = drawingArea();
    painter.translate(area.topLeft());
    drawGrid(painter, area.width(), area.height());
    drawRecords(painter, area.width(), area.height(), labelSpacing());
    painter.translate(-area.topLeft());
}

void MultiTraceWidget::drawGrid(QPainter &painter, int width, int height)
{
    const TimeScale &scale = hasTurnedScale() ? *_turnedScale : *_view->_timeScale;
    if (!(scale.majorSpacing() > 0) || !(scale.scale() > 0) || std::isnan(scale.lower()))
        return;

    const Scheme::Records &scheme = Scheme::Current().records;
    for (const auto &[spacing, pen] : {std::pair(scale.majorSpacing(), scheme.gridMajor),
                                       std::pair(scale.minorSpacing(), scheme.gridMinor)}) {
        if (pen.color().alpha() == 0)
            continue;
        painter.setPen(pen);
        painter.drawLines(gridLines(spacing, width, height));
    }
}

/** Lines at the ticks of one spacing, by the scale that is beside or below. */
QVector<QLine> MultiTraceWidget::gridLines(double spacing, int width, int height) const
{
    const TimeScale &scale = hasTurnedScale() ? *_turnedScale : *_view->_timeScale;
    const int extent = _horizontal ? height : width;
    if (!(spacing * scale.scale() * MostGridLines >= std::max(1, extent)))
        return {};

    const double epsilon = 0.01 * spacing;
    // A scale that runs down begins with its upper end.
    double origin = scale.offset() + std::min(scale.lower(), scale.upper());
    const double multiple = std::floor((origin + epsilon) / spacing) * spacing;
    if (std::abs(multiple) >= epsilon)
        origin -= multiple;

    QVector<QLine> result;
    double value = 0;
    // A line that is a pixel before its tick for rounding alone would show beside the scale.
    const double slack = hasTurnedScale() ? 1E-6 : 0;
    const auto pixel = [&] { return static_cast<int>((value - origin) * scale.scale() + slack); };
    for (int p = pixel(); p < extent; value += spacing, p = pixel()) {
        if (p >= 0)
            result.append(_horizontal ? QLine(0, p, width - 1, p) : QLine(p, 0, p, height - 1));
    }
    return result;
}

MultiTraceWidget::Display MultiTraceWidget::display() const
{
    const TimeScale &scale = *_view->_timeScale;
    const Scheme::Records &scheme = Scheme::Current().records;
    return {scale.lower(),
            scale.upper(),
            static_cast<float>(timeScalePixels()),
            _view->_normMode.testFlag(TraceView::WindowNormalization),
            _view->_normMode.testFlag(TraceView::AllTracesNormalization),
            scheme.antiAliasing,
            scheme.optimize};
}

void MultiTraceWidget::drawRecords(QPainter &painter, int width, int height, int labelSpacing)
{
    if (_view->count() == 0)
        return;
    if (isLayoutOutdated())
        updateLayout(_horizontal ? width : height);

    const Display shown = display();
    const QPen labelPen(palette().color(QPalette::Text));
    const QFont baseFont = painter.font();
    QFont labelFont = baseFont;
    labelFont.setWeight(QFont::Bold);
    painter.save();
    painter.setFont(labelFont);
    painter.setRenderHint(QPainter::Antialiasing, shown.antiAliasing);
    // Points beside the window belong to the traces, but not into the labels.
    painter.setClipRect(0, 0, width, height, Qt::IntersectClip);

    const QTransform origin = painter.worldTransform();
    const QVector<const Trace *> labelled = labelledRows();
    const QRect strip =
        _horizontal ? QRect(QPoint(0, 0), QPoint(labelSpacing - 1, 0))
                    : QRect(QPoint(Trace::Padding() - labelSpacing, 0), QPoint(width - 1, 0));
    for (int i = 0; i < _view->count(); ++i) {
        Trace *row = _view->itemAt(i);
        RecordWidget *widget = row->recordWidget();
        const RecordWidget::TraceInfo *info = drawnInfo(widget);
        if (!info)
            continue;
        if (info->dirty)
            rebuildRow(widget, shown);
        if (info->height <= 0 || !widget->displayedRecords(0))
            continue;

        painter.translate(_horizontal ? info->pos : 0, _horizontal ? 0 : info->pos);
        drawRow(painter, row);
        if (!row->isSelected())
            painter.setPen(labelPen);
        painter.setClipping(false);
        if (!_placement || labelled.contains(row))
            drawLabel(painter, row, strip);
        painter.setClipping(true);
        painter.setWorldTransform(origin);
    }

    painter.setRenderHint(QPainter::Antialiasing, false);
    // Markers also stand beside the window, in the strip of the labels.
    painter.setClipping(false);
    drawMarkers(painter, baseFont);
    painter.restore();
}

void MultiTraceWidget::rebuildRow(RecordWidget *widget, const Display &shown) const
{
    RecordWidget::TraceInfo &info = *drawnInfo(widget);
    info.dirty = false;
    const Tellarix::RecordSequence *sequence = widget->displayedRecords(0);
    info.poly.reset();
    if (sequence)
        buildPolyline(widget, *sequence, shown);

    // Points are looked up in the raw data's info. It gets what is drawn: a click that went by a
    // picture of before would select a row whose trace is somewhere else.
    RecordWidget::TraceInfo &raw = *widget->traceInfo(0, false);
    raw.pos = info.pos;
    raw.height = info.height;
    raw.poly = info.poly;
}

void MultiTraceWidget::buildPolyline(const RecordWidget *widget,
                                     const Tellarix::RecordSequence &sequence,
                                     const Display &shown) const
{
    RecordWidget::TraceInfo &info = *drawnInfo(widget);
    const TimeWindow window = shown.windowOf(widget);
    minmax(&sequence, shown.windowNormalization ? window : TimeWindow(), info.offset, info.amplMin,
           info.amplMax, TimeWindow());
    info.absMax =
        std::max(std::abs(info.offset - info.amplMin), std::abs(info.offset - info.amplMax));

    double lowest = info.amplMin;
    double highest = info.amplMax;
    info.yOffset = info.offset;
    if (shown.commonRange) {
        lowest = widget->amplRange().first;
        highest = widget->amplRange().second;
        info.yOffset = (lowest + highest) * 0.5;
    }
    info.yMin = lowest - info.yOffset;
    info.yMax = highest - info.yOffset;
    if (_placement) {
        // The zero line stands at the row's place.
        info.yOffset = info.offset;
        info.yMax = shown.commonRange ? (highest - lowest) / 2 : info.absMax;
        info.yMin = -info.yMax;
    }
    info.fyMin = info.yMin / _ampScale;
    info.fyMax = info.yMax / _ampScale;

    // On purpose without the offset taken off: it moves the line of the lobes away from the mean.
    const double zero = _placement ? 0 : info.yOffset;
    const double baseline =
        info.height - std::trunc((zero - info.fyMin) * info.height / (info.fyMax - info.fyMin));
    const auto build = [&](auto *polyline) {
        polyline->create(&sequence, window.startTime(), window.endTime(), shown.pixelsPerSecond,
                         info.fyMin, info.fyMax, info.yOffset, info.height, nullptr, nullptr,
                         shown.optimize);
        if (_wiggles && std::isfinite(baseline))
            polyline->addLobes(std::clamp(baseline, -FarthestLine, FarthestLine));
        if (_horizontal)
            polyline->turn(info.height);
        polyline->prepareLobes(red, blue);
        info.poly = polyline;
    };
    if (shown.antiAliasing)
        build(new WiggleRecordPolylineF);
    else
        build(new WiggleRecordPolyline);
}

void MultiTraceWidget::drawRow(QPainter &painter, const Trace *row) const
{
    QPen pen = row->recordWidget()->recordPen(0);
    if (row->isSelected())
        pen.setColor(palette().color(QPalette::Highlight));
    painter.setPen(pen);

    const RecordWidget::TraceInfo *info = drawnInfo(row->recordWidget());
    if (!info->poly)
        return;
    painter.setBrush(Qt::NoBrush);
    if (row->recordWidget()->areTracesPale())
        painter.setOpacity(PaleOpacity);
    info->poly->draw(painter);
    if (_wiggles) {
        if (const auto *trace = dynamic_cast<const WiggledTrace *>(info->poly.get()))
            trace->drawLobes(painter);
        painter.setPen(pen);
    }
    painter.setOpacity(1);
}

/** Placed rows whose labels find room, selected ones first. */
QVector<const Trace *> MultiTraceWidget::labelledRows() const
{
    QVector<const Trace *> rows;
    if (!_placement)
        return rows;

    QVector<int> centres;
    for (const bool selected : {true, false}) {
        for (const Trace *row : _view->items()) {
            const QRect rect = rowRect(row);
            if (rect.isEmpty() || row->isSelected() != selected)
                continue;
            const int centre = _horizontal ? rect.center().x() : rect.center().y();
            const bool hasRoom = std::none_of(centres.begin(), centres.end(), [&](int other) {
                return std::abs(other - centre) < fontMetrics().height();
            });
            if (!hasRoom)
                continue;
            centres.append(centre);
            rows.append(row);
        }
    }
    return rows;
}

void MultiTraceWidget::drawLabel(QPainter &painter, const Trace *row, const QRect &strip) const
{
    const int height = drawnInfo(row->recordWidget())->height;
    QRect rect = strip;
    rect.setBottom(height - 1);
    if (_horizontal) {
        painter.translate(0, -strip.width());
        painter.rotate(90);
        painter.translate(0, -height);
    }
    painter.drawText(rect, Qt::AlignLeft | Qt::AlignVCenter, row->label());
}

void MultiTraceWidget::drawMarkers(QPainter &painter, const QFont &baseFont) const
{
    painter.setFont(baseFont);
    const int fontSize = QFontInfo(baseFont).pixelSize();
    for (int i = 0; i < _view->count(); ++i) {
        RecordWidget *widget = _view->itemAt(i)->recordWidget();
        const RecordWidget::TraceInfo *info = drawnInfo(widget);
        if (!info || info->height <= 0 || widget->markerCount() == 0)
            continue;

        const int textSize = std::min(fontSize, info->height / 2);
        if (textSize > 0) {
            QFont textFont = baseFont;
            textFont.setPixelSize(textSize);
            painter.setFont(textFont);
        }
        painter.save();
        if (hasTurnedScale()) {
            painter.translate(info->pos + info->height - 1, 0);
            painter.rotate(90);
        } else {
            painter.translate(0, info->pos);
        }
        for (int k = 0; k < widget->markerCount(); ++k) {
            if (!widget->marker(k)->isHidden())
                drawMarker(painter, widget, widget->marker(k), info->height, textSize);
        }
        painter.restore();
    }
}

/** Markers have gone by the rows' own scale ever since, unless there is one for time running down.
 */
int MultiTraceWidget::markerPixel(const RecordWidget *widget, const Time &time) const
{
    if (!hasTurnedScale())
        return widget->mapCanvasTime(time);
    const double pixel = pixelOf((time - widget->alignment()).length()) - drawingArea().top();
    return static_cast<int>(std::clamp(pixel, -FarthestLine, FarthestLine));
}

void MultiTraceWidget::drawMarker(QPainter &painter, RecordWidget *widget, RecordMarker *marker,
                                  int height, int textSize) const
{
    const int half = height / 2;
    int top = 0;
    int bottom = height;
    int textY = textSize + 1;
    if (marker->alignment() == Qt::AlignTop) {
        bottom = half - 1;
    } else if (marker->alignment() == Qt::AlignBottom) {
        top = half + 1;
        textY = height - 2;
    }
    const auto drawText = [&](int x) {
        if (textSize > 0)
            painter.drawText(x + 2, textY, marker->renderText());
    };

    const bool enabled = widget->isEnabled() && marker->isEnabled();
    const QColor disabled = isEnabled() ? palette().color(foregroundRole()) : QColor(DisabledColor);
    const int lineWidth = Scheme::Current().records.lineWidth;
    QColor color = enabled ? marker->color() : disabled;
    if (marker->isMoveCopyEnabled()) {
        QColor faint = color;
        faint.setAlpha(MoveCopyAlpha);
        const int x = markerPixel(widget, marker->time());
        painter.setPen(QPen(faint, lineWidth));
        painter.drawLine(x, top, x, bottom);
        drawText(x);
    }
    if (marker->isMovable() && marker->isModified()) {
        color = enabled ? marker->modifiedColor() : disabled;
        top = 0;
        bottom = height;
    }
    const int x = markerPixel(widget, marker->correctedTime());
    painter.setPen(color);
    drawText(x);
    marker->draw(painter, widget, x, top, bottom, color, lineWidth);
}

} // namespace Gui
} // namespace Norvu
