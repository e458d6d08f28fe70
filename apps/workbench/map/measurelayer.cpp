// SPDX-License-Identifier: LGPL-3.0-or-later

#include "measurelayer.h"

#include <tellarix/core/math/geo.h>
#include <tellarix/qt/map/canvas.h>
#include <tellarix/qt/scheme.h>

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <cmath>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr double KmPerStep = 50;
constexpr int MostSteps = 400;
constexpr int Padding = 4;

/** The way in pixels, in pieces where it crosses the edge of the globe. */
QVector<QPolygonF> linesOf(const QVector<QPointF> &way, const Gui::Map::Projection &projection)
{
    QVector<QPolygonF> lines(1);
    const double half = projection.globe().width() / 2;
    for (const QPointF &place : way) {
        QPointF pixel;
        const bool isOnMap = projection.project(pixel, place);
        QPolygonF &line = lines.last();
        const bool hasCrossed = !line.isEmpty() && std::abs(pixel.x() - line.last().x()) > half;
        if ((!isOnMap || hasCrossed) && !line.isEmpty())
            lines.append(QPolygonF());
        if (isOnMap)
            lines.last().append(pixel);
    }
    return lines;
}

} // namespace

QString Course::text() const
{
    const int decimals = distanceKm < 100 ? 2 : distanceKm < 1000 ? 1 : 0;
    return MeasureLayer::tr("%1 km (%2°), azimuth %3°, back %4°")
        .arg(distanceKm, 0, 'f', decimals)
        .arg(degrees, 0, 'f', 2)
        .arg(azimuth, 0, 'f', 1)
        .arg(backAzimuth, 0, 'f', 1);
}

Course courseBetween(const QPointF &from, const QPointF &to)
{
    Course course;
    Math::Geo::delaziKm(from.y(), from.x(), to.y(), to.x(), &course.distanceKm, &course.azimuth,
                        &course.backAzimuth);
    Math::Geo::delazi(from.y(), from.x(), to.y(), to.x(), &course.degrees);
    return course;
}

QVector<QPointF> shortestWay(const QPointF &from, const QPointF &to)
{
    const Course course = courseBetween(from, to);
    const int steps = qBound(1, static_cast<int>(course.distanceKm / KmPerStep), MostSteps);
    QVector<QPointF> way{from};
    for (int i = 1; i < steps; ++i) {
        double latitude = 0;
        double longitude = 0;
        Math::Geo::destination(course.distanceKm * i / steps, course.azimuth, from.y(), from.x(),
                               &latitude, &longitude);
        way.append(QPointF(longitude, latitude));
    }
    way.append(to);
    return way;
}

MeasureLayer::MeasureLayer(QObject *parent) : Layer(parent)
{
    setName(tr("measuring"));
    setCursorShape(Qt::CrossCursor);
}

std::optional<Course> MeasureLayer::course() const
{
    return _from && _to ? std::make_optional(courseBetween(*_from, *_to)) : std::nullopt;
}

void MeasureLayer::setActive(bool active)
{
    if (active == _active)
        return;

    _active = active;
    emit activeChanged(active);
    if (!active)
        clear();
}

void MeasureLayer::measure(const QPointF &from, const QPointF &to)
{
    _from = from;
    _to = to;
    emit courseChanged();
    emit updateRequested(Repaint);
}

void MeasureLayer::clear()
{
    _dragging = false;
    if (!_from)
        return;

    _from.reset();
    _to.reset();
    emit courseChanged();
    emit updateRequested(Repaint);
}

bool MeasureLayer::isInside(const QMouseEvent *, const QPointF &)
{
    return _active;
}

bool MeasureLayer::filterMousePressEvent(QMouseEvent *event, const QPointF &place)
{
    if (!_active || event->button() != Qt::LeftButton)
        return false;

    clear();
    _from = place;
    _dragging = true;
    return true;
}

bool MeasureLayer::filterMouseMoveEvent(QMouseEvent *, const QPointF &place)
{
    if (!_dragging)
        return false;

    measure(*_from, place);
    return true;
}

bool MeasureLayer::filterMouseReleaseEvent(QMouseEvent *event, const QPointF &)
{
    const bool wasDragging = _dragging && event->button() == Qt::LeftButton;
    _dragging = _dragging && !wasDragging;
    if (wasDragging && !_to)
        clear();
    return wasDragging;
}

bool MeasureLayer::filterKeyPressEvent(QKeyEvent *event)
{
    if (!_active || event->key() != Qt::Key_Escape)
        return false;

    setActive(false);
    return true;
}

void MeasureLayer::draw(const Gui::Map::Canvas *canvas, QPainter &painter)
{
    if (!_from || !_to)
        return;

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const Gui::Scheme &scheme = Gui::Scheme::Current();
    const auto lines = linesOf(shortestWay(*_from, *_to), *canvas->projection());
    // A rim keeps the line visible above whatever it crosses.
    for (const QPen &pen : {QPen(scheme.legend.background, 5), QPen(scheme.records.alignment, 2)}) {
        painter.setPen(pen);
        for (const QPolygonF &line : lines)
            painter.drawPolyline(line);
    }
    painter.setBrush(scheme.records.alignment);
    painter.setPen(QPen(scheme.legend.background, 1));
    QPoint end;
    for (const QPointF &place : {*_from, *_to}) {
        if (canvas->projection()->project(end, place))
            painter.drawEllipse(end, 4, 4);
    }
    drawLabel(painter, QRect(QPoint(), canvas->size()), end);
    painter.restore();
}

void MeasureLayer::drawLabel(QPainter &painter, const QRect &canvas, const QPoint &end) const
{
    const Gui::Scheme::Legend &colors = Gui::Scheme::Current().legend;
    const QString text = course()->text();
    QRect box =
        painter.fontMetrics().boundingRect(text).adjusted(-Padding, -Padding, Padding, Padding);
    box.moveTopLeft(end + QPoint(10, 10));
    box.moveRight(qMin(box.right(), canvas.right() - Padding));
    box.moveBottom(qMin(box.bottom(), canvas.bottom() - Padding));
    box.moveTopLeft(QPoint(qMax(box.left(), Padding), qMax(box.top(), Padding)));
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setBrush(colors.background);
    painter.setPen(colors.border);
    painter.drawRect(box);
    painter.setPen(colors.text);
    painter.drawText(box, Qt::AlignCenter, text);
}

} // namespace Workbench
