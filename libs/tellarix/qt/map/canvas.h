// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>
#include <tellarix/qt/map/backgroundpainter.h>
#include <tellarix/qt/map/layer.h>
#include <tellarix/qt/map/projection.h>

#include <QFont>
#include <QImage>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QRegion>
#include <QVector>

#include <memory>

namespace Tellarix {
namespace Gui {
namespace Map {

class CanvasJob;

/**
 * A map that is no widget: a view through a projection, layers above each other, and the buffer,
 * an image of what changes with the view only.
 *
 * The buffer has 32 bits a pixel (QImage::Format_ARGB32_Premultiplied, opaque) and the canvas's
 * size. For each view it is filled with the background, offered to the layers by
 * baseBufferUpdated() and bufferUpdated(), and then kept. draw() paints it, then the visible
 * layers from the bottom up, then their legends.
 *
 * Layers may be added, removed and deleted at any time, also while the canvas walks over them.
 */
class TELLARIX_GUI_API Canvas : public QObject
{
    Q_OBJECT

public:
    /** A canvas of no size in plate carree, which shows the whole world. */
    explicit Canvas(QObject *parent = nullptr);
    ~Canvas() override;

    const QSize &size() const { return view().size; }
    /** Another size about the same centre, at the same scale. */
    void setSize(const QSize &size);

    /** Never null. */
    const Projection *projection() const { return _projection.get(); }
    /** Takes ownership; the view stays as far as it can be shown. */
    void setProjection(Projection *projection);

    const View &view() const { return _projection->view(); }
    /** Shows the nearest view that is sensible; see Projection::boundedView(). */
    void setView(const QPointF &center, double pixelPerDegree);
    /** The same with a view of the projection, whose size is not taken. */
    void setView(const View &view);
    const QPointF &center() const { return view().center; }
    /** Pixels of one degree along the equator. */
    float pixelPerDegree() const { return static_cast<float>(view().pixelPerDegree); }

    /** What is below all layers; null for one plain colour. */
    void setBackground(std::shared_ptr<const BackgroundPainter> background);
    /**
     * Whether the background is painted in a thread of its own. Until it is there, draw() shows
     * the last buffer moved and scaled into the new view, and layers get no bufferUpdated(). Off
     * at first: draw() waits for it, as it does where there is no last buffer.
     */
    void setAsynchronous(bool asynchronous);
    bool isAsynchronous() const { return _asynchronous; }
    /** False while draw() would show anything but the finished buffer of the present view. */
    bool isBufferCurrent() const;

    /** Of the canvas's size at any time, and of the present view from the first bufferUpdated()
     *  on. */
    const QImage &buffer() const { return _buffer; }
    QImage &buffer() { return _buffer; }

    /** Font of labels and legends; the application's unless set. */
    const QFont &font() const { return _font; }
    void setFont(const QFont &font);

    /** Adds a layer above the others; it stays the caller's unless its parent is the canvas. */
    void addLayer(Layer *layer);
    void insertLayer(int index, Layer *layer);
    /** False if it isn't one of the canvas. */
    bool removeLayer(Layer *layer);
    /** From the bottom to the top. */
    const QList<Layer *> &layers() const { return _layers; }

    /** Paints all, making the buffer first if need be. */
    void draw(QPainter &painter);
    /** Paints the same map, about the same centre, at another size; waits for the background.
     *  Layers are told of the other view and then of the present one again. */
    void renderTo(QPainter &painter, const QSize &size);

    /**
     * Offers an event to the layers, see there: mouse moves, presses, releases, double clicks and
     * leaving, keys, and the call of a menu. Positions are pixels of the canvas.
     * @return true if a layer took it
     */
    bool filterEvent(QEvent *event);
    /** The layer whose isInside() was true at the last mouse event; null without one. */
    Layer *layerUnderMouse() const { return _underMouse; }

    /** The legend whose frame is at a pixel; null without one. */
    Legend *legendAt(const QPoint &position);
    /** What legends cover while draw() has layers paint themselves. */
    QVector<QRect> legendFrames() const;

public slots:
    /** Makes the buffer anew, background included, before the next draw(). */
    void updateBuffer();
    /** Pixels at the lower edge over which something else lies; legends keep clear of them. */
    void setCoveredHeight(int height);

signals:
    /** Something has to be painted anew. Sent once until the next draw(), or until control has
     *  returned to the event loop. */
    void updateRequested();
    /** Centre, scale, size or projection are different from before. */
    void viewChanged();

private slots:
    void updateLayer(const QFlags<Tellarix::Gui::Map::Layer::UpdateHint> &hints);
    void leaveHiddenLayer(bool visible);
    void addLegend(Tellarix::Gui::Map::Legend *legend);
    void removeLegend(Tellarix::Gui::Map::Legend *legend);
    void bringToFront(Tellarix::Gui::Map::Legend *legend);
    void layOutLegendsLater();
    void takeBackground();
    void allowUpdateRequest();

private:
    /** An image of what a view shows; a null one shows nothing. */
    struct Picture
    {
        QImage image;
        View view;
    };
    struct PlacedLegend
    {
        Legend *legend;
        QRect frame;
        QRect header;
        QRect content;
    };

    void takeView(const View &view);
    void requestUpdate();
    void outdatePositions();
    void placeSymbols();
    template <typename Visit>
    bool visitFromTop(Visit visit);
    template <typename Visit>
    void visitFromBottom(Visit visit);

    bool isBaseCurrent() const;
    void renderBuffer();
    void renderBase();
    void startJob();
    void composeBuffer();
    void fitBuffer();
    QRectF globeArea() const;
    void fillPlainly(QPainter &painter, const QRegion &region) const;
    /** Paints what it has of a region; gives the rest of it. */
    QRegion drawMoved(QPainter &painter, const Picture &picture, const QRegion &wanted) const;
    void drawBuffer(QPainter &painter) const;

    void layOutLegends();
    void drawLegends(QPainter &painter);

    void moveMouse(QMouseEvent *event, const QPointF &place);
    void leaveLayer();
    QPointF nearestPlace(const QPoint &position) const;

    std::unique_ptr<Projection> _projection;
    std::shared_ptr<const BackgroundPainter> _background;
    std::unique_ptr<CanvasJob> _job;
    Picture _base; /**< the background alone */
    QImage _buffer;
    View _bufferView;
    QFont _font;
    QList<Layer *> _layers;
    QPointer<Layer> _underMouse;
    QList<Legend *> _legends; /**< of all layers, the one nearest to its corner first */
    QVector<PlacedLegend> _placedLegends;
    bool _asynchronous{false};
    bool _baseOutdated{true};
    bool _layersOutdated{true};
    bool _legendsOutdated{true};
    int _coveredHeight{0};
    bool _updateRequested{false};
};

} // namespace Map
} // namespace Gui
} // namespace Tellarix
