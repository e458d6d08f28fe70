// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/databaseinterface.h>
#include <tellarix/core/datamodel/event.h>

#include <string>
#include <vector>

namespace Tellarix {
namespace IO {

/** What of an event can't be stored; empty if all can. */
QString storageProblemOf(const DataModel::Event &event);

/** Stores one event; every step is false when the database refuses it. */
class EventStoring
{
public:
    EventStoring(DatabaseInterface &database, const DataModel::Event &event)
        : _database(database), _event(event)
    {}

    bool run();

    QString error() const { return _error.isEmpty() ? _database.lastError() : _error; }

private:
    /** The public id and row under which a solution is stored. */
    struct Stored
    {
        std::string publicID;
        qint64 oid{0};
    };

    /** What has a public id; its place stands for its range of oids. */
    enum class Kind
    {
        Event,
        Origin,
        Magnitude,
        Mechanism
    };

    bool fail(const char *cause);
    qint64 addPublicID(const std::string &publicID, Kind kind);
    template <typename T>
    bool addPublicIDs(Kind kind, const char *name,
                      const std::vector<Core::SmartPointer<T>> &solutions,
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

/** Removes an event; its solutions and descriptions go with it. */
bool removeEvent(DatabaseInterface &database, const std::string &publicID, bool *wasThere);

} // namespace IO
} // namespace Tellarix
