// SPDX-License-Identifier: LGPL-3.0-or-later

#include "recordpump.h"

#include "command.h"

#include <tellarix/core/records/record.h>

#include <QRegularExpression>

#include <algorithm>
#include <chrono>
#include <utility>

namespace Tellarix {
namespace Tool {

namespace {

// What waits for the receiver at most.
constexpr size_t MostItems = 4000;
constexpr int64_t MostSamples = 4000000;
// A file brings many records in this time, for which the receiver is woken up once.
constexpr auto TimeToGather = std::chrono::milliseconds(5);
constexpr size_t Plenty = 500;
constexpr auto TimeBetweenWakes = std::chrono::seconds(1);
// A close() that comes just before open() is undone by it.
constexpr auto TimeBetweenCloses = std::chrono::milliseconds(20);

/** Puts the name of the source before a reason that doesn't hold it. */
QString failureText(const QString &url, const std::string &reason)
{
    const QString text = QString::fromStdString(reason);
    const QString shown = shownUrl(url);
    const QString source = shown.section(QStringLiteral("://"), -1);
    const QString address = source.section(QRegularExpression(QStringLiteral("[/?#]")), 0, 0);
    const bool isNamed = text.startsWith(source) ||
                         text.startsWith(shown.section(QLatin1Char('?'), 0, 0)) ||
                         (!address.isEmpty() && text.startsWith(address + QLatin1Char(':')));
    return isNamed ? text : QStringLiteral("%1: %2").arg(shown, text);
}

} // namespace

RecordPump::RecordPump(SourceRequest request) : _request(std::move(request))
{}

RecordPump::~RecordPump() = default;

bool RecordPump::run(const Receiver &receiver)
{
    const auto timeout = std::chrono::duration<double>(_request.timeoutSeconds);
    auto lastRecord = Clock::now();
    auto nextWake = lastRecord + TimeBetweenWakes;
    startLanes();
    for (;;) {
        const bool isEnding = _isEnded || _isTimedOut;
        auto until = isEnding ? Clock::now() + TimeBetweenCloses : nextWake;
        if (_request.timeoutSeconds > 0 && !isEnding)
            until = std::min(until, lastRecord + std::chrono::ceil<Clock::duration>(timeout));
        if (isEnding)
            closeStreams();

        std::vector<Item> items;
        if (!gather(until, &items))
            break;
        const bool haveRecords =
            std::any_of(items.begin(), items.end(), [](const Item &item) { return !!item.record; });
        deliver(std::move(items), receiver);
        const auto now = Clock::now();
        if (haveRecords)
            lastRecord = now;
        else if (_request.timeoutSeconds > 0 && now - lastRecord >= timeout)
            _isTimedOut = true;
        if (now >= nextWake) {
            wake(receiver);
            nextWake = now + TimeBetweenWakes;
        }
    }
    for (const auto &lane : _lanes)
        lane->thread.join();
    _lanes.clear();
    return _isComplete;
}

/** Waits for items up to a time, or until all is to end; false if none will come any more. */
bool RecordPump::gather(Clock::time_point until, std::vector<Item> *items)
{
    const bool isEnding = _isEnded || _isTimedOut;
    const auto hasNews = [&] { return _running == 0 || (!isEnding && _isEnded); };
    {
        std::unique_lock<std::mutex> lock(_mutex);
        _itemsCame.wait_until(lock, until, [&] { return !_items.empty() || hasNews(); });
        if (!_items.empty())
            _itemsCame.wait_for(lock, TimeToGather, [&] {
                return _items.size() >= Plenty || _samples >= MostSamples || hasNews();
            });
        items->swap(_items);
        _samples = 0;
        if (items->empty() && _running == 0)
            return false;
    }
    _itemsLeft.notify_all();
    return true;
}

void RecordPump::end()
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _isEnded = true;
    _itemsCame.notify_all();
    _itemsLeft.notify_all();
}

void RecordPump::startLanes()
{
    QStringList files;
    for (const QString &url : qAsConst(_request.urls)) {
        if (isLocal(url)) {
            files.append(url);
            continue;
        }
        _lanes.push_back(std::make_unique<Lane>());
        _lanes.back()->urls.append(url);
    }
    if (!files.isEmpty()) {
        _lanes.push_back(std::make_unique<Lane>());
        _lanes.back()->urls = files;
    }
    _running = _lanes.size();
    for (const auto &lane : _lanes)
        lane->thread = std::thread([this, &lane = *lane] { read(lane); });
}

void RecordPump::read(Lane &lane)
{
    for (const QString &url : qAsConst(lane.urls)) {
        if (!_isEnded && !_isTimedOut)
            readSource(lane, url);
    }
    const std::lock_guard<std::mutex> lock(_mutex);
    --_running;
    _itemsCame.notify_all();
}

void RecordPump::readSource(Lane &lane, const QString &url)
{
    std::string error;
    const IO::RecordStreamPtr stream = IO::RecordStream::Create(url.toStdString(), &error);
    if (!stream)
        return tell(failureText(url, error), true);

    stream->setMessageHandler([this](const IO::StreamMessage &message) {
        tell(QString::fromStdString(message.text()),
             message.severity == IO::StreamMessage::Severity::Fault);
    });
    stream->setPersistent(_isPersistent);
    setStream(lane, stream);
    const bool isOpen = open(*stream);
    const bool hasCome = isOpen && readRecords(*stream);
    if (!isOpen && _isTimedOut)
        tell(tr("%1: could not be opened in time").arg(shownUrl(url)), true);
    else if (!isOpen && !_isEnded)
        tell(failureText(url, stream->errorString()), true);
    else if (_isTimedOut && !stream->outage().empty())
        tell(tr("%1: nothing has come for %2 s: %3")
                 .arg(shownUrl(url))
                 .arg(_request.timeoutSeconds)
                 .arg(QString::fromStdString(stream->outage())),
             true);
    else if (!hasCome && _isTimedOut)
        tell(tr("%1: nothing has come for %2 s").arg(shownUrl(url)).arg(_request.timeoutSeconds),
             false);
    setStream(lane, nullptr);
    stream->close();
}

/** Reads until the stream or all is to end; true if there was a record. */
bool RecordPump::readRecords(IO::RecordStream &stream)
{
    bool hasCome = false;
    auto origin = std::make_shared<const std::string>();
    // What a stream has given out is delivered, even if all is to end.
    while (const RecordPtr record = _isEnded || _isTimedOut ? nullptr : stream.next()) {
        if (stream.originName() != *origin)
            origin = std::make_shared<const std::string>(stream.originName());
        hasCome = true;
        Item item;
        item.record = record;
        item.origin = origin;
        item.offset = stream.originOffset();
        push(std::move(item));
    }
    return hasCome;
}

bool RecordPump::open(IO::RecordStream &stream) const
{
    for (const StreamCodesCPtr &codes : _request.streams) {
        if (!stream.addStream(codes->network(), codes->station(), codes->location(),
                              codes->channel()))
            return false;
    }
    const Core::TimeWindow &window = _request.window;
    const bool isLimited = window.startTime().valid() || window.endTime().valid();
    return (!isLimited || stream.setTimeWindow(window)) && stream.open();
}

void RecordPump::setStream(Lane &lane, const IO::RecordStreamPtr &stream)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    lane.stream = stream;
}

void RecordPump::push(Item item)
{
    std::unique_lock<std::mutex> lock(_mutex);
    _itemsLeft.wait(lock, [this] { return _items.size() < MostItems || _isEnded || _isTimedOut; });
    _items.push_back(std::move(item));
    if (_items.size() == 1)
        _itemsCame.notify_all();
}

void RecordPump::tell(const QString &message, bool isFault)
{
    Item item;
    item.message = message;
    item.isFault = isFault;
    push(std::move(item));
}

void RecordPump::deliver(std::vector<Item> items, const Receiver &receiver)
{
    for (const Item &item : items) {
        if (!item.record) {
            _isComplete = _isComplete && !item.isFault;
            receiver.tell ? receiver.tell(item.message) : printError(item.message);
        } else if (!_isRefused && !receiver.take(item.record, *item.origin, item.offset)) {
            _isRefused = _isEnded = true;
        }
    }
}

void RecordPump::wake(const Receiver &receiver)
{
    if (!_isRefused && receiver.wake && !receiver.wake())
        _isRefused = _isEnded = true;
}

void RecordPump::closeStreams()
{
    std::vector<IO::RecordStreamPtr> streams;
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        for (const auto &lane : _lanes)
            streams.push_back(lane->stream);
    }
    _itemsLeft.notify_all();
    for (const IO::RecordStreamPtr &stream : streams) {
        if (stream)
            stream->close();
    }
}

} // namespace Tool
} // namespace Tellarix
