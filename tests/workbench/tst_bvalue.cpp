// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bvalue.h"

#include <QtTest>

#include <cmath>
#include <limits>
#include <random>

/** The arithmetic of the sample plug-in. */
class BValueTest : public QObject
{
    Q_OBJECT

private slots:
    void findsTheValueOfAnExponentialCatalogue()
    {
        for (const double b : {0.7, 1.0, 1.5}) {
            std::mt19937 random(1965);
            // Magnitudes from 1.95 on, which are rounded to 2.0 and more.
            std::exponential_distribution<double> excess(b * std::log(10.0));
            QVector<double> magnitudes{std::numeric_limits<double>::quiet_NaN(), 0.3, 1e300};
            for (int i = 0; i < 20000; ++i)
                magnitudes.append(std::round((1.95 + excess(random)) * 10) / 10);
            const std::optional<BValue> value = bValue(magnitudes);
            QVERIFY(value);
            QCOMPARE(value->completeness, 2.0);
            QCOMPARE(value->count, 20000);
            QVERIFY(std::abs(value->b - b) < 3 * value->error);
            QVERIFY(std::abs(value->error - b / std::sqrt(20000.0)) < 0.001);
        }
    }

    void needsEnoughEvents()
    {
        QVERIFY(!bValue({}));
        QVERIFY(!bValue(QVector<double>(49, 3.0)));
        QVERIFY(bValue(QVector<double>(50, 3.0)));
    }
};

QTEST_APPLESS_MAIN(BValueTest)
#include "tst_bvalue.moc"
