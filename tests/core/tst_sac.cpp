// SPDX-License-Identifier: LGPL-3.0-or-later

#include "seedbytes.h"

#include <tellarix/core/records/formats/sac.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/records/typedarray.h>

#include <QtTest>

#include <algorithm>
#include <limits>

using namespace Tellarix;
using namespace Tellarix::Formats;

namespace {
constexpr int FirstSample = 632;

RecordPtr makeRecord(double rate = 20, const char *id = "XX.ABC.00.BHZ",
                     const char *start = "2024-02-29T12:34:56.789012Z")
{
    const std::vector<float> samples{1.5f, -2.25f, 1e20f};
    return new Record(StreamCodes::FromID(id), Core::Time::FromString(start), rate,
                      new FloatArray(3, samples.data()));
}

QByteArray written(const Record &record)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    std::string error;
    return writeSac(buffer, record, error) ? bytes : QByteArray();
}

/** @p value to its last bit. */
QString exact(double value)
{
    return QString::number(value, 'g', 17);
}

QString exactRate(const QByteArray &file)
{
    std::string cause;
    const RecordPtr record = decodeSac(view(file), cause);
    return record ? exact(record->samplingFrequency()) : QString::fromStdString(cause);
}

QByteArray swapped(QByteArray bytes)
{
    for (int offset = 0; offset < bytes.size(); offset += 4) {
        if (offset < 440 || offset >= FirstSample)
            std::reverse(bytes.begin() + offset, bytes.begin() + offset + 4);
    }
    return bytes;
}

/** @p bytes as version 7 with the first two numbers of its footer set. */
QByteArray version7(const QByteArray &bytes, double interval, double begin)
{
    QByteArray result = changed<int32_t>(bytes, 76 * 4, 7) + QByteArray(22 * 8, '\0');
    result = changed<double>(result, bytes.size(), interval);
    return changed<double>(result, bytes.size() + 8, begin);
}

} // namespace

class TestSac : public QObject
{
    Q_OBJECT

private slots:
    void readsFiles()
    {
        const QByteArray file = written(*makeRecord());
        const char *const start = "2024-02-29T12:34:56.789012Z";
        const std::tuple<QByteArray, const char *, double, int, const char *> rows[] = {
            {file, start, 20, 3, ""},
            {swapped(file), start, 20, 3, ""},
            {changed<float>(file, 20, -1234.567f), "2024-02-29T12:14:22.222000Z", 20, 3, ""},
            {version7(file, 1.0 / 99.9, 0.000345), "2024-02-29T12:34:56.789345Z", 99.9, 3, ""},
            {version7(file, 1, 1).left(file.size()), start, 20, 3,
             "file is cut off: its double precision footer is missing"},
            {file.left(FirstSample + 11), start, 20, 2, "file is cut off: it holds 2 of 3 samples"},
            {changed<int32_t>(file, 70 * 4, -12345), "1970-01-01T00:00:00.000012Z", 20, 3,
             "file has no reference time, 1970-01-01 is taken"},
            {changed<int32_t>(changed<float>(file, 20, -12345.0f), 75 * 4, -12345),
             "2024-02-29T12:34:56.000000Z", 20, 3, ""},
        };
        for (const auto &[bytes, begin, rate, samples, told] : rows) {
            std::string cause;
            const RecordPtr record = decodeSac(view(bytes), cause);
            QVERIFY2(record, cause.c_str());
            QCOMPARE(cause, std::string(told));
            QCOMPARE(record->startTime().iso(), std::string(begin));
            QCOMPARE(record->samplingFrequency(), rate);
            QCOMPARE(record->sampleCount(), samples);
            for (int i = 0; i < samples; ++i)
                QCOMPARE(record->data()->value(i), makeRecord()->data()->value(i));
            QCOMPARE(record->streamID(), std::string("XX.ABC.00.BHZ"));
        }
    }

    void keepsRoundRates()
    {
        const std::pair<float, double> rows[] = {
            {0.05f, 20}, {1.0f / 300, 300}, {0.3f, 1 / 0.3}, {60, 1.0 / 60}};
        for (const auto &[interval, rate] : rows)
            QCOMPARE(exactRate(changed(written(*makeRecord()), 0, interval)), exact(rate));
        for (const double rate : {40.96, 99.9, 12.5, 1 / 3.0, 31.25, 100 / 3.0, 1234.0, 8.33e-5})
            QCOMPARE(exactRate(written(*makeRecord(rate))), exact(rate));
    }

    void refusesFiles()
    {
        const QByteArray file = written(*makeRecord());
        const float nan = std::numeric_limits<float>::quiet_NaN();
        const std::pair<QByteArray, const char *> rows[] = {
            {changed<int32_t>(file, 76 * 4, 8), "no SAC header"},
            {changed<int32_t>(file, 85 * 4, 2), "SAC file is no time series (type 2)"},
            {changed<int32_t>(file, 105 * 4, 0), "SAC file is not evenly spaced"},
            {changed<int32_t>(file, 79 * 4, std::numeric_limits<int>::min()),
             "SAC file has no samples"},
            {file.left(FirstSample), "file is cut off: it holds 0 of 3 samples"},
            {changed<float>(file, 0, -12345.0f), "sampling interval is out of range"},
            {changed<float>(file, 0, nan), "sampling interval is out of range"},
            {changed<int32_t>(file, 71 * 4, 400),
             "reference time is out of range: year 2024, day 400, 12:34:56.789"},
        };
        for (const auto &[bytes, expected] : rows) {
            std::string cause;
            QVERIFY(!decodeSac(view(bytes), cause));
            QCOMPARE(cause, std::string(expected));
        }
    }

    void refusesWhatTheFormatCannotHold()
    {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        const std::pair<RecordPtr, const char *> rows[] = {
            {makeRecord(0), "XX.ABC.00.BHZ: record has no sampling frequency"},
            {makeRecord(-20),
             "XX.ABC.00.BHZ: sampling frequency of -20 Hz is not from 1e-09 to 1e+09 Hz"},
            {makeRecord(1e-300),
             "XX.ABC.00.BHZ: sampling frequency of 1e-300 Hz is not from 1e-09 to 1e+09 Hz"},
            {makeRecord(20, "XX.ABC.00.BHZ", "1899-12-31T23:59:59Z"),
             "XX.ABC.00.BHZ: start time 1899-12-31T23:59:59.000000Z does not lie in the years 1900 "
             "to 2500"},
            {makeRecord(20, "XX.ABC.00.BHZ", "no time"), "XX.ABC.00.BHZ: record has no start time"},
            {makeRecord(20, "XX.STATION12..BHZ"),
             "XX.STATION12..BHZ: code \"STATION12\" is longer than 8 characters"},
            {makeRecord(20, "XX.-12345..BHZ"),
             "XX.-12345..BHZ: code -12345 stands for none in the format"}};
        for (const auto &[record, expected] : rows) {
            std::string error;
            QVERIFY(!writeSac(buffer, *record, error));
            QCOMPARE(error, std::string(expected));
        }
        QVERIFY(bytes.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestSac)

#include "tst_sac.moc"
