// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/eventstatements.h>

#include <array>
#include <locale>
#include <sstream>

namespace Norvu {
namespace Gui {

namespace {

using Tellarix::IO::DatabaseInterface;

struct Column
{
    const char *table;
    const char *name;
};

constexpr std::array<Column, static_cast<size_t>(EventField::Count)> RowColumns{{
    {"Origin", "time_value"},
    {"Origin", "time_value_ms"},
    {"Magnitude", "magnitude_value"},
    {"Magnitude", "type"},
    {"Origin", "quality_usedPhaseCount"},
    {"Origin", "latitude_value"},
    {"Origin", "longitude_value"},
    {"Origin", "depth_value"},
    {"Origin", "evaluationStatus"},
    {"Origin", "evaluationMode"},
    {"FocalMechanism", "nodalPlanes_nodalPlane1_strike_value"},
    {"FocalMechanism", "nodalPlanes_nodalPlane1_dip_value"},
    {"FocalMechanism", "nodalPlanes_nodalPlane1_rake_value"},
    {"PEvent", "publicID"},
    {"Event", "type"},
    {"EventDescription", "text"},
}};

/** Writes the pieces that both statements share. */
class StatementWriter
{
public:
    explicit StatementWriter(const DatabaseInterface &database) : _database(database)
    {
        // A host with decimal commas must not put them into numbers.
        _stream.imbue(std::locale::classic());
    }

    std::string statement() const { return _stream.str(); }

    void writeRowColumns()
    {
        const char *separator = "select ";
        for (const Column &column : RowColumns) {
            _stream << separator << column.table << '.' << spelt(column.name);
            separator = ",";
        }
    }

    void write(const char *text) { _stream << text; }

    void writeTail(const EventQuery &query)
    {
        _stream << " from Origin, PublicObject as POrigin,Magnitude, PublicObject as PMagnitude,"
                   "PublicObject as PEvent,Event"
                << " LEFT JOIN PublicObject as PFocalMechanism on Event."
                << spelt("preferredFocalMechanismID") << " = PFocalMechanism." << spelt("publicID")
                << " LEFT JOIN FocalMechanism on PFocalMechanism._oid = FocalMechanism._oid"
                << " LEFT JOIN EventDescription on EventDescription._parent_oid=Event._oid and "
                   "EventDescription."
                << spelt("type") << "='region name'"
                << " where POrigin." << spelt("publicID") << "=Event." << spelt("preferredOriginID")
                << "   and PMagnitude._oid = Magnitude._oid and Event."
                << spelt("preferredMagnitudeID") << " = PMagnitude." << spelt("publicID")
                << "   and Origin." << spelt("time_value") << " >= '"
                << _database.timeToString(query.begin) << "' and Origin." << spelt("time_value")
                << " <= '" << _database.timeToString(query.end) << "'";
        writeBounds(query.filter);
        _stream << " and Origin._oid=POrigin._oid and Event._oid=PEvent._oid";
    }

private:
    std::string spelt(const char *column) const { return _database.convertColumnName(column); }

    void writeBounds(const EventFilter &filter)
    {
        const struct
        {
            Column column;
            const std::optional<double> &from;
            const std::optional<double> &to;
        } ranges[] = {
            {{"Origin", "latitude_value"}, filter.fromLatitude, filter.toLatitude},
            {{"Origin", "longitude_value"}, filter.fromLongitude, filter.toLongitude},
            {{"Origin", "depth_value"}, filter.fromDepth, filter.toDepth},
            {{"Magnitude", "magnitude_value"}, filter.fromMagnitude, filter.toMagnitude},
        };
        for (const auto &range : ranges) {
            writeBound(range.column, " >= '", range.from);
            writeBound(range.column, " <= '", range.to);
        }
    }

    void writeBound(const Column &column, const char *comparison,
                    const std::optional<double> &bound)
    {
        if (bound)
            _stream << " and " << column.table << '.' << spelt(column.name) << comparison << *bound
                    << "'";
    }

    const DatabaseInterface &_database;
    std::ostringstream _stream;
};

} // namespace

std::string eventCountStatement(const DatabaseInterface &database, const EventQuery &query)
{
    StatementWriter writer(database);
    writer.write("select count(*)");
    writer.writeTail(query);
    return writer.statement();
}

std::string eventRowStatement(const DatabaseInterface &database, const EventQuery &query)
{
    StatementWriter writer(database);
    writer.writeRowColumns();
    writer.writeTail(query);
    return writer.statement();
}

} // namespace Gui
} // namespace Norvu
