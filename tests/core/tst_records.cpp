// SPDX-License-Identifier: LGPL-3.0-or-later

#include "recordtesting.h"

#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/core/records/timewindowbuffer.h>

#include <QElapsedTimer>
#include <QtTest>

#include <algorithm>
#include <functional>

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
        const struct
        {
            Feeds feeds;
            double tolerance;
            const char *told; // what is taken, gaps and overlaps
        } rows[] = {
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
        for (const auto &row : rows) {
            RingBuffer sequence(0, row.tolerance);
            const QString taken = QString::fromStdString(takenBy(sequence, row.feeds));
            QCOMPARE(taken + "; " + text(sequence.gaps()) + "; " + text(sequence.overlaps()),
                     QString(row.told));
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
};

QTEST_GUILESS_MAIN(RecordsTest)
#include "tst_records.moc"
