// SPDX-License-Identifier: LGPL-3.0-or-later

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
    void roundsTimeDistances()
    {
        const double cases[][3] = {
            {1E-9, 1E-6, 1E-6},    {0.0015, 0.002, 0.0005},         {0.7, 1, 0.2}, {11, 15, 5},
            {50000, Day, Day / 4}, {60 * Day, 100 * Day, 20 * Day}, {0, 0, 0}};
        for (const auto &[distance, major, minor] : cases) {
            double foundMajor = -1;
            double foundMinor = -1;
            roundTimeDistance(distance, foundMajor, foundMinor);
            QCOMPARE(foundMajor, major);
            QCOMPARE(foundMinor, minor);
        }
    }

    void writesSpans()
    {
        const struct
        {
            double seconds, spacing;
            const char *text;
        } cases[] = {
            {0, 10, "0s"},
            {-30, 10, "-30s"},
            {-0.02, 0.005, "-0.020s"},
            {-61.25, 0.05, "-1:01.25"},
            {59.9999, 0.5, "+1:00.0"}, // carried over
            {2 * Day + 3 * 3600, 3600, "+2d 03:00"},
            {10 * Day, Day, "+10d"},
            {std::numeric_limits<double>::infinity(), 1, ""},
        };
        for (const auto &item : cases)
            QCOMPARE(timeSpanText(item.seconds, item.spacing), QString(item.text));
    }

    void labelsAbsoluteTimes()
    {
        const struct
        {
            const char *alignment;
            double lower, upper, spacing;
            QString times, dates;
        } cases[] = {
            {"2024-01-05T10:11:12.345678Z", -0.0005, 0.0005, 0.0005, "10:11:12.3455 10:11:12.3460",
             "2024-01-05"},
            {"2023-12-31T22:00:00Z", 0, 4 * 3600.0, 3600, "23:00 00:00 01:00 22:00 02:00",
             "2024-01-01 2023-12-31"},
            {"2024-02-27T12:00:00Z", 0, 4 * Day, Day, "2024-02-28 2024-02-29 2024-03-01 2024-03-02",
             ""},
            {"2021-05-01T00:00:00Z", -900 * Day, 900 * Day, 2 * 365.2425 * Day, "2020 2022", ""},
            {"1969-12-31T23:59:50Z", -5, 12, 5, "23:59:50 23:59:55 00:00:00 23:59:45",
             "1970-01-01 1969-12-31"}};
        for (const auto &item : cases) {
            Scale scale(item.alignment, 0, 1, 2000);
            scale.fixedSpacing = item.spacing;
            scale.showRange(item.lower, item.upper);
            QCOMPARE(scale.texts(0).join(' '), item.times);
            QCOMPARE(scale.texts(1).join(' '), item.dates);
        }
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
            const QByteArray what = describe(seed, scale);
            const QVector<double> ticks =
                tickValues(scale.lower(), scale.upper(), scale.majorSpacing(), scale.offset());
            QVERIFY2(!ticks.isEmpty(), what);
            for (const double tick : ticks) {
                const Core::Time time = scale.timeAt(tick);
                const int day = (time + Core::TimeSpan(2 * Day)).fields().dayOfYear;
                QVERIFY2(spacing > 300 * Day * 1E6 ? day <= 4 : time.usecs() % spacing == 0, what);
            }
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
            const QByteArray what = describe(seed, scale);
            for (int line = 0; line < scale.lineCount(); ++line) {
                QVERIFY2(scale.droppedInside(line) == 0, what);
                const QVector<RulerLabel> labels = scale.labels(line);
                for (int k = 1; k < labels.size(); ++k)
                    QVERIFY2(labels[k].text != labels[k - 1].text, what);
            }
        }
    }

    void showsLocalTimeBesideUtc()
    {
        qputenv("TZ", "EST5EDT");
        tzset();
        Scale scale("2024-07-05T10:00:00Z", -10, 3610);
        scale.setLocalTimeShown(true);
        QVERIFY2(scale.texts(2).contains("07-05 06:30 EDT"), qPrintable(scale.texts(2).join(' ')));

        scale.setAlignment(time("2024-01-05T10:00:00Z"));
        QVERIFY2(scale.texts(2).contains("01-05 05:30 EST"), qPrintable(scale.texts(2).join(' ')));
        qunsetenv("TZ");
        tzset();
    }
};

QTEST_MAIN(TimeScaleTest)
#include "tst_timescale.moc"
