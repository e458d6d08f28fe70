// SPDX-License-Identifier: LGPL-3.0-or-later

#include "stationscommand.h"

#include "texttable.h"
#include "windowoptions.h"

#include <tellarix/client/io/channelsummary.h>
#include <tellarix/client/remote/fdsnservice.h>
#include <tellarix/client/remote/seedlinkinventory.h>
#include <tellarix/core/datamodel/inventory.h>
#include <tellarix/core/datamodel/stream.h>
#include <tellarix/core/datamodel/utils.h>
#include <tellarix/core/strings.h>

#include <QCommandLineParser>
#include <QJsonDocument>
#include <QLocale>

#include <algorithm>

namespace Tellarix {
namespace Tool {

namespace {

using Streams = std::vector<const DataModel::Stream *>;

const auto JsonOption = QStringLiteral("json");
const auto CsvOption = QStringLiteral("csv");
const auto SeedLinkScheme = QStringLiteral("seedlink://");

bool matches(const DataModel::WaveformStreamID &id, const StreamCodes &pattern)
{
    return Core::wildcardMatch(pattern.network(), id.networkCode()) &&
           Core::wildcardMatch(pattern.station(), id.stationCode()) &&
           // A server that doesn't tell its channels may well have those.
           (id.channelCode() == "*" ||
            (Core::wildcardMatch(pattern.location(), id.locationCode()) &&
             Core::wildcardMatch(pattern.channel(), id.channelCode())));
}

bool printJson(const Streams &streams)
{
    Output output;
    QString separator = QStringLiteral("[");
    bool printed = true;
    for (const DataModel::Stream *stream : streams) {
        const QJsonDocument object(IO::ChannelSummary::Of(*stream).toJson());
        printed = printed && output.add(separator + QLatin1Char('\n') +
                                        QString::fromUtf8(object.toJson(QJsonDocument::Compact)));
        separator = QStringLiteral(",");
    }
    const QString end = streams.empty() ? QStringLiteral("[]\n") : QStringLiteral("\n]\n");
    return printed && output.add(end) && output.flush();
}

bool printCsv(const Streams &streams)
{
    Output output;
    bool printed = output.add(IO::ChannelSummary::csvHeader() + QLatin1String("\r\n"));
    for (const DataModel::Stream *stream : streams) {
        const QByteArray line = IO::ChannelSummary::Of(*stream).toCsv();
        printed = printed && output.add(QString::fromUtf8(line) + QLatin1String("\r\n"));
    }
    return printed && output.flush();
}

QString cell(const std::optional<double> &value)
{
    return value ? QString::number(*value, 'g', QLocale::FloatingPointShortest)
                 : QStringLiteral("-");
}

QString cell(const std::string &text)
{
    return text.empty() ? QStringLiteral("-") : QString::fromStdString(text);
}

QString tableText(const Streams &streams)
{
    const auto tr = [](const char *text) {
        return QCoreApplication::translate("Tellarix::Tool::StationsCommand", text);
    };
    QVector<TextColumn> table{
        {tr("Stream"), false, {}}, {tr("Latitude"), true, {}}, {tr("Longitude"), true, {}},
        {tr("Elev./m"), true, {}}, {tr("Depth/m"), true, {}},  {tr("Azimuth"), true, {}},
        {tr("Dip"), true, {}},     {tr("Rate/Hz"), true, {}},  {tr("Start"), false, {}},
        {tr("End"), false, {}},    {tr("Gain"), true, {}},     {tr("Unit"), false, {}},
    };
    for (const DataModel::Stream *stream : streams) {
        const IO::ChannelSummary channel = IO::ChannelSummary::Of(*stream);
        const QString cells[] = {
            cell(channel.id),        cell(channel.latitude), cell(channel.longitude),
            cell(channel.elevation), cell(channel.depth),    cell(channel.azimuth),
            cell(channel.dip),       cell(channel.rate),     cell(channel.start.iso()),
            cell(channel.end.iso()), cell(channel.gain),     cell(channel.unit)};
        for (int i = 0; i < table.size(); ++i)
            table[i].cells.append(cells[i]);
    }
    return alignedText(table);
}

} // namespace

QString StationsCommand::summary() const
{
    return tr("List the channels of station files and of servers.");
}

void StationsCommand::describe(QCommandLineParser &parser) const
{
    parser.setApplicationDescription(tr(
        "Lists place, depth, orientation, rate, time of operation, gain and unit of each epoch of "
        "a\nchannel, by name and start. Files are StationXML 1.0 to 1.2 or tables of web services "
        "(text);\n\"fdsnws+https://HOST\" is the web service of a data centre, which is asked for "
        "what the\noptions say. \"seedlink://HOST:PORT\" is a live server, which tells no more "
        "than "
        "codes and\nfrom when to when it holds data; * stands for channels that it doesn't tell.\n"
        "A channel without coordinates has those of its station. Status: 0, 1 if something could "
        "not\nbe read, 2 if the command line is wrong."));
    parser.addPositionalArgument(tr("FILE"), tr("Files of stations, or addresses of servers."),
                                 tr("FILE..."));
    parser.addOptions({
        {FromOption, tr("Only epochs that end behind TIME, e.g. 2024-01-05T10:11:12."), tr("TIME")},
        {ToOption, tr("Only epochs that start before TIME."), tr("TIME")},
        {StreamsOption, tr("Only these streams, e.g. \"XD.ALB..HHZ,XD.*.*.HH?\"."),
         tr("NET.STA.LOC.CHA,...")},
        {JsonOption, tr("Print a JSON array with an object per epoch; what is unknown is null.")},
        {CsvOption, tr("The same as lines of CSV; what is unknown is empty.")},
    });
}

bool StationsCommand::readArguments(const QCommandLineParser &parser, const QStringList &arguments,
                                    QString *error)
{
    if (arguments.isEmpty()) {
        *error = tr("no file given");
        return false;
    }
    if (parser.isSet(JsonOption) && parser.isSet(CsvOption)) {
        *error = tr("--json and --csv can't both be");
        return false;
    }
    _files = arguments;
    for (const QString &form : {JsonOption, CsvOption}) {
        if (parser.isSet(form))
            _form = form;
    }
    return readWindow(parser, WindowEnd::Excluded, &_window, error) &&
           readStreams(parser, &_streams, error);
}

int StationsCommand::run()
{
    bool complete = true;
    std::vector<DataModel::NetworkPtr> networks;
    for (const QString &file : qAsConst(_files))
        complete = !_interrupted && read(file, &networks) && complete;

    Streams streams;
    for (const DataModel::Stream *stream : DataModel::Inventory(networks).streams()) {
        if (isWanted(*stream))
            streams.push_back(stream);
    }
    bool printed = false;
    if (_form == JsonOption)
        printed = printJson(streams);
    else if (_form == CsvOption)
        printed = printCsv(streams);
    else
        printed = printOutput(streams.empty() ? tr("no channels") + QLatin1Char('\n')
                                              : tableText(streams));
    return printed && complete ? 0 : 1;
}

bool StationsCommand::read(const QString &name, std::vector<DataModel::NetworkPtr> *networks)
{
    const IO::InventoryFile file =
        IO::FdsnAddress::IsOne(name) ? readService(name)
        : name.startsWith(SeedLinkScheme)
            ? readServer(name.mid(SeedLinkScheme.size()))
            : IO::readInventoryFile(name, [this](qint64, qint64) { return !_interrupted; });
    for (const QString &warning : file.warnings)
        printError(warning);
    if (!file.ok)
        printError(file.error.isEmpty() ? tr("%1: interrupted").arg(name) : file.error);
    networks->insert(networks->end(), file.networks.begin(), file.networks.end());
    return file.ok;
}

IO::InventoryFile StationsCommand::readService(const QString &url)
{
    IO::InventoryFile result;
    IO::FdsnAddress address;
    if (!address.parse(url, &result.error))
        return result;
    IO::FdsnStationQuery query;
    query.streams = _streams;
    query.window = _window;
    query.words = address.words();

    IO::FdsnService service(address);
    const RunningService::Guard guard(_service, [&] { service.cancel(); });
    IO::InventoryReadHandler handler;
    handler.progress = [this](qint64, qint64) { return !_interrupted; };
    handler.warn = [&](const QString &text) { result.addWarning(text); };
    result.ok = service.readInventory(query, &result.networks, handler, &result.error);
    if (!result.ok && result.error.isEmpty())
        result.error = tr("%1: interrupted").arg(service.name());
    return result;
}

IO::InventoryFile StationsCommand::readServer(const QString &address)
{
    IO::InventoryFile result;
    IO::SeedLinkStations server;
    result.ok = server.setSource(address.toStdString());
    if (result.ok) {
        const RunningService::Guard guard(_service, [&] { server.close(); });
        result.ok = server.readAll();
    }
    if (result.ok)
        result.networks = IO::networksOf(server.stations());
    else if (_interrupted)
        result.error = tr("%1: interrupted").arg(SeedLinkScheme + address);
    else
        result.error = QString::fromStdString(server.errorString());
    return result;
}

void StationsCommand::interrupt()
{
    _interrupted = true;
    _service.interrupt();
}

bool StationsCommand::isWanted(const DataModel::Stream &stream) const
{
    const Core::Time from = _window.startTime();
    const Core::Time to = _window.endTime();
    if ((from.valid() && stream.end().valid() && stream.end() <= from) ||
        (to.valid() && stream.start() >= to))
        return false;
    const DataModel::WaveformStreamID id = DataModel::waveformStreamID(&stream);
    return _streams.empty() ||
           std::any_of(_streams.begin(), _streams.end(),
                       [&](const StreamCodesCPtr &pattern) { return matches(id, *pattern); });
}

} // namespace Tool
} // namespace Tellarix
