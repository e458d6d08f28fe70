// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/databaseschema.h>
#include <tellarix/client/io/eventarchive.h>
#include <tellarix/client/io/eventrows_p.h>

#include <QSqlError>
#include <QSqlQuery>

#include <algorithm>
#include <unordered_map>

namespace Tellarix {
namespace IO {

namespace {

using Backend = DatabaseInterface::Backend;
using EventColumns::TableOf;

/** Events that are read at a time. */
constexpr int BatchSize = 200;

bool fail(const QString &cause, QString *error)
{
    if (error)
        *error = cause;
    return false;
}

std::string joined(const std::vector<std::string> &texts, const char *before = "")
{
    std::string list;
    for (const std::string &text : texts)
        list += (list.empty() ? "" : ", ") + (before + text);
    return list;
}

/** Names of the columns that tell what a row belongs to. */
template <typename T>
const std::vector<std::string> KeyColumns{"_oid", "_parent_oid"};
template <>
const std::vector<std::string> KeyColumns<DataModel::Event>{"_oid"};
template <>
const std::vector<std::string> KeyColumns<DataModel::EventDescription>{"_parent_oid", "type",
                                                                       "repeatedType"};

/** The statement that adds a row. */
template <typename T>
std::string insertionOf()
{
    std::vector<std::string> columns = KeyColumns<T>;
    for (const std::string &name : ColumnNames::Of<T>())
        columns.push_back(name);
    const std::vector<std::string> values(columns.size(), "?");
    return std::string("INSERT INTO ") + TableOf<T> + " (" + joined(columns) + ") VALUES (" +
           joined(values) + ')';
}

/** The statement that reads the rows of so many events: oid of the event, public id, columns. */
template <typename T>
std::string readingOf(size_t eventCount)
{
    const std::string table = TableOf<T>;
    const bool isEvent = std::is_same_v<T, DataModel::Event>;
    const std::string event = table + (isEvent ? "._oid" : "._parent_oid");
    const std::vector<std::string> oids(eventCount, "?");
    return "SELECT " + event + ", PublicObject.publicID, " +
           joined(ColumnNames::Of<T>(), (table + '.').c_str()) + " FROM " + table +
           ", PublicObject WHERE PublicObject._oid = " + table + "._oid AND " + event + " IN (" +
           joined(oids) + ") ORDER BY " + table + "._oid";
}

/** The same for descriptions, which have a type in place of a public id. */
template <>
std::string readingOf<DataModel::EventDescription>(size_t eventCount)
{
    const std::vector<std::string> oids(eventCount, "?");
    return "SELECT _parent_oid, COALESCE(type, repeatedType), text FROM EventDescription "
           "WHERE _parent_oid IN (" +
           joined(oids) + ") ORDER BY _oid";
}

/** What of an event can't be stored; empty if all can. */
QString problemOf(const DataModel::Event &event)
{
    if (event.publicID.empty())
        return QString("an event without a publicID can't be stored");

    RowChecker checker;
    const auto check = [&](const auto &original) {
        auto object = original;
        EventColumns::visit(checker, object);
    };
    const auto checkSolutions = [&](const auto &solutions) {
        for (const auto &solution : solutions) {
            std::string publicID = solution->publicID;
            checker.key("publicID", publicID);
            check(*solution);
        }
    };
    std::string publicID = event.publicID;
    checker.key("publicID", publicID);
    check(event);
    for (const DataModel::EventDescription &description : event.descriptions) {
        std::string type = description.type;
        checker.key("type of description", type);
    }
    checkSolutions(event.origins);
    checkSolutions(event.magnitudes);
    checkSolutions(event.focalMechanisms);
    return checker.problem();
}

/** Stores one event; every step is false when the database refuses it. */
class EventWriting
{
public:
    EventWriting(DatabaseInterface &database, const DataModel::Event &event)
        : _database(database), _event(event)
    {}

    bool run()
    {
        _eventOid = addPublicID(_event.publicID, 0);
        if (!_eventOid)
            return fail("its publicID is that of something else in the database");
        return addPublicIDs("origin", _event.origins, _origins) &&
               addPublicIDs("magnitude", _event.magnitudes, _magnitudes) &&
               addPublicIDs("mechanism", _event.focalMechanisms, _mechanisms) && addEvent() &&
               addDescriptions() && addOrigins() && addMagnitudes() && addMechanisms();
    }

    QString error() const { return _error.isEmpty() ? _database.lastError() : _error; }

private:
    /** The public id and row under which a solution is stored. */
    struct Stored
    {
        std::string publicID;
        qint64 oid{0};
    };

    bool fail(const char *cause)
    {
        if (_database.lastError().isEmpty())
            _error = cause;
        return false;
    }

    qint64 addPublicID(const std::string &publicID, qint64 parent);
    template <typename T>
    bool addPublicIDs(const char *kind, const std::vector<Core::SmartPointer<T>> &solutions,
                      std::vector<Stored> &stored);
    template <typename T>
    bool addRow(T &object, const QVariantList &keys);

    /** The id under which the solution at a pointer is stored; empty if it is null. */
    template <typename T>
    static std::string storedID(const std::vector<Core::SmartPointer<T>> &solutions,
                                const std::vector<Stored> &stored, const T *solution);
    /** The id of an origin as it is stored; another id as it is. */
    std::string storedOriginID(const std::string &publicID) const;

    bool addEvent();
    bool addDescriptions();
    bool addOrigins();
    bool addMagnitudes();
    bool addMechanisms();

    DatabaseInterface &_database;
    const DataModel::Event &_event;
    qint64 _eventOid{0};
    std::vector<Stored> _origins;
    std::vector<Stored> _magnitudes;
    std::vector<Stored> _mechanisms;
    QString _error;
};

/** Takes a public id; 0 if another object has it, or on an error. */
qint64 EventWriting::addPublicID(const std::string &publicID, qint64 parent)
{
    const QVariantList values{parent ? QVariant(parent) : QVariant(QVariant::LongLong),
                              QString::fromStdString(publicID)};
    const auto insert = [&](const char *how, const char *end) {
        return _database.execute(std::string(how) +
                                     " INTO PublicObject (_parent_oid, publicID) "
                                     "VALUES (?, ?)" +
                                     end,
                                 values);
    };
    switch (_database.backend()) {
    case Backend::SQLite:
    case Backend::MariaDB: {
        const bool isSQLite = _database.backend() == Backend::SQLite;
        QSqlQuery *query = insert(isSQLite ? "INSERT OR IGNORE" : "INSERT IGNORE", "");
        return query && query->numRowsAffected() == 1 ? query->lastInsertId().toLongLong() : 0;
    }
    case Backend::PostgreSQL:
        break;
    }
    QSqlQuery *query = insert("INSERT", " ON CONFLICT (publicID) DO NOTHING RETURNING _oid");
    const qint64 oid = query && query->next() ? query->value(0).toLongLong() : 0;
    if (query)
        query->finish();
    return oid;
}

template <typename T>
bool EventWriting::addPublicIDs(const char *kind,
                                const std::vector<Core::SmartPointer<T>> &solutions,
                                std::vector<Stored> &stored)
{
    const auto made = [&](int attempt) {
        const std::string id =
            _event.publicID + '/' + kind + '/' + std::to_string(stored.size() + 1);
        return attempt == 1 ? id : id + '-' + std::to_string(attempt);
    };
    constexpr int Attempts = 100;
    for (const auto &solution : solutions) {
        Stored entry{solution->publicID, 0};
        if (!entry.publicID.empty())
            entry.oid = addPublicID(entry.publicID, _eventOid);
        for (int attempt = 1; !entry.oid && attempt <= Attempts; ++attempt) {
            entry.publicID = made(attempt);
            if (entry.publicID.size() > DatabaseSchema::KeyLength ||
                !_database.lastError().isEmpty())
                break;
            entry.oid = addPublicID(entry.publicID, _eventOid);
        }
        if (!entry.oid)
            return fail("its publicID is too long to make ids for its solutions of it");
        stored.push_back(entry);
    }
    return true;
}

template <typename T>
bool EventWriting::addRow(T &object, const QVariantList &keys)
{
    static const std::string statement = insertionOf<T>();
    RowWriter row(_database, keys);
    EventColumns::visit(row, object);
    return _database.execute(statement, row.values());
}

template <typename T>
std::string EventWriting::storedID(const std::vector<Core::SmartPointer<T>> &solutions,
                                   const std::vector<Stored> &stored, const T *solution)
{
    for (size_t i = 0; i < solutions.size(); ++i) {
        if (solutions[i].get() == solution)
            return stored[i].publicID;
    }
    return {};
}

std::string EventWriting::storedOriginID(const std::string &publicID) const
{
    for (size_t i = 0; i < _origins.size(); ++i) {
        if (!publicID.empty() && _event.origins[i]->publicID == publicID)
            return _origins[i].publicID;
    }
    return publicID;
}

bool EventWriting::addEvent()
{
    DataModel::Event event;
    event.type = _event.type;
    event.typeCertainty = _event.typeCertainty;
    event.creationInfo = _event.creationInfo;
    event.preferredOriginID = storedID(_event.origins, _origins, _event.preferredOrigin());
    event.preferredMagnitudeID =
        storedID(_event.magnitudes, _magnitudes, _event.preferredMagnitude());
    event.preferredFocalMechanismID =
        storedID(_event.focalMechanisms, _mechanisms, _event.preferredFocalMechanism());
    return addRow(event, {_eventOid});
}

bool EventWriting::addDescriptions()
{
    std::vector<std::string> types;
    for (DataModel::EventDescription description : _event.descriptions) {
        const QVariant none(QVariant::String);
        const QVariant type = description.type.empty() ? none : storedText(description.type);
        const bool isRepeated =
            std::find(types.begin(), types.end(), description.type) != types.end();
        types.push_back(description.type);
        if (!addRow(description, {_eventOid, isRepeated ? none : type, isRepeated ? type : none}))
            return false;
    }
    return true;
}

bool EventWriting::addOrigins()
{
    for (size_t i = 0; i < _origins.size(); ++i) {
        DataModel::Origin origin(*_event.origins[i]);
        if (!addRow(origin, {_origins[i].oid, _eventOid}))
            return false;
    }
    return true;
}

bool EventWriting::addMagnitudes()
{
    for (size_t i = 0; i < _magnitudes.size(); ++i) {
        DataModel::Magnitude magnitude(*_event.magnitudes[i]);
        magnitude.originID = storedOriginID(magnitude.originID);
        if (!addRow(magnitude, {_magnitudes[i].oid, _eventOid}))
            return false;
    }
    return true;
}

bool EventWriting::addMechanisms()
{
    for (size_t i = 0; i < _mechanisms.size(); ++i) {
        DataModel::FocalMechanism mechanism(*_event.focalMechanisms[i]);
        mechanism.triggeringOriginID = storedOriginID(mechanism.triggeringOriginID);
        if (!addRow(mechanism, {_mechanisms[i].oid, _eventOid}))
            return false;
    }
    return true;
}

/** Removes an event; its solutions and descriptions go with it. */
bool removeEvent(DatabaseInterface &database, const std::string &publicID, bool *wasThere)
{
    QSqlQuery *query =
        database.execute("DELETE FROM PublicObject WHERE publicID = ? AND EXISTS "
                         "(SELECT 1 FROM Event WHERE Event._oid = PublicObject._oid)",
                         {storedText(publicID)});
    if (query && wasThere)
        *wasThere = query->numRowsAffected() > 0;
    return query;
}

/** Reads whole events by their oids. */
class EventReading
{
public:
    explicit EventReading(DatabaseInterface &database) : _database(database) {}

    /** The events that are there, in the order of their oids; false with an error. */
    bool run(const std::vector<qint64> &oids, std::vector<DataModel::EventPtr> &events)
    {
        if (!readEvents(oids) || !readDescriptions(oids) ||
            !readSolutions(oids, &DataModel::Event::origins) ||
            !readSolutions(oids, &DataModel::Event::magnitudes) ||
            !readSolutions(oids, &DataModel::Event::focalMechanisms))
            return false;
        for (qint64 oid : oids) {
            const auto found = _events.find(oid);
            if (found != _events.end())
                events.push_back(found->second);
        }
        return true;
    }

    QString error() const { return _error; }

private:
    /** Calls take(oid of event, id, row) for each row of the events. */
    template <typename T, typename Take>
    bool readRows(const std::vector<qint64> &oids, Take take);

    bool readEvents(const std::vector<qint64> &oids);
    bool readDescriptions(const std::vector<qint64> &oids);
    template <typename T>
    bool readSolutions(const std::vector<qint64> &oids,
                       std::vector<Core::SmartPointer<T>> DataModel::Event::*solutions);

    DatabaseInterface &_database;
    std::unordered_map<qint64, DataModel::EventPtr> _events;
    QString _error;
};

template <typename T, typename Take>
bool EventReading::readRows(const std::vector<qint64> &oids, Take take)
{
    static const std::string ofOne = readingOf<T>(1);
    static const std::string ofBatch = readingOf<T>(BatchSize);
    // The rest of a batch repeats its last event, so that the two statements do for any number.
    const size_t count = oids.size() == 1 ? 1 : BatchSize;
    QVariantList values;
    for (size_t i = 0; i < count; ++i)
        values << oids[std::min(i, oids.size() - 1)];

    QSqlQuery *query = _database.execute(count == 1 ? ofOne : ofBatch, values);
    if (!query) {
        _error = _database.lastError();
        return false;
    }
    while (query->next()) {
        RowReader row(_database, *query, 2);
        take(query->value(0).toLongLong(), query->value(1).toByteArray().toStdString(), row);
    }
    _error = query->lastError().text().trimmed();
    query->finish();
    return _error.isEmpty();
}

bool EventReading::readEvents(const std::vector<qint64> &oids)
{
    return readRows<DataModel::Event>(oids,
                                      [&](qint64 oid, const std::string &publicID, RowReader &row) {
                                          DataModel::EventPtr event(new DataModel::Event);
                                          event->publicID = publicID;
                                          EventColumns::visit(row, *event);
                                          _events.emplace(oid, std::move(event));
                                      });
}

bool EventReading::readDescriptions(const std::vector<qint64> &oids)
{
    return readRows<DataModel::EventDescription>(
        oids, [&](qint64 oid, const std::string &type, RowReader &row) {
            DataModel::EventDescription description;
            description.type = type;
            EventColumns::visit(row, description);
            if (const auto event = _events.find(oid); event != _events.end())
                event->second->descriptions.push_back(std::move(description));
        });
}

template <typename T>
bool EventReading::readSolutions(const std::vector<qint64> &oids,
                                 std::vector<Core::SmartPointer<T>> DataModel::Event::*solutions)
{
    return readRows<T>(oids, [&](qint64 oid, const std::string &publicID, RowReader &row) {
        Core::SmartPointer<T> solution(new T);
        solution->publicID = publicID;
        EventColumns::visit(row, *solution);
        if (const auto event = _events.find(oid); event != _events.end())
            ((*event->second).*solutions).push_back(std::move(solution));
    });
}

/** Tables, conditions and values that pick the events of a selection. */
class SelectionQuery
{
public:
    SelectionQuery(const DatabaseInterface &database, const EventSelection &selection)
        : _database(database)
    {
        if (selection.from.valid())
            addTime(">=", "<", selection.from);
        if (selection.to.valid())
            addTime("<=", ">", selection.to);
        addRange("Origin.latitude_value", selection.minimumLatitude, selection.maximumLatitude);
        addRange("Origin.longitude_value", selection.minimumLongitude, selection.maximumLongitude);
        addRange("Origin.depth_value", selection.minimumDepthKm, selection.maximumDepthKm);
        if (selection.minimumMagnitude || selection.maximumMagnitude) {
            _tables = ", PublicObject AS PMagnitude, Magnitude";
            _conditions += " AND PMagnitude.publicID = Event.preferredMagnitudeID"
                           " AND Magnitude._oid = PMagnitude._oid";
        }
        addRange("Magnitude.magnitude_value", selection.minimumMagnitude,
                 selection.maximumMagnitude);
        _isBounded = !_conditions.empty();
    }

    bool isBounded() const { return _isBounded; }

    /** A statement on the events whose preferred origin has a time. */
    std::string statement(const std::string &fields, const std::string &end = {}) const
    {
        return "SELECT " + fields + " FROM Event, PublicObject AS POrigin, Origin" + _tables +
               " WHERE POrigin.publicID = Event.preferredOriginID AND Origin._oid = POrigin._oid"
               " AND Origin.time_value IS NOT NULL" +
               _conditions + end;
    }
    /** A statement on the others. */
    static std::string statementOfTimeless(const std::string &fields, const std::string &end = {})
    {
        return "SELECT " + fields +
               " FROM Event LEFT JOIN PublicObject AS POrigin"
               " ON POrigin.publicID = Event.preferredOriginID"
               " LEFT JOIN Origin ON Origin._oid = POrigin._oid WHERE Origin.time_value IS NULL" +
               end;
    }

    const QVariantList &values() const { return _values; }

private:
    /** Bounds by the second, which the index is good for, and leaves out the rest of that second.
     */
    void addTime(const char *within, const char *beyond, Core::Time time)
    {
        _conditions += std::string(" AND Origin.time_value ") + within +
                       " ? AND NOT (Origin.time_value = ? AND Origin.time_value_ms " + beyond +
                       " ?)";
        const QString second = QString::fromStdString(_database.timeToString(time));
        _values << second << second << time.fields().usec;
    }

    void addRange(const char *column, const std::optional<double> &minimum,
                  const std::optional<double> &maximum)
    {
        const auto add = [&](const char *comparison, const std::optional<double> &bound) {
            if (!bound)
                return;
            _conditions += std::string(" AND ") + column + comparison + '?';
            _values << *bound;
        };
        add(" >= ", minimum);
        add(" <= ", maximum);
    }

    const DatabaseInterface &_database;
    std::string _tables;
    std::string _conditions;
    QVariantList _values;
    bool _isBounded;
};

/** Goes through the oids of a selection in the order of time, a batch at a time. */
class SelectionWalk
{
public:
    SelectionWalk(DatabaseInterface &database, const EventSelection &selection)
        : _database(database), _query(database, selection)
    {}

    /** The next oids, none at the end; false with an error. */
    bool next(std::vector<qint64> &oids)
    {
        oids.clear();
        if (!_isTimeless && !nextByTime(oids))
            return false;
        _isTimeless = _isTimeless || oids.empty();
        return !oids.empty() || _query.isBounded() || nextTimeless(oids);
    }

    QString error() const { return _error; }

private:
    bool nextByTime(std::vector<qint64> &oids)
    {
        QVariantList values = _query.values();
        std::string end;
        if (_lastOid) {
            end = " AND Origin.time_value >= ? AND NOT (Origin.time_value = ? AND "
                  "(Origin.time_value_ms < ? OR (Origin.time_value_ms = ? AND Event._oid <= ?)))";
            values << _lastTime << _lastTime << _lastUsecs << _lastUsecs << _lastOid;
        }
        end += " ORDER BY Origin.time_value, Origin.time_value_ms, Event._oid" + limit();
        return read(_query.statement("Event._oid, Origin.time_value, Origin.time_value_ms", end),
                    values, oids);
    }

    bool nextTimeless(std::vector<qint64> &oids)
    {
        const std::string end = " AND Event._oid > ? ORDER BY Event._oid" + limit();
        const qint64 last = _lastTime.isNull() ? _lastOid : 0;
        return read(SelectionQuery::statementOfTimeless("Event._oid, Origin.time_value, 0", end),
                    {last}, oids);
    }

    bool read(const std::string &statement, const QVariantList &values, std::vector<qint64> &oids)
    {
        QSqlQuery *query = _database.execute(statement, values);
        if (!query) {
            _error = _database.lastError();
            return false;
        }
        while (query->next()) {
            oids.push_back(query->value(0).toLongLong());
            _lastOid = oids.back();
            _lastTime = query->value(1);
            _lastUsecs = query->value(2).toInt();
        }
        _error = query->lastError().text().trimmed();
        query->finish();
        return _error.isEmpty();
    }

    static std::string limit() { return " LIMIT " + std::to_string(BatchSize); }

    DatabaseInterface &_database;
    const SelectionQuery _query;
    bool _isTimeless{false};
    qint64 _lastOid{0};
    QVariant _lastTime;
    int _lastUsecs{0};
    QString _error;
};

} // namespace

EventArchive::EventArchive(DatabaseInterfacePtr database) : _database(std::move(database))
{}

bool EventArchive::createSchema(DatabaseInterface &database, QString *error)
{
    return DatabaseSchema::create(database, error);
}

bool EventArchive::checkSchema(DatabaseInterface &database, QString *error)
{
    return DatabaseSchema::check(database, error);
}

bool EventArchive::write(const DataModel::Event &event, QString *error, bool *replaced)
{
    const QString name = "event " + QString::fromStdString(event.publicID) + ": ";
    const QString problem = problemOf(event);
    if (!problem.isEmpty())
        return fail(event.publicID.empty() ? problem : name + problem, error);

    const bool isOwn = !_database->isInTransaction();
    EventWriting writing(*_database, event);
    if ((!isOwn || _database->beginTransaction()) &&
        removeEvent(*_database, event.publicID, replaced) && writing.run() &&
        (!isOwn || _database->commit()))
        return true;

    const QString cause = writing.error();
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

} // namespace IO
} // namespace Tellarix
