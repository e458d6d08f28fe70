// SPDX-License-Identifier: LGPL-3.0-or-later

#include "databasetesting.h"
#include "eventtesting.h"

#include <tellarix/client/io/eventexport.h>
#include <tellarix/client/io/eventimport.h>
#include <tellarix/client/io/eventline.h>

#include <QtTest>

#include <cmath>
#include <limits>

#include <client/databasetesting.h>
#include <client/eventtesting.h>

using namespace Tellarix;
using namespace DatabaseTesting;

namespace {

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
const Core::Time Base(2024, 5, 17, 10, 11, 12, 345678);

template <typename T>
Core::SmartPointer<T> solution(const std::string &publicID)
{
    Core::SmartPointer<T> made(new T);
    made->publicID = publicID;
    return made;
}

/** An event with one origin and one magnitude. */
DataModel::EventPtr simpleEvent(const std::string &publicID, Core::Time time, double magnitude = 5,
                                double latitude = 40)
{
    const auto event = solution<DataModel::Event>(publicID);
    event->origins = {solution<DataModel::Origin>(publicID + "/o")};
    event->origins[0]->time = time;
    event->origins[0]->latitude = latitude;
    event->magnitudes = {solution<DataModel::Magnitude>(publicID + "/m")};
    event->magnitudes[0]->magnitude = magnitude;
    return event;
}

/** All that an event holds, as far as QuakeML does, and the rest. */
QByteArray describe(const DataModel::EventPtr &event)
{
    if (!event)
        return "no event";
    QByteArray text = EventTesting::write("quakeml", {event});
    const auto add = [&](const auto &solution) {
        text += solution->creationInfo.modificationTime.iso().c_str() + QByteArray("\n");
    };
    add(event);
    std::for_each(event->origins.begin(), event->origins.end(), add);
    std::for_each(event->magnitudes.begin(), event->magnitudes.end(), add);
    std::for_each(event->focalMechanisms.begin(), event->focalMechanisms.end(), add);
    return text;
}

/** Counts of rows in all tables, so that none is left behind. */
QStringList rowCounts(IO::DatabaseInterface &database)
{
    QStringList counts;
    for (const char *table :
         {"PublicObject", "Event", "EventDescription", "Origin", "Magnitude", "FocalMechanism"})
        counts << rowsOf(database, std::string("select count(*) from ") + table);
    return counts;
}

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

class EventArchiveTest : public QObject
{
    Q_OBJECT

private slots:
    void keepsAllThatAnEventHolds_data() { addBackends(); }
    void keepsAllThatAnEventHolds()
    {
        OPEN_WITH_TABLES(database);
        IO::EventArchive archive(database);
        QString error;

        const quint32 seed = QRandomGenerator::global()->generate();
        qInfo("seed %u", seed);
        QRandomGenerator random(seed);
        std::vector<DataModel::EventPtr> events{solution<DataModel::Event>("bare")};
        for (int i = 0; i < 40; ++i)
            events.push_back(EventTesting::randomEvent(random, "event '" + std::to_string(i)));
        // The same type twice, none at all, and ids that differ by a blank.
        events[1]->descriptions = {
            {"a ", "region name"}, {"", ""}, {"c", "region name"}, {"d", ""}};
        events[2]->origins.push_back(EventTesting::randomOrigin(random, "blank"));
        events[2]->origins.push_back(EventTesting::randomOrigin(random, "blank "));
        events.push_back(simpleEvent("extreme", Core::Time(365, 7, 21, 5, 0, 0, 1)));
        events.back()->preferredOriginID = "extreme/o";
        events.back()->preferredMagnitudeID = "extreme/m";
        events.back()->origins[0]->longitude = std::numeric_limits<double>::denorm_min();
        events.back()->magnitudes[0]->magnitude = std::numeric_limits<double>::max();
        for (const DataModel::EventPtr &event : events)
            QVERIFY2(archive.write(*event, &error), qPrintable(error));
        for (const DataModel::EventPtr &event : events)
            QCOMPARE(describe(archive.read(event->publicID, &error)), describe(event));
        const auto unlocated = simpleEvent("unlocated", Core::Time(), NaN, NaN);
        QVERIFY2(archive.write(*unlocated, &error), qPrintable(error));
        const auto readBack = archive.read("unlocated");
        QVERIFY(!readBack->origins[0]->time.value().valid());
        QVERIFY(std::isnan(readBack->origins[0]->latitude.value()));
        QVERIFY(std::isnan(readBack->magnitudes[0]->magnitude.value()));
        events.push_back(unlocated);

        // What is written again takes the place of what was there, with nothing left behind.
        bool wasThere = false;
        const auto smaller = simpleEvent(events[1]->publicID, Base);
        QVERIFY2(archive.write(*smaller, &error, &wasThere), qPrintable(error));
        QVERIFY(wasThere);
        QCOMPARE(archive.read(smaller->publicID)->magnitudes.size(), size_t(1));
        QVERIFY2(archive.write(*simpleEvent("other", Base), &error, &wasThere), qPrintable(error));
        QVERIFY(!wasThere);
        events.push_back(simpleEvent("other", Base));
        for (const DataModel::EventPtr &event : events)
            QVERIFY2(archive.remove(event->publicID, &error), qPrintable(error));
        QVERIFY(archive.remove("never there", &error));
        QVERIFY(!archive.read("other", &error));
        QCOMPARE(error, QString());
        QCOMPARE(rowCounts(*database), QStringList({"0", "0", "0", "0", "0", "0"}));
    }

    void givesTheSameRows_data() { addBackends(); }
    void givesTheSameRows()
    {
        OPEN_WITH_TABLES(database);
        IO::EventArchive archive(database);

        const auto full = simpleEvent("b", Core::Time(2024, 3, 31, 2, 30, 0, 7), 0.1 + 0.2, 1e-5);
        full->type = std::string("earth\0quake", 11);
        full->descriptions = {{"O'Higgins; 50 % \\", "region name"},
                              {"again", "region name"},
                              {"name", "earthquake name"}};
        full->magnitudes[0]->type = "Mw";
        full->origins[0]->longitude = -180;
        full->origins[0]->depth = DataModel::RealQuantity(1.0 / 3);
        full->origins[0]->quality.usedPhaseCount = 12;
        full->origins[0]->evaluationMode = "manual";
        full->origins[0]->evaluationStatus = "reviewed";
        full->focalMechanisms = {solution<DataModel::FocalMechanism>("b/f")};
        full->focalMechanisms[0]->nodalPlane1 = DataModel::NodalPlane(359.9, 1e22, -90);
        const auto old = simpleEvent("a", Core::Time(1969, 12, 31, 23, 59, 59, 999999), -2.5);
        old->origins[0]->longitude = -1.2345678901234567e-100;
        const auto withoutMagnitude = simpleEvent("c", Base);
        withoutMagnitude->magnitudes.clear();
        const auto tooSmall = simpleEvent("d", Base, -2.6);
        for (const auto &event : {full, old, withoutMagnitude, tooSmall}) {
            QString error;
            QVERIFY2(archive.write(*event, &error), qPrintable(error));
        }

        const Core::Time begin(1969, 12, 31, 23, 59, 59);
        const Core::Time end(2024, 6, 1);
        QCOMPARE(rowsOf(*database, listStatement(*database, begin, end) + " order by 1"),
                 QStringList(
                     {"1969-12-31 "
                      "23:59:59|999999|-2.5|NULL|NULL|40|-1.2345678901234567e-100|NULL|NULL|NULL|"
                      "NULL|NULL|NULL|a|NULL|NULL",
                      "2024-03-31 02:30:00|7|0.30000000000000004|Mw|12|1e-05|-180|"
                      "0.3333333333333333|reviewed|manual|359.9|1e+22|-90|b|earth�quake|"
                      "O'Higgins; 50 % \\"}));
        QCOMPARE(rowsOf(*database, listStatement(*database, begin, end, true)), QStringList("2"));
        QCOMPARE(rowsOf(*database, listStatement(*database, {}, begin, true)), QStringList("1"));
        QCOMPARE(rowsOf(*database, listStatement(*database, end, Core::Time(20000, 1, 1), true)),
                 QStringList("0"));
    }

    void makesIdsThatAreMissingOrTaken_data() { addBackends(); }
    void makesIdsThatAreMissingOrTaken()
    {
        OPEN_WITH_TABLES(database);
        IO::EventArchive archive(database);
        QString error;
        QVERIFY2(archive.write(*simpleEvent("first", Base), &error), qPrintable(error));

        const auto event = simpleEvent("second", Base);
        event->origins = {solution<DataModel::Origin>(""), solution<DataModel::Origin>("first/o"),
                          solution<DataModel::Origin>("second")};
        event->preferredOriginID = "first/o";
        event->magnitudes[0]->originID = "first/o";
        event->magnitudes.push_back(solution<DataModel::Magnitude>("second/m"));
        event->focalMechanisms = {solution<DataModel::FocalMechanism>("second/origin/1")};
        event->focalMechanisms[0]->triggeringOriginID = "elsewhere";
        for (int i = 0; i < 2; ++i) {
            QVERIFY2(archive.write(*event, &error), qPrintable(error));
            const auto stored = archive.read("second");
            QCOMPARE(stored->origins[0]->publicID, std::string("second/origin/1"));
            QCOMPARE(stored->origins[1]->publicID, std::string("second/origin/2"));
            QCOMPARE(stored->origins[2]->publicID, std::string("second/origin/3"));
            QCOMPARE(stored->preferredOriginID, std::string("second/origin/2"));
            QCOMPARE(stored->magnitudes[0]->originID, std::string("second/origin/2"));
            QCOMPARE(stored->magnitudes[1]->publicID, std::string("second/magnitude/2"));
            QCOMPARE(stored->focalMechanisms[0]->publicID, std::string("second/mechanism/1"));
            QCOMPARE(stored->focalMechanisms[0]->triggeringOriginID, std::string("elsewhere"));
        }
        QCOMPARE(archive.read("first")->preferredOriginID, std::string("first/o"));
        QVERIFY(!archive.write(*solution<DataModel::Event>("first/o"), &error));
        QVERIFY2(error.startsWith("event first/o: its publicID"), qPrintable(error));
    }

    void refusesWhatCannotBeStored()
    {
        const Scratch scratch("sqlite");
        const auto database = scratch.openWithTables();
        IO::EventArchive archive(database);
        const std::string longText(256, 'x');
        const auto late = simpleEvent("late", Core::Time(10000, 1, 1));
        const auto early = simpleEvent("early", Core::Time(0, 12, 31));
        const auto created = simpleEvent("created", Base);
        created->magnitudes[0]->creationInfo.creationTime = Core::Time(-4000, 1, 1);
        const auto described = simpleEvent("described", Base);
        described->descriptions = {{"", longText}};
        const auto longSolution = simpleEvent("solution", Base);
        longSolution->origins[0]->publicID = longText;
        const auto unnamed = simpleEvent(longText.substr(5), Base);
        unnamed->origins[0]->publicID.clear();
        const std::pair<DataModel::EventPtr, const char *> rows[] = {
            {simpleEvent("", Base), "an event without a publicID"},
            {late, "event late: the year 10000 of time_value"},
            {early, "event early: the year 0 of time_value"},
            {created, "event created: the year -4000 of creationInfo_creationTime"},
            {described, "event described: its type of description is longer than 255"},
            {longSolution, "event solution: its publicID is longer than 255"},
            {unnamed, "event xxxxxx"},
        };
        for (const auto &[event, message] : rows) {
            QString error;
            QVERIFY2(!archive.write(*event, &error), message);
            QVERIFY2(error.startsWith(message), qPrintable(error));
        }
        QCOMPARE(rowCounts(*database), QStringList({"0", "0", "0", "0", "0", "0"}));
    }

    void selectsInTheOrderOfTime_data() { addBackends(); }
    void selectsInTheOrderOfTime()
    {
        OPEN_WITH_TABLES(database);
        IO::EventArchive archive(database);

        // More than a batch of the same second, with and without the same fraction.
        QVERIFY(database->beginTransaction());
        QVERIFY(archive.write(*solution<DataModel::Event>("timeless")));
        for (int i = 449; i >= 0; --i)
            QVERIFY(archive.write(*simpleEvent(std::to_string(1000 + i),
                                               Base + Core::TimeSpan(0, i / 225), i % 10, i % 7)));
        QVERIFY(archive.write(*simpleEvent("0999", Base - Core::TimeSpan(1.0))));
        QVERIFY(database->commit());
        // Side by side, or a list of them takes half as long again.
        if (database->backend() == IO::DatabaseInterface::Backend::SQLite)
            QCOMPARE(rowsOf(*database, "select max(_oid) - min(_oid) + 1 - count(*) from Origin"),
                     QStringList("0"));

        const auto select = [&](const IO::EventSelection &selection, int limit = INT_MAX) {
            QStringList ids;
            QString error;
            const auto take = [&](const DataModel::EventPtr &event) {
                ids << QString::fromStdString(event->publicID);
                return ids.size() < limit;
            };
            const bool isWhole = archive.forEach(selection, take, &error);
            if (isWhole != (ids.size() < limit) || !error.isEmpty())
                ids << "failed" << error;
            else if (isWhole && ids.size() != archive.count(selection, &error))
                ids << "counted otherwise" << error;
            return ids;
        };
        const QStringList all = select({});
        QCOMPARE(all.size(), 452);
        QCOMPARE(all.first(), QString("0999"));
        QCOMPARE(all.last(), QString("timeless"));
        const auto isSecondHalf = [](const QString &id) { return id.toInt() >= 1225; };
        QVERIFY(std::is_partitioned(all.begin(), all.end() - 1,
                                    [&](const QString &id) { return !isSecondHalf(id); }));
        QCOMPARE(QSet<QString>(all.begin(), all.end()).size(), all.size());
        QCOMPARE(select({}, 250), all.mid(0, 250));

        IO::EventSelection later;
        later.from = Base + Core::TimeSpan(0, 1);
        QCOMPARE(select(later).size(), 225);
        IO::EventSelection earlier;
        earlier.to = Base;
        QCOMPARE(select(earlier).size(), 226);
        IO::EventSelection bounded = later;
        bounded.minimumMagnitude = 8;
        bounded.minimumLatitude = bounded.maximumLatitude = 3;
        int expected = 0;
        for (int i = 225; i < 450; ++i)
            expected += i % 10 >= 8 && i % 7 == 3;
        QCOMPARE(select(bounded).size(), expected);
        bounded.maximumDepthKm = 1000;
        QCOMPARE(select(bounded), QStringList());
    }

    void storesAllOrNothing_data() { addBackends(); }
    void storesAllOrNothing()
    {
        OPEN_WITH_TABLES(database);
        IO::EventArchive archive(database);
        QString error;
        QRandomGenerator random(1);
        const auto event = EventTesting::randomEvent(random, "event");
        QVERIFY2(archive.write(*event, &error), qPrintable(error));
        const QStringList counts = rowCounts(*database);

        QVERIFY(database->beginTransaction());
        QVERIFY(archive.write(*simpleEvent("event", Base)));
        QVERIFY(archive.write(*simpleEvent("other", Base)));
        QVERIFY(!database->beginTransaction());
        database->rollback();
        QCOMPARE(rowCounts(*database), counts);

        // The last step of writing fails: what was done before it is taken back.
        QVERIFY(database->execute("alter table FocalMechanism rename to Hidden"));
        QVERIFY(!archive.write(*event, &error));
        QVERIFY2(error.startsWith("event event: "), qPrintable(error));
        QVERIFY(database->execute("alter table Hidden rename to FocalMechanism"));
        QCOMPARE(rowCounts(*database), counts);
        QCOMPARE(describe(archive.read("event")), describe(event));
    }

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

    void importsAllOrNothing_data() { addBackends(); }

    void importsAllOrNothing()
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

QTEST_GUILESS_MAIN(EventArchiveTest)
#include "tst_eventarchive.moc"
