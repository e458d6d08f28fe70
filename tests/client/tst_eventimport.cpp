// SPDX-License-Identifier: LGPL-3.0-or-later

#include "databasetesting.h"
#include "eventtesting.h"

#include <tellarix/client/io/eventimport.h>
#include <tellarix/client/io/eventsummary.h>
#include <tellarix/client/io/eventwriter.h>

#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QtTest>

using namespace Tellarix;
using namespace DatabaseTesting;

namespace {

/** A QuakeML file of random events. */
QString writeFile(const QTemporaryDir &folder, int count, quint32 seed)
{
    QFile file(folder.filePath("events.xml"));
    if (!file.open(QFile::WriteOnly))
        return QString();
    QRandomGenerator random(seed);
    const auto writer = IO::EventWriter::Create("quakeml", file);
    bool ok = writer->begin();
    for (int i = 0; i < count; ++i)
        ok = ok && writer->write(*EventTesting::randomEvent(random, "event/" + std::to_string(i)));
    return ok && writer->end() ? file.fileName() : QString();
}

QByteArray listOf(const IO::DatabaseInterfacePtr &database)
{
    QByteArray list;
    IO::EventArchive(database).forEach({}, [&](const DataModel::EventPtr &event) {
        list += IO::EventSummary::Of(*event).toCsv() + '\n';
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
        const Scratch scratch;
        SKIP_WITHOUT_SERVER(scratch);
        const QTemporaryDir folder;
        const auto database = scratch.openWithTables();
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
        const Scratch scratch;
        SKIP_WITHOUT_SERVER(scratch);
        const QTemporaryDir folder;
        const auto database = scratch.openWithTables();
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

    void namesWhatCanNotBeRead()
    {
        const Scratch scratch("sqlite");
        const auto result = IO::importEvents(scratch.openWithTables(), "/no/such/file.xml");
        QVERIFY(!result.ok);
        QVERIFY2(result.error.startsWith("/no/such/file.xml: "), qPrintable(result.error));
    }
};

QTEST_GUILESS_MAIN(TestEventImport)
#include "tst_eventimport.moc"
