// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/databaseconnection_p.h>

#include <QFile>
#include <QFileInfo>
#include <QLibrary>
#include <QSqlDriver>
#include <QSqlError>
#include <QStringList>
#include <QThread>
#include <QThreadStorage>
#include <QUrl>

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
        return QString("QSQLITE_BUSY_TIMEOUT=%1;QSQLITE_OPEN_URI%2")
            .arg(1000 * address.timeoutSeconds.value_or(LockSeconds))
            .arg(address.isReadOnly ? ";QSQLITE_OPEN_READONLY" : "");
    case Backend::PostgreSQL:
        return QString("connect_timeout=%1").arg(seconds);
    case Backend::MariaDB:
        break;
    }
    const QString socket = address.socket.isEmpty() ? QString() : ";UNIX_SOCKET=" + address.socket;
    return QString("MYSQL_OPT_CONNECT_TIMEOUT=%1%2").arg(seconds).arg(socket);
}

/** The name of a database as its driver takes it. */
QString nameOf(const DatabaseAddress &address)
{
    if (address.backend != Backend::SQLite)
        return address.database;
    const QString start = QFileInfo(address.database).isAbsolute() ? "file://" : "file:";
    const QString uri = start + QUrl::toPercentEncoding(address.database, "/");
    return isFrozenFile(address) ? uri + "?immutable=1" : uri;
}

/** Statements that set a new connection up; the last one gives the server's number of it. */
QStringList greetingsOf(const DatabaseAddress &address)
{
    QStringList greetings;
    switch (address.backend) {
    case Backend::SQLite:
        // The file is looked at by the second one only: until then any would do.
        return {"PRAGMA foreign_keys = ON", "PRAGMA schema_version"};
    case Backend::PostgreSQL:
        greetings << "SET TIME ZONE 'UTC'";
        if (address.isReadOnly)
            greetings << "SET default_transaction_read_only = on";
        return greetings << "SELECT pg_backend_pid()";
    case Backend::MariaDB:
        break;
    }
    greetings << "SET NAMES utf8mb4"
              << "SET time_zone = '+00:00', sql_mode = 'STRICT_ALL_TABLES'";
    if (address.isReadOnly)
        greetings << "SET SESSION TRANSACTION READ ONLY";
    return greetings << "SELECT CONNECTION_ID()";
}

/** Whether an SQLite file keeps its changes in a log beside it. */
bool hasLog(const QString &name)
{
    // The two versions that the header asks for from who writes and who reads.
    constexpr int VersionsAt = 18;
    QFile file(name);
    return file.open(QIODevice::ReadOnly) &&
           file.read(VersionsAt + 2).mid(VersionsAt) == QByteArray(2, 2);
}

bool isInWritableFolder(const QString &name)
{
    return QFileInfo(QFileInfo(name).absolutePath()).isWritable();
}

/** What SQLite's text about a file that can't be opened leaves out; empty if it is something else.
 */
QString causeOf(const DatabaseAddress &address)
{
    const QString name = QFileInfo(address.database).canonicalFilePath();
    if (address.backend != Backend::SQLite || name.isEmpty() || !hasLog(name) ||
        isInWritableFolder(name) || QFileInfo(name + "-wal").size() == 0)
        return {};
    return QString(" (changes are in %1-wal, and nothing can be written into its folder)")
        .arg(name);
}

using Interrupt = void (*)(void *);

/** What interrupts SQLite: of the very library that the driver uses, or null. */
Interrupt interruptOf(const QSqlDatabase &database)
{
    static const Interrupt found = [&]() -> Interrupt {
        QLibrary library("sqlite3", 0);
        const auto source =
            reinterpret_cast<const char *(*)()>(library.resolve("sqlite3_sourceid"));
        const auto interrupt = reinterpret_cast<Interrupt>(library.resolve("sqlite3_interrupt"));
        QSqlQuery query("SELECT sqlite_source_id()", database);
        return source && interrupt && query.next() && query.value(0).toString() == source()
                   ? interrupt
                   : nullptr;
    }();
    return found;
}

/** The driver's handle of an SQLite file; null if there is none. */
void *handleOf(const QSqlDatabase &database)
{
    const QVariant handle = database.driver()->handle();
    return qstrcmp(handle.typeName(), "sqlite3*") == 0
               ? *static_cast<void *const *>(handle.constData())
               : nullptr;
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

/** A name that no connection of Qt has yet. */
QString newName()
{
    static std::atomic<uint64_t> count{0};
    return QString("tellarix-%1").arg(++count);
}

} // namespace

bool isFrozenFile(const DatabaseAddress &address)
{
    const QString name = QFileInfo(address.database).canonicalFilePath();
    // With a log others are at work, or have left behind what isn't in the file yet.
    return address.backend == Backend::SQLite && !name.isEmpty() && hasLog(name) &&
           !isInWritableFolder(name) && QFileInfo(name + "-wal").size() == 0 &&
           !QFileInfo::exists(name + "-shm");
}

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
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        _file = nullptr;
        _serverNumber.clear();
    }
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
    _database.setDatabaseName(nameOf(_address));
    const bool hasFolder = _address.backend == Backend::PostgreSQL && !_address.socket.isEmpty();
    _database.setHostName(hasFolder ? _address.socket : _address.host);
    _database.setPort(_address.port);
    _database.setUserName(_address.user);
    _database.setPassword(_address.password);
    _database.setConnectOptions(optionsOf(_address));
    if (!_database.open())
        return fail(_database.lastError());
    if (greet())
        return true;
    error += causeOf(_address);
    return false;
}

bool DatabaseConnection::greet()
{
    QString answer;
    for (const QString &statement : greetingsOf(_address)) {
        QSqlQuery greeting(_database);
        if (!greeting.exec(statement))
            return fail(greeting.lastError());
        answer = greeting.next() ? greeting.value(0).toString() : QString();
    }
    const bool isFile = _address.backend == Backend::SQLite;
    void *file = isFile && interruptOf(_database) ? handleOf(_database) : nullptr;
    const std::lock_guard<std::mutex> lock(_mutex);
    _file = file;
    _serverNumber = isFile ? QString() : answer;
    return true;
}

void DatabaseConnection::interrupt()
{
    const std::lock_guard<std::mutex> lock(_mutex);
    if (_file)
        interruptOf(_database)(_file);
}

QString DatabaseConnection::serverNumber() const
{
    const std::lock_guard<std::mutex> lock(_mutex);
    return _serverNumber;
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
        const std::lock_guard<std::mutex> lock(_mutex);
        auto &entry = _connections[QThread::currentThreadId()];
        entry = std::make_unique<DatabaseConnection>(_address, newName());
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

void ConnectionPool::cancel()
{
    QStringList numbers;
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        for (const auto &[thread, connection] : _connections) {
            if (thread == QThread::currentThreadId())
                continue;
            connection->interrupt();
            numbers << connection->serverNumber();
        }
    }
    numbers.removeAll(QString());
    if (numbers.isEmpty())
        return;

    DatabaseConnection other(_address, newName());
    if (!other.open(false))
        return;
    const bool isMariaDB = _address.backend == Backend::MariaDB;
    for (const QString &number : qAsConst(numbers)) {
        QSqlQuery(other.database())
            .exec(
                QString(isMariaDB ? "KILL QUERY %1" : "SELECT pg_cancel_backend(%1)").arg(number));
    }
}

void ConnectionPool::closeAll()
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _connections.clear();
}

} // namespace IO
} // namespace Tellarix
