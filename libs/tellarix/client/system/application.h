#pragma once

#include <tellarix/client/api.h>
#include <tellarix/core/baseobject.h>

#include <string>
#include <vector>

namespace Tellarix {
namespace System {

/**
 * A program with a name and a run sequence: init, run, done.
 *
 * exec() calls init(); if that fails it calls handleInitializationError(), otherwise run(); and in
 * both cases done(). The result is the exit status.
 */
class TELLARIX_CLIENT_API Application : public Core::BaseObject
{
public:
    Application(int &argc, char **argv);
    ~Application() override;

    Application(const Application &) = delete;
    Application &operator=(const Application &) = delete;

    /** The one application object, null when there is none. */
    static Application *Instance();

    /** Name of the program, by default the file name of argv[0]. */
    const std::string &name() const { return _name; }
    void setName(const std::string &name) { _name = name; }
    /** All arguments, the program first. */
    const std::vector<std::string> &arguments() const { return _arguments; }

    /** Runs the whole sequence and gives the exit status. */
    int exec();
    int operator()() { return exec(); }

    /** The status that exec() is going to return. */
    int returnCode() const { return _returnCode; }
    bool isExitRequested() const { return _exitRequested; }
    /** Asks the application to stop, as SIGINT and SIGTERM do. Safe in a signal handler. */
    static void Interrupt(int signal);

    /** Tells the user how start-up gets on; writes to the log here. */
    virtual void showMessage(const char *message);
    /** Tells the user of a problem that does not stop the program. */
    virtual void showWarning(const char *message);

    /** Sets the program up: command line, configuration, validation. False stops it. */
    virtual bool init();
    /** Does the work; true counts as exit status 0 unless exit() was called with another. */
    virtual bool run();
    /** Cleans up; called at the end in any case. */
    virtual void done();
    /** Ends run() with this status. */
    virtual void exit(int returnCode);

protected:
    /** Describes options and arguments; called first by init(). */
    virtual void createCommandLineDescription();
    /** Reads the configuration; called by init() behind the command line. */
    virtual bool initConfiguration();
    /** Sets up subscriptions to messages; called by init() behind the configuration. */
    virtual bool initSubscriptions();
    /** Names of schemas against which the configuration is checked; none by default. */
    virtual void schemaValidationNames(std::vector<std::string> &modules) const;
    /** Checks options and configuration; false stops the program with a usage error. */
    virtual bool validateParameters();
    /** Called when init() failed in stage @p stage; sets the exit status. */
    virtual void handleInitializationError(int stage);
    /** Called in the main thread for SIGINT and SIGTERM; asks the program to end. */
    virtual void handleInterrupt(int signal);

    void setReturnCode(int code) { _returnCode = code; }

private:
    std::string _name;
    std::vector<std::string> _arguments;
    int _returnCode{0};
    bool _exitRequested{false};
};

} // namespace System
} // namespace Tellarix
