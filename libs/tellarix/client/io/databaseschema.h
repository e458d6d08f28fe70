// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/client/io/databaseinterface.h>

#include <QString>

#include <string>
#include <vector>

namespace Tellarix {
namespace IO {

/**
 * The tables of an event database.
 *
 * Every object with a public id has a row in PublicObject, whose _oid is also that of its row in
 * Event, Origin, Magnitude or FocalMechanism; solutions and descriptions name their event as
 * _parent_oid, and go with it. Times are stored as text ("2024-01-05 10:11:12") in UTC with their
 * microseconds in a column of their own ("..._ms"): Qt's drivers would take a time of the database
 * for local time, in which an hour of every year is missing.
 *
 * A preferred... column of Event names a solution of the event whenever it has one. Of several
 * descriptions with one type, all but the first have it in repeatedType.
 */
namespace DatabaseSchema {

/** Version of the tables that this program reads and writes. */
constexpr int Version = 1;
/** Characters in a public id or the type of a description. */
constexpr int KeyLength = 255;

/** The statements that make tables and indices. */
TELLARIX_CLIENT_API std::vector<std::string> statements(DatabaseInterface::Backend backend);

/** @name See EventArchive
 *  @{ */
TELLARIX_CLIENT_API bool create(DatabaseInterface &database, QString *error = nullptr);
TELLARIX_CLIENT_API bool ensure(DatabaseInterface &database, QString *error = nullptr);
TELLARIX_CLIENT_API bool check(DatabaseInterface &database, QString *error = nullptr);
/** @} */

} // namespace DatabaseSchema
} // namespace IO
} // namespace Tellarix
