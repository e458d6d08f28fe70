// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/httparchivestream.h>

#include <tellarix/client/remote/httparchivefile_p.h>
#include <tellarix/client/remote/httparchivelisting_p.h>
#include <tellarix/client/remote/joinedreader_p.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/strings.h>

#include <QUrlQuery>

#include <algorithm>
#include <tuple>
#include <utility>

namespace Tellarix {
namespace IO {

namespace {

const RecordStreamScheme secureScheme("archive+https", [] {
    return RecordStreamPtr(new HttpArchiveStream("https"));
});
const RecordStreamScheme plainScheme("archive+http",
                                     [] { return RecordStreamPtr(new HttpArchiveStream("http")); });

constexpr int MostSideBySide = 16;
constexpr size_t MostFiles = 100000;
constexpr size_t MostStrangers = 100;
constexpr size_t MostBytesPerFile = 8 * 1024 * 1024;
const Core::TimeSpan Day = Core::TimeSpan::FromUSecs(int64_t(86400) * 1000000);

bool hasWildcard(const std::string &pattern)
{
    return pattern.find_first_of("*?") != std::string::npos;
}

/** Folders and codes that are no names of one level could lead out of the tree. */
bool isName(const std::string &text)
{
    return text.find('/') == std::string::npos && text != "." && text != "..";
}

} // namespace

/** A file that is being read. */
struct HttpArchiveStream::Reading
{
    File file;
    Core::SmartPointer<HttpArchiveFile> stream;
    std::unique_ptr<JoinedReader> reader; // ends before the stream
};

bool HttpArchiveStream::File::operator<(const File &other) const
{
    return std::tie(name.codes->id(), name.day) < std::tie(other.name.codes->id(), other.name.day);
}

HttpArchiveStream::HttpArchiveStream(const char *scheme)
    : _scheme(QString::fromLatin1(scheme)), _outage(std::make_unique<ServerOutage>()),
      _monitor(std::make_shared<JoinedMonitor>())
{
    _monitor->closed = true;
}

HttpArchiveStream::~HttpArchiveStream()
{
    endReaders();
}

bool HttpArchiveStream::setSource(const std::string &source)
{
    const std::string prefix = "archive+" + _scheme.toStdString() + "://";
    _type = "D";
    _sideBySide = 4;
    OutageSettings settings;
    _root = QUrl(_scheme + "://" + QString::fromStdString(source));
    if (!_root.isValid() || _root.host().isEmpty())
        return fail(prefix + ": the address is given as \"" + prefix + "HOST/PATH\"");

    const QUrlQuery query(_root.query());
    for (const auto &item : query.queryItems(QUrl::FullyDecoded)) {
        const std::string value = item.second.toStdString();
        if (item.first == QLatin1String("type") && isDayFileType(value))
            _type = value;
        else if (!settings.read(item.first, item.second) &&
                 (item.first != QLatin1String("files") || !Core::fromString(_sideBySide, value) ||
                  _sideBySide < 1 || _sideBySide > MostSideBySide))
            return fail(prefix + _root.host().toStdString() + ": bad option \"" +
                        item.first.toStdString() + '=' + value + '"');
    }
    _outage->setSettings(settings);
    _root.setQuery(QString());
    _root.setFragment(QString());
    QString path = _root.path();
    while (path.endsWith('/'))
        path.chop(1);
    _root.setPath(path);
    return true;
}

bool HttpArchiveStream::open()
{
    endReaders();
    _files.clear();
    _strangers.clear();
    _causes.clear();
    _alike = 0;
    _progress = 0;
    _notices.clear();
    _outage->open(httpServerName(_root).toStdString(),
                  [this](const std::string &text) { tellOutage(text); });
    HttpClient client;
    HttpArchiveListing listing(client, _root, *_outage);
    {
        const std::lock_guard<std::mutex> lock(_monitor->mutex);
        _monitor->closed = false;
        _lister = &client;
    }
    bool isFound = true;
    if (requests().empty())
        isFound = findFiles({"*", "*", "*", "*", requestedWindow()}, listing);
    for (const Request &request : requests())
        isFound = isFound && findFiles(request, listing);
    _fileCount = _files.size();

    const std::lock_guard<std::mutex> lock(_monitor->mutex);
    _lister = nullptr;
    return isFound;
}

RecordPtr HttpArchiveStream::next()
{
    for (;;) {
        startReading();
        JoinedReader::Lock lock(_monitor->mutex);
        if (_monitor->closed || _readings.empty()) {
            const bool isClosed = _monitor->closed;
            lock.unlock();
            if (!isClosed)
                tellAlike();
            break;
        }
        Reading &front = *_readings.front();
        std::vector<StreamMessage> messages = std::exchange(_notices, {});
        for (StreamMessage &message : front.reader->takeMessages(lock))
            messages.push_back(std::move(message));
        JoinedReader::Item item;
        const bool isTaken = messages.empty() && front.reader->take(item, lock);
        const bool isAtEnd = front.reader->isAtEnd(lock);
        if (!isTaken && messages.empty() && !isAtEnd)
            _monitor->changed.wait(lock);
        lock.unlock();

        for (const StreamMessage &message : messages)
            pass(message);
        if (isTaken) {
            _originName = std::move(item.originName);
            _originOffset = item.originOffset;
            if (accepts(*item.record, front.file))
                return item.record;
        } else if (messages.empty() && isAtEnd && !endReading(front)) {
            break;
        }
    }
    return RecordPtr();
}

void HttpArchiveStream::close()
{
    JoinedReader::Lock lock(_monitor->mutex);
    _monitor->closed = true;
    _monitor->changed.notify_all();
    _outage->close();
    if (_lister)
        _lister->cancel();
    const std::deque<std::shared_ptr<Reading>> readings = _readings;
    lock.unlock();
    for (const auto &reading : readings)
        reading->reader->close();
}

std::string HttpArchiveStream::outage() const
{
    return _outage->text();
}

/** Adds the files that may hold what is requested; false with an errorString(). */
bool HttpArchiveStream::findFiles(const Request &request, HttpArchiveListing &listing)
{
    std::vector<int> found;
    if (!years(request, listing, found))
        return false;
    return std::all_of(found.begin(), found.end(),
                       [&](int year) { return findInYear(request, year, listing); });
}

bool HttpArchiveStream::findInYear(const Request &request, int year, HttpArchiveListing &listing)
{
    std::vector<std::string> networks;
    std::vector<std::string> stations;
    std::vector<std::string> channels;
    const std::string top = std::to_string(year);
    if (!matching(listing, top, request.network, "", networks))
        return false;
    for (const std::string &network : networks) {
        const std::string networkFolder = top + '/' + network;
        if (!matching(listing, networkFolder, request.station, "", stations))
            return false;
        for (const std::string &station : stations) {
            const std::string stationFolder = networkFolder + '/' + station;
            if (!matching(listing, stationFolder, request.channel, '.' + _type, channels))
                return false;
            for (const std::string &channel : channels) {
                if (!findInChannel({network, station, request.location, channel, request.window},
                                   year, stationFolder + '/' + channel + '.' + _type, listing))
                    return false;
            }
        }
    }
    return true;
}

bool HttpArchiveStream::findInChannel(const Request &request, int year, const std::string &folder,
                                      HttpArchiveListing &listing)
{
    const Core::TimeWindow &window = windowOf(request);
    DayFileName name;
    if (window.valid() && !hasWildcard(request.location)) {
        name.codes.reset(
            new StreamCodes(request.network, request.station, request.location, request.channel));
        name.type = _type;
        const Core::Time first = window.startTime() - Day;
        for (name.day = Core::Time(year, 1, 1); name.day < Core::Time(year + 1, 1, 1);
             name.day += Day) {
            if (meets(name.cover(), window) && name.day + Day > first && !addFile(name))
                return false;
        }
        return true;
    }

    HttpArchiveNames names;
    if (listing.list(QString::fromStdString(folder), names) == HttpArchiveListing::Result::Failed)
        return fail(listing.error());
    for (const std::string &file : names.files) {
        if (name.parse(file) && name.type == _type && matches(request, *name.codes) &&
            meets(name.cover(), window) && !addFile(name))
            return false;
    }
    return true;
}

/** The folders in @p folder that match a pattern, without their @p ending; without wildcards it is
 *  one, be it there or not. False with an errorString() if they can't be listed. */
bool HttpArchiveStream::matching(HttpArchiveListing &listing, const std::string &folder,
                                 const std::string &pattern, const std::string &ending,
                                 std::vector<std::string> &names)
{
    names.clear();
    if (!hasWildcard(pattern)) {
        if (isName(pattern + ending) && !pattern.empty())
            names.push_back(pattern);
        return true;
    }
    HttpArchiveNames found;
    if (listing.list(QString::fromStdString(folder), found) == HttpArchiveListing::Result::Failed)
        return fail(listing.error());
    for (const std::string &name : found.folders) {
        if (name.size() <= ending.size() ||
            name.compare(name.size() - ending.size(), ending.size(), ending) != 0)
            continue;
        const std::string code = name.substr(0, name.size() - ending.size());
        if (Core::wildcardMatch(pattern, code))
            names.push_back(code);
    }
    return true;
}

/** The years whose files may hold what is requested. */
bool HttpArchiveStream::years(const Request &request, HttpArchiveListing &listing,
                              std::vector<int> &result)
{
    const Core::TimeWindow &window = windowOf(request);
    if (window.valid()) {
        const int last = window.endTime().fields().year;
        for (int year = (window.startTime() - Day).fields().year; year <= last; ++year)
            result.push_back(year);
        return result.size() <= 1000 || fail("A window of more than a thousand years");
    }
    std::vector<std::string> names;
    if (!matching(listing, "", "????", "", names))
        return false;
    for (const std::string &name : names) {
        int year = 0;
        if (isNumber(name, 4) && Core::fromString(year, name) &&
            meets({Core::Time(year, 1, 1), Core::Time(year + 1, 1, 1) + Day}, window))
            result.push_back(year);
    }
    return true;
}

bool HttpArchiveStream::addFile(const DayFileName &name)
{
    if (_files.size() >= MostFiles)
        return fail("More than 100000 files are asked for");
    QUrl url = _root;
    url.setPath(_root.path() + QString::fromStdString('/' + name.folder() + '/' + name.text()));
    _files.insert({name, url});
    return true;
}

/** Begins as many files as may be read side by side. */
void HttpArchiveStream::startReading()
{
    while (!_files.empty() && _readings.size() < static_cast<size_t>(_sideBySide)) {
        auto reading = std::make_shared<Reading>();
        reading->file = *_files.begin();
        _files.erase(_files.begin());
        reading->stream.reset(new HttpArchiveFile(reading->file.url, HttpSettings(), *_outage));
        reading->stream->setTimeWindow(requestedWindow());
        // Records may carry other codes than the name of the file.
        for (const Request &request : requests()) {
            if (matches(request, *reading->file.name.codes))
                reading->stream->addStream("*", "*", "*", "*", request.window);
        }
        reading->reader = std::make_unique<JoinedReader>(
            reading->stream, reading->stream->originName(), _monitor, MostBytesPerFile);
        const std::lock_guard<std::mutex> lock(_monitor->mutex);
        _readings.push_back(std::move(reading));
    }
}

/** Files that can't be read for the same reason as one before are counted only. */
void HttpArchiveStream::pass(const StreamMessage &message)
{
    const bool isOfFile = message.severity == StreamMessage::Severity::Fault && message.offset < 0;
    if (isOfFile && !_causes.insert(message.cause).second)
        ++_alike;
    else
        report(message);
}

void HttpArchiveStream::tellAlike()
{
    if (_alike > 0)
        report({StreamMessage::Severity::Fault, httpServerName(_root).toStdString(), -1,
                std::to_string(_alike) + " further files could not be read, as others before"});
    _alike = 0;
}

/** Lets go of a file that was read; false if it makes no sense to go on. */
bool HttpArchiveStream::endReading(Reading &reading)
{
    const bool isServerLost = reading.stream->isServerLost();
    const size_t left = _files.size() + _readings.size() - 1;
    if (isServerLost && left > 0)
        report(messageOfServer(StreamMessage::Severity::Fault, "does not answer; " +
                                                                   std::to_string(left) +
                                                                   " further files are left out"));
    if (isServerLost) {
        _files.clear();
        endReaders();
        return false;
    }
    _strangers.clear();
    _progress = 1 - static_cast<double>(left) / static_cast<double>(_fileCount);
    JoinedReader::Lock lock(_monitor->mutex);
    const std::shared_ptr<Reading> ended = std::move(_readings.front());
    _readings.pop_front();
    lock.unlock();
    return true;
}

void HttpArchiveStream::endReaders()
{
    close();
    JoinedReader::Lock lock(_monitor->mutex);
    std::deque<std::shared_ptr<Reading>> ended;
    ended.swap(_readings);
    lock.unlock();
}

bool HttpArchiveStream::accepts(const Record &record, const File &file)
{
    const bool requested = isRequested(*record.codes(), record.timeWindow());
    if (record.streamID() == file.name.codes->id())
        return requested;
    if (_strangers.size() < MostStrangers && _strangers.insert(record.streamID()).second) {
        const std::string outcome = requested ? "" : ", which are skipped";
        report({requested ? StreamMessage::Severity::Note : StreamMessage::Severity::Fault,
                _originName, _originOffset,
                "file holds records of " + record.streamID() + outcome});
    }
    return requested;
}

/** Called by whoever asks the server; open() asks in the thread that reports. */
void HttpArchiveStream::tellOutage(const std::string &text)
{
    const StreamMessage message = messageOfServer(StreamMessage::Severity::Note, text);
    JoinedReader::Lock lock(_monitor->mutex);
    const bool isOpening = _lister != nullptr;
    if (!isOpening)
        _notices.push_back(message);
    _monitor->changed.notify_all();
    lock.unlock();
    if (isOpening)
        report(message);
}

StreamMessage HttpArchiveStream::messageOfServer(StreamMessage::Severity severity,
                                                 const std::string &text) const
{
    return {severity, httpServerName(_root).toStdString(), -1, text};
}

} // namespace IO
} // namespace Tellarix
