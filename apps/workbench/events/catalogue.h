// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "bench/taskthreads.h"

#include <tellarix/client/io/databaseinterface.h>
#include <tellarix/core/timewindow.h>

#include <QObject>
#include <QPointer>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

class QTemporaryDir;

namespace Workbench {

class Bench;
class EventFetch;

/**
 * The event database that is open, and what is done with it in the background.
 *
 * Everything that asks a database runs in a thread, as a task that can be cancelled: one after the
 * other, in the order of the calls. What is open stays until something else has been opened.
 */
class Catalogue : public QObject
{
    Q_OBJECT

public:
    /** Where the events come from. */
    enum class Origin
    {
        Address,       /**< a database that the user named */
        Files,         /**< a database that goes with the program, with the events of files and of
                            services */
        Demonstration, /**< the database of the demonstration */
    };

    enum class Schema
    {
        Expected, /**< the tables must be there */
        Created   /**< the database is new: they are made */
    };

    explicit Catalogue(Bench *bench, QObject *parent = nullptr);
    /** Cancels what is done, and waits a moment for it. */
    ~Catalogue() override;

    /** Whether a text is the address of an event database. */
    static bool isAddress(const QString &text);
    /** The address of the SQLite database in a file. */
    static QString addressOf(const QString &file);
    /** Whether a file holds events, by its first bytes. */
    static bool isEventFile(const QString &file);

    /** Whether a text asks the event service of a data centre for events, as in
     *  "fdsnws+https://HOST/fdsnws/event/1/query?minmagnitude=5". */
    static bool isService(const QString &text);

    /** Null if none is open. */
    Tellarix::IO::DatabaseInterfacePtr database() const { return _content.database; }
    Origin origin() const { return _content.origin; }
    /** The address of the database without its password, for the user. */
    QString address() const;
    /** Names of the files and services whose events are looked at. */
    const QStringList &files() const { return _content.files; }
    /** From the first origin time to the last; not valid if there is none. */
    const Tellarix::Core::TimeWindow &extent() const { return _content.extent; }
    /** Number of events, as of the last import. */
    int eventCount() const { return _content.eventCount; }
    /** Whether anything is being done, or waits for its turn. */
    bool isBusy() const { return _task || !_waiting.empty(); }
    bool isImporting() const { return _task && _step == Step::Import; }

    /** Opens a database in the stead of the one that is open. One that is being opened is given up.
     */
    void open(const QString &url, Schema schema);
    /** Opens the demonstration's database, which is made in this file if need be. */
    void openDemonstration(const QString &file);
    /** Opens the events of files and services, beside those that are looked at already. */
    void look(const QStringList &sources);
    /** Stores files and what services answer, each as a whole, into the database that is open. */
    void import(const QStringList &sources);
    /** Cancels what is done, and closes. */
    void close();

signals:
    /** Something else is open, or nothing. */
    void opened();
    /** The database that is open has other events. */
    void imported();
    /** Something begins to be done, or has ended. */
    void busyChanged();

private slots:
    void endTask();

private:
    enum class Step
    {
        Open,
        Import
    };

    /** What is open. */
    struct Content
    {
        Tellarix::IO::DatabaseInterfacePtr database;
        Origin origin{Origin::Address};
        QStringList files;
        std::shared_ptr<QTemporaryDir> folder; /**< of a database that goes with the program */
        Tellarix::Core::TimeWindow extent;
        int eventCount{0};
    };

    /** What came of an import. */
    struct Outcome
    {
        QString summary() const;

        Content content;
        QStringList stored; /**< names of files and services */
        QStringList left;
        QStringList problems;
        int added{0};
        int updated{0};
        bool isCanceled{false};
    };

    static bool connectTo(const QString &url, Schema schema, Content &content, QString *error);
    static bool makeTemporary(Content &content, QString *error);
    static bool measure(Content &content, QString *error);
    static Outcome store(const QStringList &sources, Content content, EventFetch &fetch,
                         TaskThreads::Reporter &reporter);

    void openNext(Origin origin, const QString &url, Schema schema);
    void beginOpening(Origin origin, const QString &url, Schema schema);
    void beginStoring(const QStringList &sources, const Content &content);
    void begin(Step step, const QString &name, TaskThreads::Canceling canceling,
               const TaskThreads::Work &work);
    void startNext();
    QString takeOver(const Content &content);
    QString takeOver(const Outcome &outcome, int closeCount);

    Bench *_bench;
    Content _content;
    Step _step{Step::Open}; /**< what the task does */
    QPointer<Task> _task;
    std::vector<std::function<void()>> _waiting;
    int _closeCount{0};
    TaskThreads _threads; /**< goes first, since its results are taken over here */
};

} // namespace Workbench
