// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/eventexport.h>

#include <tellarix/client/io/eventwriter.h>
#include <tellarix/client/io/savefile.h>

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace Tellarix {
namespace IO {

namespace {

constexpr int EventsPerReport = 100;

EventExportResult failed(const QString &cause)
{
    EventExportResult result;
    result.error = cause;
    return result;
}

/** A full disk shows when what is held back is written. */
bool flush(QIODevice &device)
{
    auto *file = qobject_cast<QFileDevice *>(&device);
    return !file || file->flush();
}

} // namespace

EventExportResult exportEvents(const DatabaseInterfacePtr &database,
                               const EventSelection &selection, const QString &form,
                               QIODevice &device, const EventExportHandler &handler)
{
    const auto writer = EventWriter::Create(form, device);
    if (!writer)
        return failed(QString("events are written as quakeml, csv or geojson"));

    EventExportResult result;
    EventArchive archive(database);
    const int total = handler.progress ? archive.count(selection, &result.error) : 0;
    if (total < 0)
        return result;

    int done = 0;
    bool isWritten = writer->begin();
    const auto write = [&](const DataModel::EventPtr &event) {
        if (isWritten && (!handler.wants || handler.wants(*event))) {
            isWritten = writer->write(*event);
            ++result.written;
        }
        return isWritten &&
               (!handler.progress || ++done % EventsPerReport > 0 || handler.progress(done, total));
    };
    const bool isRead = archive.forEach(selection, write, &result.error);
    // What the list has up to here is closed in any case: somebody may be reading it.
    isWritten = isWritten && writer->end() && flush(device);
    if (!isWritten)
        result.error = device.errorString();
    result.ok = isRead && isWritten;
    return result;
}

EventExportResult exportEvents(const DatabaseInterfacePtr &database,
                               const EventSelection &selection, const QString &form,
                               const QString &file, const EventExportHandler &handler)
{
    const QFileInfo info(file);
    // A device or a pipe would be replaced by a file of its name.
    if (info.exists() && !info.isFile()) {
        QFile device(file);
        if (!device.open(QIODevice::WriteOnly))
            return failed(device.errorString());
        const EventExportResult result = exportEvents(database, selection, form, device, handler);
        return result.ok && !device.flush() ? failed(device.errorString()) : result;
    }

    QSaveFile device(file);
    if (!device.open(QIODevice::WriteOnly))
        return failed(device.errorString());
    EventExportResult result = exportEvents(database, selection, form, device, handler);
    if (result.ok && !commitWhole(device)) {
        result.ok = false;
        result.error = device.errorString();
    }
    return result;
}

} // namespace IO
} // namespace Tellarix
