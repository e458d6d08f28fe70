// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/time.h>
#include <tellarix/core/timewindow.h>

#include <QtTest>

#include <cmath>
#include <limits>
#include <random>
#include <tuple>

using namespace Tellarix::Core;

namespace {
constexpr int64_t Highest = std::numeric_limits<int64_t>::max();

TimeWindow window(double start, double end)
{
    return TimeWindow(Time(start), Time(end));
}

/** The plain reference: counts days year by year and month by month. */
int64_t countedDays(int year, int month, int day)
{
    const auto leap = [](int y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; };
    const int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int64_t days = day - 1;
    for (int y = 1970; y < year; ++y)
        days += leap(y) ? 366 : 365;
    for (int y = year; y < 1970; ++y)
        days -= leap(y) ? 366 : 365;
    for (int m = 1; m < month; ++m)
        days += lengths[m - 1] + (m == 2 && leap(year) ? 1 : 0);
    return days;
}

} // namespace

class TimeTest : public QObject
{
    Q_OBJECT

private slots:
    void knownTimes()
    {
        const std::tuple<Time, qint64, int, std::string> rows[] = {
            {Time(1970, 1, 1), 0, 1, "1970-01-01T00:00:00.000000Z"},
            {Time(1969, 12, 31, 23, 59, 59, 999999), -1, 365, "1969-12-31T23:59:59.999999Z"},
            {Time(2016, 12, 31, 23, 59, 60), 1483228800000000, 1, "2017-01-01T00:00:00.000000Z"},
            {Time(1, 1, 1), -62135596800000000, 1, "0001-01-01T00:00:00.000000Z"},
            {Time(-1, 12, 31), -62167305600000000, 365, "-0001-12-31T00:00:00.000000Z"},
        };
        for (const auto &[time, usecs, dayOfYear, iso] : rows) {
            QCOMPARE(qint64(time.usecs()), usecs);
            QCOMPARE(time.fields().dayOfYear, dayOfYear);
            QCOMPARE(time.iso(), iso);
            QCOMPARE(Time::FromString(iso), time);
        }
    }

    void agreesWithCountedDays()
    {
        for (int year = 1560; year <= 2420; ++year) {
            for (int month = 1; month <= 12; ++month) {
                for (int day : {1, 17, 28}) {
                    const Time time(year, month, day);
                    QCOMPARE(time.seconds(), countedDays(year, month, day) * 86400);
                    const TimeFields fields = time.fields();
                    QCOMPARE(fields.year, year);
                    QCOMPARE(fields.month, month);
                    QCOMPARE(fields.day, day);
                    QCOMPARE(Time::FromDayOfYear(year, fields.dayOfYear), time);
                }
            }
        }
    }

    void randomTimesSurviveTheirTexts()
    {
        const unsigned seed = std::random_device{}();
        qInfo("seed %u", seed);
        std::mt19937_64 generator(seed);
        std::uniform_int_distribution<int64_t> usecs(-Highest, Highest);
        for (int i = 0; i < 20000; ++i) {
            // Every second time is of the years that records come from.
            const Time time = Time::FromUSecs(i % 2 ? usecs(generator) : usecs(generator) / 4000);
            QCOMPARE(Time::FromString(time.iso()).usecs(), time.usecs());
            const TimeFields fields = time.fields();
            if (fields.year < 1000 || fields.year > 9999)
                continue;
            for (const char *format : {"%Y-%m-%d %H:%M:%S.%f", "%Y,%j,%T.%f", "%s.%f",
                                       "%f %p %I %j %a %Y %M %S", "%d %h %Y %X %z %Z:%f"})
                QCOMPARE(Time::FromString(time.toString(format), format).iso(), time.iso());
        }
    }

    void rejectsFieldsOutOfRange()
    {
        const Time times[] = {Time(1900, 2, 29),
                              Time(2024, 4, 31),
                              Time(2024, 13, 1),
                              Time(2024, 1, 0),
                              Time(2024, 1, 1, 24),
                              Time(2024, 1, 1, 0, -1),
                              Time(2024, 1, 1, 0, 0, 61),
                              Time(2024, 1, 1, 0, 0, 0, 1000000),
                              Time::FromDayOfYear(2023, 366),
                              Time(300000, 1, 1),
                              Time(std::numeric_limits<int>::min(), 1, 1),
                              Time(std::nan(""))};
        for (const Time &time : times)
            QCOMPARE(time.iso(), std::string());
    }

    void readsIsoTexts()
    {
        const std::pair<const char *, Time> rows[] = {
            {"2024", Time(2024, 1, 1)},
            {"2024-03", Time(2024, 3, 1)},
            {" 2024-01-05\n", Time(2024, 1, 5)},
            {"2024-01-05 10:11:12", Time(2024, 1, 5, 10, 11, 12)},
            {"2024-01-05T10:11:12.999999999Z", Time(2024, 1, 5, 10, 11, 12, 999999)},
            {"2024-060T01:02:03.25Z", Time(2024, 2, 29, 1, 2, 3, 250000)},
            {"2016-12-31T23:59:60.5Z", Time(2017, 1, 1, 0, 0, 0, 500000)},
            {"2024-01-05T10:11:12+02:00", Time(2024, 1, 5, 8, 11, 12)},
            {"2024-12-31T22:11:12-0330", Time(2025, 1, 1, 1, 41, 12)}};
        for (const auto &[text, time] : rows)
            QCOMPARE(Time::FromString(text).iso(), time.iso());
    }

    void rejectsOtherTexts()
    {
        Time time(2024, 1, 5);
        for (const char *text :
             {"", "now", "24-01-05", "2024-", "2024-13-01", "2024-02-30", "2024-366-1", "2023-366",
              "2024-01-05T", "2024-01-05T10:11:12.", "2024-01-05T25:00:00",
              "2024-01-05T10:11:12Zulu", "2024-01-05T10:11:12+2", "2024-01-05T10:11:12+24:00",
              "2024-01-05T-1:00"})
            QVERIFY2(!time.fromString(text), text);
        QVERIFY(!time.fromString(std::string("2024-01-05\0Z", 12)));
        QVERIFY(!time.fromString("05.13.2024", "%d.%m.%Y"));
        QCOMPARE(time, Time(2024, 1, 5));
    }

    void readsByFormat()
    {
        const std::tuple<const char *, const char *, const char *> rows[] = {
            {"2024.060.235959", "%Y.%j.%H%M%S", "2024-02-29T23:59:59.000000Z"},
            {"5 Mar 1964 3:36", "%d %b %Y %H:%M", "1964-03-05T03:36:00.000000Z"},
            {"-1.25", "%s.%f", "1969-12-31T23:59:59.250000Z"},
            {"100% 12:30", "100%% %H:%M", "1970-01-01T12:30:00.000000Z"},
            {"2024-01-05 10:00 +0100", "%Y-%m-%d %H:%M %z", "2024-01-05T09:00:00.000000Z"},
            {"2024-01-05 behind", "%Y-%m-%d", ""},
            {"12:05 AM .5", "%I:%M %p .%f", "1970-01-01T00:05:00.500000Z"},
            {"pm.25 03:04", "%p.%f %l:%M", "1970-01-01T15:04:00.250000Z"},
            {"060 .5 24", "%j .%f %y", "2024-02-29T00:00:00.500000Z"},
            {"366 1970", "%j %Y", ""},
            {"2024-02-29 061", "%F %j", ""},
            {"Fri Jan  5 01:02:03 2024", "%c", "2024-01-05T01:02:03.000000Z"},
            {"Thu Jan  5 01:02:03 2024", "%c", ""},
            {"SATURDAY december 31 2016 23:59:60", "%A %B %e %Y %T", "2017-01-01T00:00:00.000000Z"},
            {"15 03 PM", "%H %I %p", "1970-01-01T15:00:00.000000Z"},
            {"15 03 AM", "%H %I %p", ""},
            {"15 PM", "%H %p", "1970-01-01T15:00:00.000000Z"},
            {"13 PM", "%I %p", ""},
            {"2024 23", "%Y %y", ""},
            {"86400 2 1970", "%s %d %Y", "1970-01-02T00:00:00.000000Z"},
            {"86400 1971", "%s %Y", ""},
            {"12:00 GMT", "%H:%M %Z", "1970-01-01T12:00:00.000000Z"},
            {"12:00 CET", "%H:%M %Z", ""},
            {"20 24", "%C %y", ""}, // nothing but what counts is taken
            {"2024 09 1", "%Y %W %w", ""},
            {"9999999999999", "%s", ""},
            {"12", "%H%", ""},
            {"10:11:12.x", "%H:%M:%S.%f", ""}};
        for (const auto &[text, format, iso] : rows)
            QCOMPARE(Time::FromString(text, format).iso(), std::string(iso));
    }

    void writesByFormat()
    {
        const Time time(2024, 2, 29, 13, 5, 9, 987654);
        QCOMPARE(time.toString("%F %H:%M:%S.%1f %6f"), std::string("2024-02-29 13:05:09.9 987654"));
        QCOMPARE(time.toString("%a %A %d %b %B %y %I %p"),
                 std::string("Thu Thursday 29 Feb February 24 01 PM"));
        QCOMPARE(time.toString("%j %Z %z %%f %f%%"), std::string("060 UTC +0000 %f 987654%"));
        QCOMPARE(Time(1969, 7, 20, 20, 17, 40, 250000).toString("%a %s.%f"),
                 std::string("Sun -14182940.250000"));
        QCOMPARE(Time().toString("%Y"), std::string());
    }

    void invalidTimeIsLowestAndCountsAsEpoch()
    {
        QVERIFY(Time() < Time::FromUSecs(-Highest));
        QVERIFY(Time() != Time::FromUSecs(0));
        QVERIFY(qHash(Time()) != qHash(Time::FromUSecs(0)));
        QCOMPARE(Time() + TimeSpan(2.5), Time(2.5));
        QCOMPARE(Time(7.5) - Time(), TimeSpan(7.5));
    }

    void roundsSecondsAndStopsAtTheEnds()
    {
        const double infinite = std::numeric_limits<double>::infinity();
        QCOMPARE(Time(1704449472.345678).usecs(), int64_t(1704449472345678));
        QCOMPARE(TimeSpan(-0.0000015).usecs(), int64_t(-2));
        QCOMPARE(TimeSpan(std::nan("")).usecs(), int64_t(0));
        QCOMPARE(Time(-infinite).usecs(), -Highest);
        QCOMPARE(Time::FromUSecs(Highest - 5) + TimeSpan(1), Time::FromUSecs(Highest));
        QCOMPARE(Time::FromUSecs(5 - Highest) - TimeSpan(1), Time::FromUSecs(-Highest));
        QCOMPARE(Time::FromUSecs(Highest) - Time::FromUSecs(-Highest),
                 TimeSpan::FromUSecs(Highest));
        const std::tuple<int64_t, int64_t, int64_t> spans[] = {
            {2, 250000, 2250000},
            {-2, -250000, -2250000},
            {-1, 250000, -750000},
            {3, -3500000, -500000},
            {Highest, Highest, Highest},
            {-Highest, 0, -Highest},
            {Highest / 1000000 + 1, -500000, Highest - 275807}};
        for (const auto &[seconds, microseconds, usecs] : spans)
            QCOMPARE(TimeSpan(seconds, microseconds).usecs(), usecs);
        const TimeSpan lowest = TimeSpan::FromUSecs(std::numeric_limits<int64_t>::min());
        QCOMPARE(-lowest, TimeSpan::FromUSecs(Highest));
        QCOMPARE((lowest + lowest).usecs(), -Highest);
    }

    void holdsTheEndsOfItsRange()
    {
        const Time first = Time::FromUSecs(-Highest);
        const Time last = Time::FromUSecs(Highest);
        const std::string firstText = "-290308-12-21T19:59:05.224193Z";
        const std::string lastText = "294247-01-10T04:00:54.775807Z";
        QCOMPARE(first.iso(), firstText);
        QCOMPARE(last.iso(), lastText);
        for (const Time &time : {first, last}) {
            QCOMPARE(Time::FromString(time.iso()).usecs(), time.usecs());
            QCOMPARE(Time::FromString(time.toString("%s.%f"), "%s.%f").usecs(), time.usecs());
            QCOMPARE(Time(time.fields()), time);
        }
        QCOMPARE(first.toString("%a %j %s"), std::string("Sun 356 -9223372036855"));
        QCOMPARE(Time::FromString("294247-01-10T04:00:54.775808Z"), Time());
        QCOMPARE(Time::FromString("-290308-12-21T19:59:05.224192Z"), Time());
        QCOMPARE(Time::FromString("294247-01-10T04:00:54-01:00"), last);
        QVERIFY(Time(first).setUSecs(0) < Time(first).setUSecs(999999));

        const TimeWindow all(first, last);
        QCOMPARE(all.length(), TimeSpan::FromUSecs(Highest));
        QCOMPARE(TimeWindow(last, first).length(), -TimeSpan::FromUSecs(Highest));
        QCOMPARE(TimeWindow(Time(2024, 1, 1), TimeSpan(1E300)).endTime(), last);
        QVERIFY(all.contains(first) && !all.contains(last) && all.contains(all));
        QVERIFY(all.overlaps(window(0, 1)) && !all.overlaps(TimeWindow(last, last)));
        QCOMPARE(all.overlap(TimeWindow(first, TimeSpan(5))).length(), TimeSpan(5));
    }

    void windows()
    {
        QVERIFY(window(0, 10).contains(Time(0.0)));
        QVERIFY(!window(0, 10).contains(Time(10.0)));
        QVERIFY(window(0, 10).contains(window(0, 10)));
        QVERIFY(!window(0, 10).contains(window(5, 10.000001)));
        QVERIFY(!window(0, 10).overlaps(window(10, 20)));
        QVERIFY(TimeWindow(Time(), Time(10.0)).isEmpty());

        QCOMPARE(window(0, 10).overlap(window(4, 20)), window(4, 10));
        QCOMPARE(window(0, 10).overlap(window(10, 20)), TimeWindow());
        QCOMPARE(window(0, 10).united(window(15, 20)), window(0, 20));
        QCOMPARE(TimeWindow().united(window(15, 20)), window(15, 20));
    }
};

QTEST_APPLESS_MAIN(TimeTest)
#include "tst_time.moc"
