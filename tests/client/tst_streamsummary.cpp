// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/streamsummary.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/records/typedarray.h>

#include <QtTest>

#include <cmath>
#include <limits>

using namespace Tellarix;

namespace {
const Core::Time Origin(2024, 5, 17);

struct Piece
{
    double start; /**< in s */
    QVector<double> samples;
    double rate{1};
};
using Pieces = QVector<Piece>;

template <typename T>
RecordPtr record(const Piece &piece, const char *id = "XD.ALB..HHZ")
{
    const int size = piece.samples.size();
    auto *samples = new TypedArray<T>(size);
    T *target = samples->typedData();
    for (int i = 0; i < size; ++i)
        target[i] = static_cast<T>(piece.samples[i]);
    return new Record(StreamCodes::FromID(id), Origin + Core::TimeSpan(piece.start), piece.rate,
                      samples);
}

IO::StreamSummaries summaries(const Pieces &pieces)
{
    IO::StreamSummarizer summarizer;
    for (int i = 0; i < pieces.size(); ++i)
        summarizer.add(*record<double>(pieces[i]), "day", 512 * i);
    return summarizer.result();
}

/** "OFFSET: CAUSE" of each note, the cause up to its first colon or comma. */
QStringList shortNotes(const IO::StreamSummaries &summaries)
{
    QStringList result;
    for (const IO::StreamMessage &note : summaries.notes) {
        const QString cause = QString::fromStdString(note.cause).section(": ", 1);
        result.append(
            QString("%1: %2").arg(note.offset).arg(cause.section(QRegExp("[:;,]"), 0, 0)));
    }
    return result;
}

} // namespace

class TestStreamSummary : public QObject
{
    Q_OBJECT

private slots:
    void countsGapsAndOverlaps()
    {
        const QVector<double> three{1, 2, 3};
        const QVector<double> nine(9);
        const struct
        {
            Pieces pieces;
            const char *counts; // of records, gaps and overlaps
            QStringList notes;
        } rows[] = {
            {{{0, three}, {3.5, three}}, "2 0 0", {}},
            {{{0, three}, {3.51, three}}, "2 1 0", {}},
            {{{0, three}, {2.5, three}}, "2 0 0", {}},
            {{{0, three}, {2.49, three}}, "2 0 1", {"512: overlap"}},
            {{{0, three}, {6, three}, {3, three}}, "3 0 0", {"1024: out of order"}},
            {{{0, nine}, {2, three}, {9, three}}, "3 0 1", {"512: overlap"}},
            {{{0, nine}, {2, three}, {12, three}}, "3 1 1", {"512: overlap"}},
            {{{0, three}, {3, three}, {0, three}},
             "2 0 0",
             {"1024: duplicate of an earlier record"}},
            {{{0, three}, {0, {4, 5, 6}}}, "1 0 0", {"512: same times as an earlier record"}},
            {{{0, three}, {3, three, 10}},
             "2 0 0",
             {"512: sampling frequency changes from 1 Hz to 10 Hz"}},
        };
        for (const auto &row : rows) {
            const IO::StreamSummaries result = summaries(row.pieces);
            QCOMPARE(shortNotes(result), row.notes);
            QCOMPARE(result.streams.size(), size_t(1));
            const IO::StreamSummary &stream = result.streams.front();
            const auto counts = QString("%1 %2 %3").arg(stream.records).arg(stream.gaps);
            QCOMPARE(counts.arg(stream.overlaps), QString(row.counts));
            QCOMPARE(stream.samplingFrequency, 1.0);
        }
    }

    void notANumberLeavesMeanAlone()
    {
        const double nan = std::numeric_limits<double>::quiet_NaN();
        const IO::StreamSummaries result = summaries({{0, {nan, nan}}, {2, {1, nan}}, {4, {4, 7}}});
        const IO::StreamSummary &stream = result.streams.front();
        QCOMPARE(stream.samples, 6);
        QCOMPARE(stream.values.count, 3);
        QCOMPARE(stream.values.minimum, 1.0);
        QCOMPARE(stream.values.maximum, 7.0);
        QCOMPARE(stream.mean, 4.0);
    }

    void meanOfManyLargeSamplesIsExact()
    {
        IO::StreamSummarizer summarizer;
        const double large = std::numeric_limits<int>::max();
        const QVector<double> samples(1000, large);
        int64_t sum = 0;
        for (int i = 0; i < 9000; ++i) {
            Piece piece{1000.0 * i, samples};
            piece.samples[0] = large - 1;
            summarizer.add(*record<int>(piece));
            sum += 1000 * static_cast<int64_t>(large) - 1;
        }
        const double mean = static_cast<double>(static_cast<long double>(sum) / 9000000.0L);
        QVERIFY(sum > int64_t(1) << 53);
        QVERIFY(std::abs(summarizer.result().streams.front().mean - mean) <= 1E-12 * mean);
    }

    void sortsStreamsAndKeepsOriginsApart()
    {
        IO::StreamSummarizer summarizer;
        const QVector<double> three{1, 2, 3};
        summarizer.add(*record<int>({3, three}, "XD.ZEL..HHZ"), "second", 0);
        summarizer.add(*record<int>({0, three}, "XD.ZEL..HHZ"), "first", 0);
        summarizer.add(*record<int>({0, three}, "XD.ALB..HHZ"), "first", 512);
        // The same numbers in another type are a duplicate, too.
        summarizer.add(*record<float>({3, three}, "XD.ZEL..HHZ"), "third", 4096);

        const IO::StreamSummaries result = summarizer.result();
        QCOMPARE(result.streams.size(), size_t(2));
        QCOMPARE(result.streams[0].id, std::string("XD.ALB..HHZ"));
        QCOMPARE(result.streams[1].records, 2);
        QCOMPARE(result.notes.size(), size_t(1));
        QCOMPARE(result.notes[0].text(),
                 std::string("third: byte 4096: XD.ZEL..HHZ: duplicate of an "
                             "earlier record, not counted"));
    }
};

QTEST_APPLESS_MAIN(TestStreamSummary)
#include "tst_streamsummary.moc"
