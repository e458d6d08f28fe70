// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/databaseconnection_p.h>
#include <tellarix/client/io/databaseinterface.h>

#include <tellarix/core/strings.h>

#include <QDateTime>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlRecord>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

namespace Tellarix {
namespace IO {

namespace {

/** "2024-01-05 10:11:12" */
constexpr size_t TimeLength = 19;

const Core::Time FirstTime(1, 1, 1);
const Core::Time LastTime(9999, 12, 31, 23, 59, 59, 999999);

template <typename T>
void setNumber(std::string &text, T value)
{
    char digits[32];
    const auto result = std::to_chars(digits, digits + sizeof digits, value);
    text.assign(digits, result.ptr);
}

void setUtf8(std::string &text, const QString &value)
{
    const auto isAscii = [](QChar c) { return c.unicode() < 0x80; };
    if (!std::all_of(value.begin(), value.end(), isAscii)) {
        text = value.toStdString();
        return;
    }
    text.resize(static_cast<size_t>(value.size()));
    std::transform(value.begin(), value.end(), text.begin(), [](QChar c) { return c.toLatin1(); });
}

void setText(std::string &text, const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::QString:
        setUtf8(text, *static_cast<const QString *>(value.constData()));
        break;
    case QMetaType::QByteArray:
        text = static_cast<const QByteArray *>(value.constData())->toStdString();
        break;
    case QMetaType::Double:
        setNumber(text, *static_cast<const double *>(value.constData()));
        break;
    case QMetaType::Int:
    case QMetaType::LongLong:
        setNumber(text, value.toLongLong());
        break;
    case QMetaType::QDateTime:
        setUtf8(text, value.toDateTime().toString("yyyy-MM-dd HH:mm:ss"));
        break;
    default:
        setUtf8(text, value.toString());
    }
}

/** Reads a number of @p count digits. */
bool readDigits(const char *text, int count, int &number)
{
    number = 0;
    for (int i = 0; i < count; ++i) {
        if (text[i] < '0' || text[i] > '9')
            return false;
        number = 10 * number + (text[i] - '0');
    }
    return true;
}

/** Reads the form in which times are stored; a hundred thousand of them are to be read at once. */
Core::Time readStoredTime(const char *text)
{
    Core::TimeFields fields;
    const bool isTime = readDigits(text, 4, fields.year) && text[4] == '-' &&
                        readDigits(text + 5, 2, fields.month) && text[7] == '-' &&
                        readDigits(text + 8, 2, fields.day) && text[10] == ' ' &&
                        readDigits(text + 11, 2, fields.hour) && text[13] == ':' &&
                        readDigits(text + 14, 2, fields.minute) && text[16] == ':' &&
                        readDigits(text + 17, 2, fields.second);
    return isTime ? Core::Time(fields) : Core::Time();
}

/** A text with what PostgreSQL can't hold replaced. */
QVariant storable(const QVariant &value)
{
    if (value.userType() != QMetaType::QString || value.isNull())
        return value;
    const QString text = value.toString();
    return text.contains(QChar(0)) ? QString(text).replace(QChar(0), QChar::ReplacementCharacter)
                                   : text;
}

} // namespace

DatabaseInterfacePtr DatabaseInterface::Open(const QString &url, QString *error)
{
    const auto address = DatabaseAddress::Read(url, error);
    if (!address)
        return nullptr;

    DatabaseInterfacePtr database(
        new DatabaseInterface(std::make_shared<ConnectionPool>(*address)));
    if (address->backend == Backend::SQLite && !QFileInfo::exists(address->database))
        return database;
    if (database->_pool->open())
        return database;
    if (error)
        *error = address->display() + ": " + database->lastError();
    return nullptr;
}

DatabaseInterface::DatabaseInterface(std::shared_ptr<ConnectionPool> pool) : _pool(std::move(pool))
{}

DatabaseInterface::~DatabaseInterface()
{
    _pool->closeAll();
}

DatabaseInterface::Backend DatabaseInterface::backend() const
{
    return _pool->address().backend;
}

QString DatabaseInterface::displayUrl() const
{
    return _pool->address().display();
}

QString DatabaseInterface::address() const
{
    return _pool->address().toString();
}

bool DatabaseInterface::isReadOnly() const
{
    return _pool->address().isReadOnly || isFrozenFile(_pool->address());
}

std::string DatabaseInterface::convertColumnName(const std::string &name) const
{
    if (backend() != Backend::PostgreSQL)
        return name;

    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; };
    std::string spelt(name);
    std::transform(spelt.begin(), spelt.end(), spelt.begin(), lower);
    return spelt;
}

std::string DatabaseInterface::timeToString(Core::Time time) const
{
    const Core::TimeFields fields = std::clamp(time, FirstTime, LastTime).fields();
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", fields.year, fields.month,
                  fields.day, fields.hour, fields.minute, fields.second);
    return text;
}

Core::Time DatabaseInterface::stringToTime(const char *text) const
{
    if (!text)
        return {};
    return std::strlen(text) == TimeLength ? readStoredTime(text) : Core::Time::FromString(text);
}

bool DatabaseInterface::beginQuery(const std::string &statement)
{
    endQuery();
    const QString text = QString::fromStdString(statement);
    DatabaseConnection *connection = _pool->run([&](DatabaseConnection &connection) {
        connection.query.emplace(connection.database());
        connection.query->setForwardOnly(true);
        if (connection.query->exec(text))
            return true;
        const QSqlError error = connection.query->lastError();
        connection.query.reset();
        return connection.fail(error);
    });
    if (!connection)
        return false;

    connection->row = -1;
    connection->fields.clear();
    connection->fields.resize(static_cast<size_t>(connection->query->record().count()));
    return true;
}

bool DatabaseInterface::fetchRow()
{
    DatabaseConnection *connection = _pool->existing();
    if (!connection || !connection->query)
        return false;

    ++connection->row;
    if (connection->query->next())
        return true;
    connection->error.clear();
    const QSqlError error = connection->query->lastError();
    return error.isValid() && connection->fail(error);
}

int DatabaseInterface::fieldCount() const
{
    const DatabaseConnection *connection = _pool->existing();
    return connection && connection->query ? static_cast<int>(connection->fields.size()) : 0;
}

const char *DatabaseInterface::field(int index) const
{
    DatabaseConnection *connection = _pool->existing();
    if (!connection || !connection->query || index < 0 ||
        static_cast<size_t>(index) >= connection->fields.size())
        return nullptr;

    FieldText &field = connection->fields[static_cast<size_t>(index)];
    if (field.row != connection->row) {
        const QVariant value = connection->query->value(index);
        field.row = connection->row;
        field.isNull = value.isNull();
        if (!field.isNull)
            setText(field.text, value);
    }
    return field.isNull ? nullptr : field.text.c_str();
}

bool DatabaseInterface::readField(int index, int &value) const
{
    const char *text = field(index);
    return text && Core::fromString(value, text);
}

bool DatabaseInterface::readField(int index, float &value) const
{
    double number = 0;
    if (!readField(index, number) || std::abs(number) > std::numeric_limits<float>::max())
        return false;
    value = static_cast<float>(number);
    return true;
}

bool DatabaseInterface::readField(int index, double &value) const
{
    const DatabaseConnection *connection = _pool->existing();
    if (!connection || !connection->query)
        return false;

    const QVariant number = connection->query->value(index);
    if (number.userType() != QMetaType::Double) {
        const char *text = field(index);
        return text && Core::fromString(value, text);
    }
    const double read = *static_cast<const double *>(number.constData());
    if (number.isNull() || !std::isfinite(read))
        return false;
    value = read;
    return true;
}

void DatabaseInterface::endQuery()
{
    if (DatabaseConnection *connection = _pool->existing())
        connection->query.reset();
}

bool DatabaseInterface::execute(const std::string &statement)
{
    const QString text = QString::fromStdString(statement);
    return _pool->run([&](DatabaseConnection &connection) {
        QSqlQuery query(connection.database());
        return query.exec(text) || connection.fail(query.lastError());
    });
}

QSqlQuery *DatabaseInterface::execute(const std::string &statement, const QVariantList &values)
{
    QSqlQuery *query = nullptr;
    const bool hasRun = _pool->run([&](DatabaseConnection &connection) {
        query = connection.prepared(statement);
        if (!query)
            return false;
        for (int i = 0; i < values.size(); ++i)
            query->bindValue(i, storable(values[i]));
        return query->exec() || connection.fail(query->lastError());
    });
    return hasRun ? query : nullptr;
}

bool DatabaseInterface::beginTransaction()
{
    if (isInTransaction())
        return _pool->existing()->fail("a transaction is running already");

    // SQLite would wait for the file when it is first written to, and give up at once if another
    // program has changed it since the transaction began.
    const char *statement = backend() == Backend::SQLite ? "BEGIN IMMEDIATE" : "BEGIN";
    if (!execute(statement))
        return false;
    _pool->existing()->inTransaction = true;
    return true;
}

bool DatabaseInterface::commit()
{
    if (!isInTransaction() || !execute("COMMIT"))
        return false;
    _pool->existing()->inTransaction = false;
    return true;
}

void DatabaseInterface::rollback()
{
    if (!isInTransaction())
        return;
    DatabaseConnection *connection = _pool->existing();
    const QString cause = connection->error;
    execute("ROLLBACK");
    connection->inTransaction = false;
    connection->error = cause;
}

bool DatabaseInterface::isInTransaction() const
{
    const DatabaseConnection *connection = _pool->existing();
    return connection && connection->inTransaction;
}

void DatabaseInterface::cancel()
{
    _pool->cancel();
}

QString DatabaseInterface::lastError() const
{
    const DatabaseConnection *connection = _pool->existing();
    return connection ? connection->error : QString();
}

QSqlDatabase DatabaseInterface::connection()
{
    const DatabaseConnection *connection = _pool->open();
    return connection ? connection->database() : QSqlDatabase();
}

bool DatabaseInterface::createFile()
{
    _pool->mayCreate = true;
    const bool isOpen = _pool->open();
    _pool->mayCreate = false;
    return isOpen;
}

} // namespace IO
} // namespace Tellarix
