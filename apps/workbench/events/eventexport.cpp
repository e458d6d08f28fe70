// SPDX-License-Identifier: LGPL-3.0-or-later

#include "eventexport.h"

#include <norvu/gui/eventlistview.h>
#include <tellarix/client/io/eventwriter.h>

#include <QAbstractItemModel>
#include <QCoreApplication>
#include <QFileInfo>
#include <QSaveFile>

using namespace Tellarix;

namespace Workbench {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("Workbench::EventExport", text);
}

QString formOf(const QString &file)
{
    const QString suffix = QFileInfo(file).suffix().toLower();
    if (suffix == "json")
        return "geojson";
    return suffix == "xml" || suffix == "qml" ? "quakeml" : suffix;
}

bool writeAll(const IO::DatabaseInterfacePtr &database, const ListedEvents &events,
              const QString &form, const std::function<bool(int)> &progress, QIODevice &device,
              QString *error)
{
    const auto writer = IO::EventWriter::Create(form, device);
    bool ok = writer->begin();
    int written = 0;
    bool isWanted = true;
    const auto write = [&](const DataModel::EventPtr &event) {
        if (events.ids.count(event->publicID) == 0)
            return true;
        ++written;
        ok = ok && writer->write(*event);
        isWanted = progress(written);
        return ok && isWanted;
    };
    QString reason;
    const bool read =
        events.ids.empty() || IO::EventArchive(database).forEach(events.selection, write, &reason);
    ok = ok && writer->end();
    if (!ok)
        *error = device.errorString();
    else if (!isWanted)
        *error = tr("the export was cancelled");
    else if (!read)
        *error = reason;
    else if (written < events.count())
        *error = tr("%1 of the %2 events are no longer in the database")
                     .arg(events.count() - written)
                     .arg(events.count());
    else
        return true;
    return false;
}

} // namespace

ListedEvents listedEvents(QAbstractItemModel *list)
{
    ListedEvents result;
    for (int i = 0; i < list->rowCount(); ++i) {
        const Norvu::Gui::EventRow row = Norvu::Gui::EventListView::fromRow(list, i);
        result.ids.insert(row.publicID);
        if (!result.selection.from.valid() || row.time < result.selection.from)
            result.selection.from = row.time;
        if (!result.selection.to.valid() || row.time > result.selection.to)
            result.selection.to = row.time;
    }
    return result;
}

QString eventExportFilter()
{
    return tr("QuakeML (*.xml);;CSV (*.csv);;GeoJSON (*.geojson *.json)");
}

bool writeEvents(const IO::DatabaseInterfacePtr &database, const ListedEvents &events,
                 const QString &name, const std::function<bool(int)> &progress, QString *error)
{
    const QString form = formOf(name);
    QSaveFile file(name);
    QString reason;
    bool ok = false;
    if (!IO::EventWriter::Create(form, file))
        reason = tr("the name has to end with .xml, .csv or .geojson");
    else if (!file.open(QIODevice::WriteOnly))
        reason = file.errorString();
    else if (writeAll(database, events, form, progress, file, &reason)) {
        ok = file.commit();
        reason = file.errorString();
    }
    if (!ok)
        *error = tr("%1: %2").arg(name, reason);
    return ok;
}

} // namespace Workbench
