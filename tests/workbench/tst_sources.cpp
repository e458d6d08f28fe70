// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench/bench.h"
#include "bench/mapview.h"
#include "bench/selection.h"
#include "bench/stations.h"
#include "client/httpserver.h"
#include "client/seedlinkserver.h"
#include "sources/sourcelist.h"
#include "sources/sourcepanel.h"
#include "sources/sourcerequest.h"
#include "sources/stationtree.h"
#include "sources/timechooser.h"

#include <tellarix/client/io/recordstream.h>

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QToolButton>
#include <QTreeView>
#include <QtTest>

using namespace Tellarix;
using namespace Workbench;

namespace {

const QByteArray ChannelTable =
    "#Network|Station|Location|Channel|Latitude|Longitude|Elevation|Depth|Azimuth|Dip|"
    "SensorDescription|Scale|ScaleFreq|ScaleUnits|SampleRate|StartTime|EndTime\n"
    "XX|ONE|00|BHZ|45|20|0|0|0|-90||1|1|M/S|20|2020-01-01T00:00:00|\n"
    "XX|ONE|00|BHZ|45|20|0|0|0|-90||1|1|M/S|20|2021-01-01T00:00:00|\n"
    "XX|ONE|00|BHN|45|20|0|0|0|0||1|1|M/S|20|2020-01-01T00:00:00|\n"
    "XX|TWO||HHZ|45|-170|0|0|0|-90||1|1|M/S|100|2020-01-01T00:00:00|\n";
const QByteArray StationTable =
    "#Network|Station|Latitude|Longitude|Elevation|SiteName|StartTime|EndTime\n"
    "XX|ONE|45|20|0|Old Mill|2020-01-01T00:00:00|\n"
    "XX|GONE|45|20|0|Nowhere|2020-01-01T00:00:00|\n";

HttpReply stationService(const HttpAsked &asked)
{
    if (asked.target.contains("version"))
        return HttpReply::Of(200, "1.1.50", "Content-Type: text/plain\r\n");
    return HttpReply::Of(200, asked.target.contains("level=station") ? StationTable : ChannelTable);
}

ListedStation station(const char *network, const char *code, const char *site, double longitude,
                      const std::vector<ListedChannel> &channels)
{
    ListedStation result;
    result.network = network;
    result.code = code;
    result.site = site;
    result.latitude = 45;
    result.longitude = longitude;
    result.channels = channels;
    return result;
}

std::shared_ptr<const StationListing> someListing()
{
    const std::vector<ListedChannel> broad{{"00", "BHN", 20, true, true},
                                           {"00", "BHZ", 20, true, true},
                                           {"10", "HHZ", 100, true, true}};
    StationListing listing;
    listing.stations = {station("XX", "ONE", "Old Mill", 20, broad),
                        station("XX", "TWO", "Harbour", 15, broad),
                        station("YY", "ONE", "Mill Hill", 21, {{"", "EHZ", 100, true, false}}),
                        station("YY", "SIX", "", 10, {{"*", "*", 0, true, false}})};
    return std::make_shared<const StationListing>(listing);
}

QString joined(const std::vector<std::string> &texts)
{
    QStringList list;
    for (const std::string &text : texts)
        list.append(QString::fromStdString(text));
    return list.join(' ');
}

} // namespace

class TestSources : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qputenv("XDG_CONFIG_HOME", _folder.path().toLocal8Bit());
        qputenv("XDG_CACHE_HOME", _folder.path().toLocal8Bit());
    }

    void readsBuiltInSources()
    {
        SourceList list(NORVU_SOURCE_DIR "/apps/workbench/sources/sources.json", path("none.json"));
        QCOMPARE(list.read(), QStringList());
        QVERIFY(list.all().size() >= 8);
    }

    void keepsSourcesOfTheUser()
    {
        const QString builtIn =
            write("built-in.json",
                  "{'sources': ["
                  "{'name': 'A', 'live': 'seedlink://a'}, {'name': 'B', 'live': 'seedlink://b'}]}");
        const QString own = path("new/own.json");
        QString error;
        DataSource source;
        source.name = "C";
        source.past = "fdsnws+https://c/d";
        {
            SourceList list(builtIn, own);
            list.read();
            QVERIFY2(list.set(source, "", &error), qPrintable(error));
            source.name = "B";
            QVERIFY(!list.set(source, "C", &error) && error.contains("of this name"));
            QVERIFY(list.set(source, "B", &error));
            QVERIFY(list.setHidden("A", true, &error));
            QVERIFY(!list.remove("A", &error) && error.contains("hidden"));
            source.live = "seedlink://host:none";
            QVERIFY(!list.set(source, "B", &error) && error.startsWith("B: live: "));
        }
        SourceList list(builtIn, own);
        QCOMPARE(list.read(), QStringList());
        QCOMPARE(list.all().size(), 3);
        QVERIFY(list.find("A").isHidden && list.find("C").isOwn);
        QCOMPARE(list.find("B").past, source.past);
        QVERIFY(list.remove("B", &error) && list.setHidden("A", false, &error));
        QCOMPARE(list.find("B").live, QString("seedlink://b"));
        QVERIFY(!list.find("A").isHidden);
    }

    void keepsBrokenFilesAside()
    {
        const QString builtIn = write("built-in.json", "{'sources': []}");
        const std::pair<const char *, const char *> rows[] = {
            {"{'sources': [\n{'name': }]}", "line 2"},
            {"{'sources': [{'name': 'A', 'live': 'seedlink://a'}, {'name': 'B'}]}", "entry 2: B: "},
            {"{'sources': 5}", "no list"},
        };
        QString error;
        for (const auto &[text, cause] : rows) {
            const QString own = write("own.json", text);
            SourceList list(builtIn, own);
            const QString problem = list.read().value(0);
            QVERIFY2(problem.startsWith(own + ": ") && problem.contains(cause),
                     qPrintable(problem));
            QFile aside(problem.section(" as ", -1));
            QVERIFY(aside.open(QFile::ReadOnly) && !QFile::exists(own));
            QCOMPARE(aside.readAll().replace('"', '\''), QByteArray(text));
        }
    }

    void filtersStations_data()
    {
        QTest::addColumn<QString>("search");
        QTest::addColumn<QString>("channels");
        QTest::addColumn<bool>("vertical");
        QTest::addColumn<QString>("streams");
        const QString oneZ = "XX.ONE.00.BHZ ";
        const auto row = [](const char *name, const char *search, const char *channels,
                            bool vertical, const QString &streams) {
            QTest::newRow(name) << search << channels << vertical << streams;
        };
        row("station", "xx.one", "", false, "XX.ONE.00.BHN XX.ONE.00.BHZ XX.ONE.10.HHZ");
        row("vertical", "xx.one", "", true, "XX.ONE.00.BHZ XX.ONE.10.HHZ");
        row("patterns", "xx.one", "bhn, hh?", false, "XX.ONE.00.BHN XX.ONE.10.HHZ");
        row("patterns, vertical", "xx.one", "BHN HH?", true, "XX.ONE.10.HHZ");
        row("location", "xx.one", "10.*", false, "XX.ONE.10.HHZ");
        row("place", "mill", "?HZ", true, "XX.ONE.00.BHZ XX.ONE.10.HHZ YY.ONE..EHZ");
        row("words", "mill yy", "", false, "YY.ONE..EHZ");
        row("wildcard over place", "MILL*", "", false, "YY.ONE..EHZ");
        row("wildcard over code", "T?O", "BHZ", false, "XX.TWO.00.BHZ");
        row("wildcard over both", "Y*.O*", "", false, "YY.ONE..EHZ");
        row("unknown channels", "six", "BH?,00.HH?", false, "YY.SIX.*.BH? YY.SIX.00.HH?");
        row("unknown channels, vertical", "six", "BH?,HHN", true, "YY.SIX.*.BHZ");
        row("all unknown, vertical", "six", "", true, "YY.SIX.*.??Z");
        row("nothing", "seven", "", false, "");
    }
    void filtersStations()
    {
        QFETCH(QString, search);
        QFETCH(QString, channels);
        QFETCH(bool, vertical);
        StationTree tree;
        const QAbstractItemModelTester tester(&tree);
        tree.setListing(someListing());
        tree.setFilter({search, std::nullopt, ChannelPatterns(channels, vertical)});
        tree.markShown();
        QTEST(joined(tree.chosenStreams()), "streams");
    }

    void marksFollowPatternsAndOutliveSearches()
    {
        StationTree tree;
        const QAbstractItemModelTester tester(&tree);
        tree.setListing(someListing());
        const auto show = [&](const QString &search, const char *channels) {
            tree.setFilter({search, std::nullopt, ChannelPatterns(channels)});
        };
        const auto state = [&](const QModelIndex &index) {
            return static_cast<Qt::CheckState>(index.data(Qt::CheckStateRole).toInt());
        };
        show("xx", "BHZ");
        tree.markShown();
        show("", "BH?"); // what a station was chosen with follows
        QCOMPARE(tree.chosenStreams().size(), size_t(4));
        tree.mark({tree.index(0, 0, tree.indexOf("XX.TWO"))}, false);
        QCOMPARE(state(tree.indexOf("XX.TWO")), Qt::PartiallyChecked);
        QCOMPARE(state(tree.index(0, 0)), Qt::PartiallyChecked);
        show("six", "BH?");
        tree.mark({tree.index(0, 0)}, true); // a network with what is shown of it
        tree.setListing(std::make_shared<const StationListing>(*someListing()));
        QCOMPARE(joined(tree.chosenStreams()),
                 QString("XX.ONE.00.BHN XX.ONE.00.BHZ XX.TWO.00.BHZ YY.SIX.*.BH?"));
        show("xx", "HH?");
        QCOMPARE(state(tree.indexOf("XX.ONE")), Qt::Checked);
        QCOMPARE(state(tree.indexOf("XX.TWO")), Qt::Unchecked);

        show("", "");
        tree.setCentre(StationPlace{45, 10});
        tree.sort(StationTree::Distance);
        QCOMPARE(tree.index(0, 0).data().toString(), QString("YY"));
        QCOMPARE(tree.stationAt(tree.index(0, 0, tree.index(1, 0))), QString("XX.TWO"));
        QVERIFY(qAbs(*tree.farthestKm() - 788) < 1);
    }

    void makesRequests_data()
    {
        QTest::addColumn<QString>("live");
        QTest::addColumn<QString>("past");
        QTest::addColumn<QString>("span");
        QTest::addColumn<int>("age"); // of the end of the window, in seconds
        QTest::addColumn<bool>("cached");
        QTest::addColumn<QString>("request");
        const QString live = "seedlink://a:18000";
        const QString past = "fdsnws+https://b";
        const QString window = "&from=2024-01-05T10:00:00&to=2024-01-05T11:00:00";
        const QString streams = "#streams=XX.A..BHZ,XX.B.*.HH?";
        const QString both =
            "joined://?past=fdsnws%2Bhttps%3A%2F%2Fb&live=seedlink%3A%2F%2Fa%3A18000";
        const auto row = [&](const char *name, const QString &l, const QString &p, const char *span,
                             int age, bool cached, const QString &request) {
            QTest::newRow(name) << l << p << span << age << cached << request;
        };
        row("live", live, "", "-6h", 0, true, live + streams + "&from=-6h");
        row("both", live, past, "-6h", 0, false, both + streams + "&from=-6h");
        row("past to the present", "", past, "-1d", 0, false, past + streams + "&from=-1d&to=now");
        row("window", live, past, "", 7200, false, past + streams + window);
        row("window, cached", live, past, "", 7200, true, "cached+" + past + streams + window);
        row("window of late", live, past, "", 60, false, both + streams + window);
        row("window, live only", live, "", "", 7200, true, live + streams + window);
        row("archive of files", "", "archive://" NORVU_SOURCE_DIR, "", 7200, true,
            "archive://" NORVU_SOURCE_DIR + streams + window);
    }
    void makesRequests()
    {
        QFETCH(QString, live);
        QFETCH(QString, past);
        QFETCH(QString, span);
        QFETCH(int, age);
        QFETCH(bool, cached);
        DataSource source;
        source.live = live;
        source.past = past;
        const Core::Time end(2024, 1, 5, 11, 0, 0);
        const RequestTimes times{span, {end - Core::TimeSpan(3600), end}};
        const QString text = requestText(source, {"XX.A..BHZ", "XX.B.*.HH?"}, times, cached,
                                         end + Core::TimeSpan(age));
        QTEST(text, "request");
        std::string error;
        QVERIFY2(IO::RecordStream::Create(text.toStdString(), &error), error.c_str());
    }

    void limitsWindowsAroundEvents()
    {
        EventFacts event;
        event.originTime = Core::Time(2024, 1, 5, 10, 11, 12);
        const auto after = [&](std::optional<double> km) {
            const Core::TimeWindow window = windowAround(event, km);
            return (window.endTime() - event.originTime).length();
        };
        QCOMPARE(after(10), 300.0);
        QCOMPARE(after(1000), 460.0);
        QCOMPARE(after(9000), 1800.0);
        QCOMPARE(after(std::nullopt), 1800.0);
    }

    void keepsListingsForADay()
    {
        StationListing listing = *someListing();
        listing.time = Core::Time(2024, 1, 5, 0, 0, 0);
        const QString folder = path("listings");
        const Core::TimeSpan hour(3600);
        ListingStore(folder).set("a", std::make_shared<const StationListing>(listing));
        const auto found = ListingStore(folder).find("a", listing.time + hour);
        QVERIFY(found);
        QCOMPARE(listingBytes(*found), listingBytes(listing));
        QVERIFY(!ListingStore(folder).find("b", listing.time + hour));
        QVERIFY(!ListingStore(folder).find("a", listing.time + Core::TimeSpan(90000)));

        QByteArray bytes = listingBytes(listing);
        for (const int position : {10, 30, bytes.size() - 1}) {
            QByteArray damaged = bytes;
            damaged[position] = static_cast<char>(damaged[position] ^ 1);
            QVERIFY(!readListing(damaged, &listing));
        }
        QVERIFY(!readListing(bytes.chopped(9), &listing));
    }

    /** From an open panel with a listing at hand. */
    void opensInThreeClicks()
    {
        SeedLinkTesting::SeedLinkServer live;
        QVERIFY(live.start());
        const Core::Time now = Core::Time::GMT();
        for (const char *id : {"XX.ONE.00.BHZ", "XX.TWO..HHZ", "ZZ.NEW..EHZ"})
            live.add(seedRecord(id, now));
        const HttpServer past(stationService);

        Bench bench;
        SourcePanel panel(&bench);
        DataSource source = sourceOf(live, past);
        QString error;
        QVERIFY2(panel.sources()->set(source, "", &error), qPrintable(error));
        panel.setSource(panel.sources()->find(source.name));
        panel.show();
        QCOMPARE(live.connections() + past.connections(), 0);
        panel.list();
        QTRY_VERIFY(!panel.isBusy());
        QVERIFY2(panel.statusText().startsWith("3 stations"), qPrintable(panel.statusText()));
        const ListedStation &one = panel.tree()->listing()->stations[0];
        QCOMPARE(one.site, QString("Old Mill"));
        QCOMPARE(one.channels.size(), size_t(2));
        QVERIFY(one.channels[1].isLive && one.channels[1].isArchived && !one.channels[0].isLive);
        QTRY_VERIFY(bench.stations()->find("XX.ONE") && bench.stations()->find("XX.TWO"));

        const QSignalSpy opened(&bench, SIGNAL(openRequested(QStringList)));
        panel.findChild<QLineEdit *>("search")->setText("xx");
        click<QPushButton>(panel, "Choose &all shown");
        click<QToolButton>(panel, "6 hours");
        click<QPushButton>(panel, "&Open 3 streams");
        QCOMPARE(opened.count(), 1);
        const QString request = opened[0][0].toStringList().value(0);
        QVERIFY2(request.startsWith("joined://?past=cached") &&
                     request.endsWith("#streams=XX.ONE.00.BHN,XX.ONE.00.BHZ,XX.TWO..HHZ&from=-6h"),
                 qPrintable(request));
        QVERIFY(!panel.isVisible());
        QCOMPARE(bench.stations()->all().size(), 2);

        // The next panel has the listing at once, and asks nobody.
        const int connections = live.connections() + past.connections();
        SourcePanel next(&bench);
        next.setSource(next.sources()->find(source.name));
        QCOMPARE(next.tree()->listing()->stations.size(), size_t(3));
        QCOMPARE(live.connections() + past.connections(), connections);
    }

    void followsSelectionAndMap()
    {
        Bench bench;
        SourcePanel panel(&bench);
        panel.tree()->setListing(someListing());
        panel.show();
        auto *rows = panel.findChild<QTreeView *>()->selectionModel();
        bench.selection()->setStations({"XX.TWO", "ZZ.ELSEWHERE"});
        QCOMPARE(rows->selectedRows().size(), 1);
        QCOMPARE(panel.tree()->stationAt(rows->selectedRows()[0]), QString("XX.TWO"));
        rows->select(panel.tree()->indexOf("YY.ONE"),
                     QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        QCOMPARE(bench.selection()->stations(), QStringList{"YY.ONE"});

        bench.mapView()->setRegion(Region::box(QRectF(14, 40, 2, 10)));
        for (auto *box : panel.findChildren<QAbstractButton *>()) {
            if (box->text() == "On the &map only")
                box->click();
        }
        QCOMPARE(panel.tree()->shownCount(), 1);
        bench.mapView()->setRegion(Region::box(QRectF(9, 40, 7, 10)));
        QCOMPARE(panel.tree()->shownCount(), 2);
    }

    void tellsWhatIsWrongWithServers()
    {
        QTcpServer closed;
        QVERIFY(closed.listen(QHostAddress::LocalHost));
        const QString refusing = QString("127.0.0.1:%1").arg(closed.serverPort());
        closed.close();
        const HttpServer past(stationService);
        const HttpServer page(
            [](const HttpAsked &) { return HttpReply::Of(200, "<html>Welcome</html>"); });
        SeedLinkTesting::SeedLinkServer live;
        QVERIFY(live.start());

        Bench bench;
        SourcePanel panel(&bench);
        DataSource source = sourceOf(live, past);
        source.live = "seedlink://" + refusing;
        source.events = "fdsnws+http://" + page.host();
        panel.setSource(source);
        panel.resize(panel.minimumSizeHint());
        panel.show();
        panel.list(); // the other service is of use all the same
        QTRY_VERIFY(!panel.isBusy());
        QVERIFY(panel.tree()->listing());
        QVERIFY2(panel.statusText().contains(refusing + ": "), qPrintable(panel.statusText()));
        panel.test();
        QTRY_VERIFY(!panel.isBusy());
        panel.grab();
        auto *status = panel.findChild<QLabel *>("status");
        auto *open = panel.findChild<QPushButton *>("open");
        QVERIFY(status->geometry().bottom() < open->geometry().top());
        QVERIFY(status->height() >= 4 * status->fontMetrics().lineSpacing());
        const QStringList lines = panel.statusText().split('\n');
        QCOMPARE(lines.size(), 4);
        QVERIFY2(lines[0].startsWith("Live: " + refusing + ": "), qPrintable(lines[0]));
        QVERIFY2(lines[2].startsWith("Stations: http://" + past.host() + " answered in "),
                 qPrintable(lines[2]));
        QVERIFY2(lines[3].startsWith("Events: http://" + page.host() + ": a page"),
                 qPrintable(lines[3]));
        QCOMPARE(live.connections(), 0);
    }

    void endsAtOnceWhenItIsClosed()
    {
        SeedLinkTesting::SeedLinkServer live;
        live.setFault(SeedLinkTesting::Fault::SilentFromStart);
        QVERIFY(live.start());
        const HttpServer past([](const HttpAsked &) { return HttpReply(); });
        Bench bench;
        auto panel = std::make_unique<SourcePanel>(&bench);
        panel->setSource(sourceOf(live, past));
        panel->show();
        panel->list();
        QTRY_VERIFY(live.connections() == 1 && !past.asked().isEmpty());
        QElapsedTimer clock;
        clock.start();
        panel->hide();
        QVERIFY(!panel->isBusy());
        panel.reset(); // waits for the threads
        QVERIFY2(clock.elapsed() < 100, qPrintable(QString::number(clock.elapsed())));
    }

private:
    QString path(const QString &name) const { return _folder.filePath(name); }

    /** Writes a file; single quotes stand for double ones. */
    QString write(const QString &name, QByteArray text) const
    {
        text.replace('\'', '"');
        QFile file(path(name));
        return file.open(QFile::WriteOnly) && file.write(text) == text.size() ? file.fileName()
                                                                              : QString();
    }

    static DataSource sourceOf(const SeedLinkTesting::SeedLinkServer &live, const HttpServer &past)
    {
        DataSource source;
        source.name = "Loopback";
        source.live = QString::fromStdString(live.url());
        source.past = "fdsnws+http://" + past.host();
        return source;
    }

    template <typename Button>
    static void click(const SourcePanel &panel, const QString &text)
    {
        for (Button *button : panel.findChildren<Button *>()) {
            if (button->text() == text && button->isEnabled())
                return QTest::mouseClick(button, Qt::LeftButton);
        }
        QFAIL(qPrintable("no button " + text));
    }

    const QTemporaryDir _folder;
};

QTEST_MAIN(TestSources)
#include "tst_sources.moc"
