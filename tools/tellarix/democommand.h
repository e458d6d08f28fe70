// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "command.h"

#include <QCoreApplication>

namespace Tellarix {
namespace Tool {

/** Writes the demonstration data. */
class DemoCommand : public Command
{
    Q_DECLARE_TR_FUNCTIONS(Tellarix::Tool::DemoCommand)

public:
    QString name() const override { return QStringLiteral("demo"); }
    QString summary() const override;
    void describe(QCommandLineParser &parser) const override;
    bool readArguments(const QCommandLineParser &parser, const QStringList &arguments,
                       QString *error) override;
    int run() override;

private:
    QString _folder;
};

} // namespace Tool
} // namespace Tellarix
