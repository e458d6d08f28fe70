// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/datamodel/event.h>
#include <tellarix/qt/map/canvas.h>
#include <tellarix/qt/map/eventlayer.h>

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace Tellarix {
namespace Gui {

namespace {

EventLayer::Values valuesOf(const DataModel::Event &event)
{
    EventLayer::Values values{event.publicID, qQNaN(), qQNaN()};
    if (const DataModel::Origin *origin = event.preferredOrigin()) {
        values.longitude = origin->longitude.value();
        values.latitude = origin->latitude.value();
        values.depth = origin->depth ? origin->depth->value() : qQNaN();
    }
    if (const DataModel::Magnitude *magnitude = event.preferredMagnitude())
        values.magnitude = magnitude->magnitude.value();
    return values;
}

void prefetch(const OriginSymbol *symbol)
{
    const auto *bytes = reinterpret_cast<const char *>(symbol);
    for (std::size_t line = 0; line < sizeof(OriginSymbol); line += 64)
        __builtin_prefetch(bytes + line);
}

/** Whether it can be seen, if it lies in sight. */
bool isShown(const OriginSymbol &symbol)
{
    return symbol.isVisible() && !symbol.isClipped() && !symbol.isFaded();
}

bool hasPlace(const EventLayer::Values &values)
{
    return std::isfinite(values.longitude) && std::isfinite(values.latitude);
}

} // namespace

EventLayer::EventLayer(QObject *parent) : Layer(parent)
{
    setName(tr("events"));
    setCursorShape(Qt::PointingHandCursor);
}

EventLayer::~EventLayer()
{
    qDeleteAll(_symbols);
}

const std::vector<EventLayer::Drawn> &EventLayer::drawn()
{
    if (!_orderOutdated)
        return _drawn;

    _orderOutdated = false;
    _gridOutdated = true;
    _drawn.clear();
    _drawn.reserve(static_cast<std::size_t>(_symbols.size()));
    for (auto item = _symbols.cbegin(); item != _symbols.cend(); ++item)
        _drawn.push_back({item.value(), &item.key()});
    std::stable_sort(_drawn.begin(), _drawn.end(), &EventLayer::isBelow);
    return _drawn;
}

bool EventLayer::isBelow(const Drawn &a, const Drawn &b)
{
    const double magnitude = a.symbol->preferredMagnitudeValue();
    const double other = b.symbol->preferredMagnitudeValue();
    return magnitude != other ? magnitude > other : *a.id < *b.id;
}

void EventLayer::draw(const Map::Canvas *canvas, QPainter &painter)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const auto drawSymbol = [&](OriginSymbol *symbol) {
        if (isShown(*symbol))
            symbol->draw(canvas, painter);
    };
    const std::vector<Drawn> &items = drawn();
    for (std::size_t i = 0; i < items.size(); ++i) {
        // In the order of magnitudes, symbols lie all over the memory.
        if (i + 8 < items.size())
            prefetch(items[i + 8].symbol);
        if (!items[i].symbol->isSelected())
            drawSymbol(items[i].symbol);
    }
    if (OriginSymbol *selected = symbol(_selectedID))
        drawSymbol(selected);
    painter.restore();
}

void EventLayer::setVisible(bool visible)
{
    Layer::setVisible(visible);
}

void EventLayer::calculateMapPosition(const Map::Canvas *canvas)
{
    _gridOutdated = true;
    _area = QRect(QPoint(0, 0), canvas->size());
    for (OriginSymbol *symbol : qAsConst(_symbols))
        symbol->calculateMapPosition(canvas);
}

int EventLayer::symbolAt(const QPoint &position)
{
    const std::vector<Drawn> &items = drawn();
    if (_gridOutdated) {
        _gridOutdated = false;
        _reach = 0;
        std::vector<Map::PixelGrid::Point> points;
        points.reserve(items.size());
        for (std::size_t i = 0; i < items.size(); ++i) {
            const OriginSymbol &symbol = *items[i].symbol;
            if (symbol.isClipped())
                continue;
            points.push_back({symbol.position(), static_cast<int>(i)});
            _reach = qMax(_reach, qMax(symbol.size().width(), symbol.size().height()) / 2 + 1);
        }
        _grid.setPoints(points, _area.adjusted(-_reach, -_reach, _reach, _reach));
    }

    const QRect box(position.x() - _reach, position.y() - _reach, 2 * _reach + 1, 2 * _reach + 1);
    return _grid.last(box, [&](int number) {
        const OriginSymbol &symbol = *items[static_cast<std::size_t>(number)].symbol;
        return isShown(symbol) && symbol.isInside(position.x(), position.y());
    });
}

bool EventLayer::isInside(const QMouseEvent *event, const QPointF &)
{
    const OriginSymbol *selected = symbol(_selectedID);
    if (selected && isShown(*selected) && selected->isInside(event->x(), event->y())) {
        hover(_selectedID);
        return true;
    }
    const int number = symbolAt(event->pos());
    if (number < 0)
        return false;

    hover(*_drawn[static_cast<std::size_t>(number)].id);
    return true;
}

void EventLayer::hover(const std::string &eventID)
{
    if (eventID == _hoveredID)
        return;

    _hoveredID = eventID;
    _hoverChanged = true;
}

void EventLayer::handleLeaveEvent()
{
    _hoverChanged = false;
    if (_hoveredID.empty())
        return;

    _hoveredID.clear();
    emit eventHovered(std::string());
}

bool EventLayer::filterMouseMoveEvent(QMouseEvent *, const QPointF &)
{
    if (_hoverChanged) {
        _hoverChanged = false;
        // Who hears of it may change what is hovered.
        const std::string id = _hoveredID;
        emit eventHovered(id);
    }
    return false;
}

bool EventLayer::filterMousePressEvent(QMouseEvent *event, const QPointF &)
{
    if (_hoveredID.empty() || event->button() != Qt::LeftButton)
        return false;

    const std::string id = _hoveredID;
    setSelectedEvent(id);
    emit eventSelected(id);
    return true;
}

bool EventLayer::filterMouseDoubleClickEvent(QMouseEvent *event, const QPointF &)
{
    if (_hoveredID.empty() || event->button() != Qt::LeftButton)
        return false;

    const std::string id = _hoveredID;
    emit eventActivated(id);
    return true;
}

void EventLayer::setSelectedEvent(const std::string &eventID)
{
    if (eventID == _selectedID)
        return;

    if (OriginSymbol *former = symbol(_selectedID))
        former->setSelected(false);
    _selectedID = eventID;
    if (OriginSymbol *present = symbol(_selectedID))
        present->setSelected(true);
    emit updateRequested(Repaint);
}

void EventLayer::changed(UpdateHint hint)
{
    if (hint == SymbolPositions)
        _orderOutdated = true;
    _gridOutdated = true;
    setBufferOutdated();
    emit updateRequested(hint);
    if (!_hoveredID.empty() && !_symbols.contains(_hoveredID))
        handleLeaveEvent();
}

/** The symbol of the event; null if it can't be shown. */
OriginSymbol *EventLayer::insert(const Values &values)
{
    if (!hasPlace(values)) {
        drop(values.id);
        return nullptr;
    }

    OriginSymbol *&symbol = _symbols[values.id];
    if (symbol) {
        symbol->setLocation(QPointF(values.longitude, values.latitude));
        symbol->setDepth(values.depth);
    } else {
        symbol = new OriginSymbol(values.longitude, values.latitude, values.depth);
        symbol->setSelected(values.id == _selectedID);
    }
    symbol->setPreferredMagnitudeValue(values.magnitude);
    return symbol;
}

void EventLayer::drop(const std::string &eventID)
{
    _orderOutdated = true;
    delete _symbols.take(eventID);
}

void EventLayer::setEvents(const std::vector<Values> &events)
{
    std::vector<const Values *> sorted;
    sorted.reserve(events.size());
    for (const Values &values : events)
        sorted.push_back(&values);
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Values *a, const Values *b) { return a->id < b->id; });

    qDeleteAll(_symbols);
    _symbols.clear();
    for (const Values *values : sorted)
        insert(*values);
    changed();
}

void EventLayer::addEvents(const std::vector<Values> &events)
{
    drawn(); // is in order, so that what comes has only to be merged in
    const auto formerCount = static_cast<std::ptrdiff_t>(_drawn.size());
    for (const Values &values : events) {
        const int count = _symbols.size();
        OriginSymbol *symbol = insert(values);
        if (!symbol || _symbols.size() == count) {
            _orderOutdated = true;
            continue;
        }
        if (canvas())
            symbol->calculateMapPosition(canvas());
        _drawn.push_back({symbol, &_symbols.find(values.id).key()});
    }
    if (_orderOutdated) {
        changed();
        return;
    }
    const auto middle = _drawn.begin() + formerCount;
    std::sort(middle, _drawn.end(), &EventLayer::isBelow);
    std::inplace_merge(_drawn.begin(), middle, _drawn.end(), &EventLayer::isBelow);
    changed(Repaint);
}

void EventLayer::removeEvents(const std::vector<std::string> &eventIDs)
{
    drawn();
    std::vector<OriginSymbol *> removed;
    for (const std::string &id : eventIDs) {
        if (OriginSymbol *symbol = _symbols.take(id))
            removed.push_back(symbol);
    }
    std::sort(removed.begin(), removed.end());
    const auto isRemoved = [&](const Drawn &item) {
        return std::binary_search(removed.begin(), removed.end(), item.symbol);
    };
    _drawn.erase(std::remove_if(_drawn.begin(), _drawn.end(), isRemoved), _drawn.end());
    qDeleteAll(removed);
    changed(Repaint);
}

void EventLayer::clear()
{
    qDeleteAll(_symbols);
    _symbols.clear();
    changed();
}

void EventLayer::addEvent(DataModel::Event *event, bool)
{
    if (!event)
        return;

    insert(valuesOf(*event));
    changed();
}

void EventLayer::updateEvent(DataModel::Event *event)
{
    addEvent(event, false);
}

void EventLayer::removeEvent(DataModel::Event *event)
{
    if (!event)
        return;

    drop(event->publicID);
    changed();
}

} // namespace Gui
} // namespace Tellarix
