// SPDX-License-Identifier: LGPL-3.0-or-later

#include "region.h"

#include <tellarix/core/math/geo.h>

#include <QCoreApplication>

#include <cmath>

using namespace Tellarix;

namespace Workbench {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("Workbench::Region", text);
}

QString degrees(double value, const char *positive, const char *negative)
{
    return QString("%1°%2").arg(std::abs(value), 0, 'f', 1).arg(value < 0 ? negative : positive);
}

QString latitudeText(double latitude)
{
    return degrees(latitude, "N", "S");
}

QString longitudeText(double longitude)
{
    return degrees(std::remainder(longitude, 360), "E", "W");
}

} // namespace

Region Region::box(const QRectF &box)
{
    Region region;
    region._box = box.normalized();
    return region;
}

Region Region::circle(double latitude, double longitude, double radiusKm)
{
    Region region;
    region._box = QRectF(longitude, latitude, 0, 0);
    region._radiusKm = radiusKm;
    return region;
}

bool Region::contains(double latitude, double longitude) const
{
    if (_radiusKm > 0) {
        // Degrees of latitude are never shorter than this: most events need no geodesic.
        constexpr double LeastKmPerDegree = 110;
        if (!(std::abs(latitude - _box.y()) * LeastKmPerDegree <= _radiusKm))
            return false;
        double distance = 0;
        Math::Geo::delaziKm(_box.y(), _box.x(), latitude, longitude, &distance);
        return distance <= _radiusKm;
    }
    const double fromLeft = longitude - _box.left();
    return latitude >= _box.top() && latitude <= _box.bottom() &&
           fromLeft - 360 * std::floor(fromLeft / 360) <= _box.width();
}

QRectF Region::bounds() const
{
    if (_radiusKm <= 0)
        return _box;
    constexpr double KmPerDegree = 111.2;
    const double height = _radiusKm / KmPerDegree;
    const double cosine = std::cos(_box.y() * M_PI / 180);
    const double width = cosine * 180 > height ? height / cosine : 180;
    return {_box.x() - width, _box.y() - height, 2 * width, 2 * height};
}

QString Region::text() const
{
    if (_radiusKm > 0)
        return tr("within %1 km of %2 %3")
            .arg(_radiusKm, 0, 'f', 0)
            .arg(latitudeText(_box.y()), longitudeText(_box.x()));

    return tr("%1 to %2, %3 to %4")
        .arg(latitudeText(_box.top()), latitudeText(_box.bottom()), longitudeText(_box.left()),
             longitudeText(_box.right()));
}

} // namespace Workbench
