// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "bench/eventfacts.h"
#include "bench/region.h"

#include <QObject>
#include <QStringList>
#include <QVector>

#include <memory>
#include <string>

namespace Norvu {
namespace Gui {
class Annotations;
namespace Map {
class SymbolLayer;
} // namespace Map
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class Bench;
class EventMapLayer;
class EventReplay;
class PlaceLabel;

/**
 * The events of the list on a map: symbols or heat map, and labels at the largest of them and at
 * the chosen one, which is that of all panels. In a replay there are only those that have come.
 */
class EventsOnMap : public QObject
{
    Q_OBJECT

public:
    /** @param annotations  take the labels; they outlive the object */
    EventsOnMap(Bench *bench, Norvu::Gui::Annotations *annotations, QObject *parent);
    ~EventsOnMap() override;

    EventMapLayer *layer() const { return _layer; }
    /** Only labels are drawn by it. */
    Norvu::Gui::Map::SymbolLayer *labels() const { return _labels; }

    /** The event under the mouse, here or in another panel; null if there is none. */
    const EventFacts *hovered() const;
    /** Magnitude, time and region of an event, for the user. */
    static QString textOf(const EventFacts &event);

    /** Only events there get labels, so that a closer look shows more of them. */
    void setLabelRegion(const Region &region);

public slots:
    void setLabelsShown(bool shown);

signals:
    /** An event was double-clicked. */
    void activated(double longitude, double latitude);

private slots:
    void rebuild();
    void rebuildLabels();
    void followReplay();
    void followSelection();
    void hover(const std::string &eventID);
    void choose(const std::string &eventID);
    void activate(const std::string &eventID);

private:
    bool isReplaying() const;
    QVector<const EventFacts *> labelled() const;
    PlaceLabel *addLabel(const EventFacts &event);
    const EventFacts *find(const std::string &eventID) const;

    Bench *_bench;
    Norvu::Gui::Annotations *_annotations;
    EventMapLayer *_layer;
    Norvu::Gui::Map::SymbolLayer *_labels;
    std::unique_ptr<EventReplay> _replay; /**< null while all events are there */
    QVector<const EventFacts *> _labelled;
    Region _labelRegion{Region::box(QRectF(-180, -90, 360, 180))};
    bool _labelsShown{true};
};

} // namespace Workbench
