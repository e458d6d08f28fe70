// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/connection.h>

#include <tellarix/client/remote/systemproxy_p.h>
#include <tellarix/client/system/namelookups.h>

#include <QAbstractEventDispatcher>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>

namespace Tellarix {
namespace IO {

namespace {

constexpr qint64 PieceSize = 64 * 1024;

} // namespace

/** Lets end() find the event loop in which the thread waits. */
class Connection::Waiting
{
public:
    explicit Waiting(Connection &connection) : _connection(connection)
    {
        set(QAbstractEventDispatcher::instance());
    }
    ~Waiting() { set(nullptr); }

    Waiting(const Waiting &) = delete;
    Waiting &operator=(const Waiting &) = delete;

private:
    void set(QAbstractEventDispatcher *dispatcher)
    {
        const std::lock_guard<std::mutex> lock(_connection._mutex);
        _connection._dispatcher = dispatcher;
    }

    Connection &_connection;
};

Connection::Connection() = default;

Connection::~Connection() = default;

Connection::Outcome Connection::open(const std::string &host, int port, int msecs)
{
    QUrl url;
    url.setHost(QString::fromStdString(host));
    url.setPort(port);
    const QNetworkProxy proxy = systemProxy(url);
    const QDeadlineTimer deadline(msecs);
    _error.clear();
    Outcome outcome = open(url, proxy, msecs);
    if (outcome == Outcome::Lost && proxy.type() != QNetworkProxy::NoProxy) {
        const std::string cause = _error + ", by the proxy " + proxyName(proxy).toStdString();
        if (isOfWebOnly(url))
            outcome = open(url, QNetworkProxy::NoProxy, static_cast<int>(deadline.remainingTime()));
        _error = isOfWebOnly(url) ? _error + " (" + cause + ')' : cause;
    }
    return outcome;
}

Connection::Outcome Connection::open(const QUrl &url, const QNetworkProxy &proxy, int msecs)
{
    drop();
    // Gives the thread what sockets are watched by, if it has never run an event loop.
    const QEventLoop loop;
    _socket = std::make_unique<QTcpSocket>();
    _owner = std::this_thread::get_id();
    _socket->setReadBufferSize(PieceSize);
    _socket->setProxy(proxy);
    _socket->connectToHost(url.host(), static_cast<quint16>(url.port()));
    const Outcome outcome =
        wait([this] { return _socket->state() == QAbstractSocket::ConnectedState; }, msecs);
    if (outcome == Outcome::Done)
        // A connection whose peer is gone without a word has to be noticed some day.
        _socket->setSocketOption(QAbstractSocket::KeepAliveOption, 1);
    else
        drop();
    return outcome;
}

Connection::Outcome Connection::write(std::string_view bytes, int msecs)
{
    if (!_socket || _socket->write(bytes.data(), static_cast<qint64>(bytes.size())) < 0) {
        isLost();
        return Outcome::Lost;
    }
    return wait([this] { return _socket->bytesToWrite() == 0; }, msecs);
}

Connection::Outcome Connection::read(int msecs)
{
    if (!_socket || bytes().size() >= MaxBytes) {
        _error = _socket ? "more bytes than belong together" : "there is no connection";
        return Outcome::Lost;
    }
    const Outcome outcome = wait([this] { return _socket->bytesAvailable() > 0; }, msecs);
    if (outcome != Outcome::Done)
        return outcome;

    _bytes.erase(0, _used);
    _used = 0;
    const QByteArray piece = _socket->read(PieceSize);
    _bytes.append(piece.constData(), static_cast<size_t>(piece.size()));
    return Outcome::Done;
}

Connection::Outcome Connection::pause(int msecs)
{
    return wait([] { return false; }, msecs);
}

void Connection::drop()
{
    if (_socket) {
        if (_socket->state() == QAbstractSocket::HostLookupState)
            System::NameLookups::Abandon();
        _socket->abort();
    }
    _socket.reset();
    _owner = std::thread::id();
    _bytes.clear();
    _used = 0;
}

bool Connection::isOwn() const
{
    return _owner == std::this_thread::get_id();
}

void Connection::consume(size_t size)
{
    Q_ASSERT(size <= bytes().size());
    _used += size;
}

void Connection::end()
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _ended = true;
    if (_dispatcher)
        _dispatcher->wakeUp();
}

Connection::Outcome Connection::wait(const std::function<bool()> &isDone, int msecs)
{
    QEventLoop loop;
    QTimer timer;
    timer.setSingleShot(true);
    const Waiting waiting(*this);
    bool isTimed = false;
    while (!_ended) {
        if (isDone())
            return Outcome::Done;
        if (isLost())
            return Outcome::Lost;
        if (isTimed && !timer.isActive())
            return Outcome::TimedOut;
        // Most often the bytes are there already, and no timer is needed.
        if (!isTimed)
            timer.start(std::max(0, msecs));
        isTimed = true;
        loop.processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::ExcludeUserInputEvents);
    }
    return Outcome::Ended;
}

/** True, with an error(), if there is a socket that is connected no more. */
bool Connection::isLost()
{
    if (!_socket || _socket->state() != QAbstractSocket::UnconnectedState)
        return false;
    _error = _socket->errorString().toStdString();
    return true;
}

} // namespace IO
} // namespace Tellarix
