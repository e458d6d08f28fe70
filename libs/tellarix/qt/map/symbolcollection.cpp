// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/symbol.h>
#include <tellarix/qt/map/symbolcollection.h>

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace Tellarix {
namespace Gui {
namespace Map {

SymbolCollection::SymbolCollection(QObject *parent) : Layer(parent)
{
    unsetCursorShape();
}

SymbolCollection::~SymbolCollection()
{
    qDeleteAll(_symbols);
}

void SymbolCollection::draw(const Canvas *canvas, QPainter &painter)
{
    for (int priority = Symbol::Lowest; priority <= Symbol::Highest; ++priority) {
        for (Symbol *symbol : qAsConst(_symbols)) {
            if (!symbol->isVisible() || symbol->isClipped() || symbol->priority() != priority)
                continue;

            painter.save();
            symbol->draw(canvas, painter);
            painter.restore();
        }
    }
}

void SymbolCollection::setVisible(bool visible)
{
    if (visible == isVisible())
        return;

    for (Symbol *symbol : qAsConst(_symbols))
        symbol->layerVisibilityChanged(visible);
    Layer::setVisible(visible);
}

void SymbolCollection::calculateMapPosition(const Canvas *canvas)
{
    for (Symbol *symbol : qAsConst(_symbols))
        symbol->calculateMapPosition(canvas);
}

bool SymbolCollection::isInside(const QMouseEvent *event, const QPointF &)
{
    return std::any_of(_symbols.cbegin(), _symbols.cend(), [event](const Symbol *symbol) {
        return symbol->isVisible() && !symbol->isClipped() &&
               symbol->isInside(event->x(), event->y());
    });
}

void SymbolCollection::addSymbol(Symbol *symbol)
{
    if (!symbol || _symbols.contains(symbol))
        return;

    _symbols.append(symbol);
    update();
}

bool SymbolCollection::takeSymbol(Symbol *symbol)
{
    if (!_symbols.removeOne(symbol))
        return false;

    update();
    return true;
}

bool SymbolCollection::removeSymbol(Symbol *symbol)
{
    const bool taken = takeSymbol(symbol);
    if (taken)
        delete symbol;
    return taken;
}

void SymbolCollection::clear()
{
    qDeleteAll(_symbols);
    _symbols.clear();
    update();
}

void SymbolCollection::update()
{
    emit updateRequested(SymbolPositions);
}

} // namespace Map
} // namespace Gui
} // namespace Tellarix
