// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/projection.h>

#include <QCoreApplication>
#include <QtMath>

#include <cmath>

namespace Tellarix {
namespace Gui {
namespace Map {

namespace {

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

void Projection::setView(const View &view)
{
    _view = view;
    _centerHeight = heightOf(qBound(-maximumLatitude(), view.center.y(), maximumLatitude()));
}

bool Projection::project(QPointF &pixel, const QPointF &place) const
{
    if (!std::isfinite(place.x()) || !(std::abs(place.y()) <= maximumLatitude()))
        return false;

    const double degrees = std::remainder(place.x() - _view.center.x(), 360.0);
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
    if (!(std::abs(degrees) <= 180) || !(std::abs(height) <= heightOf(maximumLatitude())))
        return false;

    place = QPointF(nearestTurn(_view.center.x() + degrees, 0), latitudeAt(height));
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
    return qRadiansToDegrees(std::asinh(std::tan(qDegreesToRadians(latitude))));
}

double Mercator::latitudeAt(double height) const
{
    return qRadiansToDegrees(std::atan(std::sinh(qDegreesToRadians(height))));
}

} // namespace Map
} // namespace Gui
} // namespace Tellarix
