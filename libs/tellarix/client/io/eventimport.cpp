// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/eventimport.h>

#include <tellarix/client/io/eventarchive.h>
#include <tellarix/client/io/eventreader.h>

#include <QFile>

namespace Tellarix {
namespace IO {

namespace {

/** A damaged file of a hundred thousand events must not bury the user in messages. */
constexpr int MostWarnings = 100;

/** Ends a transaction as it should: what isn't committed is rolled back. */
class Transaction
{
public:
    explicit Transaction(DatabaseInterface &database)
        : _database(database), _isOpen(database.beginTransaction())
    {}
    ~Transaction()
    {
        if (_isOpen)
            _database.rollback();
    }
    Q_DISABLE_COPY(Transaction)

    bool isOpen() const { return _isOpen; }
    bool commit()
    {
        const bool done = _isOpen && _database.commit();
        _isOpen = _isOpen && !done;
        return done;
    }

private:
    DatabaseInterface &_database;
    bool _isOpen;
};

void addWarning(const QString &text, QStringList &warnings)
{
    if (warnings.size() < MostWarnings)
        warnings.append(text);
    else if (warnings.size() == MostWarnings)
        warnings.append(QStringLiteral("... and more of the kind"));
}

QString named(const QString &file, const QString &cause)
{
    return QStringLiteral("%1: %2").arg(file, cause);
}

} // namespace

EventImportResult importEvents(DatabaseInterfacePtr database, const QString &file,
                               const std::function<bool(qint64 done, qint64 total)> &progress)
{
    QFile device(file);
    EventImportResult result;
    if (!openEventFile(device, &result.error))
        return result;
    const EventSource source = [&](const EventReadHandler &handler, QString *error) {
        return readEvents(device, file, handler, error);
    };
    return importEvents(std::move(database), file, source, progress);
}

EventImportResult importEvents(DatabaseInterfacePtr database, const QString &name,
                               const EventSource &source,
                               const std::function<bool(qint64 done, qint64 total)> &progress)
{
    EventImportResult result;
    Transaction transaction(*database);
    if (!transaction.isOpen()) {
        result.error = named(database->displayUrl(), database->lastError());
        return result;
    }

    EventArchive archive(database);
    QString storeError;
    EventReadHandler handler;
    handler.take = [&](const DataModel::EventPtr &event) {
        bool replaced = false;
        if (!archive.write(*event, &storeError, &replaced))
            return false;
        ++(replaced ? result.updated : result.added);
        return true;
    };
    handler.progress = progress;
    handler.warn = [&](const QString &text) { addWarning(text, result.warnings); };

    QString readError;
    if (source(handler, &readError)) {
        result.ok = transaction.commit();
        if (!result.ok)
            result.error = named(database->displayUrl(), database->lastError());
    } else
        result.error = storeError.isEmpty() ? readError : named(name, storeError);
    if (!result.ok)
        result.added = result.updated = 0;
    return result;
}

} // namespace IO
} // namespace Tellarix
