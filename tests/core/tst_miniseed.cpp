// SPDX-License-Identifier: LGPL-3.0-or-later

#include "seedbytes.h"

#include <tellarix/core/records/formats/miniseed.h>
#include <tellarix/core/records/formats/miniseedwriter.h>
#include <tellarix/core/records/formats/recordscanner.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/records/typedarray.h>

#include <QtTest>

#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <tuple>

using namespace Tellarix;
using namespace Tellarix::Formats;

namespace {
template <typename T>
RecordPtr makeRecord(const std::vector<T> &samples, double rate = 20,
                     const char *start = "2024-02-29T23:59:58.123456Z")
{
    return new Record(StreamCodes::FromID("XX.ABC.00.HHZ"), Core::Time::FromString(start), rate,
                      new TypedArray<T>(static_cast<int>(samples.size()), samples.data()), 87);
}

std::vector<int> noise(int count, int amplitude, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> step(-amplitude, amplitude);
    std::vector<int> samples(static_cast<size_t>(count));
    int value = 0;
    for (int &sample : samples)
        sample = value += step(random);
    return samples;
}

QByteArray written(const Record &record, int recordLength = 512)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    MiniSeedWriter writer(&buffer, recordLength);
    if (!writer.write(record))
        qWarning("%s", writer.errorString().c_str());
    return bytes;
}

/** What a scanner tells of @p bytes that come in pieces: "R 0" a record at byte 0, "F 512 cause"
 *  a fault, "N" a note. */
QStringList scan(const QByteArray &bytes, int pieceSize = 1 << 20, bool lookAhead = true)
{
    QStringList told;
    RecordScanner scanner;
    scanner.setLookAhead(lookAhead);
    int position = 0;
    using Step = RecordScanner::Step;
    for (Step step = scanner.next(); step != Step::End; step = scanner.next()) {
        if (step == Step::NeedsBytes) {
            if (position == bytes.size())
                scanner.finish();
            else
                scanner.append(view(bytes.mid(position, pieceSize)));
            position = std::min(bytes.size(), position + pieceSize);
        } else if (step == Step::Record) {
            told << QString("R %1").arg(scanner.offset());
        } else if (step != Step::Pause) {
            told << (step == Step::Fault ? "F " : "N ") + QString::number(scanner.offset()) + ' ' +
                        scanner.cause().c_str();
        }
    }
    return told;
}

std::vector<RecordPtr> decodeAll(const QByteArray &bytes, std::string *cause = nullptr)
{
    std::vector<RecordPtr> records;
    RecordScanner scanner;
    MiniSeedDecoder decoder;
    scanner.append(view(bytes));
    scanner.finish();
    std::string ignored;
    for (;;) {
        const RecordScanner::Step step = scanner.next();
        if (step == RecordScanner::Step::End)
            return records;
        RecordPtr record;
        if (step == RecordScanner::Step::Record)
            record = decoder.decode(scanner.header(), scanner.record(), cause ? *cause : ignored);
        if (record)
            records.push_back(record);
    }
}

template <typename T>
std::vector<T> samplesOf(const std::vector<RecordPtr> &records)
{
    std::vector<T> samples;
    for (const RecordPtr &record : records) {
        const auto *array = dynamic_cast<const TypedArray<T> *>(record->data());
        if (array)
            samples.insert(samples.end(), array->begin(), array->end());
    }
    return samples;
}

/** A record of one of four streams, each of which has its own type, rate and level. */
RecordPtr randomRecord(std::mt19937 &random, int longest)
{
    const unsigned stream = random() % 4;
    const double rates[] = {100, 40.96, 1 / 3.0, 33.33333};
    const int levels[] = {0, 2000000000, -2000000000, 7};
    const int count = random() % 3 ? 1 + int(random() % unsigned(longest)) : longest;
    // Small steps take 4 bits each, wide ones a word.
    std::vector<int> samples = noise(count, random() % 2 ? 3 : 100000, unsigned(random()));
    for (int &sample : samples)
        sample = int(unsigned(sample) + unsigned(levels[stream]));

    ArrayPtr data(new IntArray(count, samples.data()));
    if (stream == 3 && random() % 2) {
        const std::vector<double> doubles(samples.begin(), samples.end());
        data = new DoubleArray(count, doubles.data());
    }
    const Core::Time start = Core::Time::FromUSecs(1.7E15 + double(random()));
    return new Record(StreamCodes::FromID("XX.S" + std::to_string(stream) + "..HHZ"), start,
                      rates[stream], data, stream == 1 ? -1 : 50);
}

std::vector<double> valuesOf(const std::vector<RecordPtr> &records)
{
    std::vector<double> values;
    for (const RecordPtr &record : records) {
        for (int i = 0; i < record->sampleCount(); ++i)
            values.push_back(record->data()->value(i));
    }
    return values;
}

/** True if the times and rates of @p parts are those of @p wholes that they make up. */
bool followEachOther(const std::vector<RecordPtr> &parts, const std::vector<RecordPtr> &wholes)
{
    size_t whole = 0;
    int before = 0;
    for (const RecordPtr &part : parts) {
        const Record &original = *wholes[whole];
        const int64_t off = (part->startTime() - original.sampleTime(before)).usecs();
        if (part->samplingFrequency() != original.samplingFrequency() || std::abs(off) > 1)
            return false;
        before += part->sampleCount();
        if (before > original.sampleCount())
            return false;
        if (before == original.sampleCount()) {
            ++whole;
            before = 0;
        }
    }
    return whole == wholes.size();
}

QByteArray controlHeader(char type, int size)
{
    return (QByteArray("000001") + type + " 0100095 12").leftJustified(size, ' ');
}

} // namespace

class TestMiniSeed : public QObject
{
    Q_OBJECT

private slots:
    void keepsIntegers()
    {
        constexpr int Max = std::numeric_limits<int>::max();
        constexpr int Min = std::numeric_limits<int>::min();
        const std::pair<std::vector<int>, int> rows[] = {
            {{-5}, 512},
            {noise(5000, 3, 1), 4096},
            {{0, (1 << 29) - 1, 0, 1, 1 - (1 << 29), 7}, 512}, // widest step of compression
            {{Max, Min, 0, Max}, 512},
            {noise(300, 50, 3), 128}};
        for (const auto &[samples, recordLength] : rows) {
            const QByteArray bytes = written(*makeRecord(samples), recordLength);
            const std::vector<RecordPtr> records = decodeAll(bytes);
            QCOMPARE(bytes.size() % recordLength, 0);
            QCOMPARE(samplesOf<int>(records), samples);
            for (const RecordPtr &record : records)
                QCOMPARE(record->timingQuality(), 87);
        }
    }

    void keepsOtherTypes()
    {
        const std::vector<float> floats{0.5f, -1e30f, 3.25f, 1e-30f};
        std::vector<double> doubles(500);
        for (size_t i = 0; i < doubles.size(); ++i)
            doubles[i] = std::sin(double(i)) * 1e100;

        QCOMPARE(samplesOf<float>(decodeAll(written(*makeRecord(floats)))), floats);
        QCOMPARE(samplesOf<double>(decodeAll(written(*makeRecord(doubles)))), doubles);
        const std::vector<char> text{'o', 'n', '\r', '\n'};
        QCOMPARE(samplesOf<char>(decodeAll(written(*makeRecord(text, 0)))), text);
    }

    void keepsRatesAndTimes()
    {
        const std::pair<double, const char *> rows[] = {{1.0 / 300, "2024-12-31T23:59:59.999999Z"},
                                                        {62.5, "1969-12-31T23:59:59.000001Z"},
                                                        {99.9, "2024-06-30T23:59:59.123449Z"}};
        for (const auto &[rate, start] : rows) {
            const auto records = decodeAll(written(*makeRecord(noise(10, 9, 4), rate, start)));
            QCOMPARE(records.size(), size_t(1));
            QCOMPARE(records[0]->samplingFrequency(), rate);
            QCOMPARE(records[0]->startTime().iso(), std::string(start));
        }
    }

    void keepsStreamsWrittenByTurns()
    {
        const unsigned seed = std::random_device()();
        qInfo("seed %u", seed);
        std::mt19937 random(seed);
        for (int recordLength = 128; recordLength <= 1 << 20; recordLength *= 2) {
            for (const bool compressed : {true, false}) {
                // Long enough for several miniSEED records, and for one that could hold more
                // samples than can be counted.
                const int longest = 1000 + 3 * std::min(recordLength, 100000);
                std::map<std::string, std::vector<RecordPtr>> streams;
                QByteArray bytes;
                QBuffer buffer(&bytes);
                buffer.open(QIODevice::WriteOnly);
                MiniSeedWriter writer(&buffer, recordLength);
                writer.setCompressed(compressed);
                for (int i = 0; i < 8; ++i) {
                    const RecordPtr record = randomRecord(random, longest);
                    QVERIFY2(writer.write(*record), writer.errorString().c_str());
                    streams[record->streamID()].push_back(record);
                }
                QCOMPARE(int64_t(bytes.size()), writer.recordCount() * recordLength);

                std::string cause;
                std::map<std::string, std::vector<RecordPtr>> read;
                for (const RecordPtr &record : decodeAll(bytes, &cause))
                    read[record->streamID()].push_back(record);
                QCOMPARE(cause, std::string());
                QCOMPARE(read.size(), streams.size());
                for (const auto &[id, records] : streams) {
                    QVERIFY(valuesOf(read[id]) == valuesOf(records));
                    QCOMPARE(read[id].front()->startTime(), records.front()->startTime());
                    QVERIFY(followEachOther(read[id], records));
                }
            }
        }
    }

    void refusesWhatTheFormatCannotHold()
    {
        const std::vector<int> samples = noise(3, 1, 5);
        const double nan = std::numeric_limits<double>::quiet_NaN();
        const std::string range = " Hz is not from 1e-09 to 1e+09 Hz";
        const std::string years = " does not lie in the years 1900 to 2500";
        const std::pair<RecordPtr, std::string> rows[] = {
            {makeRecord(samples, -5), "sampling frequency of -5" + range},
            {makeRecord(samples, nan), "sampling frequency of nan" + range},
            {makeRecord(samples, 2e9), "sampling frequency of 2e+09" + range},
            {makeRecord(samples, 1e-12), "sampling frequency of 1e-12" + range},
            {makeRecord(std::vector<int>()), "record has no samples"},
            {makeRecord(samples, 20, "soon"), "record has no start time"},
            {makeRecord(samples, 20, "2501-01-01"),
             "start time 2501-01-01T00:00:00.000000Z" + years},
            {makeRecord(samples, 1, "2500-12-31T23:59:58Z"),
             "time of the last sample 2501-01-01T00:00:00.000000Z" + years},
            {makeRecord(samples, 1, "2500-12-31T23:59:57.99996Z"),
             "time of the last sample 2500-12-31T23:59:59.999960Z" + years},
        };
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        MiniSeedWriter writer(&buffer);
        for (const auto &[record, cause] : rows) {
            QVERIFY(!writer.write(*record));
            QCOMPARE(writer.errorString(), "XX.ABC.00.HHZ: " + cause);
        }
        QVERIFY(!MiniSeedWriter(&buffer, 1000).write(*makeRecord(samples)));
        QVERIFY(bytes.isEmpty());

        buffer.close();
        buffer.open(QIODevice::ReadOnly);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("QIODevice::write.*"));
        QVERIFY(!writer.write(*makeRecord(samples)));
        QCOMPARE(writer.recordCount(), int64_t(0));
    }

    void readsVersion2()
    {
        const auto row = [](const char *name, const Seed2 &record, double rate = 20,
                            const char *start = "2024-02-29T12:00:30.000000Z",
                            const char *id = "XX.ABC.00.HHZ") {
            const auto records = decodeAll(record.bytes());
            QVERIFY2(records.size() == 1, name);
            QVERIFY2(records[0]->samplingFrequency() == rate, name);
            QCOMPARE(records[0]->startTime().iso(), std::string(start));
            QCOMPARE(records[0]->streamID(), std::string(id));
            QCOMPARE(samplesOf<int>(records), (std::vector<int>{1, 2, 3}));
        };
        row("big endian", Seed2());
        // Year and day make sense both ways round.
        Seed2 ambiguous;
        ambiguous.bigEndian = false;
        ambiguous.year = 2056;
        ambiguous.day = 256;
        row("little endian, ambiguous date", ambiguous, 20, "2056-09-12T12:00:30.000000Z");
        Seed2 microseconds;
        microseconds.usecs = -37;
        microseconds.fraction = 1;
        row("microseconds below zero", microseconds, 20, "2024-02-29T12:00:30.000063Z");
        Seed2 correction;
        correction.correction = -15000;
        row("clock correction to be applied", correction, 20, "2024-02-29T12:00:28.500000Z");
        correction.activity = 2;
        row("clock correction applied already", correction);
        Seed2 codes;
        codes.second = 60;
        codes.codes = QByteArray("A\0\0\0\0  LHZ  ", 12);
        row("leap second, null bytes in codes", codes, 20, "2024-02-29T12:01:00.000000Z",
            ".A..LHZ");

        Seed2 rate;
        rate.factor = 1000;
        rate.multiplier = -3;
        row("factor / -multiplier", rate, 1000.0 / 3);
        rate.factor = -10;
        rate.multiplier = -6;
        row("period over multiplier", rate, 1.0 / 60);
        rate.factor = 0;
        row("no rate", rate, 0);
        Seed2 actual;
        actual.usecs = 0;
        actual.actualRate = 99.9f;
        row("blockette 100", actual, 99.9);
        actual.factor = -3;
        actual.actualRate = 1.0f / 3;
        row("blockette 100 of less precision", actual, 1.0 / 3);
    }

    void readsVersion3()
    {
        const auto row = [](const char *name, const Seed3 &record, double rate = 20,
                            const char *start = "2024-02-29T12:00:30.000000Z",
                            DataType type = DataType::Int) {
            std::string cause;
            const auto records = decodeAll(record.bytes(), &cause);
            QCOMPARE(cause, std::string());
            QVERIFY2(records.size() == 1 && records[0]->dataType() == type, name);
            QVERIFY2(records[0]->samplingFrequency() == rate, name);
            QCOMPARE(records[0]->startTime().iso(), std::string(start));
            QVERIFY2(valuesOf(records) == std::vector<double>({1, 2, 3}), name);
        };
        Seed3 plain;
        plain.extra = "{\"FDSN\":{}}";
        plain.nanoseconds = 999999999;
        row("nanoseconds rounded up to the next second", plain, 20, "2024-02-29T12:00:31.000000Z");

        const std::tuple<const char *, int, const char *, DataType> encodings[] = {
            {"int16", 1, "010002000300", DataType::Int},
            {"float32", 4, "0000803f0000004000004040", DataType::Float},
            {"float64", 5, "000000000000f03f00000000000000400000000000000840", DataType::Double},
            {"text", 0, "010203", DataType::Char},
        };
        for (const auto &[name, encoding, payload, type] : encodings) {
            Seed3 record;
            record.rate = -60;
            record.encoding = encoding;
            record.payload = QByteArray::fromHex(payload);
            row(name, record, 1.0 / 60, "2024-02-29T12:00:30.000000Z", type);
        }

        // Steim is big endian here as well: one frame with the differences x, 1, 1 in 8 bits each
        // plus a zero, and a record too short for libmseed.
        Seed3 steim;
        steim.encoding = 10;
        steim.payload =
            QByteArray::fromHex("01000000000000010000000300010100").leftJustified(64, '\0');
        steim.identifier = "X";
        row("Steim1, shortest header", steim);
        steim.extra = QByteArray(65535, ' ');
        row("Steim1, long extra headers", steim);
    }

    void readsOldEncodings()
    {
        const auto power = [](int exponent) { return std::ldexp(1.0, exponent); };
        const struct
        {
            int encoding;
            int size;
            std::vector<std::pair<unsigned, double>> samples; /**< bits and value */
        } rows[] = {
            // GEOSCOPE: 24 bits, and mantissas of 12 bits above -2048 under exponents of 3 or 4.
            {12, 3, {{0x7FFFFF, 8388607}, {0x800000, -8388608}, {0x000102, 258}}},
            {13, 2, {{0x0FFF, 2047}, {0x7000, -2048 * power(-7)}, {0x9801, power(-1)}}},
            {14, 2, {{0x0FFF, 2047}, {0xF000, -2048 * power(-15)}, {0x9801, power(-9)}}},
            // CDSN: 2 bits for gains of 1, 4, 16 and 128, and 14 bits above -8191.
            {16, 2, {{0, -8191}, {0x7FFF, 4 * 8192}, {0xBFFF, 16 * 8192}, {0xE000, 128}}},
            // SRO: the gain is 2 to the power of 10 - (4 bits); 12 bits with a sign.
            {30, 2, {{0x07FF, 2047 * 1024}, {0x5FFF, -32}, {0xA801, -2047}}},
            {32, 2, {{0x7FFF, 32767}, {0x8000, -32768}, {0x0102, 258}}},
        };
        for (const auto &row : rows) {
            // Big-endian in version 2; little-endian in version 3, in which there are more than
            // libmseed takes at once.
            constexpr int Count = 4000;
            QByteArray big;
            QByteArray little;
            for (size_t i = 0; i < Count; ++i) {
                const unsigned bits = row.samples[i % row.samples.size()].first;
                big += changed(QByteArray(4, '\0'), 0, qbswap(bits)).right(row.size);
                little += changed(QByteArray(4, '\0'), 0, bits).left(row.size);
            }
            Seed2 two;
            two.encoding = row.encoding;
            two.sampleCount = 128 / row.size;
            Seed3 three;
            three.encoding = row.encoding;
            three.sampleCount = Count;
            three.payload = little;
            const QByteArray bytes = two.bytes().replace(128, 128, big.left(128)) + three.bytes();

            std::string cause;
            const auto records = decodeAll(bytes, &cause);
            QCOMPARE(cause, std::string());
            QCOMPARE(records.size(), size_t(2));
            QCOMPARE(records[1]->sampleCount(), Count);
            for (const RecordPtr &record : records) {
                for (int i = 0; i < record->sampleCount(); ++i)
                    QCOMPARE(record->data()->value(i),
                             row.samples[size_t(i) % row.samples.size()].second);
            }
        }
    }

    void namesStreamsOfSourceIdentifiers()
    {
        const std::pair<const char *, const char *> rows[] = {
            {"FDSN:XX_ABC_00_H_H_Z", "XX.ABC.00.HHZ"},
            {"FDSN:XX2024_LONGNAME_10_H_RAW_Z", "XX2024.LONGNAME.10.H_RAW_Z"},
            {"FDSN:XX_ABC__V__1", "XX.ABC..V1"},
            {"FDSN:XX_ABC", ".FDSN:XX_ABC.."},
            {"urn:lab.7", ".urn:lab_7.."}};
        for (const auto &[identifier, id] : rows)
            QCOMPARE(codesFromSourceIdentifier(identifier)->id(), std::string(id));
    }

    void tellsDamagedHeaders()
    {
        Seed2 day;
        day.day = 400;
        Seed2 length;
        length.lengthExponent = 200;
        Seed2 data;
        data.dataOffset = 256;
        Seed2 chain;
        chain.firstBlockette = 65000;
        Seed2 rate;
        rate.actualRate = std::numeric_limits<float>::quiet_NaN();
        QByteArray wrongSum = Seed3().bytes();
        wrongSum[wrongSum.size() - 1] = '\x55';
        const std::pair<QByteArray, QString> rows[] = {
            {day.bytes(), "start time is out of range: year 2024, day 400, 12:00:30"},
            {length.bytes(), "blockette 1000 gives a record length that is out of range"},
            {data.bytes(), "data begin at byte 256 of a record of 256 bytes"},
            {chain.bytes(), "blockette chain points to byte 65000 of the record, behind the "
                            "beginning of the data"},
            {rate.bytes(), "sampling frequency of nan Hz is out of range"},
            {wrongSum, "check sum of the record is wrong"}};
        const QByteArray sound = Seed2().bytes();
        // What follows is found only if the damaged record does not swallow it.
        for (const auto &[bytes, cause] : rows)
            QCOMPARE(
                scan(sound + bytes + sound),
                QStringList({"R 0", "F 256 " + cause, QString("R %1").arg(256 + bytes.size())}));
    }

    void tellsDamagedPayloads()
    {
        Seed2 encoding;
        encoding.encoding = 31;
        Seed2 count;
        count.sampleCount = 33;
        Seed3 huge;
        huge.encoding = 11;
        huge.sampleCount = 0xFFFFFFFF;
        huge.payload = QByteArray(64, '\0');
        // SRO knows gains up to 10.
        Seed3 lateGain;
        lateGain.encoding = 30;
        lateGain.sampleCount = 5000;
        lateGain.payload = QByteArray(10000, '\0').replace(6001, 1, "\xb0");
        Seed3 firstGain = lateGain;
        firstGain.payload[1] = '\xf0';
        QByteArray last = written(*makeRecord(noise(100, 50, 6)));
        last[64 + 11] = char(last[64 + 11] ^ 1);
        // Steps of 3000 take half a word each: the first frame holds 26 of them.
        std::vector<int> ramp(100);
        for (int i = 0; i < 100; ++i)
            ramp[size_t(i)] = 3000 * i;
        QByteArray codes = written(*makeRecord(ramp));
        codes.replace(128, 64, QByteArray::fromHex("aaaaaaaa").leftJustified(64, '\0'));

        const std::tuple<QByteArray, int, QString> rows[] = {
            {encoding.bytes(), 0, "unsupported encoding 31"},
            {count.bytes(), 0, "33 samples don't fit into 128 bytes of data"},
            {huge.bytes(), 0, "4294967295 samples don't fit into 64 bytes of data"},
            {lateGain.bytes(), 3000, "record holds 3000 of 5000 samples"},
            {firstGain.bytes(), 0, "gain-ranged samples are damaged"},
            {last, 100, "integrity check of the compressed samples failed"},
            {codes, 26, "record holds 26 of 100 samples"}};
        for (const auto &[bytes, samples, cause] : rows) {
            std::string told;
            const auto records = decodeAll(bytes, &told);
            QVERIFY2(QString::fromStdString(told).startsWith(cause), told.c_str());
            QCOMPARE(records.empty() ? 0 : records[0]->sampleCount(), samples);
        }
    }

    void findsRecords()
    {
        const QByteArray two = Seed2().bytes();
        const QByteArray three = Seed3().bytes();
        Seed2 unknown;
        unknown.has1000 = false;
        Seed2 swallowing;
        swallowing.lengthExponent = 10;
        Seed3 longer;
        longer.extra = QByteArray(777, ' ');
        const QByteArray swallowed = longer.bytes() + three + longer.bytes();
        const std::pair<QByteArray, QStringList> rows[] = {
            {two + three + two, {"R 0", "R 256", "R 328"}},
            {unknown.bytes() + unknown.bytes() + two, {"R 0", "R 256", "R 512"}},
            {two + QByteArray(77, 'x') + three,
             {"R 0", "F 256 77 bytes that are no record", "R 333"}},
            {two + QByteArray(1024, '\0') + two + QByteArray(64, ' '),
             {"R 0", "N 256 1024 empty bytes", "R 1280", "N 1536 64 empty bytes"}},
            {two + two.left(200) + two + two,
             {"R 0", "F 256 record of 256 bytes is cut off after 200 bytes", "R 456", "R 712"}},
            {two + swallowing.bytes() + two + two + two + two,
             {"R 0", "F 256 record of 1024 bytes is cut off after 256 bytes", "R 512", "R 768",
              "R 1024", "R 1280"}},
            {three + greedyHeaders(1, swallowed.size()) + swallowed,
             {"R 0", "F 72 check sum of the record is wrong", "R 112", "R 961", "R 1033"}},
            {controlHeader('V', 4096) + controlHeader('A', 4096) + two +
                 QByteArray("000009").leftJustified(256, ' ') + two,
             {"R 8192", "R 8704"}},
        };
        for (const auto &[bytes, told] : rows) {
            for (const int pieceSize : {1, 7, 100, 256, 1 << 20})
                QCOMPARE(scan(bytes, pieceSize), told);
        }
    }

    void takesTimeInProportion()
    {
        // Headers that claim all that follows, by themselves and in the payload of a record.
        Seed2 around;
        around.lengthExponent = 20;
        Seed2 damaged;
        damaged.day = 400;
        const QByteArray inside = around.bytes() + damaged.bytes().left(48).repeated(20000) +
                                  greedyHeaders(2000, 4000000) + QByteArray(4000000, 'x');
        const std::pair<QByteArray, int> inputs[] = {{greedyHeaders(30000), 1}, {inside, 2}};
        for (const auto &[bytes, told] : inputs) {
            QElapsedTimer elapsed;
            elapsed.start();
            QCOMPARE(scan(bytes, 1000).size(), told);
            // Takes minutes if it grows with the square.
            QVERIFY2(elapsed.elapsed() < 10000, QByteArray::number(elapsed.elapsed()));
        }

        // Who calls gets a chance to stop.
        RecordScanner scanner;
        scanner.append(view(inputs[0].first));
        scanner.finish();
        int pauses = 0;
        while (scanner.next() == RecordScanner::Step::Pause)
            ++pauses;
        QVERIFY2(pauses >= inputs[0].first.size() / 300000, QByteArray::number(pauses));
    }

    void addsUpOverlappingStretches()
    {
        const auto seed = std::random_device()();
        std::mt19937 random(seed);
        QByteArray bytes(100000, '\0');
        std::generate(bytes.begin(), bytes.end(), [&] { return char(random()); });

        ChecksumIndex index;
        for (int begin = 0; begin < bytes.size(); begin += int(random() % 900)) {
            const QByteArray stretch =
                bytes.mid(begin, int(random() % (random() % 2 ? 300 : 90000)));
            const uint32_t checksum = ~index.add(ChecksumStart, view(stretch), begin);
            QVERIFY2(checksum == slowCrc32c(stretch),
                     qPrintable(QString("seed %1, byte %2").arg(seed).arg(begin)));
        }
    }

    void deliversEverythingAroundDamage()
    {
        constexpr int Length = 512;
        const QByteArray sound = written(*makeRecord(noise(20000, 1000, 7)), Length);
        const int count = sound.size() / Length;
        QVERIFY(count > 20);
        const auto seed = std::random_device()();
        std::mt19937 random(seed);

        for (int run = 0; run < 300; ++run) {
            QByteArray bytes = sound;
            const int from = int(random() % unsigned(sound.size()));
            const int length = std::min<int>(1 + int(random() % 1500), sound.size() - from);
            for (int i = from; i < from + length; ++i)
                bytes[i] = char(random());

            const QStringList told = scan(bytes, 4000);
            for (int record = 0; record < count; ++record) {
                const int offset = record * Length;
                const bool hit = offset + Length > from && offset < from + length;
                if (!hit && !told.contains(QString("R %1").arg(offset)))
                    QFAIL(qPrintable(QString("seed %1, run %2: record at byte %3 is lost")
                                         .arg(seed)
                                         .arg(run)
                                         .arg(offset)));
            }
            decodeAll(bytes);
        }
    }
};

QTEST_GUILESS_MAIN(TestMiniSeed)

#include "tst_miniseed.moc"
