// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/core/baseobject.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace Tellarix {
namespace System {

class InterruptWatch;

/**
 * A program with a name and a run sequence: init, run, done.
 *
 * exec() calls init(); if that fails it calls handleInitializationError(), otherwise run(), unless
 * an exit was asked for meanwhile; and in all cases done(). The result is the exit status.
 *
 * While exec() runs, SIGINT and SIGTERM end in handleInterrupt(), called by the event loop of the
 * main thread. A program that works without one looks at isExitRequested() now and then; its
 * handleInterrupt() is called when run() is left. A second signal that finds the first one still
 * unhandled ends the process, so that a program that hangs can be stopped.
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
    /** All arguments, the program first; init() leaves out those that Qt took for itself. */
    const std::vector<std::string> &arguments() const { return _arguments; }

    /** Runs the whole sequence and gives the exit status. */
    int exec();
    int operator()() { return exec(); }

    /** The status that exec() is going to return. */
    int returnCode() const { return _returnCode; }
    /** True behind exit() and as soon as a signal asks for the end. Any thread may ask. */
    bool isExitRequested() const;
    /** Asks the application to stop, as SIGINT and SIGTERM do. Safe in a signal handler and in any
     *  thread. */
    static void Interrupt(int signal);

    /** Tells the user how start-up gets on; a debug message in the log here. */
    virtual void showMessage(const char *message);
    /** Tells the user of a problem that does not stop the program. */
    virtual void showWarning(const char *message);

    /** Sets the program up: command line, configuration, validation. False stops it. */
    virtual bool init();
    /** Does the work; true counts as exit status 0 unless exit() was called with another. */
    virtual bool run();
    /** Cleans up; called at the end in any case. */
    virtual void done();
    /** Ends run() with this status: makes isExitRequested() true and leaves the event loop. */
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
    /** Called in the main thread for SIGINT and SIGTERM; ends the program with 128 + @p signal. */
    virtual void handleInterrupt(int signal);

    void setReturnCode(int code) { _returnCode = code; }
    /** The step that init() is at, which handleInitializationError() is going to get. */
    void setInitializationStage(int stage) { _stage = stage; }
    /** init() has done all that was asked for: when it returns false now, that is no error. */
    void endEarly(int returnCode);
    /** Reads the arguments again, less those that Qt has removed since. */
    void readArguments();

private:
    int &_argc;
    char **_argv;
    std::string _name;
    std::vector<std::string> _arguments;
    std::unique_ptr<InterruptWatch> _interrupts;
    int _stage{0};
    int _returnCode{0};
    bool _endsEarly{false};
    std::atomic<bool> _exitRequested{false};
};

} // namespace System
} // namespace Tellarix
