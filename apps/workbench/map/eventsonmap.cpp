// SPDX-License-Identifier: LGPL-3.0-or-later

#include "eventsonmap.h"

#include "bench/bench.h"
#include "bench/replay.h"
#include "bench/selection.h"
#include "bench/shownevents.h"
#include "eventmaplayer.h"
#include "eventreplay.h"
#include "eventvalues.h"
#include "placelabel.h"

#include <norvu/gui/map/annotations.h>
#include <norvu/gui/map/symbollayer.h>
#include <tellarix/qt/map/originsymbol.h>

#include <algorithm>
#include <vector>

using namespace Tellarix;

namespace Workbench {

namespace {

/** More would hide what they stand at. */
constexpr int MostLabels = 40;

bool isLarger(const EventFacts *a, const EventFacts *b)
{
    return a->magnitude.value_or(-99) > b->magnitude.value_or(-99);
}

QString labelOf(const EventFacts &event)
{
    if (!event.magnitude)
        return QString::fromStdString(event.originTime.toString("%Y-%m-%d"));
    return EventsOnMap::tr("M %1").arg(*event.magnitude, 0, 'f', 1);
}

} // namespace

EventsOnMap::EventsOnMap(Bench *bench, Norvu::Gui::Annotations *annotations, QObject *parent)
    : QObject(parent), _bench(bench), _annotations(annotations), _layer(new EventMapLayer(this)),
      _labels(new Norvu::Gui::Map::SymbolLayer(this))
{
    _layer->setName(tr("Events"));
    _labels->setName(tr("Event labels"));
    connect(_bench->shownEvents(), SIGNAL(changed()), this, SLOT(rebuild()));
    connect(_bench->selection(), SIGNAL(eventChanged()), this, SLOT(followSelection()));
    connect(_bench->selection(), SIGNAL(timeChanged()), this, SLOT(followReplay()));
    connect(_bench->replay(), SIGNAL(changed()), this, SLOT(followReplay()));
    connect(_layer, SIGNAL(modesChanged()), this, SLOT(rebuildLabels()));
    connect(_layer, SIGNAL(eventHovered(std::string)), this, SLOT(hover(std::string)));
    connect(_layer, SIGNAL(eventSelected(std::string)), this, SLOT(choose(std::string)));
    connect(_layer, SIGNAL(eventActivated(std::string)), this, SLOT(activate(std::string)));
    rebuild();
}

EventsOnMap::~EventsOnMap()
{
    // The labels have to go before the annotations that hold them.
    _labels->clear();
}

const EventFacts *EventsOnMap::find(const std::string &eventID) const
{
    return _bench->shownEvents()->find(QString::fromStdString(eventID));
}

const EventFacts *EventsOnMap::hovered() const
{
    return _bench->shownEvents()->find(_bench->selection()->hoveredEvent());
}

QString EventsOnMap::textOf(const EventFacts &event)
{
    QStringList parts;
    if (event.magnitude)
        parts << tr("M %1").arg(*event.magnitude, 0, 'f', 1);
    if (event.originTime.valid())
        parts << QString::fromStdString(event.originTime.toString("%Y-%m-%d %H:%M:%S"));
    if (event.depthKm)
        parts << tr("%1 km").arg(*event.depthKm, 0, 'f', 0);
    if (!event.region.isEmpty())
        parts << event.region;
    return parts.join(", ");
}

bool EventsOnMap::isReplaying() const
{
    return _bench->replay()->isOn() && _bench->selection()->time().valid();
}

void EventsOnMap::rebuild()
{
    _replay.reset();
    _labelled.clear();
    if (isReplaying()) {
        _replay = std::make_unique<EventReplay>(_bench->shownEvents(), _layer);
        _replay->moveTo(_bench->selection()->time(), _bench->replay()->fade());
    } else {
        std::vector<Gui::EventLayer::Values> events;
        events.reserve(_bench->shownEvents()->all().size());
        for (const EventFacts &event : _bench->shownEvents()->all()) {
            if (hasPlace(event))
                events.push_back(valuesOf(event));
        }
        _layer->setEvents(events);
    }
    followSelection();
}

void EventsOnMap::followReplay()
{
    if (isReplaying() != (_replay != nullptr)) {
        rebuild();
        return;
    }
    if (!_replay)
        return;
    _replay->moveTo(_bench->selection()->time(), _bench->replay()->fade());
    if (labelled() != _labelled)
        rebuildLabels();
}

/** The largest events of those that are to be seen. */
QVector<const EventFacts *> EventsOnMap::labelled() const
{
    if (!_labelsShown || !_layer->viewModes().testFlag(EventMapLayer::Symbols))
        return {};
    QVector<const EventFacts *> largest;
    const auto consider = [&](const EventFacts &event) {
        if (_labelRegion.contains(event.latitude, event.longitude))
            largest.append(&event);
    };
    if (_replay) {
        for (const EventFacts *event : _replay->seen())
            consider(*event);
    } else {
        for (const EventFacts &event : _bench->shownEvents()->all())
            consider(event);
    }
    const int count = std::min(MostLabels, largest.size());
    std::partial_sort(largest.begin(), largest.begin() + count, largest.end(), isLarger);
    largest.resize(count);
    return largest;
}

void EventsOnMap::rebuildLabels()
{
    _labels->clear();
    _labelled = labelled();
    // The chosen one comes first, so that no other takes its room.
    const auto &chosen = _bench->selection()->chosenEvent();
    const bool isChosenShown = chosen && hasPlace(*chosen) && _labelsShown &&
                               _layer->viewModes().testFlag(EventMapLayer::Symbols) &&
                               (!_replay || _layer->symbol(chosen->publicID.toStdString()));
    if (isChosenShown)
        addLabel(*chosen)->setAnnotationHighlight(true);
    for (const EventFacts *event : std::as_const(_labelled)) {
        if (!chosen || event->publicID != chosen->publicID)
            addLabel(*event);
    }
    _labels->update();
}

PlaceLabel *EventsOnMap::addLabel(const EventFacts &event)
{
    auto *label = new PlaceLabel(event.longitude, event.latitude,
                                 Gui::OriginSymbol::diameterOf(event.magnitude.value_or(0)));
    label->setAnnotation(labelOf(event), _annotations);
    _labels->addSymbol(label);
    return label;
}

void EventsOnMap::followSelection()
{
    const auto &chosen = _bench->selection()->chosenEvent();
    _layer->setSelectedEvent(chosen ? chosen->publicID.toStdString() : std::string());
    rebuildLabels();
}

void EventsOnMap::hover(const std::string &eventID)
{
    _bench->selection()->setHoveredEvent(QString::fromStdString(eventID));
}

void EventsOnMap::choose(const std::string &eventID)
{
    if (const EventFacts *event = find(eventID))
        _bench->selection()->setEvent(*event);
}

void EventsOnMap::activate(const std::string &eventID)
{
    if (const EventFacts *event = find(eventID))
        emit activated(event->longitude, event->latitude);
}

void EventsOnMap::setLabelRegion(const Region &region)
{
    if (region == _labelRegion)
        return;

    _labelRegion = region;
    rebuildLabels();
}

void EventsOnMap::setLabelsShown(bool shown)
{
    if (shown == _labelsShown)
        return;

    _labelsShown = shown;
    rebuildLabels();
}

} // namespace Workbench
