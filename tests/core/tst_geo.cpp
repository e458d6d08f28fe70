// SPDX-License-Identifier: LGPL-3.0-or-later

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

QTEST_APPLESS_MAIN(GeoTest)
#include "tst_geo.moc"
