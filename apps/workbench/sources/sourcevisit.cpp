// SPDX-License-Identifier: LGPL-3.0-or-later

#include "sourcevisit.h"

#include <tellarix/client/remote/fdsnservice.h>
#include <tellarix/client/remote/seedlinkstations.h>

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <future>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr double LiveTimeoutSeconds = 20;
constexpr int ConnectMSecs = 10000;
constexpr int TestMSecs = 15000;
constexpr int ListMSecs = 60000;
constexpr qint64 GreetingSize = 200;
constexpr double DaySeconds = 86400;

QString tr(const char *text)
{
    return QCoreApplication::translate("Workbench::SourceVisit", text);
}

bool readAddress(const QString &url, IO::SeedLinkAddress *address, QString *error)
{
    std::string cause;
    const QString source = url.section("://", 1);
    if (!url.startsWith("seedlink://") ||
        !IO::parseSeedLinkAddress(source.toStdString(), *address, cause)) {
        *error = tr("%1: %2").arg(hostOf(url),
                                  cause.empty() ? tr("only seedlink:// servers list what they have")
                                                : QString::fromStdString(cause));
        return false;
    }
    address->timeout = std::min(address->timeout, LiveTimeoutSeconds);
    return true;
}

IO::HttpSettings settingsFor(int silenceMSecs)
{
    IO::HttpSettings settings;
    settings.connectMSecs = ConnectMSecs;
    settings.silenceMSecs = silenceMSecs;
    return settings;
}

/** Where a service says what it is. */
QUrl greetingOf(const QString &service, const QString &address)
{
    IO::FdsnAddress web;
    if (web.parse(address))
        return web.url(service, "version");
    QUrl folder(address.section('+', 1));
    folder.setQuery(QString());
    return folder;
}

QString answerText(const QString &host, const QString &greeting, qint64 msecs)
{
    const QString text = tr("%1 answered in %2 ms").arg(host).arg(msecs);
    return greeting.isEmpty() ? text : QString("%1: %2").arg(text, greeting);
}

} // namespace

SourceVisit::Part::Part(SourceVisit &visit, Cancel cancel) : _visit(visit)
{
    const std::lock_guard<std::mutex> lock(visit._mutex);
    _place = visit._parts.insert(visit._parts.end(), std::move(cancel));
    if (visit._isCanceled)
        (*_place)();
}

SourceVisit::Part::~Part()
{
    const std::lock_guard<std::mutex> lock(_visit._mutex);
    _visit._parts.erase(_place);
}

void SourceVisit::cancel()
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _isCanceled = true;
    for (const Cancel &cancelPart : _parts)
        cancelPart();
}

SourceVisit::Findings SourceVisit::list(const DataSource &source, const Core::TimeWindow &window)
{
    Findings findings;
    StationListing live;
    QString liveError;
    std::future<bool> liveDone;
    // One that doesn't answer mustn't keep the other one.
    if (!source.live.isEmpty())
        liveDone = std::async(std::launch::async,
                              [&] { return listLive(source.live, &live, &liveError); });
    QString error;
    const QString service = source.stationService();
    if (!service.isEmpty()) {
        findings.hasAny = listArchive(service, window, &findings.listing, &error);
        findings.problems.append(error);
    }
    if (liveDone.valid() && liveDone.get()) {
        findings.hasAny = true;
        findings.listing = joinedListing(findings.listing, live);
    }
    findings.problems.append(liveError);
    findings.problems.removeAll(QString());
    // The places of all stations are known, also of those without a channel in the window.
    auto &stations = findings.listing.stations;
    stations.erase(std::remove_if(stations.begin(), stations.end(),
                                  [](const auto &station) { return station.channels.empty(); }),
                   stations.end());
    findings.listing.window = window;
    findings.listing.time = Core::Time::GMT();
    if (service.isEmpty() && source.live.isEmpty())
        findings.problems.append(
            tr("%1: nothing that lists its stations; give the address of a station service")
                .arg(source.name));
    return findings;
}

bool SourceVisit::listLive(const QString &url, StationListing *listing, QString *error)
{
    IO::SeedLinkAddress address;
    if (!readAddress(url, &address, error))
        return false;
    std::string cause;
    // Some servers tell no streams.
    for (const char *level : {"STREAMS", "STATIONS"}) {
        IO::SeedLinkSession session;
        session.setAddress(address);
        const Part part(*this, [&] { session.connection().end(); });
        std::vector<IO::SeedLinkStation> stations;
        const auto keep = [&](const IO::SeedLinkStation &station) {
            stations.push_back(station);
            ++_stationCount;
            return true;
        };
        const bool isOpen = session.open() == IO::SeedLinkSession::Outcome::Done;
        if (!isOpen)
            cause = session.cause();
        const bool done = isOpen && IO::readSeedLinkStations(session, level, keep, &cause);
        session.connection().drop();
        if (done)
            *listing = listingOf(stations);
        if (done || !isOpen || _isCanceled)
            break;
        if (level != std::string("STATIONS"))
            cause.clear();
    }
    if (!cause.empty())
        *error = QString("%1: %2").arg(QString::fromStdString(address.name()),
                                       QString::fromStdString(cause));
    return cause.empty();
}

bool SourceVisit::listArchive(const QString &url, const Core::TimeWindow &window,
                              StationListing *listing, QString *error)
{
    IO::FdsnAddress address;
    if (!address.parse(url, error))
        return false;
    IO::FdsnService service(address, settingsFor(ListMSecs));
    const Part part(*this, [&] { service.cancel(); });

    IO::FdsnStationQuery query;
    const Core::Time now = Core::Time::GMT();
    query.window = window.startTime().valid()
                       ? window
                       : Core::TimeWindow(now - Core::TimeSpan(DaySeconds), now);
    query.words["format"] = "text";
    IO::InventoryReadHandler handler;
    handler.progress = [this](qint64 done, qint64) {
        _byteCount = done;
        return !_isCanceled;
    };
    // Only the table of stations names their places, and only that of channels the channels.
    std::vector<DataModel::NetworkPtr> all;
    for (const char *level : {"station", "channel"}) {
        query.words["level"] = level;
        std::vector<DataModel::NetworkPtr> networks;
        if (!service.readInventory(query, &networks, handler, error))
            return false;
        all.insert(all.end(), networks.begin(), networks.end());
    }
    *listing = listingOf(all);
    _stationCount += static_cast<int>(listing->stations.size());
    return true;
}

std::vector<SourceVisit::Answer> SourceVisit::test(const DataSource &source)
{
    std::vector<std::future<Answer>> answers;
    const auto add = [&](auto ask) { answers.push_back(std::async(std::launch::async, ask)); };
    if (!source.live.isEmpty())
        add([&] { return testLive(source.live); });
    if (!source.past.isEmpty())
        add([&] { return testWeb("dataselect", source.past); });
    if (!source.stationService().isEmpty())
        add([&] { return testWeb("station", source.stationService()); });
    if (!source.events.isEmpty())
        add([&] { return testWeb("event", source.events); });
    std::vector<Answer> all;
    for (auto &answer : answers)
        all.push_back(answer.get());
    return all;
}

SourceVisit::Answer SourceVisit::testLive(const QString &url)
{
    Answer answer{tr("Live"), false, QString()};
    IO::SeedLinkAddress address;
    if (!readAddress(url, &address, &answer.text))
        return answer;
    IO::SeedLinkSession session;
    session.setAddress(address);
    const Part part(*this, [&] { session.connection().end(); });
    QElapsedTimer clock;
    clock.start();
    answer.ok = session.open() == IO::SeedLinkSession::Outcome::Done;
    const QString host = QString::fromStdString(address.name());
    answer.text = answer.ok
                      ? answerText(host, QString::fromStdString(session.greeting()).simplified(),
                                   clock.elapsed())
                      : QString("%1: %2").arg(host, QString::fromStdString(session.cause()));
    session.connection().drop();
    return answer;
}

SourceVisit::Answer SourceVisit::testWeb(const QString &service, const QString &address)
{
    const QString name = service == "dataselect" ? tr("Past")
                         : service == "station"  ? tr("Stations")
                                                 : tr("Events");
    Answer answer{name, false, QString()};
    const QUrl url = greetingOf(service, address);
    if (!url.scheme().startsWith("http"))
        answer.text = tr("%1: only web services can be tested").arg(address.section(':', 0, 0));
    else
        answer.ok = ask(url, address, &answer.text) &&
                    (service != "dataselect" || askWithLogin(address, &answer.text));
    return answer;
}

/** Whether a login that is known for a service of records is taken there; asks for records that
 *  nobody has, since a service tells its version to everybody. */
bool SourceVisit::askWithLogin(const QString &address, QString *text)
{
    IO::FdsnAddress web;
    if (!web.parse(address) || !web.hasLogin())
        return true;
    QUrl url = web.url("dataselect", "queryauth");
    url.setQuery("network=XX&station=NONE&location=--&channel=BHZ"
                 "&starttime=1970-01-01T00:00:00&endtime=1970-01-01T00:00:01");
    IO::HttpClient client(settingsFor(TestMSecs));
    const Part part(*this, [&] { client.cancel(); });
    const bool answered = client.open(IO::HttpRequest(url));
    const IO::HttpAnswer answer = client.answer();
    if (answered && answer.status != 401 && answer.status != 403)
        return true;
    *text =
        QString("%1: %2").arg(IO::httpServerName(url),
                              answered ? IO::fdsnStatusText(answer, QByteArray()) : answer.cause);
    return false;
}

bool SourceVisit::ask(const QUrl &url, const QString &address, QString *text)
{
    IO::HttpClient client(settingsFor(TestMSecs));
    const Part part(*this, [&] { client.cancel(); });
    QElapsedTimer clock;
    clock.start();
    const bool answered = client.open(IO::HttpRequest(url));
    const IO::HttpAnswer answer = client.answer();
    const QString host = IO::httpServerName(url);
    if (!answered) {
        *text = QString("%1: %2").arg(host, answer.cause);
        return false;
    }
    const qint64 msecs = clock.elapsed();
    const QByteArray body = client.readUpTo(GreetingSize);
    const bool isPage = IO::isHtml(answer.header("Content-Type"), body);
    // The folder of an archive may well have a page for people, or forbid to list it.
    const bool isFolder = !IO::FdsnAddress::IsOne(address);
    const bool ok = isFolder ? answer.status < 500 : answer.status == 200 && !isPage;
    if (!ok)
        *text =
            QString("%1: %2").arg(host, answer.status == 200 ? tr("a page instead of the service")
                                                             : IO::fdsnStatusText(answer, body));
    else
        *text =
            answerText(host, isFolder || isPage ? QString() : IO::httpBodyText(body, 60), msecs);
    return ok;
}

} // namespace Workbench
