// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/map/symbollayer.h>

#include <QMouseEvent>
#include <QPainter>
#include <QPointer>

#include <algorithm>
#include <cmath>
#include <utility>

namespace Norvu {
namespace Gui {
namespace Map {

namespace {

constexpr int Priorities = 4;

bool isShown(const Symbol *symbol)
{
    return symbol->isVisible() && !symbol->isClipped();
}

bool topToBottom(const Symbol *a, const Symbol *b)
{
    const double latitude = a->location().y();
    const double other = b->location().y();
    // What is no number goes last; compared plainly, it would lead std::sort out of the vector.
    return latitude > other || (std::isnan(other) && !std::isnan(latitude));
}

} // namespace

SymbolLayer::SymbolLayer(QObject *parent) : Layer(parent)
{}

SymbolLayer::~SymbolLayer()
{
    clear();
}

void SymbolLayer::addSymbol(Symbol *symbol)
{
    if (symbol)
        _symbols.append(symbol);
}

Symbol *SymbolLayer::takeSymbol(int index)
{
    if (index < 0 || index >= _symbols.size())
        return nullptr;

    Symbol *symbol = _symbols.takeAt(index);
    // Its label would stay on the map without it.
    symbol->layerVisibilityChanged(false);
    if (symbol == _hoverSymbol) {
        _hoverSymbol = nullptr;
        _hoverChanged = false;
        emit symbolHovered(nullptr);
    }
    return symbol;
}

bool SymbolLayer::takeSymbol(const Symbol *symbol)
{
    return takeSymbol(_symbols.indexOf(const_cast<Symbol *>(symbol))) != nullptr;
}

bool SymbolLayer::removeSymbol(const Symbol *symbol)
{
    return removeSymbol(_symbols.indexOf(const_cast<Symbol *>(symbol)));
}

bool SymbolLayer::removeSymbol(int index)
{
    const Symbol *symbol = takeSymbol(index);
    delete symbol;
    return symbol != nullptr;
}

void SymbolLayer::clear()
{
    // All is as it will be before anybody is told: a receiver may add symbols.
    const QVector<Symbol *> symbols = std::exchange(_symbols, {});
    const bool hovered = std::exchange(_hoverSymbol, nullptr) != nullptr;
    _hoverChanged = false;
    qDeleteAll(symbols);
    if (hovered)
        emit symbolHovered(nullptr);
}

void SymbolLayer::sortSymbols()
{
    std::sort(_symbols.begin(), _symbols.end(), topToBottom);
}

void SymbolLayer::setShadows(bool shadows)
{
    if (shadows == _shadows)
        return;

    _shadows = shadows;
    if (isVisible())
        update();
}

void SymbolLayer::update()
{
    emit updateRequested(SymbolPositions);
}

void SymbolLayer::draw(const Tellarix::Gui::Map::Canvas *canvas, QPainter &painter)
{
    calculateMapPosition(canvas);

    const QVector<Symbol *> symbols = _symbols;
    painter.save();
    if (_shadows) {
        for (Symbol *symbol : symbols) {
            if (isShown(symbol))
                symbol->drawShadow(painter);
        }
    }
    for (int priority = 0; priority < Priorities; ++priority) {
        for (Symbol *symbol : symbols) {
            if (symbol->priority() == priority && isShown(symbol))
                symbol->draw(canvas, painter);
        }
    }
    painter.restore();
}

void SymbolLayer::setVisible(bool visible)
{
    const bool wasVisible = isVisible();
    const QPointer<SymbolLayer> alive(this);
    Layer::setVisible(visible);
    if (!alive || isVisible() == wasVisible)
        return;

    setSymbolsVisible(isVisible());
    if (isVisible())
        update();
}

void SymbolLayer::setSymbolsVisible(bool visible)
{
    for (Symbol *symbol : qAsConst(_symbols))
        symbol->layerVisibilityChanged(visible);
}

void SymbolLayer::calculateMapPosition(const Tellarix::Gui::Map::Canvas *canvas)
{
    for (Symbol *symbol : qAsConst(_symbols))
        symbol->calculateMapPosition(canvas);
    // Symbols show their labels by what they know of themselves.
    if (!isVisible())
        setSymbolsVisible(false);
}

bool SymbolLayer::isInside(const QMouseEvent *event, const QPointF &)
{
    const QPoint pixel = event->localPos().toPoint();
    const auto hit = std::find_if(_symbols.cbegin(), _symbols.cend(), [&](const Symbol *symbol) {
        return symbol->isInside(pixel.x(), pixel.y());
    });
    if (hit == _symbols.cend())
        return false;

    _hoverChanged = *hit != _hoverSymbol;
    _hoverSymbol = *hit;
    return true;
}

void SymbolLayer::handleLeaveEvent()
{
    _hoverSymbol = nullptr;
    _hoverChanged = false;
    emit symbolHovered(nullptr);
}

// In what follows nothing comes after a signal: its receiver may delete the symbol and the layer.

bool SymbolLayer::filterMouseMoveEvent(QMouseEvent *, const QPointF &)
{
    if (std::exchange(_hoverChanged, false))
        emit symbolHovered(_hoverSymbol);
    return false;
}

bool SymbolLayer::filterMousePressEvent(QMouseEvent *event, const QPointF &)
{
    if (!_hoverSymbol || event->button() != Qt::LeftButton)
        return false;

    emit symbolPressed(_hoverSymbol);
    return true;
}

bool SymbolLayer::filterMouseDoubleClickEvent(QMouseEvent *event, const QPointF &)
{
    if (!_hoverSymbol || event->button() != Qt::LeftButton)
        return false;

    emit symbolDoubleClicked(_hoverSymbol);
    return true;
}

} // namespace Map
} // namespace Gui
} // namespace Norvu
