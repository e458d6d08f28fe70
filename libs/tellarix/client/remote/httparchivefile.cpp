// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/httparchivefile_p.h>

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>

#include <algorithm>
#include <chrono>
#include <limits>

namespace Tellarix {
namespace IO {

namespace {

using Step = Formats::RecordScanner::Step;

constexpr qint64 FirstSize = 64 * 1024;
// Half a dozen records of the longest usual size.
constexpr qint64 ProbeSize = 24 * 1024;
// Smaller stretches are read rather than halved: a question costs about as much.
constexpr qint64 HalvedSize = 256 * 1024;
constexpr qint64 MostBlockSize = 4 * 1024 * 1024;
constexpr qint64 ReadSize = 64 * 1024;
constexpr qint64 MostBytes = std::numeric_limits<qint64>::max();
const Core::TimeSpan Day = Core::TimeSpan::FromUSecs(int64_t(86400) * 1000000);
constexpr int MostTries = 3;
constexpr std::chrono::milliseconds FirstPause(250);
constexpr int PauseFactor = 4;
constexpr std::chrono::milliseconds LongestAskedPause(30000);
constexpr int MostMessages = 100;
constexpr qint64 MostErrorText = 4096;

bool isAbsence(int status)
{
    return status == 404 || status == 410;
}

/** First byte and size of the file of a header "bytes 0-9/100"; false if it is of another form. */
bool parseContentRange(const QByteArray &text, qint64 &first, qint64 &size)
{
    const int dash = text.indexOf('-');
    const int slash = text.indexOf('/');
    if (!text.startsWith("bytes ") || dash < 0 || slash < dash)
        return false;
    bool isFirst = false;
    bool isSize = false;
    first = text.mid(6, dash - 6).trimmed().toLongLong(&isFirst);
    size = text.mid(slash + 1).trimmed().toLongLong(&isSize);
    return isFirst && isSize && first >= 0 && size > first;
}

} // namespace

HttpArchiveFile::HttpArchiveFile(const QUrl &url, const HttpSettings &settings,
                                 ServerOutage &outage)
    : _url(url), _settings(settings), _outage(outage),
      _name(url.toDisplayString(QUrl::RemoveUserInfo | QUrl::RemoveQuery).toStdString())
{}

HttpArchiveFile::~HttpArchiveFile() = default;

bool HttpArchiveFile::open()
{
    _closed = _isServerLost = _hasRanges = _isAbsent = false;
    _isOrdered = true;
    _size = -1;
    _position = _asked = _base = 0;
    _blockSize = FirstSize;
    _latest = Core::Time();
    _originOffset = -1;
    _messages = 0;
    _parts = {{0, MostBytes}};
    _scanner.reset();
    setClient(std::make_unique<HttpClient>(_settings));
    if (begin())
        return true;
    setClient(nullptr);
    return false;
}

RecordPtr HttpArchiveFile::next()
{
    while (!_closed && !_parts.empty()) {
        switch (_scanner.next()) {
        case Step::Record:
            if (const RecordPtr record = decodeFound())
                return record;
            break;
        case Step::Fault:
            tell(StreamMessage::Severity::Fault, _base + _scanner.offset(), _scanner.cause());
            break;
        case Step::Note:
            tell(StreamMessage::Severity::Note, _base + _scanner.offset(), _scanner.cause());
            break;
        case Step::NeedsBytes:
            if (!readMore())
                _scanner.finish();
            break;
        case Step::Pause:
            break;
        case Step::End:
            nextPart();
            break;
        }
    }
    setClient(nullptr);
    return RecordPtr();
}

void HttpArchiveFile::close()
{
    const std::lock_guard<std::mutex> lock(_clientMutex);
    _closed = true;
    if (_client)
        _client->cancel();
    _closing.notify_all();
}

/** Asks for the first bytes, and finds out what else is needed. */
bool HttpArchiveFile::begin()
{
    if (!ask(0, FirstSize - 1))
        return false;
    if (_isAbsent) {
        _parts.clear();
        return true;
    }
    const QByteArray type = _client->answer().header("Content-Type");
    if (_size >= 0)
        _parts.front().second = _size;
    while (_position < std::min({FirstSize, _asked, _parts.front().second}) && readMore()) {
    }
    const std::string_view first = _scanner.pending();
    const QByteArray bytes = QByteArray::fromRawData(first.data(), static_cast<int>(first.size()));
    if (!Formats::beginsLikeMiniSeed(first) && isHtml(type, bytes))
        return fail("the server gives a page in its place: " + httpBodyText(bytes).toStdString());
    if (_hasRanges && _size > HalvedSize)
        setParts();
    return true;
}

/** Leaves out what lies before the window and behind it. */
void HttpArchiveFile::setParts()
{
    const qint64 there = _position;
    Part part = findPart();
    if (part.first >= there) {
        _scanner.reset();
        _base = part.first;
    } else {
        part.first = 0;
    }
    _parts = {part};
    // The probes have taken the place of the first answer.
    _position = _asked = std::max(part.first, there);
}

/** The bytes that are needed of a file whose first ones are there; all if that isn't clear. */
HttpArchiveFile::Part HttpArchiveFile::findPart()
{
    const Core::TimeWindow window = wanted();
    const Part whole(0, _size);
    Formats::MiniSeedHeader header;
    if (Formats::parseMiniSeedHeader(_scanner.pending(), false, header) != Formats::Finding::Record)
        return whole;
    const Probe first{0, header.timeWindow()};
    const bool isBeginWanted = window.startTime() < first.window.endTime();
    if (isBeginWanted &&
        (!window.endTime().valid() || window.endTime() - first.window.startTime() >= Day))
        return whole;

    Probe last;
    if (!probe(_size - ProbeSize, last))
        return whole;
    Part part = whole;
    const auto endsBefore = [&](const Probe &at) {
        return at.window.endTime() <= window.startTime();
    };
    const auto startsBefore = [&](const Probe &at) {
        return at.window.startTime() < window.endTime();
    };
    if (!isBeginWanted) {
        const std::optional<Range> begin = halve({first, last}, endsBefore);
        if (!begin)
            return whole;
        part.first = endsBefore(last) ? last.offset : begin->first.offset;
    }
    if (window.endTime().valid() && !startsBefore(last)) {
        const std::optional<Range> end = halve({first, last}, startsBefore);
        if (!end)
            return whole;
        part.second = end->second.offset;
    }
    return part;
}

/** Narrows a range to the border between records that lie before a time and those that don't;
 *  nothing if records are not in order. */
std::optional<HttpArchiveFile::Range>
HttpArchiveFile::halve(Range range, const std::function<bool(const Probe &)> &isBefore)
{
    const auto isOrdered = [](const Probe &a, const Probe &b) {
        return a.window.startTime() <= b.window.startTime();
    };
    bool isSound = isOrdered(range.first, range.second);
    while (isSound && range.second.offset - range.first.offset > HalvedSize) {
        Probe middle;
        isSound = probe((range.first.offset + range.second.offset) / 2, middle) &&
                  isOrdered(range.first, middle) && isOrdered(middle, range.second);
        if (middle.offset >= range.second.offset)
            break;
        (isBefore(middle) ? range.first : range.second) = middle;
    }
    return isSound ? std::optional<Range>(range) : std::nullopt;
}

/** Finds the first record behind an offset; false if there is none nearby. */
bool HttpArchiveFile::probe(qint64 offset, Probe &found)
{
    if (!ask(offset, offset + ProbeSize - 1) || !_hasRanges || _isAbsent)
        return false;
    const QByteArray bytes = _client->readUpTo(ProbeSize);
    Formats::RecordScanner scanner;
    scanner.append({bytes.constData(), static_cast<size_t>(bytes.size())});
    scanner.finish();
    for (Step step = scanner.next(); step != Step::End; step = scanner.next()) {
        if (step == Step::Record) {
            found = {offset + scanner.offset(), scanner.header().timeWindow()};
            return true;
        }
    }
    return false;
}

/** Asks for bytes, again if need be; false with an errorString(). */
bool HttpArchiveFile::ask(qint64 first, qint64 last)
{
    using Verdict = ServerOutage::Verdict;
    Verdict verdict = Verdict::Fault;
    for (int tries = 0; !_closed && _outage.waitForTurn();) {
        const ServerOutage::Turn turn = _outage.begin();
        const bool isDone = askOnce(first, last);
        verdict = _outage.judge(turn, _client->answer());
        if (isDone)
            return true;
        if (verdict == Verdict::Wait)
            continue;
        if (verdict == Verdict::GiveUp || ++tries >= MostTries || !isWorthRetrying())
            break;
        pause(tries - 1);
    }
    _isServerLost = !_closed && (verdict == Verdict::GiveUp || _client->answer().status == 0);
    return false;
}

bool HttpArchiveFile::askOnce(qint64 first, qint64 last)
{
    HttpRequest request(_url);
    request.setRange(first, last);
    if (!_client->open(request))
        return fail(_client->answer().cause.toStdString());

    const HttpAnswer &answer = _client->answer();
    _isAbsent = isAbsence(answer.status);
    _position = first;
    _asked = last + 1;
    if (answer.status == 206) {
        qint64 begin = 0;
        qint64 size = 0;
        if (!parseContentRange(answer.header("Content-Range"), begin, size) || begin != first)
            return fail("the server gives other bytes than those it was asked for");
        // A file of today grows.
        _hasRanges = true;
        _size = std::max(_size, size);
        return true;
    }
    if (answer.status == 200)
        return skip(first);
    // There are no bytes to be asked for in an empty file.
    if (answer.status == 416 && first == 0)
        _isAbsent = true;
    if (_isAbsent)
        return true;
    const QString text = httpBodyText(_client->readUpTo(MostErrorText));
    return fail((answer.statusText() + (text.isEmpty() ? "" : ": ") + text).toStdString());
}

/** Goes to where reading goes on in an answer that holds the whole file. */
bool HttpArchiveFile::skip(qint64 size)
{
    _hasRanges = false;
    _size = _client->answer().length;
    _asked = MostBytes;
    std::vector<char> block(static_cast<size_t>(std::min(size, ReadSize)));
    for (qint64 left = size; left > 0;) {
        const qint64 count =
            _client->read(block.data(), std::min(left, static_cast<qint64>(block.size())));
        if (count <= 0)
            return fail("the file has become shorter while it was read");
        left -= count;
    }
    return true;
}

bool HttpArchiveFile::isWorthRetrying() const
{
    const HttpAnswer &answer = _client->answer();
    return answer.failure == HttpFailure::Unreachable || answer.failure == HttpFailure::TimedOut ||
           answer.failure == HttpFailure::BrokenOff || answer.status == 429 || answer.status >= 500;
}

/** Waits longer with each try, or as long as the server wishes; not beyond a close(). */
void HttpArchiveFile::pause(int tries)
{
    std::chrono::milliseconds time = FirstPause;
    for (int i = 0; i < tries; ++i)
        time *= PauseFactor;
    const std::chrono::milliseconds asked = askedPause(_client->answer().header("Retry-After"));
    time = std::max(time, std::min(asked, LongestAskedPause));
    std::unique_lock<std::mutex> lock(_clientMutex);
    _closing.wait_for(lock, time, [this] { return _closed.load(); });
}

/** Reads some bytes of the part; false at its end, after close() and if it can't be had. */
bool HttpArchiveFile::readMore()
{
    int tries = 0;
    while (!_closed && _position < _parts.front().second) {
        if (_position >= _asked && !askOnwards())
            return false;
        const qint64 wanted = std::min(ReadSize, _parts.front().second - _position);
        const qint64 count = _client->read(_scanner.reserve(ReadSize), wanted);
        if (count > 0) {
            _scanner.commit(static_cast<size_t>(count));
            _position += count;
            if (_size > 0)
                _progress = static_cast<double>(_position) / static_cast<double>(_size);
            return true;
        }
        const bool isCut =
            count == 0 && !_client->answer().isBounded() && _scanner.isInsideRecord();
        if (_closed || (count == 0 && !_hasRanges && !isCut))
            return false;
        if (++tries >= MostTries) {
            tell(StreamMessage::Severity::Fault, _position, "broken off again and again");
            return false;
        }
        if (count < 0 || isCut)
            tell(StreamMessage::Severity::Note, _position,
                 (isCut ? "broken off in a record" : _client->answer().cause.toStdString()) +
                     ", asked for the rest");
        _asked = _position;
    }
    return false;
}

/** Asks for the next bytes of the part; false if they can't be had, which is told. */
bool HttpArchiveFile::askOnwards()
{
    const qint64 end = std::min(_position + _blockSize, _parts.front().second);
    _blockSize = std::min(2 * _blockSize, MostBlockSize);
    const qint64 offset = _position;
    if (ask(offset, end - 1) && !_isAbsent)
        return true;
    if (!_closed)
        tell(StreamMessage::Severity::Fault, offset,
             _isAbsent ? "the file went away while it was read" : errorString());
    return false;
}

void HttpArchiveFile::nextPart()
{
    _parts.pop_front();
    if (_parts.empty())
        return;
    _scanner.reset();
    _base = _position = _asked = _parts.front().first;
}

/** The record that the scanner stands at; null if it is not requested or can't be read. */
RecordPtr HttpArchiveFile::decodeFound()
{
    const Formats::MiniSeedHeader &header = _scanner.header();
    const StreamCodes &codes = *_decoder.codes(header);
    checkOrder(header.timeWindow());
    if (!isRequested(codes, header.timeWindow()))
        return RecordPtr();

    const int64_t offset = _base + _scanner.offset();
    if (!header.cause.empty())
        tell(StreamMessage::Severity::Fault, offset, codes.id() + ": " + header.cause);
    if (header.sampleCount == 0)
        return RecordPtr();
    std::string cause;
    const RecordPtr record = _decoder.decode(header, _scanner.record(), cause);
    if (!cause.empty())
        tell(StreamMessage::Severity::Fault, offset, codes.id() + ": " + cause);
    if (record)
        _originOffset = offset;
    return record;
}

/** Has the rest of the file read as well as soon as a record is out of order. */
void HttpArchiveFile::checkOrder(const Core::TimeWindow &window)
{
    if (_isOrdered && window.startTime() < _latest) {
        _isOrdered = false;
        const Part part = _parts.front();
        if (part.second < _size)
            _parts.push_back({part.second, _size});
        if (part.first > 0)
            _parts.push_back({0, part.first});
    }
    _latest = std::max(_latest, window.startTime());
}

/** From the first to the last of the requested windows; an end is open if that of one is. */
Core::TimeWindow HttpArchiveFile::wanted() const
{
    if (requests().empty())
        return requestedWindow();
    Core::TimeWindow all = windowOf(requests().front());
    for (const Request &request : requests()) {
        const Core::TimeWindow &window = windowOf(request);
        all.setStartTime(std::min(all.startTime(), window.startTime()));
        if (!window.endTime().valid() || !all.endTime().valid())
            all.setEndTime(Core::Time());
        else
            all.setEndTime(std::max(all.endTime(), window.endTime()));
    }
    return all;
}

void HttpArchiveFile::tell(StreamMessage::Severity severity, int64_t offset,
                           const std::string &cause)
{
    if (_messages++ < MostMessages)
        report({severity, _name, offset, cause});
    else if (_messages == MostMessages + 1)
        report({StreamMessage::Severity::Fault, _name, offset, "further messages are left out"});
}

void HttpArchiveFile::setClient(std::unique_ptr<HttpClient> client)
{
    const std::lock_guard<std::mutex> lock(_clientMutex);
    _client = std::move(client);
}

} // namespace IO
} // namespace Tellarix
