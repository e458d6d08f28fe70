// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/databaseinterface.h>
#include <tellarix/client/io/eventarchive.h>

#include <QString>

#include <functional>
#include <string>
#include <unordered_set>

class QAbstractItemModel;

namespace Workbench {

/** The events of a list: their ids, and the time that they take up. */
struct ListedEvents
{
    int count() const { return static_cast<int>(ids.size()); }

    std::unordered_set<std::string> ids;
    Tellarix::IO::EventSelection selection;
};

/** The events in the rows of an event list. */
ListedEvents listedEvents(QAbstractItemModel *list);

/** Name filter of the forms in which a list can be written. */
QString eventExportFilter();

/**
 * Writes the events of a list with all their solutions, in order of time: as QuakeML (.xml), CSV
 * (.csv) or GeoJSON (.json, .geojson), as the file's name asks for. A file that is there stays
 * until the new one is whole. May be called by any thread.
 *
 * @param progress  see IO::EventExportHandler
 * @return false, with the file and the cause in @p error, if that failed, or if the file was
 *         written without some events that are no longer there
 */
bool writeEvents(const Tellarix::IO::DatabaseInterfacePtr &database, const ListedEvents &events,
                 const QString &file, const std::function<bool(int, int)> &progress,
                 QString *error);

} // namespace Workbench
