// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/datamodel/event.h>
#include <tellarix/core/datamodel/eventtypes.h>

#include <QtTest>

#include <random>

using namespace Tellarix::DataModel;

namespace {

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

} // namespace

class EventsTest : public QObject
{
    Q_OBJECT

private slots:
    void findsAuxiliaryPlanes()
    {
        const struct
        {
            NodalPlane plane, other;
            double tolerance;
        } rows[] = {{{10, 45, 90}, {190, 45, 90}, 1e-9},    // reverse
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

    void namesTypes()
    {
        QCOMPARE(EEventTypeNames::name(0), "not existing");
        QCOMPARE(EEventTypeNames::name(EEventTypeNames::count()), "");
        for (int i = 0; i < EEventTypeNames::count(); ++i)
            QCOMPARE(EEventTypeNames::indexOf(EEventTypeNames::name(i)), i);
        QCOMPARE(EEventTypeNames::indexOf("Earthquake"), -1);
    }
};

QTEST_APPLESS_MAIN(EventsTest)
#include "tst_events.moc"
