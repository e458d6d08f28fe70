// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/eventarchive.h>

#include <QVariantList>

#include <string>
#include <vector>

namespace Tellarix {
namespace IO {

/** Tables, conditions and values that pick the events of a selection. */
class SelectionQuery
{
public:
    SelectionQuery(const DatabaseInterface &database, const EventSelection &selection);

    bool isBounded() const { return _isBounded; }

    /** A statement on the events whose preferred origin has a time. */
    std::string statement(const std::string &fields, const std::string &end = {}) const;
    /** A statement on the others. */
    static std::string statementOfTimeless(const std::string &fields, const std::string &end = {});

    const QVariantList &values() const { return _values; }

private:
    void addTime(const char *within, const char *beyond, Core::Time time);
    void addRange(const char *column, const std::optional<double> &minimum,
                  const std::optional<double> &maximum);

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
    bool next(std::vector<qint64> &oids);

    QString error() const { return _error; }

private:
    bool nextByTime(std::vector<qint64> &oids);
    bool nextTimeless(std::vector<qint64> &oids);
    bool read(const std::string &statement, const QVariantList &values, std::vector<qint64> &oids);

    DatabaseInterface &_database;
    const SelectionQuery _query;
    bool _isTimeless{false};
    qint64 _lastOid{0};
    QVariant _lastTime;
    int _lastUsecs{0};
    QString _error;
};

} // namespace IO
} // namespace Tellarix
