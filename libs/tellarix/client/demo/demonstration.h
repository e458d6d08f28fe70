// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/client/demo/demostation.h>

#include <QString>
#include <QStringList>

namespace Tellarix {
namespace Client {

/**
 * Names of the files of the demonstration: one miniSEED file per station with its three components,
 * in the order of demonstrationStations().
 */
TELLARIX_CLIENT_API QStringList demonstrationFiles();

/** Name of the file with the stations that recorded them, StationXML. */
TELLARIX_CLIENT_API QString demonstrationStationFile();

/**
 * Writes the recordings of a made-up regional earthquake, and its stations, into @p folder, which
 * is made if need be; about 10 MB. The same bytes every time. Files that exist are replaced by
 * complete new ones only.
 * @return false, with the reason in @p error, if something could not be written
 */
TELLARIX_CLIENT_API bool writeDemonstration(const QString &folder, QString *error = nullptr);

/** True if writeDemonstration() of this version was through with @p folder and all its files still
 *  have their sizes. */
TELLARIX_CLIENT_API bool demonstrationIsComplete(const QString &folder);

} // namespace Client
} // namespace Tellarix
