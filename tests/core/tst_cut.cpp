#include "recordtesting.h"

#include <tellarix/core/records/cut.h>
#include <tellarix/core/records/ringbuffer.h>

#include <QtTest>

#include <cstring>
#include <random>

using namespace RecordTesting;

namespace {

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

class TestCut : public QObject
{
    Q_OBJECT

private slots:
    void cutsToSamples_data();
    void cutsToSamples();
    void keepsSamplesBitByBit();
    void sharesWholeRecords();
    void agreesWithPlainSearch();
    void dividesAtGapsAndOverlaps();
    void dividesWhereRecordsDiffer();
    void endsStretchWhenClockDrifts();
};

void TestCut::cutsToSamples_data()
{
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("end");
    QTest::addColumn<QStringList>("cut");

    // Samples at 0 ... 9, a gap, 20 ... 29, and 25 ... 34 over them.
    QTest::newRow("all") << -10.0 << 100.0 << QStringList{"0: 0 +10", "20: 0 +10", "25: 0 +10"};
    QTest::newRow("on samples") << 2.0 << 5.0 << QStringList{"2: 2 +3"};
    QTest::newRow("start just behind a sample") << 2.000001 << 5.0 << QStringList{"3: 3 +2"};
    QTest::newRow("end just behind a sample") << 2.0 << 5.000001 << QStringList{"2: 2 +4"};
    QTest::newRow("between two samples") << 2.1 << 2.9 << QStringList{};
    QTest::newRow("behind last sample") << 9.5 << 20.0 << QStringList{};
    QTest::newRow("last sample alone") << 9.0 << 20.0 << QStringList{"9: 9 +1"};
    QTest::newRow("in the gap") << 12.0 << 18.0 << QStringList{};
    QTest::newRow("over the gap") << 8.0 << 22.0 << QStringList{"8: 8 +2", "20: 0 +2"};
    QTest::newRow("in the overlap") << 27.0 << 28.0 << QStringList{"27: 7 +1", "27: 2 +1"};
    QTest::newRow("empty") << 5.0 << 5.0 << QStringList{};
    QTest::newRow("reversed") << 8.0 << 2.0 << QStringList{};
    QTest::newRow("before everything") << -9.0 << 0.0 << QStringList{};
}

void TestCut::cutsToSamples()
{
    QFETCH(double, start);
    QFETCH(double, end);
    QFETCH(QStringList, cut);

    RingBuffer records(-1);
    for (const double first : {0.0, 20.0, 25.0})
        QVERIFY(records.feed(ramp(first, 10).get()));
    QCOMPARE(described(cutRecords(records, window(start, end))), cut);
    QVERIFY(cutRecords(records, Core::TimeWindow()).empty());
    QVERIFY(cutRecords(RingBuffer(-1), window(start, end)).empty());
}

void TestCut::keepsSamplesBitByBit()
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

void TestCut::sharesWholeRecords()
{
    const RecordCPtr record = ramp(0, 10);
    RingBuffer records(-1);
    QVERIFY(records.feed(record.get()));
    QVERIFY(cutRecords(records, window(0, 10)).at(0).get() == record.get());
    QVERIFY(cutRecords(records, window(0, 9)).at(0).get() != record.get());
}

void TestCut::agreesWithPlainSearch()
{
    const unsigned seed = 4711;
    qInfo("seed %u", seed);
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> seconds(0, 100);
    for (int round = 0; round < 200; ++round) {
        RingBuffer records(-1);
        const double rate = 0.1 + seconds(random);
        for (int i = 0; i < 8; ++i)
            records.feed(ramp(seconds(random), 1 + static_cast<int>(seconds(random)), rate).get());
        const double start = seconds(random);
        const Core::TimeWindow span = window(start, start + seconds(random));

        QList<int64_t> expected;
        for (const RecordCPtr &record : records) {
            for (int i = 0; i < record->sampleCount(); ++i) {
                if (span.contains(record->sampleTime(i)))
                    expected.append(record->sampleTime(i).usecs());
            }
        }
        QList<int64_t> found;
        for (const RecordCPtr &record : cutRecords(records, span)) {
            for (int i = 0; i < record->sampleCount(); ++i)
                found.append(record->sampleTime(i).usecs());
        }
        QCOMPARE(found.size(), expected.size());
        // The start of a cut record is rounded to a microsecond, and so are its samples then.
        for (int i = 0; i < found.size(); ++i)
            QVERIFY(std::abs(found[i] - expected[i]) <= 1);
    }
}

void TestCut::dividesAtGapsAndOverlaps()
{
    QCOMPARE(sizesOf(gaplessStretches({})), QList<int>());
    QCOMPARE(sizesOf(gaplessStretches({ramp(0, 10), ramp(10, 5), ramp(15, 5)})), QList<int>({20}));
    QCOMPARE(sizesOf(gaplessStretches({ramp(0, 10), ramp(10.4, 5)})), QList<int>({15}));
    QCOMPARE(sizesOf(gaplessStretches({ramp(0, 10), ramp(10.6, 5)})), QList<int>({10, 5}));
    QCOMPARE(sizesOf(gaplessStretches({ramp(0, 10), ramp(9.4, 5)})), QList<int>({10, 5}));
    QVERIFY(!joinedRecord({}));
}

void TestCut::dividesWhereRecordsDiffer()
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

void TestCut::endsStretchWhenClockDrifts()
{
    std::vector<RecordCPtr> records;
    for (int i = 0; i < 10; ++i)
        records.push_back(ramp(10 * i + 0.2 * i, 10));
    // The third record is off by 0.4 samples from where the first one leads, the fourth by 0.6.
    QCOMPARE(sizesOf(gaplessStretches(records)), QList<int>({30, 30, 30, 10}));
}

QTEST_APPLESS_MAIN(TestCut)
#include "tst_cut.moc"
