// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/joinedstream.h>

#include <tellarix/client/remote/cachedstream.h>
#include <tellarix/client/remote/coveredtime_p.h>
#include <tellarix/client/remote/joinedreader_p.h>
#include <tellarix/client/remote/joinedseam_p.h>
#include <tellarix/core/strings.h>

#include <QUrlQuery>

#include <algorithm>
#include <utility>

namespace Tellarix {
namespace IO {

namespace {

const RecordStreamScheme joinedScheme("joined", [] { return RecordStreamPtr(new JoinedStream); });

constexpr double DefaultOverlap = 3600;
constexpr double DefaultHold = 256;
constexpr double DefaultFirstPause = 60;
constexpr double LongestPause = 3600;
constexpr double DefaultLag = 86400;
constexpr double MostOption = 1E6;
constexpr double BytesPerMB = 1024 * 1024;
constexpr size_t MostPastBytes = 8 * 1024 * 1024;
const char *const PastName = "source of the past";

std::string holesText(const std::vector<JoinedSeam::Hole> &holes)
{
    const JoinedSeam::Hole &first = holes.front();
    return first.codes->id() + " from " + first.window.startTime().iso() + " to " +
           first.window.endTime().iso() +
           (holes.size() > 1 ? " and " + std::to_string(holes.size() - 1) + " other streams" : "");
}

} // namespace

JoinedWindows::JoinedWindows(const Core::TimeWindow &window, Core::Time now, Core::TimeSpan overlap)
    : past(window), live(window)
{
    if (!window.endTime().valid() || window.endTime() > now)
        past.setEndTime(now);
    live.setStartTime(std::max(window.startTime(), now - overlap));
    hasPast = past.startTime() < past.endTime();
    hasLive = !live.endTime().valid() || live.startTime() < live.endTime();
}

JoinedStream::JoinedStream() : _monitor(std::make_shared<JoinedMonitor>())
{
    _monitor->closed = true;
}

JoinedStream::~JoinedStream()
{
    endReaders();
}

bool JoinedStream::setSource(const std::string &source)
{
    const size_t mark = source.find('?');
    if (mark != 0)
        return fail("joined://: the sources are given as \"joined://?past=URL&live=URL\"");

    _overlap = DefaultOverlap;
    _hold = DefaultHold;
    _firstPause = DefaultFirstPause;
    _lag = DefaultLag;
    _pastUrl.clear();
    _liveUrl.clear();
    const QUrlQuery query(QString::fromStdString(source.substr(mark + 1)));
    for (const auto &item : query.queryItems(QUrl::FullyDecoded)) {
        if (!setOption(item.first.toStdString(), item.second.toStdString()))
            return false;
    }
    return checkUrl("past", _pastUrl) && checkUrl("live", _liveUrl);
}

bool JoinedStream::open()
{
    endReaders();
    fail(std::string());
    _monitor->closed = false;
    _delivered = std::make_unique<JoinedCoverage>();
    _seam = std::make_unique<JoinedSeam>(Core::TimeSpan(_lag));
    _hasPastCome = _hasPastFailed = _isLagTold = false;
    _nextAsk.reset();
    _faults.clear();
    const Core::Time now = Core::Time::GMT();
    ReaderPtr past = makeReader(false, now, MostPastBytes);
    ReaderPtr live = makeReader(true, now, static_cast<size_t>(_hold * BytesPerMB));

    const bool isEmpty = !past && !live;

    Lock lock(_monitor->mutex);
    _past = std::move(past);
    _live = std::move(live);
    if (isEmpty)
        return errorString().empty();
    _monitor->changed.wait(lock, [&] { return _monitor->closed || isDecided(lock); });
    if (_monitor->closed || isAnyOpen(lock))
        return true;

    std::string reason;
    for (const ReaderPtr &reader : {_past, _live}) {
        if (reader)
            reason += (reason.empty() ? "" : "; ") + reader->failure(lock);
    }
    lock.unlock();
    endReaders();
    return fail(reason);
}

RecordPtr JoinedStream::next()
{
    Lock lock(_monitor->mutex);
    while (!_monitor->closed) {
        passMessages(lock);
        if ((!_past && !_live) || _monitor->closed)
            break;
        if (const RecordPtr record = take(lock))
            return record;
        if (hasMessages(lock) || endReader(lock))
            continue;
        if (isSeamDue())
            askForSeam(lock);
        else if (_nextAsk && !_again)
            _monitor->changed.wait_until(lock, *_nextAsk);
        else
            _monitor->changed.wait(lock);
    }
    return RecordPtr();
}

/** The next record that is there; null if none is. */
RecordPtr JoinedStream::take(const Lock &lock)
{
    JoinedReader::Item item;
    const ReaderPtr readers[] = {_past ? _past : _live, _past ? nullptr : _again};
    for (const ReaderPtr &reader : readers) {
        while (reader && reader->take(item, lock)) {
            if (!accepts(reader, *item.record))
                continue;
            _originName = std::move(item.originName);
            _originOffset = item.originOffset;
            return item.record;
        }
    }
    return RecordPtr();
}

/** Leaves out what has come from the other source. */
bool JoinedStream::accepts(const ReaderPtr &reader, const Record &record)
{
    if (reader == _live)
        return noteLive(record);
    if (reader == _again && !_seam->fill(record))
        return false;
    if (reader == _past)
        _seam->notePast(record);
    _hasPastCome = true;
    _delivered->add(record);
    return true;
}

bool JoinedStream::noteLive(const Record &record)
{
    Core::Time start;
    for (const Request &request : requests()) {
        const Core::Time wanted = windowOf(request).startTime();
        if (matches(request, *record.codes()))
            start = start.valid() ? std::min(start, wanted) : wanted;
    }
    if (requests().empty())
        start = requestedWindow().startTime();
    if (_lag > 0 && _seam->noteLive(record, start, _hasPastFailed)) {
        _pause = _firstPause;
        scheduleSeam();
    }
    return !_delivered->holds(record);
}

/** Lets go of a reader that has come to its end; false if none has. */
bool JoinedStream::endReader(Lock &lock)
{
    for (ReaderPtr *reader : {&_past, &_live, &_again}) {
        if (!*reader || !(*reader)->isAtEnd(lock) || (reader == &_live && _past))
            continue;
        if (reader == &_past)
            _hasPastFailed = !_hasPastCome && !_faults.empty();
        // Its destructor takes the lock.
        ReaderPtr ended = std::move(*reader);
        lock.unlock();
        ended.reset();
        if (reader == &_again) {
            _pause = std::min(2 * _pause, LongestPause);
            planSeam();
        }
        lock.lock();
        return true;
    }
    return false;
}

// The seam

bool JoinedStream::isSeamDue() const
{
    return !_past && !_again && _nextAsk && std::chrono::steady_clock::now() >= *_nextAsk;
}

void JoinedStream::scheduleSeam()
{
    using std::chrono::steady_clock;
    _nextAsk = steady_clock::now() + std::chrono::duration_cast<steady_clock::duration>(
                                         std::chrono::duration<double>(_pause));
}

/** Plans when to ask for what is missing, if anything is. */
void JoinedStream::planSeam()
{
    const auto old = _seam->giveUp(Core::Time::GMT() - Core::TimeSpan(_lag));
    if (!old.empty())
        tellSeam(holesText(old) + " has not come, and is not asked for any more");
    _nextAsk.reset();
    if (!_seam->holes().empty())
        scheduleSeam();
    else if (std::exchange(_isLagTold, false) && old.empty())
        tellSeam("has brought what was missing at the seam");
}

void JoinedStream::askForSeam(Lock &lock)
{
    lock.unlock();
    const ReaderPtr reader = makeSeamReader();
    lock.lock();
    _again = reader;
    _nextAsk.reset();
    if (!reader)
        return;
    if (_monitor->closed)
        reader->close();
}

/** A reader of the past for what is missing; null if it can't be asked. */
JoinedStream::ReaderPtr JoinedStream::makeSeamReader()
{
    RecordStreamPtr stream = Create(_pastUrl);
    if (const auto *cached = dynamic_cast<const CachedStream *>(stream.get()))
        stream = Create(cached->sourceUrl());
    const std::vector<JoinedSeam::Hole> holes = _seam->holes();
    if (!stream || holes.empty())
        return nullptr;
    for (const auto &[codes, window] : holes) {
        if (!stream->addStream(codes->network(), codes->station(), codes->location(),
                               codes->channel(), window))
            return nullptr;
    }
    if (!std::exchange(_isLagTold, true))
        tellSeam("lags behind; " + holesText(holes) + " is asked for again");
    return std::make_shared<JoinedReader>(stream, PastName, _monitor, MostPastBytes);
}

void JoinedStream::tellSeam(const std::string &text)
{
    report({StreamMessage::Severity::Note, PastName, -1, text});
}

void JoinedStream::close()
{
    Lock lock(_monitor->mutex);
    _monitor->closed = true;
    _monitor->changed.notify_all();
    const auto all = readers();
    lock.unlock();
    for (const ReaderPtr &reader : all) {
        if (reader)
            reader->close();
    }
}

std::string JoinedStream::outage() const
{
    Lock lock(_monitor->mutex);
    const auto all = readers();
    lock.unlock();
    std::string text;
    for (const ReaderPtr &reader : all)
        text = text.empty() && reader ? reader->outage() : text;
    return text;
}

double JoinedStream::progress() const
{
    Lock lock(_monitor->mutex);
    const ReaderPtr past = _past;
    lock.unlock();
    return past ? past->progress() : -1;
}

bool JoinedStream::setOption(const std::string &name, const std::string &text)
{
    if (name == "past" || name == "live") {
        (name == "past" ? _pastUrl : _liveUrl) = text;
        return true;
    }
    const std::pair<const char *, double *> numbers[] = {
        {"overlap", &_overlap}, {"hold", &_hold}, {"again", &_firstPause}, {"lag", &_lag}};
    const auto number = std::find_if(std::begin(numbers), std::end(numbers),
                                     [&](const auto &known) { return known.first == name; });
    if (number == std::end(numbers))
        return fail("joined://: unknown option \"" + name + '"');
    double &value = *number->second;
    return (Core::fromString(value, text) && value >= 0 && value <= MostOption) ||
           fail("joined://: " + name + "=" + text + " is no number from 0 to 1000000");
}

bool JoinedStream::checkUrl(const char *name, const std::string &url)
{
    std::string error = "no URL given";
    return (!url.empty() && Create(url, &error)) ||
           fail(std::string("joined://: ") + name + ": " + error);
}

/** A reader of the past or the present; null if it is asked for nothing, or if it can't be asked,
 *  which is told. */
JoinedStream::ReaderPtr JoinedStream::makeReader(bool isLive, Core::Time now, size_t mostBytes)
{
    const std::string name = isLive ? "live source" : PastName;
    std::string error;
    const RecordStreamPtr stream = Create(isLive ? _liveUrl : _pastUrl, &error);
    bool isAsked = false;
    bool isRefused = !stream;
    const auto partOf = [&](const Core::TimeWindow &window, Core::TimeWindow &part) {
        const JoinedWindows windows(window, now, Core::TimeSpan(_overlap));
        part = isLive ? windows.live : windows.past;
        return isLive ? windows.hasLive : windows.hasPast;
    };

    Core::TimeWindow part;
    if (stream && requests().empty() && partOf(requestedWindow(), part))
        isAsked = stream->setTimeWindow(part);
    for (const Request &request : requests()) {
        if (isRefused || !partOf(windowOf(request), part))
            continue;
        isAsked = true;
        isRefused = !stream->addStream(request.network, request.station, request.location,
                                       request.channel, part);
    }
    if (isRefused) {
        fail(stream ? stream->errorString() : error);
        report({StreamMessage::Severity::Fault, name, -1, errorString()});
        return nullptr;
    }
    stream->setPersistent(isPersistent());
    return isAsked ? std::make_shared<JoinedReader>(stream, name, _monitor, mostBytes) : nullptr;
}

void JoinedStream::endReaders()
{
    close();
    Lock lock(_monitor->mutex);
    const ReaderPtr readers[] = {std::move(_past), std::move(_live), std::move(_again)};
    lock.unlock();
}

/** True if one of the sources is open, or none will be. */
bool JoinedStream::isDecided(const Lock &lock) const
{
    const auto isOpening = [&](const ReaderPtr &reader) {
        return reader && reader->state(lock) == JoinedReader::State::Opening;
    };
    return isAnyOpen(lock) || (!isOpening(_past) && !isOpening(_live));
}

bool JoinedStream::isAnyOpen(const Lock &lock) const
{
    const auto isOpen = [&](const ReaderPtr &reader) {
        return reader && (reader->state(lock) == JoinedReader::State::Reading ||
                          reader->state(lock) == JoinedReader::State::Ended);
    };
    return isOpen(_past) || isOpen(_live);
}

bool JoinedStream::hasMessages(const Lock &lock) const
{
    const auto all = readers();
    return std::any_of(all.begin(), all.end(), [&](const ReaderPtr &reader) {
        return reader && reader->hasMessages(lock);
    });
}

/** Hands on what the sources have told, without the lock. */
void JoinedStream::passMessages(Lock &lock)
{
    for (const ReaderPtr &reader : readers()) {
        if (!reader || !reader->hasMessages(lock))
            continue;
        const bool isPast = reader != _live;
        const bool isAgain = reader == _again;
        const std::vector<StreamMessage> messages = reader->takeMessages(lock);
        lock.unlock();
        for (const StreamMessage &message : messages) {
            // What was in its way the first time is often so the next.
            const bool isFault = message.severity == StreamMessage::Severity::Fault;
            const bool isNew = !isPast || !isFault || _faults.insert(message.text()).second;
            if (isNew || !isAgain)
                report(message);
        }
        lock.lock();
    }
}

} // namespace IO
} // namespace Tellarix
