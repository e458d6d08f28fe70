// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/core/datamodel/event.h>

#include <QString>

#include <vector>

namespace Tellarix {
namespace Client {

/**
 * A made-up catalogue of the years 2023 and 2024 in order of time, the same every time: the large
 * earthquakes of the world along the boundaries of the plates, with aftershocks; the small ones
 * around the demonstration's stations, with a swarm, quarry blasts and false alarms; and the
 * earthquake of demonstrationOrigin() with its aftershocks. Magnitudes follow Gutenberg and
 * Richter's law with a b-value of 1, aftershocks Omori's and Bath's. Large ones have a mechanism.
 */
TELLARIX_CLIENT_API std::vector<DataModel::EventPtr> demonstrationCatalogue();

/**
 * Writes it into a new SQLite database of this name, which is complete or isn't there. One that is
 * there already stays if it holds as many events of this version; it is to be opened with
 * "access=read" (see IO::DatabaseAddress) so that it does.
 * @return false, with the file and the cause in @p error, if it could not be written
 */
TELLARIX_CLIENT_API bool writeDemonstrationCatalogue(const QString &file, QString *error = nullptr);

/** publicID of the event that is demonstrationOrigin(). */
TELLARIX_CLIENT_API std::string demonstrationEventID();

} // namespace Client
} // namespace Tellarix
