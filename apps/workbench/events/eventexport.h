// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/databaseinterface.h>

#include <QString>

class QAbstractItemModel;

namespace Workbench {

/** Name filter of the forms in which a list can be written. */
QString eventExportFilter();

/**
 * Writes the events of a list's rows with all their solutions, in order of time: as QuakeML (.xml),
 * CSV (.csv) or GeoJSON (.json, .geojson), as the file's name asks for. A file that is there stays
 * until the new one is whole.
 * @return false, with the file and the cause in @p error, if that failed
 */
bool writeEvents(const Tellarix::IO::DatabaseInterfacePtr &database, QAbstractItemModel *list,
                 const QString &file, QString *error);

} // namespace Workbench
