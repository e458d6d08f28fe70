// SPDX-License-Identifier: LGPL-3.0-or-later

#include "eventexport.h"

#include <norvu/gui/eventlistview.h>
#include <tellarix/client/io/eventexport.h>
#include <tellarix/client/io/eventwriter.h>

#include <QAbstractItemModel>
#include <QCoreApplication>

using namespace Tellarix;

namespace Workbench {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("Workbench::EventExport", text);
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
                 const QString &file, const std::function<bool(int, int)> &progress, QString *error)
{
    const QString form = IO::EventWriter::FormOf(file);
    IO::EventExportHandler handler;
    handler.wants = [&](const auto &event) { return events.ids.count(event.publicID) > 0; };
    handler.progress = progress;
    IO::EventExportResult result;
    if (form.isEmpty())
        result.error = tr("the name has to end with .xml, .csv or .geojson");
    else
        result = IO::exportEvents(database, events.selection, form, file, handler);

    if (!result.ok && result.error.isEmpty())
        result.error = tr("the export was cancelled");
    else if (result.ok && result.written < events.count())
        result.error = tr("%1 of the %2 events are no longer in the database")
                           .arg(events.count() - result.written)
                           .arg(events.count());
    if (!result.error.isEmpty())
        *error = result.error.contains(file) ? result.error : tr("%1: %2").arg(file, result.error);
    return result.error.isEmpty();
}

} // namespace Workbench
