// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "command.h"
#include "runningservice.h"

#include <tellarix/client/io/inventoryreader.h>
#include <tellarix/core/datamodel/network.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/timewindow.h>

#include <QCoreApplication>
#include <QStringList>

#include <atomic>
#include <vector>

namespace Tellarix {

namespace DataModel {
class Stream;
} // namespace DataModel

namespace Tool {

/** Lists the channels of station files and of servers. */
class StationsCommand : public Command
{
    Q_DECLARE_TR_FUNCTIONS(Tellarix::Tool::StationsCommand)

public:
    QString name() const override { return QStringLiteral("stations"); }
    QString summary() const override;
    void describe(QCommandLineParser &parser) const override;
    bool readArguments(const QCommandLineParser &parser, const QStringList &arguments,
                       QString *error) override;
    int run() override;
    void interrupt() override;

private:
    bool read(const QString &file, std::vector<DataModel::NetworkPtr> *networks);
    IO::InventoryFile readService(const QString &url);
    IO::InventoryFile readServer(const QString &address);
    bool isWanted(const DataModel::Stream &stream) const;

    QStringList _files;
    Core::TimeWindow _window;
    std::vector<StreamCodesCPtr> _streams;
    QString _form; /**< "json", "csv" or none for a table */
    std::atomic<bool> _interrupted{false};
    RunningService _service;
};

} // namespace Tool
} // namespace Tellarix
