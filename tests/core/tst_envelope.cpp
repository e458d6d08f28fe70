// SPDX-License-Identifier: LGPL-3.0-or-later

#include "recordtesting.h"

#include <tellarix/core/records/envelope.h>
#include <tellarix/core/records/ringbuffer.h>

#include <QtTest>

#include <map>

using namespace RecordTesting;

namespace {
using Range = std::pair<double, double>;

/** Keeps samples off the edges of columns, where rounding decides. */
constexpr double OffGrid = 0.0013;

/** Extrema of the columns from @p first up to @p last by a plain loop over all samples. */
std::map<int, Range> plainColumns(const RecordSequence &records, double start, int first, int last,
                                  double pixelsPerSecond)
{
    std::map<int, Range> result;
    for (const RecordCPtr &record : records) {
        const double offset = (record->startTime() - at(start)).length();
        for (int i = 0; i < record->sampleCount(); ++i) {
            const double x = (offset + i / record->samplingFrequency()) * pixelsPerSecond;
            const double value = record->data()->value(i);
            if (x < first || x >= last || !std::isfinite(value))
                continue;
            Range &range = result.emplace(std::floor(x), Range(value, value)).first->second;
            range = {std::min(range.first, value), std::max(range.second, value)};
        }
    }
    return result;
}

std::map<int, Range> columnsOf(const Envelope &envelope, int columns)
{
    std::map<int, Range> result;
    for (const EnvelopeColumn &column : envelope.columns) {
        if (column.column < 0 || column.column >= columns)
            continue;
        const Range found(column.minimum, column.maximum);
        Range &range = result.emplace(column.column, found).first->second;
        range = {std::min(range.first, found.first), std::max(range.second, found.second)};
    }
    return result;
}

/** True if each range of @p a lies in what @p b holds in the same column and its neighbours. */
bool isWithin(const std::map<int, Range> &a, const std::map<int, Range> &b)
{
    for (const auto &[column, range] : a) {
        Range around(Infinity, -Infinity);
        for (auto it = b.lower_bound(column - 1); it != b.end() && it->first <= column + 1; ++it) {
            around.first = std::min(around.first, it->second.first);
            around.second = std::max(around.second, it->second.second);
        }
        if (range.first < around.first || range.second > around.second)
            return false;
    }
    return true;
}

bool ascends(const Envelope &envelope)
{
    for (const EnvelopeStretch &stretch : envelope.stretches) {
        for (size_t i = stretch.begin; i < stretch.end; ++i) {
            const EnvelopeColumn &column = envelope.columns[i];
            if (column.firstX > column.lastX || column.minimum > column.first ||
                column.maximum < column.last)
                return false;
            if (i > stretch.begin && (envelope.columns[i - 1].lastX > column.firstX ||
                                      envelope.columns[i - 1].column > column.column))
                return false;
        }
    }
    return true;
}

/** Records of @p length samples at 100 Hz from @p start on; some stretches are left out. */
void feedRecords(RecordSequence &records, std::mt19937 &random, int n, int length, int rarity)
{
    double start = 0;
    for (int i = 0; i < n; ++i) {
        const auto samples = randomSamples<double>(random, length, rarity);
        records.feed(makeRecord(at(start), 100, arrayOf(samples)).get());
        start += length / 100.0;
        if (random() % 40 == 0)
            start += random() % 3000 / 100.0 - 5;
    }
}

std::string causes(const Envelope &envelope)
{
    std::string text;
    for (const EnvelopeStretch &stretch : envelope.stretches)
        text += "bgon"[stretch.cause];
    return text;
}

} // namespace

class EnvelopeTest : public QObject
{
    Q_OBJECT

private slots:
    void holdsWhatTheSamplesHold()
    {
        for (const int length : {7, 500, 20000}) {
            for (const double seconds : {0.004, 0.9, 9.0, 150.0, 4000.0})
                compareWithSamples(length, seconds);
        }
    }

private:
    /** Records of @p length samples. */
    static void compareWithSamples(int length, double secondsPerPixel)
    {
        qInfo("%d samples, %g s a pixel", length, secondsPerPixel);
        const unsigned seed = std::random_device()();
        qInfo("seed %u", seed);
        std::mt19937 random(seed);
        RingBuffer records(0);
        feedRecords(records, random, std::min(400000 / length, 6000), length, 300);

        for (int i = 0; i < 3; ++i) {
            const int columns = 200;
            const double scale = 1 / secondsPerPixel;
            const double length = columns * secondsPerPixel;
            const double start = random() % 4000 - std::min(length, 200.0) * 0.5 + OffGrid;
            const Envelope envelope = makeEnvelope(records, window(start, start + length), scale);
            const auto found = columnsOf(envelope, columns);
            QVERIFY(ascends(envelope));
            // Records may count to the column beside, at the edges to one outside of the window.
            QVERIFY(isWithin(plainColumns(records, start, 1, columns - 1, scale), found));
            QVERIFY(isWithin(found, plainColumns(records, start, -1, columns + 1, scale)));
            QVERIFY(envelope.stretches.size() < 4 * columns);
        }
    }

private slots:
    void fineColumnsAreExact()
    {
        std::mt19937 random(11);
        RingBuffer records(0);
        feedRecords(records, random, 10, 6000, 0);
        for (const double scale : {20.0, 3.0, 0.6}) {
            const Envelope envelope =
                makeEnvelope(records, window(70 + OffGrid, 70 + OffGrid + 100 / scale), scale);
            QCOMPARE(columnsOf(envelope, 100), plainColumns(records, 70 + OffGrid, 0, 100, scale));
            QVERIFY(ascends(envelope));
        }
    }

    void breaksWhereDataBreak()
    {
        const struct
        {
            const char *name;
            double secondStart; // the first record ends at 100 s
            int hole;           // sample of the second record that is no number
            const char *causes;
        } rows[] = {{"jitter", 100.004, -1, "b"},        {"early", 99.996, -1, "b"},
                    {"gap", 100.02, -1, "bg"},           {"overlap", 99.98, -1, "bo"},
                    {"hole", 100, 5000, "bn"},           {"hole at the seam", 100, 0, "bn"},
                    {"hole at the end", 100, 9999, "b"}, {"gap and hole", 150, 300, "bgn"}};
        for (const auto &row : rows) {
            RingBuffer records(0);
            std::vector<double> samples(10000, 3.0);
            records.feed(makeRecord(at(0), 100, arrayOf(samples)).get());
            if (row.hole >= 0)
                samples[static_cast<size_t>(row.hole)] = NaN;
            records.feed(makeRecord(at(row.secondStart), 100, arrayOf(samples)).get());
            // From every sample a point of its own to a record within a pixel.
            for (const double scale : {100.0, 7.0, 0.1, 0.011}) {
                const Envelope envelope = makeEnvelope(records, window(-9, 300), scale);
                QVERIFY2(causes(envelope) == row.causes, row.name);
                QCOMPARE(envelope.minimum, 3.0);
                QCOMPARE(envelope.maximum, 3.0);
            }
        }

        // Within a longer record: what follows joins the end of the longer one.
        RingBuffer nested(0);
        for (const double start : {20.0, 0.0, 100.0})
            nested.feed(ramp(start, start == 20 ? 10 : 100).get());
        const Envelope envelope = makeEnvelope(nested, window(0, 200), 10);
        QCOMPARE(causes(envelope), std::string("bog"));
        QCOMPARE(envelope.columns[envelope.stretches[2].begin].lastX, 990.0);
    }

    void tornDataStayBounded()
    {
        RingBuffer records(0);
        std::vector<float> samples(1000000, 1.0f);
        for (size_t i = 0; i < samples.size(); i += 2)
            samples[i] = static_cast<float>(NaN);
        records.feed(makeRecord(at(0), 100, arrayOf(samples)).get());
        for (int i = 0; i < 5000; ++i)
            records.feed(ramp(20000 + i * 2.0, 150, 100).get());
        const Envelope envelope = makeEnvelope(records, window(0, 30000), 0.01);
        QVERIFY(envelope.stretches.size() <= 3 * 300);
        QCOMPARE(columnsOf(envelope, 300).size(), size_t(100 + 100));
    }

    void cutsFarPointsAtTheEdges()
    {
        RingBuffer records(0);
        records.feed(ramp(0, 10, 0.01).get()); // a sample every 100 s
        const Envelope envelope = makeEnvelope(records, window(420, 430), 10);
        QCOMPARE(envelope.columns.size(), size_t(2));
        QCOMPARE(envelope.columns[0].firstX, -1.0);
        QCOMPARE(envelope.columns[0].first, 4.199);
        QCOMPARE(envelope.columns[1].firstX, 100.0);
        QCOMPARE(envelope.columns[1].first, 4.3);

        const Envelope inside = makeEnvelope(records, window(400, 600), 1e6);
        QCOMPARE(inside.columns.size(), size_t(3));
    }

    void nothingToShow()
    {
        RingBuffer records(0);
        QVERIFY(makeEnvelope(records, window(0, 10), 1).columns.empty());
        records.feed(makeRecord(at(1), 1, nullptr).get());
        records.feed(makeRecord(at(3), 1, new CharArray(5, "abcd")).get());
        records.feed(makeRecord(at(8), 1, arrayOf(std::vector<double>(5, NaN))).get());
        QVERIFY(makeEnvelope(records, window(0, 100), 1).stretches.empty());
        records.feed(ramp(20, 5).get());
        for (const double scale : {0.0, -1.0, NaN, Infinity})
            QVERIFY(makeEnvelope(records, window(0, 100), scale).columns.empty());
        QVERIFY(makeEnvelope(records, window(100, 0), 1).columns.empty());
        QVERIFY(makeEnvelope(records, Core::TimeWindow(), 1).columns.empty());
    }
};

QTEST_GUILESS_MAIN(EnvelopeTest)
#include "tst_envelope.moc"
