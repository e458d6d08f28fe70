// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/archivestream.h>

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/strings.h>

#include <algorithm>
#include <filesystem>

namespace Tellarix {
namespace IO {

namespace {

const RecordStreamScheme archiveScheme("archive",
                                       [] { return RecordStreamPtr(new ArchiveStream); });

const std::string TypeOption = "?type=";
constexpr double SecondsPerDay = 86400;
constexpr size_t MaxStrangers = 100;

} // namespace

ArchiveStream::~ArchiveStream() = default;

bool ArchiveStream::setSource(const std::string &source)
{
    _root = source;
    _type = "D";
    const size_t option = source.rfind(TypeOption);
    if (option != std::string::npos) {
        _root = source.substr(0, option);
        _type = source.substr(option + TypeOption.size());
        if (!isDayFileType(_type))
            return fail(_root + ": unknown type \"" + _type + "\" of day files");
    }
    if (_root.empty())
        return fail("No archive directory given");
    return checkRoot();
}

bool ArchiveStream::open()
{
    if (!checkRoot())
        return false;

    _closed = false;
    _progress = 0;
    _files.clear();
    _current = 0;
    setFile(nullptr);
    for (const std::string &name : entries(_root, true)) {
        int year = 0;
        if (isNumber(name, 4) && Core::fromString(year, name) && isRequestedYear(year))
            listYear(_root + '/' + name);
    }
    std::sort(_files.begin(), _files.end(), [](const DayFile &a, const DayFile &b) {
        const int order = a.name.codes->id().compare(b.name.codes->id());
        return order != 0 ? order < 0 : a.name.day < b.name.day;
    });
    return true;
}

RecordPtr ArchiveStream::next()
{
    while (!_closed && _current < _files.size()) {
        if (!_file && !openCurrent()) {
            ++_current;
            continue;
        }
        // Opening the file may have undone a close() that came just before.
        if (_closed)
            break;
        const RecordPtr record = _file->next();
        _progress = (static_cast<double>(_current) + std::max(0.0, _file->progress())) /
                    static_cast<double>(_files.size());
        if (record && accepts(*record))
            return record;
        if (!record) {
            setFile(nullptr);
            ++_current;
        }
    }
    setFile(nullptr);
    return RecordPtr();
}

void ArchiveStream::close()
{
    _closed = true;
    const std::lock_guard<std::mutex> lock(_fileMutex);
    if (_file)
        _file->close();
}

std::string ArchiveStream::originName() const
{
    return _file ? _file->originName() : _root;
}

int64_t ArchiveStream::originOffset() const
{
    return _file ? _file->originOffset() : -1;
}

bool ArchiveStream::checkRoot()
{
    std::error_code error;
    const auto status = std::filesystem::status(_root, error);
    if (!std::filesystem::exists(status))
        return fail(_root + ": " + (error ? error.message() : "no such directory"));
    if (!std::filesystem::is_directory(status))
        return fail(_root + ": is not a directory");
    return true;
}

void ArchiveStream::listYear(const std::string &directory)
{
    for (const std::string &network : entries(directory, true)) {
        if (!matchesAny(&Request::network, network))
            continue;
        const std::string networkPath = directory + '/' + network;
        for (const std::string &station : entries(networkPath, true)) {
            if (!matchesAny(&Request::station, station))
                continue;
            const std::string stationPath = networkPath + '/' + station;
            for (const std::string &channel : entries(stationPath, true)) {
                const size_t dot = channel.rfind('.');
                if (dot != std::string::npos && channel.substr(dot + 1) == _type &&
                    matchesAny(&Request::channel, channel.substr(0, dot)))
                    listChannel(stationPath + '/' + channel);
            }
        }
    }
}

void ArchiveStream::listChannel(const std::string &directory)
{
    for (const std::string &name : entries(directory, false)) {
        DayFile file;
        if (!file.name.parse(name) || file.name.type != _type ||
            !isRequested(*file.name.codes, file.name.cover()))
            continue;
        file.path = directory + '/' + name;
        _files.push_back(file);
    }
}

bool ArchiveStream::isRequestedYear(int year) const
{
    const Core::TimeWindow cover(Core::Time(year, 1, 1),
                                 Core::Time(year + 1, 1, 1) + Core::TimeSpan(SecondsPerDay));
    if (requests().empty())
        return meets(cover, requestedWindow());
    return std::any_of(requests().begin(), requests().end(),
                       [&](const Request &request) { return meets(cover, windowOf(request)); });
}

bool ArchiveStream::matchesAny(Pattern pattern, const std::string &code) const
{
    return requests().empty() ||
           std::any_of(requests().begin(), requests().end(), [&](const Request &request) {
               return Core::wildcardMatch(request.*pattern, code);
           });
}

std::vector<std::string> ArchiveStream::entries(const std::string &directory,
                                                bool directories) const
{
    namespace fs = std::filesystem;
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(directory, error), end; !error && !_closed && entry != end;
         entry.increment(error)) {
        std::error_code ignored;
        if (entry->is_directory(ignored) == directories)
            names.push_back(entry->path().filename().string());
    }
    if (error)
        report({StreamMessage::Severity::Fault, directory, -1, error.message()});
    return names;
}

bool ArchiveStream::openCurrent()
{
    const DayFile &file = _files[_current];
    _strangers.clear();
    std::error_code error;
    const auto status = std::filesystem::status(file.path, error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        report({StreamMessage::Severity::Fault, file.path, -1, "is not a regular file"});
        return false;
    }

    setFile(new FileStream);
    _file->setMessageHandler([this](const StreamMessage &message) { report(message); });
    requestOf(file, *_file);
    if (_file->setSource(file.path) && _file->open())
        return true;

    report({StreamMessage::Severity::Fault, file.path, -1, _file->failureCause()});
    setFile(nullptr);
    return false;
}

void ArchiveStream::setFile(const Core::SmartPointer<FileStream> &file)
{
    const std::lock_guard<std::mutex> lock(_fileMutex);
    _file = file;
}

/** Asks for all streams in the file, since records may carry other codes than its name. */
void ArchiveStream::requestOf(const DayFile &file, FileStream &stream) const
{
    stream.setTimeWindow(requestedWindow());
    for (const Request &request : requests()) {
        if (matches(request, *file.name.codes))
            stream.addStream("*", "*", "*", "*", request.window);
    }
}

bool ArchiveStream::accepts(const Record &record)
{
    const bool requested = isRequested(*record.codes(), record.timeWindow());
    if (record.streamID() == _files[_current].name.codes->id())
        return requested;

    if (_strangers.size() < MaxStrangers && _strangers.insert(record.streamID()).second) {
        const auto severity =
            requested ? StreamMessage::Severity::Note : StreamMessage::Severity::Fault;
        const std::string others = _strangers.size() == MaxStrangers ? " and other streams" : "";
        const std::string outcome = requested ? "" : ", which are skipped";
        report({severity, _file->originName(), _file->originOffset(),
                "file holds records of " + record.streamID() + others + outcome});
    }
    return requested;
}

} // namespace IO
} // namespace Tellarix
