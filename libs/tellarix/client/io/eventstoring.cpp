// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/eventstoring_p.h>

#include <tellarix/client/io/databaseschema.h>
#include <tellarix/client/io/eventrows_p.h>

#include <QSqlQuery>

#include <algorithm>

namespace Tellarix {
namespace IO {

namespace {

using Backend = DatabaseInterface::Backend;
using EventColumns::TableOf;

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

/**
 * The next oid of a kind of objects in SQLite. Each kind has a range of its own: the rows of one
 * lie side by side then, and lists that go through the tables together find each row behind the
 * last one, which takes a third off the time in which events are counted.
 */
std::string nextOid(int kind)
{
    constexpr int64_t RangeLength = int64_t(1) << 32;
    const std::string first = std::to_string(kind * RangeLength);
    return "(SELECT COALESCE(MAX(_oid), " + first + ") + 1 FROM PublicObject WHERE _oid > " +
           first + " AND _oid < " + std::to_string((kind + 1) * RangeLength) + ')';
}

} // namespace

QString storageProblemOf(const DataModel::Event &event)
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

bool EventStoring::run()
{
    _eventOid = addPublicID(_event.publicID, Kind::Event);
    if (!_eventOid)
        return fail("its publicID is that of something else in the database");
    return addPublicIDs(Kind::Origin, "origin", _event.origins, _origins) &&
           addPublicIDs(Kind::Magnitude, "magnitude", _event.magnitudes, _magnitudes) &&
           addPublicIDs(Kind::Mechanism, "mechanism", _event.focalMechanisms, _mechanisms) &&
           addEvent() && addDescriptions() && addOrigins() && addMagnitudes() && addMechanisms();
}

bool EventStoring::fail(const char *cause)
{
    if (_database.lastError().isEmpty())
        _error = cause;
    return false;
}

/** Takes a public id; 0 if another object has it, or on an error. */
qint64 EventStoring::addPublicID(const std::string &publicID, Kind kind)
{
    const QVariantList values{_eventOid ? QVariant(_eventOid) : QVariant(QVariant::LongLong),
                              QString::fromStdString(publicID)};
    QSqlQuery *query = nullptr;
    switch (_database.backend()) {
    case Backend::SQLite:
        query = _database.execute("INSERT OR IGNORE INTO PublicObject (_oid, _parent_oid, publicID)"
                                  " VALUES (" +
                                      nextOid(static_cast<int>(kind)) + ", ?, ?)",
                                  values);
        break;
    case Backend::MariaDB:
        query = _database.execute(
            "INSERT IGNORE INTO PublicObject (_parent_oid, publicID) VALUES (?, ?)", values);
        break;
    case Backend::PostgreSQL:
        query = _database.execute("INSERT INTO PublicObject (_parent_oid, publicID) VALUES (?, ?)"
                                  " ON CONFLICT (publicID) DO NOTHING RETURNING _oid",
                                  values);
        const qint64 oid = query && query->next() ? query->value(0).toLongLong() : 0;
        if (query)
            query->finish();
        return oid;
    }
    return query && query->numRowsAffected() == 1 ? query->lastInsertId().toLongLong() : 0;
}

template <typename T>
bool EventStoring::addPublicIDs(Kind kind, const char *name,
                                const std::vector<Core::SmartPointer<T>> &solutions,
                                std::vector<Stored> &stored)
{
    const auto made = [&](int attempt) {
        const std::string id =
            _event.publicID + '/' + name + '/' + std::to_string(stored.size() + 1);
        return attempt == 1 ? id : id + '-' + std::to_string(attempt);
    };
    constexpr int Attempts = 100;
    for (const auto &solution : solutions) {
        Stored entry{solution->publicID, 0};
        if (!entry.publicID.empty())
            entry.oid = addPublicID(entry.publicID, kind);
        for (int attempt = 1; !entry.oid && attempt <= Attempts; ++attempt) {
            entry.publicID = made(attempt);
            if (entry.publicID.size() > DatabaseSchema::KeyLength ||
                !_database.lastError().isEmpty())
                break;
            entry.oid = addPublicID(entry.publicID, kind);
        }
        if (!entry.oid)
            return fail("its publicID is too long to make ids for its solutions of it");
        stored.push_back(entry);
    }
    return true;
}

template <typename T>
bool EventStoring::addRow(T &object, const QVariantList &keys)
{
    static const std::string statement = insertionOf<T>();
    RowWriter row(_database, keys);
    EventColumns::visit(row, object);
    return _database.execute(statement, row.values());
}

template <typename T>
std::string EventStoring::storedID(const std::vector<Core::SmartPointer<T>> &solutions,
                                   const std::vector<Stored> &stored, const T *solution)
{
    for (size_t i = 0; i < solutions.size(); ++i) {
        if (solutions[i].get() == solution)
            return stored[i].publicID;
    }
    return {};
}

std::string EventStoring::storedOriginID(const std::string &publicID) const
{
    for (size_t i = 0; i < _origins.size(); ++i) {
        if (!publicID.empty() && _event.origins[i]->publicID == publicID)
            return _origins[i].publicID;
    }
    return publicID;
}

bool EventStoring::addEvent()
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

bool EventStoring::addDescriptions()
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

bool EventStoring::addOrigins()
{
    for (size_t i = 0; i < _origins.size(); ++i) {
        DataModel::Origin origin(*_event.origins[i]);
        if (!addRow(origin, {_origins[i].oid, _eventOid}))
            return false;
    }
    return true;
}

bool EventStoring::addMagnitudes()
{
    for (size_t i = 0; i < _magnitudes.size(); ++i) {
        DataModel::Magnitude magnitude(*_event.magnitudes[i]);
        magnitude.originID = storedOriginID(magnitude.originID);
        if (!addRow(magnitude, {_magnitudes[i].oid, _eventOid}))
            return false;
    }
    return true;
}

bool EventStoring::addMechanisms()
{
    for (size_t i = 0; i < _mechanisms.size(); ++i) {
        DataModel::FocalMechanism mechanism(*_event.focalMechanisms[i]);
        mechanism.triggeringOriginID = storedOriginID(mechanism.triggeringOriginID);
        if (!addRow(mechanism, {_mechanisms[i].oid, _eventOid}))
            return false;
    }
    return true;
}

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

} // namespace IO
} // namespace Tellarix
