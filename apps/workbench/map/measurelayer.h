// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/map/layer.h>

#include <QPolygonF>
#include <QVector>

#include <optional>

namespace Workbench {

/** Distance and directions between two places. */
struct Course
{
    double distanceKm{0};
    double degrees{0};     /**< the same as an angle along the surface */
    double azimuth{0};     /**< at the first place, degrees clockwise from north */
    double backAzimuth{0}; /**< at the second one, back to the first */

    /** For the user, in one line. */
    QString text() const;
};

/** @param from, to  longitude in x, latitude in y */
Course courseBetween(const QPointF &from, const QPointF &to);

/** Places along the shortest way, both ends among them. */
QVector<QPointF> shortestWay(const QPointF &from, const QPointF &to);

/**
 * Measures distance and direction along the shortest way between two places: while it is active, a
 * drag with the left button does, and a click takes the line away.
 */
class MeasureLayer : public Tellarix::Gui::Map::Layer
{
    Q_OBJECT

public:
    explicit MeasureLayer(QObject *parent = nullptr);

    bool isActive() const { return _active; }
    /** The line that is shown; nothing without one. */
    std::optional<Course> course() const;

    void draw(const Tellarix::Gui::Map::Canvas *canvas, QPainter &painter) override;
    bool isInside(const QMouseEvent *event, const QPointF &place) override;
    bool filterMousePressEvent(QMouseEvent *event, const QPointF &place) override;
    bool filterMouseMoveEvent(QMouseEvent *event, const QPointF &place) override;
    bool filterMouseReleaseEvent(QMouseEvent *event, const QPointF &place) override;
    bool filterKeyPressEvent(QKeyEvent *event) override;

public slots:
    void setActive(bool active);
    /** Shows the line between two places. */
    void measure(const QPointF &from, const QPointF &to);
    void clear();

signals:
    void activeChanged(bool active);
    void courseChanged();

private:
    void drawLabel(QPainter &painter, const QRect &canvas, const QPoint &end) const;

    std::optional<QPointF> _from;
    std::optional<QPointF> _to;
    bool _active{false};
    bool _dragging{false};
};

} // namespace Workbench
