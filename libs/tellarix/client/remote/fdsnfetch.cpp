// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/fdsnfetch_p.h>

#include <tellarix/core/records/record.h>

#include <algorithm>

namespace Tellarix {
namespace IO {

namespace {

using std::chrono::milliseconds;

constexpr size_t BlockSize = 64 << 10;
constexpr qint64 MaxErrorText = 16 << 10;
// The longest record there may be, and some.
constexpr int64_t MaxGarbage = 160 << 20;
constexpr size_t MaxTold = 1000;

} // namespace

std::string fdsnRecordKey(const Record &record)
{
    return record.streamID() + ' ' + std::to_string(record.startTime().usecs()) + ' ' +
           std::to_string(record.sampleCount());
}

void FdsnExchange::open(const std::string &server, Tell tell)
{
    {
        const std::lock_guard<std::mutex> lock(_toldMutex);
        _told.clear();
    }
    hasAnswered = hasServed = false;
    ServerOutage::open(server, std::move(tell));
}

bool FdsnExchange::isNew(const std::string &text)
{
    const std::lock_guard<std::mutex> lock(_toldMutex);
    return _told.size() < MaxTold && _told.insert(text).second;
}

FdsnFetch::FdsnFetch(const FdsnAddress &address, const FdsnSettings &settings,
                     FdsnExchange &exchange)
    : _address(address), _settings(settings), _exchange(exchange), _client(settings.http)
{}

bool FdsnFetch::run(const FdsnLines &lines, const FdsnReceiver &receiver)
{
    _receiver = &receiver;
    _progress.clear();
    _earlier.clear();
    _failures = 0;
    std::deque<FdsnLines> waiting{lines};
    while (!waiting.empty() && _exchange.waitForTurn()) {
        const FdsnLines now = waiting.front();
        waiting.pop_front();
        _current.clear();
        const Outcome outcome = ask(now);
        _earlier.insert(_current.begin(), _current.end());

        std::vector<FdsnLines> next;
        if (outcome == Outcome::Again)
            next = {restOf(now)};
        else if (outcome == Outcome::Split)
            next = splitFdsnLines(now);
        else if (outcome == Outcome::SplitStreams)
            next = splitFdsnStreams(now);
        else if (outcome == Outcome::Hopeless)
            return false;
        else if (outcome == Outcome::Done || outcome == Outcome::GivenUp)
            _failures = 0;
        for (auto part = next.rbegin(); part != next.rend(); ++part) {
            if (!part->empty())
                waiting.push_front(*part);
        }
    }
    return true;
}

FdsnFetch::Outcome FdsnFetch::ask(const FdsnLines &lines)
{
    HttpRequest request(_address.url("dataselect", _address.hasLogin() ? "queryauth" : "query"));
    request.method = HttpRequest::Method::Post;
    request.body = _settings.header + fdsnBody(lines);
    const ServerOutage::Turn turn = _exchange.begin();
    const bool isAnswered = _client.open(request);
    const HttpAnswer failure = isAnswered ? HttpAnswer() : _client.answer();
    switch (_exchange.judge(turn, _client.answer())) {
    case ServerOutage::Verdict::Wait:
        if (isAnswered || !isServerThere())
            return Outcome::Again;
        break;
    case ServerOutage::Verdict::GiveUp:
        return giveUpAll(_exchange.givenUpText());
    case ServerOutage::Verdict::Fault:
        break;
    }
    if (!isAnswered)
        return judgeFailure(lines, failure);
    return _client.answer().status == 200 ? readRecords(lines) : judgeStatus(lines);
}

/** Asks for something that is no trouble: a request may be one that ends the server's process. */
bool FdsnFetch::isServerThere()
{
    const ServerOutage::Turn turn = _exchange.begin();
    const HttpAnswer &answer = _client.answer();
    if (!_client.open(HttpRequest(_address.url("dataselect", "version"))) || answer.status == 429 ||
        answer.status >= 500)
        return false;
    _exchange.judge(turn, answer);
    return true;
}

/** No answer came. */
FdsnFetch::Outcome FdsnFetch::judgeFailure(const FdsnLines &lines, const HttpAnswer &answer)
{
    const std::string cause = answer.cause.toStdString();
    switch (answer.failure) {
    case HttpFailure::Cancelled:
        return Outcome::Ended;
    case HttpFailure::Unreachable:
        // A server that was never there is rather a slip in the address than in trouble.
        if (_exchange.hasAnswered || _failures == 0)
            return tryAgain(lines, cause);
        break;
    case HttpFailure::TimedOut:
        if (_exchange.hasAnswered)
            return tryAgain(lines, cause);
        break;
    case HttpFailure::Garbled:
        return giveUp(lines, cause);
    default:
        break;
    }
    return giveUpAll(cause);
}

FdsnFetch::Outcome FdsnFetch::judgeStatus(const FdsnLines &lines)
{
    // A copy, since reading the body may change it.
    const HttpAnswer answer = _client.answer();
    _exchange.hasAnswered = true;
    if (answer.status == 204) {
        _exchange.hasServed = true;
        return Outcome::Done;
    }
    const QByteArray body = _client.readUpTo(MaxErrorText);
    if (_exchange.isClosed())
        return Outcome::Ended;
    const std::string cause = fdsnStatusText(answer, body).toStdString();
    switch (answer.status) {
    case 404:
        // Where there is a page for people, there is no such service.
        if (isHtml(answer.header("Content-Type"), body))
            return giveUp(lines, cause);
        _exchange.hasServed = true;
        return Outcome::Done;
    case 401:
        return giveUpAll(cause);
    case 403:
        return lines.size() > 1 ? Outcome::SplitStreams : giveUp(lines, cause);
    case 413:
    case 414:
        if (!splitFdsnLines(lines).empty())
            return Outcome::Split;
        // Others would go the same long way down.
        return _exchange.hasServed ? giveUp(lines, cause) : giveUpAll(cause);
    case 429:
    case 503:
        if (const milliseconds wanted = askedPause(answer.header("Retry-After"));
            wanted.count() >= 0)
            _exchange.pause(wanted);
        else
            _exchange.pause(pauseLength());
        return tryAgain(lines, cause);
    case 500:
    case 502:
    case 504:
        return tryAgain(lines, cause);
    default:
        return giveUp(lines, cause);
    }
}

milliseconds FdsnFetch::pauseLength() const
{
    const double factor = static_cast<double>(1 << std::min(_failures, 16));
    const double seconds = std::min(_settings.outage.pause * factor, _settings.outage.longestPause);
    return milliseconds(static_cast<int64_t>(seconds * 1000));
}

FdsnFetch::Outcome FdsnFetch::tryAgain(const FdsnLines &lines, const std::string &cause)
{
    if (_failures + 1 >= _settings.tries)
        return giveUp(lines, cause + ", after " + std::to_string(_settings.tries) + " tries");
    const bool toldToWait = _client.answer().status == 429 || _client.answer().status == 503;
    if (!toldToWait)
        _exchange.pause(pauseLength());
    ++_failures;
    return Outcome::Again;
}

FdsnFetch::Outcome FdsnFetch::giveUp(const FdsnLines &lines, const std::string &cause)
{
    // The same fault may lie behind each piece.
    if (_exchange.isNew(cause))
        _receiver->tell(Severity::Fault, fdsnLinesText(lines) + ": " + cause);
    return Outcome::GivenUp;
}

FdsnFetch::Outcome FdsnFetch::giveUpAll(const std::string &cause)
{
    if (_exchange.isNew(cause))
        _receiver->tell(Severity::Fault, cause);
    return Outcome::Hopeless;
}

void FdsnFetch::tellOfBytes(const FdsnLines &lines)
{
    const std::string text = fdsnLinesText(lines) + ": byte " + std::to_string(_scanner.offset()) +
                             ": " + _scanner.cause();
    if (_exchange.isNew(text))
        _receiver->tell(Severity::Fault, text);
}

bool FdsnFetch::isPage(const QByteArray &head) const
{
    const QByteArray type = _client.answer().header("Content-Type").toLower();
    return isHtml(type, head) || head.trimmed().startsWith('<') ||
           (type.startsWith("text/") &&
            !Formats::beginsLikeMiniSeed({head.constData(), static_cast<size_t>(head.size())}));
}

FdsnFetch::Outcome FdsnFetch::readRecords(const FdsnLines &lines)
{
    using Step = Formats::RecordScanner::Step;
    _exchange.hasAnswered = true;
    const QByteArray head = _client.readUpTo(Formats::MiniSeedMinLength);
    if (isPage(head)) {
        const QByteArray body = head + _client.readUpTo(MaxErrorText);
        return giveUp(lines, "a text instead of data: " + httpBodyText(body).toStdString());
    }

    _exchange.hasServed = true;
    _scanner.reset();
    _scanner.append({head.constData(), static_cast<size_t>(head.size())});
    bool broken = false;
    int64_t received = head.size();
    int64_t lastRecord = 0;
    for (;;) {
        if (_exchange.isClosed())
            return Outcome::Ended;
        switch (_scanner.next()) {
        case Step::Record:
            lastRecord = received;
            if (!takeRecord())
                return Outcome::Ended;
            break;
        case Step::Fault:
        case Step::Note:
            // What was cut off is asked for again.
            if (!broken)
                tellOfBytes(lines);
            break;
        case Step::NeedsBytes: {
            if (received - lastRecord > MaxGarbage)
                return giveUp(lines, "bytes without end that are no records");
            const qint64 size = _client.read(_scanner.reserve(BlockSize), BlockSize);
            if (size > 0) {
                _scanner.commit(static_cast<size_t>(size));
                received += size;
                break;
            }
            broken = size < 0 || (!_client.answer().isBounded() && _scanner.isInsideRecord());
            _scanner.finish();
            break;
        }
        case Step::Pause:
            break;
        case Step::End: {
            if (!broken)
                return Outcome::Done;
            const std::string answered = _client.answer().cause.toStdString();
            const std::string cause = answered.empty() ? "broken off in a record" : answered;
            const Outcome outcome = tryAgain(lines, cause);
            if (outcome == Outcome::Again)
                _receiver->tell(Severity::Note, fdsnLinesText(lines) + ": " + cause +
                                                    ", the rest is asked for again");
            return outcome;
        }
        }
    }
}

/** Delivers the record that the scanner stands at, unless it has come before; false at the end. */
bool FdsnFetch::takeRecord()
{
    const Formats::MiniSeedHeader &header = _scanner.header();
    if (header.sampleCount == 0)
        return true;
    std::string cause;
    const RecordPtr record = _decoder.decode(header, _scanner.record(), cause);
    if (!cause.empty() && _exchange.isNew(cause))
        _receiver->tell(Severity::Fault, _decoder.codes(header)->id() + ": " + cause);
    if (!record)
        return true;

    StreamProgress &progress = _progress[record->streamID()];
    progress.ordered =
        progress.ordered && (!progress.lastStart || record->startTime() >= progress.lastStart);
    progress.lastStart = record->startTime();
    progress.restart = record->startTime();
    if (record->hasEndTime() && record->samplingFrequency() > 0)
        progress.restart = record->endTime() - Core::TimeSpan(0.5 / record->samplingFrequency());
    const std::string key = fdsnRecordKey(*record);
    if (_earlier.count(key) > 0)
        return true;
    _current.push_back(key);
    _failures = 0;
    return _receiver->take(record);
}

/** What is still to come of a request that broke off. */
FdsnLines FdsnFetch::restOf(const FdsnLines &lines) const
{
    FdsnLines rest;
    for (FdsnLine line : lines) {
        const auto progress = _progress.find(line.codes.id());
        if (!line.isPattern() && progress != _progress.end() && progress->second.ordered &&
            progress->second.restart > line.window.startTime())
            line.window.setStartTime(progress->second.restart);
        if (!line.window.isEmpty())
            rest.push_back(line);
    }
    return rest;
}

} // namespace IO
} // namespace Tellarix
