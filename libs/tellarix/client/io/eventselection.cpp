// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/eventselection_p.h>

#include <tellarix/client/io/eventreading_p.h>

#include <QSqlError>
#include <QSqlQuery>

namespace Tellarix {
namespace IO {

namespace {

std::string limit()
{
    return " LIMIT " + std::to_string(EventReading::BatchSize);
}

} // namespace

SelectionQuery::SelectionQuery(const DatabaseInterface &database, const EventSelection &selection)
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
    addRange("Magnitude.magnitude_value", selection.minimumMagnitude, selection.maximumMagnitude);
    _isBounded = !_conditions.empty();
}

std::string SelectionQuery::statement(const std::string &fields, const std::string &end) const
{
    return "SELECT " + fields + " FROM Event, PublicObject AS POrigin, Origin" + _tables +
           " WHERE POrigin.publicID = Event.preferredOriginID AND Origin._oid = POrigin._oid"
           " AND Origin.time_value IS NOT NULL" +
           _conditions + end;
}

std::string SelectionQuery::statementOfTimeless(const std::string &fields, const std::string &end)
{
    return "SELECT " + fields +
           " FROM Event LEFT JOIN PublicObject AS POrigin"
           " ON POrigin.publicID = Event.preferredOriginID"
           " LEFT JOIN Origin ON Origin._oid = POrigin._oid WHERE Origin.time_value IS NULL" +
           end;
}

/** Bounds by the second, which the index is good for, and leaves out the rest of that second. */
void SelectionQuery::addTime(const char *within, const char *beyond, Core::Time time)
{
    _conditions += std::string(" AND Origin.time_value ") + within +
                   " ? AND NOT (Origin.time_value = ? AND Origin.time_value_ms " + beyond + " ?)";
    const QString second = QString::fromStdString(_database.timeToString(time));
    _values << second << second << time.fields().usec;
}

void SelectionQuery::addRange(const char *column, const std::optional<double> &minimum,
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

bool SelectionWalk::next(std::vector<qint64> &oids)
{
    oids.clear();
    if (!_isTimeless && !nextByTime(oids))
        return false;
    _isTimeless = _isTimeless || oids.empty();
    return !oids.empty() || _query.isBounded() || nextTimeless(oids);
}

bool SelectionWalk::nextByTime(std::vector<qint64> &oids)
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

bool SelectionWalk::nextTimeless(std::vector<qint64> &oids)
{
    const std::string end = " AND Event._oid > ? ORDER BY Event._oid" + limit();
    const qint64 last = _lastTime.isNull() ? _lastOid : 0;
    return read(SelectionQuery::statementOfTimeless("Event._oid, Origin.time_value, 0", end),
                {last}, oids);
}

bool SelectionWalk::read(const std::string &statement, const QVariantList &values,
                         std::vector<qint64> &oids)
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

} // namespace IO
} // namespace Tellarix
