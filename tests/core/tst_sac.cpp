#include <tellarix/core/records/formats/sac.h>
#include <tellarix/core/records/typedarray.h>

#include <QBuffer>
#include <QtEndian>
#include <QtTest>

#include <algorithm>
#include <limits>

using namespace Tellarix;
using namespace Tellarix::Formats;

namespace {

constexpr int FirstSample = 632;

std::string_view view(const QByteArray &bytes)
{
    return std::string_view(bytes.constData(), static_cast<size_t>(bytes.size()));
}

RecordPtr makeRecord(double rate = 20, const char *id = "XX.ABC.00.BHZ")
{
    const std::vector<float> samples{1.5f, -2.25f, 1e20f};
    return new Record(StreamCodes::FromID(id),
                      Core::Time::FromString("2024-02-29T12:34:56.789012Z"), rate,
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

template <typename T>
QByteArray changed(QByteArray bytes, int offset, T value)
{
    qToLittleEndian<T>(&value, 1, bytes.data() + offset);
    return bytes;
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
    void keepsRecords();
    void readsFiles_data();
    void readsFiles();
    void readsRoundRates_data();
    void readsRoundRates();
    void refusesFiles_data();
    void refusesFiles();
    void refusesWhatTheFormatCannotHold();
};

void TestSac::keepsRecords()
{
    const RecordPtr original = makeRecord();
    std::string cause;

    const RecordPtr record = decodeSac(view(written(*original)), cause);

    QVERIFY2(record, cause.c_str());
    QCOMPARE(cause, std::string());
    QCOMPARE(record->streamID(), std::string("XX.ABC.00.BHZ"));
    QCOMPARE(record->startTime().iso(), original->startTime().iso());
    QCOMPARE(record->samplingFrequency(), 20.0);
    QCOMPARE(record->sampleCount(), 3);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(record->data()->value(i), original->data()->value(i));
}

void TestSac::readsFiles_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("start");
    QTest::addColumn<double>("rate");
    QTest::addColumn<int>("samples");
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("cause");

    const QByteArray file = written(*makeRecord());
    const QString start = "2024-02-29T12:34:56.789012Z";
    const QString id = "XX.ABC.00.BHZ";
    QTest::newRow("other byte order") << swapped(file) << start << 20.0 << 3 << id << "";
    QTest::newRow("begin before the reference time")
        << changed<float>(file, 20, -1234.567f) << "2024-02-29T12:14:22.222000Z" << 20.0 << 3 << id
        << "";
    QTest::newRow("version 7") << version7(file, 1.0 / 99.9, 0.000345)
                               << "2024-02-29T12:34:56.789345Z" << 99.9 << 3 << id << "";
    QTest::newRow("version 7 without its footer")
        << version7(file, 1, 1).left(file.size()) << start << 20.0 << 3 << id
        << "file is cut off: its double precision footer is missing";
    QTest::newRow("cut off in a sample") << file.left(FirstSample + 11) << start << 20.0 << 2 << id
                                         << "file is cut off: it holds 2 of 3 samples";
    QTest::newRow("no reference time")
        << changed<int32_t>(file, 70 * 4, -12345) << "1970-01-01T00:00:00.000012Z" << 20.0 << 3
        << id << "file has no reference time, 1970-01-01 is taken";
    QTest::newRow("undefined begin and milliseconds")
        << changed<int32_t>(changed<float>(file, 20, -12345.0f), 75 * 4, -12345)
        << "2024-02-29T12:34:56.000000Z" << 20.0 << 3 << id << "";
}

void TestSac::readsFiles()
{
    QFETCH(QByteArray, bytes);

    std::string cause;
    const RecordPtr record = decodeSac(view(bytes), cause);

    QVERIFY2(record, cause.c_str());
    QTEST(QString::fromStdString(record->startTime().iso()), "start");
    QTEST(record->samplingFrequency(), "rate");
    QTEST(record->sampleCount(), "samples");
    QCOMPARE(record->data()->value(1), -2.25);
    QTEST(QString::fromStdString(record->streamID()), "id");
    QTEST(QString::fromStdString(cause), "cause");
}

void TestSac::readsRoundRates_data()
{
    QTest::addColumn<float>("interval");
    QTest::addColumn<double>("rate");

    QTest::newRow("0.05 s") << 0.05f << 20.0;
    QTest::newRow("1 / 300 s") << 1.0f / 300 << 300.0;
    QTest::newRow("0.016 s") << 0.016f << 62.5;
    QTest::newRow("0.3 s") << 0.3f << 1 / 0.3;
}

void TestSac::readsRoundRates()
{
    QFETCH(float, interval);

    std::string cause;
    const RecordPtr record = decodeSac(view(changed(written(*makeRecord()), 0, interval)), cause);

    QVERIFY2(record, cause.c_str());
    // To the last bit.
    QFETCH(double, rate);
    QVERIFY2(record->samplingFrequency() == rate,
             qPrintable(QString::number(record->samplingFrequency(), 'g', 17)));
}

void TestSac::refusesFiles_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("cause");

    const QByteArray file = written(*makeRecord());
    QTest::newRow("version") << changed<int32_t>(file, 76 * 4, 8) << "no SAC header";
    QTest::newRow("spectrum") << changed<int32_t>(file, 85 * 4, 2)
                              << "SAC file is no time series (type 2)";
    QTest::newRow("uneven") << changed<int32_t>(file, 105 * 4, 0)
                            << "SAC file is not evenly spaced";
    QTest::newRow("samples below zero")
        << changed<int32_t>(file, 79 * 4, std::numeric_limits<int>::min())
        << "SAC file has no samples";
    QTest::newRow("header alone") << file.left(FirstSample)
                                  << "file is cut off: it holds 0 of 3 samples";
    for (const float interval : {0.0f, -12345.0f, std::numeric_limits<float>::quiet_NaN(),
                                 std::numeric_limits<float>::infinity()})
        QTest::addRow("interval %g", double(interval))
            << changed<float>(file, 0, interval) << "sampling interval is out of range";
    QTest::newRow("day 400") << changed<int32_t>(file, 71 * 4, 400)
                             << "reference time is out of range: year 2024, day 400, 12:34:56.789";
}

void TestSac::refusesFiles()
{
    QFETCH(QByteArray, bytes);

    std::string cause;
    QVERIFY(!decodeSac(view(bytes), cause));
    QTEST(QString::fromStdString(cause), "cause");
}

void TestSac::refusesWhatTheFormatCannotHold()
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    std::string error;

    QVERIFY(!writeSac(buffer, *makeRecord(0), error));
    QVERIFY(!writeSac(buffer, *makeRecord(20, "XX.STATION12..BHZ"), error));
    QCOMPARE(error,
             std::string("XX.STATION12..BHZ: code \"STATION12\" is longer than 8 characters"));
    QVERIFY(bytes.isEmpty());
}

QTEST_GUILESS_MAIN(TestSac)

#include "tst_sac.moc"
