// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/projection.h>

#include <QCoreApplication>
#include <QtMath>

#include <cmath>

namespace Tellarix {
namespace Gui {
namespace Map {

namespace {

/** More than what arithmetic on degrees rounds, less than any pixel. */
constexpr double Rounding = 1e-9;
/** The western edge of the globe in degrees from its centre. */
constexpr double WestEnd = -180 - Rounding;

QString translated(const char *text)
{
    return QCoreApplication::translate("Tellarix::Gui::Map::Projection", text);
}

} // namespace

double nearestTurn(double longitude, double center)
{
    return center + std::remainder(longitude - center, 360.0);
}

Projection::~Projection() = default;

double Projection::heightWithin(double latitude) const
{
    return heightOf(qBound(-maximumLatitude(), latitude, maximumLatitude()));
}

QPointF Projection::placeAt(double longitude, double height) const
{
    const double latitude = latitudeAt(height);
    return QPointF(nearestTurn(longitude, 0),
                   qBound(-maximumLatitude(), latitude, maximumLatitude()));
}

void Projection::setView(const View &view)
{
    _view = view;
    _centerHeight = heightWithin(view.center.y());
}

bool Projection::project(QPointF &pixel, const QPointF &place) const
{
    if (!std::isfinite(place.x()) || !(std::abs(place.y()) <= maximumLatitude()))
        return false;

    double degrees = place.x() - _view.center.x();
    if (!(degrees >= WestEnd && degrees < WestEnd + 360)) {
        degrees = std::remainder(degrees, 360.0);
        if (degrees >= WestEnd + 360)
            degrees -= 360;
    }
    pixel.setX(_view.size.width() / 2 + degrees * _view.pixelPerDegree);
    pixel.setY(_view.size.height() / 2 -
               (heightOf(place.y()) - _centerHeight) * _view.pixelPerDegree);
    return true;
}

bool Projection::project(QPoint &pixel, const QPointF &place) const
{
    QPointF exact;
    // Farther away than this nothing could be painted; beyond 31 bits it could not even be held.
    constexpr double Farthest = 1 << 24;
    if (!project(exact, place) || !(std::abs(exact.x()) < Farthest) ||
        !(std::abs(exact.y()) < Farthest))
        return false;

    pixel = QPoint(static_cast<int>(std::floor(exact.x() + 0.5)),
                   static_cast<int>(std::floor(exact.y() + 0.5)));
    return true;
}

bool Projection::unproject(QPointF &place, const QPointF &pixel) const
{
    const double degrees = (pixel.x() - _view.size.width() / 2) / _view.pixelPerDegree;
    const double height =
        _centerHeight - (pixel.y() - _view.size.height() / 2) / _view.pixelPerDegree;
    if (!(degrees >= WestEnd && degrees < WestEnd + 360) ||
        !(std::abs(height) <= heightOf(maximumLatitude()) + Rounding))
        return false;

    place = placeAt(_view.center.x() + degrees, height);
    return true;
}

bool Projection::unproject(QPointF &place, const QPoint &pixel) const
{
    return unproject(place, QPointF(pixel));
}

QRectF Projection::globe() const
{
    const double half = heightOf(maximumLatitude());
    const double scale = _view.pixelPerDegree;
    return QRectF(_view.size.width() / 2 - 180 * scale,
                  _view.size.height() / 2 - (half - _centerHeight) * scale, 360 * scale,
                  2 * half * scale);
}

QRectF Projection::rectOf(const View &other) const
{
    const double scale = _view.pixelPerDegree / other.pixelPerDegree;
    const double degrees = std::remainder(other.center.x() - _view.center.x(), 360.0);
    const double height = heightWithin(other.center.y()) - _centerHeight;
    // Centres of views are the middles of pixels.
    const double x = _view.size.width() / 2 + 0.5 + degrees * _view.pixelPerDegree;
    const double y = _view.size.height() / 2 + 0.5 - height * _view.pixelPerDegree;
    return QRectF(x - (other.size.width() / 2 + 0.5) * scale,
                  y - (other.size.height() / 2 + 0.5) * scale, other.size.width() * scale,
                  other.size.height() * scale);
}

View Projection::boundedView(View view, double maximumPixelPerDegree) const
{
    const double half = heightOf(maximumLatitude());
    const double smallest = qMin(view.size.width() / 360.0, view.size.height() / (2 * half));
    if (!std::isfinite(view.pixelPerDegree))
        view.pixelPerDegree = smallest;
    view.pixelPerDegree = qBound(qMax(smallest, 1e-6), view.pixelPerDegree, maximumPixelPerDegree);

    if (!std::isfinite(view.center.x()) || !std::isfinite(view.center.y()))
        view.center = QPointF();
    const double room = qMax(0.0, half - view.size.height() / 2.0 / view.pixelPerDegree);
    const double latitude = qBound(-maximumLatitude(), view.center.y(), maximumLatitude());
    const double height = heightOf(latitude);
    view.center =
        QPointF(nearestTurn(view.center.x(), 0),
                std::abs(height) > room ? latitudeAt(std::copysign(room, height)) : latitude);
    return view;
}

View Projection::movedView(const QPointF &pixels) const
{
    View view = _view;
    view.center = placeAt(_view.center.x() - pixels.x() / _view.pixelPerDegree,
                          _centerHeight + pixels.y() / _view.pixelPerDegree);
    return boundedView(view);
}

View Projection::zoomedView(double factor, const QPointF &pixel, const QPointF &target) const
{
    View view = _view;
    view.pixelPerDegree *= factor;
    view.pixelPerDegree = boundedView(view).pixelPerDegree;

    const QPointF middle(_view.size.width() / 2, _view.size.height() / 2);
    const QPointF degrees =
        (pixel - middle) / _view.pixelPerDegree - (target - middle) / view.pixelPerDegree;
    view.center = placeAt(_view.center.x() + degrees.x(), _centerHeight - degrees.y());
    return boundedView(view);
}

View Projection::viewOf(const QRectF &region) const
{
    for (const double number : {region.x(), region.y(), region.width(), region.height()}) {
        if (!std::isfinite(number))
            return _view;
    }

    const QRectF area = region.normalized();
    const double south = heightWithin(area.top());
    const double north = heightWithin(area.bottom());
    View view = _view;
    view.center = placeAt(area.center().x(), (south + north) / 2);
    if (area.width() > 0 || north > south)
        view.pixelPerDegree =
            qMin(view.size.width() / area.width(), view.size.height() / (north - south));
    return boundedView(view);
}

QString PlateCarree::name() const
{
    return translated("Plate carrée");
}

PlateCarree *PlateCarree::clone() const
{
    return new PlateCarree(*this);
}

double PlateCarree::maximumLatitude() const
{
    return 90;
}

double PlateCarree::heightOf(double latitude) const
{
    return latitude;
}

double PlateCarree::latitudeAt(double height) const
{
    return height;
}

QString Mercator::name() const
{
    return translated("Mercator");
}

Mercator *Mercator::clone() const
{
    return new Mercator(*this);
}

double Mercator::maximumLatitude() const
{
    return 85.0511287798066;
}

double Mercator::heightOf(double latitude) const
{
    const double sine = std::sin(qDegreesToRadians(latitude));
    return qRadiansToDegrees(0.5 * std::log((1 + sine) / (1 - sine)));
}

double Mercator::latitudeAt(double height) const
{
    return qRadiansToDegrees(std::atan(std::sinh(qDegreesToRadians(height))));
}

} // namespace Map
} // namespace Gui
} // namespace Tellarix
