// SPDX-License-Identifier: LGPL-3.0-or-later

#include "selection.h"

using namespace Tellarix;

namespace Workbench {

Selection::Selection(QObject *parent) : QObject(parent)
{}

void Selection::showEvent(const EventFacts &event)
{
    setEvent(event);
    emit eventShown();
}

void Selection::setEvent(const EventFacts &event)
{
    if (_event == event)
        return;
    _event = event;
    emit eventChanged();
}

void Selection::clearEvent()
{
    if (!_event)
        return;
    _event.reset();
    emit eventChanged();
}

void Selection::setHoveredEvent(const QString &publicID)
{
    if (publicID == _hoveredEvent)
        return;
    _hoveredEvent = publicID;
    emit hoveredEventChanged();
}

void Selection::setTime(const Core::Time &time)
{
    if (time == _time)
        return;
    _time = time;
    emit timeChanged();
}

void Selection::setTimeWindow(const Core::TimeWindow &window)
{
    const Core::TimeWindow wanted = window.isEmpty() ? Core::TimeWindow() : window;
    if (wanted == _timeWindow)
        return;
    _timeWindow = wanted;
    emit timeWindowChanged();
}

void Selection::setStations(QStringList stations)
{
    stations.sort();
    stations.removeDuplicates();
    if (stations == _stations)
        return;
    _stations = stations;
    emit stationsChanged();
}

void Selection::setRegion(const std::optional<Region> &region)
{
    if (region == _region)
        return;
    _region = region;
    emit regionChanged();
}

void Selection::clear()
{
    clearEvent();
    setHoveredEvent(QString());
    setTime(Core::Time());
    setTimeWindow(Core::TimeWindow());
    setStations({});
    setRegion(std::nullopt);
}

} // namespace Workbench
