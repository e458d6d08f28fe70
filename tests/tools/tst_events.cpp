// SPDX-License-Identifier: LGPL-3.0-or-later

#include "toolrun.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

namespace {

const QByteArray Table =
    "time,latitude,longitude,depth,mag,magType,id,place,type\n"
    "2020-01-02T03:04:05.123456Z,1.25,-2.5,10.125,4.5,mb,b,\"A \"\"b\"\", c\",earthquake\n"
    "2019-01-02T03:04:05Z,-60,179.9,,,,a,,\n";

/** A folder with a database, and calls of "tellarix events" on it. */
struct Bench
{
    QString write(const QString &name, const QByteArray &text) const
    {
        QFile file(folder.filePath(name));
        return file.open(QFile::WriteOnly) && file.write(text) == text.size() ? file.fileName()
                                                                              : QString();
    }
    Run call(const QStringList &arguments) const
    {
        return run(QStringList{"events"} + arguments +
                   QStringList{"--db", "sqlite://" + folder.filePath("events.sqlite")});
    }

    QTemporaryDir folder;
};

} // namespace

class TestEvents : public QObject
{
    Q_OBJECT

private slots:
    void listsWhatWasImported()
    {
        const Bench bench;
        const QString file = bench.write("table", Table);
        QCOMPARE(bench.call({"import", file}).output, file + ": 2 events added, 0 updated\n");
        QCOMPARE(bench.call({"import", file}).output, file + ": 0 events added, 2 updated\n");

        const Run list = bench.call({"list", "--json"});
        QCOMPARE(list.status, 0);
        QCOMPARE(
            QJsonDocument(list.json()).toJson(QJsonDocument::Compact),
            QByteArray("[{\"depth\":null,\"id\":\"a\",\"latitude\":-60,\"longitude\":179.9,"
                       "\"magnitude\":null,\"magnitudeType\":null,\"phases\":null,\"region\":null,"
                       "\"status\":null,\"time\":\"2019-01-02T03:04:05.000000Z\",\"type\":null},"
                       "{\"depth\":10.125,\"id\":\"b\",\"latitude\":1.25,\"longitude\":-2.5,"
                       "\"magnitude\":4.5,\"magnitudeType\":\"mb\",\"phases\":null,"
                       "\"region\":\"A \\\"b\\\", c\",\"status\":null,"
                       "\"time\":\"2020-01-02T03:04:05.123456Z\",\"type\":\"earthquake\"}]"));
        QCOMPARE(bench.call({"list", "--json", "--from", "2019-06-01"}).json().size(), 1);
        QCOMPARE(bench.call({"list", "--json", "--to", "2019-01-02T03:04:05"}).json().size(), 1);
        QCOMPARE(bench.call({"list", "--json", "--min-magnitude", "4.6"}).json().size(), 0);
        QCOMPARE(bench.call({"list", "--json", "--max-latitude", "-1"}).json().size(), 1);
    }

    void exportsWhatCanBeImported_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("QuakeML") << "events.xml";
        QTest::newRow("CSV") << "events.csv";
    }

    void exportsWhatCanBeImported()
    {
        QFETCH(QString, name);
        const Bench bench;
        const Bench other;
        QCOMPARE(bench.call({"import", bench.write("table", Table)}).status, 0);
        const QString file = bench.folder.filePath(name);
        QCOMPARE(bench.call({"export", file}).status, 0);
        QCOMPARE(other.call({"import", file}).status, 0);
        QCOMPARE(other.call({"list", "--csv"}).output, bench.call({"list", "--csv"}).output);
    }

    void tellsWhatIsWrongAndLosesNothing()
    {
        const Bench bench;
        QCOMPARE(bench.call({"import", bench.write("table", Table)}).status, 0);
        const QString cut = bench.write("cut", Table + "2021-01-01,1,2\n");
        const Run import = bench.call({"import", cut});
        QCOMPARE(import.status, 1);
        QVERIFY2(import.errors.contains(cut + ": line 4: 3 fields instead of 9"),
                 qPrintable(import.errors));
        QCOMPARE(bench.call({"list", "--json"}).json().size(), 2);

        const Run written = bench.call({"export", bench.folder.filePath("none/events.xml")});
        QCOMPARE(written.status, 1);
        QVERIFY2(written.errors.contains("none/events.xml: No such file"),
                 qPrintable(written.errors));

        const Bench other;
        const Run missing = other.call({"import", cut, other.folder.filePath("missing.xml")});
        QCOMPARE(missing.status, 1);
        QVERIFY2(missing.errors.contains("missing.xml: No such file"), qPrintable(missing.errors));
        QCOMPARE(QDir(other.folder.path()).entryList(QDir::Files), QStringList());
    }

    void storesNothingOfAKilledImport()
    {
        const Bench bench;
        QCOMPARE(bench.call({"import", bench.write("before", Table)}).status, 0);
        QByteArray table = "time,latitude,longitude,id\n";
        for (int i = 0; i < 30000; ++i)
            table += "2020-01-01T00:00:00Z,1,2,new" + QByteArray::number(i) + '\n';
        const QString file = bench.write("table", table);

        // Killed when the database has begun to write what the transaction holds.
        QProcess process;
        process.start(program(), {"events", "import", file, "--db",
                                  "sqlite://" + bench.folder.filePath("events.sqlite")});
        QFileInfo log(bench.folder.filePath("events.sqlite-wal"));
        log.setCaching(false);
        QTRY_VERIFY_WITH_TIMEOUT(log.size() > 500000, 30000);
        process.kill();
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitStatus(), QProcess::CrashExit);
        QCOMPARE(bench.call({"list", "--json"}).json().size(), 2);
        QCOMPARE(bench.call({"import", file}).output, file + ": 30000 events added, 0 updated\n");
    }

    void refusesWrongUse_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("reason");
        const QStringList database{"--db", "sqlite:///tmp/none/events.sqlite"};
        QTest::newRow("nothing") << QStringList{} << "no action given";
        QTest::newRow("action") << QStringList{"drop"} + database << "unknown action \"drop\"";
        QTest::newRow("no database") << QStringList{"list"} << "no database given";
        QTest::newRow("no file") << QStringList{"import"} + database << "no file to import";
        QTest::newRow("form") << QStringList{"export", "events.doc"} + database
                              << "events.doc: say --quakeml";
        QTest::newRow("two forms")
            << QStringList{"list", "--csv", "--json"} + database << "can't both be";
        QTest::newRow("number") << QStringList{"list", "--min-depth", "deep"} + database
                                << "--min-depth: \"deep\" is no number";
    }

    void refusesWrongUse()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, reason);
        const Run result = run(QStringList{"events"} + arguments);
        QCOMPARE(result.status, 2);
        QVERIFY2(result.errors.contains(reason), qPrintable(result.errors));
    }
};

QTEST_GUILESS_MAIN(TestEvents)
#include "tst_events.moc"
