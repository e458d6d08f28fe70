// SPDX-License-Identifier: LGPL-3.0-or-later

#include "sourceoptions.h"

#include "windowoptions.h"

#include <tellarix/client/remote/httpaccounts.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QRegularExpression>

namespace Tellarix {
namespace Tool {

namespace {

const auto TimeoutOption = QStringLiteral("timeout");
constexpr double LongestTimeout = 1E9; // in seconds

QString tr(const char *text)
{
    return QCoreApplication::translate("Tellarix::Tool::SourceOptions", text);
}

bool readTimeout(const QCommandLineParser &parser, double *seconds, QString *error)
{
    if (!parser.isSet(TimeoutOption))
        return true;
    bool isNumber = false;
    const QString text = parser.value(TimeoutOption);
    *seconds = text.toDouble(&isNumber);
    if (isNumber && *seconds > 0 && *seconds <= LongestTimeout)
        return true;
    *error = tr("--%1: \"%2\" is no number of seconds above 0").arg(TimeoutOption, text);
    return false;
}

} // namespace

void addSourceOptions(QCommandLineParser &parser)
{
    parser.addPositionalArgument(
        tr("URL"), tr("Files or URLs of record streams; - is standard input."), tr("URL..."));
    parser.addOptions({
        {StreamsOption,
         tr("Only these streams, with * and ? in the codes, e.g. \"XD.ALB..HHZ,XD.*.*.HH?\"; "
            "an empty location is empty."),
         tr("NET.STA.LOC.CHA,...")},
        {FromOption, tr("Only records that end behind TIME, e.g. 2024-01-05T10:11:12 or -6h."),
         tr("TIME")},
        {ToOption, tr("Only records that start before TIME."), tr("TIME")},
        {TimeoutOption, tr("End when no record has come for so many seconds."), tr("S")},
    });
}

bool readSources(const QCommandLineParser &parser, const QStringList &arguments,
                 SourceRequest *request, QString *error)
{
    if (arguments.isEmpty()) {
        *error = tr("no file and no URL given");
        return false;
    }
    // What is kept on disk and told names users at most.
    for (const QString &url : arguments)
        request->urls.append(isLocal(url) ? url : IO::takePasswords(url));
    return readWindow(parser, WindowEnd::Excluded, &request->window, error) &&
           readStreams(parser, &request->streams, error) &&
           readTimeout(parser, &request->timeoutSeconds, error);
}

bool isLocal(const QString &url)
{
    return !url.contains(QLatin1String("://")) || url.startsWith(QLatin1String("file://")) ||
           url.startsWith(QLatin1String("archive://"));
}

QString shownUrl(const QString &url)
{
    if (isLocal(url))
        return url;
    static const QRegularExpression plain(QStringLiteral("://[^/?#@]*@"));
    static const QRegularExpression encoded(QStringLiteral("%3A%2F%2F[^/?#&]*?%40"),
                                            QRegularExpression::CaseInsensitiveOption);
    return QString(url)
        .replace(plain, QStringLiteral("://"))
        .replace(encoded, QStringLiteral("%3A%2F%2F"));
}

} // namespace Tool
} // namespace Tellarix
