// SPDX-License-Identifier: LGPL-3.0-or-later

#include "shownevents.h"

#include <algorithm>

namespace Workbench {

ShownEvents::ShownEvents(QObject *parent) : QObject(parent)
{}

const EventFacts *ShownEvents::find(const QString &publicID) const
{
    if (_indices.isEmpty()) {
        _indices.reserve(_events.size());
        for (int i = 0; i < _events.size(); ++i)
            _indices.insert(_events[i].publicID, i);
    }
    const auto index = _indices.constFind(publicID);
    return index == _indices.constEnd() ? nullptr : &_events[*index];
}

int ShownEvents::countBefore(const Tellarix::Core::Time &time) const
{
    const auto end = std::partition_point(
        _events.begin(), _events.end(), [&](const auto &event) { return event.originTime < time; });
    return static_cast<int>(end - _events.begin());
}

int ShownEvents::countUntil(const Tellarix::Core::Time &time) const
{
    const auto end = std::partition_point(_events.begin(), _events.end(), [&](const auto &event) {
        return event.originTime <= time;
    });
    return static_cast<int>(end - _events.begin());
}

void ShownEvents::set(QVector<EventFacts> events)
{
    if (events.isEmpty() && _events.isEmpty())
        return;
    const auto isEarlier = [](const EventFacts &a, const EventFacts &b) {
        return a.originTime < b.originTime;
    };
    std::stable_sort(events.begin(), events.end(), isEarlier);
    _events = std::move(events);
    _indices.clear();
    emit changed();
}

} // namespace Workbench
