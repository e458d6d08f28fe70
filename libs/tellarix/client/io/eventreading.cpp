// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/eventreading_p.h>

#include <tellarix/client/io/eventrows_p.h>

#include <QSqlError>
#include <QSqlQuery>

#include <algorithm>

namespace Tellarix {
namespace IO {

namespace {

using EventColumns::TableOf;

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

} // namespace

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

bool EventReading::run(const std::vector<qint64> &oids, std::vector<DataModel::EventPtr> &events)
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

} // namespace IO
} // namespace Tellarix
