// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/databaseconnection_p.h>

#include <QFileInfo>
#include <QSqlError>
#include <QStringList>
#include <QThread>
#include <QThreadStorage>

#include <algorithm>

namespace Tellarix {
namespace IO {

namespace {

using Backend = DatabaseInterface::Backend;

constexpr int ConnectSeconds = 10;
constexpr int LockSeconds = 5;

struct Driver
{
    const char *name;
    const char *package;
};

Driver driverOf(Backend backend)
{
    switch (backend) {
    case Backend::SQLite:
        return {"QSQLITE", "libqt5sql5-sqlite"};
    case Backend::PostgreSQL:
        return {"QPSQL", "libqt5sql5-psql"};
    case Backend::MariaDB:
        break;
    }
    return {"QMYSQL", "libqt5sql5-mysql"};
}

QString optionsOf(const DatabaseAddress &address)
{
    const int seconds = address.timeoutSeconds.value_or(ConnectSeconds);
    switch (address.backend) {
    case Backend::SQLite:
        return QString("QSQLITE_BUSY_TIMEOUT=%1")
            .arg(1000 * address.timeoutSeconds.value_or(LockSeconds));
    case Backend::PostgreSQL:
        return QString("connect_timeout=%1").arg(seconds);
    case Backend::MariaDB:
        break;
    }
    const QString socket = address.socket.isEmpty() ? QString() : ";UNIX_SOCKET=" + address.socket;
    return QString("MYSQL_OPT_CONNECT_TIMEOUT=%1%2").arg(seconds).arg(socket);
}

/** Statements that set a new connection up. */
QStringList greetingsOf(Backend backend)
{
    switch (backend) {
    case Backend::SQLite:
        // The file is looked at by the second one only: until then any would do.
        return {"PRAGMA foreign_keys = ON", "PRAGMA schema_version"};
    case Backend::PostgreSQL:
        return {"SET TIME ZONE 'UTC'"};
    case Backend::MariaDB:
        break;
    }
    return {"SET NAMES utf8mb4", "SET time_zone = '+00:00', sql_mode = 'STRICT_ALL_TABLES'"};
}

QString textOf(Backend backend, const QSqlError &error)
{
    const QString fromDatabase = error.databaseText().trimmed();
    const QString text = fromDatabase.isEmpty() ? error.driverText().trimmed() : fromDatabase;
    // Codes of SQLite for a lock of another connection or of the same; their lowest byte counts.
    const int code = error.nativeErrorCode().toInt() & 0xff;
    if (backend == Backend::SQLite && (code == 5 || code == 6))
        return QString("another program is writing to the file (%1)").arg(text);
    return text;
}

bool tellsLoss(Backend backend, const QSqlError &error)
{
    const QString code = error.nativeErrorCode();
    switch (backend) {
    case Backend::SQLite:
        return false;
    case Backend::PostgreSQL:
        // Without a code it is the client library that speaks: it has lost the server.
        return code.isEmpty() || code.startsWith("08") || code.startsWith("57P");
    case Backend::MariaDB:
        break;
    }
    // Server gone, connection lost (2013, 2055), killed, server being shut down.
    return QStringList{"2006", "2013", "2055", "1927", "1053"}.contains(code);
}

/** What the running thread has connected to; closed when it ends. */
class PoolsOfThread
{
public:
    ~PoolsOfThread()
    {
        for (const std::weak_ptr<ConnectionPool> &entry : _pools) {
            if (const auto pool = entry.lock())
                pool->closeOfThread();
        }
    }

    void add(const std::shared_ptr<ConnectionPool> &pool)
    {
        const auto hasGone = [](const auto &entry) { return entry.expired(); };
        _pools.erase(std::remove_if(_pools.begin(), _pools.end(), hasGone), _pools.end());
        _pools.push_back(pool);
    }

private:
    std::vector<std::weak_ptr<ConnectionPool>> _pools;
};

/** Qt's storage, for it is emptied before QThread::wait() returns and with QCoreApplication. It is
 *  never destroyed: threads may outlive static objects. */
PoolsOfThread &poolsOfThread()
{
    static auto *storage = new QThreadStorage<PoolsOfThread *>;
    if (!storage->hasLocalData())
        storage->setLocalData(new PoolsOfThread);
    return *storage->localData();
}

/** The connection that the thread used last, which spares fields a look into a locked table. */
struct LatestConnection
{
    uint64_t pool{0};
    DatabaseConnection *connection{nullptr};
};

thread_local LatestConnection latest;

uint64_t nextSerial()
{
    static std::atomic<uint64_t> serial{0};
    return ++serial;
}

} // namespace

DatabaseConnection::DatabaseConnection(const DatabaseAddress &address, const QString &name)
    : _address(address), _name(name)
{}

DatabaseConnection::~DatabaseConnection()
{
    close();
}

void DatabaseConnection::close()
{
    // Whatever belongs to the connection has to go before it is removed.
    query.reset();
    _statements.clear();
    _isLost = false;
    if (!_database.isValid())
        return;
    _database.close();
    _database = QSqlDatabase();
    QSqlDatabase::removeDatabase(_name);
}

bool DatabaseConnection::open(bool mayCreate)
{
    if (_database.isOpen() && !_isLost)
        return true;
    if (inTransaction)
        return fail(QString("the connection was lost in the middle of a transaction"));

    close();
    if (connect(mayCreate))
        return true;
    close();
    return false;
}

bool DatabaseConnection::connect(bool mayCreate)
{
    const Driver driver = driverOf(_address.backend);
    if (!QSqlDatabase::isDriverAvailable(driver.name))
        return fail(QString("Qt's driver %1 is missing (package %2)")
                        .arg(QLatin1String(driver.name), QLatin1String(driver.package)));
    if (_address.backend == Backend::SQLite && !mayCreate && !QFileInfo::exists(_address.database))
        return fail(QString("there is no such file"));

    _database = QSqlDatabase::addDatabase(driver.name, _name);
    _database.setDatabaseName(_address.database);
    const bool hasFolder = _address.backend == Backend::PostgreSQL && !_address.socket.isEmpty();
    _database.setHostName(hasFolder ? _address.socket : _address.host);
    _database.setPort(_address.port);
    _database.setUserName(_address.user);
    _database.setPassword(_address.password);
    _database.setConnectOptions(optionsOf(_address));
    if (!_database.open())
        return fail(_database.lastError());

    for (const QString &statement : greetingsOf(_address.backend)) {
        QSqlQuery greeting(_database);
        if (!greeting.exec(statement))
            return fail(greeting.lastError());
    }
    return true;
}

bool DatabaseConnection::fail(const QString &cause)
{
    error = cause;
    return false;
}

bool DatabaseConnection::fail(const QSqlError &cause)
{
    _isLost = _isLost || tellsLoss(_address.backend, cause);
    const QString text = textOf(_address.backend, cause);
    return fail(text.isEmpty() ? QString("unknown error") : text);
}

QSqlQuery *DatabaseConnection::prepared(const std::string &statement)
{
    const auto known = _statements.find(statement);
    if (known != _statements.end())
        return known->second.get();

    auto added = std::make_unique<QSqlQuery>(_database);
    added->setForwardOnly(true);
    if (!added->prepare(QString::fromStdString(statement))) {
        fail(added->lastError());
        return nullptr;
    }
    return _statements.emplace(statement, std::move(added)).first->second.get();
}

ConnectionPool::ConnectionPool(DatabaseAddress address)
    : _address(std::move(address)), _serial(nextSerial())
{}

DatabaseConnection *ConnectionPool::open()
{
    DatabaseConnection *connection = existing();
    if (!connection) {
        static std::atomic<uint64_t> count{0};
        const QString name = QString("tellarix-%1").arg(++count);
        const std::lock_guard<std::mutex> lock(_mutex);
        auto &entry = _connections[QThread::currentThreadId()];
        entry = std::make_unique<DatabaseConnection>(_address, name);
        connection = entry.get();
        poolsOfThread().add(shared_from_this());
        latest = {_serial, connection};
    }
    return connection->open(mayCreate) ? connection : nullptr;
}

DatabaseConnection *ConnectionPool::existing() const
{
    if (latest.pool == _serial)
        return latest.connection;

    const std::lock_guard<std::mutex> lock(_mutex);
    const auto found = _connections.find(QThread::currentThreadId());
    if (found == _connections.end())
        return nullptr;
    latest = {_serial, found->second.get()};
    return latest.connection;
}

void ConnectionPool::closeOfThread()
{
    if (latest.pool == _serial)
        latest = {};
    const std::lock_guard<std::mutex> lock(_mutex);
    _connections.erase(QThread::currentThreadId());
}

void ConnectionPool::closeAll()
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _connections.clear();
}

} // namespace IO
} // namespace Tellarix
