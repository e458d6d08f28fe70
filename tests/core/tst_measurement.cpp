// SPDX-License-Identifier: LGPL-3.0-or-later

#include "recordtesting.h"

#include <tellarix/core/records/measurement.h>
#include <tellarix/core/records/ringbuffer.h>

#include <QtTest>

using namespace RecordTesting;

namespace {
constexpr double Pi = 3.14159265358979323846;

/** A record of doubles at 100 Hz; @p function gives the sample at a time in seconds. */
template <typename Function>
RecordCPtr sampled(double start, double seconds, Function function)
{
    std::vector<double> samples;
    for (int i = 0; i < std::lround(seconds * 100); ++i)
        samples.push_back(function(start + i / 100.0));
    return makeRecord(at(start), 100, arrayOf(samples));
}

RecordCPtr constant(double start, double seconds, double value)
{
    return sampled(start, seconds, [value](double) { return value; });
}

bool isClose(double actual, double expected, double relative = 1E-9)
{
    return std::abs(actual - expected) <= relative * std::max(1.0, std::abs(expected));
}

} // namespace

class MeasurementTest : public QObject
{
    Q_OBJECT

private slots:
    /** 3 sin(2 pi t) + 5 over four whole periods, in two records. */
    void measuresSine()
    {
        const double scale = -2;
        const auto sine = [](double t) { return 3 * std::sin(2 * Pi * t) + 5; };
        RingBuffer records(0);
        records.feed(sampled(0, 5, sine).get());
        records.feed(sampled(5, 5, sine).get());

        const Measurement result = measure(records, window(2, 6), scale);
        QCOMPARE(result.count, int64_t(400));
        QCOMPARE(result.span.length(), 4.0);
        QCOMPARE(result.frequency, 0.25);
        QVERIFY(isClose(result.minimum, 8 * scale));
        QVERIFY(isClose(result.maximum, 2 * scale));
        QVERIFY(isClose(result.peakToPeak, 6 * std::abs(scale)));
        QVERIFY(isClose(result.mean, 5 * scale));
        QVERIFY(isClose(result.rms, std::abs(scale) * 3 / std::sqrt(2.0)));
        QVERIFY(!result.hasGap);
    }

    void rmsSurvivesLargeOffset()
    {
        RingBuffer records(0);
        records.feed(sampled(0, 100, [](double t) { return 1E9 + std::sin(2 * Pi * t); }).get());
        QVERIFY(isClose(measure(records, window(0, 100)).rms, std::sqrt(0.5), 1E-6));
        records.clear();
        records.feed(constant(0, 100, 1E9).get());
        QCOMPARE(measure(records, window(0, 100)).rms, 0.0);
        QCOMPARE(measure(records, window(2, 1)).count, int64_t(0));
        QCOMPARE(measure(records, window(1, 1)).frequency, 0.0);
    }

    void tellsOfGaps()
    {
        RingBuffer records(0);
        for (const double begin : {0.0, 10.0, 30.0})
            records.feed(constant(begin, 10, 7).get());
        const struct
        {
            double start, end;
            bool hasGap;
            int count;
        } rows[] = {{5, 20.004, false, 1500}, {5, 20.1, true, 1500}, {15, 35, true, 1000},
                    {22, 23, true, 0},        {-1, 5, true, 500},    {35, 41, true, 500},
                    {100, 200, true, 0}};
        for (const auto &row : rows) {
            const Measurement result = measure(records, window(row.start, row.end));
            QCOMPARE(result.hasGap, row.hasGap);
            QCOMPARE(result.count, int64_t(row.count));
            QCOMPARE(result.mean, row.count ? 7.0 : 0.0);
            QCOMPARE(result.span.length(), row.end - row.start);
        }
    }

    /** Records of all lengths, overlaps and oddities against sums over all samples. */
    void agreesWithPlainSums()
    {
        std::mt19937 random(7);
        RingBuffer records(0);
        for (int i = 0; i < 40; ++i) {
            const int samples = 1 + int(random() % 20000);
            records.feed(
                makeRecord(at(i * 100), 100, arrayOf(randomSamples<double>(random, samples, 50)))
                    .get());
        }
        for (int i = 0; i < 50; ++i) {
            const double start = double(random() % 400000) / 100;
            const Core::TimeWindow part = window(start, start + double(random() % 30000) / 100);
            long double sum = 0, squares = 0;
            int64_t count = 0;
            for (const RecordCPtr &record : records) {
                for (int k = 0; k < record->sampleCount(); ++k) {
                    const double value = record->data()->value(k);
                    if (!part.contains(record->sampleTime(k)) || !std::isfinite(value))
                        continue;
                    sum += value;
                    squares += static_cast<long double>(value) * value;
                    ++count;
                }
            }
            const Measurement result = measure(records, part);
            QCOMPARE(result.count, count);
            if (count == 0)
                continue;
            const long double mean = sum / count;
            QVERIFY(isClose(result.mean, double(mean)));
            QVERIFY(isClose(result.rms, double(std::sqrt(squares / count - mean * mean)), 1E-7));
        }
    }
};

QTEST_APPLESS_MAIN(MeasurementTest)
#include "tst_measurement.moc"
