// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/eventarchive.h>

#include <tellarix/client/io/databaseschema.h>
#include <tellarix/client/io/eventreading_p.h>
#include <tellarix/client/io/eventrows_p.h>
#include <tellarix/client/io/eventselection_p.h>
#include <tellarix/client/io/eventstoring_p.h>

#include <QSqlQuery>

namespace Tellarix {
namespace IO {

namespace {

bool fail(const QString &cause, QString *error)
{
    if (error)
        *error = cause;
    return false;
}

} // namespace

EventArchive::EventArchive(DatabaseInterfacePtr database) : _database(std::move(database))
{}

bool EventArchive::createSchema(DatabaseInterface &database, QString *error)
{
    return DatabaseSchema::create(database, error);
}

bool EventArchive::ensureSchema(DatabaseInterface &database, QString *error)
{
    return DatabaseSchema::ensure(database, error);
}

bool EventArchive::checkSchema(DatabaseInterface &database, QString *error)
{
    return DatabaseSchema::check(database, error);
}

bool EventArchive::write(const DataModel::Event &event, QString *error, bool *replaced)
{
    const QString name = "event " + QString::fromStdString(event.publicID) + ": ";
    const QString problem = storageProblemOf(event);
    if (!problem.isEmpty())
        return fail(event.publicID.empty() ? problem : name + problem, error);

    const bool isOwn = !_database->isInTransaction();
    EventStoring storing(*_database, event);
    if ((!isOwn || _database->beginTransaction()) &&
        removeEvent(*_database, event.publicID, replaced) && storing.run() &&
        (!isOwn || _database->commit()))
        return true;

    const QString cause = storing.error();
    if (isOwn)
        _database->rollback();
    return fail(name + cause, error);
}

bool EventArchive::remove(const std::string &publicID, QString *error)
{
    const bool isOwn = !_database->isInTransaction();
    if ((!isOwn || _database->beginTransaction()) && removeEvent(*_database, publicID, nullptr) &&
        (!isOwn || _database->commit()))
        return true;

    const QString cause = _database->lastError();
    if (isOwn)
        _database->rollback();
    return fail("event " + QString::fromStdString(publicID) + ": " + cause, error);
}

DataModel::EventPtr EventArchive::read(const std::string &publicID, QString *error)
{
    QSqlQuery *query =
        _database->execute("SELECT Event._oid FROM PublicObject, Event "
                           "WHERE PublicObject.publicID = ? AND Event._oid = PublicObject._oid",
                           {storedText(publicID)});
    std::vector<DataModel::EventPtr> events;
    QString cause = _database->lastError();
    const qint64 oid = query && query->next() ? query->value(0).toLongLong() : 0;
    if (query)
        query->finish();
    if (oid) {
        EventReading reading(*_database);
        reading.run({oid}, events);
        cause = reading.error();
    }
    if (error)
        *error = cause.isEmpty() ? QString()
                                 : "event " + QString::fromStdString(publicID) + ": " + cause;
    return events.empty() ? nullptr : events.front();
}

bool EventArchive::forEach(const EventSelection &selection,
                           const std::function<bool(const DataModel::EventPtr &)> &take,
                           QString *error)
{
    SelectionWalk walk(*_database, selection);
    std::vector<qint64> oids;
    while (walk.next(oids)) {
        if (oids.empty())
            return true;
        std::vector<DataModel::EventPtr> events;
        EventReading reading(*_database);
        if (!reading.run(oids, events))
            return fail(reading.error(), error);
        for (const DataModel::EventPtr &event : events) {
            if (!take(event))
                return fail(QString(), error);
        }
    }
    return fail(walk.error(), error);
}

int EventArchive::count(const EventSelection &selection, QString *error)
{
    const SelectionQuery query(*_database, selection);
    const auto countOf = [&](const std::string &statement, const QVariantList &values) {
        QSqlQuery *result = _database->execute(statement, values);
        const int count = result && result->next() ? result->value(0).toInt() : -1;
        if (result)
            result->finish();
        return count;
    };
    const int timed = countOf(query.statement("count(*)"), query.values());
    const int timeless = timed < 0 || query.isBounded()
                             ? 0
                             : countOf(SelectionQuery::statementOfTimeless("count(*)"), {});
    if (timed >= 0 && timeless >= 0)
        return timed + timeless;
    fail(_database->lastError(), error);
    return -1;
}

Core::TimeWindow EventArchive::extent(QString *error)
{
    Core::TimeWindow window;
    QSqlQuery *query = _database->execute("SELECT (SELECT MIN(time_value) FROM Origin), "
                                          "(SELECT MAX(time_value) FROM Origin)",
                                          {});
    if (query && query->next()) {
        const auto timeOf = [&](int field) {
            return _database->stringToTime(query->value(field).toByteArray().constData());
        };
        // Stored times end with the second: the last one may have a fraction.
        if (timeOf(0).valid() && timeOf(1).valid())
            window = Core::TimeWindow(timeOf(0), timeOf(1) + Core::TimeSpan(1.0));
    }
    if (query)
        query->finish();
    else
        fail(_database->lastError(), error);
    return window;
}

} // namespace IO
} // namespace Tellarix
