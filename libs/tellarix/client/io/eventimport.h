// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/client/io/databaseinterface.h>
#include <tellarix/client/io/eventreader.h>

#include <QString>
#include <QStringList>

#include <functional>

namespace Tellarix {
namespace IO {

/** What came of an import. */
struct EventImportResult
{
    bool ok{false};
    int added{0};
    int updated{0};
    QString error; /**< names the file or the database, and the cause */
    QStringList warnings;
};

/**
 * Reads the events of a file into a database in one transaction: all of them or none. Those that
 * are there already are replaced.
 *
 * @param database  with the schema of this version
 * @param progress  see EventReadHandler; may be empty. If it ends the import there is no error text
 */
TELLARIX_CLIENT_API EventImportResult
importEvents(DatabaseInterfacePtr database, const QString &file,
             const std::function<bool(qint64 done, qint64 total)> &progress = {});

/** Hands over events as readEvents() does. */
using EventSource = std::function<bool(const EventReadHandler &handler, QString *error)>;

/** The same for events from elsewhere; @p name is that of the source. */
TELLARIX_CLIENT_API EventImportResult
importEvents(DatabaseInterfacePtr database, const QString &name, const EventSource &source,
             const std::function<bool(qint64 done, qint64 total)> &progress);

} // namespace IO
} // namespace Tellarix
