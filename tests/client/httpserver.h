// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QEventLoop>
#include <QProcess>
#include <QSslCertificate>
#include <QSslKey>
#include <QSslSocket>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QUrl>
#include <QVector>

#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

/** A request as it came. */
struct HttpAsked
{
    QByteArray method;
    QByteArray target; /**< path and query, as they were sent */
    QByteArray head;
    QByteArray body;

    QByteArray header(const QByteArray &name) const
    {
        const int at = head.toLower().indexOf("\r\n" + name.toLower() + ":");
        const int begin = at + name.size() + 3;
        return at < 0 ? QByteArray() : head.mid(begin, head.indexOf('\r', begin) - begin).trimmed();
    }
};

/** What the server does about a request: sends bytes of any kind, and then something else. */
struct HttpReply
{
    enum Then
    {
        Wait,   /**< for the next request */
        Close,  /**< the connection */
        Repeat, /**< the last bytes without end */
        Tunnel  /**< leads to a port of the loopback */
    };

    QByteArray bytes{};
    Then then{Wait};
    QByteArray repeated{};
    quint16 port{0};

    /** An answer as it should be; @p headers are lines that end by CR LF. */
    static HttpReply Of(int status, const QByteArray &body = {}, const QByteArray &headers = {})
    {
        return {
            head(status, headers + "Content-Length: " + QByteArray::number(body.size()) + "\r\n") +
            body};
    }
    static HttpReply MovedTo(const QByteArray &target)
    {
        return Of(302, "moved", "Location: " + target + "\r\n");
    }
    /** Says that the whole body comes, but ends the connection behind @p size bytes of it. */
    static HttpReply CutOff(const QByteArray &body, int size, const QByteArray &headers = {})
    {
        HttpReply reply = Of(200, body, headers);
        reply.bytes.chop(body.size() - size);
        reply.then = Close;
        return reply;
    }
    static QByteArray head(int status, const QByteArray &headers)
    {
        return "HTTP/1.1 " + QByteArray::number(status) + " Reason\r\n" + headers + "\r\n";
    }
};

/** A certificate of "localhost" that nobody has signed but itself; null without openssl. */
class HttpCertificate
{
public:
    HttpCertificate()
    {
        QProcess openssl;
        openssl.start("openssl",
                      {"req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj",
                       "/CN=localhost", "-addext", "subjectAltName=DNS:localhost,DNS:service.test",
                       "-keyout", file("key"), "-out", file("certificate")});
        openssl.waitForFinished();
        const QList<QSslCertificate> made = QSslCertificate::fromPath(file("certificate"));
        QFile keyFile(file("key"));
        if (made.isEmpty() || !keyFile.open(QIODevice::ReadOnly))
            return;
        certificate = made.first();
        key = QSslKey(&keyFile, QSsl::Rsa);
    }

    QSslCertificate certificate;
    QSslKey key;

private:
    QString file(const QString &name) const { return _folder.filePath(name); }

    QTemporaryDir _folder;
};

/** A web server on the loopback, in a thread of its own, that answers as a function says. */
class HttpServer
{
public:
    /** Called in the thread of the server. */
    using Answer = std::function<HttpReply(const HttpAsked &asked)>;

    explicit HttpServer(Answer answer, const HttpCertificate *certificate = nullptr)
        : _answer(std::move(answer)), _certificate(certificate)
    {
        std::promise<void> started;
        _thread = std::thread([&] { run(started); });
        started.get_future().wait();
    }
    ~HttpServer()
    {
        QMetaObject::invokeMethod(_loop, "quit", Qt::QueuedConnection);
        _thread.join();
    }

    quint16 port() const { return _port; }
    /** "127.0.0.1:PORT" */
    QString host() const { return QString("127.0.0.1:%1").arg(_port); }
    QUrl url(const QString &target) const
    {
        return QUrl(_certificate ? QString("https://localhost:%1%2").arg(_port).arg(target)
                                 : "http://" + host() + target);
    }
    /** All requests that came so far. */
    QVector<HttpAsked> asked() const
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        return QVector<HttpAsked>(_asked.begin(), _asked.end());
    }
    int connections() const
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        return _connections;
    }

private:
    class Listener : public QTcpServer
    {
    public:
        explicit Listener(HttpServer &server) : _server(server) {}

    protected:
        void incomingConnection(qintptr descriptor) override
        {
            auto *socket = new QSslSocket(this);
            socket->setSocketDescriptor(descriptor);
            if (_server._certificate) {
                socket->setLocalCertificate(_server._certificate->certificate);
                socket->setPrivateKey(_server._certificate->key);
                socket->startServerEncryption();
            }
            _server.serve(socket);
        }

    private:
        HttpServer &_server;
    };

    void run(std::promise<void> &started)
    {
        QEventLoop loop;
        Listener listener(*this);
        listener.listen(QHostAddress::LocalHost);
        _port = listener.serverPort();
        _loop = &loop;
        started.set_value();
        loop.exec();
    }

    void serve(QSslSocket *socket)
    {
        {
            const std::lock_guard<std::mutex> lock(_mutex);
            ++_connections;
        }
        auto received = std::make_shared<QByteArray>();
        QObject::connect(socket, &QSslSocket::readyRead, socket, [=] {
            *received += socket->readAll();
            HttpAsked asked;
            while (takeRequest(*received, asked))
                send(socket, _answer(asked), asked.method == "HEAD");
        });
        QObject::connect(socket, &QSslSocket::disconnected, socket, &QObject::deleteLater);
    }

    bool takeRequest(QByteArray &received, HttpAsked &asked)
    {
        const int end = received.indexOf("\r\n\r\n");
        if (end < 0)
            return false;
        asked.head = received.left(end + 4);
        const int bodySize = asked.header("Content-Length").toInt();
        if (received.size() < end + 4 + bodySize)
            return false;
        const QList<QByteArray> words = asked.head.left(asked.head.indexOf('\r')).split(' ');
        asked.method = words.value(0);
        asked.target = words.value(1);
        asked.body = received.mid(end + 4, bodySize);
        received.remove(0, end + 4 + bodySize);
        const std::lock_guard<std::mutex> lock(_mutex);
        _asked.push_back(asked);
        return true;
    }

    void send(QSslSocket *socket, const HttpReply &reply, bool headOnly)
    {
        socket->write(headOnly ? reply.bytes.left(reply.bytes.indexOf("\r\n\r\n") + 4)
                               : reply.bytes);
        if (reply.then == HttpReply::Close)
            socket->disconnectFromHost();
        if (reply.then == HttpReply::Tunnel)
            lead(socket, reply.port);
        if (reply.then != HttpReply::Repeat)
            return;
        const auto repeat = [socket, bytes = reply.repeated] {
            if (socket->bytesToWrite() < (1 << 20))
                socket->write(bytes);
        };
        QObject::connect(socket, &QSslSocket::bytesWritten, socket, repeat);
        repeat();
    }

    /** Hands all bytes on, to and fro. */
    static void lead(QSslSocket *socket, quint16 port)
    {
        socket->disconnect(socket);
        auto *other = new QTcpSocket(socket);
        other->connectToHost(QHostAddress::LocalHost, port);
        const auto pipe = [](QTcpSocket *from, QTcpSocket *to) {
            QObject::connect(from, &QTcpSocket::readyRead, to, [=] { to->write(from->readAll()); });
            QObject::connect(from, &QTcpSocket::disconnected, to, &QTcpSocket::disconnectFromHost);
        };
        pipe(socket, other);
        pipe(other, socket);
    }

    Answer _answer;
    const HttpCertificate *_certificate;
    std::thread _thread;
    QEventLoop *_loop{nullptr};
    quint16 _port{0};
    mutable std::mutex _mutex;
    std::vector<HttpAsked> _asked;
    int _connections{0};
};

Q_DECLARE_METATYPE(HttpReply)
