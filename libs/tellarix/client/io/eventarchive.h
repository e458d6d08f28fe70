// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/client/io/databaseinterface.h>
#include <tellarix/core/datamodel/event.h>
#include <tellarix/core/timewindow.h>

#include <QString>

#include <functional>
#include <optional>
#include <string>

namespace Tellarix {
namespace IO {

/** Bounds on events by their preferred solutions, each inclusive; what is unset bounds nothing. */
struct EventSelection
{
    Core::Time from;
    Core::Time to;
    std::optional<double> minimumLatitude, maximumLatitude;
    std::optional<double> minimumLongitude, maximumLongitude;
    std::optional<double> minimumDepthKm, maximumDepthKm;
    std::optional<double> minimumMagnitude, maximumMagnitude;
};

/**
 * Writes whole events into an event database, and reads them from it. It may be used by several
 * threads, as the database may, and not while a query of the caller runs in the same thread.
 */
class TELLARIX_CLIENT_API EventArchive
{
public:
    /** @param database  with the schema of this version; see createSchema() */
    explicit EventArchive(DatabaseInterfacePtr database);

    /**
     * Makes the tables of an empty database.
     * @return false, with the cause in @p error, if there are other tables of these names, any in
     *         an SQLite file, or the database refuses
     */
    static bool createSchema(DatabaseInterface &database, QString *error = nullptr);
    /** Makes the tables if there are none yet, and checks them otherwise. */
    static bool ensureSchema(DatabaseInterface &database, QString *error = nullptr);
    /** Whether the tables are there in the version that this program writes. */
    static bool checkSchema(DatabaseInterface &database, QString *error = nullptr);

    /**
     * Stores an event with all its solutions; one with the same publicID is replaced. Part of the
     * caller's transaction if there is one, which is then to be rolled back on failure.
     *
     * Refused are events without a publicID, with ids of more than 255 characters and with times
     * outside of the years 1 to 9999. Solutions without a publicID, or with one that is taken
     * already, get one that is made of the event's, and what refers to them is changed along. The
     * preferred ids are stored as the event resolves them. Numbers that are not finite are unknown.
     *
     * @param replaced  gets whether there was an event with the publicID; may be null
     */
    bool write(const DataModel::Event &event, QString *error = nullptr, bool *replaced = nullptr);
    /** Removes an event with all its solutions; true also if there was none. */
    bool remove(const std::string &publicID, QString *error = nullptr);

    /** The whole event of an id; null if there is none, or on an error, which @p error tells. */
    DataModel::EventPtr read(const std::string &publicID, QString *error = nullptr);
    /**
     * Hands over the whole events of a selection in the order of their preferred origin times,
     * those without an origin last if no bound is set, in batches of bounded memory.
     * @return false if @p take ended it or on an error
     */
    bool forEach(const EventSelection &selection,
                 const std::function<bool(const DataModel::EventPtr &)> &take,
                 QString *error = nullptr);
    /** Number of events of a selection; -1 on an error. */
    int count(const EventSelection &selection, QString *error = nullptr);
    /** From the first origin time to a second behind the last; not valid if there is none, or on an
     *  error. */
    Core::TimeWindow extent(QString *error = nullptr);

private:
    DatabaseInterfacePtr _database;
};

} // namespace IO
} // namespace Tellarix
