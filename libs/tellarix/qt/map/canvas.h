// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>
#include <tellarix/qt/map/layer.h>
#include <tellarix/qt/map/projection.h>

#include <QFont>
#include <QImage>
#include <QList>
#include <QObject>

#include <memory>

namespace Tellarix {
namespace Gui {
namespace Map {

/**
 * A map that is no widget: a view through a projection, layers above each other, and the buffer,
 * an image of what changes with the view only.
 *
 * The buffer has 32 bits a pixel (QImage::Format_ARGB32_Premultiplied, opaque) and the canvas's
 * size. For each view it is filled with the background, offered to the layers by
 * baseBufferUpdated() and bufferUpdated(), and then kept. draw() paints it, then the visible
 * layers from the bottom up, then their legends.
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
    const QPointF &center() const { return view().center; }
    /** Pixels of one degree along the equator. */
    float pixelPerDegree() const { return static_cast<float>(view().pixelPerDegree); }

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

public slots:
    /** Makes the buffer anew before the next draw(). */
    void updateBuffer();

signals:
    /** Something has to be painted anew. */
    void updateRequested();
    /** Centre, scale, size or projection are different from before. */
    void viewChanged();

private slots:
    void updateLayer(const QFlags<Tellarix::Gui::Map::Layer::UpdateHint> &hints);

private:
    void takeView(const View &view);
    void renderBuffer();

    std::unique_ptr<Projection> _projection;
    QImage _buffer;
    QFont _font;
    QList<Layer *> _layers;
    bool _bufferOutdated{true};
};

} // namespace Map
} // namespace Gui
} // namespace Tellarix
