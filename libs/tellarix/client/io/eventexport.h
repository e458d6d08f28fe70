// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/client/io/eventarchive.h>

#include <QString>

#include <functional>

class QIODevice;

namespace Tellarix {
namespace IO {

/** What is asked and told while events are written. */
struct EventExportHandler
{
    /** Whether an event of the selection is wanted; empty for all. */
    std::function<bool(const DataModel::Event &event)> wants;
    /** Told now and then how many events of the selection are through, and how many there are;
     *  false ends the export. May be empty. */
    std::function<bool(int done, int total)> progress;
};

/** What came of an export. */
struct EventExportResult
{
    bool ok{false};
    int written{0};
    QString error; /**< the cause; empty if the handler ended it */
};

/**
 * Writes the events of a selection in the order of time. May run in any thread.
 *
 * @param form  see EventWriter
 */
TELLARIX_CLIENT_API EventExportResult exportEvents(const DatabaseInterfacePtr &database,
                                                   const EventSelection &selection,
                                                   const QString &form, QIODevice &device,
                                                   const EventExportHandler &handler = {});

/** The same into a file. What was there before stays as it is until the new file is whole, and for
 *  good if it is not; a device or pipe is written to at once. */
TELLARIX_CLIENT_API EventExportResult exportEvents(const DatabaseInterfacePtr &database,
                                                   const EventSelection &selection,
                                                   const QString &form, const QString &file,
                                                   const EventExportHandler &handler = {});

} // namespace IO
} // namespace Tellarix
