// SPDX-License-Identifier: LGPL-3.0-or-later

#include "client/fdsndata.h"

#include "toolrun.h"
#include <tellarix/core/records/record.h>

#include <QDirIterator>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QUrlQuery>
#include <QtTest>

namespace {

constexpr int EventCount = 5012;

/** A page of a table of events, as its words ask for. */
HttpReply eventPage(const HttpAsked &asked)
{
    const QUrlQuery words(QUrl(QString::fromLatin1(asked.target)));
    const int offset = std::max(1, words.queryItemValue("offset").toInt());
    const int limit = words.queryItemValue("limit").toInt();
    QByteArray text("#EventID|Time|Latitude|Longitude|Depth/km|Author|Catalog|Contributor|"
                    "ContributorID|MagType|Magnitude|MagAuthor|EventLocationName\n");
    for (int i = offset; i < offset + limit && i <= EventCount; ++i)
        text += "id" + QByteArray::number(i) + "|2024-01-05T00:00:00|1|2|3|a|||||4.5||Sea\n";
    return HttpReply::Of(200, text);
}

const QByteArray Stations = "#Network|Station|Location|Channel|Latitude|Longitude|Elevation|Depth|"
                            "Azimuth|Dip|SensorDescription|Scale|ScaleFreq|ScaleUnits|SampleRate|"
                            "StartTime|EndTime\n"
                            "XX|A||BHZ|1|2|3|4|5|6||7|1|m/s|20|2020-01-01T00:00:00|\n"
                            "XX|A||BHN|1|2|3|4|5|6||7|1|m/s|20|2020-01-01T00:00:00|\n";

} // namespace

class TestWebServices : public QObject
{
    Q_OBJECT

private slots:
    void importsEventsPageByPage()
    {
        std::atomic<int> number{0};
        HttpServer server([&](const HttpAsked &asked) {
            HttpReply page = eventPage(asked);
            if (++number == 2) { // breaks off once
                page.bytes.chop(10);
                page.then = HttpReply::Close;
            }
            return page;
        });
        const Run result = import(server, "?format=text&minmag=4.5", {"--max-depth", "100"});
        QCOMPARE(result.errors, QString());
        QCOMPARE(result.output,
                 QString("fdsnws+http://%1: 5012 events added, 0 updated\n").arg(server.host()));
        const QVector<HttpAsked> asked = server.asked();
        QCOMPARE(asked.size(), 3);
        QCOMPARE(asked[0].target, QByteArray("/fdsnws/event/1/query?format=text&limit=5000"
                                             "&maxdepth=100&minmagnitude=4.5&orderby=time-asc"));
        QVERIFY(asked[1].target.contains("offset=5001"));
        QCOMPARE(asked[2].target, asked[1].target);
    }

    void asksForBothSidesOfTheDateLine()
    {
        HttpServer server([](const HttpAsked &) { return HttpReply::Of(204); });
        import(server, "/fdsnws/event/1/query?limit=7",
               {"--min-longitude", "170", "--max-longitude", "-170"});
        QCOMPARE(server.asked().size(), 2);
        QCOMPARE(server.asked()[0].target, QByteArray("/fdsnws/event/1/query?limit=7"
                                                      "&maxlongitude=180&minlongitude=170"));
        QCOMPARE(server.asked()[1].target, QByteArray("/fdsnws/event/1/query?limit=7"
                                                      "&maxlongitude=-170&minlongitude=-180"));
    }

    void tellsWhatIsWrong_data()
    {
        QTest::addColumn<HttpReply>("reply");
        QTest::addColumn<QString>("error");
        QTest::newRow("bad request")
            << HttpReply::Of(400, "no such word") << "400 Reason: no such word";
        QTest::newRow("page") << HttpReply::Of(200, "<html><body>Down")
                              << "a text instead of data: Down";
        QTest::newRow("overloaded") << HttpReply::Of(503, "", "Retry-After: 0\r\n") << "503 Reason";
        QTest::newRow("hangs up") << HttpReply{"", HttpReply::Close}
                                  << "connection closed without an answer";
        QTest::newRow("garbage without end")
            << HttpReply{HttpReply::head(200, ""), HttpReply::Repeat, QByteArray(100000, 'x')}
            << "more than 1 MB that are neither XML nor a table";
        QTest::newRow("half a table")
            << HttpReply::CutOff("#EventID|Time|Latitude", 5, "Retry-After: 0\r\n")
            << "broken off after 5 of 22 bytes";
    }

    void tellsWhatIsWrong()
    {
        QFETCH(HttpReply, reply);
        QFETCH(QString, error);
        HttpServer server([&](const HttpAsked &) { return reply; });
        const QString name = "fdsnws+http://" + server.host() + "/base";
        const QString line = QString("tellarix: %1: %2\n").arg(name, error);
        const QString url = QString(name).replace("//", "//user:secret@") + "/?a=b";
        const Run events = import(url, {});
        QCOMPARE(events.status, 1);
        QCOMPARE(events.errors, line);
        const Run stations = run({"stations", url});
        QCOMPARE(stations.status, 1);
        QCOMPARE(stations.errors, line);
    }

    void listsChannels()
    {
        HttpServer server([](const HttpAsked &) { return HttpReply::Of(200, Stations); });
        const QString url = "fdsnws+http://" + server.host();
        const QStringList arguments{"stations", "--json", url};
        QCOMPARE(run(arguments).json().size(), 2);
        QCOMPARE(server.asked()[0].target, QByteArray("/fdsnws/station/1/query?level=channel"));
        const Run result =
            run(arguments + QStringList{"--streams", "XX.A..BHZ,Y?.*.*.*", "--from", "2024-01-05"});
        QCOMPARE(result.json().size(), 1);
        QCOMPARE(result.json()[0].toObject()["id"].toString(), QString("XX.A..BHZ"));
        QCOMPARE(server.asked()[1].body,
                 QByteArray("level=channel\n"
                            "XX A -- BHZ 2024-01-05T00:00:00.000000 2599-12-31T23:59:59\n"
                            "Y? * * * 2024-01-05T00:00:00.000000 2599-12-31T23:59:59\n"));
    }

    void readsRecords()
    {
        FdsnData data;
        data.add("XX.A..BHZ", "2024-01-05T00:00:30Z", 20);
        HttpServer server([&](const HttpAsked &asked) { return data.reply(asked); });
        const QString url = "fdsnws+http://user:secret@" + server.host();
        const QStringList arguments{"records", "--json", url, "--streams", "XX.A..BH?"};
        const Run result =
            run(arguments + QStringList{"--from", "2024-01-05", "--to", "2024-01-05T00:10:00"});
        QCOMPARE(result.status, 0);
        QCOMPARE(result.json().size(), 1);
        QCOMPARE(result.json()[0].toObject()["records"].toInt(), 6);
        const Run without = run(arguments);
        QCOMPARE(without.status, 1);
        QVERIFY2(without.errors.contains("a time window with both ends is needed") &&
                     !without.errors.contains("secret"),
                 qPrintable(without.errors));

        // Also where it is a source within a source, which is kept in full.
        const QTemporaryDir cache;
        const auto encoded = [](const QString &text) {
            return QString::fromLatin1(QUrl::toPercentEncoding(text));
        };
        const QString cached =
            "cached://?folder=" + encoded(cache.path()) + "&source=" +
            encoded("joined://?live=seedlink%3A%2F%2F127.0.0.1%3A9%3Fretry%3D0&past=" +
                    encoded(url));
        run({"records", cached, "--streams", "XX.A..BHZ", "--from", "2024-01-05", "--to",
             "2024-01-05T00:10:00"});
        QDirIterator files(cache.path(), QDir::Files, QDirIterator::Subdirectories);
        QVERIFY(files.hasNext());
        while (files.hasNext()) {
            QFile file(files.next());
            QVERIFY(file.open(QFile::ReadOnly) && !file.readAll().contains("secret"));
        }
    }

private:
    static Run import(const HttpServer &server, const QString &rest, const QStringList &options)
    {
        return import("fdsnws+http://" + server.host() + rest, options);
    }
    static Run import(const QString &url, const QStringList &options)
    {
        const QTemporaryDir folder;
        return run(QStringList{"events", "import", url, "--db",
                               "sqlite://" + folder.filePath("events.sqlite")} +
                   options);
    }
};

QTEST_GUILESS_MAIN(TestWebServices)
#include "tst_webservices.moc"
