// SPDX-License-Identifier: LGPL-3.0-or-later

#include "windowoptions.h"

#include <tellarix/client/io/streamrequest.h>

#include <QCommandLineParser>
#include <QCoreApplication>

namespace Tellarix {
namespace Tool {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("Tellarix::Tool::WindowOptions", text);
}

} // namespace

bool readWindow(const QCommandLineParser &parser, WindowEnd windowEnd, Core::TimeWindow *window,
                QString *error)
{
    Core::Time ends[2];
    const Core::Time now = Core::Time::GMT();
    int end = 0;
    for (const QString &option : {FromOption, ToOption}) {
        const QString text = parser.value(option);
        if (parser.isSet(option) && !IO::relativeTime(text.toStdString(), now, &ends[end])) {
            *error = tr("--%1: \"%2\" is no time; write it like 2024-01-05T10:11:12.5 or -6h")
                         .arg(option, text);
            return false;
        }
        ++end;
    }

    *window = Core::TimeWindow(ends[0], ends[1]);
    const bool isMoment = windowEnd == WindowEnd::Included && ends[0] == ends[1];
    if (window->valid() && window->isEmpty() && !isMoment) {
        *error = tr("--to: %1 is not after --from: %2")
                     .arg(parser.value(ToOption), parser.value(FromOption));
        return false;
    }
    return true;
}

bool readStreams(const QCommandLineParser &parser, std::vector<StreamCodesCPtr> *streams,
                 QString *error)
{
    streams->clear();
    if (!parser.isSet(StreamsOption))
        return true;
    for (const QString &id : parser.value(StreamsOption).split(QLatin1Char(','))) {
        const StreamCodesCPtr codes = StreamCodes::FromID(id.trimmed().toStdString());
        if (!codes) {
            *error = tr("--streams: \"%1\" has not the four parts NET.STA.LOC.CHA").arg(id);
            return false;
        }
        streams->push_back(codes);
    }
    return true;
}

} // namespace Tool
} // namespace Tellarix
