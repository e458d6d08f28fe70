// SPDX-License-Identifier: LGPL-3.0-or-later

#include "catalogue.h"

#include "bench/bench.h"
#include "eventfetch.h"

#include <tellarix/client/demo/democatalogue.h>
#include <tellarix/client/io/databaseaddress.h>
#include <tellarix/client/io/eventarchive.h>
#include <tellarix/client/io/eventimport.h>
#include <tellarix/client/io/eventreader.h>
#include <tellarix/client/remote/fdsnaddress.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr int HeadSize = 64 << 10;
constexpr int ProgressSteps = 1000;

/** Of a file or a service, for the user. */
QString nameOf(const QString &source)
{
    IO::FdsnAddress address;
    return address.parse(source) ? address.name() : QFileInfo(source).fileName();
}

} // namespace

Catalogue::Catalogue(Bench *bench, QObject *parent)
    : QObject(parent), _bench(bench), _threads(bench->tasks())
{}

Catalogue::~Catalogue() = default;

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

bool Catalogue::isService(const QString &text)
{
    return IO::FdsnAddress::IsOne(text) && IO::FdsnAddress::ServiceOf(text) == "event";
}

QString Catalogue::addressOf(const QString &file)
{
    return IO::DatabaseAddress::OfFile(QFileInfo(file).absoluteFilePath()).toString();
}

QString Catalogue::address() const
{
    return _content.database ? _content.database->displayUrl() : QString();
}

// One thing after the other

void Catalogue::begin(Step step, const QString &name, TaskThreads::Canceling canceling,
                      const TaskThreads::Work &work)
{
    _step = step;
    _task = _threads.start(name, canceling, work);
    connect(_task, SIGNAL(finished()), this, SLOT(endTask()));
    emit busyChanged();
}

void Catalogue::startNext()
{
    if (_task || _waiting.empty())
        return;
    const std::function<void()> next = std::move(_waiting.front());
    _waiting.erase(_waiting.begin());
    next();
}

void Catalogue::endTask()
{
    if (_task->isCanceled() && _step == Step::Open && _waiting.empty())
        _bench->showStatus(tr("No other event database was opened"));
    _task.clear();
    startNext();
    emit busyChanged();
}

// Opening

void Catalogue::open(const QString &url, Schema schema)
{
    openNext(Origin::Address, url, schema);
}

void Catalogue::openDemonstration(const QString &file)
{
    // What is imported into it would be lost when it is made anew.
    IO::DatabaseAddress address = IO::DatabaseAddress::OfFile(QFileInfo(file).absoluteFilePath());
    address.isReadOnly = true;
    openNext(Origin::Demonstration, address.toString(), Schema::Expected);
}

void Catalogue::openNext(Origin origin, const QString &url, Schema schema)
{
    _waiting.emplace_back([=] { beginOpening(origin, url, schema); });
    if (_task && _step == Step::Open)
        _task->cancel();
    startNext();
}

void Catalogue::beginOpening(Origin origin, const QString &url, Schema schema)
{
    const auto work = [=](TaskThreads::Reporter &) -> TaskThreads::Finish {
        Content content;
        content.origin = origin;
        QString error;
        if (connectTo(url, schema, content, &error))
            return [this, content] { return takeOver(content); };
        return [this, error] {
            _bench->tell({error});
            return error;
        };
    };
    begin(Step::Open, tr("Opening the event database"), TaskThreads::Canceling::DropsWork, work);
}

/** In the thread of the work, as all that is static here. */
bool Catalogue::connectTo(const QString &url, Schema schema, Content &content, QString *error)
{
    if (content.origin == Origin::Demonstration) {
        const QString file = IO::DatabaseAddress::Read(url)->database;
        const QString folder = QFileInfo(file).path();
        *error = tr("%1: the folder can't be made").arg(folder);
        if (!QDir().mkpath(folder) || !Client::writeDemonstrationCatalogue(file, error))
            return false;
    }
    content.database = IO::DatabaseInterface::Open(url, error);
    if (!content.database)
        return false;
    const bool ok = schema == Schema::Created
                        ? IO::EventArchive::createSchema(*content.database, error)
                        : IO::EventArchive::checkSchema(*content.database, error);
    return ok && measure(content, error);
}

bool Catalogue::makeTemporary(Content &content, QString *error)
{
    content.origin = Origin::Files;
    content.folder = std::make_shared<QTemporaryDir>();
    *error = content.folder->errorString();
    return content.folder->isValid() &&
           connectTo(addressOf(content.folder->filePath("events.sqlite")), Schema::Created, content,
                     error);
}

/** Asks for what lists have to know before they are loaded. */
bool Catalogue::measure(Content &content, QString *error)
{
    IO::EventArchive archive(content.database);
    QString reason;
    content.extent = archive.extent(&reason);
    if (reason.isEmpty())
        content.eventCount = archive.count({}, &reason);
    if (!reason.isEmpty())
        *error = reason;
    return reason.isEmpty();
}

QString Catalogue::takeOver(const Content &content)
{
    _content = content;
    emit opened();
    return QString();
}

void Catalogue::close()
{
    ++_closeCount;
    _waiting.clear();
    if (_task)
        _task->cancel();
    if (!_content.database)
        return;
    _content = Content();
    emit opened();
}

// Importing

void Catalogue::look(const QStringList &sources)
{
    _waiting.emplace_back([=] {
        const bool hasFiles = _content.database && _content.origin == Origin::Files;
        beginStoring(sources, hasFiles ? _content : Content());
    });
    startNext();
}

void Catalogue::import(const QStringList &sources)
{
    if (!_content.database || sources.isEmpty())
        return;
    _waiting.emplace_back([this, sources, content = _content] { beginStoring(sources, content); });
    startNext();
}

void Catalogue::beginStoring(const QStringList &sources, const Content &content)
{
    const auto fetch = std::make_shared<EventFetch>();
    const auto work = [=, closeCount = _closeCount](TaskThreads::Reporter &reporter) {
        const Outcome outcome = store(sources, content, *fetch, reporter);
        return [=] { return takeOver(outcome, closeCount); };
    };
    const bool isFetch = std::any_of(sources.begin(), sources.end(), isService);
    begin(Step::Import, isFetch ? tr("Fetching events") : tr("Importing events"),
          TaskThreads::Canceling::WaitsForWork, work);
    // A wait for a server doesn't look whether it is still wanted.
    connect(_task, &Task::cancelRequested, this, [fetch] { fetch->cancel(); });
}

Catalogue::Outcome Catalogue::store(const QStringList &sources, Content content, EventFetch &fetch,
                                    TaskThreads::Reporter &reporter)
{
    Outcome outcome;
    QString error;
    const bool canStore = content.database || makeTemporary(content, &error);
    if (!canStore)
        outcome.problems.append(error);
    for (int i = 0; i < sources.size(); ++i) {
        const bool isFetch = isService(sources[i]);
        const auto progress = [&](qint64 done, qint64 total) {
            const int share = total > 0 ? static_cast<int>(done * ProgressSteps / total) : 0;
            // How much a server is going to send isn't known.
            if (!isFetch)
                reporter.setProgress(i * ProgressSteps + share, sources.size() * ProgressSteps);
            return !reporter.isCanceled();
        };
        IO::EventImportResult result;
        if (canStore && !reporter.isCanceled())
            result = isFetch ? fetch.into(content.database, sources[i], progress)
                             : IO::importEvents(content.database, sources[i], progress);
        outcome.problems += result.warnings;
        if (!result.error.isEmpty())
            outcome.problems.append(result.error);
        outcome.added += result.added;
        outcome.updated += result.updated;
        (result.ok ? outcome.stored : outcome.left).append(nameOf(sources[i]));
    }
    outcome.isCanceled = reporter.isCanceled();
    if (content.origin == Origin::Files) {
        content.files += outcome.stored;
        content.files.removeDuplicates();
    }
    if (!outcome.stored.isEmpty() && !measure(content, &error))
        outcome.problems.append(error);
    outcome.content = content;
    return outcome;
}

QString Catalogue::Outcome::summary() const
{
    const QString counts = tr("%1 events added, %2 updated").arg(added).arg(updated);
    if (left.isEmpty())
        return counts;
    const QString nothing = tr("Nothing was stored of %1").arg(left.join(", "));
    return stored.isEmpty() ? nothing : tr("%1: %2. %3.").arg(stored.join(", "), counts, nothing);
}

QString Catalogue::takeOver(const Outcome &outcome, int closeCount)
{
    const bool isComplete = outcome.left.isEmpty();
    _bench->tell(isComplete ? outcome.problems : outcome.problems + QStringList(outcome.summary()));
    _bench->showStatus(outcome.summary());

    const bool isOpen = _content.database == outcome.content.database;
    if (!outcome.stored.isEmpty() && closeCount == _closeCount) {
        const bool isWanted = isOpen || outcome.content.origin == Origin::Files;
        if (isWanted)
            _content = outcome.content;
        if (isOpen)
            emit imported();
        else if (isWanted)
            emit opened();
    }
    return isComplete || outcome.isCanceled ? QString() : outcome.problems.last();
}

} // namespace Workbench
