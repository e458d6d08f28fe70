// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/fdsnservice.h>

#include <tellarix/client/remote/fdsnfetch_p.h>

#include <QTemporaryFile>
#include <QUrlQuery>

#include <algorithm>

namespace Tellarix {
namespace IO {

namespace {

constexpr int MaxTries = 5;
constexpr qint64 MaxErrorText = 16 << 10;
constexpr size_t LinesAtOnce = 500;
constexpr qint64 MaxAnswer = qint64(4) << 30;
// Enough for whoever reads it to tell what is wrong.
constexpr qint64 MaxForeign = 1 << 20;
const auto AnyTime =
    std::make_pair(QByteArray("1900-01-01T00:00:00"), QByteArray("2599-12-31T23:59:59"));

QString timeText(Core::Time time)
{
    return QString::fromStdString(time.toString("%Y-%m-%dT%H:%M:%S.%6f"));
}

/** Adds what is set and not there yet. */
class Filler
{
public:
    explicit Filler(FdsnWords words) : _words(std::move(words)) {}

    void add(const QString &name, const std::optional<double> &value)
    {
        if (value)
            add(name, QString::number(*value, 'g', 12));
    }
    void add(const QString &name, Core::Time time)
    {
        if (time.valid())
            add(name, timeText(time));
    }
    void add(const QString &name, const QString &value)
    {
        if (!_words.contains(name))
            _words.insert(name, value);
    }
    void add(const Core::TimeWindow &window)
    {
        add("starttime", window.startTime());
        add("endtime", window.endTime());
    }
    void add(const FdsnArea &area)
    {
        add("minlatitude", area.south);
        add("maxlatitude", area.north);
        add("latitude", area.latitude);
        add("longitude", area.longitude);
        add("minradius", area.minimumRadius);
        add("maxradius", area.maximumRadius);
    }
    /** One set of words, or one for each side of 180 degrees. */
    std::vector<FdsnWords> split(const FdsnArea &area)
    {
        add("minlongitude", area.west);
        add("maxlongitude", area.east);
        bool hasWest = false;
        bool hasEast = false;
        const double west = _words.value("minlongitude").toDouble(&hasWest);
        const double east = _words.value("maxlongitude").toDouble(&hasEast);
        if (!hasWest || !hasEast || west <= east)
            return {_words};
        std::vector<FdsnWords> sides{_words, _words};
        sides[0]["maxlongitude"] = "180";
        sides[1]["minlongitude"] = "-180";
        return sides;
    }

private:
    FdsnWords _words;
};

/** The long names of words, of which servers have to know both. */
FdsnWords withLongNames(const FdsnWords &words)
{
    static const QMap<QString, QString> names{
        {"start", "starttime"},     {"end", "endtime"},          {"minlat", "minlatitude"},
        {"maxlat", "maxlatitude"},  {"minlon", "minlongitude"},  {"maxlon", "maxlongitude"},
        {"lat", "latitude"},        {"lon", "longitude"},        {"minmag", "minmagnitude"},
        {"maxmag", "maxmagnitude"}, {"magtype", "magnitudetype"}};
    FdsnWords result;
    for (auto word = words.begin(); word != words.end(); ++word)
        result.insert(names.value(word.key(), word.key()), word.value());
    return result;
}

QUrl withWords(QUrl url, const FdsnWords &words)
{
    QUrlQuery query;
    for (auto word = words.begin(); word != words.end(); ++word) {
        // QUrlQuery leaves a "+" as it is, which servers take for a blank.
        query.addQueryItem(word.key(),
                           QString::fromLatin1(QUrl::toPercentEncoding(word.value(), ":,*?")));
    }
    url.setQuery(query);
    return url;
}

/** The words and some of the streams as the body of a request. */
QByteArray stationBody(const FdsnWords &words, const FdsnStationQuery &query, size_t begin)
{
    QByteArray body;
    for (auto word = words.begin(); word != words.end(); ++word) {
        if (word.key() != "starttime" && word.key() != "endtime")
            body += word.key().toUtf8() + '=' + word.value().simplified().toUtf8() + '\n';
    }
    const QByteArray from = words.value("starttime", AnyTime.first).toUtf8();
    const QByteArray to = words.value("endtime", AnyTime.second).toUtf8();
    const size_t end = std::min(begin + LinesAtOnce, query.streams.size());
    for (size_t i = begin; i < end; ++i) {
        const StreamCodes &codes = *query.streams[i];
        const std::string location = codes.location().empty() ? "--" : codes.location();
        body += QByteArray::fromStdString(codes.network() + ' ' + codes.station() + ' ' + location +
                                          ' ' + codes.channel()) +
                ' ' + from + ' ' + to + '\n';
    }
    return body;
}

/** Whether it begins as XML does, or a table. */
bool mayBeAnswer(const QByteArray &head)
{
    const QByteArray text = head.left(1000).trimmed();
    const bool hasMark = text.startsWith("\xEF\xBB\xBF");
    const char first = text.size() > (hasMark ? 3 : 0) ? text[hasMark ? 3 : 0] : '<';
    return first == '<' || first == '#';
}

} // namespace

std::vector<FdsnWords> fdsnWords(const FdsnEventQuery &query)
{
    Filler filler(withLongNames(query.words));
    filler.add(query.window);
    filler.add(query.area);
    filler.add("mindepth", query.minimumDepthKm);
    filler.add("maxdepth", query.maximumDepthKm);
    filler.add("minmagnitude", query.minimumMagnitude);
    filler.add("maxmagnitude", query.maximumMagnitude);
    return filler.split(query.area);
}

std::vector<FdsnWords> fdsnWords(const FdsnStationQuery &query)
{
    Filler filler(withLongNames(query.words));
    filler.add("level", QString("channel"));
    filler.add(query.window);
    filler.add(query.area);
    return filler.split(query.area);
}

class FdsnService::Private
{
public:
    explicit Private(const HttpSettings &settings) : client(settings) {}

    HttpClient client;
    FdsnExchange exchange;
};

FdsnService::FdsnService(const FdsnAddress &address, const HttpSettings &settings)
    : _address(address), _private(std::make_unique<Private>(settings))
{}

FdsnService::~FdsnService() = default;

void FdsnService::cancel()
{
    _private->exchange.close();
    _private->client.cancel();
}

/** Whether a failed request is made again; waits before. */
bool FdsnService::mayTryAgain(int tries)
{
    const HttpAnswer &answer = _private->client.answer();
    const int status = answer.status;
    const bool isTrouble = status == 429 || status == 500 || status == 502 || status == 503 ||
                           status == 504 || answer.failure == HttpFailure::BrokenOff;
    if (!isTrouble || tries >= MaxTries)
        return false;
    const auto asked = askedPause(answer.header("Retry-After"));
    _private->exchange.pause(asked.count() >= 0 ? asked : std::chrono::milliseconds(500 << tries));
    return _private->exchange.waitForTurn();
}

FdsnService::Arrival FdsnService::fetch(const HttpRequest &request, QFile &file,
                                        const Progress &progress, QString *error)
{
    HttpClient &client = _private->client;
    for (int tries = 1;; ++tries) {
        bool ended = false;
        bool isForeign = false;
        bool isTooLong = false;
        bool stored = file.resize(0) && file.seek(0);
        const bool complete = client.fetch(request, [&](const char *data, qint64 size) {
            isForeign = isForeign || (file.pos() == 0 && !mayBeAnswer({data, int(size)}));
            stored = stored && file.write(data, size) == size;
            ended = progress && !progress(file.pos(), client.answer().length);
            isTooLong = file.pos() > (isForeign ? MaxForeign : MaxAnswer);
            return stored && !ended && !isTooLong;
        });
        const qint64 size = file.pos();
        stored = stored && file.flush() && file.seek(0);
        const HttpAnswer answer = client.answer();
        if (isTooLong) {
            *error = QString("%1: more than %2 MB %3")
                         .arg(name())
                         .arg(size >> 20)
                         .arg(isForeign ? "that are neither XML nor a table" : "in one answer");
            return Arrival::Failed;
        }
        if (complete && stored)
            return file.size() > 0 ? Arrival::Body : Arrival::Nothing;
        if (ended || _private->exchange.isClosed())
            return Arrival::Failed;
        if (!stored) {
            *error = QString("%1: %2").arg(file.fileName(), file.errorString());
            return Arrival::Failed;
        }
        if (answer.status == 204)
            return Arrival::Nothing;
        QString cause = answer.cause;
        if (answer.failure == HttpFailure::None) {
            const QByteArray body = client.readUpTo(MaxErrorText);
            if (answer.status == 404 && !isHtml(answer.header("Content-Type"), body))
                return Arrival::Nothing;
            cause = fdsnStatusText(answer, body);
        }
        if (mayTryAgain(tries))
            continue;
        if (!_private->exchange.isClosed())
            *error = QString("%1: %2").arg(_address.name(), cause);
        return answer.status == 400 ? Arrival::Refused : Arrival::Failed;
    }
}

/** Whether a file is a page for people, as some servers send along with success. */
static bool isPage(QFile &file, const QString &name, QString *error)
{
    const QByteArray head = file.peek(MaxErrorText);
    if (isHtml(QByteArray(), head))
        *error = QString("%1: a text instead of data: %2").arg(name, httpBodyText(head));
    return isHtml(QByteArray(), head);
}

FdsnService::Arrival FdsnService::readPage(const FdsnWords &words, const EventReadHandler &handler,
                                           QString *error)
{
    QTemporaryFile file;
    if (!file.open()) {
        *error = QString("%1: %2").arg(file.fileName(), file.errorString());
        return Arrival::Failed;
    }
    const HttpRequest request(withWords(_address.url("event", "query"), words));
    const Arrival arrival = fetch(request, file, handler.progress, error);
    if (arrival != Arrival::Body)
        return arrival;
    const bool read = !isPage(file, name(), error) && IO::readEvents(file, name(), handler, error);
    return read ? Arrival::Body : Arrival::Failed;
}

/** Asks for page after page, in an order that new events don't change. */
bool FdsnService::readPages(const FdsnWords &words, const EventReadHandler &handler, QString *error)
{
    int left = words.value("limit").toInt();
    const bool isLimited = words.contains("limit");
    const int first = std::max(1, words.value("offset").toInt());
    int offset = first;
    std::string firstOfLast;
    for (;;) {
        const int limit = isLimited ? std::min(left, PageSize) : PageSize;
        FdsnWords page = words;
        page["limit"] = QString::number(limit);
        if (offset > 1)
            page["offset"] = QString::number(offset);
        if (!isLimited && !page.contains("orderby"))
            page["orderby"] = "time-asc";

        const bool isFirst = offset == first;
        int count = 0;
        bool repeated = false;
        EventReadHandler counting = handler;
        counting.take = [&](const DataModel::EventPtr &event) {
            // A server that knows no pages sends the first one over and over.
            if (++count == 1) {
                repeated = !isFirst && event->publicID == firstOfLast;
                firstOfLast = event->publicID;
            }
            return !repeated && handler.take(event);
        };
        error->clear();
        Arrival arrival = readPage(page, counting, error);
        if (arrival == Arrival::Refused && isFirst && !isLimited) {
            // Pages are no duty of a server.
            error->clear();
            arrival = readPage(words, handler, error);
            return arrival == Arrival::Body || arrival == Arrival::Nothing;
        }
        if (repeated || arrival == Arrival::Nothing)
            return true;
        if (arrival != Arrival::Body)
            return false;
        left -= count;
        offset += count;
        if (count != limit || (isLimited && left <= 0))
            return true;
    }
}

bool FdsnService::readEvents(const FdsnEventQuery &query, const EventReadHandler &handler,
                             QString *error)
{
    QString fault;
    bool complete = true;
    for (const FdsnWords &words : fdsnWords(query)) {
        const bool single = words.contains("eventid");
        const Arrival arrival = single ? readPage(words, handler, &fault) : Arrival::Failed;
        complete = complete && (single ? arrival == Arrival::Body || arrival == Arrival::Nothing
                                       : readPages(words, handler, &fault));
        if (!complete)
            break;
    }
    if (error)
        *error = fault;
    return complete;
}

bool FdsnService::readInventory(const FdsnStationQuery &query,
                                std::vector<DataModel::NetworkPtr> *networks,
                                const InventoryReadHandler &handler, QString *error)
{
    std::vector<DataModel::NetworkPtr> result;
    QString fault;
    const auto readPart = [&](const HttpRequest &request) {
        QTemporaryFile file;
        if (!file.open()) {
            fault = QString("%1: %2").arg(file.fileName(), file.errorString());
            return false;
        }
        const Arrival arrival = fetch(request, file, handler.progress, &fault);
        if (arrival != Arrival::Body)
            return arrival == Arrival::Nothing;
        std::vector<DataModel::NetworkPtr> part;
        if (isPage(file, name(), &fault) ||
            !IO::readInventory(file, name(), &part, handler, &fault))
            return false;
        result.insert(result.end(), part.begin(), part.end());
        return true;
    };

    bool complete = true;
    for (const FdsnWords &words : fdsnWords(query)) {
        HttpRequest request(_address.url("station", "query"));
        if (query.streams.empty()) {
            request.url = withWords(request.url, words);
            complete = complete && readPart(request);
        }
        request.method = HttpRequest::Method::Post;
        for (size_t begin = 0; complete && begin < query.streams.size(); begin += LinesAtOnce) {
            request.body = stationBody(words, query, begin);
            complete = readPart(request);
        }
    }
    if (complete)
        *networks = std::move(result);
    if (error)
        *error = fault;
    return complete;
}

} // namespace IO
} // namespace Tellarix
