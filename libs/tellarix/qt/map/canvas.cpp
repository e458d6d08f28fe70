// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/canvas.h>

#include <QPainter>

namespace Tellarix {
namespace Gui {
namespace Map {

Canvas::Canvas(QObject *parent) : QObject(parent), _projection(new PlateCarree)
{
    _projection->setView({QSize(0, 0), QPointF(0, 0), 1});
}

Canvas::~Canvas()
{
    for (Layer *layer : qAsConst(_layers))
        layer->_canvas = nullptr;
}

void Canvas::setSize(const QSize &size)
{
    View view = this->view();
    view.size = size.expandedTo(QSize(0, 0));
    takeView(_projection->boundedView(view));
}

void Canvas::setProjection(Projection *projection)
{
    if (!projection || projection == _projection.get())
        return;

    const View view = this->view();
    _projection.reset(projection);
    _projection->setView(projection->boundedView(view));
    updateBuffer();
    emit viewChanged();
}

void Canvas::setView(const QPointF &center, double pixelPerDegree)
{
    takeView(_projection->boundedView({size(), center, pixelPerDegree}));
}

void Canvas::takeView(const View &view)
{
    if (view == this->view())
        return;

    _projection->setView(view);
    updateBuffer();
    emit viewChanged();
}

void Canvas::setFont(const QFont &font)
{
    _font = font;
    updateBuffer();
}

void Canvas::addLayer(Layer *layer)
{
    insertLayer(_layers.size(), layer);
}

void Canvas::insertLayer(int index, Layer *layer)
{
    if (!layer || layer->_canvas)
        return;

    layer->_canvas = this;
    _layers.insert(qBound(0, index, _layers.size()), layer);
    connect(layer, SIGNAL(updateRequested(QFlags<Tellarix::Gui::Map::Layer::UpdateHint>)), this,
            SLOT(updateLayer(QFlags<Tellarix::Gui::Map::Layer::UpdateHint>)));
    connect(layer, &QObject::destroyed, this, [this, layer] { _layers.removeOne(layer); });
    updateBuffer();
}

bool Canvas::removeLayer(Layer *layer)
{
    if (!_layers.removeOne(layer))
        return false;

    layer->_canvas = nullptr;
    disconnect(layer, nullptr, this, nullptr);
    updateBuffer();
    return true;
}

void Canvas::updateBuffer()
{
    _bufferOutdated = true;
    emit updateRequested();
}

void Canvas::updateLayer(const QFlags<Layer::UpdateHint> &hints)
{
    auto *layer = qobject_cast<Layer *>(sender());
    if (layer && hints.testFlag(Layer::SymbolPositions))
        layer->calculateMapPosition(this);
    if ((layer && layer->takeBufferOutdated()) || hints.testFlag(Layer::Buffer))
        _bufferOutdated = true;
    emit updateRequested();
}

void Canvas::renderBuffer()
{
    if (_buffer.size() != size())
        _buffer = QImage(size(), QImage::Format_ARGB32_Premultiplied);
    _bufferOutdated = false;
    if (_buffer.isNull())
        return;

    _buffer.fill(Qt::white);
    QPainter painter(&_buffer);
    for (Layer *layer : qAsConst(_layers)) {
        if (layer->isVisible())
            layer->baseBufferUpdated(this, painter);
    }
    for (Layer *layer : qAsConst(_layers)) {
        if (layer->isVisible())
            layer->bufferUpdated(this, painter);
    }
}

void Canvas::draw(QPainter &painter)
{
    if (_bufferOutdated)
        renderBuffer();
    painter.drawImage(0, 0, _buffer);
    for (Layer *layer : qAsConst(_layers)) {
        if (layer->isVisible())
            layer->draw(this, painter);
    }
}

} // namespace Map
} // namespace Gui
} // namespace Tellarix
