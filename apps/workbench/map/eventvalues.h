// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "bench/eventfacts.h"

#include <tellarix/qt/map/eventlayer.h>

#include <QtNumeric>

#include <cmath>

namespace Workbench {

inline bool hasPlace(const EventFacts &event)
{
    return std::isfinite(event.latitude) && std::isfinite(event.longitude);
}

/** What the layer shows of an event. */
inline Tellarix::Gui::EventLayer::Values valuesOf(const EventFacts &event)
{
    return {event.publicID.toStdString(), event.longitude, event.latitude,
            event.depthKm.value_or(qQNaN()), event.magnitude.value_or(qQNaN())};
}

} // namespace Workbench
