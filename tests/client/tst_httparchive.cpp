// SPDX-License-Identifier: LGPL-3.0-or-later

#include "httpserver.h"
#include "rowname.h"

#include <tellarix/client/io/recordstream.h>
#include <tellarix/client/remote/httparchivelisting_p.h>
#include <tellarix/core/records/formats/miniseedwriter.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/records/typedarray.h>

#include <QtTest>

#include <mutex>
#include <random>

using namespace Tellarix;
using Tellarix::IO::RecordStream;
using Tellarix::IO::RecordStreamPtr;

namespace {
Core::Time at(double hours)
{
    return Core::Time(2024, 1, 5) + Core::TimeSpan(hours * 3600);
}

/** Hours of a stream at 20 Hz in records of 512 bytes. */
QByteArray hours(const char *id, double begin, double end)
{
    std::mt19937 random(7);
    std::vector<int> samples(static_cast<size_t>((end - begin) * 72000));
    for (int &sample : samples)
        sample = static_cast<int>(random() % 10000);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    Formats::MiniSeedWriter(&buffer).write(
        Record(StreamCodes::FromID(id), at(begin), 20,
               new IntArray(static_cast<int>(samples.size()), samples.data())));
    return bytes;
}

/** How a server deals with the files below its root. */
struct Manner
{
    bool hasRanges{true};
    bool tellsLength{true};
    int cutOffs{0};   /**< answers of more than 100 KB that end in the middle */
    int overloads{0}; /**< answers 503 in the beginning */
    int answers{-1};  /**< before it goes away, if that isn't negative */
    int absences{0};  /**< requests that it then hangs up on */
    bool isPage{false};
    QByteArray lists; /**< "links", "objects", "buckets" or nothing */
};

} // namespace

class TestHttpArchive : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        const QByteArray whole = hours("XX.A..BHZ", 0, 24);
        QVERIFY(whole.size() > 2000000);
        write("2024/XX/A/BHZ.D/XX.A..BHZ.D.2024.005", whole);
        write("2024/XX/A/BHZ.D/XX.A..BHZ.D.2024.004", hours("XX.A..BHZ", -8, 0.001));
        write("2024/XX/A/BHZ.D/XX.A..BHZ.D.2024.007", QByteArray());
        write("2024/XX/A/BHN.D/XX.A..BHN.D.2024.005", hours("XX.A..BHN", 3, 5));
        write("2024/XX/A/BHN.D/XX.A.10.BHN.D.2024.005", hours("XX.A.10.BHN", 3, 5));
        write("2023/XX/A/BHN.D/XX.A..BHN.D.2023.365", hours("XX.A..BHN", -125, -124));
        // What was missing has been appended later, or stands in front.
        write("2024/XX/B/BHZ.D/XX.B..BHZ.D.2024.005",
              hours("XX.B..BHZ", 0, 10) + hours("XX.B..BHZ", 11, 24) + hours("XX.B..BHZ", 10, 11));
        write("2024/XX/C/BHZ.D/XX.C..BHZ.D.2024.005",
              hours("XX.C..BHZ", 4, 5) + hours("XX.C..BHZ", 0, 4) + hours("XX.C..BHZ", 5, 24));
        write("2024/XX/D/BHZ.D/XX.D..BHZ.D.2024.005",
              whole.left(whole.size() / 1024 * 512) + "damage" + hours("XX.A..BHZ", 12, 14));
    }

    void init()
    {
        setManner(Manner());
        _messages.clear();
        _sent = 0;
        _server = std::make_unique<HttpServer>([this](const HttpAsked &asked) {
            const std::lock_guard<std::mutex> lock(_mannerMutex);
            const HttpReply reply = answer(asked);
            _sent = _sent + reply.bytes.size();
            return reply;
        });
    }

    void readsWhatTheWindowNeeds()
    {
        Manner whole;
        whole.hasRanges = false;
        Manner cut;
        cut.cutOffs = 2;
        Manner cutWhole = whole;
        cutWhole.cutOffs = 1;
        Manner cutEndless = cutWhole;
        cutEndless.tellsLength = false;
        Manner overload;
        overload.overloads = 2;
        const Manner good;
        const QStringList again({"broken off, asked for the rest"});
        const QStringList inRecord({"broken off in a record, asked for the rest"});
        // Station, hours, at most so much of the file of the day, and what is told.
        const std::tuple<const char *, const char *, double, double, double, Manner, QStringList>
            rows[] = {{"an hour", "A", 12, 13, 0.25, good, {}},
                      {"midnight", "A", -0.5, 0.5, 0.25, good, {}},
                      {"last minute", "A", 23.98, 24, 0.2, good, {}},
                      {"day", "A", 0, 24, 1.1, good, {}},
                      {"no ranges", "A", 12, 13, 1.4, whole, {}},
                      {"appended late", "B", 10.2, 10.4, 1.1, good, {}},
                      {"appended late, window behind", "B", 12, 13, 1.2, good, {}},
                      {"disorder in front", "C", 4.2, 4.4, 1.5, good, {}},
                      {"damaged", "D", 13, 13.5, 1.5, good, {}},
                      {"cut off", "A", 0, 24, 1.6, cut, again + again},
                      {"cut off without ranges", "A", 0, 24, 2.4, cutWhole, again},
                      {"cut off without a length", "A", 0, 24, 2.4, cutEndless, inRecord},
                      {"overloaded for a while", "A", 12, 13, 0.5, overload, {}},
                      {"no file", "A", 28, 30, 1.4, good, {}},
                      {"empty file", "A", 48, 72, 0.01, good, {}},
                      {"no station", "E", 0, 24, 0.01, good, {}}};
        for (const auto &[name, station, begin, end, most, manner, messages] : rows) {
            const RowName shown(name);
            init();
            const Request request{"XX", station, "", "BHZ", begin, end};
            const QStringList expected = sorted(read(local(), {request}));
            _messages.clear();
            setManner(manner);
            // The order of disordered files is another.
            const QStringList records = sorted(read(remote("?files=1"), {request}));
            QCOMPARE(records.size(), expected.size());
            QCOMPARE(records, expected);
            const double size = double(_files["2024/XX/A/BHZ.D/XX.A..BHZ.D.2024.005"].size());
            QVERIFY2(_sent < most * size + 20000, QByteArray::number(_sent / size));
            if (station != QString("D"))
                QCOMPARE(withoutNumbers(_messages), messages);
        }
    }

    void waitsForServerThatGoesAway()
    {
        const std::tuple<const char *, const char *, int> rows[] = {
            {"by name", "A", 2}, {"listing", "*", 2}, {"behind the lists", "*", 8}};
        for (const auto &[name, station, answers] : rows) {
            const RowName shown(name);
            init();
            const Request request{"XX", station, "", "BHZ", -1, 20};
            const QStringList expected = sorted(read(local(), {request}));
            _messages.clear();
            Manner manner;
            manner.lists = "links";
            manner.answers = answers;
            manner.absences = 8;
            setManner(manner);
            QCOMPARE(sorted(read(remote("?files=1&pause=0.01"), {request})), expected);
            const QStringList told = _messages.filter(_server->host() + ": ");
            QCOMPARE(told.size(), 2);
            QVERIFY(told[0].endsWith("; waiting for the server"));
            QVERIFY(told[1].contains(": is there again after "));
        }
    }

    void listsFolders()
    {
        const std::pair<const char *, QByteArray> rows[] = {
            {"links", QByteArray("links")},
            {"object store", QByteArray("objects")},
            {"bucket in the path", QByteArray("buckets")}};
        for (const auto &[name, lists] : rows) {
            const RowName shown(name);
            init();
            Manner manner;
            manner.lists = lists;
            setManner(manner);
            const std::vector<std::vector<Request>> rows = {
                {{"XX", "A", "*", "BH?", 3, 4}},
                {{"*", "*", "*", "*", 3.5, 3.6}},
                {{"XX", "A", "", "BHN", -200, 4}, {"XX", "?", "", "BHZ", 20, 20.2}},
                {{"XX", "A", "10", "BHN", 0, NoTime}},
                {{"YY", "*", "*", "*", 3, 4}},
            };
            for (const auto &requests : rows) {
                const QStringList expected = read(local(), requests);
                _messages.clear();
                QStringList records = read(remote(), requests);
                QCOMPARE(sorted(records), sorted(expected));
                QCOMPARE(records.isEmpty(), requests[0].network == std::string("YY"));
            }
        }
    }

    void parsesLists()
    {
        const std::tuple<const char *, QByteArray, QString> rows[] = {
            {"links of all kinds",
             QByteArray("<html><a href=\"../\">up</a><a href='?C=N'>Name</a><A class=x HREF=\"a/\">"
                        "</A><a href=\"/tree/b%20c\">b</a><a href=\"http://other/tree/d\">d</a>"
                        "<a href=\"/e\">e</a><a href=\"f/g\">g</a><a href=\"./h&amp;i\">"),
             "a | b c h&i"},
            {"no link", QByteArray("<html>nothing"), "none"},
            {"objects",
             QByteArray("<?xml version=\"1.0\"?><ListBucketResult xmlns=\"x\"><Prefix>tree/"
                        "</Prefix><Contents><Key>tree/b</Key><Size>3</Size></Contents><Contents>"
                        "<Key>else/c</Key></Contents><CommonPrefixes><Prefix>tree/a/</Prefix>"
                        "</CommonPrefixes></ListBucketResult>"),
             "a | b"},
            {"broken off", QByteArray("<ListBucketResult><Contents><Key>tree/b</Key>"), "none"},
            {"other XML", QByteArray("<Error><Key>tree/b</Key></Error>"), "none"}};
        for (const auto &[row, body, names] : rows) {
            const RowName shown(row);
            init();
            IO::HttpArchiveNames found;
            const bool isList = body.contains("<html")
                                    ? IO::parseLinks(body, QUrl("http://host/tree/"), found)
                                    : IO::parseObjects(body, "tree/", found);
            QStringList text;
            for (const std::string &name : found.folders)
                text << QString::fromStdString(name);
            text << "|";
            for (const std::string &name : found.files)
                text << QString::fromStdString(name);
            QCOMPARE(isList ? text.join(' ') : QString("none"), names);
        }
    }

    void tellsWhatFails()
    {
        const Request byName{"XX", "A", "", "BHZ", -20, 20};
        const RecordStreamPtr stream = made(remote(), {{"XX", "*", "", "BHZ", 0, 24}});
        QVERIFY(!stream->open());
        QVERIFY2(stream->errorString().find("which wildcards and open windows need") !=
                     std::string::npos,
                 stream->errorString().c_str());

        Manner manner;
        manner.isPage = true;
        setManner(manner);
        QCOMPARE(read(remote(), {byName}), QStringList());
        QCOMPARE(_messages.size(), 2);
        QVERIFY2(_messages[0].endsWith("a page in its place: Sorry: maintenance"),
                 qPrintable(_messages[0]));
        QVERIFY2(_messages[1].endsWith("2 further files could not be read, as others before"),
                 qPrintable(_messages[1]));

        _messages.clear();
        const std::string url = remote();
        _server.reset();
        QCOMPARE(read(url, {byName}), QStringList());
        QCOMPARE(_messages.size(), 2);
        QVERIFY2(_messages[1].endsWith("does not answer; 2 further files are left out"),
                 qPrintable(_messages[1]));
    }

private:
    static constexpr double NoTime = 1e9;

    struct Request
    {
        std::string network;
        std::string station;
        std::string location;
        std::string channel;
        double begin;
        double end;
    };

    void write(const QString &name, const QByteArray &bytes)
    {
        _files[name] = bytes;
        const QString path = _folder.filePath(name);
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), qint64(bytes.size()));
    }

    void setManner(const Manner &manner)
    {
        const std::lock_guard<std::mutex> lock(_mannerMutex);
        _manner = manner;
    }

    HttpReply answer(const HttpAsked &asked)
    {
        if (_manner.isPage)
            return HttpReply::Of(200, "<html><title>Sorry</title>maintenance",
                                 "Content-Type: text/html\r\n");
        if (_manner.overloads-- > 0)
            return HttpReply::Of(503);
        if (_manner.answers >= 0 && --_manner.answers < 0 && _manner.absences-- > 0) {
            _manner.answers = 0;
            return {"", HttpReply::Close};
        }
        const QUrl url = QUrl::fromEncoded(asked.target);
        if (url.hasQuery() || url.path().endsWith('/'))
            return listOf(url);
        const QString name = url.path().mid(int(qstrlen("/tree/")));
        return _files.contains(name) ? fileOf(_files[name], asked) : HttpReply::Of(404);
    }

    HttpReply fileOf(const QByteArray &bytes, const HttpAsked &asked)
    {
        const QList<QByteArray> range = asked.header("Range").mid(6).split('-');
        QByteArray body = bytes;
        int status = 200;
        QByteArray headers;
        if (_manner.hasRanges && range.size() == 2) {
            const int first = range[0].toInt();
            if (first >= bytes.size())
                return HttpReply::Of(416);
            body = bytes.mid(first, range[1].toInt() - first + 1);
            status = 206;
            headers = "Content-Range: bytes " + range[0] + '-' +
                      QByteArray::number(first + body.size() - 1) + '/' +
                      QByteArray::number(bytes.size()) + "\r\n";
        }
        HttpReply reply = HttpReply::Of(status, body, headers);
        if (!_manner.tellsLength)
            reply = {HttpReply::head(status, headers) + body, HttpReply::Close};
        if (body.size() > 100000 && _manner.cutOffs-- > 0) {
            reply.bytes.chop(body.size() / 2 + 100);
            reply.then = HttpReply::Close;
        }
        return reply;
    }

    /** What lies in a folder, folders with a slash. */
    QStringList namesIn(const QString &folder) const
    {
        QStringList names;
        for (const QString &name : _files.keys()) {
            const QString rest = name.mid(folder.size());
            if (name.startsWith(folder))
                names << rest.left(rest.indexOf('/') < 0 ? rest.size() : rest.indexOf('/') + 1);
        }
        names.removeDuplicates();
        return names;
    }

    HttpReply listOf(const QUrl &url) const
    {
        if (_manner.lists == "links" && !url.hasQuery()) {
            QByteArray page = "<html><a href=\"../\">up</a>";
            for (const QString &name : namesIn(url.path().mid(int(qstrlen("/tree/")))))
                page += "<a href=\"" + name.toUtf8() + "\">" + name.toUtf8() + "</a>";
            return HttpReply::Of(200, page, "Content-Type: text/html; charset=utf-8\r\n");
        }
        const QUrlQuery query(url);
        const QString top = _manner.lists == "buckets" ? "" : "tree/";
        if (_manner.lists.isEmpty() || !url.hasQuery() ||
            url.path() != (_manner.lists == "buckets" ? "/tree/" : "/"))
            return HttpReply::Of(404);
        const QString prefix = query.queryItemValue("prefix", QUrl::FullyDecoded);
        const QStringList names = namesIn(prefix.mid(top.size()));
        // One at a time.
        const int index = query.queryItemValue("continuation-token").toInt();
        QByteArray list = "<ListBucketResult><Prefix>" + prefix.toUtf8() + "</Prefix>";
        if (index < names.size())
            list += "<Contents><Key>" + (prefix + names[index]).toUtf8() + "</Key></Contents>";
        if (index + 1 < names.size())
            list += "<NextContinuationToken>" + QByteArray::number(index + 1) +
                    "</NextContinuationToken>";
        return HttpReply::Of(200, list + "</ListBucketResult>", "Content-Type: text/xml\r\n");
    }

    std::string local() const { return "archive://" + _folder.path().toStdString(); }
    std::string remote(const char *options = "") const
    {
        return "archive+http://" + _server->host().toStdString() + "/tree/" + options;
    }

    RecordStreamPtr made(const std::string &url, const std::vector<Request> &requests)
    {
        std::string error;
        const RecordStreamPtr stream = RecordStream::Create(url, &error);
        if (!stream)
            qFatal("%s", error.c_str());
        for (const Request &request : requests) {
            const Core::Time end = request.end == NoTime ? Core::Time() : at(request.end);
            stream->addStream(request.network, request.station, request.location, request.channel,
                              {at(request.begin), end});
        }
        stream->setMessageHandler([this](const IO::StreamMessage &message) {
            _messages << QString::fromStdString(message.text());
        });
        return stream;
    }

    QStringList read(const std::string &url, const std::vector<Request> &requests)
    {
        const RecordStreamPtr stream = made(url, requests);
        QStringList records;
        if (!stream->open())
            records << QString::fromStdString(stream->errorString());
        while (const RecordPtr record = stream->next())
            records << QString::fromStdString(record->streamID() + ' ' + record->startTime().iso() +
                                              ' ' + std::to_string(record->sampleCount()));
        return records;
    }

    static QStringList sorted(QStringList list)
    {
        list.sort();
        return list;
    }

    static QStringList withoutNumbers(const QStringList &messages)
    {
        QStringList result;
        for (const QString &message : messages)
            result << message.mid(message.indexOf("broken off"))
                          .remove(QRegularExpression(" after [0-9]+ of [0-9]+ bytes"));
        return result;
    }

    QTemporaryDir _folder;
    QMap<QString, QByteArray> _files;
    std::mutex _mannerMutex;
    Manner _manner; /**< the server asks for it in its thread */
    std::atomic<double> _sent{0};
    QStringList _messages;
    std::unique_ptr<HttpServer> _server;
};

QTEST_GUILESS_MAIN(TestHttpArchive)
#include "tst_httparchive.moc"
