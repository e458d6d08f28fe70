// SPDX-License-Identifier: LGPL-3.0-or-later

#include "watchcommand.h"

#include <QCommandLineParser>

#include <utility>

namespace Tellarix {
namespace Tool {

namespace {

const auto JsonOption = QStringLiteral("json");
const auto OnceOption = QStringLiteral("once");

} // namespace

QString WatchCommand::summary() const
{
    return tr("Follow streams: rate, delay and gaps of each.");
}

void WatchCommand::describe(QCommandLineParser &parser) const
{
    parser.setApplicationDescription(
        tr("Follows streams and has a line for each: rate, time of the last sample, delay behind "
           "now,\nrecords, gaps, and records that lie over others. On a terminal the table is "
           "shown anew each\nsecond. Elsewhere it is printed at the end, and new streams and gaps "
           "are told on standard\nerror as they come. Live sources whose server can't be reached "
           "are waited for. It ends with\nCtrl+C, by --timeout or when all sources have ended. "
           "Status: 0, also behind Ctrl+C, 1 if something could not be "
           "read, 2 if the command line is\nwrong."));
    addSourceOptions(parser);
    parser.addOptions({
        {OnceOption, tr("Print the table once, at the end, and nothing before it.")},
        {JsonOption, tr("The same as a JSON array with an object per stream; what is unknown is "
                        "null, the delay is in seconds.")},
    });
}

bool WatchCommand::readArguments(const QCommandLineParser &parser, const QStringList &arguments,
                                 QString *error)
{
    SourceRequest request;
    if (!readSources(parser, arguments, &request, error))
        return false;
    _asJson = parser.isSet(JsonOption);
    const bool isQuiet = _asJson || parser.isSet(OnceOption);
    _repaints = !isQuiet && TerminalTable::IsPossible();
    _tellsNews = !isQuiet && !_repaints;
    for (const StreamCodesCPtr &codes : request.streams) {
        if (codes->id().find_first_of("*?") == std::string::npos)
            _streams.expect(codes->id());
    }
    _pump.setRequest(std::move(request));
    _pump.setPersistent(true);
    return true;
}

int WatchCommand::run()
{
    RecordPump::Receiver receiver;
    receiver.take = [this](const RecordPtr &record, const std::string &, int64_t) {
        const QString news = _streams.add(*record);
        if (_tellsNews && !news.isEmpty())
            tell(news);
        return true;
    };
    receiver.tell = [this](const QString &message) { tell(message); };
    receiver.wake = [this] {
        return !_repaints || _terminal.show(_streams.tableText(Core::Time::GMT()));
    };
    const bool complete = _pump.run(receiver);
    return printResult() && (complete || _pump.isEnded()) ? 0 : 1;
}

void WatchCommand::tell(const QString &message)
{
    _terminal.clear();
    printError(message);
}

bool WatchCommand::printResult()
{
    const Core::Time now = Core::Time::GMT();
    return _terminal.clear() &&
           printOutput(_asJson ? _streams.jsonText(now) : _streams.tableText(now));
}

} // namespace Tool
} // namespace Tellarix
