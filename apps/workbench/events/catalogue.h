// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "bench/task.h"

#include <tellarix/client/io/databaseinterface.h>
#include <tellarix/client/io/eventimport.h>
#include <tellarix/core/timewindow.h>

#include <QObject>
#include <QPointer>
#include <QStringList>

#include <memory>
#include <mutex>
#include <thread>

class QTemporaryDir;

namespace Workbench {

class Bench;

/** The event database that is open, and what is stored into it in the background. */
class Catalogue : public QObject
{
    Q_OBJECT

public:
    enum class Schema
    {
        Expected, /**< the tables must be there */
        Created   /**< the database is new: they are made */
    };

    explicit Catalogue(Bench *bench, QObject *parent = nullptr);
    /** Cancels an import, and waits for it. */
    ~Catalogue() override;

    /** Whether a text is the address of an event database. */
    static bool isAddress(const QString &text);
    /** Whether a file holds events, by its first bytes. */
    static bool isEventFile(const QString &file);

    /** Null if none is open. */
    Tellarix::IO::DatabaseInterfacePtr database() const { return _database; }
    /** For the user: the address without its password, or the name of the file that is looked at.
     */
    const QString &title() const { return _title; }
    /** Whether what is open is a copy that goes with the program: events of files looked at. */
    bool isTemporary() const { return _temporary != nullptr; }
    bool isImporting() const { return _import; }

    /** Opens a database in the stead of the one that is open; if it can't be, that one stays, and
     *  the cause is told. */
    bool open(const QString &url, Schema schema);
    /** Opens a new database that goes with the program, to look at the events of files. */
    bool openTemporary(const QString &title);
    void close();
    /** Stores files, one after the other and each as a whole, into the database that is open. */
    void import(const QStringList &files);

    /** From the first origin time to the last; not valid if there is none. */
    Tellarix::Core::TimeWindow extent() const;

signals:
    void opened();
    /** An import has ended, whatever came of it. */
    void imported();

private:
    bool use(const Tellarix::IO::DatabaseInterfacePtr &database, const QString &title,
             Schema schema);
    void importFiles(const QStringList &files, Task *task);
    Q_INVOKABLE void endImport();

    /** What an import tells at its end. */
    struct Outcome
    {
        QStringList problems;
        QString summary;
        bool ok{true};
    };

    Bench *_bench;
    Tellarix::IO::DatabaseInterfacePtr _database;
    QString _title;
    std::unique_ptr<QTemporaryDir> _temporary;
    QPointer<Task> _import;
    std::thread _thread;
    std::mutex _mutex;
    Outcome _outcome; /**< of the thread, until it is told */
};

} // namespace Workbench
