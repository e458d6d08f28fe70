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
