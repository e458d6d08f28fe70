// SPDX-License-Identifier: LGPL-3.0-or-later

#include "recordtesting.h"

#include <tellarix/core/records/cut.h>
#include <tellarix/core/records/measurement.h>
#include <tellarix/core/records/ringbuffer.h>

#include <QtTest>

#include <cstring>
#include <tuple>

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

/** Start in seconds, first sample and number of samples of each record, e.g. "0: 3 +2". */
QStringList described(const std::vector<RecordCPtr> &records)
{
    QStringList texts;
    for (const RecordCPtr &record : records) {
        texts.append(QString("%1: %2 +%3")
                         .arg((record->startTime() - at(0)).length())
                         .arg(record->data()->value(0))
                         .arg(record->sampleCount()));
    }
    return texts;
}

QList<int> sizesOf(const std::vector<RecordStretch> &stretches)
{
    QList<int> sizes;
    for (const RecordStretch &stretch : stretches)
        sizes.append(joinedRecord(stretch)->sampleCount());
    return sizes;
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
        const std::tuple<double, double, bool, int> rows[] = {
            {5, 20.004, false, 1500}, {5, 20.1, true, 1500}, {15, 35, true, 1000},
            {22, 23, true, 0},        {-1, 5, true, 500},    {35, 41, true, 500},
            {100, 200, true, 0}};
        for (const auto &[start, end, hasGap, count] : rows) {
            const Measurement result = measure(records, window(start, end));
            QCOMPARE(result.hasGap, hasGap);
            QCOMPARE(result.count, int64_t(count));
            QCOMPARE(result.mean, count ? 7.0 : 0.0);
            QCOMPARE(result.span.length(), end - start);
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

    void cutsToSamples()
    {
        // Samples at 0 ... 9, a gap, 20 ... 29, and 25 ... 34 over them.
        const std::tuple<double, double, QStringList> rows[] = {
            {-10, 100, {"0: 0 +10", "20: 0 +10", "25: 0 +10"}},
            {2, 5, {"2: 2 +3"}},
            {2.000001, 5.000001, {"3: 3 +3"}},
            {2.1, 2.9, {}},
            {9.5, 20, {}},
            {9, 20, {"9: 9 +1"}},
            {8, 22, {"8: 8 +2", "20: 0 +2"}},
            {27, 28, {"27: 7 +1", "27: 2 +1"}},
            {8, 2, {}}};
        RingBuffer records(-1);
        for (const double first : {0.0, 20.0, 25.0})
            QVERIFY(records.feed(ramp(first, 10).get()));
        for (const auto &[start, end, cut] : rows)
            QCOMPARE(described(cutRecords(records, window(start, end))), cut);
        QVERIFY(cutRecords(records, Core::TimeWindow()).empty());
        // Whole records are shared.
        QVERIFY(cutRecords(records, window(0, 10)).at(0) == records.front());
    }

    void keepsSamplesBitByBit()
    {
        // A number that is none, with a payload of its own, and one beyond single precision.
        const uint64_t bits = 0x7ff8000000abcdefULL;
        double odd;
        std::memcpy(&odd, &bits, sizeof odd);
        const std::vector<double> samples{1.0 / 3.0, odd, Infinity, -0.0, 1E300, 5.0};
        RingBuffer records(-1);
        QVERIFY(records.feed(makeRecord(at(0), 1, arrayOf(samples)).get()));
        QVERIFY(records.feed(makeRecord(at(6), 1, arrayOf(samples)).get()));

        const auto cut = cutRecords(records, window(1, 11));
        QCOMPARE(cut.size(), size_t(2));
        QCOMPARE(cut[0]->dataType(), DataType::Double);
        QCOMPARE(std::memcmp(cut[0]->data()->data(), &samples[1], 5 * sizeof(double)), 0);

        const auto stretches = gaplessStretches(cut);
        QCOMPARE(stretches.size(), size_t(1));
        const RecordCPtr joined = joinedRecord(stretches[0]);
        QCOMPARE(joined->startTime(), at(1));
        QCOMPARE(joined->sampleCount(), 10);
        const auto *values = static_cast<const double *>(joined->data()->data());
        QCOMPARE(std::memcmp(values, &samples[1], 5 * sizeof(double)), 0);
        QCOMPARE(std::memcmp(values + 5, &samples[0], 5 * sizeof(double)), 0);
    }

    void dividesAtGapsAndOverlaps()
    {
        QCOMPARE(sizesOf(gaplessStretches({})), QList<int>());
        QCOMPARE(sizesOf(gaplessStretches({ramp(0, 10), ramp(10, 5), ramp(15, 5)})),
                 QList<int>({20}));
        QCOMPARE(sizesOf(gaplessStretches({ramp(0, 10), ramp(10.4, 5)})), QList<int>({15}));
        QCOMPARE(sizesOf(gaplessStretches({ramp(0, 10), ramp(10.6, 5)})), QList<int>({10, 5}));
        QCOMPARE(sizesOf(gaplessStretches({ramp(0, 10), ramp(9.4, 5)})), QList<int>({10, 5}));
        QVERIFY(!joinedRecord({}));
    }

    void dividesWhereRecordsDiffer()
    {
        const RecordCPtr integers = ramp(0, 10);
        const RecordCPtr floats = makeRecord(at(10), 1, arrayOf<float>({1, 2, 3}));
        const RecordCPtr faster = ramp(10, 10, 2.0);
        const RecordCPtr other =
            new Record(StreamCodes::FromID("GE.APE..BHN"), at(10), 1, arrayOf<int>({1, 2, 3}));
        const RecordCPtr text = makeRecord(at(10), 0, arrayOf<char>({'a', 'b'}));
        for (const RecordCPtr &next : {floats, faster, other, text})
            QCOMPARE(gaplessStretches({integers, next}).size(), size_t(2));
    }

    void endsStretchWhenClockDrifts()
    {
        std::vector<RecordCPtr> records;
        for (int i = 0; i < 10; ++i)
            records.push_back(ramp(10 * i + 0.2 * i, 10));
        // The third record is off by 0.4 samples from where the first one leads, the fourth by 0.6.
        QCOMPARE(sizesOf(gaplessStretches(records)), QList<int>({30, 30, 30, 10}));
    }
};

QTEST_APPLESS_MAIN(MeasurementTest)
#include "tst_measurement.moc"
