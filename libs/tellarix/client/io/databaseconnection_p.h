// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/databaseaddress.h>

#include <QSqlDatabase>
#include <QSqlQuery>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace Tellarix {
namespace IO {

/** Whether an SQLite file can be read only as one that nobody changes: it keeps its changes in a
 * log, for which its folder has no place. */
bool isFrozenFile(const DatabaseAddress &address);

/** Text of a field, made when it is first asked for. */
struct FieldText
{
    int64_t row{-1}; /**< the row that it was made of */
    bool isNull{true};
    std::string text;
};

/** The Qt connection of one thread and what goes on in it. */
class DatabaseConnection
{
public:
    DatabaseConnection(const DatabaseAddress &address, const QString &name);
    ~DatabaseConnection();

    /** Connects unless it is; false with an error. A connection that was lost is replaced, except
     *  within a transaction, which has to be rolled back first. */
    bool open(bool mayCreate);

    /** Keeps the cause of a failure; always returns false. */
    bool fail(const QString &cause);
    /** The same, and notes whether it tells that the connection is lost. */
    bool fail(const QSqlError &cause);
    /** True if the connection was lost outside of a transaction: what failed may be tried again in
     *  a new one. */
    bool canRetry() const { return _isLost && !inTransaction; }

    /** A prepared statement, which is kept; null with an error. */
    QSqlQuery *prepared(const std::string &statement);

    QSqlDatabase database() const { return _database; }

    /** Ends the statement that runs, of an SQLite file; may be called from any thread. */
    void interrupt();
    /** The server's number of the connection, to end its statement with; empty for SQLite and if it
     *  isn't open. May be called from any thread. */
    QString serverNumber() const;

    std::optional<QSqlQuery> query;
    int64_t row{-1};
    std::vector<FieldText> fields;
    bool inTransaction{false};
    QString error;

private:
    void close();
    bool connect(bool mayCreate);
    bool greet();

    const DatabaseAddress _address;
    const QString _name;
    QSqlDatabase _database;
    std::unordered_map<std::string, std::unique_ptr<QSqlQuery>> _statements;
    bool _isLost{false};
    mutable std::mutex _mutex; /**< guards what follows */
    void *_file{nullptr};      /**< SQLite's handle */
    QString _serverNumber;
};

/** The connections of all threads to one database. */
class ConnectionPool : public std::enable_shared_from_this<ConnectionPool>
{
public:
    explicit ConnectionPool(DatabaseAddress address);

    const DatabaseAddress &address() const { return _address; }

    /** The connection of the calling thread, connected; null if that failed. */
    DatabaseConnection *open();
    /** The connection of the calling thread as it is; null if it has none. */
    DatabaseConnection *existing() const;

    /**
     * Calls @p action with the open connection of the calling thread, and once more with a new one
     * if it fails since the connection was lost.
     * @return the connection; null on failure
     */
    template <typename Action>
    DatabaseConnection *run(Action action)
    {
        DatabaseConnection *connection = open();
        for (bool isFirst = true; connection; isFirst = false) {
            connection->error.clear();
            if (action(*connection))
                return connection;
            if (!isFirst || !connection->canRetry())
                break;
            connection = open();
        }
        return nullptr;
    }

    /** Closes the connection of the calling thread. */
    void closeOfThread();
    /** Ends the statements that run. */
    void cancel();
    /** Closes all; no thread may be using one. */
    void closeAll();

    std::atomic<bool> mayCreate{false};

private:
    const DatabaseAddress _address;
    const uint64_t _serial; /**< never used again in this process */
    mutable std::mutex _mutex;
    std::unordered_map<Qt::HANDLE, std::unique_ptr<DatabaseConnection>> _connections;
};

} // namespace IO
} // namespace Tellarix
