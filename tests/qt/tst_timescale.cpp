#include "rulertestutils.h"

#include <tellarix/qt/records/timescale.h>

#include <QtTest>

#include <cmath>
#include <ctime>
#include <limits>
#include <random>

using namespace Tellarix;
using namespace Tellarix::Gui;
using namespace TestUtils;

namespace {

constexpr double Day = 86400;

Core::Time time(const char *text)
{
    return Core::Time::FromString(text);
}

struct Scale : Probe<TimeScale>
{
    double fixedSpacing{0}; // so that what is labelled does not depend on fonts

    Scale(const char *alignment, double lower, double upper, int width = 800)
    {
        resize(width, 60);
        setAbsoluteTimeEnabled(true, true);
        setAlignment(time(alignment));
        showRange(lower, upper);
    }

    void chooseSpacing(double minimumPixels, double &major, double &minor) const override
    {
        TimeScale::chooseSpacing(minimumPixels, major, minor);
        if (fixedSpacing > 0)
            major = minor = fixedSpacing;
    }
};

} // namespace

class TimeScaleTest : public QObject
{
    Q_OBJECT

private slots:
    void roundsTimeDistances_data()
    {
        QTest::addColumn<double>("distance");
        QTest::addColumn<double>("major");
        QTest::addColumn<double>("minor");
        QTest::newRow("below a microsecond") << 1E-9 << 1E-6 << 1E-6;
        QTest::newRow("milliseconds") << 0.0015 << 0.002 << 0.0005;
        QTest::newRow("half a second") << 0.4 << 0.5 << 0.1;
        QTest::newRow("nearly a second") << 0.7 << 1.0 << 0.2;
        QTest::newRow("quarter of a minute") << 11.0 << 15.0 << 5.0;
        QTest::newRow("minute") << 31.0 << 60.0 << 10.0;
        QTest::newRow("half an hour") << 901.0 << 1800.0 << 600.0;
        QTest::newRow("six hours") << 4 * 3600.0 << 6 * 3600.0 << 3600.0;
        QTest::newRow("day") << 50000.0 << Day << 6 * 3600.0;
        QTest::newRow("two days") << 1.5 * Day << 2 * Day << 0.5 * Day;
        QTest::newRow("hundred days") << 60 * Day << 100 * Day << 20 * Day;
        QTest::newRow("nothing") << 0.0 << 0.0 << 0.0;
        QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << 0.0 << 0.0;
    }
    void roundsTimeDistances()
    {
        QFETCH(double, distance);
        double major = -1;
        double minor = -1;
        roundTimeDistance(distance, major, minor);
        QTEST(major, "major");
        QTEST(minor, "minor");
    }

    void stepsDivideEachOther()
    {
        for (double distance = 1E-6; distance < 1E12; distance *= 1.05) {
            double major = 0;
            double minor = 0;
            roundTimeDistance(distance, major, minor);
            QVERIFY(major >= distance * 0.999999 && major <= distance * 2.6);
            const double parts = major / minor;
            QVERIFY(std::abs(parts - std::round(parts)) < 1E-6);
            const double steps = major > Day ? major / Day : Day / major;
            QVERIFY2(std::abs(steps / std::round(steps) - 1) < 1E-9, QByteArray::number(major));
        }
    }

    void writesSpans_data()
    {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<double>("spacing");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero") << 0.0 << 10.0 << "0s";
        QTest::newRow("rounded to zero") << -1E-9 << 0.1 << "0s";
        QTest::newRow("seconds") << -30.0 << 10.0 << "-30s";
        QTest::newRow("decimals") << 1.5 << 0.5 << "+1.5s";
        QTest::newRow("milliseconds") << -0.02 << 0.005 << "-0.020s";
        QTest::newRow("microseconds") << 0.000002 << 0.000001 << "+0.000002s";
        QTest::newRow("minutes") << 90.0 << 30.0 << "+1:30";
        QTest::newRow("minutes, decimals") << -61.25 << 0.05 << "-1:01.25";
        QTest::newRow("carried over") << 59.9999 << 0.5 << "+1:00.0";
        QTest::newRow("hours") << 3900.0 << 300.0 << "+1:05:00";
        QTest::newRow("days and hours") << 2 * Day + 3 * 3600 << 3600.0 << "+2d 03:00";
        QTest::newRow("days and seconds") << -Day - 61 << 1.0 << "-1d 00:01:01";
        QTest::newRow("whole days") << 10 * Day << Day << "+10d";
        QTest::newRow("beyond clocks") << 1E15 << 1E14 << "1.15741e+10d";
        QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << 1.0 << "";
    }
    void writesSpans()
    {
        QFETCH(double, seconds);
        QFETCH(double, spacing);
        QTEST(timeSpanText(seconds, spacing), "text");
    }

    void labelsAbsoluteTimes_data()
    {
        QTest::addColumn<QByteArray>("alignment");
        QTest::addColumn<double>("lower");
        QTest::addColumn<double>("upper");
        QTest::addColumn<double>("spacing");
        QTest::addColumn<QStringList>("times");
        QTest::addColumn<QStringList>("dates");
        QTest::newRow("half a minute off")
            << QByteArray("2024-01-05T10:11:12.5Z") << -12.5 << 17.4 << 10.0
            << QStringList{"10:11:10", "10:11:20", "10:11:00"} << QStringList{"2024-01-05"};
        QTest::newRow("millisecond")
            << QByteArray("2024-01-05T10:11:12.345678Z") << -0.0005 << 0.0005 << 0.0005
            << QStringList{"10:11:12.3455", "10:11:12.3460"} << QStringList{"2024-01-05"};
        QTest::newRow("across midnight")
            << QByteArray("2023-12-31T22:00:00Z") << 0.0 << 4 * 3600.0 << 3600.0
            << QStringList{"23:00", "00:00", "01:00", "22:00", "02:00"}
            << QStringList{"2024-01-01", "2023-12-31"};
        QTest::newRow("midnight near the left edge")
            << QByteArray("2024-02-29T23:59:30Z") << 0.0 << 3600.0 << 900.0
            << QStringList{"00:15", "00:30", "00:45", "00:00"} << QStringList{"2024-03-01"};
        QTest::newRow("days") << QByteArray("2024-02-27T12:00:00Z") << 0.0 << 4 * Day << Day
                              << QStringList{"2024-02-28", "2024-02-29", "2024-03-01", "2024-03-02"}
                              << QStringList{};
        QTest::newRow("before 1970") << QByteArray("1969-12-31T23:59:50Z") << -5.0 << 12.0 << 5.0
                                     << QStringList{"23:59:50", "23:59:55", "00:00:00", "23:59:45"}
                                     << QStringList{"1970-01-01", "1969-12-31"};
    }
    void labelsAbsoluteTimes()
    {
        QFETCH(QByteArray, alignment);
        QFETCH(double, lower);
        QFETCH(double, upper);
        QFETCH(double, spacing);
        Scale scale(alignment, 0, 1, 2000);
        scale.fixedSpacing = spacing;
        scale.showRange(lower, upper);
        QTEST(scale.texts(0), "times");
        QTEST(scale.texts(1), "dates");
    }

    void ticksStandAtRoundMicroseconds()
    {
        const unsigned seed = std::random_device()();
        std::mt19937_64 random(seed);
        std::uniform_int_distribution<int64_t> instant(-1000000000000000, 4000000000000000);
        std::uniform_real_distribution<double> exponent(-3, 8.5);
        for (int i = 0; i < 300; ++i) {
            Scale scale("1970-01-01", 0, 1);
            scale.setAlignment(Core::Time::FromUSecs(instant(random)));
            const double width = std::pow(10, exponent(random));
            scale.showRange(-0.3 * width, 0.7 * width);

            const auto spacing = static_cast<int64_t>(std::llround(scale.majorSpacing() * 1E6));
            const QByteArray what =
                QStringLiteral("seed %1, width %2").arg(seed).arg(width).toLatin1();
            const QVector<double> ticks =
                tickValues(scale.lower(), scale.upper(), scale.majorSpacing(), scale.offset());
            QVERIFY2(!ticks.isEmpty(), what);
            for (const double tick : ticks)
                QVERIFY2(scale.timeAt(tick).usecs() % spacing == 0, what);
        }
    }

    void labelsHaveRoomAtAnyZoom()
    {
        const unsigned seed = std::random_device()();
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> exponent(-4, 10);
        std::uniform_real_distribution<double> part(-3, 1);
        std::uniform_int_distribution<int> length(100, 1600);
        for (int i = 0; i < 400; ++i) {
            const double width = std::pow(10, exponent(random));
            const double lower = part(random) * width;
            Scale scale("2024-01-05T10:11:12.345678Z", lower, lower + width, length(random));
            scale.setAbsoluteTimeEnabled(i % 2 == 0, true);
            scale.setLocalTimeShown(i % 4 == 0);
            const QByteArray what = QStringLiteral("seed %1: %2 from %3 on %4 pixels")
                                        .arg(seed)
                                        .arg(width)
                                        .arg(lower)
                                        .arg(scale.width())
                                        .toLatin1();
            for (int line = 0; line < scale.lineCount(); ++line) {
                QVERIFY2(scale.droppedInside(line) == 0, what);
                const QVector<RulerLabel> labels = scale.labels(line);
                for (int k = 1; k < labels.size(); ++k)
                    QVERIFY2(labels[k].text != labels[k - 1].text, what);
            }
        }
    }

    void offsetFollowsAlignment()
    {
        Scale scale("2024-01-05T00:00:00Z", 0, 600);
        QSignalSpy intervals(&scale, &Ruler::changedInterval);
        scale.setAlignment(time("2024-01-05T10:11:12.5Z"));
        QCOMPARE(intervals.size(), 1);
        QCOMPARE(intervals.last()[2].toDouble(), 36672.5);

        scale.setAbsoluteTimeEnabled(false);
        QCOMPARE(scale.offset(), 0.0);
        QCOMPARE(scale.texts(0).mid(0, 2), QStringList({"+2:00", "+4:00"}));
    }

    void showsLocalTimeBesideUtc()
    {
        qputenv("TZ", "EST5EDT");
        tzset();
        Scale scale("2024-07-05T10:00:00Z", -10, 3610);
        const int lines = scale.lineCount();
        scale.setLocalTimeShown(true);
        QCOMPARE(scale.lineCount(), lines + 1);
        QVERIFY(scale.texts(0).contains("10:30"));
        QVERIFY2(scale.texts(2).contains("06:30 EDT"), qPrintable(scale.texts(2).join(' ')));

        scale.setAlignment(time("2024-01-05T10:00:00Z"));
        QVERIFY2(scale.texts(2).contains("05:30 EST"), qPrintable(scale.texts(2).join(' ')));
        qunsetenv("TZ");
        tzset();
    }
};

QTEST_MAIN(TimeScaleTest)
#include "tst_timescale.moc"
