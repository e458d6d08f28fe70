// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/databaseinterface.h>
#include <tellarix/client/io/eventcolumns_p.h>

#include <QSqlQuery>
#include <QVariantList>

#include <string>
#include <vector>

namespace Tellarix {
namespace IO {

/** Texts with commas between them and something before each. */
std::string joined(const std::vector<std::string> &texts, const char *before = "");

/** A text as a value of a statement; null if it is empty. */
QVariant storedText(const std::string &text);

/** Names the columns that an object is stored in. */
class ColumnNames
{
public:
    void key(const char *name, std::string &) { _names.emplace_back(name); }
    void text(const char *name, std::string &) { _names.emplace_back(name); }
    void real(const char *name, const char *suffix, std::optional<double> &) { add(name, suffix); }
    void number(const char *name, const char *suffix, double &) { add(name, suffix); }
    void integer(const char *name, std::optional<int> &) { _names.emplace_back(name); }
    void time(const char *name, Core::Time &)
    {
        add(name, "");
        add(name, "_ms");
    }

    template <typename T>
    static std::vector<std::string> Of()
    {
        T object;
        ColumnNames names;
        EventColumns::visit(names, object);
        return names._names;
    }

private:
    void add(const char *name, const char *suffix) { _names.push_back(std::string(name) + suffix); }

    std::vector<std::string> _names;
};

/** Finds what can't be stored. */
class RowChecker
{
public:
    void key(const char *name, std::string &text);
    void text(const char *, std::string &) {}
    void real(const char *, const char *, std::optional<double> &) {}
    void number(const char *, const char *, double &) {}
    void integer(const char *, std::optional<int> &) {}
    void time(const char *name, Core::Time &time);

    /** The first thing found; empty if all can be stored. */
    const QString &problem() const { return _problem; }

private:
    QString _problem;
};

/** Lists the values of a row behind those of its key columns. */
class RowWriter
{
public:
    RowWriter(const DatabaseInterface &database, QVariantList keys)
        : _database(database), _values(std::move(keys))
    {}

    void key(const char *, std::string &text) { _values << storedText(text); }
    void text(const char *, std::string &text) { _values << storedText(text); }
    void real(const char *, const char *, std::optional<double> &value);
    void number(const char *, const char *, double &value);
    void integer(const char *, std::optional<int> &value);
    void time(const char *, Core::Time &time);

    const QVariantList &values() const { return _values; }

private:
    const DatabaseInterface &_database;
    QVariantList _values;
};

/** Sets an object from the current row of a result. */
class RowReader
{
public:
    RowReader(const DatabaseInterface &database, const QSqlQuery &query, int firstColumn)
        : _database(database), _query(query), _column(firstColumn)
    {}

    void key(const char *, std::string &text) { text = nextText(); }
    void text(const char *, std::string &text) { text = nextText(); }
    void real(const char *, const char *, std::optional<double> &value);
    void number(const char *, const char *, double &value);
    void integer(const char *, std::optional<int> &value);
    void time(const char *, Core::Time &time);

private:
    QVariant next() { return _query.value(_column++); }
    std::string nextText() { return next().toByteArray().toStdString(); }

    const DatabaseInterface &_database;
    const QSqlQuery &_query;
    int _column;
};

} // namespace IO
} // namespace Tellarix
