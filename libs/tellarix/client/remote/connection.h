// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>

#include <QtGlobal>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

QT_BEGIN_NAMESPACE
class QAbstractEventDispatcher;
class QNetworkProxy;
class QTcpSocket;
class QUrl;
QT_END_NAMESPACE

namespace Tellarix {
namespace IO {

/**
 * A TCP connection whose calls block up to a time, through the proxies of the system except to the
 * machine itself. Where these are for the web only and refuse, the peer is reached directly.
 *
 * Everything belongs to the thread that opens the connection, but for end(): that may be called by
 * any thread and ends a wait at once, also one for a name or for a peer that stalls. Waiting runs
 * an event loop, so the program needs a QCoreApplication. Bytes that nobody takes are left to the
 * peer: at most MaxBytes and a piece of a read are held.
 */
class TELLARIX_CLIENT_API Connection
{
public:
    enum class Outcome
    {
        Done,
        TimedOut,
        Ended, /**< by end() */
        Lost,  /**< or never made: error() */
    };

    static constexpr size_t MaxBytes = 256 * 1024;

    Connection();
    ~Connection();

    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    /** Connects anew; bytes of before are forgotten. */
    Outcome open(const std::string &host, int port, int msecs);
    Outcome write(std::string_view bytes, int msecs);
    /** Waits until there are more bytes than before. */
    Outcome read(int msecs);
    /** Waits with nothing to wait for: TimedOut, or Ended. */
    Outcome pause(int msecs);
    /** Closes the connection, without a wait for the peer. */
    void drop();
    bool isOpen() const { return _socket != nullptr; }
    /** True in the thread that opened the connection, as long as it is open; any thread may ask. */
    bool isOwn() const;

    /** The bytes that have come and were not consumed. */
    std::string_view bytes() const { return std::string_view(_bytes).substr(_used); }
    void consume(size_t size);

    /** Ends the wait that is going on, and all further ones until restart(). */
    void end();
    void restart() { _ended = false; }
    bool isEnded() const { return _ended; }

    /** Why the connection was lost or could not be made. */
    const std::string &error() const { return _error; }

private:
    class Waiting;

    Outcome open(const QUrl &url, const QNetworkProxy &proxy, int msecs);
    Outcome wait(const std::function<bool()> &isDone, int msecs);
    bool isLost();

    std::unique_ptr<QTcpSocket> _socket;
    std::atomic<std::thread::id> _owner{
        std::thread::id()}; /**< thread of the socket, none without it */
    std::string _bytes;
    size_t _used{0};
    std::string _error;
    std::atomic<bool> _ended{false};
    std::mutex _mutex;
    QAbstractEventDispatcher *_dispatcher{nullptr}; /**< of the thread that waits */
};

} // namespace IO
} // namespace Tellarix
