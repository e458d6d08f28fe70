#include "rulertestutils.h"

#include <QtTest>

#include <cmath>
#include <limits>
#include <random>

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
    void roundsTickDistances_data()
    {
        QTest::addColumn<double>("distance");
        QTest::addColumn<double>("rounded");
        QTest::newRow("one") << 1.0 << 1.0;
        QTest::newRow("just above one") << 1.001 << 2.0;
        QTest::newRow("three") << 3.0 << 5.0;
        QTest::newRow("six") << 6.0 << 10.0;
        QTest::newRow("five hundredths") << 0.05 << 0.05;
        QTest::newRow("rounding error above") << 0.1 + 0.2 - 0.1 << 0.2;
        QTest::newRow("tiny") << 1.5E-12 << 2E-12;
        QTest::newRow("huge") << 7E200 << 1E201;
        QTest::newRow("zero") << 0.0 << 0.0;
        QTest::newRow("negative") << -1.0 << 0.0;
        QTest::newRow("not a number") << NaN << 0.0;
        QTest::newRow("infinite") << Infinity << 0.0;
        QTest::newRow("beyond the largest") << 1.7E308 << 0.0;
        QTest::newRow("denormal") << 1E-320 << 0.0;
    }
    void roundsTickDistances()
    {
        QFETCH(double, distance);
        QFETCH(double, rounded);
        const double result = roundTickDistance(distance);
        QVERIFY2(result == rounded, qPrintable(QString::number(result, 'g', 17)));
    }

    void placesTicks_data()
    {
        QTest::addColumn<double>("lower");
        QTest::addColumn<double>("upper");
        QTest::addColumn<double>("spacing");
        QTest::addColumn<double>("offset");
        QTest::addColumn<Values>("expected");
        QTest::newRow("plain") << 0.0 << 10.0 << 5.0 << 0.0 << Values{0, 5, 10};
        QTest::newRow("negative range") << -7.0 << -1.0 << 2.0 << 0.0 << Values{-6, -4, -2};
        QTest::newRow("across zero") << -1.5 << 1.5 << 1.0 << 0.0 << Values{-1, 0, 1};
        QTest::newRow("offset") << 0.0 << 10.0 << 5.0 << 2.0 << Values{3, 8};
        QTest::newRow("negative offset") << 0.0 << 10.0 << 5.0 << -2.0 << Values{2, 7};
        QTest::newRow("offset of many spacings")
            << 0.0 << 2.0 << 1.0 << 86399.25 << Values{0.75, 1.75};
        QTest::newRow("no tick in it") << 1.1 << 1.9 << 1.0 << 0.0 << Values{};
        QTest::newRow("point on a tick") << 3.0 << 3.0 << 1.0 << 0.0 << Values{3};
        QTest::newRow("reversed") << 10.0 << 0.0 << 1.0 << 0.0 << Values{};
        QTest::newRow("no spacing") << 0.0 << 1.0 << 0.0 << 0.0 << Values{};
        QTest::newRow("negative spacing") << 0.0 << 1.0 << -1.0 << 0.0 << Values{};
        QTest::newRow("not a number") << NaN << 1.0 << 1.0 << 0.0 << Values{};
        QTest::newRow("infinite") << 0.0 << Infinity << 1.0 << 0.0 << Values{};
        QTest::newRow("too many") << 0.0 << 1E9 << 1E-3 << 0.0 << Values{};
        QTest::newRow("lost in rounding") << 1E17 << 1E17 + 64 << 1.0 << 0.0 << Values{};
        QTest::newRow("huge") << 1E15 << 1E15 + 2 << 1.0 << 0.0 << Values{1E15, 1E15 + 1, 1E15 + 2};
    }
    void placesTicks()
    {
        QFETCH(double, lower);
        QFETCH(double, upper);
        QFETCH(double, spacing);
        QFETCH(double, offset);
        QTEST(tickValues(lower, upper, spacing, offset), "expected");
    }

    void layoutLeavesOutWhatCollides_data()
    {
        QTest::addColumn<Values>("positions");
        QTest::addColumn<double>("extent");
        QTest::addColumn<Values>("starts");
        QTest::newRow("all fit") << Values{20, 50, 80} << 20.0 << Values{10, 40, 70};
        QTest::newRow("moved inwards") << Values{0, 50, 100} << 20.0 << Values{40, 0, 80};
        QTest::newRow("no room to move") << Values{0, 25, 50} << 20.0 << Values{15, 40};
        QTest::newRow("first come") << Values{50, 45, 80} << 20.0 << Values{40, 70};
        QTest::newRow("first come at the end") << Values{4, 0} << 20.0 << Values{0};
        QTest::newRow("longer than the ruler") << Values{50} << 101.0 << Values{};
    }
    void layoutLeavesOutWhatCollides()
    {
        QFETCH(Values, positions);
        QFETCH(double, extent);
        Values starts;
        for (const RulerLabel &label : layoutLabels(labelsAt(positions, extent), 100, 5))
            starts.append(label.start);
        QTEST(starts, "starts");
    }

    void upperEndFollowsScale()
    {
        Ruler ruler;
        ruler.resize(300, 40);
        QVERIFY(ruler.setScale(3));
        QVERIFY(!ruler.setScale(3));
        QVERIFY(ruler.setRange(10, 20));
        QCOMPARE(ruler.lower(), 10.0);
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

        ruler.showRange(49, 51);
        QCOMPARE(ruler.lower(), 45.0);
        QCOMPARE(ruler.upper(), 55.0);

        ruler.setScale(200.0 / 4000);
        ruler.setRange(-2000, 2000);
        QCOMPARE(ruler.scale(), 0.2);
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
        QCOMPARE(ruler.lower(), 0.0);
        QCOMPARE(ruler.upper(), 0.0);
        QCOMPARE(ruler.majorSpacing(), 0.0);
        picture(ruler);
    }

    void wheelKeepsTheValueUnderThePointer_data()
    {
        QTest::addColumn<int>("position");
        QTest::addColumn<int>("units");
        QTest::addColumn<double>("width");
        QTest::newRow("notch in") << int(Ruler::Bottom) << 120 << 100 / 1.25;
        QTest::newRow("notch out") << int(Ruler::Top) << -120 << 100 * 1.25;
        QTest::newRow("touch pad") << int(Ruler::Bottom) << 12 << 100 / std::pow(1.25, 0.1);
        QTest::newRow("vertical") << int(Ruler::Left) << 240 << 100 / 1.5625;
        QTest::newRow("up to the limit") << int(Ruler::Right) << 120 * 50 << 1.0;
        QTest::newRow("out to the limit") << int(Ruler::Bottom) << -120 * 50 << 10000.0;
    }
    void wheelKeepsTheValueUnderThePointer()
    {
        QFETCH(int, position);
        QFETCH(int, units);
        ServedRuler ruler(static_cast<Ruler::Position>(position));
        ruler.resize(400, 400);
        ruler.setRangeLimits(1, 10000);
        ruler.showRange(-20, 80);

        const double value = ruler.pixelToValue(70);
        turnWheel(ruler, {70, 70}, {0, units});
        QVERIFY(std::abs(ruler.pixelToValue(70) - value) < 1E-9);
        QTEST(ruler.upper() - ruler.lower(), "width");
    }

    void draggingPansWithoutDrift()
    {
        ServedRuler ruler;
        ruler.resize(400, 40);
        ruler.showRange(0, 1);
        const double value = ruler.pixelToValue(100);

        QVector<QPointF> way{{100, 10}};
        for (int i = 0; i < 500; ++i)
            way.append({100 + 90 * std::sin(i), 10});
        way.append({333, 10});
        drag(ruler, way, Qt::LeftButton);
        QVERIFY(std::abs(ruler.pixelToValue(333) - value) < 1E-12);
        QVERIFY(std::abs(ruler.upper() - ruler.lower() - 1) < 1E-12);
        QCOMPARE(ruler.cursor().shape(), Qt::OpenHandCursor);

        ServedRuler vertical(Ruler::Left);
        vertical.resize(40, 400);
        vertical.showRange(0, 100);
        drag(vertical, {{10, 100}, {10, 140}}, Qt::LeftButton);
        QCOMPARE(vertical.lower(), 10.0);
    }

    void gesturesAskAndChangeNothing()
    {
        Ruler ruler;
        ruler.resize(400, 40);
        ruler.showRange(0, 100);
        QSignalSpy requests(&ruler, &Ruler::rangeChangeRequested);

        drag(ruler, {{100, 10}, {60, 10}}, Qt::LeftButton);
        turnWheel(ruler, {0, 0}, {0, 120});
        turnWheel(ruler, {0, 0}, {-120, 0});
        QCOMPARE(requests.size(), 3);
        QCOMPARE(requests[0][0].toDouble(), 10.0);
        QCOMPARE(requests[0][1].toDouble(), 110.0);
        QCOMPARE(requests[1][1].toDouble(), 80.0);
        QCOMPARE(requests[2][0].toDouble(), 15.0);
        QCOMPARE(ruler.lower(), 0.0);
        QCOMPARE(ruler.upper(), 100.0);

        ruler.setInteractive(false);
        drag(ruler, {{100, 10}, {60, 10}}, Qt::LeftButton);
        turnWheel(ruler, {0, 0}, {0, 120});
        QCOMPARE(requests.size(), 3);
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

        drag(ruler, {{100, 10}, {200, 10}}, Qt::MiddleButton);
        QVERIFY(changed.isEmpty());

        ruler.setRangeSelectionEnabled(true, true);
        drag(ruler, {{200, 10}, {150, 10}, {100, 10}}, Qt::MiddleButton);
        QCOMPARE(changing.size(), 2);
        QCOMPARE(changed.size(), 1);
        QCOMPARE(last(changed), qMakePair(25.0, 50.0));

        // The upper handle is pulled across the lower one.
        drag(ruler, {{201, 10}, {300, 10}, {40, 10}}, Qt::LeftButton);
        QCOMPARE(last(changed), qMakePair(10.0, 25.0));

        drag(ruler, {{360, 10}, {900, 10}}, Qt::LeftButton, Qt::ShiftModifier);
        QCOMPARE(last(changed), qMakePair(90.0, 100.0));

        drag(ruler, {{20, 10}, {20, 10}}, Qt::LeftButton, Qt::ShiftModifier);
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
        QCOMPARE(intervals.last()[0].toDouble(), ruler.majorSpacing());
        QCOMPARE(intervals.last()[1].toDouble(), ruler.minorSpacing());

        intervals.clear();
        ruler.showRange(1000, 11000);
        QVERIFY(intervals.isEmpty());

        const double before = ruler.majorSpacing();
        ruler.setAutoScaleEnabled(true);
        resizeTo(ruler, 100, 40);
        QVERIFY(ruler.majorSpacing() > before);
        QCOMPARE(intervals.size(), 1);

        ruler.setOffset(3);
        QCOMPARE(intervals.size(), 2);
        QCOMPARE(intervals.last()[2].toDouble(), 3.0);

        resizeTo(ruler, 0, 0);
        QCOMPARE(ruler.majorSpacing(), 0.0);
    }

    void labelsHaveRoomAtAnyZoom()
    {
        const unsigned seed = std::random_device()();
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> exponent(-5, 11);
        std::uniform_real_distribution<double> part(-3, 3);
        std::uniform_int_distribution<int> length(60, 1600);
        Probe<Ruler> ruler;
        for (int i = 0; i < 300; ++i) {
            const double width = std::pow(10, exponent(random));
            const double lower = part(random) * width;
            ruler.resize(length(random), 40);
            ruler.showRange(lower, lower + width);
            const QByteArray what = QStringLiteral("seed %1: %2 from %3 on %4 pixels")
                                        .arg(seed)
                                        .arg(width)
                                        .arg(lower)
                                        .arg(ruler.width())
                                        .toLatin1();
            QVERIFY2(ruler.droppedInside(0) == 0, what);
            const QStringList texts = ruler.texts(0);
            QVERIFY2(QSet<QString>(texts.begin(), texts.end()).size() == texts.size(),
                     what + texts.join(' ').toLatin1());
            QVERIFY2(ruler.majorSpacing() * ruler.scale() >= 10, what);
            const double ratio = ruler.majorSpacing() / ruler.minorSpacing();
            QVERIFY2(std::abs(ratio - std::round(ratio)) < 1E-6, what);
        }
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
