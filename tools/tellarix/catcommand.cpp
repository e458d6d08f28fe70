// SPDX-License-Identifier: LGPL-3.0-or-later

#include "catcommand.h"

#include <tellarix/core/records/cut.h>
#include <tellarix/core/records/ringbuffer.h>

#include <QCommandLineParser>
#include <QFileInfo>

#include <algorithm>
#include <utility>
#include <vector>

namespace Tellarix {
namespace Tool {

namespace {

const auto OutputOption = QStringLiteral("output");
const auto ArchiveOption = QStringLiteral("archive");
const auto AppendOption = QStringLiteral("append");
const auto ForceOption = QStringLiteral("force");
const auto CutOption = QStringLiteral("cut");

constexpr int SecondsBetweenFlushes = 10;
constexpr int MostTold = 100;

/** The window with its open ends moved far away. */
Core::TimeWindow closedWindow(const Core::TimeWindow &window)
{
    return {window.startTime().valid() ? window.startTime() : Core::Time(1678, 1, 1),
            window.endTime().valid() ? window.endTime() : Core::Time(2500, 1, 1)};
}

} // namespace

QString CatCommand::summary() const
{
    return tr("Write the records of files and servers to miniSEED.");
}

void CatCommand::describe(QCommandLineParser &parser) const
{
    parser.setApplicationDescription(
        tr("Writes records to one file, in the order in which they come, or to a tree of day "
           "files\nYEAR/NET/STA/CHA.D/NET.STA.LOC.CHA.D.YEAR.DAY. Records are encoded anew: times, "
           "rates and\nsamples stay as they are, integers by Steim2, single and double precision "
           "and text as they\nare. A file appears when it is complete, also when --timeout or "
           "Ctrl+C has ended the\nreading; a tree is added to every 10 seconds, and what it holds "
           "already is not written\nagain. Status: 0, 1 if something could not be read or written, "
           "2 if the command line is\nwrong."));
    addSourceOptions(parser);
    parser.addOptions({
        {OutputOption, tr("Write to this file."), tr("FILE")},
        {ArchiveOption, tr("Write to the tree of day files in this folder."), tr("DIR")},
        {AppendOption, tr("Add to the end of FILE. A tree is always added to.")},
        {ForceOption, tr("Replace FILE if it exists.")},
        {CutOption, tr("Cut records at --from and --to, instead of writing those that reach beyond "
                       "as a whole.")},
    });
}

bool CatCommand::readArguments(const QCommandLineParser &parser, const QStringList &arguments,
                               QString *error)
{
    SourceRequest request;
    if (!readSources(parser, arguments, &request, error))
        return false;
    _file = parser.value(OutputOption);
    _folder = parser.value(ArchiveOption);
    _appends = parser.isSet(AppendOption);
    _replaces = parser.isSet(ForceOption);
    _cuts = parser.isSet(CutOption);
    const Core::TimeWindow &window = request.window;
    if (_file.isEmpty() == _folder.isEmpty())
        *error = tr("one of --output FILE and --archive DIR is needed");
    else if (_replaces && (_appends || !_folder.isEmpty()))
        *error = tr("--force goes with --output alone");
    else if (_cuts && !window.startTime().valid() && !window.endTime().valid())
        *error = tr("--cut needs --from or --to");
    else {
        _pump.setRequest(std::move(request));
        return true;
    }
    return false;
}

int CatCommand::run()
{
    if (!openOutput())
        return 1;
    RecordPump::Receiver receiver;
    receiver.take = [this](const RecordPtr &record, const std::string &, int64_t) {
        return take(*record);
    };
    receiver.wake = [this] {
        if (++_secondsHeld < SecondsBetweenFlushes)
            return true;
        _secondsHeld = 0;
        return _output->flush() || fail();
    };
    const bool isRead = _pump.run(receiver);
    // What can't be written has been told by then.
    if (!_isFailed && !_output->finish())
        fail();
    if (_isFailed)
        return 1;
    const QString summary = _output->summary(_written, _known) + QLatin1Char('\n');
    return printOutput(summary) && isRead && _isComplete ? 0 : 1;
}

bool CatCommand::openOutput()
{
    if (!_folder.isEmpty()) {
        _output = std::make_unique<ArchiveOutput>(_folder);
        return true;
    }
    if (_appends && isRead(_file)) {
        printError(tr("%1: can't be read and added to").arg(_file));
        return false;
    }
    if (!_appends && !_replaces && QFileInfo::exists(_file)) {
        printError(tr("%1: exists; --force replaces it, --append adds to it").arg(_file));
        return false;
    }
    auto output = std::make_unique<FileOutput>(_file, _appends);
    if (!output->open()) {
        printError(output->errorString());
        return false;
    }
    _output = std::move(output);
    return true;
}

/** True if a file is one of the sources. */
bool CatCommand::isRead(const QString &file) const
{
    const QString path = QFileInfo(file).canonicalFilePath();
    const QStringList &urls = _pump.request().urls;
    return !path.isEmpty() && std::any_of(urls.begin(), urls.end(), [&](QString url) {
        return QFileInfo(url.remove(QLatin1String("file://"))).canonicalFilePath() == path;
    });
}

bool CatCommand::take(const Record &record)
{
    if (!_cuts)
        return write(record);
    RingBuffer whole(-1);
    whole.feed(&record);
    const std::vector<RecordCPtr> parts = cutRecords(whole, closedWindow(_pump.request().window));
    return std::all_of(parts.begin(), parts.end(),
                       [this](const RecordCPtr &part) { return write(*part); });
}

bool CatCommand::write(const Record &record)
{
    switch (_output->add(record)) {
    case CatOutput::Outcome::Added:
        ++_written;
        return true;
    case CatOutput::Outcome::Known:
        ++_known;
        return true;
    case CatOutput::Outcome::Refused:
        tellOnce(_output->errorString());
        _isComplete = false;
        return true;
    case CatOutput::Outcome::Failed:
        break;
    }
    return fail();
}

/** The output can't be written: tells it, and gives false. */
bool CatCommand::fail()
{
    printError(_output->errorString());
    _isFailed = true;
    return false;
}

void CatCommand::tellOnce(const QString &message)
{
    if (_told.contains(message) || _told.size() >= MostTold)
        return;
    _told.insert(message);
    printError(message);
}

} // namespace Tool
} // namespace Tellarix
