// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/system/interruptwatch_p.h>

#include <QCoreApplication>

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

namespace Tellarix {
namespace System {

namespace {

std::atomic<int> PendingSignal{0};
std::atomic<int> WriteEnd{-1};

static_assert(std::atomic<int>::is_always_lock_free, "the signal handler must not lock");

extern "C" void handleSignal(int signal)
{
    if (PendingSignal.load() != 0) {
        // Nobody has taken notice of the first signal: the program hangs.
        ::signal(signal, SIG_DFL);
        ::raise(signal);
        return;
    }
    InterruptWatch::Post(signal);
}

} // namespace

InterruptWatch::InterruptWatch(Handler handler) : _handler(std::move(handler))
{
    openPipe();
    installHandlers();
}

InterruptWatch::~InterruptWatch()
{
    ::sigaction(SIGINT, &_previousInterrupt, nullptr);
    ::sigaction(SIGTERM, &_previousTermination, nullptr);
    _notifier.reset();
    if (_readEnd < 0)
        return;
    ::close(WriteEnd.exchange(-1));
    ::close(_readEnd);
}

void InterruptWatch::Post(int signal)
{
    const int error = errno;
    PendingSignal = signal;
    const int writeEnd = WriteEnd;
    const char byte = 0;
    // A full pipe wakes the reader as well as one more byte would.
    if (writeEnd >= 0 && ::write(writeEnd, &byte, 1) < 0)
        errno = error;
    errno = error;
}

bool InterruptWatch::IsPending()
{
    return PendingSignal != 0;
}

void InterruptWatch::Clear()
{
    PendingSignal = 0;
}

void InterruptWatch::dispatch()
{
    char bytes[64];
    while (_readEnd >= 0 && ::read(_readEnd, bytes, sizeof bytes) > 0) {
    }
    const int signal = PendingSignal.exchange(0);
    if (signal != 0)
        _handler(signal);
}

void InterruptWatch::openPipe()
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        return;

    _readEnd = ends[0];
    WriteEnd = ends[1];
    if (!QCoreApplication::instance())
        return;
    _notifier = std::make_unique<QSocketNotifier>(_readEnd, QSocketNotifier::Read);
    QObject::connect(_notifier.get(), &QSocketNotifier::activated, [this]() { dispatch(); });
}

void InterruptWatch::installHandlers()
{
    struct sigaction action = {};
    action.sa_handler = handleSignal;
    action.sa_flags = SA_RESTART;
    ::sigemptyset(&action.sa_mask);
    ::sigaction(SIGINT, &action, &_previousInterrupt);
    ::sigaction(SIGTERM, &action, &_previousTermination);
}

} // namespace System
} // namespace Tellarix
