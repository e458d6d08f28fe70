// SPDX-License-Identifier: LGPL-3.0-or-later

#include "httpserver.h"
#include "rowname.h"
#include "seedlinkserver.h"

#include <tellarix/client/remote/httpclient.h>
#include <tellarix/client/remote/seedlinkstations.h>

#include <QSslConfiguration>
#include <QTest>

using namespace Tellarix::IO;

namespace {

const char *const Variables[] = {"http_proxy", "https_proxy", "all_proxy", "no_proxy",
                                 "HTTP_PROXY", "HTTPS_PROXY", "ALL_PROXY", "NO_PROXY"};

HttpSettings quick()
{
    HttpSettings settings;
    settings.connectMSecs = 2000;
    settings.silenceMSecs = 2000;
    return settings;
}

} // namespace

class TestSystemProxy : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        for (const char *name : Variables)
            qunsetenv(name);
    }
    void cleanupTestCase() { init(); }

    void asksForWholeAddresses()
    {
        const HttpServer proxy([](const HttpAsked &) { return HttpReply::Of(200, "x"); });
        const QByteArray host = proxy.host().toLatin1();
        const std::tuple<const char *, const char *, QByteArray, QByteArray, bool> rows[] = {
            {"plain", "http_proxy", "http://" + host, "", true},
            {"without scheme", "http_proxy", host, "", true},
            {"for all", "ALL_PROXY", "http://" + host + '/', "", true},
            {"of another scheme", "https_proxy", "http://" + host, "", false},
            {"excluded domain", "http_proxy", host, "example.org, .invalid", false},
            {"excluded port", "http_proxy", host, "a.invalid:8080", false},
            {"another port", "http_proxy", host, "a.invalid:80", true},
            {"everything excluded", "http_proxy", host, "*", false},
            {"end of a name", "http_proxy", host, "nvalid,*.org", true},
        };
        for (const auto &[name, variable, value, excluded, isUsed] : rows) {
            const RowName shown(name);
            init();
            qputenv(variable, value);
            qputenv("NO_PROXY", excluded);
            const int before = proxy.asked().size();
            HttpClient client(quick());
            QCOMPARE(client.open(HttpRequest(QUrl("http://a.invalid:8080/x?y=z"))), isUsed);
            QCOMPARE(proxy.asked().size() - before, isUsed ? 1 : 0);
            if (isUsed)
                QCOMPARE(proxy.asked().last().target, QByteArray("http://a.invalid:8080/x?y=z"));
        }
        // The login of the proxy is none of the server's, and this machine needs no proxy.
        qputenv("http_proxy", "http://anna:secret@" + host);
        qputenv("no_proxy", "");
        HttpClient client(quick());
        QVERIFY(client.open(HttpRequest(QUrl("http://a.invalid/x"))));
        QCOMPARE(proxy.asked().last().header("Proxy-Authorization"),
                 "Basic " + QByteArray("anna:secret").toBase64());
        QVERIFY(client.open(HttpRequest(proxy.url("/y"))));
        QCOMPARE(proxy.asked().last().target, QByteArray("/y"));
        QVERIFY(proxy.asked().last().header("Proxy-Authorization").isEmpty());
    }

    void leadsEncryptedConnections()
    {
        const HttpCertificate certificate;
        if (certificate.key.isNull())
            QSKIP("no openssl to make a certificate with");
        const HttpServer server([](const HttpAsked &) { return HttpReply::Of(200, "x"); },
                                &certificate);
        const HttpServer proxy([&](const HttpAsked &asked) {
            return asked.header("Proxy-Authorization").isEmpty()
                       ? HttpReply::Of(407, "", "Proxy-Authenticate: Basic realm=x\r\n")
                       : HttpReply{"HTTP/1.1 200 OK\r\n\r\n", HttpReply::Tunnel, {}, server.port()};
        });
        const QSslConfiguration before = QSslConfiguration::defaultConfiguration();
        QSslConfiguration trusting = before;
        trusting.addCaCertificate(certificate.certificate);
        QSslConfiguration::setDefaultConfiguration(trusting);
        qputenv("HTTPS_PROXY", "anna:secret@" + proxy.host().toLatin1());
        HttpClient client(quick());
        const bool isOpen = client.open(HttpRequest(QUrl("https://service.test/x")));
        QSslConfiguration::setDefaultConfiguration(before);
        QVERIFY2(isOpen, qPrintable(client.answer().cause));
        QCOMPARE(proxy.asked().last().method, QByteArray("CONNECT"));
        QCOMPARE(proxy.asked().last().target, QByteArray("service.test:443"));
        QCOMPARE(server.asked().last().target, QByteArray("/x"));
        QVERIFY(!server.asked().last().head.contains("Proxy-"));
    }

    void leadsLiveConnections()
    {
        SeedLinkTesting::SeedLinkServer server;
        QVERIFY(server.start());
        server.add(seedRecord("XX.A..HHZ", Tellarix::Core::Time::GMT()));
        const auto port = static_cast<quint16>(QUrl(server.url().c_str()).port());
        const HttpServer proxy([&](const HttpAsked &asked) {
            return asked.target == "live.test:18000"
                       ? HttpReply{"HTTP/1.1 200 OK\r\n\r\n", HttpReply::Tunnel, {}, port}
                       : HttpReply::Of(403);
        });
        SeedLinkStations list;
        for (const char *variable : {"all_proxy", "https_proxy", "http_proxy"}) {
            init();
            qputenv(variable, proxy.host().toLatin1());
            QVERIFY(list.setSource("live.test?timeout=5"));
            QVERIFY2(list.read(true), list.errorString().c_str());
            QCOMPARE(list.stations().size(), size_t(1));
        }
        // One of the web may refuse anything else, but what is for all counts.
        QVERIFY(list.setSource("a.invalid:1234?timeout=5") && !list.read(true));
        QVERIFY2(list.errorString().find("by the proxy " + proxy.host().toStdString() + ')') !=
                     std::string::npos,
                 list.errorString().c_str());
        qputenv("all_proxy", proxy.host().toLatin1());
        QVERIFY(!list.read(true));
        QVERIFY2(
            QString::fromStdString(list.errorString()).endsWith("by the proxy " + proxy.host()),
            list.errorString().c_str());
    }

    void namesProxiesThatAreGone()
    {
        QTcpServer closed;
        QVERIFY(closed.listen(QHostAddress::LocalHost));
        const QString host = QString("127.0.0.1:%1").arg(closed.serverPort());
        closed.close();
        qputenv("all_proxy", host.toLatin1());
        for (const char *url : {"http://a.invalid", "https://a.invalid"}) {
            HttpClient client(quick());
            QVERIFY(!client.open(HttpRequest(QUrl(url))));
            QVERIFY2(client.answer().cause.endsWith(", by the proxy " + host),
                     qPrintable(client.answer().cause));
        }
    }
};

QTEST_GUILESS_MAIN(TestSystemProxy)
#include "tst_systemproxy.moc"
