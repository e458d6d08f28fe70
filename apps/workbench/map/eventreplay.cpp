// SPDX-License-Identifier: LGPL-3.0-or-later

#include "eventreplay.h"

#include "bench/replay.h"
#include "bench/shownevents.h"
#include "eventmaplayer.h"
#include "eventvalues.h"

#include <algorithm>

using namespace Tellarix;

namespace Workbench {

EventReplay::EventReplay(const ShownEvents *events, EventMapLayer *layer) : _layer(layer)
{
    _layer->clear();
    for (const EventFacts &event : events->all()) {
        // Of those with the same id there is one symbol.
        if (hasPlace(event) && event.originTime.valid() && events->find(event.publicID) == &event)
            _entries.push_back({&event, nullptr});
    }
}

std::size_t EventReplay::countUntil(const Core::Time &time) const
{
    const auto end = std::partition_point(_entries.begin(), _entries.end(), [&](const auto &entry) {
        return entry.event->originTime <= time;
    });
    return static_cast<std::size_t>(end - _entries.begin());
}

/** Brings the layer from those that it shows to the first @p count ones. */
void EventReplay::show(std::size_t count)
{
    if (count < _shown) {
        std::vector<std::string> ids;
        for (std::size_t i = count; i < _shown; ++i) {
            ids.push_back(_entries[i].event->publicID.toStdString());
            _entries[i].symbol = nullptr;
        }
        _layer->removeEvents(ids);
    } else if (count > _shown) {
        std::vector<Gui::EventLayer::Values> events;
        for (std::size_t i = _shown; i < count; ++i)
            events.push_back(valuesOf(*_entries[i].event));
        _layer->addEvents(events);
        for (std::size_t i = _shown; i < count; ++i)
            _entries[i].symbol = _layer->symbol(events[i - _shown].id);
    }
    _shown = count;
}

void EventReplay::moveTo(const Core::Time &moment, const Core::TimeSpan &fade)
{
    const std::size_t formerlyShown = _shown;
    show(countUntil(moment));
    const bool fades = fade > Core::TimeSpan();
    const std::size_t faded = fades ? std::min(_shown, countUntil(moment - fade)) : 0;

    // Those that had faded before, and have still, stay as they are.
    const std::size_t unchanged = std::min({faded, _faded, formerlyShown});
    const std::size_t begin = fades || _fade > Core::TimeSpan() ? unchanged : formerlyShown;
    for (std::size_t i = begin; i < _shown; ++i)
        _entries[i].symbol->setOpacity(opacityAt(moment, _entries[i].event->originTime, fade));
    _faded = faded;
    _fade = fade;
    if (begin < _shown)
        emit _layer->updateRequested(EventMapLayer::Repaint);
}

QVector<const EventFacts *> EventReplay::seen() const
{
    QVector<const EventFacts *> events;
    events.reserve(static_cast<int>(_shown - _faded));
    for (std::size_t i = _faded; i < _shown; ++i)
        events.append(_entries[i].event);
    return events;
}

} // namespace Workbench
