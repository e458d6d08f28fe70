// SPDX-License-Identifier: LGPL-3.0-or-later

#include "eventexport.h"

#include <norvu/gui/eventlistview.h>
#include <tellarix/client/io/eventarchive.h>
#include <tellarix/client/io/eventwriter.h>

#include <QAbstractItemModel>
#include <QCoreApplication>
#include <QFileInfo>
#include <QSaveFile>

#include <unordered_set>

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

/** The events of a list: their ids, and the time that they take up. */
struct Listed
{
    std::unordered_set<std::string> ids;
    IO::EventSelection selection;
};

Listed listed(QAbstractItemModel *list)
{
    Listed result;
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

bool writeAll(const IO::DatabaseInterfacePtr &database, const Listed &events, const QString &form,
              QIODevice &device, QString *error)
{
    const auto writer = IO::EventWriter::Create(form, device);
    bool ok = writer->begin();
    size_t written = 0;
    const auto write = [&](const DataModel::EventPtr &event) {
        if (events.ids.count(event->publicID) == 0)
            return true;
        ++written;
        ok = ok && writer->write(*event);
        return ok;
    };
    QString reason;
    const bool read =
        events.ids.empty() || IO::EventArchive(database).forEach(events.selection, write, &reason);
    ok = ok && writer->end();
    if (!ok)
        *error = device.errorString();
    else if (!read)
        *error = reason;
    else if (written < events.ids.size()) {
        *error = tr("%1 of the %2 events are no longer in the database")
                     .arg(events.ids.size() - written)
                     .arg(events.ids.size());
        return false;
    }
    return ok && read;
}

} // namespace

QString eventExportFilter()
{
    return tr("QuakeML (*.xml);;CSV (*.csv);;GeoJSON (*.geojson *.json)");
}

bool writeEvents(const IO::DatabaseInterfacePtr &database, QAbstractItemModel *list,
                 const QString &name, QString *error)
{
    const QString form = formOf(name);
    QSaveFile file(name);
    QString reason;
    bool ok = false;
    if (!IO::EventWriter::Create(form, file))
        reason = tr("the name has to end with .xml, .csv or .geojson");
    else if (!file.open(QIODevice::WriteOnly))
        reason = file.errorString();
    else if (writeAll(database, listed(list), form, file, &reason)) {
        ok = file.commit();
        reason = file.errorString();
    }
    if (!ok)
        *error = tr("%1: %2").arg(name, reason);
    return ok;
}

} // namespace Workbench
