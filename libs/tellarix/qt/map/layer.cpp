// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/canvas.h>
#include <tellarix/qt/map/layer.h>
#include <tellarix/qt/map/legend.h>

#include <QPointer>

namespace Tellarix {
namespace Gui {
namespace Map {

Layer::Layer(QObject *parent) : QObject(parent)
{}

Layer::~Layer()
{
    if (_canvas)
        _canvas->removeLayer(this);
    // As children they would outlive the list that they take themselves out of.
    while (!_legends.isEmpty())
        delete _legends.constLast();
}

void Layer::setConfig(const Client::Configuration *)
{}

bool Layer::init()
{
    return true;
}

Layer *Layer::clone(QObject *) const
{
    return nullptr;
}

void Layer::show()
{
    setVisible(true);
}

void Layer::hide()
{
    setVisible(false);
}

QSize Layer::size() const
{
    return QSize();
}

void Layer::draw(const Canvas *, QPainter &)
{}

void Layer::setVisible(bool visible)
{
    if (visible == _visible)
        return;

    _visible = visible;
    setBufferOutdated();
    const QPointer<Layer> alive(this);
    emit visibilityChanged(visible);
    if (alive)
        emit updateRequested(Repaint);
}

void Layer::calculateMapPosition(const Canvas *)
{}

bool Layer::isInside(const QMouseEvent *, const QPointF &)
{
    return false;
}

void Layer::baseBufferUpdated(Canvas *, QPainter &)
{}

void Layer::bufferUpdated(Canvas *, QPainter &)
{}

QMenu *Layer::menu(QMenu *) const
{
    return nullptr;
}

void Layer::handleEnterEvent()
{}

void Layer::handleLeaveEvent()
{}

bool Layer::filterContextMenuEvent(QContextMenuEvent *, const QPointF &)
{
    return false;
}

bool Layer::filterKeyPressEvent(QKeyEvent *)
{
    return false;
}

bool Layer::filterMouseMoveEvent(QMouseEvent *, const QPointF &)
{
    return false;
}

bool Layer::filterMousePressEvent(QMouseEvent *, const QPointF &)
{
    return false;
}

bool Layer::filterMouseReleaseEvent(QMouseEvent *, const QPointF &)
{
    return false;
}

bool Layer::filterMouseDoubleClickEvent(QMouseEvent *, const QPointF &)
{
    return false;
}

void Layer::setName(const QString &name)
{
    _name = name;
}

void Layer::setCursorShape(Qt::CursorShape shape)
{
    _cursor = shape;
    _hasCursor = true;
}

void Layer::unsetCursorShape()
{
    _hasCursor = false;
}

void Layer::addLegend(Legend *legend)
{
    if (!legend || _legends.contains(legend))
        return;

    if (legend->_layer)
        legend->_layer->takeLegend(legend);
    legend->setParent(this);
    legend->_layer = this;
    _legends.append(legend);
    emit legendAdded(legend);
}

bool Layer::takeLegend(Legend *legend)
{
    if (!_legends.removeOne(legend))
        return false;

    legend->setParent(nullptr);
    legend->_layer = nullptr;
    emit legendRemoved(legend);
    return true;
}

bool Layer::takeBufferOutdated()
{
    const bool outdated = _bufferOutdated;
    _bufferOutdated = false;
    return outdated;
}

} // namespace Map
} // namespace Gui
} // namespace Tellarix
