// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "command.h"

#include <tellarix/client/application.h>

#include <QCoreApplication>

#include <memory>
#include <vector>

namespace Tellarix {
namespace Tool {

/** The command-line tool: finds the command that the first argument names and runs it. */
class Tool : public Client::Application
{
    Q_DECLARE_TR_FUNCTIONS(Tellarix::Tool::Tool)

public:
    Tool(int &argc, char **argv);
    ~Tool() override;

    bool run() override;

protected:
    void createCommandLineDescription() override;
    bool validateParameters() override;
    void handleInterrupt(int signal) override;

private:
    QString firstArgument();
    void describeCommands();

    std::vector<std::unique_ptr<Command>> _commands;
    Command *_command{nullptr};
    bool _wasInterrupted{false};
};

} // namespace Tool
} // namespace Tellarix
