// SPDX-License-Identifier: LGPL-3.0-or-later

#include "eventtesting.h"

#include <tellarix/client/io/eventline.h>
#include <tellarix/client/io/eventreader.h>

#include <QtTest>

using namespace Tellarix;
using DataModel::EventPtr;
using EventTesting::write;

namespace {

const QByteArray Head = "<?xml version=\"1.0\"?>\n"
                        "<q:quakeml xmlns=\"http://quakeml.org/xmlns/bed/1.2\" "
                        "xmlns:q=\"http://quakeml.org/xmlns/quakeml/1.2\" xmlns:x=\"urn:x\">\n"
                        "<eventParameters publicID=\"c\">\n";
const QByteArray Tail = "</eventParameters></q:quakeml>";
const QByteArray SoundOrigin = "<time><value>2020-01-02T03:04:05.6Z</value></time>"
                               "<latitude><value>1.5</value></latitude>"
                               "<longitude><value>-2.5</value></longitude>";

struct Reading
{
    bool ok{false};
    QString error;
    QStringList warnings;
    QVector<EventPtr> events;
};

Reading read(QByteArray text)
{
    Reading reading;
    QBuffer buffer(&text);
    buffer.open(QIODevice::ReadOnly);
    IO::EventReadHandler handler;
    handler.take = [&](const EventPtr &event) {
        reading.events.append(event);
        return true;
    };
    handler.warn = [&](const QString &warning) { reading.warnings.append(warning); };
    reading.ok = IO::readEvents(buffer, "file", handler, &reading.error);
    return reading;
}

/** Origins, magnitudes and mechanisms with the preferred ones marked, as a word for each. */
QString solutions(const DataModel::Event &event)
{
    QStringList words;
    for (const auto &origin : event.origins)
        words.append(QString(origin == event.preferredOrigin() ? "*" : "") +
                     origin->publicID.c_str());
    for (const auto &magnitude : event.magnitudes)
        words.append(QString(magnitude == event.preferredMagnitude() ? "*" : "") +
                     magnitude->publicID.c_str());
    return words.join(' ');
}

} // namespace

class TestEventFormats : public QObject
{
    Q_OBJECT

private slots:
    void quakeMLComesBackAsItWas()
    {
        QRandomGenerator random(20200102);
        QVector<EventPtr> events;
        for (int i = 0; i < 300; ++i)
            events.append(EventTesting::randomEvent(random, "event/" + std::to_string(i)));
        const QByteArray text = write("quakeml", events);
        const Reading reading = read(text);
        QVERIFY2(reading.ok, qPrintable(reading.error));
        QCOMPARE(reading.warnings, QStringList());
        QCOMPARE(reading.events.size(), events.size());
        // What is read is written as before, and what could be lost without a trace is the same.
        QCOMPARE(write("quakeml", reading.events), text);
        for (int i = 0; i < events.size(); ++i) {
            const DataModel::Event &event = *reading.events[i];
            QVERIFY(event.preferredOrigin()->time == events[i]->preferredOrigin()->time);
            QVERIFY(event.preferredOrigin()->depth == events[i]->preferredOrigin()->depth);
            QVERIFY(event.descriptions == events[i]->descriptions);
            QCOMPARE(event.focalMechanisms.size(), events[i]->focalMechanisms.size());
            QCOMPARE(solutions(event), solutions(*events[i]));
        }
    }

    void listsHoldThePreferredSolutions()
    {
        QRandomGenerator random(7);
        QVector<EventPtr> events;
        for (int i = 0; i < 100; ++i)
            events.append(EventTesting::randomEvent(random, "event/" + std::to_string(i)));

        const Reading reading = read(write("csv", events));
        QVERIFY2(reading.ok, qPrintable(reading.error));
        const QJsonArray features =
            QJsonDocument::fromJson(write("geojson", events)).object().value("features").toArray();
        QCOMPARE(features.size(), events.size());
        QCOMPARE(reading.events.size(), events.size());
        for (int i = 0; i < events.size(); ++i) {
            QJsonObject expected = IO::EventLine::Of(*events[i]).toJson();
            QCOMPARE(features[i].toObject().value("properties").toObject(), expected);
            if (expected.value("magnitude").isNull())
                expected["magnitudeType"] = QJsonValue();
            QCOMPARE(IO::EventLine::Of(*reading.events[i]).toJson(), expected);
        }
        const QJsonArray position =
            features[0].toObject().value("geometry").toObject().value("coordinates").toArray();
        const DataModel::Origin *origin = events[0]->preferredOrigin();
        QCOMPARE(position[0].toDouble(), origin->longitude.value());
        QCOMPARE(position[1].toDouble(), origin->latitude.value());
    }

    void readsPreferredAndPassesOverTheRest()
    {
        const QByteArray one = "<origin publicID=\"o1\">" + SoundOrigin + "</origin>";
        const QByteArray two = "<origin publicID=\"o2\">" + SoundOrigin +
                               "<evaluationMode>manual</evaluationMode></origin>";
        const QByteArray magnitude =
            "<magnitude publicID=\"m\"><mag><value>5</value></mag></magnitude>";
        const std::tuple<QByteArray, QString, int> rows[] = {
            {one + two + "<preferredOriginID> o1 </preferredOriginID>" + magnitude, "*o1 o2 *m", 0},
            {one + two + magnitude, "o1 *o2 *m", 0}, // none named: by hand first
            {one + "<preferredOriginID>o9</preferredOriginID>", "*o1", 0},
            {"<origin publicID=\"o0\"><latitude><value>1</value></latitude></origin>" + one, "*o1",
             1},
            {QByteArray(one).replace("1.5", "91") + two, "*o2", 1},
            {one + QByteArray(magnitude).replace(">5<", ">big<"), "*o1", 2},
            // Foreign namespaces.
            {"<x:origin publicID=\"no\"><a><b/></a></x:origin>" + one +
                 "<x:preferredOriginID>no</x:preferredOriginID>",
             "*o1", 0},
            {QByteArray(one).replace("o1", ""), "*e/origin/1", 0}};
        for (const auto &[body, expected, warnings] : rows) {
            const Reading reading =
                read(Head + "<event publicID=\"e\">" + body + "</event>" + Tail);
            QVERIFY2(reading.ok, qPrintable(reading.error));
            QCOMPARE(reading.events.size(), 1);
            const DataModel::Event &event = *reading.events[0];
            QCOMPARE(solutions(event), expected);
            QVERIFY2(reading.warnings.size() == warnings, body);
            QCOMPARE(event.preferredOriginID, event.preferredOrigin()->publicID);
        }
    }

    void tellsWhatIsWrong()
    {
        const QByteArray event =
            "<event publicID=\"e\">\n<origin publicID=\"o\">" + SoundOrigin + "</origin></event>";
        const QByteArray table = "time,latitude,longitude,mag\n2020-01-01,1,2,3\n";
        const QByteArray bomb = "<!DOCTYPE q [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;\">]>";
        const std::pair<QByteArray, QString> rows[] = {
            {Head + event + "<event publicID=\"f\"><origin", "line 5, element <event>: "},
            {Head + "<event><origin><time></origin></time></event>" + Tail,
             "line 4, element <time>: "},
            {Head + event + Tail + "<more/>", "line 5"},
            {bomb + Head.mid(22), "document type"},
            {"<html>quakeml</html>", "element <html>: no QuakeML"},
            {Head + "<event><type>" + QByteArray(2 << 20, 'x'), "more than 256 kB"},
            {"hello", "neither QuakeML nor a table"},
            {"", "neither QuakeML nor a table"},
            {table + "2020-01-01,1\n", "line 3: 2 fields instead of 4"},
            {table + "\n\"2020-01-01,1,2,3\n", "line 4: a quoted"},
            {table + "yesterday,1,2,3\n", "line 3: \"yesterday\" is no time"},
            {table + "2020-01-01,-90.5,2,3\n", "\"-90.5\" is no latitude"},
            {"time,latitude,size\n", "line 1: the columns time"}};
        for (const auto &[text, error] : rows) {
            const Reading reading = read(text);
            QVERIFY2(!reading.ok, qPrintable(error));
            QVERIFY2(reading.error.startsWith("file: ") && reading.error.contains(error),
                     qPrintable(reading.error));
        }
    }

    void readsTables()
    {
        const std::pair<QByteArray, QString> rows[] = {
            {"time,latitude,longitude,depth,mag,magType,nst,id,place,type\r\n"
             "2015-12-22T18:45:11.123Z,59.9988,-152.7191,-2.29,3,ml,,ak1,"
             "\"54km S of \"\"Redoubt\"\", Alaska\",quarry blast\r\n",
             "ak1,2015-12-22T18:45:11.123000Z,59.9988,-152.7191,-2.29,3,ml,,,quarry blast,"
             "\"54km S of \"\"Redoubt\"\", Alaska\""},
            // Columns in another order, a byte order mark, the end of a line in a field.
            {"\xEF\xBB\xBFLongitude,LATITUDE,Time,place\n2,1,2020-01-01,\"a\nb\"\n\n",
             "event/2020-01-01T00:00:00.000000Z/1.0000/2.0000,2020-01-01T00:00:00.000000Z,1,2,,,,"
             ",,,\"a\nb\""},
            {"#EventID | Time | Latitude | Longitude | Depth/km | Author | Catalog | "
             "Contributor | ContributorID | MagType | Magnitude | MagAuthor | "
             "EventLocationName | EventType\n"
             "4 | 2010-02-27T06:34:11.5 | -36.122 | -72.898 | 22.9 | us|||| Mw | 8.8 | us "
             "| Off the coast, Chile |\n",
             "4,2010-02-27T06:34:11.500000Z,-36.122,-72.898,22.9,8.8,Mw,,,,"
             "\"Off the coast, Chile\""}};
        for (const auto &[text, expected] : rows) {
            const Reading reading = read(text);
            QVERIFY2(reading.ok, qPrintable(reading.error));
            QCOMPARE(reading.events.size(), 1);
            QCOMPARE(QString(IO::EventLine::Of(*reading.events[0]).toCsv()), expected);
        }
    }
};

QTEST_GUILESS_MAIN(TestEventFormats)
#include "tst_eventformats.moc"
