#include <tellarix/qt/records/tracespans.h>

#include <QPainter>
#include <QPen>
#include <QtMath>

#include <algorithm>
#include <cmath>
#include <vector>

namespace Tellarix {
namespace Gui {
namespace {

/** Points a column from which on spans are drawn. */
constexpr double DensePoints = 1.5;
/** Widest pen in pixels; a column looks at as many neighbours. */
constexpr int WidestPen = 64;

/** Pixels of one column that are covered, both ends included. */
struct Span
{
    int low;
    int high;

    void widen(int y)
    {
        low = std::min(low, y);
        high = std::max(high, y);
    }
    void widen(const Span &other)
    {
        low = std::min(low, other.low);
        high = std::max(high, other.high);
    }
};

/** Spans of consecutive columns. */
struct Spans
{
    int first{0};
    std::vector<Span> columns;
};

QPoint pixelOf(const QPoint &point)
{
    return point;
}

QPoint pixelOf(const QPointF &point)
{
    return {qFloor(point.x()), qRound(point.y())};
}

/** The pixel of a point, with time along x. */
template <typename Point>
QPoint uprightPixel(const Point &point, bool turned)
{
    return pixelOf(turned ? Point(point.y(), point.x()) : point);
}

template <typename Polygon>
bool ascendsInX(const Polygon &polygon)
{
    const auto descends = [](const auto &a, const auto &b) { return b.x() < a.x(); };
    return std::adjacent_find(polygon.begin(), polygon.end(), descends) == polygon.end();
}

template <typename Polygon>
bool isDense(const Polygon &polygon, bool turned)
{
    const int columns =
        uprightPixel(polygon.last(), turned).x() - uprightPixel(polygon.first(), turned).x() + 1;
    return columns <= 1 || polygon.size() >= DensePoints * columns;
}

/** Adds the columns that a line from @p from, which is covered, to @p to passes. */
void addLine(std::vector<Span> &columns, const QPoint &from, const QPoint &to)
{
    const int distance = to.x() - from.x();
    const bool rises = to.y() >= from.y();
    const double slope = double(to.y() - from.y()) / distance;
    int y = from.y();
    for (int i = 0; i < distance; ++i) {
        const double border = from.y() + (i + 0.5) * slope;
        const int last = rises ? qFloor(border) : qCeil(border);
        columns.back().widen(rises ? std::max(y, last) : std::min(y, last));
        y = last == to.y() ? last : last + (rises ? 1 : -1);
        columns.push_back({y, y});
    }
    columns.back().widen(to.y());
}

template <typename Polygon>
void collectSpans(Spans &spans, const Polygon &polygon, bool turned)
{
    QPoint previous = uprightPixel(polygon.first(), turned);
    spans.first = previous.x();
    spans.columns.clear();
    spans.columns.push_back({previous.y(), previous.y()});
    for (const auto &point : polygon) {
        const QPoint pixel = uprightPixel(point, turned);
        if (pixel.x() <= previous.x())
            spans.columns.back().widen(pixel.y());
        else
            addLine(spans.columns, previous, pixel);
        previous = QPoint(std::max(pixel.x(), previous.x()), pixel.y());
    }
}

/** Thickens spans to the width of a pen, so that no pixel is covered twice. */
void thicken(Spans &spans, int width)
{
    if (width <= 1)
        return;

    const int before = (width - 1) / 2;
    const int behind = width / 2;
    const int n = static_cast<int>(spans.columns.size());
    std::vector<Span> thick;
    for (int i = -before; i < n + behind; ++i) {
        Span span = spans.columns[static_cast<size_t>(std::clamp(i, 0, n - 1))];
        for (int k = std::max(0, i - behind); k <= std::min(n - 1, i + before); ++k)
            span.widen(spans.columns[static_cast<size_t>(k)]);
        thick.push_back({span.low - before, span.high + behind});
    }
    spans.first -= before;
    spans.columns.swap(thick);
}

void drawSpans(QPainter &painter, const Spans &spans, bool turned)
{
    QVector<QRect> rects;
    rects.reserve(static_cast<int>(spans.columns.size()));
    int x = spans.first;
    for (const Span &span : spans.columns) {
        const int length = span.high - span.low + 1;
        rects.append(turned ? QRect(span.low, x, length, 1) : QRect(x, span.low, 1, length));
        ++x;
    }
    painter.drawRects(rects);
}

template <typename Polygon>
void drawDense(QPainter &painter, const QVector<const Polygon *> &polygons, bool turned)
{
    const QPen pen = painter.pen();
    const QBrush brush = painter.brush();
    const bool smooth = painter.testRenderHint(QPainter::Antialiasing);
    const int width = std::min(WidestPen, qRound(pen.widthF()));

    painter.setPen(Qt::NoPen);
    painter.setBrush(pen.brush());
    painter.setRenderHint(QPainter::Antialiasing, false);
    Spans spans;
    for (const Polygon *polygon : polygons) {
        collectSpans(spans, *polygon, turned);
        thicken(spans, width);
        drawSpans(painter, spans, turned);
    }
    painter.setRenderHint(QPainter::Antialiasing, smooth);
    painter.setBrush(brush);
    painter.setPen(pen);
}

template <typename Polygon>
void drawPolygons(QPainter &painter, const QVector<Polygon> &polygons)
{
    const Qt::PenStyle style = painter.pen().style();
    if (style == Qt::NoPen)
        return;

    const bool turned = !std::all_of(polygons.begin(), polygons.end(), ascendsInX<Polygon>);
    QVector<const Polygon *> dense;
    for (const Polygon &polygon : polygons) {
        if (polygon.isEmpty())
            continue;
        if (style == Qt::SolidLine && isDense(polygon, turned))
            dense.append(&polygon);
        else if (polygon.size() == 1)
            painter.drawPoint(polygon.first());
        else
            painter.drawPolyline(polygon);
    }
    if (!dense.isEmpty())
        drawDense(painter, dense, turned);
}

} // namespace

void drawTrace(QPainter &painter, const QVector<QPolygon> &polygons)
{
    drawPolygons(painter, polygons);
}

void drawTrace(QPainter &painter, const QVector<QPolygonF> &polygons)
{
    drawPolygons(painter, polygons);
}

} // namespace Gui
} // namespace Tellarix
