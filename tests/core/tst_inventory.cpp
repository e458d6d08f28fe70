#include <tellarix/core/datamodel/network.h>
#include <tellarix/core/datamodel/sensorlocation.h>
#include <tellarix/core/datamodel/station.h>
#include <tellarix/core/datamodel/stream.h>
#include <tellarix/core/datamodel/utils.h>

#include <QtTest>

using namespace Tellarix::DataModel;

namespace {

/** A chain from a network to a stream, each object held by its parent. */
NetworkPtr network(const std::string &location, Stream *stream)
{
    NetworkPtr result(new Network("GE"));
    auto *station = new Station("APE");
    auto *place = new SensorLocation(location);
    result->add(station);
    station->add(place);
    place->add(stream);
    return result;
}

} // namespace

class InventoryTest : public QObject
{
    Q_OBJECT

private slots:
    void makesIds_data();
    void makesIds();
    void findsChildrenByCode();
    void givesEveryChildOneParent();
    void survivesLostParents();
    void samplingFrequencyIsAFraction();
};

void InventoryTest::makesIds_data()
{
    QTest::addColumn<QString>("location");
    QTest::addColumn<QString>("emptyCode");
    QTest::addColumn<bool>("keepEmptyCode");
    QTest::addColumn<QString>("id");

    QTest::newRow("all codes") << "00"
                               << "--" << false << "GE.APE.00.BHZ";
    QTest::newRow("empty location keeps its place") << ""
                                                    << "" << true << "GE.APE..BHZ";
    QTest::newRow("empty location left out") << ""
                                             << "" << false << "GE.APE.BHZ";
    QTest::newRow("text for empty location") << ""
                                             << "--" << false << "GE.APE.--.BHZ";
}

void InventoryTest::makesIds()
{
    QFETCH(QString, location);
    QFETCH(QString, emptyCode);
    QFETCH(bool, keepEmptyCode);
    QFETCH(QString, id);

    auto *stream = new Stream("BHZ");
    const NetworkPtr tree = network(location.toStdString(), stream);
    QCOMPARE(QString::fromStdString(
                 Tellarix::DataModel::id(stream, emptyCode.toStdString(), keepEmptyCode)),
             id);
}

void InventoryTest::findsChildrenByCode()
{
    auto *stream = new Stream("BHZ");
    const NetworkPtr tree = network("00", stream);
    Station *station = tree->findStation("APE");
    QVERIFY(station);
    SensorLocation *location = station->findSensorLocation("00");
    QVERIFY(location);
    location->add(new Stream("BHN"));
    QCOMPARE(location->findStream("BHZ"), stream);
    QCOMPARE(location->findStream("BHN"), location->stream(1));
    QVERIFY(!location->findStream("bhz"));
    QVERIFY(!tree->findStation(""));
}

void InventoryTest::givesEveryChildOneParent()
{
    auto *stream = new Stream("BHZ");
    const NetworkPtr tree = network("00", stream);
    const SensorLocationPtr other(new SensorLocation("10"));
    QVERIFY(!other->add(stream));
    QVERIFY(!other->add(nullptr));
    QCOMPARE(other->streamCount(), 0);
    QCOMPARE(stream->sensorLocation()->code(), std::string("00"));
}

void InventoryTest::survivesLostParents()
{
    const StreamPtr stream(new Stream("BHZ"));
    NetworkPtr tree = network("00", stream.get());
    const StationPtr station(tree->findStation("APE"));
    tree.reset();
    QVERIFY(!station->network());
    QCOMPARE(id(stream.get()), std::string(".APE.00.BHZ"));
    QCOMPARE(waveformStreamID(nullptr), WaveformStreamID());
    QCOMPARE(id(nullptr), std::string());
}

void InventoryTest::samplingFrequencyIsAFraction()
{
    Stream stream;
    QCOMPARE(stream.samplingFrequency(), 0.0);
    stream.setSamplingRateNumerator(1);
    stream.setSamplingRateDenominator(3);
    QCOMPARE(stream.samplingFrequency() * 3, 1.0);
    stream.setSamplingRateDenominator(0);
    QCOMPARE(stream.samplingFrequency(), 0.0);
}

QTEST_APPLESS_MAIN(InventoryTest)
#include "tst_inventory.moc"
