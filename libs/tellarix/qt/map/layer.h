// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>

#include <QFlags>
#include <QObject>
#include <QPointF>
#include <QSize>
#include <QString>
#include <QVector>

class QContextMenuEvent;
class QEvent;
class QKeyEvent;
class QMenu;
class QMouseEvent;
class QPainter;

namespace Tellarix {

namespace Client {
class Configuration;
}

namespace Gui {
namespace Map {

class Canvas;
class Legend;

/**
 * One of the sheets that a map is made of. Layers lie above each other in the order in which they
 * were added to the canvas. A layer paints itself at each repaint by draw(), or once for each view
 * into the pixels of the canvas's buffer by bufferUpdated().
 *
 * The mouse: from the top layer to the bottom one, the canvas asks each visible layer isInside();
 * the first that says yes is under the mouse and gets handleEnterEvent(), the one before it
 * handleLeaveEvent(). Then each visible layer, from top to bottom, may take the event by
 * filter...(): the first that returns true ends the walk, and the map doesn't use the event itself.
 * Beyond the edges of the globe, the place of an event is the nearest one on it. Where a
 * legend is, no layer is under the mouse and none is asked, unless a button is held already.
 */
class TELLARIX_GUI_API Layer : public QObject
{
    Q_OBJECT

public:
    /** What has to be done anew. Without a flag a repaint is enough. */
    enum UpdateHint
    {
        Repaint = 0x0,
        SymbolPositions = 0x1, /**< calculateMapPosition() */
        Buffer = 0x2           /**< bufferUpdated() */
    };
    Q_DECLARE_FLAGS(UpdateHints, UpdateHint)

    /** A visible layer without a name, under which the mouse is an arrow. */
    explicit Layer(QObject *parent = nullptr);
    ~Layer() override;

    /** Reads its settings; called before init(). */
    virtual void setConfig(const Client::Configuration *configuration);
    /** Makes ready what it shows; false if it can't be used. */
    virtual bool init();
    /** A layer of the same content for another canvas; null if it can't be copied. */
    virtual Layer *clone(QObject *parent) const;

    virtual void show();
    virtual void hide();
    /** Part of the canvas that the layer covers, in pixels; null if it is of no fixed size. */
    virtual QSize size() const;

    /** Paints the layer above those below it. */
    virtual void draw(const Canvas *canvas, QPainter &painter);
    virtual void setVisible(bool visible);
    /** Finds the pixels of what it shows in the canvas's present view. For a visible layer the
     *  canvas calls it before it draws, or asks for what is under the mouse, when the view has
     *  changed since or the layer has asked for it. */
    virtual void calculateMapPosition(const Canvas *canvas);
    /** Whether what it shows is under the mouse. @p place is longitude and latitude. */
    virtual bool isInside(const QMouseEvent *event, const QPointF &place);

    /** The background has been painted into the buffer by @p painter's device, and no layer's
     *  bufferUpdated() has been called yet. */
    virtual void baseBufferUpdated(Canvas *canvas, QPainter &painter);
    /** The buffer has been made anew for the canvas's present view. */
    virtual void bufferUpdated(Canvas *canvas, QPainter &painter);

    /** A menu of the layer's choices, made for @p parent; null if it has none. */
    virtual QMenu *menu(QMenu *parent) const;

    virtual void handleEnterEvent();
    virtual void handleLeaveEvent();
    virtual bool filterContextMenuEvent(QContextMenuEvent *event, const QPointF &place);
    virtual bool filterKeyPressEvent(QKeyEvent *event);
    virtual bool filterMouseMoveEvent(QMouseEvent *event, const QPointF &place);
    virtual bool filterMousePressEvent(QMouseEvent *event, const QPointF &place);
    virtual bool filterMouseReleaseEvent(QMouseEvent *event, const QPointF &place);
    virtual bool filterMouseDoubleClickEvent(QMouseEvent *event, const QPointF &place);

    /** Its name in menus. */
    const QString &name() const { return _name; }
    void setName(const QString &name);
    bool isVisible() const { return _visible; }

    /** The mouse cursor while the mouse is inside. */
    void setCursorShape(Qt::CursorShape shape);
    /** The layer leaves the cursor as it is. */
    void unsetCursorShape();
    bool hasCursorShape() const { return _hasCursor; }
    Qt::CursorShape cursorShape() const { return _cursor; }

    /** Adds a legend and takes ownership. */
    void addLegend(Legend *legend);
    /** Gives a legend back to the caller; false if it isn't one of the layer. */
    bool takeLegend(Legend *legend);
    const QVector<Legend *> &legends() const { return _legends; }

    /** The canvas that it was added to, or null. */
    Canvas *canvas() const { return _canvas; }

    /** True once, if what the layer paints into the buffer has changed since the last call. */
    bool takeBufferOutdated();

signals:
    void updateRequested(const QFlags<Tellarix::Gui::Map::Layer::UpdateHint> &hints);
    void visibilityChanged(bool visible);
    void legendAdded(Tellarix::Gui::Map::Legend *legend);
    void legendRemoved(Tellarix::Gui::Map::Legend *legend);

protected:
    /** Tells that bufferUpdated() would paint something else now; the canvas sees to it at the next
     *  update of whatever hint. */
    void setBufferOutdated() { _bufferOutdated = true; }

private:
    friend class Canvas;

    QString _name;
    QVector<Legend *> _legends;
    Canvas *_canvas{nullptr};
    Qt::CursorShape _cursor{Qt::ArrowCursor};
    bool _hasCursor{true};
    bool _visible{true};
    bool _bufferOutdated{false};
    bool _positionsOutdated{true};
};

Q_DECLARE_OPERATORS_FOR_FLAGS(Layer::UpdateHints)

} // namespace Map
} // namespace Gui
} // namespace Tellarix
