// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "command.h"
#include "recordpump.h"
#include "terminaltable.h"
#include "watchedstreams.h"

#include <QCoreApplication>

namespace Tellarix {
namespace Tool {

/** Follows streams, with a line for each. */
class WatchCommand : public Command
{
    Q_DECLARE_TR_FUNCTIONS(Tellarix::Tool::WatchCommand)

public:
    QString name() const override { return QStringLiteral("watch"); }
    QString summary() const override;
    void describe(QCommandLineParser &parser) const override;
    bool readArguments(const QCommandLineParser &parser, const QStringList &arguments,
                       QString *error) override;
    int run() override;
    void interrupt() override { _pump.end(); }
    bool endsByInterrupt() const override { return true; }

private:
    void tell(const QString &message);
    bool printResult();

    RecordPump _pump;
    WatchedStreams _streams;
    TerminalTable _terminal;
    bool _asJson{false};
    bool _tellsNews{false}; /**< of new streams and gaps, as they come */
    bool _repaints{false};
};

} // namespace Tool
} // namespace Tellarix
