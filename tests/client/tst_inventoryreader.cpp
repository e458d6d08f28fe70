// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/channelsummary.h>
#include <tellarix/client/io/inventoryreader.h>
#include <tellarix/client/io/stationxmlwriter.h>
#include <tellarix/core/datamodel/inventory.h>
#include <tellarix/core/datamodel/station.h>
#include <tellarix/core/datamodel/stream.h>

#include <QtTest>

#include <tuple>

using namespace Tellarix;
using DataModel::NetworkPtr;

namespace {

const QByteArray Root = "<?xml version='1.0'?>\n<FDSNStationXML schemaVersion='1.1' "
                        "xmlns='http://www.fdsn.org/xml/station/1' xmlns:x='urn:x'>\n";
const QByteArray Place = "<Latitude unit='DEGREES'>1.5</Latitude><Longitude>-2.5</Longitude>"
                         "<Elevation>300</Elevation>";

/** A file with one station, which has a place, and these channels. */
QByteArray stationXML(const QByteArray &channels)
{
    return Root + "<Network code='XX'><Station code='A'>" + Place +
           "<Site><Name>Here</Name></Site>" + channels + "</Station></Network></FDSNStationXML>";
}

QByteArray response(const QByteArray &sensitivity)
{
    return "<Response><InstrumentSensitivity>" + sensitivity +
           "<InputUnits><Name>M/S</Name></InputUnits></InstrumentSensitivity>"
           "<Stage number='1'><StageGain><Value>7</Value></StageGain></Stage></Response>";
}

struct Reading
{
    bool ok{false};
    QString error;
    QStringList warnings;
    std::vector<NetworkPtr> networks;

    /** All channels in the form of a list, with blanks between them. */
    QByteArray list() const
    {
        QByteArray text;
        for (const DataModel::Stream *stream : DataModel::Inventory(networks).streams())
            text += IO::ChannelSummary::Of(*stream).toCsv() + ' ';
        return text.trimmed();
    }
};

Reading read(QByteArray text, int tellings = -1)
{
    Reading reading;
    QBuffer buffer(&text);
    buffer.open(QIODevice::ReadOnly);
    IO::InventoryReadHandler handler;
    handler.progress = [&](qint64, qint64) { return tellings-- != 0; };
    handler.warn = [&](const QString &warning) { reading.warnings.append(warning); };
    reading.ok = IO::readInventory(buffer, "file", &reading.networks, handler, &reading.error);
    return reading;
}

} // namespace

class TestInventoryReader : public QObject
{
    Q_OBJECT

private slots:
    void readsChannels()
    {
        const QByteArray atStation = "1.5,-2.5,300,,,,,";
        const std::tuple<QByteArray, QByteArray, QString> rows[] = {
            {"<Channel code='BHZ' locationCode='10' startDate='2020-01-02T03:04:05' "
             "endDate='2021-01-01T01:00:00+01:00'><Latitude>3</Latitude>"
             "<Longitude>4</Longitude><Elevation>5.5</Elevation><Depth>7</Depth>"
             "<Azimuth>90</Azimuth><Dip>-90</Dip><SampleRate>40</SampleRate>" +
                 response("<Value>2E8</Value><Frequency>1</Frequency>") + "</Channel>",
             "XX.A.10.BHZ,3,4,5.5,7,90,-90,40,2020-01-02T03:04:05.000000Z,"
             "2021-01-01T00:00:00.000000Z,2e+08,M/S",
             ""},
            {"<Channel code='BHZ' locationCode='  '/>", "XX.A..BHZ," + atStation + ",,,", ""},
            // A third of a hertz, and a stream of messages.
            {"<Channel code='LOG'><SampleRate>0</SampleRate></Channel>"
             "<Channel code='VHZ'><SampleRate>0.33333</SampleRate><SampleRateRatio>"
             "<NumberSamples>1</NumberSamples><NumberSeconds>3</NumberSeconds>"
             "</SampleRateRatio></Channel>",
             "XX.A..LOG,1.5,-2.5,300,,,,0,,,, "
             "XX.A..VHZ,1.5,-2.5,300,,,,0.3333333333333333,,,,",
             ""},
            // A unit without a gain, and another namespace.
            {"<Channel code='LKS'><x:Depth>8</x:Depth>" + response("") + "</Channel>",
             "XX.A..LKS," + atStation + ",,,M/S", ""},
            {"<Channel code='BHZ'>" +
                 response("<Value>7</Value><OutputUnits><Name>V</Name></OutputUnits>") +
                 "</Channel>",
             "XX.A..BHZ," + atStation + ",,,M/S",
             "line 3, element <InstrumentSensitivity>: a gain in \"V\" instead of counts"},
            // Repeated epochs, out of order.
            {"<Channel code='BHZ' startDate='2021-01-01'/>"
             "<Channel code='BHZ' startDate='2020-01-01'/>"
             "<Channel code='BHZ' startDate='2021-01-01'/>",
             "XX.A..BHZ," + atStation + "2020-01-01T00:00:00.000000Z,,, XX.A..BHZ," + atStation +
                 "2021-01-01T00:00:00.000000Z,,, XX.A..BHZ," + atStation +
                 "2021-01-01T00:00:00.000000Z,,,",
             ""},
            {"<Channel code='BHZ'><Latitude>91</Latitude><Longitude>0</Longitude>"
             "<Depth>deep</Depth></Channel>",
             "XX.A..BHZ," + atStation + ",,,", "\"deep\" is no number"},
            {"<Channel><Depth>1</Depth></Channel><Channel code='BHZ'/>",
             "XX.A..BHZ," + atStation + ",,,", "element <Channel>: has no code"},
        };
        for (const auto &[channels, list, warning] : rows) {
            const Reading reading = read(stationXML(channels));
            QVERIFY2(reading.ok, qPrintable(reading.error));
            QCOMPARE(reading.list(), list);
            const QString told = reading.warnings.join(' ');
            QVERIFY2(told.isEmpty() == warning.isEmpty() && told.contains(warning),
                     qPrintable(told));
        }
    }

    void readsTables()
    {
        const QByteArray channels =
            "#Network | Station | location | Channel | Latitude | Longitude | Elevation | Depth | "
            "Azimuth | Dip | SensorDescription | Scale | ScaleFreq | ScaleUnits | SampleRate | "
            "StartTime | EndTime\n";
        const QByteArray stations =
            "#Network|Station|Latitude|Longitude|Elevation|SiteName|StartTime|EndTime\r\n"
            "XX|A|1.5|-2.5|300|Here|2020-01-01T00:00:00|\r\n";
        const std::tuple<QByteArray, QByteArray, double> rows[] = {
            {channels + "XX|A|10|BHZ|3|4|5.5|7|90|-90|STS-2|2E8|1|M/S|40|"
                        "2020-01-02T03:04:05|2021-01-01T00:00:00\n"
                        "XX|A|--|LOG||||||||||||2020-01-02T00:00:00|\n",
             "XX.A..LOG,3,4,5.5,,,,,2020-01-02T00:00:00.000000Z,,, XX.A.10.BHZ,3,4,5.5,7,"
             "90,-90,40,2020-01-02T03:04:05.000000Z,2021-01-01T00:00:00.000000Z,2e+08,M/S",
             3},
            {stations, "", 1.5},
            {stations + channels + "XX|B||BHZ|8|9|||||||||||\n", "XX.B..BHZ,8,9,,,,,,,,,", 1.5}};
        for (const auto &[text, list, latitude] : rows) {
            const Reading reading = read(text);
            QVERIFY2(reading.ok, qPrintable(reading.error));
            QCOMPARE(reading.list(), list);
            const DataModel::Inventory inventory(reading.networks);
            QCOMPARE(inventory.coordinates("XX.A", Core::Time(2020, 6, 1)).latitude, latitude);
        }
    }

    void refusesBrokenFiles()
    {
        const QByteArray whole = stationXML("<Channel code='BHZ'/>");
        const QByteArray nested =
            QByteArray("<a>").repeated(500) + QByteArray("</a>").repeated(500);
        const QByteArray endless(1 << 20, 'x');
        const QByteArray table = "#Network|Description|StartTime|EndTime|TotalStations\n";
        const std::pair<QByteArray, QString> rows[] = {
            {"<html/>", "file: neither StationXML nor"},
            {"", "neither StationXML nor"},
            {"<a><FDSNStationXML/></a>", "no StationXML"},
            {whole.left(whole.size() - 30), "line 3"},
            {whole + "<", "line 3"},
            {"<!DOCTYPE a [<!ENTITY b 'c'>]>" + whole, "a document type is not taken"},
            {stationXML("<Channel code='" + endless + "'/>"), "a text of more than 256 kB"},
            {stationXML("<Comment>" + nested + "</Comment>"),
             "line 3, element <Comment>: elements nest more than 100 deep"},
            {table + "XX|a||||\n", "file: line 2: 6 fields instead of 5"},
            {table + "|a|||\n", "line 2: no code of the net"},
            {table + "XX|" + endless, "line 2: longer than 64 kB"}};
        for (const auto &[text, cause] : rows) {
            const Reading reading = read(text);
            QVERIFY2(!reading.ok && reading.networks.empty(), qPrintable(cause));
            QVERIFY2(reading.error.contains(cause), qPrintable(reading.error));
        }
    }

    void canBeEnded()
    {
        const QByteArray channel = "<Channel code='BHZ'/>";
        // Within a station too, if it is large.
        for (const auto &[count, tellings] : {std::make_pair(1, 0), std::make_pair(120000, 1)}) {
            const QByteArray text = stationXML(channel.repeated(count));
            QVERIFY(read(text).ok);
            const Reading reading = read(text, tellings);
            QVERIFY(!reading.ok && reading.error.isEmpty() && reading.networks.empty());
        }
    }

    void readsWhatWasWritten()
    {
        const Reading first = read(stationXML(
            "<Channel code='BHZ' locationCode='10' startDate='2020-01-02' endDate='2021-01-01'>"
            "<Latitude>3.1</Latitude><Longitude>4.2</Longitude><Depth>7</Depth><Dip>-90</Dip>"
            "<SampleRate>0.33333</SampleRate><SampleRateRatio><NumberSamples>1</NumberSamples>"
            "<NumberSeconds>3</NumberSeconds></SampleRateRatio>" +
            response("<Value>123456789.125</Value><Frequency>0.5</Frequency>") + "</Channel>"));
        QByteArray text;
        QBuffer buffer(&text);
        buffer.open(QIODevice::WriteOnly);
        QVERIFY(IO::writeStationXML(buffer, first.networks, "a & b", Core::Time(2024, 1, 1)));
        const Reading second = read(text);
        QVERIFY2(second.ok, qPrintable(second.error));
        QCOMPARE(second.list(), first.list());
        QCOMPARE(second.networks[0]->station(0)->siteName(), std::string("Here"));
        const DataModel::Inventory inventory(second.networks);
        QCOMPARE(inventory.findStream("XX.A.10.BHZ", Core::Time())->gainFrequency(), 0.5);
        QVERIFY(second.warnings.isEmpty());
    }
};

QTEST_APPLESS_MAIN(TestInventoryReader)
#include "tst_inventoryreader.moc"
