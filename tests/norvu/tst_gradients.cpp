// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/gradients.h>

#include <QPushButton>
#include <QtTest>

#include <cmath>

using namespace Norvu;
using namespace Norvu::Gui;
using Tellarix::Gui::Gradient;

using Table = Utils::LUT<double, unsigned int>;

class TestGradients : public QObject
{
    Q_OBJECT

private slots:
    void registryHoldsAllGradients()
    {
        const auto &registry = Gradients::Registry;
        QCOMPARE(registry.size(), 14);
        QCOMPARE(registry.value("BlackBody"), &Gradients::BlackBody);
        for (auto a = registry.begin(); a != registry.end(); ++a) {
            for (auto b = std::next(a); b != registry.end(); ++b)
                QVERIFY2(**a != **b, qPrintable(a.key() + " equals " + b.key()));
        }
    }

    void mixesBetweenStops_data()
    {
        QTest::addColumn<double>("key");
        QTest::addColumn<QColor>("mixed");
        QTest::addColumn<QColor>("stepped");

        const QColor low(0, 100, 200, 0);
        const QColor high(100, 0, 200, 255);
        QTest::newRow("below") << -5.0 << low << low;
        QTest::newRow("between") << 2.5 << QColor(25, 75, 200, 64) << low;
        QTest::newRow("last") << 4.0 << high << high;
        QTest::newRow("above") << 9.0 << high << high;
        QTest::newRow("no number") << std::nan("") << low << low;
    }

    void mixesBetweenStops()
    {
        QFETCH(double, key);
        QFETCH(QColor, mixed);
        QFETCH(QColor, stepped);

        Gradient gradient;
        QVERIFY(!gradient.colorAt(key).isValid());
        gradient.setColorAt(4, QColor(100, 0, 200, 255));
        gradient.setColorAt(2, QColor(0, 100, 200, 0));
        gradient.setColorAt(std::nan(""), Qt::green);
        QCOMPARE(gradient.colorAt(key), mixed);
        QCOMPARE(gradient.colorAt(key, true), stepped);
    }

    void stretchesKeys()
    {
        const Gradient stretched = Gradients::PuRd.rescaled(-1, 0.1);
        QCOMPARE(stretched.size(), Gradients::PuRd.size());
        QCOMPARE(stretched.firstKey(), -1.0);
        QCOMPARE(stretched.lastKey(), 0.1);
        QCOMPARE(stretched.colorAt(-1 + 1.1 * 3 / 8), Gradients::PuRd.colorAt(3));
    }

    void tableClampsAndTruncates_data()
    {
        QTest::addColumn<double>("key");
        QTest::addColumn<unsigned int>("entry");

        const double step = 10.0 / 1023;
        QTest::newRow("less than a step below") << 5.0 - 0.9 * step << 0U;
        QTest::newRow("just below an entry") << 5.0 + 99.9 * step << 99U;
        QTest::newRow("just above an entry") << 5.0 + 100.1 * step << 100U;
        QTest::newRow("last") << 15.0 << 1023U;
        QTest::newRow("beyond the last") << 2E7 << 1023U;
        QTest::newRow("beyond integers") << 2.2E7 << 0U;
        QTest::newRow("no number") << std::nan("") << 0U;
    }

    void tableClampsAndTruncates()
    {
        QFETCH(double, key);
        QFETCH(unsigned int, entry);

        Table table;
        unsigned int next = 0;
        table.fill(5, 15, [&next](double) { return next++; });
        QCOMPARE(table.at(key), entry);
    }

    void tableHoldsTheGradient()
    {
        Table table;
        QVERIFY(!fillTable(table, Gradient()));
        QVERIFY(fillTable(table, Gradients::Default));
        for (int i = 0; i < table._size; ++i)
            QCOMPARE(table._table[i], Gradients::Default.colorAt(i / 1023.0).rgba());

        fillTable(table, Gradients::Blues, true);
        QCOMPARE(table.at(7.9), Gradients::Blues.value(6).first.rgba());
    }

    void tableSurvivesOneStopAndCopies()
    {
        Gradient single;
        single.setColorAt(3, Qt::red);
        Table table;
        fillTable(table, single);
        QCOMPARE(table.at(3), QColor(Qt::red).rgba());

        fillTable(table, Gradients::Viridis);
        const Table copy(table);
        fillTable(table, Gradients::BlackWhite);
        QCOMPARE(copy.at(1), Gradients::Viridis.colorAt(1).rgba());
    }

    void buttonTextCanBeRead()
    {
        const auto textOn = [](int grey) {
            QPushButton button;
            setColor(&button, QColor(grey, grey, grey), true, Qt::red);
            return button.palette().color(QPalette::ButtonText);
        };
        QCOMPARE(textOn(160), QColor(Qt::white));
        QCOMPARE(textOn(161), QColor(Qt::black));
    }

    void indexGivesColor()
    {
        QCOMPARE(generateColor(0, 100, 200), QColor::fromHsv(0, 100, 200));
        QCOMPARE(generateColor(1, 100, 200), QColor::fromHsv(221, 100, 200));
        // Twice the golden ratio is one and 0.236068.
        QCOMPARE(generateColor(2, 100, 200), QColor::fromHsv(84, 100, 200));
        QCOMPARE(generateColorF(0, 0.25, 0.5), QColor::fromHsvF(0, 0, 0.25, 0.5));
    }
};

QTEST_MAIN(TestGradients)
#include "tst_gradients.moc"
