// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/recordstream.h>
#include <tellarix/core/math/filterparser.h>
#include <tellarix/core/records/record.h>

#include <QTemporaryFile>
#include <QtTest>

using namespace Tellarix;
using namespace Tellarix::Math::Filtering;

class ExtensionTest : public QObject
{
    Q_OBJECT

private slots:
    void clips()
    {
        const auto filter = parseFilter<double>("clip(2.5)");
        QVERIFY(filter);
        filter->setSamplingFrequency(100);
        std::vector<double> samples{1, 3, -7, 2.5};
        filter->apply(static_cast<int>(samples.size()), samples.data());
        QCOMPARE(samples, (std::vector<double>{1, 2.5, -2.5, 2.5}));

        QCOMPARE(filterProblem("clip(0)", 100),
                 std::string("column 6: limit 0 is not a number from 1 to 1e+12"));
    }

    void streamsSines()
    {
        const IO::RecordStreamPtr stream = IO::RecordStream::Create("sine://5");
        QVERIFY(stream && stream->open());
        int records = 0;
        while (const RecordPtr record = stream->next()) {
            QCOMPARE(record->sampleCount(), 6000);
            ++records;
        }
        QCOMPARE(records, 60);

        std::string error;
        QVERIFY(!IO::RecordStream::Create("sine://five", &error));
        QCOMPARE(error, std::string("\"five\" is no frequency"));
    }

    void readsSampleTexts_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("samples");
        QTest::addColumn<QString>("message");
        const QByteArray head = "samples XX.TEXT..HHZ 2024-01-05T00:00:00Z 20\n";
        QTest::newRow("sound") << head + "1\n-2.5\n3" << 3 << QString();
        QTest::newRow("damaged") << head + "1\ntwo\n3\n" << 0 << "byte 47: \"two\" is no number";
        QTest::newRow("headless") << QByteArray("samples\n1\n") << 0
                                  << "neither miniSEED, SAC nor sample text";
        QTest::newRow("no rate") << QByteArray("samples XX.TEXT..HHZ 2024-01-05\n1\n") << 0
                                 << "the first line is not \"samples STREAM TIME HZ\"";
    }

    void readsSampleTexts()
    {
        QFETCH(QByteArray, text);
        QTemporaryFile file;
        QVERIFY(file.open() && file.write(text) == text.size() && file.flush());
        QString told;
        int samples = 0;
        const IO::RecordStreamPtr stream =
            IO::RecordStream::Create("file://" + file.fileName().toStdString());
        QVERIFY(stream);
        stream->setMessageHandler([&told](const IO::StreamMessage &message) {
            told = QString::fromStdString(message.text());
        });
        if (!stream->open())
            told = QString::fromStdString(stream->errorString());
        while (const RecordPtr record = stream->next())
            samples += record->sampleCount();
        QTEST(samples, "samples");
        QTEST(told.remove(file.fileName() + ": "), "message");
    }
};

QTEST_GUILESS_MAIN(ExtensionTest)

#include "tst_extension.moc"
