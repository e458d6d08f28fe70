// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>
#include <tellarix/qt/map/canvas.h>
#include <tellarix/qt/map/viewhistory.h>

#include <QElapsedTimer>
#include <QWidget>

class QMenu;

namespace Tellarix {
namespace Gui {
namespace Map {

/**
 * A window onto a canvas, which paints its background in a thread of its own.
 *
 * What no layer takes moves the map: dragging with the left or middle button, the wheel about the
 * pointer, a double click to the centre, dragging with Shift to a box that then fills the map; and
 * by keys: arrows, + and -, Page Up and Page Down, Home for the world, Alt+Left and Alt+Right
 * through the views that were shown before.
 */
class TELLARIX_GUI_API MapWidget : public QWidget
{
    Q_OBJECT

public:
    explicit MapWidget(QWidget *parent = nullptr);
    ~MapWidget() override;

    /** Never null; its size is the widget's. */
    Canvas *canvas() const { return _canvas; }

    bool canGoBack() const { return _history.canGoBack(); }
    bool canGoForward() const { return _history.canGoForward(); }

    /** Paints the same map at any size: see Canvas::renderTo(). */
    void renderTo(QPainter &painter, const QSize &size);

    QSize sizeHint() const override;

public slots:
    void zoomIn();
    void zoomOut();
    /** What a new widget shows. */
    void showWorld();
    /** See Projection::viewOf(). As long as nobody moves the map, the region fills it at any size
     * of the widget. */
    void showRegion(const QRectF &region);
    /** Moves a place, longitude in x, to the centre. */
    void showPlace(const QPointF &place);
    /** The view before the last change by one of these operations, by mouse or keys; a row of steps
     *  of the wheel or an arrow key is one. */
    void back();
    void forward();

signals:
    /** Longitude in x, latitude in y; the mouse has moved. */
    void placeHovered(const QPointF &place);
    /** The mouse has left the globe. */
    void placeLeft();
    /** A click that no layer took and that didn't move the map. */
    void placeClicked(const QPointF &place);
    /** A menu with those of the layers is about to be shown, if it isn't empty then. */
    void menuRequested(QMenu *menu, const QPointF &place);
    void viewChanged();
    /** canGoBack() or canGoForward() may be other than before. */
    void historyChanged();

protected:
    bool event(QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    /** What the mouse does while a button is held. */
    enum Gesture
    {
        None,
        Press, /**< nothing yet */
        Drag,
        Box
    };

    void go(const View &view, ViewHistory::Kind kind);
    void goTo(const View &view);
    void zoomBy(double factor, const QPointF &pixel);
    void moveBy(const QPoint &steps);
    void startGesture(QMouseEvent *event);
    void continueGesture(const QPoint &position);
    void endGesture(const QPoint &position);
    void cancelGesture();
    void setBox(const QRect &box);
    void hoverPlace(const QPoint &position);
    void updateCursor();
    QPoint middle() const;

    Canvas *_canvas;
    QRectF _region;   /**< shown last */
    View _regionView; /**< in which it fills the map */
    ViewHistory _history;
    QElapsedTimer _clock;
    Gesture _gesture{None};
    Qt::MouseButton _button{Qt::NoButton};
    QPoint _start;
    View _startView;
    QRect _box;
    bool _overGlobe{false};
};

} // namespace Map
} // namespace Gui
} // namespace Tellarix
