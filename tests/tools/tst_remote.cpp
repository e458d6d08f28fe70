// SPDX-License-Identifier: LGPL-3.0-or-later

#include "client/seedlinkserver.h"
#include "toolrun.h"

#include <QFile>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QUrl>
#include <QtEndian>
#include <QtTest>

#include <csignal>

using namespace SeedLinkTesting;

namespace {

const Core::Time Start(2024, 5, 17, 23, 59);

/** A miniSEED record written byte by byte: @p count samples at 1 Hz that count up from 0. */
QByteArray rawRecord(const QByteArray &station, int minute, int count, int length)
{
    QByteArray bytes = "000001D " + station.leftJustified(5) + "  BHZXX";
    const auto add = [&](auto number) {
        const auto big = qToBigEndian(number);
        bytes.append(reinterpret_cast<const char *>(&big), sizeof big);
    };
    add(quint16(2024));
    add(quint16(138));
    bytes += QByteArray("\x0a", 1) + char(minute) + QByteArray(2, '\0');
    for (const int number : {0, count, 1, 1}) // 1/10000 s, samples, rate
        add(quint16(number));
    bytes += QByteArray("\0\0\0\1\0\0\0\0", 8); // flags, one blockette, no correction
    add(quint16(64));
    add(quint16(48));
    add(quint16(1000));
    add(quint16(0));
    bytes += QByteArray("\3\1", 2) + char(std::lround(std::log2(length))) + '\0';
    bytes = bytes.leftJustified(64, '\0');
    for (int i = 0; i < count; ++i)
        add(quint32(i));
    return bytes.leftJustified(length, '\0');
}

/** A server in the event loop of the test: takes any station, answers in pieces, and sends what it
 *  has in one go that ends in the middle of a packet, and the rest later. */
class PlainServer : public QTcpServer
{
public:
    explicit PlainServer(const QByteArray &packets)
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this, packets] {
            QTcpSocket *client = nextPendingConnection();
            connect(client, &QTcpSocket::readyRead, this, [this, client, packets] {
                _input += client->readAll().replace('\n', "");
                for (int end = 0; (end = _input.indexOf('\r')) >= 0; _input.remove(0, end + 1))
                    answer(*client, _input.left(end), packets);
            });
        });
    }

    QString url() const { return QString("seedlink://127.0.0.1:%1").arg(serverPort()); }
    QList<QByteArray> lines;

private:
    static void send(QTcpSocket &client, const QByteArray &bytes)
    {
        client.write(bytes);
        client.flush();
    }

    void answer(QTcpSocket &client, const QByteArray &line, const QByteArray &packets)
    {
        lines.append(line);
        if (line == "HELLO") {
            for (const char byte : QByteArray("SeedLink v3.0\r\nSomewhere\r\n"))
                send(client, QByteArray(1, byte));
        } else if (line == "END") {
            send(client, packets.left(packets.size() - 1000));
            QTimer::singleShot(50, &client,
                               [&client, packets] { send(client, packets.right(1000)); });
        } else if (line != "INFO ID" && line != "BYE") {
            send(client, "OK\r");
            send(client, "\n");
        }
    }

    QByteArray _input;
};

/** What "records --json" tells of a source. */
QJsonArray streamsOf(const QString &url)
{
    return run({"records", "--json", url}).json();
}

} // namespace

class TestRemote : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(_server.start());
        for (int i = 0; i < 3; ++i) {
            _server.add(seedRecord("XX.ABC..BHZ", Start + Core::TimeSpan(100.0 * i)));
            _server.add(seedRecord("XX.ABC.00.BHN", Start + Core::TimeSpan(100.0 * i)));
        }
        _server.add(seedRecord("XX.DEF..BHZ", Start + Core::TimeSpan(7200.0)));
    }

    void endsWhenNothingComes_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("streams");
        QTest::addColumn<QString>("ids");
        const QString live = QString::fromStdString(_server.url());
        const QString past = path("past.mseed");
        const Core::Time now = Core::Time::GMT();
        _server.add(seedRecord("XX.NOW1..BHZ", now - Core::TimeSpan(200.0)));
        _server.add(seedRecord("XX.NOW1..BHZ", now - Core::TimeSpan(100.0)));
        QVERIFY(write(past, seedRecord("XX.NOW1..BHZ", now - Core::TimeSpan(300.0))));
        const QString joined =
            "joined://?past=" + encoded("file://" + past) + "&live=" + encoded(live);
        QTest::newRow("empty location") << "watch" << live << "XX.ABC..BHZ"
                                        << "XX.ABC..BHZ:3";
        QTest::newRow("wildcards") << "records" << live << "X?.*.*.BH?,A.B..C"
                                   << "XX.ABC..BHZ:3 XX.ABC.00.BHN:3 XX.DEF..BHZ:1 XX.NOW1..BHZ:2";
        QTest::newRow("joined") << "records" << joined << "XX.NOW1..BHZ"
                                << "XX.NOW1..BHZ:3";
        QTest::newRow("nothing") << "watch" << live << "XX.NO.*.BHZ"
                                 << "";
    }

    void endsWhenNothingComes()
    {
        QFETCH(QString, command);
        QFETCH(QString, url);
        QFETCH(QString, streams);
        QFETCH(QString, ids);
        const Run result = run({command, "--json", "--streams", streams, "--from", "2024-05-17",
                                "--timeout", "1", url});
        QCOMPARE(result.status, 0);
        QStringList found;
        for (const QJsonValue &stream : result.json())
            found.append(
                QString("%1:%2").arg(stream["id"].toString()).arg(stream["records"].toInt()));
        QCOMPARE(found.join(' '), ids);
        QCOMPARE(result.errors.contains("nothing has come for 1 s"), ids.isEmpty());
    }

    void endsOnServerThatSaysNothing()
    {
        SeedLinkServer silent;
        silent.setFault(Fault::SilentFromStart);
        QVERIFY(silent.start());
        for (const char *command : {"records", "watch"}) {
            // The other source is read, whatever this one does.
            const Run result = run({command, "--json", "--timeout", "0.5", path("past.mseed"),
                                    QString::fromStdString(silent.url())});
            QCOMPARE(result.status, 1);
            QCOMPARE(result.json().size(), 1);
            QVERIFY2(result.errors.contains(QString::fromStdString(silent.address())),
                     qPrintable(result.errors));
        }
        QCOMPARE(run({"records", "--timeout", "0", path("past.mseed")}).status, 2);

        // One that isn't there is waited for by watch alone.
        silent.stop();
        const QString url = QString::fromStdString(silent.url());
        const Run refused = run({"records", url});
        QVERIFY2(refused.status == 1 && refused.errors.contains("Connection refused"),
                 qPrintable(refused.errors));
        const Run awaited = run({"watch", "--timeout", "0.5", url});
        QCOMPARE(awaited.status, 1);
        QVERIFY2(awaited.errors.contains("nothing has come for 0.5 s: " +
                                         QString::fromStdString(silent.address())),
                 qPrintable(awaited.errors));
    }

    void lostConnectionIsNoFault()
    {
        SeedLinkServer server;
        const auto addPart = [&](int i) {
            server.add(seedRecord("XX.ABC..BHZ", Start + Core::TimeSpan(100.0 * i)));
        };
        addPart(0);
        QVERIFY(server.start());
        QProcess process;
        process.start(program(), {"records", "--json", "--from", "2024-05-17", "--timeout", "2",
                                  QString::fromStdString(server.url()) + "?retry=0.05"});
        QTRY_VERIFY(!server.lines().empty() && server.lines().back() == "END");
        server.stop();
        QByteArray errors;
        QTRY_VERIFY((errors += process.readAllStandardError()).contains("connection lost: "));
        addPart(1);
        QVERIFY(server.start());
        QVERIFY(process.waitForFinished());
        QVERIFY2(process.exitCode() == 0, errors + process.readAllStandardError());
        const QJsonArray streams = QJsonDocument::fromJson(process.readAllStandardOutput()).array();
        QCOMPARE(streams.first().toObject()["records"].toInt(), 2);
    }

    void watchEndsByInterrupt()
    {
        SeedLinkServer server;
        QVERIFY(server.start());
        server.stop();
        QProcess process;
        process.start(program(), {"watch", QString::fromStdString(server.url()), "--streams",
                                  "XX.ABC..BHZ,XX.NONE..BHZ", "--from", "2024-05-17"});
        QByteArray errors;
        QTRY_VERIFY((errors += process.readAllStandardError()).contains("no connection: "));
        for (int i = 0; i < 3; ++i)
            server.add(seedRecord("XX.ABC..BHZ", Start + Core::TimeSpan(100.0 * i)));
        QVERIFY(server.start());
        QTRY_VERIFY((errors += process.readAllStandardError()).contains("new stream"));
        server.add(seedRecord("XX.ABC..BHZ", Start + Core::TimeSpan(7200.0)));
        QTRY_VERIFY((errors += process.readAllStandardError()).contains("gap of 1.9 h"));
        QCOMPARE(::kill(static_cast<pid_t>(process.processId()), SIGINT), 0);
        QVERIFY(process.waitForFinished(5000));
        QCOMPARE(process.exitCode(), 0);
        const QList<QByteArray> lines = process.readAllStandardOutput().trimmed().split('\n');
        QCOMPARE(lines.size(), 3);
        const QRegularExpression line(
            "^XX\\.ABC\\.\\.BHZ +1  2024-05-18T02:00:39.000000Z  +[0-9.]+ d +4 +1 +0$");
        QVERIFY2(line.match(QString::fromUtf8(lines[1])).hasMatch(), lines[1].constData());
        QVERIFY(lines[2].startsWith("XX.NONE..BHZ        -"));
    }

    void watchCountsLateRecords()
    {
        // At 0 and 200 s; the one between comes late, then one over two others.
        QByteArray bytes;
        for (const double start : {0.0, 200.0, 400.0, 100.0, 150.0})
            bytes += seedRecord("XX.ABC..BHZ", Start + Core::TimeSpan(start));
        QVERIFY(write(path("late.mseed"), bytes));
        const QJsonObject stream =
            run({"watch", "--json", path("late.mseed")}).json()[0].toObject();
        QCOMPARE(stream["records"].toInt(), 5);
        QCOMPARE(stream["gaps"].toInt(), 1);
        QCOMPARE(stream["overlaps"].toInt(), 1);
    }

    void readsServerOfOthers()
    {
        QByteArray packets;
        for (int i = 0; i < 3; ++i)
            packets += "SL00000" + QByteArray::number(i) + rawRecord("RAW", 10 * i, 600, 4096);
        PlainServer server(packets);
        const QString file = path("raw.mseed");
        const QStringList wanted{server.url(), "--streams", "XX.RAW..BHZ", "--from", "2024-05-17",
                                 "--timeout",  "1"};
        for (const QStringList &command :
             {QStringList{"records", "--json"}, {"watch", "--once"}, {"cat", "--output", file}}) {
            QProcess process;
            process.start(program(), command + wanted);
            QTRY_COMPARE(process.state(), QProcess::NotRunning);
            QCOMPARE(process.readAllStandardError(), QByteArray());
            QCOMPARE(process.exitCode(), 0);
        }
        QVERIFY(server.lines.contains("STATION RAW XX") && server.lines.contains("SELECT --BHZ"));
        const QJsonArray streams = streamsOf(file);
        QCOMPARE(streams.size(), 1);
        QCOMPARE(streams[0]["records"].toInt(), 3);
        QCOMPARE(streams[0]["samples"].toInt(), 1800);
        QCOMPARE(streams[0]["mean"].toDouble(), 299.5);
        QCOMPARE(streams[0]["gaps"].toInt(), 0);
    }

    void addsToArchiveOnce()
    {
        // Over midnight, with another division into records the second time.
        const QString tree = path("tree");
        const QString url = QString::fromStdString(_server.url());
        const QStringList cat{"cat",          url,         "--archive", tree, "--streams",
                              "XX.ABC.*.BH?", "--timeout", "1"};
        const Run first =
            run(cat + QStringList{"--from", "2024-05-17T23:59:00", "--to", "2024-05-18T00:03:00"});
        QVERIFY2(first.status == 0, qPrintable(first.errors));
        QVERIFY(first.output.contains("6 records written to 4 files, 0 were there"));
        QVERIFY(QFile::exists(tree + "/2024/XX/ABC/BHN.D/XX.ABC.00.BHN.D.2024.139"));
        const QJsonArray once = streamsOf("archive://" + tree);
        QCOMPARE(once.size(), 2);

        const Run again = run(cat + QStringList{"--from", "2024-05-17", "--to", "2024-05-18T01"});
        QVERIFY(again.output.contains("0 records written to 0 files, 6 were there"));
        QByteArray other;
        for (int i = 0; i < 7; ++i)
            other += seedRecord("XX.ABC..BHZ", Start + Core::TimeSpan(50.0 * i), 50);
        QVERIFY(write(path("other.mseed"), other));
        const Run divided = run({"cat", path("other.mseed"), "--archive", tree});
        QVERIFY2(divided.output.contains("1 records written to 1 files, 6 were there"),
                 qPrintable(divided.output));
        QCOMPARE(streamsOf("archive://" + tree).first().toObject()["overlaps"].toInt(), 0);
    }

    void writesFileAsTold_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("samples"); // afterwards; 300 before
        const QStringList part{"--from", "2024-05-17T23:59:50", "--to", "2024-05-18T00:01:30.5"};
        QTest::newRow("there already") << QStringList() << 1 << 300;
        QTest::newRow("replaced") << QStringList{"--force"} << 0 << 600;
        QTest::newRow("added to") << QStringList{"--append"} << 0 << 900;
        QTest::newRow("whole records") << part + QStringList{"--force"} << 0 << 400;
        QTest::newRow("cut") << part + QStringList{"--force", "--cut"} << 0 << 202;
        QTest::newRow("nothing") << QStringList{"--force", "--streams", "A.B.C.D"} << 0 << 300;
        QTest::newRow("no window") << QStringList{"--force", "--cut"} << 2 << 300;
        QTest::newRow("tree") << QStringList{"--archive", path("x")} << 2 << 300;
    }

    void writesFileAsTold()
    {
        QFETCH(QStringList, options);
        QFETCH(int, status);
        QFETCH(int, samples);
        QByteArray source;
        for (int i = 0; i < 3; ++i) {
            source += seedRecord("XX.ABC..BHZ", Start + Core::TimeSpan(100.0 * i));
            source += seedRecord("XX.ABC..BHN", Start + Core::TimeSpan(100.0 * i));
        }
        QVERIFY(write(path("source.mseed"), source));
        QByteArray before;
        for (int i = 0; i < 3; ++i)
            before += seedRecord("XX.OLD..BHZ", Start + Core::TimeSpan(100.0 * i));
        const QString file = path("written.mseed");
        QVERIFY(write(file, before));
        const Run result =
            run(QStringList{"cat", path("source.mseed"), "--output", file} + options);
        QVERIFY2(result.status == status, qPrintable(result.errors));
        QCOMPARE(result.errors.isEmpty(), status == 0);
        int found = 0;
        for (const QJsonValue &stream : streamsOf(file))
            found += stream["samples"].toInt();
        QCOMPARE(found, samples);
    }

    void keepsWhatIsThereOnFullDisk()
    {
        QByteArray source;
        for (int i = 0; i < 40; ++i)
            source += seedRecord("XX.ABC..BHZ", Start - Core::TimeSpan(100.0 * i + 200));
        QVERIFY(write(path("many.mseed"), source));
        const QByteArray before = seedRecord("XX.ABC..BHZ", Start);
        const QString tree = path("full");
        QVERIFY(write(path("first.mseed"), before));
        QCOMPARE(run({"cat", path("first.mseed"), "--archive", tree}).status, 0);
        const QString dayFile = tree + "/2024/XX/ABC/BHZ.D/XX.ABC..BHZ.D.2024.138";
        const QString file = path("appended.mseed");
        QVERIFY(write(file, before));
        const struct
        {
            QString options, file;
            int size; // of the file afterwards
        } rows[] = {{"--archive " + tree, dayFile, 512},
                    {"--append --output " + file, file, 512},
                    {"--force --output " + file, file, 512},
                    {"--output " + path("new.mseed"), path("new.mseed"), 0}};
        for (const auto &row : rows) {
            QProcess shell;
            shell.start("bash", {"-c", QString("ulimit -f 4; trap '' XFSZ; exec '%1' cat '%2' %3")
                                           .arg(program(), path("many.mseed"), row.options)});
            QVERIFY(shell.waitForFinished());
            QCOMPARE(shell.exitCode(), 1);
            const QString errors = QString::fromUtf8(shell.readAllStandardError());
            QVERIFY2(errors.startsWith("tellarix: " + row.file + ": "), qPrintable(errors));
            QCOMPARE(QFileInfo(row.file).size(), qint64(row.size));
        }
    }

    void staysInTree()
    {
        QVERIFY(write(path("bad.mseed"),
                      rawRecord("../..", 0, 10, 512) + rawRecord("GOOD", 0, 10, 512)));
        const Run result = run({"cat", path("bad.mseed"), "--archive", path("inner/tree")});
        QCOMPARE(result.status, 1);
        QVERIFY2(result.errors.contains("XX.../....BHZ"), qPrintable(result.errors));
        QVERIFY(result.output.contains("1 records written to 1 files"));
    }

private:
    QString path(const QString &name) const { return _folder.filePath(name); }
    static QString encoded(const QString &url)
    {
        return QString::fromLatin1(QUrl::toPercentEncoding(url));
    }
    static bool write(const QString &name, const QByteArray &bytes)
    {
        QFile file(name);
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    }

    QTemporaryDir _folder;
    SeedLinkServer _server;
};

QTEST_GUILESS_MAIN(TestRemote)
#include "tst_remote.moc"
