// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>
#include <tellarix/qt/map/layer.h>
#include <tellarix/qt/map/originsymbol.h>

#include <QMap>

#include <string>

namespace Tellarix {

namespace DataModel {
struct Event;
}

namespace Gui {

/**
 * Shows events by symbols at their epicentres. Later and larger ones are painted above: symbols of
 * smaller magnitude never hide behind larger ones.
 */
class TELLARIX_GUI_API EventLayer : public Map::Layer
{
    Q_OBJECT

public:
    explicit EventLayer(QObject *parent = nullptr);
    ~EventLayer() override;

    void draw(const Map::Canvas *canvas, QPainter &painter) override;
    void setVisible(bool visible) override;
    void calculateMapPosition(const Map::Canvas *canvas) override;
    bool isInside(const QMouseEvent *event, const QPointF &place) override;
    void handleLeaveEvent() override;
    bool filterMouseMoveEvent(QMouseEvent *event, const QPointF &place) override;
    bool filterMousePressEvent(QMouseEvent *event, const QPointF &place) override;
    bool filterMouseDoubleClickEvent(QMouseEvent *event, const QPointF &place) override;

    /** The event of a symbol, null without one. */
    OriginSymbol *symbol(const std::string &eventID) const { return _symbols.value(eventID); }
    int symbolCount() const { return _symbols.size(); }

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
    /** Ids of events; empty when there is none under the mouse any more. */
    void eventHovered(const std::string &eventID);
    void eventSelected(const std::string &eventID);
    void eventActivated(const std::string &eventID);

protected:
    /** Symbols by the public id of their event. */
    QMap<std::string, OriginSymbol *> _symbols;
};

} // namespace Gui
} // namespace Tellarix
