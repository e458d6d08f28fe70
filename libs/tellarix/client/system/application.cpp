// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/system/application.h>

#include <tellarix/client/system/interruptwatch_p.h>
#include <tellarix/client/system/namelookups.h>
#include <tellarix/core/logging.h>

#include <QCoreApplication>

namespace Tellarix {
namespace System {

namespace {

Application *TheApplication = nullptr;

std::string fileNameOf(const std::string &path)
{
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

} // namespace

Application::Application(int &argc, char **argv) : _argc(argc), _argv(argv)
{
    TheApplication = this;
    InterruptWatch::Clear();
    readArguments();
    if (!_arguments.empty())
        _name = fileNameOf(_arguments.front());
}

Application::~Application()
{
    if (TheApplication == this)
        TheApplication = nullptr;
}

Application *Application::Instance()
{
    return TheApplication;
}

int Application::exec()
{
    _interrupts = std::make_unique<InterruptWatch>([this](int signal) { handleInterrupt(signal); });

    if (init()) {
        if (!isExitRequested() && !run() && _returnCode == 0)
            _returnCode = 1;
    } else if (!_endsEarly) {
        _returnCode = 1;
        handleInitializationError(_stage);
    }

    _interrupts->dispatch();
    done();
    _interrupts.reset();
    NameLookups::SetExitStatus(_returnCode);
    return _returnCode;
}

bool Application::isExitRequested() const
{
    return _exitRequested || InterruptWatch::IsPending();
}

void Application::Interrupt(int signal)
{
    InterruptWatch::Post(signal);
}

void Application::showMessage(const char *message)
{
    qCDebug(Log::general, "%s", message ? message : "");
}

void Application::showWarning(const char *message)
{
    qCWarning(Log::general, "%s", message ? message : "");
}

bool Application::init()
{
    return true;
}

bool Application::run()
{
    return true;
}

void Application::done()
{}

void Application::exit(int returnCode)
{
    _returnCode = returnCode;
    _exitRequested = true;
    if (QCoreApplication::instance())
        QCoreApplication::exit(returnCode);
}

void Application::createCommandLineDescription()
{}

bool Application::initConfiguration()
{
    return true;
}

bool Application::initSubscriptions()
{
    return true;
}

void Application::schemaValidationNames(std::vector<std::string> &) const
{}

bool Application::validateParameters()
{
    return true;
}

void Application::handleInitializationError(int)
{
    _returnCode = 1;
}

void Application::handleInterrupt(int signal)
{
    exit(128 + signal);
}

void Application::endEarly(int returnCode)
{
    _endsEarly = true;
    _returnCode = returnCode;
}

void Application::readArguments()
{
    _arguments.clear();
    for (int i = 0; _argv && i < _argc && _argv[i]; ++i)
        _arguments.emplace_back(_argv[i]);
}

} // namespace System
} // namespace Tellarix
