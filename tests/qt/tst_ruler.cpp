// SPDX-License-Identifier: LGPL-3.0-or-later

#include "pointer.h"
#include "rulertestutils.h"

#include <QtTest>

#include <cmath>
#include <limits>
#include <tuple>

using namespace Tellarix::Gui;
using namespace TestUtils;

using Values = QVector<double>;

namespace {

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr double Infinity = std::numeric_limits<double>::infinity();

QVector<RulerLabel> labelsAt(const Values &positions, double extent)
{
    QVector<RulerLabel> result;
    for (const double position : positions)
        result.append({QString::number(position), position, extent, 0});
    return result;
}

/** A ruler whose owner does what the user asks for. */
struct ServedRuler : Probe<Ruler>
{
    explicit ServedRuler(Position position = Bottom) : Probe<Ruler>(nullptr, {}, position)
    {
        connect(this, &Ruler::rangeChangeRequested, this, &Ruler::showRange);
    }
};

} // namespace

class RulerTest : public QObject
{
    Q_OBJECT

private slots:
    void roundsTickDistances()
    {
        const QVector<QPair<double, double>> cases{
            {1, 1},           {1.001, 2}, {3, 5},   {6, 10},      {0.1 + 0.2 - 0.1, 0.2},
            {1.5E-12, 2E-12}, {-1, 0},    {NaN, 0}, {1.7E308, 0}, {1E-320, 0}};
        for (const auto &[distance, rounded] : cases)
            QVERIFY2(roundTickDistance(distance) == rounded, QByteArray::number(distance));
    }

    void placesTicks()
    {
        const std::tuple<double, double, double, double, Values> cases[] = {
            {-1.5, 1.5, 1, 0, {-1, 0, 1}},
            {0, 10, 5, 2, {3, 8}},
            {0, 2, 1, 86399.25, {0.75, 1.75}},
            {3, 3, 1, 0, {3}},
            {0, 1, 0, 0, {}},
            {NaN, 1, 1, 0, {}},
            {0, 1E9, 1E-3, 0, {}},
            {1E17, 1E17 + 64, 1, 0, {}}, // ticks are lost in rounding
        };
        for (const auto &[lower, upper, spacing, offset, ticks] : cases)
            QCOMPARE(tickValues(lower, upper, spacing, offset), ticks);
    }

    void layoutLeavesOutWhatCollides()
    {
        const struct
        {
            Values positions;
            double extent;
            Values starts;
        } cases[] = {
            {{0, 50, 100}, 20, {40, 0, 80}}, // moved inwards
            {{0, 25, 50}, 20, {15, 40}},     // no room to move
            {{50, 45, 80}, 20, {40, 70}},    // first come, first served
            {{50}, 101, {}},
        };
        for (const auto &item : cases) {
            Values starts;
            for (const RulerLabel &label :
                 layoutLabels(labelsAt(item.positions, item.extent), 100, 5))
                starts.append(label.start);
            QCOMPARE(starts, item.starts);
        }
    }

    void upperEndFollowsScale()
    {
        Ruler ruler;
        ruler.resize(300, 40);
        QVERIFY(ruler.setScale(3));
        QVERIFY(ruler.setRange(10, 20));
        QCOMPARE(ruler.upper(), 110.0);

        const double upper = 10 + 1.0 / 3;
        ruler.setScale(300 / (upper - 10));
        ruler.setRange(10, upper);
        QVERIFY(ruler.upper() == upper);

        resizeTo(ruler, 600, 40);
        QVERIFY(qFuzzyCompare(ruler.upper() - ruler.lower(), 2.0 / 3));

        for (const double bad : {0.0, -1.0, NaN, Infinity})
            QVERIFY(!ruler.setScale(bad));
        QVERIFY(!ruler.setRange(NaN, 1));
        QVERIFY(!ruler.setRange(-1.7E308, 1.7E308));
        QVERIFY(!ruler.showRange(5, 5));
        QCOMPARE(ruler.lower(), 10.0);
    }

    void limitsActAboutTheCentre()
    {
        Ruler ruler;
        ruler.resize(200, 40);
        ruler.setRangeLimits(10, 1000);
        ruler.setScale(200.0 / 4000);
        ruler.setRange(-2000, 2000);
        QCOMPARE(ruler.lower(), -500.0);
        QCOMPARE(ruler.upper(), 500.0);
    }

    void automaticScaleFillsTheLength()
    {
        Ruler ruler(nullptr, {}, Ruler::Left);
        ruler.resize(60, 200);
        ruler.setAutoScaleEnabled(true);
        ruler.setRange(-2E-9, 2E-9);
        QCOMPARE(ruler.valueToPixel(-2E-9), 200.0);
        QCOMPARE(ruler.valueToPixel(2E-9), 0.0);
        QVERIFY(ruler.majorSpacing() > 0);

        resizeTo(ruler, 60, 400);
        QCOMPARE(ruler.upper(), 2E-9);
        QCOMPARE(ruler.valueToPixel(-2E-9), 400.0);

        ruler.setRange(0, 0);
        QCOMPARE(ruler.majorSpacing(), 0.0);
        picture(ruler);
    }

    void wheelKeepsTheValueUnderThePointer()
    {
        const std::tuple<Ruler::Position, int, double> cases[] = {
            {Ruler::Bottom, 12, 100 / std::pow(1.25, 0.1)},
            {Ruler::Left, -120, 125},
            {Ruler::Right, 120 * 50, 1},
            {Ruler::Top, -120 * 50, 10000},
        };
        for (const auto &[position, units, width] : cases) {
            ServedRuler ruler(position);
            ruler.resize(400, 400);
            ruler.setRangeLimits(1, 10000);
            ruler.showRange(-20, 80);
            const double value = ruler.pixelToValue(70);
            Pointer::turnWheel(ruler, {70, 70}, {0, units});
            QVERIFY(std::abs(ruler.pixelToValue(70) - value) < 1E-9);
            QCOMPARE(ruler.upper() - ruler.lower(), width);
        }
    }

    void draggingPansWithoutDrift()
    {
        // A ruler by itself only asks.
        Ruler idle;
        idle.resize(400, 40);
        idle.showRange(0, 100);
        Pointer::drag(idle, {{100, 10}, {60, 10}});
        QCOMPARE(idle.lower(), 0.0);

        ServedRuler ruler;
        ruler.resize(400, 40);
        ruler.showRange(0, 1);
        const double value = ruler.pixelToValue(100);

        QVector<QPointF> way{{100, 10}};
        for (int i = 0; i < 500; ++i)
            way.append({100 + 90 * std::sin(i), 10});
        way.append({333, 10});
        Pointer::drag(ruler, way);
        QVERIFY(std::abs(ruler.pixelToValue(333) - value) < 1E-12);

        ServedRuler vertical(Ruler::Left);
        vertical.resize(40, 400);
        vertical.showRange(0, 100);
        Pointer::drag(vertical, {{10, 100}, {10, 140}});
        QCOMPARE(vertical.lower(), 10.0);
    }

    void selectsRange()
    {
        Ruler ruler;
        ruler.resize(400, 40);
        ruler.showRange(0, 100);
        QSignalSpy changing(&ruler, &Ruler::selectionChanging);
        QSignalSpy changed(&ruler, &Ruler::selectionChanged);
        const auto last = [](const QSignalSpy &spy) {
            return qMakePair(spy.last()[0].toDouble(), spy.last()[1].toDouble());
        };
        ruler.setRangeSelectionEnabled(true, true);
        Pointer::drag(ruler, {{200, 10}, {150, 10}, {100, 10}}, Qt::MiddleButton);
        QCOMPARE(changing.size(), 2);
        QCOMPARE(changed.size(), 1);
        QCOMPARE(last(changed), qMakePair(25.0, 50.0));

        // The upper handle is pulled across the lower one.
        Pointer::drag(ruler, {{201, 10}, {300, 10}, {40, 10}});
        QCOMPARE(last(changed), qMakePair(10.0, 25.0));

        Pointer::drag(ruler, {{360, 10}, {900, 10}}, Qt::LeftButton, Qt::ShiftModifier);
        QCOMPARE(last(changed), qMakePair(90.0, 100.0));

        Pointer::drag(ruler, {{20, 10}, {20, 10}}, Qt::LeftButton, Qt::ShiftModifier);
        QVERIFY(!ruler.hasSelection());
        QCOMPARE(last(changed), qMakePair(5.0, 5.0));
    }

    void tellsChangedIntervals()
    {
        Ruler ruler;
        ruler.resize(1000, 40);
        QSignalSpy intervals(&ruler, &Ruler::changedInterval);
        ruler.showRange(0, 10000);
        QCOMPARE(intervals.size(), 1);
        QCOMPARE(intervals.last()[1].toDouble(), ruler.minorSpacing());
        ruler.showRange(1000, 11000);
        QCOMPARE(intervals.size(), 1);
        ruler.setAutoScaleEnabled(true);
        resizeTo(ruler, 100, 40);
        QCOMPARE(intervals.size(), 2);
        resizeTo(ruler, 0, 0);
        QCOMPARE(ruler.majorSpacing(), 0.0);
    }

    void ticksAreCrispAndStandAtTheirPixel()
    {
        Ruler ruler;
        QPalette palette = ruler.palette();
        palette.setColor(QPalette::WindowText, Qt::red);
        ruler.setPalette(palette);
        ruler.resize(500, 40);
        ruler.showRange(0.013, 5.02);

        const QImage image = picture(ruler);
        QVector<int> inked;
        for (int x = 0; x < image.width(); ++x) {
            // A row that only labelled ticks reach.
            if (image.pixelColor(x, 4) != QColor(Qt::white)) {
                QCOMPARE(image.pixelColor(x, 4), QColor(Qt::red));
                inked.append(x);
            }
        }
        QVector<int> expected;
        for (const double value : tickValues(ruler.lower(), ruler.upper(), ruler.majorSpacing(), 0))
            expected.append(static_cast<int>(ruler.valueToPixel(value) + 1E-6));
        QVERIFY(expected.size() > 3);
        QCOMPARE(inked, expected);
    }
};

QTEST_MAIN(RulerTest)
#include "tst_ruler.moc"
