// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/recordpolyline.h>

#include <tellarix/core/records/envelope.h>
#include <tellarix/qt/records/tracebars.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Tellarix {
namespace Gui {
namespace {

/** Farthest pixel at which a point is kept. */
constexpr double CoordinateLimit = 1 << 20;

/** Maps amplitudes to pixels. */
class AmplitudeScale
{
public:
    AmplitudeScale(double amplMin, double amplMax, double offset, int height)
        : _top(0.5 * amplMax), _offset(offset), _middle(0.5 * (height - 1))
    {
        // Halves, since the difference of two doubles need not fit into one.
        const double range = 0.5 * amplMax - 0.5 * amplMin;
        _isValid = std::isfinite(range) && std::isfinite(offset) && height >= 1;
        _isFlat = range == 0;
        constexpr double Most = std::numeric_limits<double>::max();
        _pixels = _isFlat ? 0 : std::clamp((height - 1) / range, -Most, Most);
    }

    bool isValid() const { return _isValid; }

    double y(double value) const
    {
        if (_isFlat)
            return _middle;
        const double y = (_top - 0.5 * (value - _offset)) * _pixels;
        return std::min(std::max(y, -CoordinateLimit), CoordinateLimit);
    }

private:
    double _top;
    double _offset;
    double _middle;
    double _pixels;
    bool _isValid;
    bool _isFlat;
};

QPoint makePoint(const EnvelopeColumn &column, double, double y, QPoint *)
{
    return {column.column,
            static_cast<int>(y + (CoordinateLimit + 0.5)) - static_cast<int>(CoordinateLimit)};
}

QPointF makePoint(const EnvelopeColumn &, double x, double y, QPointF *)
{
    return {x, y};
}

template <typename Point>
int differs(const Point &a, const Point &b)
{
    return (a.x() != b.x()) | (a.y() != b.y());
}

/**
 * Writes the points of a column behind @p end, of which there must be room for four, and leaves out
 * what equals the point before. There must be one.
 */
template <typename Point>
Point *appendColumn(Point *end, const EnvelopeColumn &column, const AmplitudeScale &scale)
{
    // No branch, since which points are equal can't be foreseen.
    const auto append = [&](double x, double y) {
        *end = makePoint(column, x, y, end);
        end += differs(*end, *(end - 1));
    };
    const double first = scale.y(column.first);
    append(column.firstX, first);
    if (column.minimum < column.maximum) {
        const double low = scale.y(column.minimum);
        const double high = scale.y(column.maximum);
        // The extreme that is nearer to the first value comes first, which makes the shorter way.
        const bool lowFirst = low - first < first - high;
        const double middle = 0.5 * (column.firstX + column.lastX);
        append(middle, lowFirst ? low : high);
        append(middle, lowFirst ? high : low);
        append(column.lastX, scale.y(column.last));
    }
    return end;
}

template <typename Point, typename Polygon>
void createPolygons(QVector<Polygon> &polygons, const RecordSequence *sequence,
                    const Core::TimeWindow &window, double pixelsPerSecond,
                    const AmplitudeScale &scale, double *minimumResult, double *maximumResult,
                    bool optimize)
{
    polygons.clear();
    if (!sequence || !scale.isValid())
        return;

    // Fresh memory for each trace and frame would cost as much as the envelope.
    static thread_local Envelope reused;
    Envelope own;
    Envelope &envelope = optimize ? reused : own;
    makeEnvelope(envelope, *sequence, window, pixelsPerSecond,
                 optimize ? EnvelopeDetail::Columns : EnvelopeDetail::EverySample);
    polygons.reserve(static_cast<int>(envelope.stretches.size()));
    for (const EnvelopeStretch &stretch : envelope.stretches) {
        const int pointsPerColumn = optimize ? 4 : 1;
        const int columns = static_cast<int>(stretch.end - stretch.begin);
        Polygon polygon(pointsPerColumn * columns + 1);
        Point *begin = polygon.data();
        const EnvelopeColumn &first = envelope.columns[stretch.begin];
        *begin = makePoint(first, first.firstX, scale.y(first.first), begin);
        Point *end = begin + 1;
        for (size_t i = stretch.begin; i < stretch.end; ++i)
            end = appendColumn(end, envelope.columns[i], scale);
        polygon.resize(static_cast<int>(end - begin));
        polygons.append(polygon);
    }

    if (envelope.minimum > envelope.maximum)
        return;
    if (minimumResult)
        *minimumResult = envelope.minimum;
    if (maximumResult)
        *maximumResult = envelope.maximum;
}

} // namespace

AbstractRecordPolyline::~AbstractRecordPolyline() = default;

void RecordPolyline::create(const RecordSequence *sequence, const Core::Time &start,
                            const Core::Time &end, double pixelsPerSecond, double amplMin,
                            double amplMax, double amplOffset, int height, double *minimumResult,
                            double *maximumResult, bool optimize)
{
    _ink.reset();
    createPolygons<QPoint>(*this, sequence, {start, end}, pixelsPerSecond,
                           AmplitudeScale(amplMin, amplMax, amplOffset, height), minimumResult,
                           maximumResult, optimize);
}

void RecordPolyline::draw(QPainter &painter)
{
    if (_ink && _ink->bars.size() == static_cast<size_t>(size()))
        drawTrace(painter, *this, *_ink);
    else
        drawTrace(painter, *this);
}

void RecordPolyline::translate(const QPointF &offset)
{
    _ink.reset();
    for (QPolygon &polygon : *this)
        polygon.translate(offset.toPoint());
}

void RecordPolyline::prepareDrawing()
{
    _ink = std::make_shared<TraceInk>(makeTraceInk(*this));
}

void RecordPolylineF::create(const RecordSequence *sequence, const Core::Time &start,
                             const Core::Time &end, double pixelsPerSecond, double amplMin,
                             double amplMax, double amplOffset, int height, double *minimumResult,
                             double *maximumResult, bool optimize)
{
    _ink.reset();
    createPolygons<QPointF>(*this, sequence, {start, end}, pixelsPerSecond,
                            AmplitudeScale(amplMin, amplMax, amplOffset, height), minimumResult,
                            maximumResult, optimize);
}

void RecordPolylineF::draw(QPainter &painter)
{
    if (_ink && _ink->bars.size() == static_cast<size_t>(size()))
        drawTrace(painter, *this, *_ink);
    else
        drawTrace(painter, *this);
}

void RecordPolylineF::translate(const QPointF &offset)
{
    _ink.reset();
    for (QPolygonF &polygon : *this)
        polygon.translate(offset);
}

void RecordPolylineF::prepareDrawing()
{
    _ink = std::make_shared<TraceInk>(makeTraceInk(*this));
}

} // namespace Gui
} // namespace Tellarix
