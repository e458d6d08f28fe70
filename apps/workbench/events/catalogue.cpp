// SPDX-License-Identifier: LGPL-3.0-or-later

#include "catalogue.h"

#include "bench/bench.h"

#include <tellarix/client/io/eventarchive.h>
#include <tellarix/client/io/eventreader.h>

#include <QFile>
#include <QFileInfo>
#include <QMetaObject>
#include <QTemporaryDir>
#include <QUrl>

#include <utility>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr int HeadSize = 64 << 10;
constexpr int ProgressSteps = 1000;

} // namespace

Catalogue::Catalogue(Bench *bench, QObject *parent) : QObject(parent), _bench(bench)
{}

Catalogue::~Catalogue()
{
    if (_import)
        _import->cancel();
    if (_thread.joinable())
        _thread.join();
}

bool Catalogue::isAddress(const QString &text)
{
    const QString scheme = text.section("://", 0, 0).toLower();
    return text.contains("://") &&
           (scheme == "sqlite" || scheme == "postgresql" || scheme == "mysql");
}

bool Catalogue::isEventFile(const QString &name)
{
    QFile file(name);
    // A pipe would lose what is looked at here.
    return QFileInfo(name).isFile() && file.open(QIODevice::ReadOnly) &&
           IO::eventFormatOf(file.peek(HeadSize)) != IO::EventFormat::Unknown;
}

bool Catalogue::open(const QString &url, Schema schema)
{
    QString error;
    const IO::DatabaseInterfacePtr database = IO::DatabaseInterface::Open(url, &error);
    if (!database) {
        _bench->tell({error});
        return false;
    }
    if (!use(database, database->displayUrl(), schema))
        return false;
    _temporary.reset();
    emit opened();
    return true;
}

bool Catalogue::openTemporary(const QString &title)
{
    auto folder = std::make_unique<QTemporaryDir>();
    const QString file = folder->filePath("events.sqlite");
    QString error = folder->errorString();
    const IO::DatabaseInterfacePtr database =
        folder->isValid()
            ? IO::DatabaseInterface::Open("sqlite://" + QUrl::toPercentEncoding(file, "/"), &error)
            : nullptr;
    if (!database) {
        _bench->tell({error});
        return false;
    }
    if (!use(database, title, Schema::Created))
        return false;
    _temporary = std::move(folder);
    emit opened();
    return true;
}

bool Catalogue::use(const IO::DatabaseInterfacePtr &database, const QString &title, Schema schema)
{
    if (_import) {
        _bench->tell({tr("%1: an import into %2 still runs").arg(title, _title)});
        return false;
    }
    QString error;
    const bool ok = schema == Schema::Created ? IO::EventArchive::createSchema(*database, &error)
                                              : IO::EventArchive::checkSchema(*database, &error);
    if (!ok) {
        _bench->tell({error});
        return false;
    }
    _database = database;
    _title = title;
    return true;
}

void Catalogue::close()
{
    if (_import || !_database)
        return;
    _database = nullptr;
    _title.clear();
    _temporary.reset();
    emit opened();
}

void Catalogue::import(const QStringList &files)
{
    if (_import || !_database || files.isEmpty())
        return;
    Task *task =
        _bench->tasks()->start(tr("Importing events"), QString(), Task::Canceling::Possible);
    _import = task;
    if (_thread.joinable())
        _thread.join();
    _thread = std::thread([this, files, task] { importFiles(files, task); });
}

/** In the thread of the import; the object and its database outlive it. */
void Catalogue::importFiles(const QStringList &files, Task *task)
{
    Outcome outcome;
    int added = 0;
    int updated = 0;
    for (int i = 0; i < files.size() && outcome.ok; ++i) {
        const IO::EventImportResult result =
            IO::importEvents(_database, files[i], [&](qint64 done, qint64 total) {
                const int share = total > 0 ? static_cast<int>(done * ProgressSteps / total) : 0;
                task->setProgress(i * ProgressSteps + share, files.size() * ProgressSteps);
                return !task->isCanceled();
            });
        outcome.problems += result.warnings;
        if (!result.error.isEmpty())
            outcome.problems.append(result.error);
        added += result.added;
        updated += result.updated;
        outcome.ok = result.ok;
    }
    outcome.summary = tr("%1 events added, %2 updated").arg(added).arg(updated);
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        _outcome = std::move(outcome);
    }
    QMetaObject::invokeMethod(this, "endImport", Qt::QueuedConnection);
}

void Catalogue::endImport()
{
    Outcome outcome;
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        std::swap(outcome, _outcome);
    }
    Task *task = _import;
    _import = nullptr;
    _bench->tell(outcome.problems);
    _bench->showStatus(outcome.ok ? outcome.summary : tr("Nothing of the last file was stored"));
    emit imported();
    if (task)
        task->finish(outcome.ok || outcome.problems.isEmpty() ? QString()
                                                              : outcome.problems.last());
}

Core::TimeWindow Catalogue::extent() const
{
    Core::TimeWindow window;
    if (!_database)
        return window;
    const std::string column = _database->convertColumnName("time_value");
    if (_database->beginQuery("select min(" + column + "), max(" + column + ") from Origin") &&
        _database->fetchRow()) {
        const Core::Time first = _database->stringToTime(_database->field(0));
        const Core::Time last = _database->stringToTime(_database->field(1));
        // To the second: the last one may have a fraction.
        if (first.valid() && last.valid())
            window = Core::TimeWindow(first, last + Core::TimeSpan(1.0));
    }
    _database->endQuery();
    return window;
}

} // namespace Workbench
