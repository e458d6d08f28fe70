// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench/bench.h"
#include "bench/mapview.h"
#include "bench/selection.h"
#include "bench/stations.h"
#include "client/fdsndata.h"
#include "client/seedlinkserver.h"
#include "openwindow.h"
#include "rowname.h"
#include "sources/eventrequestdialog.h"
#include "sources/sourceeditor.h"
#include "sources/sourcelist.h"
#include "sources/sourcelogin.h"
#include "sources/sourcepanel.h"
#include "sources/sourcerequest.h"
#include "sources/stationtree.h"
#include "sources/timechooser.h"

#include <tellarix/client/io/recordstream.h>
#include <tellarix/client/remote/httpaccounts.h>
#include <tellarix/core/environment.h>

#include <QDateTimeEdit>
#include <QDialogButtonBox>
#include <QDirIterator>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
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

/** Of who has to log in as "anna" with the password "hush-hush". */
HttpReply restricted(const HttpAsked &asked, const std::function<HttpReply()> &reply)
{
    return asked.header("Authorization") == "Basic " + QByteArray("anna:hush-hush").toBase64()
               ? reply()
               : HttpReply::Of(401, "", "WWW-Authenticate: Basic realm=x\r\n");
}

/** All texts that a person can see, or that are kept. */
QStringList textsOf(const QString &folder)
{
    QStringList texts;
    for (const QWidget *widget : QApplication::allWidgets()) {
        texts << widget->windowTitle() << widget->toolTip() << widget->accessibleName();
        for (const char *property : {"displayText", "currentText", "plainText", "title"})
            texts.append(widget->property(property).toString());
        if (!qobject_cast<const QLineEdit *>(widget)) // which may show dots
            texts.append(widget->property("text").toString());
        for (const QAction *action : widget->findChildren<QAction *>())
            texts << action->text() << action->toolTip() << action->data().toString();
        if (const auto *view = qobject_cast<const QAbstractItemView *>(widget);
            view && view->model())
            for (int row = 0; row < view->model()->rowCount(); ++row)
                texts.append(view->model()->index(row, 0).data().toString());
    }
    QDirIterator files(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        if (QFileInfo(file).fileName() != "logins.json" && file.open(QFile::ReadOnly))
            texts.append(file.fileName() + ": " + QString::fromLatin1(file.readAll()));
    }
    return texts;
}

QStringList logged;

void keepLog(QtMsgType, const QMessageLogContext &, const QString &text)
{
    logged.append(text);
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
        Environment::Instance()->refresh();
        QCoreApplication::setOrganizationName("tests");
        QCoreApplication::setApplicationName("sources");
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
            source.live = "host:18000";
            QVERIFY(!list.set(source, "B", &error) && error.contains("is no URL"));
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

    void keepsLoginsApartFromAddresses()
    {
        const HttpServer past([](const HttpAsked &asked) {
            const auto reply = [&] { return stationService(asked); };
            return asked.target.contains("version") ? reply() : restricted(asked, reply);
        });
        Bench bench;
        SourcePanel panel(&bench);
        DataSource source;
        source.name = "Restricted";
        source.past = "fdsnws+http://anna:hush-hush@" + past.host(); // as it was typed in the past
        source.stations = "fdsnws+http://" + past.host() + "/base";
        SourceEditor editor(panel.sources(), source);
        QVERIFY(!textsOf(_folder.path()).filter("anna").isEmpty());
        QCOMPARE(textsOf(_folder.path()).filter("hush"), QStringList());
        editor.accept();
        QCOMPARE(editor.result(), static_cast<int>(QDialog::Accepted));
        source = panel.sources()->find("Restricted");
        QCOMPARE(source.user + ' ' + source.past, "anna fdsnws+http://" + past.host());
        panel.setSource(source);
        panel.list();
        QTRY_VERIFY(!panel.isBusy());
        QVERIFY2(panel.statusText().startsWith("2 stations"), qPrintable(panel.statusText()));
        panel.tree()->markShown();
        QVERIFY2(panel.request().contains("fdsnws+http://anna@"), qPrintable(panel.request()));
        QCOMPARE((textsOf(_folder.path()) << panel.request()).filter("hush"), QStringList());

        // A wrong password is told, without it.
        QString error;
        const auto tested = [&] { return SourceVisit().test(source.withUserInAddresses()).at(0); };
        QVERIFY2(tested().ok, qPrintable(tested().text));
        QVERIFY(keepPassword(*panel.sources(), source, source, "hush-wrong", &error));
        QVERIFY2(!tested().ok && tested().text.contains("login failed"), qPrintable(tested().text));
        panel.list();
        QTRY_VERIFY(!panel.isBusy());
        QVERIFY2(panel.statusText().contains("401 Reason, the login failed") &&
                     !panel.statusText().contains("hush"),
                 qPrintable(panel.statusText()));
        QVERIFY(panel.sources()->remove("Restricted", &error));
        QVERIFY(keepPassword(*panel.sources(), source, DataSource(), QString(), &error));
        QVERIFY(!hasPassword(source));
    }

    /** Whoever types it into an address keeps it from all that is shown and kept. */
    void showsPasswordsNowhere()
    {
        FdsnData data;
        data.add("XX.ONE.00.BHZ", "2024-01-05T00:00:30Z", 20);
        const HttpServer past([&](const HttpAsked &asked) {
            return restricted(asked, [&] { return data.reply(asked); });
        });
        const QString rest = "@" + past.host() +
                             "#streams=XX.ONE.00.BHZ,XX.TWO..HHZ"
                             "&from=2024-01-05&to=2024-01-05T01:00:00";
        const auto before = qInstallMessageHandler(keepLog);
        {
            WaveformTesting::OpenWindow window({});
            window.window.setInteractive(true);
            const QSignalSpy told(window.window.bench(), SIGNAL(problemsTold(QStringList)));
            window.window.open({"cached+fdsnws+http://anna:hush-hush" + rest});
            QTRY_VERIFY(window.isIdle() && window.view->items().size() > 0);
            window.window.open({"fdsnws+http://anna:hush-wrong" + rest});
            QTRY_VERIFY(!told.isEmpty() && window.isIdle());
            QVERIFY(told[0][0].toStringList().join(' ').contains("401 Reason"));
            for (QMenu *menu : window.window.findChildren<QMenu *>())
                emit menu->aboutToShow();
            QVERIFY(!textsOf(_folder.path()).filter("http://anna@" + past.host()).isEmpty());
            QCOMPARE((textsOf(_folder.path()) + logged).filter("hush"), QStringList());
            window.window.setInteractive(false);
        }
        qInstallMessageHandler(before);
        QCOMPARE(textsOf(_folder.path()).filter("hush"), QStringList());
    }

    void asksForEvents()
    {
        Bench bench;
        bench.mapView()->setRegion(Region::box(QRectF(170, -20, 30, 10)));
        DataSource source;
        source.name = "With events";
        source.events = "fdsnws+https://b.org/base/event/1/query?catalog=A B&minmag=1";
        source.past = "fdsnws+https://b.org";
        source.user = "anna";
        EventRequestDialog dialog(&bench, {DataSource(), source}, "Another");
        dialog.findChild<QPushButton *>("mapRegion")->click();
        const auto edits = dialog.findChildren<QDateTimeEdit *>();
        QCOMPARE(edits.size(), 2);
        edits[0]->setDateTime(QDateTime({2024, 1, 5}, {1, 2, 3}, Qt::UTC));
        QCOMPARE(dialog.request().section('?', 0, 0),
                 QString("fdsnws+https://anna@b.org/base/event/1/query"));
        const QString words = dialog.request().section('?', 1);
        for (const char *word :
             {"catalog=A%20B", "minmagnitude=1&", "starttime=2024-01-05T01:02:03",
              "minlatitude=-20", "maxlatitude=-10", "minlongitude=170", "maxlongitude=-160"})
            QVERIFY2(words.contains(word), qPrintable(words));
        auto *fetch = dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok);
        QVERIFY(fetch->isEnabled() && !dialog.isStored());
        edits[0]->setDateTime(edits[1]->dateTime());
        QVERIFY(!fetch->isEnabled());
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
