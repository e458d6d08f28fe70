// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>

#include <QPoint>
#include <QPointF>
#include <QRectF>
#include <QSize>
#include <QString>

namespace Tellarix {
namespace Gui {
namespace Map {

/** What a map shows: centre and scale, for a canvas of some size. */
struct View
{
    QSize size;               /**< of the canvas in pixels */
    QPointF center;           /**< longitude in x, latitude in y, in degrees */
    double pixelPerDegree{1}; /**< along the equator */

    bool operator==(const View &other) const
    {
        return size == other.size && center == other.center &&
               pixelPerDegree == other.pixelPerDegree;
    }
    bool operator!=(const View &other) const { return !(*this == other); }
};

/**
 * Leads between places on the globe and pixels of a canvas, for one view.
 *
 * The globe is cut along the meridian opposite to the centre, which itself lies at the western
 * edge: each place has at most one pixel, and the date line is a line like any other. Places are
 * degrees with longitude in x and latitude in y; longitudes may be of any turn, e.g. 190 for -170.
 * The centre of the view is the pixel (width / 2, height / 2), in integers. The exact positions
 * count from the middle of pixels.
 *
 * A subclass is a cylindrical projection: it gives the height of a latitude above the equator.
 */
class TELLARIX_GUI_API Projection
{
public:
    virtual ~Projection();

    /** Its name in menus, translated. */
    virtual QString name() const = 0;
    virtual Projection *clone() const = 0;

    const View &view() const { return _view; }
    /** Takes a view as it is; see boundedView() for sensible ones. */
    void setView(const View &view);

    /** Pixel of a place; false, with @p pixel unchanged, if the place can't be shown: latitudes
     *  beyond maximumLatitude() and coordinates that are no finite numbers. It may lie outside of
     *  the canvas. */
    bool project(QPoint &pixel, const QPointF &place) const;
    /** The same, not rounded to a whole pixel. */
    bool project(QPointF &pixel, const QPointF &place) const;
    /** Place at the middle of a pixel, with a longitude of -180 to 180; false, with @p place
     *  unchanged, off the globe. project() of the result is @p pixel again. */
    bool unproject(QPointF &place, const QPoint &pixel) const;
    bool unproject(QPointF &place, const QPointF &pixel) const;

    /** Pixels of the globe's edges, which may lie outside of the canvas. */
    QRectF globe() const;
    /** Where the picture that another view of this projection has on its canvas lies on this one,
     *  in a painter's coordinates: from edge to edge of its pixels. The turn of the globe is the
     * one that brings the centres nearest to each other. */
    QRectF rectOf(const View &other) const;

    /**
     * The nearest view in which the globe fills the canvas as far as it can: not smaller than the
     * canvas's width or height, whichever comes first, no emptiness above and below where there
     * need not be, and at most @p maximumPixelPerDegree.
     */
    View boundedView(View view, double maximumPixelPerDegree = 100000) const;

    /** The view in which everything lies @p pixels further right and below. */
    View movedView(const QPointF &pixels) const;
    /** The view of @p factor times the scale, as far as boundedView() allows, in which the place at
     *  @p pixel is at @p target; the same pixel for a zoom about a place that stays. */
    View zoomedView(double factor, const QPointF &pixel, const QPointF &target) const;
    /**
     * The view that just shows a region.
     * @param region  longitudes in x, latitudes in y. It reaches from x eastward by its width,
     * across the date line if need be: 170 with a width of 20 ends at -170. One without width and
     * height keeps the scale; the present view if it isn't finite.
     */
    View viewOf(const QRectF &region) const;

    /** The latitude, north and south, at which the map ends. */
    virtual double maximumLatitude() const = 0;
    /** Height above the equator of a latitude that can be shown, in degrees of the equator. */
    virtual double heightOf(double latitude) const = 0;
    /** Its exact inverse. */
    virtual double latitudeAt(double height) const = 0;

private:
    QPointF placeAt(double longitude, double height) const;
    double heightWithin(double latitude) const;

    View _view;
    double _centerHeight{0};
};

/** Longitude and latitude as x and y. Shows the poles. */
class TELLARIX_GUI_API PlateCarree : public Projection
{
public:
    QString name() const override;
    PlateCarree *clone() const override;
    double maximumLatitude() const override;
    double heightOf(double latitude) const override;
    double latitudeAt(double height) const override;
};

/** Keeps angles; ends at 85.05 degrees, where the world is as high as it is wide. Spherical form;
 *  Snyder, Map Projections: A Working Manual (1987), equations 7-1, 7-2a, 7-4. */
class TELLARIX_GUI_API Mercator : public Projection
{
public:
    QString name() const override;
    Mercator *clone() const override;
    double maximumLatitude() const override;
    double heightOf(double latitude) const override;
    double latitudeAt(double height) const override;
};

/** A longitude moved by whole turns to within 180 degrees of @p center. */
TELLARIX_GUI_API double nearestTurn(double longitude, double center);

} // namespace Map
} // namespace Gui
} // namespace Tellarix
