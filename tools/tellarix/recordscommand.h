// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "command.h"
#include "recordpump.h"

#include <QCoreApplication>

namespace Tellarix {
namespace Tool {

/** Tells what the streams of files and servers hold. */
class RecordsCommand : public Command
{
    Q_DECLARE_TR_FUNCTIONS(Tellarix::Tool::RecordsCommand)

public:
    QString name() const override { return QStringLiteral("records"); }
    QString summary() const override;
    void describe(QCommandLineParser &parser) const override;
    bool readArguments(const QCommandLineParser &parser, const QStringList &arguments,
                       QString *error) override;
    int run() override;
    void interrupt() override { _pump.end(); }

private:
    RecordPump _pump;
    bool _asJson{false};
};

} // namespace Tool
} // namespace Tellarix
