// SPDX-License-Identifier: LGPL-3.0-or-later

#include "fulldisk.h"
#include "rowname.h"
#include "seedlinkserver.h"

#include <tellarix/client/io/recordstream.h>
#include <tellarix/client/remote/seedlinkaddress.h>
#include <tellarix/client/remote/seedlinkprotocol.h>
#include <tellarix/client/remote/seedlinkstations.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>

#include <QtTest>

#include <map>
#include <random>

using namespace Tellarix;
using namespace Tellarix::IO;
using SeedLinkTesting::Fault;
using SeedLinkTesting::SeedLinkServer;

namespace {

const Core::Time Begin = Core::Time::FromString("2024-03-01T00:00:00Z");
const char *const Fast = "?timeout=1&retry=0.05&settle=0.3&keepalive=0.4";

constexpr int Length = 50; // of a record in seconds

/** The record of a stream that begins so many lengths behind the first. */
QByteArray part(const char *id, int index)
{
    return seedRecord(id, Begin + Core::TimeSpan(double(Length) * index), Length);
}

Core::TimeWindow parts(int first, int last)
{
    return {Begin + Core::TimeSpan(double(Length) * first),
            Begin + Core::TimeSpan(double(Length) * last)};
}

/** Reads a stream in a thread of its own. */
class Reader
{
public:
    Reader(const std::string &url, const std::vector<std::string> &streams,
           const Core::TimeWindow &window = Core::TimeWindow(), bool isPersistent = false)
        : _stream(RecordStream::Create(url))
    {
        _stream->setMessageHandler([this](const StreamMessage &message) {
            const std::lock_guard<std::mutex> lock(_mutex);
            _messages << QString::fromStdString(message.cause);
            if (message.severity == StreamMessage::Severity::Fault)
                _faults << _messages.last();
        });
        _stream->setPersistent(isPersistent);
        for (const std::string &id : streams) {
            const StreamCodesCPtr codes = StreamCodes::FromID(id);
            _stream->addStream(codes->network(), codes->station(), codes->location(),
                               codes->channel());
        }
        _stream->setTimeWindow(window);
        _thread = std::thread([this] { read(); });
    }

    ~Reader() { finish(); }

    /** Milliseconds until the stream has ended. */
    qint64 finish()
    {
        QElapsedTimer elapsed;
        elapsed.start();
        _stream->close();
        if (_thread.joinable())
            _thread.join();
        return elapsed.elapsed();
    }

    /** The parts that have come of each stream, in order. */
    QString parts() const
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        QStringList texts;
        for (const auto &[id, indices] : _indices)
            texts << QString::fromStdString(id) + indices;
        return texts.join("; ");
    }
    int count() const { return _count; }
    bool isOpen() const { return _isOpen; }
    bool isDone() const { return _isDone; }
    QStringList messages() const
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        return _messages;
    }
    QStringList faults() const
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        return _faults;
    }
    double progress() const { return _stream->progress(); }
    std::string outage() const { return _stream->outage(); }

private:
    void read()
    {
        _isOpen = _stream->open();
        if (!_isOpen) {
            const std::lock_guard<std::mutex> lock(_mutex);
            _messages << QString::fromStdString(_stream->errorString());
        }
        while (const RecordPtr record = _isOpen ? _stream->next() : nullptr) {
            const std::lock_guard<std::mutex> lock(_mutex);
            const double index = (record->startTime() - Begin).length() / Length;
            _indices[record->streamID()] += QString(" %1").arg(index);
            ++_count;
        }
        _isDone = true;
    }

    RecordStreamPtr _stream;
    std::thread _thread;
    mutable std::mutex _mutex;
    std::map<std::string, QString> _indices;
    QStringList _messages;
    QStringList _faults;
    std::atomic<int> _count{0};
    std::atomic<bool> _isOpen{false};
    std::atomic<bool> _isDone{false};
};

QString numbers(int first, int last)
{
    QString text;
    for (int i = first; i < last; ++i)
        text += QString(" %1").arg(i);
    return text;
}

/** Packets as "Record 520", "Info 520 last", "Lost" and so on. */
QString kindOf(const SeedLinkPacket &packet)
{
    const char *const names[] = {"NeedsBytes", "Record", "Damaged", "Info", "End", "Error", "Lost"};
    return QString("%1 %2").arg(names[static_cast<int>(packet.kind)]).arg(packet.size);
}

} // namespace

class TestSeedLink : public QObject
{
    Q_OBJECT

private slots:
    void tellsWhatGoesOn()
    {
        const std::pair<const char *, bool> rows[] = {
            {"", true},
            {"#streams=XX.*.*.*&from=-6h", true},
            {"#from=-6h&to=+1h", true},
            {"#from=-6h&to=-1h", false},
            {"?fetch=yes", false},
        };
        for (const auto &[text, isLive] : rows) {
            const IO::RecordStreamPtr stream =
                IO::RecordStream::Create(std::string("seedlink://127.0.0.1:1") + text);
            QVERIFY2(stream && stream->isLive() == isLive, text);
        }
    }

    void takesRepliesInPieces()
    {
        using Kind = SeedLinkReply::Kind;
        const std::tuple<std::string, Kind, size_t, std::string> rows[] = {
            {"", Kind::NeedsBytes, 0, ""},
            {"OK\r", Kind::NeedsBytes, 0, ""},
            {"OK\r\nOK\r\nSL000001", Kind::Ok, 4, "OK"},
            {"ok\n", Kind::Ok, 3, "ok"},
            {"ERROR\rno such \x01station\r\n", Kind::Error, 24, "no such ?station"},
            {"ERROR\r\n", Kind::Error, 7, ""},
            {"SeedLink v3.1\r\n", Kind::Text, 15, "SeedLink v3.1"},
            {std::string(2000, 'x'), Kind::TooLong, 0, ""},
        };
        for (const auto &[bytes, kind, size, text] : rows) {
            const SeedLinkReply reply = parseSeedLinkReply(bytes);
            QVERIFY2(reply.kind == kind && reply.size == size && reply.text == text, bytes.c_str());
        }
    }

    void tellsPacketsByTheirRecords()
    {
        const std::string small = part("XX.ABC..HHZ", 0).toStdString();
        const std::string large = seedRecord("XX.ABC..HHZ", Begin, 100, 1, 4096).toStdString();
        std::string damaged = small;
        damaged.replace(20, 2, "\xFF\xFF");
        const std::pair<std::string, QString> rows[] = {
            {"S", "NeedsBytes 0"},
            {"EN", "NeedsBytes 0"},
            {"END", "End 3"},
            {"ERROR\r\n", "Error 7"},
            {"SL00FFAA" + small, "Record 520"},
            {"SL00FFAA" + small.substr(0, 511), "NeedsBytes 0"},
            {"SL00FFAA" + large + "SL", "Record 4104"},
            {"SL00FFAA" + damaged, "Damaged 520"},
            {"SL00FFGA" + small, "Lost 0"},
            {"SLINFO *" + small, "Info 520"},
            {"SLINFO x" + small, "Lost 0"},
            {"OK\r\n", "Lost 0"},
        };
        for (const auto &[bytes, expected] : rows)
            QCOMPARE(kindOf(parseSeedLinkPacket(bytes)), expected);
        QCOMPARE(parseSeedLinkPacket("SL00FFAA" + small).sequence, 0xFFAAu);
        QVERIFY(isSeedLinkSequenceBehind(3, 0xFFFFFE));
        QVERIFY(!isSeedLinkSequenceBehind(0xFFFFFE, 3));
        QCOMPARE(nextSeedLinkSequence(0xFFFFFF), 0u);
    }

    void writesRequests()
    {
        const std::tuple<const char *, const char *, char, QString> selectors[] = {
            {"", "HHZ", 0, "--HHZ"}, {"00", "HH?", 'D', "00HH?.D"},       {"*", "*", 0, "?????"},
            {"*", "H*", 0, "??H??"}, {"0", "*Z", 0, "0-??Z 0-?Z- 0-Z--"}, {"", "B*H*Z", 0, "--B?Z"},
            {"000", "HHZ", 0, ""},   {"", "HHZ\r\nBYE", 0, ""},           {"", "H?*Z", 0, "--H?Z"},
            {"", "VM", 0, "--VM-"},
        };
        for (const auto &[location, channel, type, expected] : selectors) {
            QStringList texts;
            for (const std::string &selector : seedLinkSelectors(location, channel, type))
                texts << QString::fromStdString(selector);
            QCOMPARE(texts.join(' '), expected);
        }
        const std::pair<SeedLinkPosition, std::string> starts[] = {
            {{}, "DATA"},
            {{0x3C, {}}, "DATA 00003C"},
            {{{}, {Begin, Core::Time()}}, "TIME 2024,02,29,23,59,00"},
            {{{}, {Core::Time(), Begin}}, "TIME 1970,01,01,00,00,00 2024,03,01,00,01,00"},
        };
        for (const auto &[position, expected] : starts)
            QCOMPARE(seedLinkStart(position, false), expected);
    }

    void refusesAddresses()
    {
        const std::pair<QString, QString> rows[] = {
            {"", "not of the form HOST:PORT"},
            {"host:99999", "not of the form"},
            {"user:secret@host", "knows no users"},
            {"host?colour=red", "no option \"colour\""},
            {"host?timeout=never", "no number of seconds"},
            {"host/path", "not of the form"},
        };
        for (const auto &[address, cause] : rows) {
            std::string error;
            QVERIFY(!RecordStream::Create("seedlink://" + address.toStdString(), &error));
            QVERIFY2(QString::fromStdString(error).contains(cause), error.c_str());
            QVERIFY(error.find("secret") == std::string::npos);
        }
        SeedLinkAddress address;
        std::string error;
        QVERIFY(parseSeedLinkAddress("[::1]?state=%2Ftmp%2Fa%20b", address, error));
        QCOMPARE(address.name() + ' ' + address.stateFile, std::string("[::1]:18000 /tmp/a b"));
    }

    void deliversWindowsOfThePast()
    {
        const char *const z = "XX.ABC..HHZ";
        const char *const n = "XX.ABC.00.HHN";
        SeedLinkServer server;
        QVERIFY(server.start());
        for (int i = 0; i < 20; ++i) {
            server.add(part(z, i));
            server.add(part(n, i));
            server.add(part("XX.FAR..HHZ", i));
        }
        // One window is passed by newer data, the other never is.
        for (const int last : {12, 30}) {
            Reader reader(server.url() + "?settle=0.3", {z, "XX.NONE..HH?"}, parts(3, last));
            QTRY_VERIFY(reader.isDone());
            QCOMPARE(reader.parts(), z + numbers(3, std::min(20, last)));
            QCOMPARE(reader.messages(), QStringList());
            QCOMPARE(reader.progress(), 1.0);
        }
        Reader all(server.url() + "?fetch=yes", {});
        QTRY_VERIFY(all.isDone());
        QCOMPARE(all.count(), 60);
        Reader wild(server.url(), {"X?.*.*.HH*"}, {Begin, Core::Time()});
        QTRY_COMPARE(wild.count(), 60);
        server.add(part(n, 20));
        QTRY_COMPARE(wild.count(), 61);
    }

    /** A fault that shows at once fails open(); after the others nothing is missing but what was
     *  damaged itself. */
    void survivesMisbehaviour()
    {
        const std::tuple<const char *, Fault, QString> rows[] = {
            {"silent", Fault::SilentFromStart, "no answer within 1"},
            {"endless line", Fault::EndlessLine, "a line without an end"},
            {"web page", Fault::WebPage, "no greeting of a SeedLink server"},
            {"refuses", Fault::RefusesAll, "refuses the request: not taken"},
            {"stalls", Fault::StallsInFlow, "silent for 1 s"},
            {"drips", Fault::Drips, "connection lost: silent for 1 s"},
            {"cuts", Fault::CutsInPacket, "connection lost: The remote host closed"},
            {"garbage", Fault::Garbage, "\"xxxxxxxx\" is no header of a packet"},
            {"damaged record", Fault::DamagedRecord, "damaged record: start time"},
            {"no wildcards", Fault::RefusesWildcards, ""},
            {"wildcards are names", Fault::IgnoresWildcards, ""}};
        for (const auto &[name, fault, message] : rows) {
            const RowName shown(name);
            const char *const id = "XX.ABC..HHZ";
            SeedLinkServer server;
            QVERIFY(server.start());
            for (int i = 0; i < 4; ++i)
                server.add(part(id, i));
            server.setFault(fault);
            Reader reader(server.url() + Fast, {"XX.AB*..HHZ"}, {Begin, Core::Time()});
            const bool isTold = !message.isEmpty();
            if (isTold)
                QTRY_VERIFY2(reader.messages().join('\n').contains(message),
                             qPrintable(reader.messages().join('\n')));
            QTRY_VERIFY(reader.isOpen() || reader.isDone());
            if (!reader.isOpen()) {
                QCOMPARE(reader.messages().size(), 1);
                continue;
            }
            server.setFault(isTold ? Fault::None : fault);
            const bool isDamaged = fault == Fault::DamagedRecord;
            QTRY_COMPARE(reader.parts(), id + (isDamaged ? " 0 2 3" : numbers(0, 4)));
            const int lines = isTold ? isDamaged ? 1 : 2 : 0;
            QTRY_COMPARE_WITH_TIMEOUT(reader.messages().size(), lines, 5000);
        }
    }

    /** Of all that the ring still holds no record is lost, and none comes twice. */
    void survivesRestarts()
    {
        const std::vector<std::string> plain{"XX.A..HHZ", "XX.A..HHN", "XX.B..HHZ", "XX.C..HHZ"};
        const std::tuple<const char *, bool, std::vector<std::string>> rows[] = {
            {"numbers go on", false, plain},
            {"numbers anew", true, plain},
            {"wildcards, anew", true, std::vector<std::string>{"X*.*.*.*"}}};
        for (const auto &[name, countsAnew, streams] : rows) {
            const RowName shown(name);
            const auto seed = std::random_device()();
            qInfo("seed %u", seed);
            std::mt19937 random(seed);
            const auto upTo = [&](int most) { return int(random() % unsigned(most + 1)); };

            const char *const ids[] = {"XX.A..HHZ", "XX.A..HHN", "XX.B..HHZ", "XX.C..HHZ"};
            std::map<std::string, int> next;
            SeedLinkServer server;
            server.setFirstNumber(0xFFFF80);
            QVERIFY(server.start());
            int total = 0;
            const auto addSome = [&](int count) {
                for (int i = 0; i < count; ++i, ++total) {
                    const char *const id = ids[upTo(3)];
                    server.add(part(id, next[id]++));
                }
            };
            Reader reader(server.url() + Fast, streams, {Begin, Core::Time()});
            QTRY_VERIFY(reader.isOpen());
            for (int restart = 0; restart < 20; ++restart) {
                addSome(upTo(30));
                QTest::qWait(upTo(30)); // dies at any moment
                server.stop();
                addSome(upTo(10));
                if (countsAnew)
                    server.setFirstNumber(random());
                QVERIFY(server.start());
            }
            QStringList expected;
            for (const auto &[id, count] : next)
                expected << QString::fromStdString(id) + numbers(0, count);
            QTRY_COMPARE_WITH_TIMEOUT(reader.count(), total, 20000);
            QCOMPARE(reader.parts(), expected.join("; "));
            QCOMPARE(reader.faults(), QStringList());
        }
    }

    /** A connection that was lost is no fault, nor is a gap that the server always had. */
    void tellsWhatTheServerNoLongerHas()
    {
        const QString lost = "XX.ABC..HHZ: the server no longer has what lies between "
                             "2024-03-01T00:02:30.000000Z and 2024-03-01T00:05:50.000000Z";
        const std::tuple<const char *, size_t, int, QString> rows[] = {
            {"nothing", 100, 3, ""}, {"gap", 100, 7, ""}, {"lost", 3, 3, lost}};
        for (const auto &[name, capacity, first, fault] : rows) {
            for (const int way : {0, 1, 2}) {
                const RowName shown(name);
                SeedLinkServer server;
                QVERIFY(server.start());
                server.setCapacity(capacity);
                for (int i = 0; i < 3; ++i)
                    server.add(part("XX.ABC..HHZ", i));
                Reader reader(server.url() + Fast, {way == 1 ? "XX.*..HHZ" : "XX.ABC..HHZ"},
                              {Begin, Core::Time()});
                QTRY_COMPARE(reader.count(), 3);
                server.stop();
                for (int i = first; i < 10; ++i)
                    server.add(part("XX.ABC..HHZ", i));
                if (way == 2)
                    server.setFirstNumber(1);
                QTRY_VERIFY(!reader.outage().empty());
                QVERIFY(server.start());
                const int start = fault.isEmpty() ? first : 7;
                QTRY_COMPARE(reader.parts(), "XX.ABC..HHZ" + numbers(0, 3) + numbers(start, 10));
                QCOMPARE(reader.faults().join('\n'), fault);
                QVERIFY(reader.outage().empty() && reader.messages().size() > 1);
            }
        }
    }

    void waitsForServerThatIsDown()
    {
        SeedLinkServer server;
        QVERIFY(server.start());
        server.stop();
        Reader hasty(server.url() + Fast, {"XX.ABC..HHZ"});
        QTRY_VERIFY(hasty.isDone() && !hasty.isOpen());
        Reader past(server.url() + Fast, {"XX.ABC..HHZ"}, parts(0, 1), true);
        QTRY_VERIFY(past.isDone() && !past.isOpen());

        Reader closed(server.url(), {"XX.ABC..HHZ"}, {Begin, Core::Time()}, true);
        Reader reader(server.url() + Fast, {"XX.ABC..HHZ"}, {Begin, Core::Time()}, true);
        const QString live = QUrl::toPercentEncoding(QString::fromStdString(server.url() + Fast));
        Reader joined("joined://?past=archive%3A%2F%2F%2F&live=" + live.toStdString(),
                      {"XX.ABC..HHZ"}, {Begin, Core::Time()}, true);
        QTRY_VERIFY(reader.isOpen() && closed.isOpen() && joined.isOpen());
        QVERIFY(closed.finish() < 100);
        QCOMPARE(reader.outage(), server.address() + ": Connection refused");
        server.add(part("XX.ABC..HHZ", 0));
        QVERIFY(server.start());
        QTRY_COMPARE(reader.count(), 1);
        QVERIFY(reader.outage().empty());
        server.add(seedRecord("XX.ABC..HHZ", Core::Time::GMT()));
        QTRY_COMPARE(joined.count(), 1);
        QCOMPARE(reader.faults(), QStringList());
        QVERIFY2(reader.messages().size() == 2 &&
                     reader.messages()[1].startsWith("connected after"),
                 qPrintable(reader.messages().join('\n')));
    }

    void leavesOutForeignStreamsAndTellsOfTheFuture()
    {
        SeedLinkServer server;
        QVERIFY(server.start());
        Reader reader(server.url() + Fast, {"XX.ABC.?.HHZ"});
        QTRY_VERIFY(!server.lines().empty() && server.lines().back() == "END");
        QTRY_VERIFY(reader.isOpen());
        server.add(part("XX.ABC.00.HHZ", 0)); // the selector lets it through
        server.add(part("XX.ABC.0.HHZ", 1));
        server.add(seedRecord("XX.ABC.0.HHZ", Core::Time(2200, 1, 1)));
        server.add(part("XX.ABC.0.HHZ", 2));
        QTRY_COMPARE(reader.count(), 3);
        QCOMPARE(reader.messages().join('\n'),
                 QString("XX.ABC.0.HHZ: sends records of the future, the first of "
                         "2200-01-01T00:00:00.000000Z"));
    }

    void asksForASignOfLife()
    {
        SeedLinkServer server;
        QVERIFY(server.start());
        Reader reader(server.url() + Fast, {"XX.ABC..HHZ"});
        QTRY_VERIFY(server.keepAlives() > 4);
        QCOMPARE(server.connections(), 1);
        QCOMPARE(reader.messages(), QStringList());
    }

    void goesOnWhereAFileSays()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath("state");
        const std::vector<std::string> streams{"XX.ABC..HHZ"};
        SeedLinkServer server;
        QVERIFY(server.start());
        const std::string url = server.url() + Fast + "&state=" + path.toStdString();
        server.add(part("XX.ABC..HHZ", 0));
        Reader(url, streams).finish();
        {
            Reader reader(url, streams, {Begin, Core::Time()});
            QTRY_COMPARE(reader.count(), 1);
            QTRY_VERIFY(reader.isOpen());
            QTRY_VERIFY(server.keepAlives() > 0); // it has been asked for the next one
        }
        for (int i = 1; i < 4; ++i)
            server.add(part("XX.ABC..HHZ", i));
        {
            Reader reader(url, streams, {Begin, Core::Time()});
            QTRY_COMPARE(reader.parts(), "XX.ABC..HHZ" + numbers(1, 4));
        }
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.resize(file.size() - 5));
        file.close();
        Reader reader(url, streams, {Begin, Core::Time()});
        QTRY_COMPARE(reader.count(), 4);
        QVERIFY(reader.messages().join("").contains("state: is damaged and not used"));
        QVERIFY(QFile::exists(path + ".damaged"));
    }

    void goesOnWithoutAFile()
    {
        const std::pair<const char *, bool> rows[] = {{"no folder", false}, {"full disk", true}};
        for (const auto &[name, isFull] : rows) {
            const RowName shown(name);
            const QTemporaryDir folder;
            const QString path = folder.filePath(isFull ? "state" : "missing/state");
            SeedLinkServer server;
            QVERIFY(server.start());
            const std::string url = server.url() + Fast + "&state=" + path.toStdString();
            const auto readAnother = [&](int number) {
                server.add(part("XX.ABC..HHZ", number));
                Reader reader(url, {"XX.ABC..HHZ"}, {Begin, Core::Time()});
                [&] { QTRY_COMPARE(reader.count(), isFull ? 1 : number + 1); }();
                reader.finish();
                return reader.messages().join("");
            };
            const QString before = readAnother(0);
            const FullDisk disk(isFull ? 10 : 1000000);
            const QString told = isFull ? readAnother(1) : before;
            QVERIFY2(told.contains(path + ": "), qPrintable(told));
            // What stood there is better than nothing.
            QCOMPARE(QFileInfo(path).size() > 10, isFull);
        }
    }

    void listsStations()
    {
        SeedLinkServer server;
        QVERIFY(server.start());
        // More than fits into one packet.
        for (const std::string code : {"A", "B", "C", "D", "E", "F", "G", "H"})
            server.add(part(("XX." + code + ".00.HHZ").c_str(), 0));
        SeedLinkStations list;
        QVERIFY(list.setSource(server.address() + "?timeout=1"));
        QVERIFY2(list.read(true), list.errorString().c_str());
        QCOMPARE(list.stations().size(), size_t(8));
        const SeedLinkStation &last = list.stations().back();
        QCOMPARE(last.network + last.code + last.name, std::string("XXHStation of tests"));
        QCOMPARE(last.streams.size(), size_t(1));
        QCOMPARE(last.streams[0].location + last.streams[0].channel, std::string("00HHZ"));
        QCOMPARE(last.streams[0].begin, Begin);
        server.setFault(Fault::SilentFromStart);
        QVERIFY(!list.read(false));
        QCOMPARE(list.errorString(), server.address() + ": no answer within 1 s");
    }
};

QTEST_GUILESS_MAIN(TestSeedLink)
#include "tst_seedlink.moc"
