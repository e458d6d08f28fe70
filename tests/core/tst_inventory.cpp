// SPDX-License-Identifier: LGPL-3.0-or-later

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
    void makesIds()
    {
        const struct
        {
            const char *location, *emptyCode;
            bool keepEmptyCode;
            const char *id;
        } rows[] = {{"00", "--", false, "GE.APE.00.BHZ"},
                    {"", "", true, "GE.APE..BHZ"},
                    {"", "", false, "GE.APE.BHZ"},
                    {"", "--", false, "GE.APE.--.BHZ"}};
        for (const auto &row : rows) {
            auto *stream = new Stream("BHZ");
            const NetworkPtr tree = network(row.location, stream);
            QCOMPARE(id(stream, row.emptyCode, row.keepEmptyCode), std::string(row.id));
        }
    }

    void givesEveryChildOneParent()
    {
        auto *stream = new Stream("BHZ");
        const NetworkPtr tree = network("00", stream);
        const SensorLocationPtr other(new SensorLocation("10"));
        QVERIFY(!other->add(stream));
        QVERIFY(!other->add(nullptr));
        QCOMPARE(other->streamCount(), 0);
        QCOMPARE(stream->sensorLocation()->code(), std::string("00"));
    }

    void survivesLostParents()
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
};

QTEST_APPLESS_MAIN(InventoryTest)
#include "tst_inventory.moc"
