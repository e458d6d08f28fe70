// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench/bench.h"
#include "bench/jobs.h"
#include "bench/selection.h"
#include "bench/task.h"
#include "events/emptyreason.h"
#include "events/eventexport.h"
#include "events/eventpanel.h"

#include <norvu/gui/eventlistview.h>
#include <tellarix/client/io/eventarchive.h>

#include <QFile>
#include <QTemporaryDir>
#include <QToolButton>
#include <QTreeView>
#include <QtTest>

using namespace Tellarix;
using namespace Workbench;

namespace {

const QByteArray Table = "time,latitude,longitude,depth,mag,magType,id,place,type\n"
                         "2020-01-01T00:00:00Z,10,20,30,4,mb,a,Here,earthquake\n"
                         "2020-01-02T00:00:00Z,11,21,31,5,mb,b,There,earthquake\n"
                         "2020-01-03T00:00:00Z,12,22,32,6,Mw,c,Elsewhere,not existing\n";

/** A panel, what it told, and files for it. */
struct Desk
{
    Desk()
    {
        QObject::connect(&bench, &Bench::problemsTold,
                         [this](const QStringList &texts) { problems += texts; });
        QFile file(folder.filePath("table.csv"));
        if (file.open(QFile::WriteOnly))
            file.write(Table);
        table = file.fileName();
    }

    void openTable()
    {
        QVERIFY(panel.openSources({table}));
        QTRY_VERIFY(!panel.catalogue()->isImporting());
        QTRY_COMPARE(bench.tasks()->running().size(), 0);
    }

    QTreeView *tree() const { return panel.findChild<QTreeView *>("treeView"); }

    QTemporaryDir folder;
    QString table;
    QStringList problems;
    Bench bench;
    EventPanel panel{&bench};
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
    void looksAtFilesAndChoosesEvents()
    {
        Desk desk;
        QVERIFY(desk.panel.canOpen(desk.table));
        QVERIFY(!desk.panel.canOpen("some.mseed"));
        desk.openTable();
        QCOMPARE(desk.problems, QStringList());
        QCOMPARE(desk.panel.list()->rowCount(), 2); // the third one is no earthquake

        const QSignalSpy changed(desk.bench.selection(), SIGNAL(eventChanged()));
        desk.tree()->setCurrentIndex(desk.tree()->model()->index(0, 0));
        QTest::keyClick(desk.tree(), Qt::Key_Return);
        QCOMPARE(changed.count(), 1);
        const std::optional<EventSummary> chosen = desk.bench.selection()->chosenEvent();
        QVERIFY(chosen);
        const bool isFirst = chosen->publicID == "a";
        QCOMPARE(chosen->region, QString(isFirst ? "Here" : "There"));

        // What another panel chooses becomes the current row, and nothing comes back.
        EventSummary other;
        other.publicID = isFirst ? "b" : "a";
        desk.bench.selection()->setEvent(other);
        QCOMPARE(QString::fromStdString(desk.panel.list()->currentEvent().publicID),
                 other.publicID);
        QCOMPARE(changed.count(), 2);
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
        const QString text = explainEmptyList(desk.panel.catalogue()->database(), window,
                                              desk.panel.catalogue()->extent(), filter);
        QVERIFY2(text.contains(reason), qPrintable(text));
    }

    void keepsTheOldFileIfAnExportFails()
    {
        Desk desk;
        desk.openTable();
        const QString name = desk.folder.filePath("list.xml");
        QString error;
        QVERIFY2(
            writeEvents(desk.panel.catalogue()->database(), desk.tree()->model(), name, &error),
            qPrintable(error));
        QFile file(name);
        QVERIFY(file.open(QFile::ReadOnly));
        const QByteArray before = file.readAll();
        QCOMPARE(before.count("<event "), 2);

        // An event of the list that has left the database meanwhile.
        QVERIFY(IO::EventArchive(desk.panel.catalogue()->database()).remove("a"));
        QVERIFY(
            !writeEvents(desk.panel.catalogue()->database(), desk.tree()->model(), name, &error));
        QVERIFY2(error.contains("1 of the 2 events"), qPrintable(error));
        file.seek(0);
        QCOMPARE(file.readAll(), before);
        QVERIFY(!writeEvents(desk.panel.catalogue()->database(), desk.tree()->model(),
                             desk.folder.filePath("list.doc"), &error));
    }

    void keepsWhatIsOpenIfAnotherCanNotBe()
    {
        Desk desk;
        desk.openTable();
        QVERIFY(!desk.panel.openSources({"sqlite:///no/such/folder/events.sqlite"}));
        QCOMPARE(desk.problems.size(), 1);
        QVERIFY2(desk.problems[0].contains("/no/such/folder/events.sqlite"),
                 qPrintable(desk.problems[0]));
        QCOMPARE(desk.panel.list()->rowCount(), 2);
    }
};

QTEST_MAIN(TestEventPanel)
#include "tst_eventpanel.moc"
