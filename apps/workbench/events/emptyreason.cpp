// SPDX-License-Identifier: LGPL-3.0-or-later

#include "emptyreason.h"

#include <tellarix/client/io/eventarchive.h>

#include <QCoreApplication>
#include <QStringList>

#include <algorithm>

using namespace Tellarix;

namespace Workbench {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("Workbench::EmptyReason", text);
}

using Bound = std::optional<double> IO::EventSelection::*;

/** The two bounds of a range, and what the user calls it. */
struct Range
{
    const char *name;
    Bound minimum;
    Bound maximum;
};

constexpr Range Ranges[] = {
    {QT_TRANSLATE_NOOP("Workbench::EmptyReason", "latitude"), &IO::EventSelection::minimumLatitude,
     &IO::EventSelection::maximumLatitude},
    {QT_TRANSLATE_NOOP("Workbench::EmptyReason", "longitude"),
     &IO::EventSelection::minimumLongitude, &IO::EventSelection::maximumLongitude},
    {QT_TRANSLATE_NOOP("Workbench::EmptyReason", "depth"), &IO::EventSelection::minimumDepthKm,
     &IO::EventSelection::maximumDepthKm},
    {QT_TRANSLATE_NOOP("Workbench::EmptyReason", "magnitude"),
     &IO::EventSelection::minimumMagnitude, &IO::EventSelection::maximumMagnitude},
};

IO::EventSelection selectionOf(const Core::TimeWindow &window,
                               const Norvu::Gui::EventFilter &filter)
{
    IO::EventSelection selection;
    selection.from = window.startTime();
    selection.to = window.endTime();
    selection.minimumLatitude = filter.fromLatitude;
    selection.maximumLatitude = filter.toLatitude;
    selection.minimumLongitude = filter.fromLongitude;
    selection.maximumLongitude = filter.toLongitude;
    selection.minimumDepthKm = filter.fromDepth;
    selection.maximumDepthKm = filter.toDepth;
    selection.minimumMagnitude = filter.fromMagnitude;
    selection.maximumMagnitude = filter.toMagnitude;
    return selection;
}

QString timeText(Core::Time time)
{
    return QString::fromStdString(time.toString("%Y-%m-%d %H:%M:%S"));
}

QString explainWindow(const Core::TimeWindow &window, const Core::TimeWindow &extent)
{
    return tr("No events from %1 to %2: those of this database are from %3 to %4.")
        .arg(timeText(window.startTime()), timeText(window.endTime()), timeText(extent.startTime()),
             timeText(extent.endTime()));
}

/** The range without which there would be most. */
QString explainRanges(IO::EventArchive &archive, const IO::EventSelection &selection, int inWindow)
{
    int most = 0;
    QString name;
    for (const Range &range : Ranges) {
        IO::EventSelection wider = selection;
        if (!(wider.*range.minimum) && !(wider.*range.maximum))
            continue;
        wider.*range.minimum = std::nullopt;
        wider.*range.maximum = std::nullopt;
        const int count = archive.count(wider);
        if (count > most) {
            most = count;
            name = tr(range.name);
        }
    }
    if (most > 0)
        return tr("None of the %1 events of this time passes the filter. Without its bounds on %2 "
                  "there would be %3.")
            .arg(inWindow)
            .arg(name)
            .arg(most);
    return tr("None of the %1 events of this time passes the filter: more than one of its bounds "
              "leaves none.")
        .arg(inWindow);
}

} // namespace

QString explainEmptyList(const IO::DatabaseInterfacePtr &database, const Core::TimeWindow &window,
                         const Core::TimeWindow &extent, const Norvu::Gui::EventFilter &filter)
{
    if (!extent.valid())
        return tr("There are no events in this database.");
    if (window.endTime() < window.startTime())
        return tr("The end of the time span is before its start.");

    IO::EventArchive archive(database);
    const IO::EventSelection selection = selectionOf(window, filter);
    IO::EventSelection onlyTime;
    onlyTime.from = selection.from;
    onlyTime.to = selection.to;
    const int inWindow = archive.count(onlyTime);
    if (inWindow < 0)
        return tr("The database does not answer: %1").arg(database->lastError());
    if (inWindow == 0)
        return explainWindow(window, extent);
    if (archive.count(selection) > 0)
        return tr("The events of this time are hidden by the check box below or have no magnitude, "
                  "or the load was stopped.");
    return explainRanges(archive, selection, inWindow);
}

} // namespace Workbench
