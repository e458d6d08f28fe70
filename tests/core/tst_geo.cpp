#include <tellarix/core/math/geo.h>

#include <QtTest>

#include <cmath>
#include <limits>
#include <random>

using namespace Tellarix::Math;

namespace {

/** Difference of two directions in degrees. */
double turn(double a, double b)
{
    return std::abs(std::remainder(a - b, 360.0));
}

} // namespace

class GeoTest : public QObject
{
    Q_OBJECT

private slots:
    void knownDistances_data();
    void knownDistances();
    void directAndInverseAgree();
    void arcOfMeridian();
    void samePoint();
    void badCoordinates();
};

void GeoTest::knownDistances_data()
{
    QTest::addColumn<double>("latitude1");
    QTest::addColumn<double>("longitude1");
    QTest::addColumn<double>("latitude2");
    QTest::addColumn<double>("longitude2");
    QTest::addColumn<double>("km");
    QTest::addColumn<double>("azimuth");
    QTest::addColumn<double>("backAzimuth");

    // Published values for the WGS84 ellipsoid; the equator and the meridian follow from its axes.
    QTest::newRow("New York to London")
        << 40.6 << -73.8 << 51.6 << -0.5 << 5551.759400 << 51.19888284 << 287.82177676;
    QTest::newRow("nearly antipodal")
        << 0.0 << 0.0 << 0.5 << 179.5 << 19936.288579 << 25.67187 << 334.32709;
    QTest::newRow("a degree of the equator")
        << 0.0 << 10.0 << 0.0 << 11.0 << 6378.137 * M_PI / 180 << 90.0 << 270.0;
    QTest::newRow("over the date line")
        << 0.0 << -179.5 << 0.0 << 179.5 << 6378.137 * M_PI / 180 << 270.0 << 90.0;
    QTest::newRow("quarter of a meridian")
        << 0.0 << 20.0 << 90.0 << 20.0 << 10001.965729 << 0.0 << 180.0;
    QTest::newRow("southward") << 10.0 << 20.0 << -10.0 << 20.0 << 2 * 1105.854833 << 180.0 << 0.0;
}

void GeoTest::knownDistances()
{
    QFETCH(double, latitude1);
    QFETCH(double, longitude1);
    QFETCH(double, latitude2);
    QFETCH(double, longitude2);
    QFETCH(double, km);
    QFETCH(double, azimuth);
    QFETCH(double, backAzimuth);

    double foundKm = 0;
    double foundAzimuth = 0;
    double foundBackAzimuth = 0;
    Geo::delaziKm(latitude1, longitude1, latitude2, longitude2, &foundKm, &foundAzimuth,
                  &foundBackAzimuth);
    QVERIFY2(std::abs(foundKm - km) < 2E-6, qPrintable(QString::number(foundKm, 'f', 9)));
    QVERIFY2(turn(foundAzimuth, azimuth) < 1E-5, qPrintable(QString::number(foundAzimuth)));
    QVERIFY2(turn(foundBackAzimuth, backAzimuth) < 1E-5,
             qPrintable(QString::number(foundBackAzimuth)));
}

void GeoTest::directAndInverseAgree()
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
        Geo::delandaz2coord(distance, direction, latitude, longitude, &latitude2, &longitude2);

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

void GeoTest::arcOfMeridian()
{
    double degrees = 0;
    Geo::delazi(0, 0, 90, 0, &degrees);
    QVERIFY(std::abs(degrees - 90) < 1E-9);
    Geo::delazi(-90, 0, 90, 0, &degrees);
    QVERIFY(std::abs(degrees - 180) < 1E-9);
    // Away from the poles a geodetic degree differs from one of the arc by the flattening at most.
    Geo::delazi(38.32, 142.37, 51.5, 7.2, &degrees);
    double km = 0;
    Geo::delaziKm(38.32, 142.37, 51.5, 7.2, &km);
    QVERIFY(std::abs(km / degrees - 111.195) < 111.195 * 0.0034);
}

void GeoTest::samePoint()
{
    double degrees = 1;
    double azimuth = -1;
    double backAzimuth = -1;
    Geo::delazi(12.5, 99.25, 12.5, 99.25 + 360, &degrees, &azimuth, &backAzimuth);
    QCOMPARE(degrees, 0.0);
    QVERIFY(azimuth >= 0 && azimuth <= 360 && backAzimuth >= 0 && backAzimuth <= 360);
}

void GeoTest::badCoordinates()
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

QTEST_APPLESS_MAIN(GeoTest)
#include "tst_geo.moc"
