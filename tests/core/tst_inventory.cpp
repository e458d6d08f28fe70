// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/datamodel/inventory.h>
#include <tellarix/core/datamodel/network.h>
#include <tellarix/core/datamodel/sensorlocation.h>
#include <tellarix/core/datamodel/station.h>
#include <tellarix/core/datamodel/stream.h>
#include <tellarix/core/datamodel/utils.h>

#include <QtTest>

#include <cmath>

using namespace Tellarix::DataModel;
using Tellarix::Core::Time;

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

/** Midnight of a day of a month, and no time for 0. */
Time day(int number)
{
    return number > 0 ? Time(2024, 1, number) : Time();
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

    void findsTheEpochInForce()
    {
        const struct
        {
            const char *name;
            std::vector<std::pair<int, int>> epochs;  /**< days of start and end, 0 for none */
            std::vector<std::pair<int, int>> answers; /**< day, and index of its epoch or -1 */
        } rows[] = {
            {"one after another", {{5, 8}, {1, 5}}, {{1, 1}, {5, 0}, {8, -1}, {0, 0}}},
            {"open on both sides", {{0, 0}}, {{1, 0}, {0, 0}}},
            {"a gap", {{0, 3}, {5, 0}}, {{2, 0}, {3, -1}, {4, -1}, {5, 1}, {31, 1}}},
            {"a short one within a long one", {{1, 31}, {5, 6}}, {{4, 0}, {5, 1}, {6, 0}, {0, 1}}},
            {"repeated", {{1, 9}, {1, 9}, {1, 4}}, {{2, 2}, {4, 1}}},
            {"that holds no time", {{5, 5}, {7, 2}, {1, 9}}, {{5, 2}, {7, 2}, {9, -1}}},
            {"overlapping in a chain",
             {{1, 6}, {4, 9}, {8, 12}},
             {{3, 0}, {5, 1}, {8, 2}, {11, 2}}},
        };
        for (const auto &row : rows) {
            std::vector<NetworkPtr> networks;
            std::vector<const Stream *> streams;
            for (const auto &[start, end] : row.epochs) {
                auto *stream = new Stream("BHZ");
                stream->setEpoch({day(start), day(end)});
                networks.push_back(network("00", stream));
                streams.push_back(stream);
            }
            const Inventory inventory(networks);
            for (const auto &[time, index] : row.answers) {
                const Stream *expected = index < 0 ? nullptr : streams[static_cast<size_t>(index)];
                QVERIFY2(inventory.findStream("GE.APE.00.BHZ", day(time)) == expected,
                         qPrintable(QString("%1: %2").arg(row.name).arg(time)));
            }
            QVERIFY(!inventory.findStream("GE.APE..BHZ", day(5)));
        }
    }

    void takesMissingCoordinatesFromTheStation()
    {
        auto *stream = new Stream("BHZ");
        const NetworkPtr tree = network("00", stream);
        Station *station = tree->findStation("APE");
        QVERIFY(!coordinates(stream).isPlace());
        station->setCoordinates({37, 25.5, 600});
        stream->sensorLocation()->setLatitude(1); // half a place is none
        QCOMPARE(coordinates(stream).latitude, 37.0);
        stream->sensorLocation()->setLongitude(2);
        QCOMPARE(coordinates(stream).latitude, 1.0);
        QCOMPARE(coordinates(stream).elevation, 600.0);

        station->setEpoch({day(2), day(3)});
        const Inventory inventory({tree});
        QCOMPARE(inventory.coordinates("GE.APE", day(2)).longitude, 25.5);
        QVERIFY(!inventory.coordinates("GE.APE", day(3)).isPlace());
    }

    void keepsSamplingFrequencies()
    {
        Stream stream;
        for (const double frequency : {40.0, 0.0, 99.999, 1.0 / 3, 0.333333, 200.2, 0.0083333333}) {
            stream.setSamplingFrequency(frequency);
            QVERIFY(stream.hasSamplingFrequency());
            QCOMPARE(stream.samplingFrequency() - frequency, 0.0);
        }
        stream.setSamplingFrequency(1.0 / 3);
        QCOMPARE(stream.samplingRateDenominator(), 3);
        for (const double bad : {-1.0, std::nan(""), 3E9}) {
            stream.setSamplingFrequency(bad);
            QVERIFY(!stream.hasSamplingFrequency());
        }
    }
};

QTEST_APPLESS_MAIN(InventoryTest)
#include "tst_inventory.moc"
