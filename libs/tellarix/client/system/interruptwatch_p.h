// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QSocketNotifier>

#include <csignal>
#include <functional>
#include <memory>

namespace Tellarix {
namespace System {

/**
 * Turns SIGINT and SIGTERM into a call in the thread that made it, for as long as it lives.
 *
 * The signal handler writes to a pipe; with a QCoreApplication its event loop reads the other end,
 * without one dispatch() does.
 */
class InterruptWatch
{
public:
    using Handler = std::function<void(int signal)>;

    explicit InterruptWatch(Handler handler);
    ~InterruptWatch();

    InterruptWatch(const InterruptWatch &) = delete;
    InterruptWatch &operator=(const InterruptWatch &) = delete;

    /** Announces a signal; safe in a signal handler. */
    static void Post(int signal);
    /** True from the arrival of a signal until the handler is called for it. */
    static bool IsPending();
    /** Forgets a signal that nobody was called for. */
    static void Clear();

    /** Calls the handler if a signal has arrived. */
    void dispatch();

private:
    void openPipe();
    void installHandlers();

    Handler _handler;
    std::unique_ptr<QSocketNotifier> _notifier;
    int _readEnd{-1};
    struct sigaction _previousInterrupt;
    struct sigaction _previousTermination;
};

} // namespace System
} // namespace Tellarix
