// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/remote/httpclient.h>

#include <QDeadlineTimer>

#include <memory>
#include <mutex>

class QSslSocket;

namespace Tellarix {
namespace IO {

/** The bytes between a client and a server, encrypted or not. Used by one thread but for cancel().
 */
class HttpConnection
{
public:
    explicit HttpConnection(const HttpSettings &settings);
    ~HttpConnection();

    /** Connects to the server of a URL; false with a failure. A connection to it that stands is
     *  kept. */
    bool connectTo(const QUrl &url);
    /** Whether the connection has served a request before. */
    bool isUsed() const { return _used; }
    void setUsed() { _used = true; }
    void close();

    /** The proxy's login if requests go through one that wants to see them; see isRelayed(). */
    const QByteArray &proxyLogin() const { return _proxyLogin; }
    /** Whether requests go to a proxy, which has to be told the whole address. */
    bool isRelayed() const { return _relayed; }

    void write(const QByteArray &bytes);
    /**
     * Reads up to the next line feed, which is cut off with a carriage return before it.
     * @param budget  bytes that may still come; less afterwards
     * @return false with a failure, also if the budget is used up
     */
    bool readLine(QByteArray *line, int *budget, const QDeadlineTimer &deadline);
    /** Some bytes; 0 if the server has closed the connection, -1 with a failure. */
    qint64 read(char *data, qint64 maxSize);
    QDeadlineTimer silence() const;

    void cancel();
    void rearm();
    bool isCancelled() const { return _cancelled; }

    HttpFailure failure() const { return _failure; }
    const QString &cause() const { return _cause; }
    bool fail(HttpFailure failure, const QString &cause);

private:
    struct Io;
    enum class Arrival
    {
        Bytes,
        End,
        Failure
    };

    void setProxy(const QUrl &url, QString *host, quint16 *port);
    bool waitForConnection(bool encrypted);
    bool failToConnect();
    Arrival awaitBytes(const QDeadlineTimer &deadline);
    bool wait(const QDeadlineTimer &deadline);

    const HttpSettings _settings;
    std::unique_ptr<Io> _io;
    mutable std::mutex _ioMutex; /**< cancel() comes from any thread */
    std::atomic<bool> _cancelled{false};
    QString _server;
    bool _used{false};
    bool _relayed{false};
    QByteArray _proxyLogin;
    QString _proxyName;  /**< "HOST:PORT", empty without one */
    QByteArray _pending; /**< read from the socket, but by nobody yet */
    int _pendingBegin{0};
    HttpFailure _failure{HttpFailure::None};
    QString _cause;
};

} // namespace IO
} // namespace Tellarix
