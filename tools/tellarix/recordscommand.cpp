// SPDX-License-Identifier: LGPL-3.0-or-later

#include "recordscommand.h"

#include <tellarix/core/records/record.h>

#include "streamtable.h"
#include "windowoptions.h"

#include <QCommandLineParser>
#include <QRegularExpression>

namespace Tellarix {
namespace Tool {

namespace {

const auto JsonOption = QStringLiteral("json");

/** Puts the name of the source before a reason that doesn't hold it. */
void printFailure(const QString &url, const std::string &reason)
{
    const QString text = QString::fromStdString(reason);
    static const QRegularExpression login(QStringLiteral("//[^/@]*@"));
    QString shown = url;
    shown.replace(login, QStringLiteral("//"));
    const QString source = shown.section(QStringLiteral("://"), -1);
    const bool isNamed = text.startsWith(source) || text.startsWith(shown.section('?', 0, 0));
    printError(isNamed ? text : QStringLiteral("%1: %2").arg(shown, text));
}

} // namespace

QString RecordsCommand::summary() const
{
    return tr("Tell what the streams of files and servers hold.");
}

void RecordsCommand::describe(QCommandLineParser &parser) const
{
    parser.setApplicationDescription(
        tr("Tells records, samples, rate, gaps, overlaps, extrema and mean of each stream. All "
           "sources\ncount together. Duplicates of records don't count; they, overlaps, records "
           "out of order\nand damage are told on standard error. Status: 0, 1 if something could "
           "not be read, 2 if\nthe command line is wrong."));
    parser.addPositionalArgument(
        tr("URL"), tr("Files or URLs of record streams; - is standard input."), tr("URL..."));
    parser.addOptions({
        {FromOption, tr("Only records that end behind TIME, e.g. 2024-01-05T10:11:12."),
         tr("TIME")},
        {ToOption, tr("Only records that start before TIME."), tr("TIME")},
        {StreamsOption, tr("Only these streams, e.g. \"XD.ALB..HHZ,XD.*.*.HH?\"."),
         tr("NET.STA.LOC.CHA,...")},
        {JsonOption, tr("Print a JSON array with an object per stream.")},
    });
}

bool RecordsCommand::readArguments(const QCommandLineParser &parser, const QStringList &arguments,
                                   QString *error)
{
    if (arguments.isEmpty()) {
        *error = tr("no file and no URL given");
        return false;
    }

    _urls = arguments;
    _asJson = parser.isSet(JsonOption);
    return readWindow(parser, WindowEnd::Excluded, &_window, error) &&
           readStreams(parser, &_streams, error);
}

int RecordsCommand::run()
{
    bool complete = true;
    for (const QString &url : qAsConst(_urls))
        complete = !_interrupted && read(url) && complete;

    const IO::StreamSummaries summaries = _summarizer.result();
    for (const IO::StreamMessage &note : summaries.notes)
        printError(QString::fromStdString(note.text()));
    const QString output = _asJson ? jsonText(summaries.streams) : tableText(summaries.streams);
    return printOutput(output) && complete ? 0 : 1;
}

void RecordsCommand::interrupt()
{
    _interrupted = true;
    const std::lock_guard<std::mutex> lock(_streamMutex);
    if (_stream)
        _stream->close();
}

bool RecordsCommand::read(const QString &url)
{
    std::string error;
    const IO::RecordStreamPtr stream = IO::RecordStream::Create(url.toStdString(), &error);
    if (!stream) {
        printFailure(url, error);
        return false;
    }

    bool complete = true;
    stream->setMessageHandler([&](const IO::StreamMessage &message) {
        complete = complete && message.severity == IO::StreamMessage::Severity::Note;
        printError(QString::fromStdString(message.text()));
    });
    setStream(stream);
    const bool isOpen = open(*stream);
    if (!isOpen)
        printFailure(url, stream->errorString());
    while (const RecordPtr record = isOpen && !_interrupted ? stream->next() : nullptr)
        _summarizer.add(*record, stream->originName(), stream->originOffset());
    setStream(nullptr);
    stream->close();
    return isOpen && complete;
}

bool RecordsCommand::open(IO::RecordStream &stream)
{
    for (const StreamCodesCPtr &codes : _streams) {
        if (!stream.addStream(codes->network(), codes->station(), codes->location(),
                              codes->channel()))
            return false;
    }
    const bool isLimited = _window.startTime().valid() || _window.endTime().valid();
    return (!isLimited || stream.setTimeWindow(_window)) && stream.open();
}

void RecordsCommand::setStream(const IO::RecordStreamPtr &stream)
{
    const std::lock_guard<std::mutex> lock(_streamMutex);
    _stream = stream;
}

} // namespace Tool
} // namespace Tellarix
