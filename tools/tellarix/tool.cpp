// SPDX-License-Identifier: LGPL-3.0-or-later

#include "tool.h"

#include "catcommand.h"
#include "democommand.h"
#include "eventscommand.h"
#include "recordscommand.h"
#include "stationscommand.h"
#include "watchcommand.h"

#include <QCoreApplication>

#include <algorithm>
#include <thread>
#include <utility>

namespace Tellarix {
namespace Tool {

Tool::Tool(int &argc, char **argv) : Client::Application(argc, argv)
{
    setDatabaseOffered(false);
    setRecordStreamOffered(false);
    _commands.push_back(std::make_unique<RecordsCommand>());
    _commands.push_back(std::make_unique<WatchCommand>());
    _commands.push_back(std::make_unique<CatCommand>());
    _commands.push_back(std::make_unique<EventsCommand>());
    _commands.push_back(std::make_unique<StationsCommand>());
    _commands.push_back(std::make_unique<DemoCommand>());
}

Tool::~Tool() = default;

bool Tool::run()
{
    // The main thread stays free for signals while the command waits for files or a network.
    int status = 0;
    std::thread worker([&]() {
        status = _command->run();
        QMetaObject::invokeMethod(QCoreApplication::instance(), "quit", Qt::QueuedConnection);
    });
    QCoreApplication::exec();
    worker.join();

    if (!isExitRequested())
        setReturnCode(status);
    return true;
}

void Tool::createCommandLineDescription()
{
    Client::Application::createCommandLineDescription();

    const QString name = firstArgument();
    const auto found = std::find_if(_commands.begin(), _commands.end(),
                                    [&](const auto &command) { return command->name() == name; });
    if (found == _commands.end()) {
        describeCommands();
        return;
    }
    _command = found->get();
    commandLine().addPositionalArgument(name, _command->summary(), name);
    _command->describe(commandLine());
    setHelpCommand(QStringLiteral("tellarix %1 --help").arg(name));
}

bool Tool::validateParameters()
{
    if (!Client::Application::validateParameters())
        return false;

    QStringList arguments = positionalArguments();
    if (arguments.isEmpty())
        return usageError(tr("no command given"));
    if (!_command)
        return usageError(tr("unknown command \"%1\"").arg(arguments.first()));

    arguments.removeFirst();
    QString error;
    return _command->readArguments(commandLine(), arguments, &error) || usageError(error);
}

void Tool::handleInterrupt(int signal)
{
    if (_command)
        _command->interrupt();
    // Whoever asks twice doesn't want to wait for the usual end.
    if (_command && _command->endsByInterrupt() && !std::exchange(_wasInterrupted, true))
        return;
    Client::Application::handleInterrupt(signal);
}

QString Tool::firstArgument()
{
    // Behind the command come options that only it knows; they are left alone for now.
    QStringList all;
    for (const std::string &argument : arguments())
        all.append(QString::fromLocal8Bit(argument.c_str()));
    commandLine().setOptionsAfterPositionalArgumentsMode(
        QCommandLineParser::ParseAsPositionalArguments);
    commandLine().parse(all);
    commandLine().setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsOptions);
    return positionalArguments().value(0);
}

void Tool::describeCommands()
{
    QString list = tr("Looks at seismological data, keeps catalogues and writes demonstration "
                      "data.\n\nCommands:\n");
    for (const auto &command : _commands)
        list += QStringLiteral("  %1  %2\n").arg(command->name(), -8).arg(command->summary());
    list += tr("\nEach has a help of its own: tellarix COMMAND --help");
    commandLine().setApplicationDescription(list);
    commandLine().addPositionalArgument(QStringLiteral("COMMAND"), tr("One of the commands above."),
                                        QStringLiteral("COMMAND ..."));
}

} // namespace Tool
} // namespace Tellarix
