// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/fdsnstream.h>

#include <tellarix/client/remote/fdsnfetch_p.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/strings.h>

#include <algorithm>
#include <deque>
#include <map>
#include <thread>

namespace Tellarix {
namespace IO {

namespace {

const RecordStreamScheme encryptedScheme("fdsnws+https",
                                         [] { return new FdsnStream("fdsnws+https"); });
const RecordStreamScheme plainScheme("fdsnws+http", [] { return new FdsnStream("fdsnws+http"); });

constexpr int64_t MaxWaitingBytes = 8 << 20;
constexpr int64_t BytesBesideSamples = 200;
constexpr size_t MaxStrangers = 100;
// Clocks of stations are seldom as wrong as that.
const Core::TimeSpan FarAhead(3600.0);

int64_t sizeOf(const Record &record)
{
    const int64_t sampleSize = record.dataType() == DataType::Double ? 8 : 4;
    return record.sampleCount() * sampleSize + BytesBesideSamples;
}

/** Sets a number by a word; false if it is none or out of bounds. */
template <typename T>
bool readNumber(const QString &text, double lowest, double highest, T *number)
{
    double value = 0;
    if (!Core::fromString(value, text.toStdString()) || !(value >= lowest && value <= highest))
        return false;
    *number = static_cast<T>(value);
    return true;
}

bool readWord(const QString &name, const QString &text, FdsnSettings *settings)
{
    double number = 0;
    if (name == "parallel")
        return readNumber(text, 1, 16, &settings->parallel);
    if (name == "tries")
        return readNumber(text, 1, 1000, &settings->tries);
    if (name == "timeout") {
        const bool isNumber = readNumber(text, 0.01, 86400, &number);
        settings->http.silenceMSecs = static_cast<int>(number * 1000);
        return isNumber;
    }
    if (name == "hours") {
        const bool isNumber = readNumber(text, 0.01, 24 * 366, &number);
        settings->sizes.shortest = settings->sizes.longest = number * 3600;
        return isNumber;
    }
    if (name == "quality") {
        settings->header += "quality=" + text.toLatin1() + '\n';
        return text.size() == 1 && QString("DRQMB").contains(text);
    }
    if (name == "minimum-length") {
        const bool isNumber = readNumber(text, 0, 1e9, &number);
        settings->header += "minimumlength=" + QByteArray::number(number) + '\n';
        return isNumber;
    }
    return settings->outage.read(name, text);
}

} // namespace

/** The threads that fetch, and what they have fetched. */
class FdsnStream::Private
{
public:
    struct Item
    {
        RecordPtr record; /**< or a message, if null */
        StreamMessage message;
    };
    struct Output
    {
        std::deque<Item> items;
        int64_t bytes{0};
        bool done{false};
    };

    ~Private() { stop(); }

    void start(FdsnLines lines);
    void stop();
    void close();
    /** Waits for the next thing that has come; false at the end. */
    bool take(Item *item);
    std::string outage() const { return _exchange.text(); }

    FdsnAddress address;
    FdsnSettings settings;
    std::string name;
    FdsnPieces pieces;
    std::atomic<int64_t> current{0};            /**< the piece that is delivered */
    Core::TimeWindow stretch;                   /**< that of the record before */
    std::map<std::string, Core::Time> crossing; /**< ends of records that may come again */
    std::set<std::string> strangers;

private:
    void run();
    bool claim(int64_t *index, FdsnLines *lines);
    bool add(int64_t index, Item item);
    void tellAtOnce(const std::string &text);

    FdsnExchange _exchange;
    std::vector<std::thread> _threads;
    std::mutex _mutex;
    std::condition_variable _changed;
    std::vector<FdsnFetch *> _fetches; /**< those that run */
    std::map<int64_t, Output> _outputs;
    std::deque<Item> _notices; /**< messages that don't wait for the turn of a piece */
    int64_t _claimed{0};
    bool _closed{true};
    bool _hopeless{false};
};

void FdsnStream::Private::start(FdsnLines lines)
{
    stop();
    pieces = FdsnPieces(std::move(lines), settings.sizes);
    current = 0;
    stretch = Core::TimeWindow();
    crossing.clear();
    strangers.clear();
    _exchange.setSettings(settings.outage);
    _exchange.open(name, [this](const std::string &text) { tellAtOnce(text); });
    _outputs.clear();
    _notices.clear();
    _claimed = 0;
    _closed = _hopeless = false;
    const int64_t count = std::min<int64_t>(settings.parallel, pieces.count());
    for (int64_t i = 0; i < count; ++i)
        _threads.emplace_back([this] { run(); });
}

void FdsnStream::Private::close()
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _closed = true;
    _exchange.close();
    for (FdsnFetch *fetch : _fetches)
        fetch->cancel();
    _changed.notify_all();
}

void FdsnStream::Private::stop()
{
    close();
    for (std::thread &thread : _threads)
        thread.join();
    _threads.clear();
}

void FdsnStream::Private::run()
{
    FdsnFetch fetch(address, settings, _exchange);
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        _fetches.push_back(&fetch);
        if (_closed)
            fetch.cancel();
    }
    int64_t index = 0;
    FdsnLines lines;
    while (claim(&index, &lines)) {
        FdsnReceiver receiver;
        receiver.take = [&](const RecordPtr &record) { return add(index, {record, {}}); };
        receiver.tell = [&](StreamMessage::Severity severity, const std::string &cause) {
            add(index, {nullptr, {severity, name, -1, cause}});
        };
        const bool usable = lines.empty() || fetch.run(lines, receiver);
        const std::lock_guard<std::mutex> lock(_mutex);
        _outputs[index].done = true;
        _hopeless = _hopeless || !usable;
        _changed.notify_all();
    }
    const std::lock_guard<std::mutex> lock(_mutex);
    _fetches.erase(std::find(_fetches.begin(), _fetches.end(), &fetch));
}

/** Gives a thread its next piece, when it is not too far ahead of the reader. */
bool FdsnStream::Private::claim(int64_t *index, FdsnLines *lines)
{
    std::unique_lock<std::mutex> lock(_mutex);
    _changed.wait(lock, [this] {
        return _closed || _hopeless || _claimed >= pieces.count() ||
               _claimed < current + 2 * settings.parallel;
    });
    if (_closed || _hopeless || _claimed >= pieces.count())
        return false;
    *index = _claimed++;
    *lines = pieces.at(*index);
    return true;
}

bool FdsnStream::Private::add(int64_t index, Item item)
{
    std::unique_lock<std::mutex> lock(_mutex);
    Output &output = _outputs[index];
    _changed.wait(lock, [&] { return _closed || output.bytes < MaxWaitingBytes; });
    if (_closed)
        return false;
    output.bytes += item.record ? sizeOf(*item.record) : BytesBesideSamples;
    const bool isAwaited = index == current && output.items.empty();
    output.items.push_back(std::move(item));
    if (isAwaited)
        _changed.notify_all();
    return true;
}

void FdsnStream::Private::tellAtOnce(const std::string &text)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _notices.push_back({nullptr, {StreamMessage::Severity::Note, name, -1, text}});
    _changed.notify_all();
}

bool FdsnStream::Private::take(Item *item)
{
    std::unique_lock<std::mutex> lock(_mutex);
    while (!_closed && current < pieces.count()) {
        if (!_notices.empty()) {
            *item = std::move(_notices.front());
            _notices.pop_front();
            return true;
        }
        Output &output = _outputs[current];
        if (!output.items.empty()) {
            *item = std::move(output.items.front());
            output.items.pop_front();
            const bool wasFull = output.bytes >= MaxWaitingBytes;
            output.bytes -= item->record ? sizeOf(*item->record) : BytesBesideSamples;
            if (wasFull && output.bytes < MaxWaitingBytes)
                _changed.notify_all();
            return true;
        }
        if (output.done) {
            _outputs.erase(current);
            ++current;
            _changed.notify_all();
        } else if (_hopeless && current >= _claimed)
            break;
        else
            _changed.wait(lock);
    }
    return false;
}

FdsnStream::FdsnStream(const std::string &scheme)
    : _scheme(scheme), _private(std::make_unique<Private>())
{}

FdsnStream::~FdsnStream() = default;

bool FdsnStream::setSource(const std::string &source)
{
    QString error;
    FdsnAddress address;
    if (!address.parse(QString::fromStdString(_scheme + "://" + source), &error))
        return fail(error.toStdString());
    FdsnSettings settings;
    for (auto word = address.words().begin(); word != address.words().end(); ++word) {
        if (!readWord(word.key(), word.value(), &settings))
            return fail(QString("%1: \"%2=%3\" can't be used")
                            .arg(address.name(), word.key(), word.value())
                            .toStdString());
    }
    _private->address = address;
    _private->settings = settings;
    _private->name = address.name().toStdString();
    return true;
}

bool FdsnStream::addStream(const std::string &network, const std::string &station,
                           const std::string &location, const std::string &channel,
                           const Core::TimeWindow &window)
{
    const std::string allowed =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789*?_-";
    for (const std::string &code : {network, station, channel}) {
        if (code.empty() || code.find_first_not_of(allowed) != std::string::npos)
            return fail(_private->name + ": no code of a stream: \"" + code + '"');
    }
    if (location.find_first_not_of(allowed) != std::string::npos)
        return fail(_private->name + ": no location code: \"" + location + '"');
    return RecordStream::addStream(network, station, location, channel, window);
}

bool FdsnStream::open()
{
    if (requests().empty())
        return fail(_private->name + ": streams have to be asked for");
    FdsnLines lines;
    for (const Request &request : requests()) {
        const Core::TimeWindow &window = windowOf(request);
        if (!window.valid())
            return fail(_private->name + ": a time window with both ends is needed");
        if (!window.isEmpty())
            lines.push_back(
                {StreamCodes(request.network, request.station, request.location, request.channel),
                 window});
    }
    if (lines.empty())
        return fail(_private->name + ": the time window is empty");
    _private->start(withoutCoveredFdsnLines(lines));
    return true;
}

RecordPtr FdsnStream::next()
{
    Private::Item item;
    while (_private->take(&item)) {
        if (!item.record)
            report(item.message);
        else if (accepts(*item.record))
            return item.record;
    }
    return RecordPtr();
}

void FdsnStream::close()
{
    _private->close();
}

std::string FdsnStream::originName() const
{
    return _private->name;
}

double FdsnStream::progress() const
{
    const int64_t count = _private->pieces.count();
    return count > 0 ? static_cast<double>(_private->current) / static_cast<double>(count) : -1;
}

/** Leaves out what was not asked for, and records that came with the stretch before as well. */
bool FdsnStream::accepts(const Record &record)
{
    Private &d = *_private;
    if (!isRequested(*record.codes(), record.timeWindow())) {
        noteStranger(record);
        return false;
    }
    const Core::TimeWindow stretch = d.pieces.stretch(d.current);
    if (stretch != d.stretch) {
        d.stretch = stretch;
        for (auto known = d.crossing.begin(); known != d.crossing.end();)
            known = known->second <= stretch.startTime() ? d.crossing.erase(known) : ++known;
    }
    if (record.startTime() < stretch.startTime() && d.crossing.count(fdsnRecordKey(record)) > 0)
        return false;
    if (record.timeWindow().endTime() > stretch.endTime())
        d.crossing.emplace(fdsnRecordKey(record), record.timeWindow().endTime());
    return true;
}

std::string FdsnStream::outage() const
{
    return _private->outage();
}

/** Tells once of a stream that was not asked for, or that has records of the future. Those that
 *  merely lie beside the window are common. */
void FdsnStream::noteStranger(const Record &record)
{
    const bool isForeign = isStranger(record);
    if (!isForeign && record.startTime() <= Core::Time::GMT() + FarAhead)
        return;
    std::set<std::string> &strangers = _private->strangers;
    if (strangers.size() >= MaxStrangers || !strangers.insert(record.streamID()).second)
        return;
    const std::string subject =
        record.streamID() + (strangers.size() == MaxStrangers ? " and other streams" : "");
    report({StreamMessage::Severity::Note, _private->name, -1,
            isForeign
                ? "sends records of " + subject + ", which were not asked for"
                : subject + ": sends records of the future, which are left out, the first of " +
                      record.startTime().iso()});
}

bool FdsnStream::isStranger(const Record &record) const
{
    return std::none_of(requests().begin(), requests().end(),
                        [&](const Request &request) { return matches(request, *record.codes()); });
}

} // namespace IO
} // namespace Tellarix
