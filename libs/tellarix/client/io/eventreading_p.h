// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/databaseinterface.h>
#include <tellarix/core/datamodel/event.h>

#include <unordered_map>
#include <vector>

namespace Tellarix {
namespace IO {

/** Reads whole events by their oids. */
class EventReading
{
public:
    /** Events that are read at a time. */
    static constexpr int BatchSize = 200;

    explicit EventReading(DatabaseInterface &database) : _database(database) {}

    /** The events that are there, in the order of their oids; false with an error. */
    bool run(const std::vector<qint64> &oids, std::vector<DataModel::EventPtr> &events);

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

} // namespace IO
} // namespace Tellarix
