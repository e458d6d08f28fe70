// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench/bench.h"
#include "bench/jobs.h"
#include "bench/selection.h"
#include "bench/shownevents.h"
#include "bench/task.h"
#include "client/httpserver.h"
#include "events/emptyreason.h"
#include "events/eventexport.h"
#include "events/eventpanel.h"

#include <norvu/gui/eventlistview.h>
#include <norvu/gui/exportfiledialog.h>
#include <tellarix/client/io/eventarchive.h>

#include <QDateTimeEdit>
#include <QFile>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QToolButton>
#include <QTreeView>
#include <QtTest>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Tellarix;
using namespace Workbench;

namespace {

const QByteArray Table = "time,latitude,longitude,depth,mag,magType,id,place,type\n"
                         "2020-01-01T00:00:00Z,10,20,30,4,mb,a,Here,earthquake\n"
                         "2020-01-02T00:00:00Z,11,21,31,5,mb,b,There,earthquake\n"
                         "2020-01-03T00:00:00Z,12,22,32,6,Mw,c,Elsewhere,not existing\n";

const QByteArray BrokenFile = "<?xml version=\"1.0\"?>\n"
                              "<q:quakeml xmlns:q=\"http://quakeml.org/xmlns/quakeml/1.2\" "
                              "xmlns=\"http://quakeml.org/xmlns/bed/1.2\">\n"
                              "<eventParameters publicID=\"smi:local/1\">\n<event ";

/** A panel, what it told, and files for it. */
struct Desk
{
    Desk()
    {
        QObject::connect(&bench, &Bench::problemsTold,
                         [this](const QStringList &texts) { problems += texts; });
        QObject::connect(bench.tasks(), &Tasks::finished,
                         [this](const Task *task) { failed += !task->problem().isEmpty(); });
        table = write("table.csv", Table);
    }

    QString write(const QString &name, const QByteArray &content)
    {
        QFile file(folder.filePath(name));
        if (!file.open(QFile::WriteOnly) || file.write(content) != content.size())
            qFatal("Can't write %s", qPrintable(file.fileName()));
        return file.fileName();
    }

    void openTable()
    {
        QVERIFY(panel.openSources({table}));
        QTRY_VERIFY(!isBusy());
    }

    bool isBusy() const { return panel.catalogue()->isBusy() || !bench.tasks()->running().empty(); }
    IO::DatabaseInterfacePtr database() const { return panel.catalogue()->database(); }
    QTreeView *tree() const { return panel.list()->table(); }

    bool write(const QString &file, QString *error) const
    {
        return writeEvents(
            database(), listedEvents(tree()->model()), file, [](int, int) { return true; }, error);
    }

    QTemporaryDir folder;
    QString table;
    QStringList problems;
    int failed{0};
    Bench bench;
    EventPanel panel{&bench};
};

/** A server that takes connections and never says a word. */
class SilentServer
{
public:
    SilentServer() : _socket(::socket(AF_INET, SOCK_STREAM, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto *plain = reinterpret_cast<sockaddr *>(&address);
        if (::bind(_socket, plain, size) != 0 || ::listen(_socket, 8) != 0 ||
            ::getsockname(_socket, plain, &size) != 0)
            qFatal("No socket");
        _port = ntohs(address.sin_port);
    }
    ~SilentServer() { ::close(_socket); }

    QString address() const
    {
        return QString("postgresql://anna@127.0.0.1:%1/events?timeout=60").arg(_port);
    }

private:
    int _socket;
    int _port{0};
};

Core::TimeWindow days(int first, int last)
{
    return {Core::Time(2020, 1, first), Core::Time(2020, 1, last)};
}

} // namespace

class TestEventPanel : public QObject
{
    Q_OBJECT

private slots:
    void tellsOfEventUnderTheMouse()
    {
        Desk desk;
        desk.openTable();
        desk.panel.show();
        const QModelIndex row = desk.tree()->model()->index(1, 0);
        const std::string id = desk.panel.list()->fromRow(1).publicID;
        QTest::mouseMove(desk.tree()->viewport(), desk.tree()->visualRect(row).center());
        QTRY_COMPARE(desk.bench.selection()->hoveredEvent().toStdString(), id);
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(desk.tree()->viewport(), &leave);
        QCOMPARE(desk.bench.selection()->hoveredEvent(), QString());
    }

    void followsRegionOfOtherPanels()
    {
        Desk desk;
        desk.openTable();
        const QSignalSpy changed(desk.bench.shownEvents(), SIGNAL(changed()));
        QCOMPARE(desk.bench.shownEvents()->all().size(), 2);
        desk.bench.selection()->setRegion(Region::circle(10, 20, 50));
        QCOMPARE(desk.panel.list()->rowCount(), 1);
        desk.bench.selection()->setRegion(Region::circle(-10, 20, 50));
        QCOMPARE(desk.panel.list()->rowCount(), 0);
        QVERIFY(desk.panel.emptyReason().contains("None of the 2 events"));

        // The others go on showing all of them.
        QCOMPARE(changed.count(), 0);
        QCOMPARE(desk.bench.shownEvents()->all().size(), 2);
        desk.bench.selection()->setRegion(std::nullopt);
        QCOMPARE(desk.panel.list()->rowCount(), 2);
        QCOMPARE(desk.panel.emptyReason(), QString());
        desk.panel.closeAll();
        QCOMPARE(desk.bench.shownEvents()->all().size(), 0);
    }

    void looksAtFilesAndChoosesEvents()
    {
        Desk desk;
        QVERIFY(desk.panel.canOpen(desk.table));
        QVERIFY(!desk.panel.canOpen("some.mseed"));
        desk.openTable();
        QCOMPARE(desk.problems, QStringList());
        QCOMPARE(desk.panel.list()->rowCount(), 2); // the third one is no earthquake
        for (const auto *input : desk.panel.list()->findChildren<QDateTimeEdit *>())
            QCOMPARE(input->minimumDate().year(), 100); // for historical earthquakes

        // Return shows an event again that has been left since.
        const QSignalSpy changed(desk.bench.selection(), SIGNAL(eventChanged()));
        const QSignalSpy shown(desk.bench.selection(), SIGNAL(eventShown()));
        desk.tree()->setCurrentIndex(desk.tree()->model()->index(0, 0));
        for (int round = 0; round < 2; ++round)
            QTest::keyClick(desk.tree(), Qt::Key_Return);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(shown.count(), 2);
        const std::optional<EventFacts> chosen = desk.bench.selection()->chosenEvent();
        QVERIFY(chosen);
        const bool isFirst = chosen->publicID == "a";
        QCOMPARE(chosen->region, QString(isFirst ? "Here" : "There"));

        // What another panel chooses becomes the current row, and nothing comes back.
        EventFacts other;
        other.publicID = isFirst ? "b" : "a";
        desk.bench.selection()->setEvent(other);
        QCOMPARE(QString::fromStdString(desk.panel.list()->currentEvent().publicID),
                 other.publicID);
        QCOMPARE(changed.count(), 2);
    }

    void looksAtFilesTogether()
    {
        Desk desk;
        QByteArray more = Table;
        more.replace(",a,", ",d,").replace(",b,", ",e,").replace(",c,", ",f,");
        const QString second = desk.write("second.csv", more);
        QVERIFY(desk.panel.openSources({desk.table, desk.write("broken.xml", BrokenFile)}));
        QVERIFY(desk.panel.openSources({second})); // while the first ones are being read
        QTRY_VERIFY(!desk.isBusy());
        QCOMPARE(desk.panel.catalogue()->files(), QStringList({"table.csv", "second.csv"}));
        QCOMPARE(desk.panel.list()->rowCount(), 4);
        QCOMPARE(desk.failed, 1);
        QCOMPARE(desk.problems.size(), 2);
        QVERIFY2(desk.problems[0].contains("broken.xml"), qPrintable(desk.problems[0]));
        QCOMPARE(desk.problems[1], QString("table.csv: 3 events added, 0 updated. Nothing was "
                                           "stored of broken.xml."));

        // Of databases there is one at a time, and none is dropped without a word.
        QVERIFY(!desk.panel.openSources({desk.folder.filePath("some.sqlite"), desk.table}));
        QVERIFY(desk.problems.last().contains("some.sqlite"));
    }

    void closesInTheMiddleOfAnImport()
    {
        Desk desk;
        QByteArray large = Table;
        for (int i = 0; i < 50000; ++i)
            large += "2020-01-01T00:00:00Z,10,20,30,4,mb,x" + QByteArray::number(i) + ",,\n";
        QVERIFY(desk.panel.openSources({desk.write("large.csv", large)}));
        Task *task = desk.bench.tasks()->running().value(0);
        QVERIFY(task);
        QTRY_VERIFY(task->progress().done > 0);
        desk.panel.closeAll();
        QTRY_VERIFY(!desk.isBusy());
        QCOMPARE(desk.problems, QStringList("Nothing was stored of large.csv"));
        QVERIFY(!desk.database() && !desk.panel.list());
    }

    void givesUpAServerThatDoesNotAnswer()
    {
        Desk desk;
        const SilentServer server;
        QElapsedTimer clock;
        clock.start();
        QVERIFY(desk.panel.openSources({server.address()}));
        QVERIFY(desk.panel.openSources({server.address()})); // gives the first one up
        QCOMPARE(desk.bench.tasks()->running().size(), 1);
        desk.panel.openSources({desk.table}); // waits
        desk.bench.tasks()->running().first()->cancel();
        QTRY_COMPARE(desk.panel.catalogue()->files(), QStringList("table.csv"));
        QTRY_VERIFY(!desk.isBusy());
        QCOMPARE(desk.panel.list()->rowCount(), 2);
        QCOMPARE(desk.problems, QStringList());
        QVERIFY(clock.elapsed() < 10000);
    }

    void fetchesEventsOfServices()
    {
        QByteArray table("#EventID|Time|Latitude|Longitude|Depth/km|Author|Catalog|Contributor|"
                         "ContributorID|MagType|Magnitude|MagAuthor|EventLocationName\n"
                         "id1|2024-01-05T00:00:00|1|2|3|a|||||4.5||Sea\n");
        std::atomic<int> status{200};
        const HttpServer server([&](const HttpAsked &) {
            return status == 0 ? HttpReply() : HttpReply::Of(status, status == 200 ? table : "no");
        });
        const QString name = "fdsnws+http://" + server.host();
        const QString url = name + "/fdsnws/event/1/query?format=text&minmagnitude=4";
        Desk desk;
        QVERIFY(desk.panel.canOpen(url) && !desk.panel.canOpen(name));
        QVERIFY(desk.panel.openSources({url, desk.table}));
        QTRY_VERIFY(!desk.isBusy());
        QCOMPARE(desk.panel.list()->rowCount(), 3);
        QVERIFY(server.asked().last().target.contains("minmagnitude=4"));
        QCOMPARE(desk.bench.eventStore(), QString());

        // Into a database, once more, and with an error.
        desk.panel.openSources({desk.write("stored.sqlite", "")});
        QTRY_VERIFY(!desk.isBusy());
        desk.panel.catalogue()->open(Catalogue::addressOf(desk.folder.filePath("stored.sqlite")),
                                     Catalogue::Schema::Created);
        QTRY_VERIFY(!desk.isBusy() && !desk.bench.eventStore().isEmpty());
        desk.bench.importEvents({url});
        QTRY_COMPARE(desk.panel.catalogue()->eventCount(), 1);
        QTRY_VERIFY(!desk.isBusy());
        desk.problems.clear();
        status = 400;
        desk.bench.importEvents({url});
        QTRY_VERIFY(!desk.isBusy() && !desk.problems.isEmpty());
        QCOMPARE(desk.problems.first(), name + ": 400 Reason: no");

        // A server that says nothing is given up at once.
        status = 0;
        const int before = server.asked().size();
        desk.bench.importEvents({url});
        QTRY_VERIFY(server.asked().size() > before);
        QElapsedTimer clock;
        clock.start();
        desk.bench.tasks()->running().last()->cancel();
        QTRY_VERIFY(!desk.isBusy());
        QVERIFY2(clock.elapsed() < 500, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(desk.panel.catalogue()->eventCount(), 1);
    }

    void tellsWhyNothingIsThere_data()
    {
        QTest::addColumn<Core::TimeWindow>("window");
        QTest::addColumn<double>("minimumMagnitude");
        QTest::addColumn<double>("maximumLatitude");
        QTest::addColumn<QString>("reason");
        QTest::newRow("time") << days(10, 12) << 0.0 << 90.0
                              << "those of this database are from 2020-01-01";
        QTest::newRow("magnitude")
            << days(1, 12) << 8.0 << 90.0
            << "None of the 3 events of this time passes the filter. Without its "
               "bounds on magnitude there would be 3.";
        QTest::newRow("one of two")
            << days(1, 12) << 8.0 << 11.0 << "Without its bounds on magnitude there would be 2.";
        QTest::newRow("both") << days(1, 12) << 8.0 << -20.0 << "more than one of its bounds";
        QTest::newRow("reversed") << days(12, 1) << 0.0 << 90.0 << "before its start";
    }

    void tellsWhyNothingIsThere()
    {
        QFETCH(Core::TimeWindow, window);
        QFETCH(double, minimumMagnitude);
        QFETCH(double, maximumLatitude);
        QFETCH(QString, reason);
        Desk desk;
        desk.openTable();
        Norvu::Gui::EventFilter filter;
        filter.fromMagnitude = minimumMagnitude;
        filter.toLatitude = maximumLatitude;
        const QString text =
            explainEmptyList(desk.database(), window, desk.panel.catalogue()->extent(), filter);
        QVERIFY2(text.contains(reason), qPrintable(text));
    }

    void keepsTheOldFileIfAnExportFails()
    {
        Desk desk;
        desk.openTable();
        const QString name = desk.folder.filePath("list.xml");
        QString error;
        QVERIFY2(desk.write(name, &error), qPrintable(error));
        QFile file(name);
        QVERIFY(file.open(QFile::ReadOnly));
        const QByteArray before = file.readAll();
        QCOMPARE(before.count("<event "), 2);

        // An event of the list that has left the database meanwhile.
        QVERIFY(IO::EventArchive(desk.database()).remove("a"));
        QVERIFY(!desk.write(name, &error));
        QVERIFY2(error.contains("1 of the 2 events"), qPrintable(error));
        file.seek(0);
        QCOMPARE(file.readAll(), before);
        QVERIFY(!desk.write(desk.folder.filePath("list.doc"), &error));
    }

    /** The dialog stays until the file is whole, and the program goes on meanwhile. */
    void exportsInTheBackground()
    {
        Desk desk;
        desk.openTable();
        desk.panel.list()->exportClicked();
        const auto *dialog = desk.panel.findChild<Norvu::Gui::ExportFileDialog *>();
        QVERIFY(dialog && dialog->isVisible() && !dialog->isModal());
        const QString file = desk.folder.filePath("list.csv");
        dialog->findChild<QLineEdit *>("editFile")->setText(file);
        const QSignalSpy started(desk.bench.tasks(), SIGNAL(started(Workbench::Task *)));
        dialog->findChild<QAbstractButton *>("okButton")->click();
        QCOMPARE(started.count(), 1);
        QVERIFY(!dialog->isVisible() && QFileInfo(file).size() > 100);
    }

    void keepsWhatIsOpenIfAnotherCanNotBe_data()
    {
        QTest::addColumn<QString>("source");
        QTest::newRow("no folder") << "sqlite:///no/such/folder/events.sqlite";
        QTest::newRow("no database") << "no/such/file.db";
        QTest::newRow("truncated") << "broken.xml";
    }

    void keepsWhatIsOpenIfAnotherCanNotBe()
    {
        QFETCH(QString, source);
        Desk desk;
        desk.openTable();
        if (source == "broken.xml")
            source = desk.write(source, BrokenFile);
        desk.panel.openSources({source});
        QTRY_VERIFY(!desk.isBusy());
        QCOMPARE(desk.failed, 1);
        QVERIFY2(desk.problems.join('\n').contains(source.section("://", -1)),
                 qPrintable(desk.problems.join('\n')));
        QCOMPARE(desk.panel.list()->rowCount(), 2);
    }
};

QTEST_MAIN(TestEventPanel)
#include "tst_eventpanel.moc"
