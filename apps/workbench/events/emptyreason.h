// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/eventfilter.h>
#include <tellarix/client/io/databaseinterface.h>
#include <tellarix/core/timewindow.h>

#include <QString>

namespace Workbench {

/**
 * Tells why a load gave no events: which of its bounds leaves none, and what there would be without
 * it. Asks the database for some counts.
 *
 * @param extent  from the first event to the last
 */
QString explainEmptyList(const Tellarix::IO::DatabaseInterfacePtr &database,
                         const Tellarix::Core::TimeWindow &window,
                         const Tellarix::Core::TimeWindow &extent,
                         const Norvu::Gui::EventFilter &filter);

} // namespace Workbench
