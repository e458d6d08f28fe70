// SPDX-License-Identifier: LGPL-3.0-or-later

#include "recordtesting.h"

#include <tellarix/core/records/cut.h>
#include <tellarix/core/records/ringbuffer.h>

#include <QtTest>

#include <cstring>

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
    void cutsToSamples()
    {
        // Samples at 0 ... 9, a gap, 20 ... 29, and 25 ... 34 over them.
        const struct
        {
            double start, end;
            QStringList cut;
        } rows[] = {{-10, 100, {"0: 0 +10", "20: 0 +10", "25: 0 +10"}},
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
        for (const auto &row : rows)
            QCOMPARE(described(cutRecords(records, window(row.start, row.end))), row.cut);
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

QTEST_APPLESS_MAIN(TestCut)
#include "tst_cut.moc"
