// SPDX-License-Identifier: LGPL-3.0-or-later

#include "recordscommand.h"

#include <tellarix/core/records/record.h>

#include "streamtable.h"

#include <tellarix/client/io/streamsummary.h>

#include <QCommandLineParser>

#include <utility>

namespace Tellarix {
namespace Tool {

QString RecordsCommand::summary() const
{
    return tr("Tell what the streams of files and servers hold.");
}

void RecordsCommand::describe(QCommandLineParser &parser) const
{
    parser.setApplicationDescription(
        tr("Tells records, samples, rate, gaps, overlaps, extrema and mean of each stream. All "
           "sources\ncount together. Duplicates of records don't count; they, overlaps, records "
           "out of order\nand damage are told on standard error. Servers are read side by side; "
           "what has come is\ntold also when --timeout or Ctrl+C ends the reading. Status: 0, 1 "
           "if something could not be\nread, 2 if the command line is wrong."));
    addSourceOptions(parser);
    parser.addOption({QStringLiteral("json"), tr("Print a JSON array with an object per stream.")});
}

bool RecordsCommand::readArguments(const QCommandLineParser &parser, const QStringList &arguments,
                                   QString *error)
{
    SourceRequest request;
    if (!readSources(parser, arguments, &request, error))
        return false;
    _pump.setRequest(std::move(request));
    _asJson = parser.isSet(QStringLiteral("json"));
    return true;
}

int RecordsCommand::run()
{
    IO::StreamSummarizer summarizer;
    RecordPump::Receiver receiver;
    receiver.take = [&](const RecordPtr &record, const std::string &origin, int64_t offset) {
        summarizer.add(*record, origin, offset);
        return true;
    };
    const bool complete = _pump.run(receiver);

    const IO::StreamSummaries summaries = summarizer.result();
    for (const IO::StreamMessage &note : summaries.notes)
        printError(QString::fromStdString(note.text()));
    const QString output = _asJson ? jsonText(summaries.streams) : tableText(summaries.streams);
    return printOutput(output) && complete ? 0 : 1;
}

} // namespace Tool
} // namespace Tellarix
