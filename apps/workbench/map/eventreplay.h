// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/time.h>

#include <QVector>

#include <vector>

namespace Tellarix {
namespace Gui {
class OriginSymbol;
} // namespace Gui
} // namespace Tellarix

namespace Workbench {

class EventMapLayer;
class ShownEvents;
struct EventFacts;

/**
 * Shows events on a layer as they came: those up to a moment, fading with their age. The heat map
 * holds all of them, faded or not. A step costs what comes, goes or fades in it.
 */
class EventReplay
{
public:
    /** Begins without a moment, with nothing on the layer. Both parameters outlive the object,
     *  which is of no more use once the events are others, or the layer has been given others. */
    EventReplay(const ShownEvents *events, EventMapLayer *layer);

    /** Shows a moment, before or after the last one; see opacityAt(). */
    void moveTo(const Tellarix::Core::Time &moment, const Tellarix::Core::TimeSpan &fade);
    /** Those that are to be seen, in ascending order of time. */
    QVector<const EventFacts *> seen() const;

private:
    struct Entry
    {
        const EventFacts *event;
        Tellarix::Gui::OriginSymbol *symbol; /**< null while it isn't shown */
    };

    std::size_t countUntil(const Tellarix::Core::Time &time) const;
    void show(std::size_t count);

    EventMapLayer *_layer;
    std::vector<Entry> _entries; /**< those with place and time, in ascending order of time */
    std::size_t _shown{0};       /**< entries up to here have come */
    std::size_t _faded{0};       /**< and up to here have faded */
    Tellarix::Core::TimeSpan _fade;
};

} // namespace Workbench
