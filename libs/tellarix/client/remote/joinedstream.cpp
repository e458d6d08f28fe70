// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/joinedstream.h>

#include <tellarix/client/remote/coveredtime_p.h>
#include <tellarix/client/remote/joinedreader_p.h>
#include <tellarix/core/strings.h>

#include <QUrlQuery>

#include <algorithm>

namespace Tellarix {
namespace IO {

namespace {

const RecordStreamScheme joinedScheme("joined", [] { return RecordStreamPtr(new JoinedStream); });

constexpr double DefaultOverlap = 3600;
constexpr double DefaultHold = 256;
constexpr double MostOption = 1E6;
constexpr double BytesPerMB = 1024 * 1024;
constexpr size_t MostPastBytes = 8 * 1024 * 1024;

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
        JoinedReader *reader = _past ? _past.get() : _live.get();
        if (!reader || _monitor->closed)
            break;

        JoinedReader::Item item;
        if (reader->take(item, lock)) {
            if (reader == _past.get())
                _delivered->add(*item.record);
            else if (_delivered->holds(*item.record))
                continue;
            _originName = std::move(item.originName);
            _originOffset = item.originOffset;
            return item.record;
        }
        if (hasMessages(lock))
            continue;
        if (reader->isAtEnd(lock)) {
            // Its destructor takes the lock.
            ReaderPtr ended = std::move(_past ? _past : _live);
            lock.unlock();
            ended.reset();
            lock.lock();
            continue;
        }
        _monitor->changed.wait(lock);
    }
    return RecordPtr();
}

void JoinedStream::close()
{
    Lock lock(_monitor->mutex);
    _monitor->closed = true;
    _monitor->changed.notify_all();
    const ReaderPtr readers[] = {_past, _live};
    lock.unlock();
    for (const ReaderPtr &reader : readers) {
        if (reader)
            reader->close();
    }
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
    if (name != "overlap" && name != "hold")
        return fail("joined://: unknown option \"" + name + '"');
    double &value = name == "overlap" ? _overlap : _hold;
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
    const std::string name = isLive ? "live source" : "source of the past";
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
    return isAsked ? std::make_shared<JoinedReader>(stream, name, _monitor, mostBytes) : nullptr;
}

void JoinedStream::endReaders()
{
    close();
    Lock lock(_monitor->mutex);
    const ReaderPtr readers[] = {std::move(_past), std::move(_live)};
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
    return (_past && _past->hasMessages(lock)) || (_live && _live->hasMessages(lock));
}

/** Hands on what the sources have told, without the lock. */
void JoinedStream::passMessages(Lock &lock)
{
    for (const ReaderPtr &reader : {_past, _live}) {
        if (!reader || !reader->hasMessages(lock))
            continue;
        const std::vector<StreamMessage> messages = reader->takeMessages(lock);
        lock.unlock();
        for (const StreamMessage &message : messages)
            report(message);
        lock.lock();
    }
}

} // namespace IO
} // namespace Tellarix
