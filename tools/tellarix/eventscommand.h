// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "command.h"
#include "runningservice.h"

#include <tellarix/client/io/eventexport.h>
#include <tellarix/client/io/eventimport.h>

#include <QCoreApplication>
#include <QStringList>

#include <atomic>

namespace Tellarix {
namespace Tool {

/** Makes event databases, fills them from files, and lists and exports what they hold. */
class EventsCommand : public Command
{
    Q_DECLARE_TR_FUNCTIONS(Tellarix::Tool::EventsCommand)

public:
    QString name() const override { return QStringLiteral("events"); }
    QString summary() const override;
    void describe(QCommandLineParser &parser) const override;
    bool readArguments(const QCommandLineParser &parser, const QStringList &arguments,
                       QString *error) override;
    int run() override;
    void interrupt() override;

private:
    /** What is done with the events. */
    enum Action
    {
        Create,
        Import,
        List,
        Export
    };

    bool readAction(const QStringList &arguments, QString *error);
    bool readForm(const QCommandLineParser &parser, QString *error);
    bool readSelection(const QCommandLineParser &parser, QString *error);

    bool create(const IO::DatabaseInterfacePtr &database);
    bool import(const IO::DatabaseInterfacePtr &database);
    bool importFile(const IO::DatabaseInterfacePtr &database, const QString &file);
    IO::EventImportResult importService(const IO::DatabaseInterfacePtr &database,
                                        const QString &address);
    bool list(const IO::DatabaseInterfacePtr &database);
    bool exportFile(const IO::DatabaseInterfacePtr &database);
    IO::EventExportHandler interruptible() const;
    /** Prints what went wrong with an export; whether it went well. */
    bool report(const IO::EventExportResult &result, const QString &name = {}) const;
    bool printJson(const IO::DatabaseInterfacePtr &database);
    bool printTable(const IO::DatabaseInterfacePtr &database);

    Action _action{List};
    QStringList _files;
    QString _url;
    QString _form; /**< "json", "csv", "quakeml", "geojson" or none for a table */
    IO::EventSelection _selection;
    std::atomic<bool> _interrupted{false};
    RunningService _service;
};

} // namespace Tool
} // namespace Tellarix
