// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "eventfacts.h"

#include <QString>

namespace Workbench {

class Stations;

/** The folder of the demonstration's files, below the user's data folder; it may not exist yet. */
QString demonstrationFolder();

/** The demonstration's earthquake. */
EventFacts demonstrationEvent();

/** Tells of the stations that recorded it. */
void addDemonstrationStations(Stations *stations);

} // namespace Workbench
