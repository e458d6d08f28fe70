// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/recordstream.h>
#include <tellarix/client/io/streamrequest.h>
#include <tellarix/client/io/streamsummary.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/records/typedarray.h>

#include <QtTest>

#include <cmath>
#include <limits>

using namespace Tellarix;
using namespace Tellarix::IO;

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

/** A stream that writes down what it is asked for. */
class Listener : public RecordStream
{
public:
    bool setSource(const std::string &source) override
    {
        asked = QString::fromStdString(source);
        return true;
    }
    bool addStream(const std::string &network, const std::string &station,
                   const std::string &location, const std::string &channel,
                   const Core::TimeWindow &window) override
    {
        asked += QString::fromStdString(" " + network + "." + station + "." + location + "." +
                                        channel + " " + window.startTime().iso() + " " +
                                        (window.endTime().valid() ? window.endTime().iso() : "-"));
        return true;
    }
    bool open() override { return true; }
    RecordPtr next() override { return RecordPtr(); }
    void close() override {}

    static QString asked;
};

QString Listener::asked;

} // namespace

class StreamSummaryTest : public QObject
{
    Q_OBJECT

private slots:
    void countsGapsAndOverlaps()
    {
        const QVector<double> three{1, 2, 3};
        const QVector<double> nine(9);
        // Numbers of records, gaps and overlaps, and notes.
        const std::tuple<Pieces, QString, QStringList> rows[] = {
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
        for (const auto &[pieces, counts, notes] : rows) {
            const IO::StreamSummaries result = summaries(pieces);
            QCOMPARE(shortNotes(result), notes);
            QCOMPARE(result.streams.size(), size_t(1));
            const IO::StreamSummary &stream = result.streams.front();
            const auto found = QString("%1 %2 %3").arg(stream.records).arg(stream.gaps);
            QCOMPARE(found.arg(stream.overlaps), counts);
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

    void readsTimes()
    {
        const Core::Time now(2024, 1, 5, 10, 11, 12);
        const std::pair<const char *, double> cases[] = {
            {"now", 0},        {"-6h", -21600}, {"+1.5d", 129600},
            {"-30min", -1800}, {"-2s", -2},     {"2024-01-05T10:11:13", 1}};
        for (const auto &[text, seconds] : cases) {
            Core::Time time;
            QVERIFY2(relativeTime(text, now, &time), text);
            QCOMPARE((time - now).length(), seconds);
        }
        for (const char *text : {"", "-", "-6", "-6w", "-h", "- 6h", "-1e99d", "-1.2.3h", "-0h",
                                 "-99999999999d", "yesterday"}) {
            Core::Time time = now;
            QVERIFY2(!relativeTime(text, now, &time) && time == now, text);
        }
    }

    void asksStreamsForWhatIsWanted()
    {
        const RecordStreamScheme scheme("listener", [] { return RecordStreamPtr(new Listener); });
        const std::pair<const char *, const char *> cases[] = {
            {"listener://h:1/p#1", "h:1/p#1"},
            {"listener://h#streams=A.B..C,A.*.00.B?Z&from=2024-01-05&to=2024-01-06T01:00:00",
             "h A.B..C 2024-01-05T00:00:00.000000Z 2024-01-06T01:00:00.000000Z "
             "A.*.00.B?Z 2024-01-05T00:00:00.000000Z 2024-01-06T01:00:00.000000Z"},
            {"listener://h#from=2024-01-05", "h *.*.*.* 2024-01-05T00:00:00.000000Z -"}};
        for (const auto &[url, asked] : cases) {
            QVERIFY(RecordStream::Create(url));
            QCOMPARE(Listener::asked.simplified(), QString(asked));
            StreamRequest request;
            std::string error;
            QVERIFY(StreamRequest::parse(url, &request, &error));
            QCOMPARE(request.text(), std::string(url));
        }
        for (const char *part : {"streams=A.B.C", "from=later", "streams=A.B..C&till=now"}) {
            std::string error;
            QVERIFY(!RecordStream::Create(std::string("listener://h#") + part, &error));
            QVERIFY2(!error.empty(), part);
        }
    }
};

QTEST_APPLESS_MAIN(StreamSummaryTest)
#include "tst_streamsummary.moc"
