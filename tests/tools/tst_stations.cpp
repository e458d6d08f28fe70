// SPDX-License-Identifier: LGPL-3.0-or-later

#include "client/seedlinkserver.h"
#include "toolrun.h"

#include <QFile>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

namespace {

const QByteArray Stations =
    "<FDSNStationXML xmlns='http://www.fdsn.org/xml/station/1' schemaVersion='1.0'>"
    "<Network code='XX'><Station code='B'><Latitude>1.5</Latitude><Longitude>-2.5</Longitude>"
    "<Channel code='BHZ' locationCode='00' startDate='2021-01-01T00:00:00.123456'>"
    "<Latitude>3</Latitude><Longitude>4</Longitude><Elevation>-5</Elevation><Depth>6</Depth>"
    "<Azimuth>7</Azimuth><Dip>-8</Dip><SampleRate>40</SampleRate><Response>"
    "<InstrumentSensitivity><Value>3.31283E10</Value><InputUnits><Name>M/S</Name></InputUnits>"
    "</InstrumentSensitivity></Response></Channel>"
    "<Channel code='LHZ' locationCode='' endDate='2021-01-01'/></Station></Network>"
    "</FDSNStationXML>";

} // namespace

class TestStations : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { _file = write("stations", Stations); }

    void listsChannels()
    {
        const Run json = run({"stations", "--json", _file});
        QVERIFY2(json.status == 0 && json.errors.isEmpty(), qPrintable(json.errors));
        const QJsonValue null;
        const QJsonObject without{{"id", "XX.B..LHZ"}, {"latitude", 1.5},
                                  {"longitude", -2.5}, {"elevation", null},
                                  {"depth", null},     {"azimuth", null},
                                  {"dip", null},       {"rate", null},
                                  {"start", null},     {"end", "2021-01-01T00:00:00.000000Z"},
                                  {"gain", null},      {"unit", null}};
        const QJsonObject with{{"id", "XX.B.00.BHZ"},
                               {"latitude", 3},
                               {"longitude", 4},
                               {"elevation", -5},
                               {"depth", 6},
                               {"azimuth", 7},
                               {"dip", -8},
                               {"rate", 40},
                               {"end", null},
                               {"start", "2021-01-01T00:00:00.123456Z"},
                               {"gain", 33128300000.0},
                               {"unit", "M/S"}};
        QCOMPARE(json.json(), (QJsonArray{without, with}));

        QCOMPARE(run({"stations", "--csv", _file}).output,
                 QString("id,latitude,longitude,elevation,depth,azimuth,dip,rate,start,end,gain,"
                         "unit\r\n"
                         "XX.B..LHZ,1.5,-2.5,,,,,,,2021-01-01T00:00:00.000000Z,,\r\n"
                         "XX.B.00.BHZ,3,4,-5,6,7,-8,40,2021-01-01T00:00:00.123456Z,,33128300000,"
                         "M/S\r\n"));
        const QStringList table = run({"stations", _file}).output.split('\n');
        QCOMPARE(table.size(), 4);
        QCOMPARE(table[0].indexOf("Start"), table[2].indexOf("2021-01-01T00:00:00.123456Z"));
    }

    void listsWhatALiveServerHas()
    {
        SeedLinkTesting::SeedLinkServer server;
        QVERIFY(server.start());
        const QString url = QString::fromStdString(server.url()) + "?timeout=5";
        const Tellarix::Core::Time begin(2024, 1, 5, 10, 0, 0);
        for (const char *id : {"YY.B..EHZ", "XX.A.10.HHZ"})
            server.add(seedRecord(id, begin));
        const QJsonArray all = run({"stations", "--json", url}).json();
        QCOMPARE(all.size(), 2);
        const QJsonObject first = all[0].toObject();
        QCOMPARE(first["id"].toString(), QString("XX.A.10.HHZ"));
        QVERIFY(first["latitude"].isNull() && first["rate"].isNull());
        QCOMPARE(first["start"].toString(), QString("2024-01-05T10:00:00.000000Z"));
        const Run table = run({"stations", "--streams", "XX.*.1?.*", _file, url});
        QCOMPARE(table.status, 0);
        const QString line = table.output.section('\n', 1);
        QVERIFY2(line.startsWith("XX.A.10.HHZ  ") && line.contains("2024-01-05T10:00:00"),
                 qPrintable(table.output));
        QCOMPARE(line.count('\n'), 1);

        server.setFault(SeedLinkTesting::Fault::RefusesStreams);
        const QJsonArray stations = run({"stations", "--json", "--streams", "*.B..*", url}).json();
        QCOMPARE(stations.size(), 1);
        QCOMPARE(stations[0].toObject()["id"].toString(), QString("YY.B.*.*"));
        server.stop();
        const Run gone = run({"stations", url});
        QCOMPARE(gone.status, 1);
        QVERIFY2(gone.errors.startsWith("tellarix: " + QString::fromStdString(server.address())),
                 qPrintable(gone.errors));
    }

    void selectsByNameAndTime()
    {
        const struct
        {
            QStringList options;
            QStringList ids;
        } rows[] = {
            {{"--streams", "XX.*..LH?"}, {"XX.B..LHZ"}},
            {{"--streams", "YY.*.*.*,XX.B.0?.*"}, {"XX.B.00.BHZ"}},
            {{"--from", "2021-01-01"}, {"XX.B.00.BHZ"}},
            {{"--to", "2021-01-01"}, {"XX.B..LHZ"}},
            {{"--from", "2020-01-01", "--to", "2022-01-01"}, {"XX.B..LHZ", "XX.B.00.BHZ"}},
            {{"--streams", "YY.*.*.*"}, {}},
        };
        for (const auto &row : rows) {
            const Run result = run(QStringList{"stations", "--json", _file} + row.options);
            QCOMPARE(result.status, 0);
            QStringList ids;
            for (const QJsonValue &channel : result.json())
                ids.append(channel["id"].toString());
            QCOMPARE(ids, row.ids);
        }
    }

    void tellsWhatIsWrong()
    {
        const QString broken = write("broken", Stations.left(Stations.size() - 5));
        const Run result = run({"stations", "--json", broken, _file, "/nowhere"});
        QCOMPARE(result.status, 1);
        QVERIFY2(result.errors.contains(broken + ": line 1") && result.errors.contains("/nowhere"),
                 qPrintable(result.errors));
        QCOMPARE(result.json().size(), 2); // nothing of the broken one
        for (const QStringList &arguments :
             {QStringList{"stations"}, QStringList{"stations", "--json", "--csv", _file},
              QStringList{"stations", "--streams", "XX", _file}})
            QCOMPARE(run(arguments).status, 2);
    }

private:
    QString write(const QString &name, const QByteArray &text) const
    {
        QFile file(_folder.filePath(name));
        return file.open(QFile::WriteOnly) && file.write(text) == text.size() ? file.fileName()
                                                                              : QString();
    }

    QTemporaryDir _folder;
    QString _file;
};

QTEST_GUILESS_MAIN(TestStations)
#include "tst_stations.moc"
