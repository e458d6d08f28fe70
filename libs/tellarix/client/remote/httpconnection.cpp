// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/httpconnection_p.h>

#include <tellarix/client/remote/systemproxy_p.h>
#include <tellarix/client/system/namelookups.h>

#include <QEventLoop>
#include <QNetworkProxy>
#include <QSslCertificate>
#include <QSslError>
#include <QSslSocket>
#include <QStringList>
#include <QTimer>

#include <algorithm>
#include <cstring>

namespace Tellarix {
namespace IO {

namespace {

constexpr int BlockSize = 64 << 10;

quint16 portOf(const QUrl &url)
{
    return static_cast<quint16>(url.port(url.scheme() == QLatin1String("https") ? 443 : 80));
}

QString secondsText(int msecs)
{
    return QString::number(msecs / 1000.0) + QLatin1String(" s");
}

QString lowered(QString text)
{
    if (!text.isEmpty())
        text[0] = text[0].toLower();
    return text;
}

QString certificateFault(const QSslError &error)
{
    const QString owner = error.certificate().subjectInfo(QSslCertificate::CommonName).join(' ');
    const QString text = lowered(error.errorString());
    return owner.isEmpty() ? text : QString("%1 (\"%2\")").arg(text, owner.left(100));
}

} // namespace

/** What lives in the thread that uses the connection. */
struct HttpConnection::Io
{
    Io()
    {
        timer.setSingleShot(true);
        timer.setTimerType(Qt::PreciseTimer);
        const auto quit = [this] { loop.quit(); };
        QObject::connect(&timer, &QTimer::timeout, &loop, quit);
        QObject::connect(&socket, &QAbstractSocket::readyRead, &loop, quit);
        QObject::connect(&socket, &QAbstractSocket::stateChanged, &loop, quit);
        QObject::connect(&socket, &QSslSocket::encrypted, &loop, quit);
        QObject::connect(&socket, QOverload<const QList<QSslError> &>::of(&QSslSocket::sslErrors),
                         &loop, [this](const QList<QSslError> &errors) {
                             for (const QSslError &error : errors)
                                 faults.append(certificateFault(error));
                         });
    }

    QEventLoop loop;
    QTimer timer;
    QSslSocket socket;
    QStringList faults; /**< of the server's certificate */
};

HttpConnection::HttpConnection(const HttpSettings &settings) : _settings(settings)
{}

HttpConnection::~HttpConnection()
{
    close();
}

void HttpConnection::close()
{
    const std::lock_guard<std::mutex> lock(_ioMutex);
    if (_io) {
        if (_io->socket.state() == QAbstractSocket::HostLookupState)
            System::NameLookups::Abandon();
        _io->socket.abort();
    }
    _io.reset();
    _server.clear();
    _pending.clear();
    _pendingBegin = 0;
}

bool HttpConnection::fail(HttpFailure failure, const QString &cause)
{
    _failure = failure;
    _cause = cause;
    return false;
}

bool HttpConnection::connectTo(const QUrl &url)
{
    _failure = HttpFailure::None;
    const QString server = httpServerName(url);
    // A server that has sent something unasked is not to be taken at its word.
    if (_io && _used && server == _server &&
        _io->socket.state() == QAbstractSocket::ConnectedState &&
        _io->socket.bytesAvailable() == 0 && _pendingBegin == _pending.size())
        return true;

    close();
    _used = false;
    {
        const std::lock_guard<std::mutex> lock(_ioMutex);
        _io = std::make_unique<Io>();
    }
    QString host = url.host();
    quint16 port = portOf(url);
    setProxy(url, &host, &port);
    _io->socket.setReadBufferSize(_settings.bufferSize);
    const bool encrypted = url.scheme() == QLatin1String("https");
    if (encrypted)
        _io->socket.connectToHostEncrypted(host, port);
    else
        _io->socket.connectToHost(host, port);
    if (!waitForConnection(encrypted)) {
        close();
        return false;
    }
    _io->socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    _server = server;
    return true;
}

/** Encrypted connections are led through a proxy; of others HTTP proxies want to see the requests,
 *  and often refuse to do anything else. */
void HttpConnection::setProxy(const QUrl &url, QString *host, quint16 *port)
{
    const QNetworkProxy proxy = systemProxy(url);
    _proxyName = proxy.type() == QNetworkProxy::NoProxy ? QString() : proxyName(proxy);
    _relayed =
        url.scheme() == QLatin1String("http") && (proxy.type() == QNetworkProxy::HttpProxy ||
                                                  proxy.type() == QNetworkProxy::HttpCachingProxy);
    _proxyLogin.clear();
    if (!_relayed) {
        _io->socket.setProxy(proxy);
        return;
    }
    _io->socket.setProxy(QNetworkProxy::NoProxy);
    *host = proxy.hostName();
    *port = proxy.port();
    if (!proxy.user().isEmpty())
        _proxyLogin = "Basic " + (proxy.user() + ':' + proxy.password()).toUtf8().toBase64();
}

bool HttpConnection::waitForConnection(bool encrypted)
{
    const QDeadlineTimer deadline(_settings.connectMSecs);
    QSslSocket &socket = _io->socket;
    while (encrypted ? !socket.isEncrypted() : socket.state() != QAbstractSocket::ConnectedState) {
        if (socket.state() == QAbstractSocket::UnconnectedState)
            return failToConnect();
        if (!wait(deadline)) {
            if (!isCancelled())
                fail(HttpFailure::TimedOut,
                     "no connection within " + secondsText(_settings.connectMSecs) +
                         (_proxyName.isEmpty() ? QString() : ", by the proxy " + _proxyName));
            return false;
        }
    }
    return true;
}

bool HttpConnection::failToConnect()
{
    if (!_io->faults.isEmpty()) {
        _io->faults.removeDuplicates();
        return fail(HttpFailure::Certificate,
                    "the certificate of the server does not hold: " + _io->faults.join("; "));
    }
    QString cause = lowered(_io->socket.errorString());
    if (!_proxyName.isEmpty())
        cause = QString("%1, by the proxy %2").arg(cause, _proxyName);
    if (_io->socket.error() == QAbstractSocket::SslHandshakeFailedError)
        return fail(HttpFailure::Certificate, "no encrypted connection: " + cause);
    return fail(HttpFailure::Unreachable, cause);
}

QDeadlineTimer HttpConnection::silence() const
{
    return QDeadlineTimer(_settings.silenceMSecs);
}

void HttpConnection::write(const QByteArray &bytes)
{
    _io->socket.write(bytes);
}

bool HttpConnection::readLine(QByteArray *line, int *budget, const QDeadlineTimer &deadline)
{
    line->clear();
    for (;;) {
        const int end = _pending.indexOf('\n', _pendingBegin);
        const int size = (end < 0 ? _pending.size() : end + 1) - _pendingBegin;
        if (size > *budget)
            return fail(HttpFailure::Garbled,
                        QString("more than %1 kB of headers").arg(_settings.maxHeadSize >> 10));
        if (end >= 0) {
            *line = _pending.mid(_pendingBegin, size - 1);
            if (line->endsWith('\r'))
                line->chop(1);
            _pendingBegin += size;
            *budget -= size;
            return true;
        }
        const Arrival arrival = awaitBytes(deadline);
        if (arrival == Arrival::End)
            return fail(HttpFailure::Unreachable, "connection closed without an answer");
        if (arrival == Arrival::Failure)
            return false;
        _pending.remove(0, _pendingBegin);
        _pendingBegin = 0;
        _pending += _io->socket.read(BlockSize);
    }
}

qint64 HttpConnection::read(char *data, qint64 maxSize)
{
    const qint64 pending = _pending.size() - _pendingBegin;
    if (pending > 0 && !isCancelled()) {
        const qint64 size = std::min(pending, maxSize);
        std::memcpy(data, _pending.constData() + _pendingBegin, static_cast<size_t>(size));
        _pendingBegin += static_cast<int>(size);
        return size;
    }
    const Arrival arrival = awaitBytes(silence());
    if (arrival != Arrival::Bytes)
        return arrival == Arrival::End ? 0 : -1;
    return _io->socket.read(data, maxSize);
}

HttpConnection::Arrival HttpConnection::awaitBytes(const QDeadlineTimer &deadline)
{
    for (;;) {
        if (isCancelled()) {
            fail(HttpFailure::Cancelled, "cancelled");
            return Arrival::Failure;
        }
        if (!_io)
            return Arrival::End;
        if (_io->socket.bytesAvailable() > 0)
            return Arrival::Bytes;
        if (_io->socket.state() != QAbstractSocket::ConnectedState)
            return Arrival::End;
        if (!wait(deadline) && !isCancelled() && _io->socket.bytesAvailable() == 0) {
            fail(HttpFailure::TimedOut, "no answer within " + secondsText(_settings.silenceMSecs));
            return Arrival::Failure;
        }
    }
}

/** Waits until something has happened; false after cancel() and when time is up. */
bool HttpConnection::wait(const QDeadlineTimer &deadline)
{
    if (!isCancelled() && !deadline.hasExpired()) {
        _io->timer.start(static_cast<int>(deadline.remainingTime()) + 1);
        _io->loop.exec();
        _io->timer.stop();
    }
    if (isCancelled())
        return fail(HttpFailure::Cancelled, "cancelled");
    return !deadline.hasExpired();
}

void HttpConnection::cancel()
{
    const std::lock_guard<std::mutex> lock(_ioMutex);
    _cancelled = true;
    // By an event, so that it is not lost when it comes just before the loop begins.
    if (_io)
        QMetaObject::invokeMethod(&_io->loop, "quit", Qt::QueuedConnection);
}

void HttpConnection::rearm()
{
    _cancelled = false;
}

} // namespace IO
} // namespace Tellarix
