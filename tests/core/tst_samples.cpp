// SPDX-License-Identifier: LGPL-3.0-or-later

#include "recordtesting.h"

#include <QtTest>

using namespace RecordTesting;

namespace {
const char *difference(const SampleSummary &found, const SampleSummary &expected)
{
    if (found.count != expected.count)
        return "count";
    if (expected.isEmpty())
        return nullptr;
    if (found.minimum != expected.minimum || found.maximum != expected.maximum)
        return "extrema";
    // Samples are whole numbers, so that sums in double are exact in any order.
    return found.sum == expected.sum ? nullptr : "sum";
}

template <typename T>
void compareRandomRanges(std::mt19937 &random, int n, int rarity, bool pyramid)
{
    ArrayPtr array = arrayOf(randomSamples<T>(random, n, rarity));
    if (pyramid)
        array->buildPyramid();
    std::uniform_int_distribution<int> index(-10, n + 10);
    for (int i = 0; i < 60; ++i) {
        const int first = i == 0 ? 0 : index(random);
        const int last = i <= 1 ? n : index(random);
        const SampleSummary expected = plainSummary(*array, first, last);
        const char *what = difference(array->summary(first, last), expected);
        QVERIFY2(!what, qPrintable(QStringLiteral("%1 of samples %2 to %3 of %4")
                                       .arg(what)
                                       .arg(first)
                                       .arg(last)
                                       .arg(n)));
        double low = 7, high = -7;
        QCOMPARE(array->extrema(first, last, low, high), !expected.isEmpty());
        QCOMPARE(low, expected.isEmpty() ? 7 : expected.minimum);
        QCOMPARE(high, expected.isEmpty() ? -7 : expected.maximum);
    }
}

/** Cuts finite samples into runs of random length, from single samples to many blocks. */
template <typename T>
void compareRuns(std::mt19937 &random, int n, int longest)
{
    ArrayPtr array = arrayOf(randomSamples<T>(random, n, 0));
    array->buildPyramid();
    std::uniform_int_distribution<int> length(1, longest);
    std::vector<int> edges{std::min(length(random), n) - 1};
    while (edges.back() < n)
        edges.push_back(std::min(n, edges.back() + length(random)));

    std::vector<SampleRun> runs(edges.size() - 1);
    array->summarizeRuns(edges.data(), static_cast<int>(runs.size()), runs.data());
    for (size_t i = 0; i < runs.size(); ++i) {
        const SampleSummary expected = plainSummary(*array, edges[i], edges[i + 1]);
        const auto place = QStringLiteral("samples %1 to %2 of %3");
        const QString text = place.arg(edges[i]).arg(edges[i + 1]).arg(n);
        QVERIFY2(runs[i].minimum == expected.minimum, qPrintable(text));
        QVERIFY2(runs[i].maximum == expected.maximum, qPrintable(text));
        QVERIFY2(runs[i].first == array->value(edges[i]), qPrintable(text));
        QVERIFY2(runs[i].last == array->value(edges[i + 1] - 1), qPrintable(text));
    }
}

} // namespace

class SamplesTest : public QObject
{
    Q_OBJECT

private slots:
    void summariesEqualPlainLoops()
    {
        for (const int size : {0, 1, 255, 256, 257, 2049, 40001, 300000}) {
            for (const int rarity : {0, 1, 40}) {
                std::mt19937 random(static_cast<unsigned>(size * 7 + rarity));
                for (const bool pyramid : {false, true}) {
                    compareRandomRanges<int>(random, size, rarity, pyramid);
                    compareRandomRanges<float>(random, size, rarity, pyramid);
                    compareRandomRanges<double>(random, size, rarity, pyramid);
                }
            }
        }
    }

    void runsEqualPlainLoops()
    {
        std::mt19937 random(11);
        for (const int size : {1, 63, 128, 129, 191, 500, 512, 1030, 40000}) {
            for (const int longest : {3, 70, 300, 2000, 30000}) {
                for (int repeated = 0; repeated < 8; ++repeated) {
                    compareRuns<int>(random, size, longest);
                    compareRuns<float>(random, size, longest);
                    compareRuns<double>(random, size, longest);
                }
            }
        }
    }

    void extremesOfTheTypesAreKept()
    {
        std::vector<int> samples(1000, std::numeric_limits<int>::max());
        std::fill(samples.begin() + 600, samples.end(), std::numeric_limits<int>::min());
        ArrayPtr array = arrayOf(samples);
        array->buildPyramid();
        const SampleSummary summary = array->summary();
        QCOMPARE(summary.minimum, -2147483648.0);
        QCOMPARE(summary.maximum, 2147483647.0);
        QCOMPARE(summary.sum, 600 * 2147483647.0 - 400 * 2147483648.0);

        ArrayPtr text(new CharArray(600, std::string(600, 'x').data()));
        QVERIFY(makeRecord(at(0), 0, text)->summary().isEmpty());
    }

    void writableSamplesDropThePyramid()
    {
        IntArray array(1000, std::vector<int>(1000, 5).data());
        array.buildPyramid();
        array.typedData()[500] = 9;
        QCOMPARE(array.maximum(), 9.0);
        array.buildPyramid();
        QCOMPARE(array.maximum(), 9.0);

        array.resize(400);
        QCOMPARE(array.maximum(), 5.0);
    }

    void conversionsSaturate()
    {
        const std::vector<double> samples{0.0, -1.9, 1.9, 1E300, -1E300, Infinity, -Infinity, NaN};
        const auto ints = IntArray::Convert(*arrayOf(samples));
        const int limit = std::numeric_limits<int>::max();
        const int expected[] = {0, -1, 1, limit, -limit - 1, limit, -limit - 1, 0};
        QVERIFY(std::equal(ints->begin(), ints->end(), expected, expected + 8));
        const auto text = CharArray::Convert(*arrayOf(std::vector<int>{-1000, 65, 1000}));
        QCOMPARE(std::string(text->begin(), text->end()), std::string("\x80"
                                                                      "A"
                                                                      "\x7f"));

        const ArrayCPtr array = arrayOf(samples);
        QCOMPARE(DoubleArray::From(array).get(), array.get());
        QVERIFY(!FloatArray::From(nullptr));
    }

    void splitsStreamIDs()
    {
        const StreamCodesCPtr codes = StreamCodes::FromID("GE.APE..BHZ");
        QVERIFY(codes);
        QCOMPARE(codes->network() + '|' + codes->station() + '|' + codes->location() + '|' +
                     codes->channel(),
                 std::string("GE|APE||BHZ"));
        QCOMPARE(codes->id(), std::string("GE.APE..BHZ"));
        for (const char *wrong : {"GE.APE.BHZ", "GE.APE.00.BHZ.D", ""})
            QVERIFY2(!StreamCodes::FromID(wrong), wrong);
    }

    void endTimes()
    {
        /** Claims a size without holding the samples. */
        struct Sized : CharArray
        {
            int n;
            explicit Sized(int count) : n(count) {}
            int size() const override { return n; }
        };
        const qint64 now = 1704448800000001;
        const qint64 latest = std::numeric_limits<qint64>::max();
        const struct
        {
            const char *name;
            qint64 start;
            int samples;
            double rate;
            bool hasEnd;
            qint64 span;
        } rows[] = {
            {"thirds of microseconds", now, 1, 30, true, 33333},
            {"rounded up", now, 2, 30, true, 66667},
            {"46 days at 500 Hz", now, 2000000011, 500, true, 4000000022000},
            {"slow", now, 3, 1 / 86400.0, true, 259200000000},
            {"before 1970", -now, 5, 10, true, 500000},
            {"no samples", now, 0, 0, true, 0},
            {"no rate", now, 5, 0, false, 0},
            {"rate not a number", now, 5, NaN, false, 0},
            {"infinite rate", now, 5, Infinity, false, 0},
            {"behind all time", now, 5, 1E-15, false, 0},
            {"at the end of time", latest - 5, 5, 1E6, true, 5},
            {"past the end of time", latest - 4, 5, 1E6, false, 0},
        };
        for (const auto &row : rows) {
            const RecordCPtr record =
                makeRecord(Core::Time::FromUSecs(row.start), row.rate, new Sized(row.samples));
            QVERIFY2(record->hasEndTime() == row.hasEnd, row.name);
            if (row.hasEnd)
                QCOMPARE(qint64(record->endTime().usecs()), row.start + row.span);
            else
                QVERIFY_EXCEPTION_THROWN(record->endTime(), RecordError);
            QCOMPARE(qint64(record->timeWindow().length().usecs()), row.span);
        }
    }

    void sampleIndexInvertsSampleTime()
    {
        for (const double rate : {0.01, 0.3, 1.0, 30.0, 40.000001, 100.0, 125.0, 4096.0, 3E6}) {
            const RecordCPtr record = ramp(0.123457, 3000, rate);
            for (int i = 1; i < 3000; ++i) {
                const Core::Time time = record->sampleTime(i);
                const int index = record->sampleIndex(time);
                QVERIFY(index <= i && record->sampleTime(index) == time);
                QVERIFY(index == 0 || record->sampleTime(index - 1) < time);
                QVERIFY(record->sampleIndex(time + Core::TimeSpan::FromUSecs(1)) > i);
            }
            QCOMPARE(record->sampleIndex(at(-5)), 0);
            QCOMPARE(record->sampleIndex(record->endTime() + Core::TimeSpan::FromUSecs(1)), 3000);
            QCOMPARE(record->sampleIndex(at(1E7)), 3000);
        }
        QCOMPARE(ramp(0, 5, 0.0)->sampleIndex(at(1)), 5);
        QCOMPARE(makeRecord(at(0), 1, nullptr)->sampleIndex(at(1)), 0);
    }
};

QTEST_GUILESS_MAIN(SamplesTest)
#include "tst_samples.moc"
