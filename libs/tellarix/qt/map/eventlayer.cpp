// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/datamodel/event.h>
#include <tellarix/qt/map/eventlayer.h>

#include <QMouseEvent>
#include <QPainter>
#include <QtNumeric>

#include <cmath>

namespace Tellarix {
namespace Gui {

EventLayer::EventLayer(QObject *parent) : Layer(parent)
{
    setName(tr("events"));
}

EventLayer::~EventLayer()
{
    qDeleteAll(_symbols);
}

void EventLayer::draw(const Map::Canvas *canvas, QPainter &painter)
{
    painter.save();
    for (OriginSymbol *symbol : qAsConst(_symbols)) {
        if (symbol->isVisible() && !symbol->isClipped())
            symbol->draw(canvas, painter);
    }
    painter.restore();
}

void EventLayer::setVisible(bool visible)
{
    Layer::setVisible(visible);
}

void EventLayer::calculateMapPosition(const Map::Canvas *canvas)
{
    for (OriginSymbol *symbol : qAsConst(_symbols))
        symbol->calculateMapPosition(canvas);
}

bool EventLayer::isInside(const QMouseEvent *event, const QPointF &)
{
    for (OriginSymbol *symbol : qAsConst(_symbols)) {
        if (symbol->isInside(event->x(), event->y()))
            return true;
    }
    return false;
}

void EventLayer::handleLeaveEvent()
{}

bool EventLayer::filterMouseMoveEvent(QMouseEvent *, const QPointF &)
{
    return false;
}

bool EventLayer::filterMousePressEvent(QMouseEvent *, const QPointF &)
{
    return false;
}

bool EventLayer::filterMouseDoubleClickEvent(QMouseEvent *, const QPointF &)
{
    return false;
}

void EventLayer::clear()
{
    qDeleteAll(_symbols);
    _symbols.clear();
    setBufferOutdated();
    emit updateRequested(SymbolPositions);
}

void EventLayer::addEvent(DataModel::Event *event, bool)
{
    const DataModel::Origin *origin = event ? event->preferredOrigin() : nullptr;
    if (!origin)
        return;

    OriginSymbol *&symbol = _symbols[event->publicID];
    delete symbol;
    symbol = new OriginSymbol(origin->longitude.value(), origin->latitude.value(),
                              origin->depth ? origin->depth->value() : qQNaN());
    if (const DataModel::Magnitude *magnitude = event->preferredMagnitude())
        symbol->setPreferredMagnitudeValue(magnitude->magnitude.value());
    setBufferOutdated();
    emit updateRequested(SymbolPositions);
}

void EventLayer::updateEvent(DataModel::Event *event)
{
    addEvent(event, false);
}

void EventLayer::removeEvent(DataModel::Event *event)
{
    if (!event)
        return;

    delete _symbols.take(event->publicID);
    setBufferOutdated();
    emit updateRequested(SymbolPositions);
}

} // namespace Gui
} // namespace Tellarix
