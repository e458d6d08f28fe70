// SPDX-License-Identifier: LGPL-3.0-or-later

#include "panels.h"

#include "events/eventpanel.h"
#include "jobs/jobpanel.h"
#include "map/mappanel.h"
#include "player/playerpanel.h"
#include "sources/sourcepanel.h"
#include "spectrograms/spectrogrampanel.h"
#include "waveforms/waveformpanel.h"

namespace Workbench {

namespace {

/** In the order of menus and pictures. */
PanelRegistry builtInPanels()
{
    PanelRegistry registry;
    registry.add<WaveformPanel>(); // makes the rows that others add to
    registry.add<SpectrogramPanel>();
    registry.add<EventPanel>();
    registry.add<MapPanel>();
    registry.add<PlayerPanel>(); // lies over the map
    registry.add<JobPanel>();
    registry.add<SourcePanel>();
    return registry;
}

} // namespace

PanelRegistry &panelRegistry()
{
    static PanelRegistry registry = builtInPanels();
    return registry;
}

} // namespace Workbench
