// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench/bench.h"
#include "bench/selection.h"
#include "bench/stations.h"
#include "bench/task.h"
#include "openwindow.h"
#include "spectrograms/spectrograms.h"
#include "waveforms/rowfilters.h"
#include "waveforms/rowunits.h"

#include <tellarix/core/datamodel/station.h>
#include <tellarix/core/math/filterparser.h>

using namespace WaveformTesting;
using namespace Workbench;

namespace {

const QByteArray Unit = "<InputUnits><Name>M/S</Name></InputUnits>";

/** A channel of some epoch, given as attributes. */
QByteArray channel(const QByteArray &epoch, const QByteArray &gain)
{
    return "<Channel code='HHZ' " + epoch + "><Response><InstrumentSensitivity><Value>" + gain +
           "</Value>" + Unit + "</InstrumentSensitivity></Response></Channel>";
}

/** A file of the station XX.AAA. */
QByteArray stationXML(const QByteArray &latitude, const QByteArray &channels)
{
    return "<FDSNStationXML xmlns='http://www.fdsn.org/xml/station/1' schemaVersion='1.1'>"
           "<Network code='XX'><Station code='AAA'><Latitude>" +
           latitude + "</Latitude><Longitude>9</Longitude>" + channels +
           "</Station></Network></FDSNStationXML>";
}

DataModel::NetworkPtr networkOf(const char *station, double latitude, const Core::Time &start)
{
    DataModel::NetworkPtr network(new DataModel::Network("XX"));
    auto *child = new DataModel::Station(station);
    child->setStart(start);
    child->setCoordinates({latitude, 9, 0});
    network->add(child);
    return network;
}

} // namespace

class TestStations : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qputenv("XDG_CONFIG_HOME", _folder.path().toLocal8Bit());
        _waveforms = writeRecords(path("some.mseed"), {sawTooth("XX.AAA..HHZ", 0, 20, 6000),
                                                       sawTooth("XX.BBB..HHZ", 0, 20, 6000)});
        QVERIFY(!_waveforms.isEmpty());
    }

    void givesRowsDistancesAndUnits()
    {
        OpenWindow desk({_waveforms});
        EventFacts event;
        event.originTime = Start;
        event.longitude = 9;
        desk.window.bench()->selection()->setEvent(event);
        const QString file =
            writeText(path("good.xml"), stationXML("1", channel("startDate='2020-01-01'", "2E8")));
        QVERIFY(desk.window.open({file}));
        QTRY_COMPARE(desk.row(0)->recordUnit(0), QString("m/s"));
        QVERIFY(desk.row(0)->areScaledValuesShown());
        QCOMPARE(*desk.row(0)->recordScale(0), 1 / 2E8);
        const QString label = desk.waveforms->view()->itemAt(0)->labelText();
        QVERIFY2(label.contains("110.6 km") && label.contains(QString::fromUtf8(" 0°")),
                 qPrintable(label));
        QVERIFY(!desk.row(1)->recordScale(0) && desk.row(1)->recordUnit(0).isEmpty());

        QMetaObject::invokeMethod(&desk.window, "closeAll");
        QVERIFY(desk.window.bench()->stations()->all().isEmpty());
    }

    void leavesAllAsItIsForBrokenFiles()
    {
        OpenWindow desk({_waveforms});
        const Stations *stations = desk.window.bench()->stations();
        QVERIFY(desk.window.open({writeText(path("a.xml"), stationXML("1", ""))}));
        QTRY_COMPARE(stations->all().size(), 1);
        QSignalSpy changed(stations, SIGNAL(changed()));
        QSignalSpy told(desk.window.bench(), SIGNAL(problemsTold(QStringList)));
        const QString broken = writeText(path("b.xml"), stationXML("2", "").chopped(20));
        const QString other = writeText(path("c.xml"), stationXML("3", ""));
        QVERIFY(desk.window.open({broken}));
        QTRY_VERIFY(desk.isIdle());
        QCOMPARE(changed.count(), 0);
        QCOMPARE(told.count(), 1);
        QVERIFY(told[0][0].toStringList()[0].startsWith(broken + ": line 1"));

        // One is read after the other, and one that is cancelled takes the rest along.
        desk.window.open({broken, other});
        QTRY_COMPARE(stations->find("XX.AAA")->latitude, 3.0);
        desk.window.open({path("a.xml"), other});
        desk.window.bench()->tasks()->running().first()->cancel();
        QTRY_VERIFY(desk.isIdle());
        QCOMPARE(changed.count(), 1);
    }

    void knowsWhereStationsStoodWhen()
    {
        Stations stations;
        QSignalSpy changed(&stations, SIGNAL(changed()));
        const auto latitude = [&](const Core::Time &time) {
            return stations.find("XX.A", time)->latitude;
        };
        const Core::Time later = Start + Core::TimeSpan(1000.0);
        stations.setSource("one", {networkOf("A", 1, Start), networkOf("A", 2, later)});
        QCOMPARE(latitude(Start), 1.0);
        QCOMPARE(latitude(later), 2.0);
        QCOMPARE(latitude(Core::Time(2000, 1, 1)), 2.0); // nothing is known of then
        stations.setSource("two", {networkOf("B", 3, Start)});
        stations.setSource("one", {networkOf("A", 4, Start)});
        QCOMPARE(latitude(later), 4.0);
        QCOMPARE(stations.all().size(), 2);
        stations.setSource("two", {});
        stations.setSource("three", {});
        QCOMPARE(stations.all().keys(), QStringList("XX.A"));
        QCOMPARE(changed.count(), 4);
    }

    void takesUnitsOfOneGain_data()
    {
        QTest::addColumn<QByteArray>("channels");
        QTest::addColumn<double>("scale"); // 0 for none
        QTest::newRow("one") << channel("", "4") << 0.25;
        QTest::newRow("not yet") << channel("startDate='2024-01-05T10:12'", "4") << 0.0;
        QTest::newRow("another later")
            << channel("", "4") + channel("startDate='2024-01-05T10:12'", "5") << 0.0;
        QTest::newRow("the same later")
            << channel("", "4") + channel("startDate='2024-01-05T10:12'", "4") << 0.25;
        QTest::newRow("another behind the data")
            << channel("", "4") + channel("startDate='2024-01-06'", "5") << 0.25;
        QTest::newRow("another within a gap")
            << channel("", "4") +
                   channel("startDate='2024-01-05T10:12:10' endDate='2024-01-05T10:12:20'", "5")
            << 0.25;
        QTest::newRow("reversed polarity") << channel("", "-4") << 0.0;
        QTest::newRow("unknown") << channel("", "") << 0.0;
    }
    void takesUnitsOfOneGain()
    {
        QFETCH(QByteArray, channels);
        RingBuffer records(-1);
        for (const double start : {0, 100})
            records.feed(sawTooth("XX.AAA..HHZ", start, 20, 1000).get());
        const QString file = writeText(path("gains.xml"), stationXML("1", channels));
        const DataModel::Inventory inventory(IO::readInventoryFile(file).networks);
        const auto unit = unitOf(records, inventory);
        QTEST(unit ? unit->scale : 0, "scale");
    }

    void namesUnits()
    {
        const struct
        {
            const char *name, *filter, *text; /**< null for none */
        } rows[] = {
            {"M/S", "", "m/s"},
            {"M/S**2", "highpass(1)", "m/s²"},
            {"NM/S", "integrate", "nm"},
            {"M/S**2", "integrate | integrate", "m"},
            {"m/s", "differentiate", "m/s²"},
            {"m", "differentiate | bandpass(1, 2) | integrate", "m"},
            {"Pa", "differentiate | differentiate", "Pa/s^2"},
            {"FURLONG", "", "FURLONG"},
            {"m/s", "bandpass(1, 2) | stalta(1, 60)", nullptr},
        };
        for (const auto &row : rows) {
            Math::Filtering::FilterDefinition filter;
            QVERIFY(Math::Filtering::parseFilterDefinition(row.filter, filter));
            const auto unit = unitBehind(filter, {1, unitText(row.name)});
            QCOMPARE(unit.has_value(), row.text != nullptr);
            QCOMPARE(unit ? unit->text : QString(), QString::fromUtf8(row.text));
        }
    }

    void unitsFollowTheFilterAndReachSpectrograms()
    {
        OpenWindow desk({_waveforms});
        auto *spectrograms = desk.window.findChild<Spectrograms *>();
        spectrograms->setAllShown(true);
        QTRY_VERIFY(desk.waveforms->isVisible() && spectrograms->currentRange().second > 0);
        QTRY_VERIFY(!spectrograms->isBusy());
        const double inCounts = spectrograms->currentRange().second;
        desk.window.open({writeText(path("gain.xml"), stationXML("1", channel("", "1E6")))});
        QTRY_COMPARE(desk.row(0)->recordUnit(0), QString("m/s"));
        QCOMPARE(spectrograms->currentRange().second, inCounts * 1E-6);

        desk.waveforms->view()->setFilterEnabled(true);
        desk.waveforms->filters()->setFilter("integrate");
        QCOMPARE(desk.row(0)->recordUnit(0), QString("m"));
        desk.waveforms->filters()->setFilter("stalta(1, 10)");
        QVERIFY(!desk.row(0)->recordScale(0));
        desk.waveforms->filters()->setFilter("");
        QCOMPARE(desk.row(0)->recordUnit(0), QString("m/s"));
    }

private:
    QString path(const QString &name) const { return _folder.filePath(name); }

    QTemporaryDir _folder;
    QString _waveforms;
};

QTEST_MAIN(TestStations)
#include "tst_stations.moc"
