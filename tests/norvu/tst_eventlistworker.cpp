// SPDX-License-Identifier: LGPL-3.0-or-later

#include "eventtesting.h"
#include "rowname.h"

#include <norvu/gui/eventlistworkerthread.h>
#include <norvu/gui/eventstatements.h>

#include <tellarix/qt/scheme.h>

#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlField>
#include <QSqlRecord>
#include <QSqlResult>
#include <QStandardItemModel>
#include <QTemporaryFile>

#include <locale>

using namespace EventTesting;
using namespace Norvu::Gui;

namespace {

using Rows = QVector<QVariantList>;

/** What the two statements of a worker give. */
struct Script
{
    Rows count;
    Rows list;
};
Script script;

/** Gives the rows of the script. */
class ScriptedResult : public QSqlResult
{
public:
    explicit ScriptedResult(const QSqlDriver *driver) : QSqlResult(driver) {}

protected:
    bool reset(const QString &statement) override
    {
        _rows = statement.startsWith("select count")    ? script.count
                : statement.startsWith("select Origin") ? script.list
                                                        : Rows();
        setSelect(true);
        setActive(true);
        return true;
    }
    bool fetch(int row) override
    {
        setAt(row);
        return row < _rows.size();
    }
    bool fetchFirst() override { return fetch(0); }
    bool fetchLast() override { return fetch(_rows.size() - 1); }
    QVariant data(int field) override { return _rows[at()].value(field); }
    bool isNull(int field) override { return data(field).isNull(); }
    int size() override { return -1; }
    int numRowsAffected() override { return -1; }
    QSqlRecord record() const override
    {
        QSqlRecord record;
        for (int i = 0; i < _rows.value(0).size(); ++i)
            record.append(QSqlField());
        return record;
    }

private:
    Rows _rows;
};

/** Stands in for SQLite's driver, and gives what no database does. */
class ScriptedDriver : public QSqlDriver
{
public:
    bool hasFeature(DriverFeature) const override { return false; }
    bool open(const QString &, const QString &, const QString &, const QString &, int,
              const QString &) override
    {
        setOpen(true);
        return true;
    }
    void close() override {}
    QSqlResult *createResult() const override { return new ScriptedResult(this); }
};

/** A point for a decimal point is what half the world has not. */
class DecimalComma : public std::numpunct<char>
{
protected:
    char do_decimal_point() const override { return ','; }
};

/** A value with its type. */
QString described(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::Double:
        return 'd' + value.toString();
    case QMetaType::Int:
        return 'i' + value.toString();
    default:
        return value.isValid() ? value.toString() : "none";
    }
}

/** Lets a worker load, and keeps what it tells in its order. */
struct Load
{
    explicit Load(IO::DatabaseInterface *database, int stopAfter = -1, EventFilter filter = {})
        : worker(database, model.invisibleRootItem())
    {
        const auto tell = [this](const char *name, int value) {
            signalsInOrder << QString("%1 %2").arg(name).arg(value);
        };
        QObject::connect(
            &worker, &EventListWorkerThread::eventCountChanged, &worker,
            [=](int count) { tell("count", count); }, Qt::DirectConnection);
        QObject::connect(
            &worker, &EventListWorkerThread::progressChanged, &worker,
            [=](int value) {
                tell("row", value);
                rowsMatch = rowsMatch && model.rowCount() == value;
                if (value == stopAfter)
                    worker.stop();
            },
            Qt::DirectConnection);
        Core::Time begin = Core::Time::FromString("2024-01-05 10:00:00");
        Core::Time end = Core::Time::FromString("2024-01-05 11:00:00");
        worker.setTimeWindow(begin, end);
        worker.setFilter(filter);
        if (stopAfter == 0)
            worker.stop();
        worker.start();
        worker.wait();
    }

    QStringList column(int column) const
    {
        QStringList texts;
        for (int row = 0; row < model.rowCount(); ++row)
            texts << model.index(row, column).data().toString();
        texts.sort();
        return texts;
    }

    QStandardItemModel model;
    QStringList signalsInOrder;
    bool rowsMatch{true};
    EventListWorkerThread worker;
};

using Texts = QStringList;

} // namespace

class EventListWorkerTest : public QObject
{
    Q_OBJECT

private slots:
    void showsEvents()
    {
        const std::tuple<const char *, QString, QString, QString> rows[] = {
            {"all there", "",
             "2024-01-05 10:11:12|4.2|Mw|12|10.26 N|20.00 W|31|C||e%2|earthquake|H\u00e9re",
             "2024-01-05 "
             "10:11:12|d4.15|Mw|i12|d10.255|d-20|d30.9|i67|none|e%2|earthquake|H\u00e9re"},
            {"zeros",
             "UPDATE Origin SET latitude_value = 0, longitude_value = 0, depth_value = -0.2, "
             "quality_usedPhaseCount = 0, evaluationStatus = NULL",
             "2024-01-05 10:11:12|4.2|Mw|0|0.00 N|0.00 E|0|M||e%2|earthquake|H\u00e9re",
             "2024-01-05 10:11:12|d4.15|Mw|i0|d0|d0|d-0.2|i77|none|e%2|earthquake|H\u00e9re"},
            {"nulls and texts that are no numbers",
             "UPDATE Origin SET latitude_value = NULL, longitude_value = 'west', depth_value = "
             "NULL, quality_usedPhaseCount = 1.5, evaluationStatus = NULL, evaluationMode = NULL;"
             "UPDATE Magnitude SET magnitude_value = NULL, type = NULL;"
             "UPDATE Event SET type = NULL, preferredFocalMechanismID = NULL;"
             "DELETE FROM EventDescription",
             "2024-01-05 10:11:12|-||-|-|-|-|A|-|e%2||",
             "2024-01-05 10:11:12|none||none|none|none|none|i65|none|e%2||"},
            {"no time", "UPDATE Origin SET time_value = '2024-01-05 10:xx'",
             "|4.2|Mw|12|10.26 N|20.00 W|31|C||e%2|earthquake|H\u00e9re",
             "|d4.15|Mw|i12|d10.255|d-20|d30.9|i67|none|e%2|earthquake|H\u00e9re"}};
        for (const auto &[name, change, texts, sortValues] : rows) {
            const RowName shown(name);
            Draft draft{"e%2"};
            draft.time += ".5";
            draft.latitude = 10.255;
            draft.longitude = -20;
            draft.depth = 30.9;
            draft.magnitude = 4.15;
            draft.region = "H\u00e9re";
            draft.status = "confirmed";
            draft.mode = "manual";
            draft.plane = DataModel::NodalPlane(123.4, 45, -90);
            Catalogue catalogue({draft});
            for (const QString &statement : change.split(';', Qt::SkipEmptyParts))
                catalogue.execute(qPrintable(statement));

            const Load load(catalogue.database.get());
            QCOMPARE(load.worker.errorString(), QString());
            QCOMPARE(load.model.rowCount(), 1);
            QStringList cells;
            QStringList values;
            const int alignments[] = {130, 132, 129, 132, 130, 130, 130, 132, 132, 129, 129, 129};
            for (int column = 0; column < 12; ++column) {
                const QStandardItem *item = load.model.item(0, column);
                cells << item->text();
                values << described(item->data(Qt::UserRole));
                QCOMPARE(item->data(Qt::TextAlignmentRole).toInt(), alignments[column]);
                QVERIFY(!item->isEditable() && item->isSelectable());
            }

            QCOMPARE(cells.join('|'), texts);
            QCOMPARE(values.join('|'), sortValues);

            const bool isManual = cells[7] != "A";
            const Gui::Scheme scheme;
            QCOMPARE(load.model.item(0, 7)->foreground().color(),
                     isManual ? scheme.origins.manual : scheme.origins.automatic);
            QCOMPARE(load.model.item(0, 8)->sizeHint(), QSize(24, 24));
            QCOMPARE(load.model.item(0, 8)->toolTip(),
                     cells[8] == "-" ? QString()
                                     : QString("Strike: 123.4\u00b0\nDip   : 45\u00b0\n"
                                               "Rake  : -90\u00b0"));
            const QVariant time = load.model.item(0, 0)->data(Qt::UserRole + 1);
            QCOMPARE(time.userType(), QMetaType::type("Tellarix::Core::Time"));
            QCOMPARE(time.value<Core::Time>(),
                     cells[0].isEmpty() ? Core::Time()
                                        : Core::Time::FromString("2024-01-05 10:11:12.5"));
        }
    }

    void showsStatusLetters()
    {
        const QMap<const char *, const char *> letters{
            {"preliminary", "P"}, {"confirmed", "C"}, {"reviewed", "V"}, {"final", "F"},
            {"rejected", "X"},    {"reported", "R"},  {"Final", "A"}};
        std::vector<Draft> events;
        QStringList expected;
        for (auto it = letters.begin(); it != letters.end(); ++it) {
            events.push_back({it.key()});
            events.back().status = it.key();
            expected << it.value();
        }
        expected.sort();
        QCOMPARE(Load(Catalogue(events).database.get()).column(7), expected);
    }

    void writesStatements()
    {
        const Catalogue catalogue({});
        const std::locale former =
            std::locale::global(std::locale(std::locale::classic(), new DecimalComma));
        EventQuery query;
        query.begin = Core::Time::FromString("2024-01-05 10:00:00.9");
        query.end = Core::Time::FromString("2024-01-06");
        query.filter = {-12.3456789, 1.0, 2.0, 3.0, 4.0, 1e6, -0.5, 0.0};
        const std::string bounds =
            "Origin.time_value >= '2024-01-05 10:00:00' and Origin.time_value <= '2024-01-06 "
            "00:00:00'"
            " and Origin.latitude_value >= '-12.3457' and Origin.latitude_value <= '1' and "
            "Origin.longitude_value >= '2' and Origin.longitude_value <= '3' and "
            "Origin.depth_value >= '4' and Origin.depth_value <= '1e+06' and "
            "Magnitude.magnitude_value >= '-0.5' and Magnitude.magnitude_value <= '0' and ";
        const std::string statement = eventRowStatement(*catalogue.database, query);
        std::locale::global(former);
        QVERIFY2(statement.find(bounds) != std::string::npos, statement.c_str());
    }

    void takesBoundsInclusively()
    {
        std::vector<Draft> events = drafts(5);
        const char *const times[] = {"2024-01-05 09:59:59", "2024-01-05 10:00:00",
                                     "2024-01-05 10:30:00", "2024-01-05 11:00:00.9",
                                     "2024-01-05 11:00:01"};
        for (size_t i = 0; i < events.size(); ++i) {
            events[i].time = times[i];
            events[i].longitude = 10.0 * static_cast<double>(i);
        }
        const Catalogue catalogue(events);
        QCOMPARE(Load(catalogue.database.get()).column(9), Texts({"e1", "e2", "e3"}));
        EventFilter filter;
        filter.fromLongitude = 10;
        filter.toLongitude = 20;
        QCOMPARE(Load(catalogue.database.get(), -1, filter).column(9), Texts({"e1", "e2"}));
        filter.fromLongitude = 170;
        filter.toLongitude = -170;
        QCOMPARE(Load(catalogue.database.get(), -1, filter).signalsInOrder, Texts({"count 0"}));
    }

    void tellsProgressAndEnds()
    {
        const Texts all{"count 3", "row 1", "row 2", "row 3"};
        const std::tuple<const char *, int, QString, QStringList, QString> rows[] = {
            {"whole", -1, "", all, ""},
            {"stopped before the count", 0, "", Texts{}, ""},
            {"stopped at the second row", 2, "", Texts{"count 3", "row 1", "row 2"}, ""},
            {"no table", -1, "DROP TABLE EventDescription", Texts{},
             "Error while executing query:\nselect count(*) from Origin,"},
            {"no column that is only shown", -1,
             "ALTER TABLE Origin RENAME COLUMN evaluationMode TO mode", Texts{"count 3"},
             "Error while executing query:\nselect Origin.time_value,"},
            // No absolute value fits into its integer: the statement fails when it gets there.
            {"broken at the third row", -1,
             "ALTER TABLE EventDescription RENAME TO Described;"
             "CREATE VIEW EventDescription AS SELECT _parent_oid, type, CASE text WHEN 'bad' "
             "THEN abs(-9223372036854775807 - 1) ELSE text END AS text FROM Described",
             Texts{"count 3", "row 1", "row 2"},
             "The list is not complete, reading failed after 2 events:\ninteger overflow"}};
        for (const auto &[name, stopAfter, change, signalsInOrder, error] : rows) {
            const RowName shown(name);
            std::vector<Draft> events = drafts(3);
            events.back().region = "bad";
            events.back().time = "2024-01-05 10:59:00"; // the index on the time gives the order
            Catalogue catalogue(events);
            for (const QString &statement : change.split(';', Qt::SkipEmptyParts))
                catalogue.execute(qPrintable(statement));

            const Load load(catalogue.database.get(), stopAfter);
            QCOMPARE(load.signalsInOrder, signalsInOrder);
            QVERIFY(load.rowsMatch);
            const QString told = load.worker.errorString();
            QCOMPARE(error.isEmpty() ? told : told.left(error.size()), error);
        }
    }

    void tellsFaultsOfTheDriver()
    {
        QVariantList row{"2024-01-05 10:11:12", QVariant(), 4.5};
        while (row.size() < 16)
            row << QVariant();
        const Rows two{{2}};
        const std::tuple<const char *, Rows, Rows, QStringList, QString> rows[] = {
            {"no fraction", two, Rows{row}, {"count 2", "row 1"}, ""},
            {"no count", Rows(), Rows(), {}, "Failed to fetch results"},
            {"count in words", Rows{{"many"}}, Rows(), {}, "Failed to read results"},
            {"null for a count", Rows{{QVariant()}}, Rows(), {}, "Failed to read results"},
            {"count with a fraction", Rows{{2.5}}, Rows(), {}, "Failed to read results"},
            {"too few fields", two, Rows{row.mid(1)}, {"count 2"}, "Unexpected db resultset"}};
        for (const auto &[name, count, list, signalsInOrder, error] : rows) {
            const RowName shown(name);
            script = {count, list};
            QSqlDatabase::registerSqlDriver("QSQLITE", new QSqlDriverCreator<ScriptedDriver>);
            QTemporaryFile file;
            QVERIFY(file.open());
            {
                const auto database = IO::DatabaseInterface::Open("sqlite://" + file.fileName());
                QVERIFY(database);
                const Load load(database.get());
                QCOMPARE(load.signalsInOrder, signalsInOrder);
                QCOMPARE(load.worker.errorString(), error);
            }
            QSqlDatabase::registerSqlDriver("QSQLITE", nullptr);
        }
    }
};

QTEST_MAIN(EventListWorkerTest)
#include "tst_eventlistworker.moc"
