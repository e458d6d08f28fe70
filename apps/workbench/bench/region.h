// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QRectF>
#include <QString>

namespace Workbench {

/** A part of the globe: a box of latitudes and longitudes, or what is near to a place. */
class Region
{
public:
    /** @param box  longitude in x, latitude in y, in degrees; it may reach across the date line by
     *              longitudes beyond 180 or -180 */
    static Region box(const QRectF &box);
    static Region circle(double latitude, double longitude, double radiusKm);

    /** False for coordinates that are no numbers. */
    bool contains(double latitude, double longitude) const;
    /** The box, or that around a circle: longitude in x, latitude in y; longitudes may lie beyond
     * 180 or -180. */
    QRectF bounds() const;
    /** For the user. */
    QString text() const;

    bool operator==(const Region &other) const
    {
        return _box == other._box && _radiusKm == other._radiusKm;
    }
    bool operator!=(const Region &other) const { return !(*this == other); }

private:
    QRectF _box;         /**< a circle's has no size, and stands at its centre */
    double _radiusKm{0}; /**< 0 for a box */
};

} // namespace Workbench
