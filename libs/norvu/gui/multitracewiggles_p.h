// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <tellarix/qt/records/recordpolyline.h>
#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/records/tracebars.h>

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QPolygon>
#include <QPolygonF>
#include <QVector>

#include <algorithm>
#include <type_traits>
#include <utility>
#include <vector>

namespace Norvu {
namespace Gui {

/** What a row of the overview keeps of slot 0, null without that slot. */
inline Tellarix::Gui::RecordWidget::TraceInfo *drawnInfo(const Tellarix::Gui::RecordWidget *widget)
{
    return widget->traceInfo(0, widget->isFilteringEnabled());
}

/**
 * Extrema and mean of the finite samples of a sequence.
 *
 * @param window        the samples that count, from the one at or before its start up to its end;
 *                      an invalid one means all samples
 * @param offset        set to the mean, 0 without samples
 * @param minimum, maximum  set to the extrema, 0 without samples
 * @param offsetWindow  if valid, only its samples of records that overlap @p window are summed for
 *                      the mean, which still is taken over the number of samples in @p window
 */
NORVU_GUI_API void minmax(const Tellarix::RecordSequence *sequence,
                          const Tellarix::Core::TimeWindow &window, double &offset, double &minimum,
                          double &maximum, const Tellarix::Core::TimeWindow &offsetWindow);

/** Collects the points on one side of a line into closed polygons. */
template <typename Polygon, typename Point>
class LobeBuilder
{
public:
    explicit LobeBuilder(QVector<Polygon> &lobes) : _lobes(lobes) {}

    bool isOpen() const { return _open; }
    bool isEmpty() const { return _points.empty(); }
    void open(const Point &onLine)
    {
        _open = true;
        _points.push_back(onLine);
    }
    void append(const Point &point) { _points.push_back(point); }
    void close(const Point &onLine)
    {
        _open = false;
        _points.push_back(onLine);
        Polygon lobe(static_cast<int>(_points.size()));
        std::copy(_points.begin(), _points.end(), lobe.begin());
        _lobes.append(std::move(lobe));
        _points.clear();
    }
    void forget()
    {
        _open = false;
        _points.clear();
    }

private:
    QVector<Polygon> &_lobes;
    std::vector<Point> _points;
    bool _open{false};
};

/**
 * Splits polygons at the line y = @p baseline into closed lobes: those at or above it, where y is
 * smaller, are appended to @p positive, and those at or below it to @p negative. In whole pixels,
 * points on the line are truncated.
 *
 * A polygon that ends on the line ends with its lower lobe; an upper one that is open there is
 * left out.
 *
 * @param lines  with x ascending
 */
template <typename Polygon, typename Point>
void generateWiggles(QVector<Polygon> &positive, QVector<Polygon> &negative,
                     const QVector<Polygon> &lines, double baseline)
{
    const auto onLine = [baseline](double x) {
        using Coordinate = std::decay_t<decltype(Point().x())>;
        return Point(static_cast<Coordinate>(x), static_cast<Coordinate>(baseline));
    };
    const auto crossing = [&](const Point &from, const Point &to) {
        const double rise = static_cast<double>(to.y()) - from.y();
        const double run = static_cast<double>(to.x()) - from.x();
        return onLine(run * (baseline - from.y()) / rise + from.x());
    };

    LobeBuilder<Polygon, Point> up(positive);
    LobeBuilder<Polygon, Point> down(negative);
    for (const Polygon &line : lines) {
        if (line.isEmpty())
            continue;

        const Point *previous = nullptr;
        const auto take = [&](LobeBuilder<Polygon, Point> &lobe, const Point &point, bool isIn) {
            if (isIn) {
                if (!lobe.isOpen())
                    lobe.open(previous ? crossing(*previous, point) : onLine(point.x()));
                lobe.append(point);
            } else if (lobe.isOpen()) {
                lobe.close(crossing(*previous, point));
            }
        };
        for (const Point &point : line) {
            take(up, point, baseline >= point.y());
            take(down, point, point.y() >= baseline);
            previous = &point;
        }

        if (!down.isEmpty())
            down.close(onLine(line.last().x()));
        else if (!up.isEmpty())
            up.close(onLine(line.last().x()));
        up.forget();
        down.forget();
    }
}

/**
 * Amplitude coordinate of a trace at a time, both in pixels: that of a point there, otherwise
 * between the two points around, truncated in whole pixels.
 *
 * @param polygons  with times ascending
 * @param turned    time runs along y
 * @return false, leaving @p amplitude alone, if no polygon reaches over @p time
 */
template <typename Polygon>
bool amplitudeAt(const QVector<Polygon> &polygons, int time, bool turned, double &amplitude)
{
    using Point = typename Polygon::value_type;
    using Wide = std::conditional_t<std::is_same_v<Point, QPoint>, qint64, double>;
    const auto timeOf = [turned](const Point &p) { return Wide(turned ? p.y() : p.x()); };
    const auto valueOf = [turned](const Point &p) { return Wide(turned ? p.x() : p.y()); };
    const auto pixelOf = [&](const Point &p) { return static_cast<int>(timeOf(p)); };

    for (const Polygon &polygon : polygons) {
        int low = 0;
        int high = polygon.size() - 1;
        if (high < 0 || time < pixelOf(polygon[low]) || time > pixelOf(polygon[high]))
            continue;

        for (;;) {
            const Point &a = polygon[low];
            const Point &b = polygon[high];
            if (time == pixelOf(a)) {
                amplitude = static_cast<double>(valueOf(a));
                return true;
            }
            if (time == pixelOf(b)) {
                amplitude = static_cast<double>(valueOf(b));
                return true;
            }
            if (high - low == 1) {
                const Wide rise = valueOf(b) - valueOf(a);
                const Wide run = timeOf(b) - timeOf(a);
                amplitude = static_cast<double>(valueOf(a) + rise * (time - timeOf(a)) / run);
                return true;
            }
            const int middle = (high + low) / 2;
            (time > pixelOf(polygon[middle]) ? low : high) = middle;
        }
    }
    return false;
}

/**
 * The pixels whose centres lie in lobes, column by column: what filling the polygons without
 * antialiasing covers.
 *
 * @param lobes   made by generateWiggles() of one baseline, which then may have been turned
 * @param turned  time runs along y
 */
NORVU_GUI_API Tellarix::Gui::TraceBars lobeBars(const QVector<QPolygon> &lobes, bool turned);

/** Fills polygons one by one. */
template <typename Polygon>
void fillLobes(QPainter &painter, const QVector<Polygon> &lobes, const QColor &color)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    for (const Polygon &lobe : lobes)
        painter.drawPolygon(lobe, Qt::OddEvenFill);
}

/** Lobes of a dense trace as a picture, since polygons with thousands of points take milliseconds
 *  to smooth. */
struct LobePicture
{
    QImage image; /**< null if the lobes are drawn as they are */
    QPoint position;
};

/** Draws lobes smoothly into a picture, unless that would be too large to be kept for each row. */
NORVU_GUI_API LobePicture pictureOf(const QVector<QPolygonF> &above,
                                    const QVector<QPolygonF> &below, const QColor &aboveColor,
                                    const QColor &belowColor);

/** A polyline of a row, in whole pixels or not, with its lobes. */
class WiggledTrace
{
public:
    virtual ~WiggledTrace() = default;

    /** Splits the trace at a line. */
    virtual void addLobes(double baseline) = 0;
    /** Turns trace and lobes so that time runs downwards and amplitudes to the right. */
    virtual void turn(int height) = 0;
    /** Works out how lobes are drawn fastest; behind the last change. */
    virtual void prepareLobes(const QColor &above, const QColor &below) = 0;
    /** Fills the lobes, those of subpixels smoothly if the painter does so. */
    virtual void drawLobes(QPainter &painter) const = 0;
    virtual bool amplitudeAt(int time, double &amplitude) const = 0;
};

template <typename Base, typename Polygon>
class WiggledPolyline final : public Base, public WiggledTrace
{
public:
    using Point = typename Polygon::value_type;

    void addLobes(double baseline) override
    {
        generateWiggles<Polygon, Point>(positive, negative, *this, baseline);
    }

    void turn(int height) override
    {
        _turned = true;
        for (QVector<Polygon> *polygons :
             {static_cast<QVector<Polygon> *>(this), &positive, &negative}) {
            for (Polygon &polygon : *polygons) {
                for (Point &point : polygon)
                    point = Point(height - 1 - point.y(), point.x());
            }
        }
    }

    void prepareLobes(const QColor &above, const QColor &below) override
    {
        _aboveColor = above;
        _belowColor = below;
        if constexpr (std::is_same_v<Polygon, QPolygon>) {
            _above = lobeBars(positive, _turned);
            _below = lobeBars(negative, _turned);
        } else {
            _picture = isDense() ? pictureOf(positive, negative, above, below) : LobePicture();
        }
    }

    void drawLobes(QPainter &painter) const override
    {
        if constexpr (std::is_same_v<Polygon, QPolygon>) {
            drawBars(painter, positive, _above, _aboveColor);
            drawBars(painter, negative, _below, _belowColor);
        } else if (!_picture.image.isNull() && painter.device()->devicePixelRatioF() == 1) {
            painter.drawImage(_picture.position, _picture.image);
        } else {
            fillLobes(painter, positive, _aboveColor);
            fillLobes(painter, negative, _belowColor);
        }
    }

    bool amplitudeAt(int time, double &amplitude) const override
    {
        return Norvu::Gui::amplitudeAt<Polygon>(*this, time, _turned, amplitude);
    }

    QVector<Polygon> positive;
    QVector<Polygon> negative;

private:
    /** True if columns hold more than one point. */
    bool isDense() const
    {
        constexpr double DensePoints = 1.5;
        double columns = 0;
        int points = 0;
        for (const Polygon &polygon : *this) {
            if (polygon.isEmpty())
                continue;
            const Point extent = polygon.last() - polygon.first();
            columns += (_turned ? extent.y() : extent.x()) + 1;
            points += polygon.size();
        }
        return points >= DensePoints * columns;
    }

    void drawBars(QPainter &painter, const QVector<Polygon> &lobes,
                  const Tellarix::Gui::TraceBars &bars, const QColor &color) const
    {
        if (lobes.isEmpty())
            return;

        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        fillBars(painter, bars, _turned);
    }

    bool _turned{false};
    QColor _aboveColor;
    QColor _belowColor;
    Tellarix::Gui::TraceBars _above;
    Tellarix::Gui::TraceBars _below;
    LobePicture _picture;
};

using WiggleRecordPolyline = WiggledPolyline<Tellarix::Gui::RecordPolyline, QPolygon>;
using WiggleRecordPolylineF = WiggledPolyline<Tellarix::Gui::RecordPolylineF, QPolygonF>;

} // namespace Gui
} // namespace Norvu
