// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>
#include <tellarix/qt/map/layer.h>
#include <tellarix/qt/map/originsymbol.h>
#include <tellarix/qt/map/pixelgrid.h>

#include <QMap>
#include <QtNumeric>

#include <string>
#include <vector>

namespace Tellarix {

namespace DataModel {
struct Event;
}

namespace Gui {

/**
 * Shows events by symbols at their epicentres. Symbols of smaller magnitude lie above those of
 * larger ones, so that none hides another; the selected one lies above all.
 */
class TELLARIX_GUI_API EventLayer : public Map::Layer
{
    Q_OBJECT

public:
    /** What is shown of an event. */
    struct Values
    {
        std::string id;
        double longitude; /**< degrees */
        double latitude;
        double depth{qQNaN()};     /**< km; not finite if it is unknown */
        double magnitude{qQNaN()}; /**< not finite if it is unknown */
    };

    explicit EventLayer(QObject *parent = nullptr);
    ~EventLayer() override;

    void draw(const Map::Canvas *canvas, QPainter &painter) override;
    void setVisible(bool visible) override;
    void calculateMapPosition(const Map::Canvas *canvas) override;
    /** Whether a symbol is under the mouse, which then is the one that the signals tell of. */
    bool isInside(const QMouseEvent *event, const QPointF &place) override;
    void handleLeaveEvent() override;
    bool filterMouseMoveEvent(QMouseEvent *event, const QPointF &place) override;
    bool filterMousePressEvent(QMouseEvent *event, const QPointF &place) override;
    bool filterMouseDoubleClickEvent(QMouseEvent *event, const QPointF &place) override;

    /** The symbol of an event, null without one. */
    OriginSymbol *symbol(const std::string &eventID) const { return _symbols.value(eventID); }
    int symbolCount() const { return _symbols.size(); }

    /** Shows these events and no other ones, as addEvent() would; of those with the same id, the
     *  last. Faster by far than one event at a time. */
    void setEvents(const std::vector<Values> &events);

    /** Shows more events beside those that are there; one that is there already is updated. Costs
     *  little beyond the new symbols. */
    void addEvents(const std::vector<Values> &events);
    /** Removes the events of these ids; what isn't there is passed over. Costs little likewise. */
    void removeEvents(const std::vector<std::string> &eventIDs);

    /** Empty without one; need not be the id of an event that is there. */
    const std::string &selectedEvent() const { return _selectedID; }
    /** Marks the symbol of an event, now or once it comes, instead of the one before. */
    void setSelectedEvent(const std::string &eventID);

public slots:
    /** Removes all events. */
    virtual void clear();
    /**
     * Shows an event by its preferred origin and magnitude; one without an origin, or whose
     * coordinates are no numbers, is not shown. An event that is there already is updated.
     * @param fromNotification  it has come into being just now, and isn't part of a loaded list
     */
    virtual void addEvent(Tellarix::DataModel::Event *event, bool fromNotification);
    virtual void updateEvent(Tellarix::DataModel::Event *event);
    virtual void removeEvent(Tellarix::DataModel::Event *event);

signals:
    /** The event whose symbol is under the mouse; empty when there is none any more. */
    void eventHovered(const std::string &eventID);
    /** Its symbol was pressed with the left button. */
    void eventSelected(const std::string &eventID);
    /** It was double clicked. */
    void eventActivated(const std::string &eventID);

protected:
    /** Symbols by the public id of their event; derived classes only read it. */
    QMap<std::string, OriginSymbol *> _symbols;

private:
    struct Drawn
    {
        OriginSymbol *symbol;
        const std::string *id; /**< the symbol's key */
    };

    OriginSymbol *insert(const Values &values);
    void drop(const std::string &eventID);
    void changed(UpdateHint hint = SymbolPositions);
    static bool isBelow(const Drawn &a, const Drawn &b);
    const std::vector<Drawn> &drawn();
    int symbolAt(const QPoint &position);
    void hover(const std::string &eventID);

    std::vector<Drawn> _drawn; /**< from the bottom to the top */
    Map::PixelGrid _grid;      /**< of their numbers */
    QRect _area;               /**< where there are symbols on the canvas */
    int _reach{0};             /**< of the largest symbol */
    std::string _selectedID;
    std::string _hoveredID;
    bool _hoverChanged{false};
    bool _orderOutdated{false};
    bool _gridOutdated{false};
};

} // namespace Gui
} // namespace Tellarix
