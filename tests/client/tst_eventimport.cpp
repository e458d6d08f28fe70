// SPDX-License-Identifier: LGPL-3.0-or-later

#include "databasetesting.h"
#include "eventtesting.h"

#include <tellarix/client/io/eventexport.h>
#include <tellarix/client/io/eventimport.h>
#include <tellarix/client/io/eventline.h>

#include <QFile>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QtTest>

using namespace Tellarix;
using namespace DatabaseTesting;

namespace {

/** A QuakeML file of random events. */
QString writeFile(const QTemporaryDir &folder, int count, quint32 seed)
{
    QRandomGenerator random(seed);
    QVector<DataModel::EventPtr> events;
    for (int i = 0; i < count; ++i)
        events.append(EventTesting::randomEvent(random, "event/" + std::to_string(i)));
    const QByteArray text = EventTesting::write("quakeml", events);
    QFile file(folder.filePath("events.xml"));
    return file.open(QFile::WriteOnly) && file.write(text) > 0 ? file.fileName() : QString();
}

QByteArray listOf(const IO::DatabaseInterfacePtr &database)
{
    QByteArray list;
    IO::EventArchive(database).forEach({}, [&](const DataModel::EventPtr &event) {
        list += IO::EventLine::Of(*event).toCsv() + '\n';
        return true;
    });
    return list;
}

} // namespace

class TestEventImport : public QObject
{
    Q_OBJECT

private slots:
    void givesTheSameOnAllBackends_data() { addBackends(); }

    void givesTheSameOnAllBackends()
    {
        OPEN_WITH_TABLES(database);
        const QTemporaryDir folder;
        const QString file = writeFile(folder, 60, 5);
        IO::EventImportResult result = IO::importEvents(database, file);
        QVERIFY2(result.ok, qPrintable(result.error));
        QCOMPARE(result.added, 60);
        const QByteArray list = listOf(database);
        QCOMPARE(list.count('\n'), 60);

        result = IO::importEvents(database, file);
        QCOMPARE(result.updated, 60);
        QCOMPARE(listOf(database), list);

        // What the first back end gave is what the others have to give.
        static QByteArray expected;
        if (expected.isEmpty())
            expected = list;
        QCOMPARE(list, expected);
    }

    void storesAllOrNothing_data() { addBackends(); }

    void storesAllOrNothing()
    {
        OPEN_WITH_TABLES(database);
        const QTemporaryDir folder;
        QFile file(writeFile(folder, 40, 6));

        const auto stopped = IO::importEvents(
            database, file.fileName(), [](qint64 done, qint64 total) { return done < total / 2; });
        QVERIFY(!stopped.ok);
        QCOMPARE(stopped.error, QString());
        QCOMPARE(listOf(database), QByteArray());

        QVERIFY(file.resize(file.size() * 3 / 4));
        const auto cut = IO::importEvents(database, file.fileName());
        QVERIFY(!cut.ok);
        QVERIFY2(cut.error.startsWith(file.fileName() + ": line "), qPrintable(cut.error));
        QCOMPARE(cut.added, 0);
        QCOMPARE(listOf(database), QByteArray());
    }

    /** One element that takes up the whole file. */
    void canBeStoppedAnywhere()
    {
        const Scratch scratch("sqlite");
        QTemporaryFile file;
        QVERIFY(file.open());
        file.write("<q:quakeml xmlns:q=\"http://quakeml.org/xmlns/quakeml/1.2\"><more>");
        for (int i = 0; i < 100000; ++i)
            file.write("<a>some text</a>");
        file.flush();
        qint64 seen = 0;
        const auto result =
            IO::importEvents(scratch.openWithTables(), file.fileName(), [&](qint64 done, qint64) {
                seen = done;
                return done < 200000;
            });
        QVERIFY(!result.ok);
        QCOMPARE(result.error, QString());
        QVERIFY2(seen < 300000, qPrintable(QString::number(seen)));
    }

    void exportsAllOrNothing()
    {
        const Scratch scratch("sqlite");
        const QTemporaryDir folder;
        const auto database = scratch.openWithTables();
        QVERIFY(IO::importEvents(database, writeFile(folder, 250, 8)).ok);
        const Core::TimeWindow extent = IO::EventArchive(database).extent();
        IO::EventSelection outside;
        outside.from = extent.endTime();
        IO::EventSelection inside;
        inside.from = extent.startTime();
        inside.to = extent.endTime();
        QCOMPARE(IO::EventArchive(database).count(outside), 0);

        QFile file(folder.filePath("events.csv"));
        QVERIFY(file.open(QFile::WriteOnly) && file.write("precious") > 0);
        file.close();
        const auto size = [&] { return QFileInfo(file.fileName()).size(); };
        IO::EventExportHandler handler;
        QVector<int> told;
        handler.progress = [&](int done, int total) {
            told << done << total;
            return done < 200;
        };
        auto result = IO::exportEvents(database, inside, "csv", file.fileName(), handler);
        QVERIFY(!result.ok && result.error.isEmpty());
        QCOMPARE(told, (QVector<int>{100, 250, 200, 250}));
        QCOMPARE(size(), 8);
        QVERIFY(!IO::exportEvents(database, inside, "doc", file.fileName()).ok);
        QCOMPARE(size(), 8);
        handler = {};
        handler.wants = [](const DataModel::Event &event) { return event.publicID == "event/7"; };
        result = IO::exportEvents(database, inside, "csv", file.fileName(), handler);
        QVERIFY2(result.ok, qPrintable(result.error));
        QCOMPARE(result.written, 1);
        QVERIFY(file.open(QFile::ReadOnly) && file.readAll().contains("\r\nevent/7,"));

        // A disk that is full (the device must be one afterwards), and tables that go meanwhile.
        const QString full = "/dev/full";
        QVERIFY(!QFileInfo(full).isFile());
        result = IO::exportEvents(database, inside, "csv", full);
        QVERIFY2(!result.ok && result.error.contains("No space"), qPrintable(result.error));
        QVERIFY(!QFileInfo(full).isFile());
        handler = {};
        handler.progress = [&](int done, int) {
            return done > 100 || database->execute("alter table Magnitude rename to Lost");
        };
        result = IO::exportEvents(database, inside, "quakeml", file.fileName(), handler);
        QVERIFY(!result.ok);
        QVERIFY2(result.error.contains("Magnitude"), qPrintable(result.error));
    }
};

QTEST_GUILESS_MAIN(TestEventImport)
#include "tst_eventimport.moc"
