// SPDX-License-Identifier: LGPL-3.0-or-later

#include "recordtesting.h"

#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/core/records/timewindowbuffer.h>

#include <QtTest>

#include <algorithm>
#include <functional>
#include <memory>
#include <thread>
#include <tuple>

using namespace RecordTesting;
using Windows = std::vector<Core::TimeWindow>;

/** Start, samples and rate of a record that arrives. */
struct Feed
{
    double start;
    int samples;
    double rate;
};
using Feeds = std::vector<Feed>;

namespace {
std::string takenBy(RecordSequence &sequence, const Feeds &feeds)
{
    std::string taken;
    for (const Feed &feed : feeds)
        taken += sequence.feed(ramp(feed.start, feed.samples, feed.rate).get()) ? '+' : '-';
    return taken;
}

QString text(const Windows &windows)
{
    QString result;
    for (const Core::TimeWindow &window : windows) {
        result += QStringLiteral("%1..%2 ")
                      .arg((window.startTime() - at(0)).length())
                      .arg((window.endTime() - at(0)).length());
    }
    return result.trimmed();
}

/** The plain form of RecordSequence: a list that is searched from end to end. */
class PlainSequence
{
public:
    bool feed(const RecordCPtr &record, double tolerance)
    {
        if (covers(*record, tolerance))
            return false;
        const auto later = [&](const RecordCPtr &r) {
            return r->startTime() > record->startTime();
        };
        _records.insert(std::find_if(_records.begin(), _records.end(), later), record);
        return true;
    }

    SampleSummary summary(const Core::TimeWindow &window) const
    {
        SampleSummary result;
        for (const RecordCPtr &record : _records) {
            for (int i = 0; i < record->sampleCount(); ++i) {
                if (window.contains(record->sampleTime(i)))
                    result.add(plainSummary(*record->data(), i, i + 1));
            }
        }
        return result;
    }

    int firstEndingAfter(Core::Time time) const
    {
        size_t i = 0;
        while (i < _records.size() && _records[i]->timeWindow().endTime() <= time)
            ++i;
        return static_cast<int>(i);
    }

    std::vector<RecordCPtr> &records() { return _records; }

private:
    bool covers(const Record &record, double tolerance) const
    {
        if (!record.sampleCount())
            return holdsEmpty(record.startTime());
        const Core::TimeSpan span(tolerance / record.samplingFrequency());
        const Core::TimeSpan half =
            Core::TimeSpan::FromUSecs(record.timeWindow().length().usecs() / 2);
        const Core::Time first = record.startTime() + std::min(span, half);
        const Core::Time last = record.endTime() - std::min(span, half);
        Core::Time reach;
        for (bool grown = true; grown && reach < last;) {
            grown = false;
            for (const RecordCPtr &other : _records) {
                const Core::TimeWindow window = other->timeWindow();
                const bool joins =
                    reach.valid() ? window.startTime() <= reach + span : window.contains(first);
                if (other->sampleCount() && joins && window.endTime() > reach) {
                    reach = window.endTime();
                    grown = true;
                }
            }
        }
        return reach.valid() && reach >= last;
    }

    bool holdsEmpty(Core::Time start) const
    {
        return std::any_of(_records.begin(), _records.end(), [start](const RecordCPtr &r) {
            return !r->sampleCount() && r->startTime() == start;
        });
    }

    std::vector<RecordCPtr> _records;
};

/** The shortest time in seconds that a few sequences take to be fed with @p records. */
double feedingTime(const std::vector<RecordCPtr> &records)
{
    double shortest = Infinity;
    for (int run = 0; run < 5; ++run) {
        RingBuffer sequence(0, 0);
        QElapsedTimer timer;
        timer.start();
        for (const RecordCPtr &record : records)
            sequence.feed(record.get());
        shortest = std::min(shortest, 1E-9 * static_cast<double>(timer.nsecsElapsed()));
        if (sequence.size() != static_cast<int>(records.size()))
            return Infinity;
    }
    return shortest;
}

RecordCPtr randomRecord(std::mt19937 &random)
{
    const double rates[] = {1.0, 2.0, 0.7};
    const int lengths[] = {0, 1, 5, 30, 30, 30, 30, 400};
    const double rate = rates[random() % 3];
    const int n = lengths[random() % 8];
    const double start = random() % 60000 + (random() % 4 ? 0.0 : 0.4);
    if (random() % 2)
        return makeRecord(at(start), rate, arrayOf(randomSamples<int>(random, n, 0)));
    return makeRecord(at(start), rate, arrayOf(randomSamples<double>(random, n, 10)));
}

void compareWindows(const RecordSequence &sequence, PlainSequence &plain, std::mt19937 &random)
{
    for (int i = 0; i < 25; ++i) {
        const double start = random() % 60500 - 100.0 + (random() % 3) * 0.25;
        const double length = std::pow(10.0, random() % 5) * 1.3;
        const Core::TimeWindow where = window(start, start + length);
        const SampleSummary expected = plain.summary(where);
        const SampleSummary found = sequence.summary(&where);
        const auto range = sequence.amplitudeRange(&where);
        QCOMPARE(found.count, expected.count);
        QCOMPARE(found.sum, expected.sum);
        QCOMPARE(range.first, expected.minimum);
        QCOMPARE(range.second, expected.maximum);
        QCOMPARE(sequence.firstEndingAfter(at(start)), plain.firstEndingAfter(at(start)));
    }
}

void compareRecords(const RecordSequence &sequence, PlainSequence &plain)
{
    QCOMPARE(static_cast<size_t>(sequence.size()), plain.records().size());
    QVERIFY(std::equal(sequence.begin(), sequence.end(), plain.records().begin()));
}

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

class RecordsTest : public QObject
{
    Q_OBJECT

private:
    /** Feeds records in random, ascending or descending order: 0, 1 or 2. */
    void comparePlain(int order, int capacity)
    {
        const unsigned seed = std::random_device()();
        qInfo("seed %u", seed);
        std::mt19937 random(seed);

        std::vector<RecordCPtr> records;
        for (int i = 0; i < 4000; ++i)
            records.push_back(randomRecord(random));
        const auto earlier = [](const RecordCPtr &a, const RecordCPtr &b) {
            return a->startTime() < b->startTime();
        };
        if (order)
            std::sort(records.begin(), records.end(), earlier);
        if (order == 2)
            std::reverse(records.begin(), records.end());

        RingBuffer sequence(capacity);
        PlainSequence plain;
        std::vector<RecordCPtr> &kept = plain.records();
        for (size_t i = 0; i < records.size(); ++i) {
            const bool full = capacity && static_cast<int>(kept.size()) == capacity;
            const bool late = full && earlier(records[i], kept.front());
            QCOMPARE(sequence.feed(records[i].get()), !late && plain.feed(records[i], 0.5));
            if (capacity && static_cast<int>(kept.size()) > capacity)
                kept.erase(kept.begin());
            if (i % 1500 == 17 || i + 1 == records.size()) {
                compareRecords(sequence, plain);
                compareWindows(sequence, plain, random);
            }
            if (QTest::currentTestFailed())
                return;
        }
    }

private slots:
    void keepsTheLastStretch()
    {
        RingBuffer ring(Core::TimeSpan(100.0));
        QCOMPARE(takenBy(ring, {{0, 50, 1}, {50, 50, 1}, {100, 50, 1}, {150, 50, 1}}),
                 std::string("++++"));
        QCOMPARE(ring.size(), 3); // one of them by its last sample
        QCOMPARE(takenBy(ring, {{20, 10, 1}, {500, 10, 1}, {150, 50, 1}}), std::string("-+-"));
        QCOMPARE(ring.size(), 1);

        QCOMPARE(takenBy(ring, {{450, 50, 1}}), std::string("+"));
        ring.setLength(Core::TimeSpan(5.0));
        QCOMPARE(ring.size(), 1);
        const std::unique_ptr<RecordSequence> clone(ring.clone());
        QCOMPARE(takenBy(*clone, {{0, 10, 1}, {100, 10, 1}}), std::string("++"));
        QCOMPARE(clone->size(), 1);
    }

    void keepsWhatIsNew()
    {
        // What is taken, gaps and overlaps.
        const std::tuple<Feeds, double, const char *> rows[] = {
            {{{0, 10, 1}, {10.4, 10, 1}, {0.3, 10, 1}}, 0.5, "++-; ; "},
            {{{0, 10, 1}, {10.6, 10, 1}}, 0.5, "++; 10..10.6; "},
            {{{0, 10, 1}, {11, 10, 1}, {5, 10, 1}}, 0.5, "+++; ; 5..10 11..15"},
            {{{0, 2, 1}, {1, 50, 1}, {10, 2, 1}, {30, 5, 1}}, 0.5, "++--; ; 1..2"},
            {{{0, 10, 1}, {0, 1000, 100}, {0.5, 1000, 100}}, 0.5, "+-+; ; 0.5..10"},
            {{{0, 10, 1}, {0.1, 10, 1}, {10.2, 1, 1}}, 0, "+++; 10.1..10.2; 0.1..10"},
            {{{0, 2, 1}, {2, 2, 1}, {9, 2, 1}}, 100, "+++; ; "},
            {{{0, 5, 1}, {5, 5, 1}}, NaN, "++; ; "},
            {{{0, 10, 1}, {12, 0, 1}, {12, 0, 1}, {20, 10, 1}}, 0.5, "++-+; 10..20; "},
        };
        for (const auto &[feeds, tolerance, told] : rows) {
            RingBuffer sequence(0, tolerance);
            const QString taken = QString::fromStdString(takenBy(sequence, feeds));
            QCOMPARE(taken + "; " + text(sequence.gaps()) + "; " + text(sequence.overlaps()),
                     QString(told));
        }
    }

    void equalsPlainSequence()
    {
        for (int order = 0; order < 3; ++order) {
            comparePlain(order, 0);
            comparePlain(order, order == 1 ? 600 : 1200);
        }
    }

    void feedingTakesTimeByTheRecord()
    {
        constexpr int Few = 1000;
        constexpr int Factor = 16;
        const std::pair<const char *, std::function<RecordCPtr(int i, int n)>> orders[] = {
            {"each reaches over all", [](int i, int n) { return ramp(i, 2, 2.0 / n); }},
            {"each is longer", [](int i, int) { return ramp(0, 2, 2.0 / (1 + i)); }},
            {"each begins earlier", [](int i, int) { return ramp(-i, 2, 1.0 / (1 + i)); }},
            {"no order", [](int i, int n) { return ramp(i * 7919LL % n, 1); }},
            {"two stretches by turns", [](int i, int n) { return ramp(i % 2 * n + i / 2, 1); }}};
        for (const auto &[name, recordAt] : orders) {
            std::vector<RecordCPtr> few, many;
            for (int i = 0; i < Few; ++i)
                few.push_back(recordAt(i, Few));
            for (int i = 0; i < Factor * Few; ++i)
                many.push_back(recordAt(i, Factor * Few));
            // Far below the square of the factor, which pairs of records would take.
            const double growth = feedingTime(many) / feedingTime(few);
            qInfo("%s: %d times the records take %.0f times the time", name, Factor, growth);
            QVERIFY2(growth < 12 * Factor, name);
        }
    }

    void timeWindowBufferKeepsWhatOverlaps()
    {
        TimeWindowBuffer buffer(window(100, 200));
        const Feeds feeds{{90, 10, 1}, {90, 11, 1},  {0, 300, 1},
                          {150, 0, 1}, {200, 10, 1}, {199, 150, 1}};
        QCOMPARE(takenBy(buffer, feeds), std::string("-+++-+"));

        buffer.setStoredWindow(window(160, 250));
        QCOMPARE(buffer.size(), 2);
        QCOMPARE(buffer.timeWindow(), window(0, 349));
        QCOMPARE(buffer.firstEndingAfter(at(299)), 0);

        TimeWindowBuffer all{Core::TimeWindow()};
        QVERIFY(all.feed(ramp(-1E6, 5).get()));
    }

    void emptySequencesAnswer()
    {
        RingBuffer buffer(0);
        QVERIFY(!buffer.feed(nullptr));
        QVERIFY(!buffer.feed(makeRecord(Core::Time(), 1, arrayOf(std::vector<int>{1})).get()));
        QVERIFY(!buffer.timeWindow().valid());
        QCOMPARE(buffer.amplitudeRange(), std::make_pair(0.0, 0.0));
        QCOMPARE(buffer.firstEndingAfter(at(0)), 0);
    }

    void keepsEventsAtTheSameTime()
    {
        const auto message = [](const std::string &text) {
            return makeRecord(at(0), 0, new CharArray(static_cast<int>(text.size()), text.data()));
        };
        RingBuffer buffer(0);
        buffer.feed(ramp(-50, 100).get());
        QVERIFY(buffer.feed(message("clock locked").get()));
        QVERIFY(buffer.feed(message("clock drifts").get()));
        QVERIFY(!buffer.feed(message("clock locked").get()));
        QCOMPARE(buffer.amplitudeRange(), std::make_pair(0.0, 99.0));
    }

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

    /** Arrays of two streams from several threads: each keeps its samples, with its pyramid, also
     *  when the memory itself and others in it are gone. */
    void arraysShareMemory()
    {
        constexpr int Count = 4000;
        std::vector<std::unique_ptr<IntArray>> arrays(Count);
        {
            SampleMemory one, two;
            std::vector<std::thread> threads;
            for (int part = 0; part < 4; ++part) {
                threads.emplace_back([&, part] {
                    for (int i = part; i < Count; i += 4) {
                        // Now and then one that is as large as a chunk.
                        const int size = i % 1000 == 5 ? 700000 : 300 + i % 500;
                        auto array = std::make_unique<IntArray>(size, i % 3 ? one : two);
                        std::fill_n(array->typedData(), size, i);
                        array->buildPyramid();
                        arrays[size_t(i)] = std::move(array);
                    }
                });
            }
            for (std::thread &thread : threads)
                thread.join();
        }
        for (int i = 0; i < Count; i += 2)
            arrays[size_t(i)].reset();
        for (int i = 1; i < Count; i += 2) {
            const SampleSummary summary = arrays[size_t(i)]->summary();
            QCOMPARE(summary.minimum, double(i));
            QCOMPARE(summary.maximum, double(i));
            QCOMPARE(summary.count, int64_t(arrays[size_t(i)]->size()));
        }
        arrays[1]->resize(10);
        QCOMPARE((*arrays[1])[9], 1);
        QCOMPARE(IntArray(*arrays[3])[0], 3);
        arrays.clear();
        SampleMemory::returnSpare();
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
        const std::tuple<const char *, qint64, int, double, bool, qint64> rows[] = {
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
        for (const auto &[name, start, samples, rate, hasEnd, span] : rows) {
            const RecordCPtr record =
                makeRecord(Core::Time::FromUSecs(start), rate, new Sized(samples));
            QVERIFY2(record->hasEndTime() == hasEnd, name);
            if (hasEnd)
                QCOMPARE(qint64(record->endTime().usecs()), start + span);
            else
                QVERIFY_EXCEPTION_THROWN(record->endTime(), RecordError);
            QCOMPARE(qint64(record->timeWindow().length().usecs()), span);
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

QTEST_GUILESS_MAIN(RecordsTest)
#include "tst_records.moc"
