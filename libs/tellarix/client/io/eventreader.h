// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/core/datamodel/event.h>

#include <QString>

#include <functional>

class QFile;
class QIODevice;

namespace Tellarix {
namespace IO {

/** Forms in which events come as files. */
enum class EventFormat
{
    Unknown,
    QuakeML, /**< XML, version 1.2 */
    Csv,     /**< a line of column names (time, latitude, longitude, ...), then one event a line */
    FdsnText /**< "#EventID|Time|...", then one event a line */
};

/** Tells a form by the first bytes of a file, whatever it is called. */
TELLARIX_CLIENT_API EventFormat eventFormatOf(const QByteArray &head);

/** Opens a file for reading, if it holds events in a known form by its first bytes; false with its
 *  name and the cause in @p error. */
TELLARIX_CLIENT_API bool openEventFile(QFile &file, QString *error = nullptr);

/** What happens while events are read. */
struct EventReadHandler
{
    /** Takes an event; false ends the reading, which then fails with no text. */
    std::function<bool(const DataModel::EventPtr &event)> take;
    /** Told now and then: bytes read, and bytes in all (-1 if unknown); false ends the reading.
     *  May be empty. */
    std::function<bool(qint64 done, qint64 total)> progress;
    /** Told of what could not be understood but doesn't spoil the event; may be empty. */
    std::function<void(const QString &text)> warn;
};

/**
 * Reads all events of a device in whatever known form it has, in memory that doesn't grow with the
 * number of events.
 *
 * @param name   of the source, for messages
 * @param error  gets name, line and cause; may be null
 * @return false if the form is unknown, the text is malformed or cut off, or the handler ended it;
 *         events before the fault were handed over, so store them in a transaction
 */
TELLARIX_CLIENT_API bool readEvents(QIODevice &device, const QString &name,
                                    const EventReadHandler &handler, QString *error = nullptr);

} // namespace IO
} // namespace Tellarix
