// SPDX-License-Identifier: LGPL-3.0-or-later

#include "fdsndata.h"
#include "rowname.h"
#include "seedlinkserver.h"

#include <tellarix/client/io/recordstream.h>
#include <tellarix/client/remote/connection.h>
#include <tellarix/client/remote/httpclient.h>
#include <tellarix/core/records/record.h>

#include <QtTest>

#include <future>

using namespace Tellarix;
using namespace Tellarix::IO;
using SeedLinkTesting::Fault;
using SeedLinkTesting::SeedLinkServer;

namespace {

const char *const Id = "XX.A..BHZ";
const Core::Time Begin(2024, 1, 5);

/** A port of the loopback to which connections are made, if there is room, and nothing else. */
class MuteServer
{
public:
    explicit MuteServer(bool isFull)
    {
        _listener = ::socket(AF_INET, SOCK_STREAM, 0);
        // What waits to be read takes little room.
        const int bytes = 4096;
        ::setsockopt(_listener, SOL_SOCKET, SO_RCVBUF, &bytes, sizeof bytes);
        _address.sin_family = AF_INET;
        _address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof _address;
        auto *plain = reinterpret_cast<sockaddr *>(&_address);
        ::bind(_listener, plain, size);
        ::listen(_listener, isFull ? 0 : 16);
        ::getsockname(_listener, plain, &size);
        for (int i = 0; isFull && i < 4; ++i) {
            _guests.push_back(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0));
            ::connect(_guests.back(), plain, size);
        }
    }
    ~MuteServer()
    {
        for (const int guest : _guests)
            ::close(guest);
        ::close(_listener);
    }

    int port() const { return ntohs(_address.sin_port); }
    QString host() const { return QString("127.0.0.1:%1").arg(port()); }

private:
    int _listener{-1};
    sockaddr_in _address{};
    std::vector<int> _guests;
};

/** One of each kind of remote stream, for a server that stands in place of %1. */
struct Kind
{
    QString url;
    const char *station{"A"};
    bool isLive{false};
};

QVector<Kind> webKinds()
{
    const auto encoded = [](const char *url) { return QString(QUrl::toPercentEncoding(url, "%")); };
    return {{"fdsnws+http://%1"},
            {"archive+http://%1/tree"},
            {"archive+http://%1/tree", "*"},
            {"cached://?folder=FOLDER&source=" + encoded("fdsnws+http://%1")},
            {"joined://?past=" + encoded("archive+http://%1/tree") +
                 "&live=" + encoded("fdsnws+http://%1"),
             "A", true}};
}

RecordStreamPtr streamOf(const Kind &kind, const QString &host, const QString &folder)
{
    const QString url = QString(kind.url).replace("FOLDER", folder).replace("%1", host);
    const RecordStreamPtr stream = RecordStream::Create(url.toStdString());
    if (!stream)
        return stream;
    const Core::Time end = kind.isLive ? Core::Time() : Begin + Core::TimeSpan(3600);
    stream->addStream("XX", kind.station, "", "BHZ", {Begin, end});
    stream->setMessageHandler([](const StreamMessage &) {});
    return stream;
}

} // namespace

/** Streams of every kind end at once when they are closed, whatever they wait for. */
class TestClosing : public QObject
{
    Q_OBJECT

private slots:
    void beforeAnAnswer()
    {
        const MuteServer full(true);
        const MuteServer mute(false);
        const std::pair<const char *, QString> states[] = {
            {"looking for a name", "no-such-host.invalid"},
            {"connecting", full.host()},
            {"connected or shaking hands", mute.host()}};
        QVector<Kind> kinds = webKinds();
        kinds += {{"seedlink://%1", "A", true}, {"fdsnws+https://%1"}, {"archive+https://%1/tree"}};
        for (const auto &[state, host] : states) {
            for (const Kind &kind : kinds)
                close(state, kind, host, host.startsWith("127"));
        }
    }

    void inAnAnswer()
    {
        const QByteArray records =
            seedRecord(Id, Begin) + seedRecord(Id, Begin + Core::TimeSpan(100));
        const std::pair<const char *, HttpReply> states[] = {
            {"in a pause", HttpReply::Of(503, "", "Retry-After: 30\r\n")},
            {"in a head", HttpReply{"HTTP/1.1 200 OK\r\nX: y"}},
            {"in a body", HttpReply{HttpReply::head(200, "") + records.left(700)}},
            {"in a chunk",
             HttpReply{HttpReply::head(200, "Transfer-Encoding: chunked\r\n") + "FF"}},
            {"in endless headers", HttpReply{"HTTP/1.1 200 OK\r\n", HttpReply::Repeat, "X: y\r\n"}},
            {"in endless garbage",
             HttpReply{HttpReply::head(200, ""), HttpReply::Repeat, QByteArray(100000, 'x')}},
            {"in endless records",
             HttpReply{HttpReply::head(200, ""), HttpReply::Repeat, records}}};
        for (const auto &[state, reply] : states) {
            HttpServer server([&, &reply = reply](const HttpAsked &) { return reply; });
            for (const Kind &kind : webKinds())
                close(state, kind, server.host(), false);
        }
        for (const Kind &kind : webKinds()) {
            std::atomic<int> asked{0};
            HttpServer server([&](const HttpAsked &) {
                return ++asked == 1 ? HttpReply::Of(404) : HttpReply{"", HttpReply::Close};
            });
            close("while it is away", kind, server.host(), false);
        }
    }

    void inAFlow()
    {
        const std::tuple<const char *, Fault, bool> states[] = {
            {"waiting for data", Fault::None, true},
            {"stalled", Fault::StallsInFlow, true},
            {"in a pause", Fault::Garbage, true},
            {"being refused", Fault::RefusesAll, false},
            {"in a line", Fault::EndlessLine, false}};
        for (const auto &[state, fault, waits] : states) {
            SeedLinkServer server;
            QVERIFY(server.start());
            server.setFault(fault);
            for (int i = 0; i < 3; ++i)
                server.add(seedRecord(Id, Begin + Core::TimeSpan(100 * i)));
            close(state, {"seedlink://%1", "A", true}, QString::fromStdString(server.address()),
                  waits);
        }
    }

    /** A server that takes the connection and reads nothing. */
    void inAWrite()
    {
        const MuteServer server(false);
        constexpr int MSecs = 200;
        Connection connection;
        QVERIFY(connection.open("127.0.0.1", server.port(), 5000) == Connection::Outcome::Done);
        const std::string bytes(64 << 20, 'x');
        QVERIFY(connection.write(bytes, MSecs) == Connection::Outcome::TimedOut);
        auto ended = std::async(std::launch::async, [&] {
            QTest::qWait(MSecs / 4);
            connection.end();
        });
        QVERIFY(connection.write(bytes, 60000) == Connection::Outcome::Ended);

        HttpSettings settings;
        settings.silenceMSecs = MSecs;
        HttpClient client(settings);
        HttpRequest request(QUrl("http://" + server.host()));
        request.method = HttpRequest::Method::Post;
        request.body = QByteArray(64 << 20, 'x');
        QVERIFY(!client.open(request));
        QCOMPARE(client.answer().cause, QString("no answer within 0.2 s"));
    }

private:
    /** Reads a stream until it stands still, at least if it @p waits, and closes it. */
    void close(const char *state, const Kind &kind, const QString &host, bool waits)
    {
        const QByteArray row = state + QString(": %1 %2").arg(kind.url, kind.station).toLatin1();
        const RowName shown(row);
        const QTemporaryDir folder;
        RecordStreamPtr stream = streamOf(kind, host, folder.path());
        QVERIFY(stream);
        auto ended = std::async(std::launch::async, [&] {
            for (bool goesOn = stream->open(); goesOn; goesOn = bool(stream->next())) {
            }
        });
        const auto reached = ended.wait_for(std::chrono::milliseconds(50));
        QVERIFY(!waits || reached == std::future_status::timeout);
        QElapsedTimer timer;
        timer.start();
        stream->close();
        const bool isEnded = ended.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
        QVERIFY(isEnded);
        stream.reset();
        QVERIFY2(timer.elapsed() < 100, qPrintable(QString::number(timer.elapsed())));
    }
};

QTEST_GUILESS_MAIN(TestClosing)
#include "tst_closing.moc"
