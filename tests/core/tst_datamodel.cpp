// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/datamodel/event.h>
#include <tellarix/core/datamodel/eventtypes.h>
#include <tellarix/core/datamodel/inventory.h>
#include <tellarix/core/datamodel/network.h>
#include <tellarix/core/datamodel/sensorlocation.h>
#include <tellarix/core/datamodel/station.h>
#include <tellarix/core/datamodel/stream.h>
#include <tellarix/core/datamodel/utils.h>
#include <tellarix/core/math/geo.h>

#include <QtTest>

#include <cmath>
#include <limits>
#include <random>
#include <tuple>

using namespace Tellarix::DataModel;
using Tellarix::Core::Time;
using namespace Tellarix::Math;

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

/** The smallest angle between two directions. */
double angleBetween(double a, double b)
{
    return std::abs(std::remainder(a - b, 360.0));
}

/** How far apart the angles of two planes are at most. */
double difference(const NodalPlane &a, const NodalPlane &b)
{
    return std::max({angleBetween(a.strike().value(), b.strike().value()),
                     angleBetween(a.dip().value(), b.dip().value()),
                     angleBetween(a.rake().value(), b.rake().value())});
}

template <typename T>
Tellarix::Core::SmartPointer<T> solution(const char *publicID, const char *mode)
{
    Tellarix::Core::SmartPointer<T> made(new T);
    made->publicID = publicID;
    made->evaluationMode = mode;
    return made;
}

/** Difference of two directions in degrees. */
double turn(double a, double b)
{
    return std::abs(std::remainder(a - b, 360.0));
}

} // namespace

class DataModelTest : public QObject
{
    Q_OBJECT

private slots:
    void makesIds()
    {
        const std::tuple<const char *, const char *, bool, const char *> rows[] = {
            {"00", "--", false, "GE.APE.00.BHZ"},
            {"", "", true, "GE.APE..BHZ"},
            {"", "", false, "GE.APE.BHZ"},
            {"", "--", false, "GE.APE.--.BHZ"}};
        for (const auto &[location, emptyCode, keepEmptyCode, expected] : rows) {
            auto *stream = new Stream("BHZ");
            const NetworkPtr tree = network(location, stream);
            QCOMPARE(id(stream, emptyCode, keepEmptyCode), std::string(expected));
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
        // Days of start and end, 0 for none; days, each with the index of its epoch or -1.
        using Days = std::vector<std::pair<int, int>>;
        const std::tuple<const char *, Days, Days> rows[] = {
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
        for (const auto &[name, epochs, answers] : rows) {
            std::vector<NetworkPtr> networks;
            std::vector<const Stream *> streams;
            for (const auto &[start, end] : epochs) {
                auto *stream = new Stream("BHZ");
                stream->setEpoch({day(start), day(end)});
                networks.push_back(network("00", stream));
                streams.push_back(stream);
            }
            const Inventory inventory(networks);
            for (const auto &[time, index] : answers) {
                const Stream *expected = index < 0 ? nullptr : streams[static_cast<size_t>(index)];
                QVERIFY2(inventory.findStream("GE.APE.00.BHZ", day(time)) == expected,
                         qPrintable(QString("%1: %2").arg(name).arg(time)));
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

    void findsAuxiliaryPlanes()
    {
        const std::tuple<NodalPlane, NodalPlane, double> rows[] = {
            {{10, 45, 90}, {190, 45, 90}, 1e-9},    // reverse
            {{350, 45, -90}, {170, 45, -90}, 1e-9}, // normal
            {{100, 60, -90}, {280, 30, -90}, 1e-9},
            // Northridge 1994, Landers 1992 and Maule 2010 in the Global CMT catalogue,
            // which gives whole degrees.
            {{278, 42, 65}, {130, 53, 111}, 1.5},
            {{341, 70, -172}, {248, 82, -20}, 1.5},
            {{19, 18, 116}, {172, 74, 82}, 2.5}};
        for (const auto &[plane, other, tolerance] : rows) {
            QVERIFY2(difference(auxiliaryPlane(plane), other) <= tolerance,
                     QByteArray::number(plane.strike().value()));
            QVERIFY2(difference(auxiliaryPlane(other), plane) <= tolerance,
                     QByteArray::number(other.strike().value()));
        }
    }

    void auxiliaryOfAuxiliaryIsThePlane()
    {
        const unsigned seed = std::random_device{}();
        qInfo("seed %u", seed);
        std::mt19937 generator(seed);
        std::uniform_real_distribution<double> unit(0, 1);
        for (int i = 0; i < 2000; ++i) {
            const NodalPlane plane(360 * unit(generator), 1 + 88 * unit(generator),
                                   360 * unit(generator) - 180);
            const NodalPlane other = auxiliaryPlane(plane);
            QVERIFY(other.strike().value() >= 0 && other.strike().value() < 360);
            QVERIFY(other.dip().value() >= 0 && other.dip().value() <= 90);
            // A nearly horizontal plane has no strike to speak of.
            if (other.dip().value() > 0.1)
                QVERIFY(difference(auxiliaryPlane(other), plane) < 1e-6);
        }
        // Vertical strike slip: two planes at right angles, each the same when turned around.
        const NodalPlane vertical = auxiliaryPlane({30, 90, 0});
        QVERIFY(std::abs(vertical.dip().value() - 90) < 1e-9);
        QVERIFY(std::abs(angleBetween(vertical.strike().value(), 30) - 90) < 1e-9);
        QVERIFY(std::abs(std::sin(vertical.rake().value() * M_PI / 180)) < 1e-9);
    }

    void prefersTheNamedThenTheManualThenTheFirst()
    {
        Event event;
        QVERIFY(!event.preferredOrigin());
        event.preferredOriginID = "gone";
        event.origins = {solution<Origin>("a", "automatic"), solution<Origin>("", ""),
                         solution<Origin>("b", "manual"), solution<Origin>("c", "manual")};
        QCOMPARE(event.preferredOrigin()->publicID, std::string("b"));
        event.preferredOriginID = "c";
        QCOMPARE(event.preferredOrigin()->publicID, std::string("c"));
        event.preferredOriginID.clear();
        event.origins.resize(2);
        QCOMPARE(event.preferredOrigin()->publicID, std::string("a"));
        event.descriptions = {{"Crete", "region name"}, {"Greece", "region name"}};
        QCOMPARE(event.region(), std::string("Crete"));
    }

    void knownDistances()
    {
        // Published values for the WGS84 ellipsoid; the equator and the meridian follow from its
        // axes.
        const struct
        {
            double from[2], to[2], km, azimuth, backAzimuth;
        } rows[] = {
            {{40.6, -73.8}, {51.6, -0.5}, 5551.759400, 51.19888284, 287.82177676},
            {{0, 0}, {0.5, 179.5}, 19936.288579, 25.67187, 334.32709},
            {{0, -179.5}, {0, 179.5}, 6378.137 * M_PI / 180, 270, 90},
            {{0, 20}, {90, 20}, 10001.965729, 0, 180},
            {{10, 20}, {-10, 20}, 2 * 1105.854833, 180, 0},
            {{90, 20}, {-90, 20}, 2 * 10001.965729, 180, 0},
            {{12.5, 99.25}, {12.5, 459.25}, 0, 180, 0},
        };
        for (const auto &row : rows) {
            double km = 0;
            double azimuth = 0;
            double backAzimuth = 0;
            Geo::delaziKm(row.from[0], row.from[1], row.to[0], row.to[1], &km, &azimuth,
                          &backAzimuth);
            QVERIFY2(std::abs(km - row.km) < 2E-6, qPrintable(QString::number(km, 'f', 9)));
            // Degrees are those of the equator.
            double degrees = 0;
            Geo::delazi(row.from[0], row.from[1], row.to[0], row.to[1], &degrees);
            QVERIFY(std::abs(degrees - km / (6378.137 * M_PI / 180)) < 1E-9);
            QVERIFY2(turn(azimuth, row.azimuth) < 1E-5, qPrintable(QString::number(azimuth)));
            QVERIFY2(turn(backAzimuth, row.backAzimuth) < 1E-5,
                     qPrintable(QString::number(backAzimuth)));
        }
    }

    void directAndInverseAgree()
    {
        const unsigned seed = std::random_device{}();
        qInfo("seed %u", seed);
        std::mt19937 generator(seed);
        const auto uniform = [&](double lowest, double highest) {
            return std::uniform_real_distribution<double>(lowest, highest)(generator);
        };
        for (int i = 0; i < 2000; ++i) {
            const double latitude = uniform(-89, 89);
            const double longitude = uniform(-180, 180);
            const double distance = uniform(1, 19000);
            const double direction = uniform(0, 360);
            double latitude2 = 0;
            double longitude2 = 0;
            Geo::destination(distance, direction, latitude, longitude, &latitude2, &longitude2);

            double km = 0;
            double azimuth = 0;
            double backAzimuth = 0;
            Geo::delaziKm(latitude, longitude, latitude2, longitude2, &km, &azimuth, &backAzimuth);
            QVERIFY(std::abs(km - distance) < 1E-6);
            QVERIFY(azimuth >= 0 && azimuth <= 360 && turn(azimuth, direction) < 1E-6);

            double back = 0;
            Geo::delaziKm(latitude2, longitude2, latitude, longitude, &km, &back);
            QVERIFY(turn(back, backAzimuth) < 1E-6);
        }
    }

    void badCoordinates()
    {
        const double nan = std::numeric_limits<double>::quiet_NaN();
        const double rows[][4] = {{90.1, 0, 0, 0}, {0, 0, -91, 0}, {nan, 0, 0, 0}, {0, nan, 0, 0}};
        for (const auto &row : rows) {
            double degrees = 0;
            double km = 0;
            Geo::delazi(row[0], row[1], row[2], row[3], &degrees);
            Geo::delaziKm(row[0], row[1], row[2], row[3], &km);
            QVERIFY(std::isnan(degrees) && std::isnan(km));
        }
    }
};

QTEST_APPLESS_MAIN(DataModelTest)
#include "tst_datamodel.moc"
