// SPDX-License-Identifier: LGPL-3.0-or-later

#include "waveforms/dataexport.h"
#include "waveforms/exportactions.h"
#include "waveformtesting.h"

#include <tellarix/client/io/recordstream.h>
#include <tellarix/core/math/runningmean.h>
#include <tellarix/qt/records/timescale.h>

#include <QAbstractButton>
#include <QDialog>
#include <QDir>
#include <QMainWindow>
#include <QMessageBox>
#include <QSettings>
#include <QTimer>

#include <cstring>
#include <limits>
#include <map>

using namespace Workbench;
using namespace WaveformTesting;

namespace {

/** Time in microseconds and bits of each sample, by stream; not-a-number compares by its bits. */
using Samples = std::map<std::string, std::vector<std::pair<int64_t, uint64_t>>>;

void collect(Samples &samples, const Record &record, const Core::TimeWindow *window)
{
    for (int i = 0; i < record.sampleCount(); ++i) {
        const Core::Time time = record.sampleTime(i);
        if (window && !window->contains(time))
            continue;
        const double value = record.data()->value(i);
        uint64_t bits;
        std::memcpy(&bits, &value, sizeof bits);
        samples[record.streamID()].emplace_back(time.usecs(), bits);
    }
}

Samples samplesOf(const std::vector<RecordCPtr> &records, const Core::TimeWindow &window)
{
    Samples samples;
    for (const RecordCPtr &record : records)
        collect(samples, *record, &window);
    return samples;
}

/** What a reader finds in files; its complaints as a stream "error". */
Samples readBack(const QStringList &files)
{
    Samples samples;
    for (const QString &file : files) {
        const auto stream = IO::RecordStream::Create("file://" + file.toStdString());
        stream->setMessageHandler([&](const IO::StreamMessage &message) {
            qWarning("%s", message.text().c_str());
            samples["error"].emplace_back(0, 0);
        });
        if (!stream->open())
            samples["error"].emplace_back(0, 0);
        while (const RecordPtr record = stream->next())
            collect(samples, *record, nullptr);
    }
    return samples;
}

DataExport exportOf(const std::vector<RecordCPtr> &records, const Core::TimeWindow &window)
{
    std::map<std::string, RingBuffer> sequences;
    QVector<const RecordSequence *> streams;
    for (const RecordCPtr &record : records) {
        const auto place = sequences.try_emplace(record->streamID(), -1);
        place.first->second.feed(record.get());
        if (place.second)
            streams.append(&place.first->second);
    }
    return DataExport(streams, window);
}

std::vector<RecordCPtr> mixedRecords()
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const float floatNan = std::numeric_limits<float>::quiet_NaN();
    return {sawTooth("XX.AAA..HHZ", 0, 20, 500),
            sawTooth("XX.AAA..HHZ", 25, 20, 300),
            sawTooth("XX.AAA..HHZ", 60.0125, 20, 300),
            record<int>("XX.AAA.00.HHN", 1.5, 1, {INT_MAX, INT_MIN, 0, INT_MAX, 5, 6, 7}),
            record<double>("XX.BBB..HHZ", 0.123456, 1, {1.0 / 3, nan, 1E300, -0.0, 4, 5}),
            record<float>("XX.CCC..HHZ", -2, 0.5, {0.1f, floatNan, 2, 3, 4})};
}

} // namespace

class TestDataExport : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QLocale::setDefault(QLocale::c());
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, _folder.path());
    }

    void givesBackEachSample()
    {
        const auto records = mixedRecords();
        // Everything, within a record, over a border of records, over a gap.
        for (const Core::TimeWindow &part :
             {window(-100, 1000), window(3, 4.05), window(24.9, 25.1), window(30, 61)}) {
            const ExportOutcome outcome = exportOf(records, part).writeMiniSeed(path("all.mseed"));
            QVERIFY2(outcome.ok, qPrintable(outcome.messages.join('\n')));

            const Samples expected = samplesOf(records, part);
            QVERIFY(readBack(outcome.files) == expected);
            int64_t count = 0;
            for (const auto &stream : expected)
                count += static_cast<int64_t>(stream.second.size());
            QCOMPARE(outcome.samples, count);
        }
    }

    void writesSacFileForEachStretch()
    {
        std::vector<RecordCPtr> records = mixedRecords();
        records.erase(records.begin() + 3, records.begin() + 5);
        const DataExport data = exportOf(records, window(-100, 1000));
        const ExportOutcome outcome = data.writeSac(_folder.path());
        QVERIFY(outcome.ok && outcome.messages.isEmpty());

        const QStringList names{"XX.AAA..HHZ.2024-01-05T101112.sac",
                                "XX.AAA..HHZ.2024-01-05T101212.sac",
                                "XX.CCC..HHZ.2024-01-05T101110.sac"};
        QCOMPARE(QDir(_folder.path()).entryList({"*.sac"}, QDir::Files, QDir::Name), names);
        QVERIFY(readBack(outcome.files) == samplesOf(records, window(-100, 1000)));
    }

    void tellsRoundedSamples()
    {
        const int exact = 1 << 24;
        const std::vector<RecordCPtr> records{
            record<int>("XX.AAA..HHZ", 0, 1, {exact, exact + 1, exact + 2, exact + 3})};
        const ExportOutcome outcome = exportOf(records, window(0, 10)).writeSac(_folder.path());
        QVERIFY(outcome.ok);
        QCOMPARE(outcome.messages.size(), 1);
        QVERIFY2(outcome.messages[0].contains("2 samples"), qPrintable(outcome.messages[0]));
    }

    void neverGivesOneNameTwice()
    {
        // Three stretches begin within one second, two of them even at the same time.
        const std::vector<RecordCPtr> records{sawTooth("XX.AAA..HHZ", 0, 100, 10),
                                              sawTooth("XX.AAA..HHZ", 0.3, 100, 10),
                                              sawTooth("XX.AAA..HHZ", 0.3, 100, 30)};
        QTemporaryDir folder;
        const ExportOutcome outcome = exportOf(records, window(0, 10)).writeSac(folder.path());
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), 3);
        QVERIFY(readBack(outcome.files) == samplesOf(records, window(0, 10)));
    }

    void keepsOddCodesInFolder()
    {
        const StreamCodesCPtr codes(new StreamCodes("..", "/tmp/A", "", "HH*"));
        const int samples[] = {1, 2, 3};
        const RecordCPtr odd(new Record(codes, Start, 1, new IntArray(3, samples)));
        const QStringList names = exportOf({odd}, window(0, 10)).sacFileNames();
        QCOMPARE(names, QStringList("__._tmp_A..HH_.2024-01-05T101112.sac"));
    }

    void takesRawRecordsOfChosenRows()
    {
        TraceView view;
        std::vector<RecordCPtr> records;
        for (const char *id : {"XX.AAA..HHZ", "XX.BBB..HHZ", "XX.CCC..HHZ"}) {
            records.push_back(sawTooth(id, 0, 10, 100));
            addRow(view, {records.back()});
        }
        view.resize(600, 300);
        view.show();
        view.setAlignment(Start);
        view.setTimeRange(-1, 20);
        view.setFilter(new Math::Filtering::RunningMeanHighPass<double>(2.0));
        view.setFilterEnabled(true);
        QVERIFY(view.itemAt(0)->recordWidget()->filteredRecords(0));

        const QString file = path("rows.mseed");
        QVERIFY(DataExport::FromView(view).writeMiniSeed(file).ok);
        QVERIFY(readBack({file}) == samplesOf(records, window(-1, 20)));

        view.setSelectedTrace(1);
        QVERIFY(DataExport::FromView(view).writeMiniSeed(file).ok);
        QVERIFY(readBack({file}) == samplesOf({records[1]}, window(-1, 20)));
    }

    void takesChosenWindow()
    {
        TraceView view;
        Trace *first = addRow(view, {sawTooth("XX.AAA..HHZ", 0, 10, 1000)});
        Trace *second = addRow(view, {sawTooth("XX.BBB..HHZ", 0, 10, 1000)});
        view.resize(600, 300);
        view.show();
        view.setAlignment(Start);
        view.setTimeRange(0, 60);
        second->recordWidget()->setSelectedTimeWindow(window(10, 20));
        QCOMPARE(DataExport::ChosenWindow(view), window(10, 20));
        view.select(first);
        QCOMPARE(DataExport::ChosenWindow(view), view.visibleTimeWindow());

        view.timeScale()->setSelection(30, 40.5);
        QCOMPARE(DataExport::ChosenWindow(view), window(30, 40.5));
    }

    void keepsOldFileWhenWritingFails()
    {
        const QString file = writeText(path("old.mseed"), "old data");
        const auto check = [&](const ExportOutcome &outcome, const QString &cause) {
            QVERIFY(!outcome.ok);
            QVERIFY(outcome.files.isEmpty());
            QCOMPARE(outcome.messages.size(), 1);
            QVERIFY2(outcome.messages[0].startsWith(file + ": ") &&
                         outcome.messages[0].contains(cause),
                     qPrintable(outcome.messages[0]));
            QCOMPARE(contentOf(file), QByteArray("old data"));
        };

        const std::vector<RecordCPtr> good{sawTooth("XX.AAA..HHZ", 0, 100, 20000)};
        check(exportOf(good, window(500, 600)).writeMiniSeed(file), "no samples from 2024-01-05");
        check(exportOf({good[0], sawTooth("XX.TOOLONG..HHZ", 0, 1, 10)}, window(0, 10))
                  .writeMiniSeed(file),
              "TOOLONG");
        const FullDisk limit(4000);
        check(exportOf(good, window(0, 500)).writeMiniSeed(file), "");

        const QString sac = writeText(path("XX.AAA..HHZ.2024-01-05T101112.sac"), "old data");
        QVERIFY(!exportOf(good, window(0, 500)).writeSac(_folder.path()).ok);
        QCOMPARE(contentOf(sac), QByteArray("old data"));
    }

    void keepsOldFileWhenCancelled()
    {
        const QString file = writeText(path("old.mseed"), "old data");
        const DataExport data = exportOf(mixedRecords(), window(-100, 1000));
        const auto cancelAtHalf = [](double share) { return share < 0.5; };
        QVERIFY(!data.writeMiniSeed(file, cancelAtHalf).ok);
        QCOMPARE(contentOf(file), QByteArray("old data"));

        QTemporaryDir folder;
        const ExportOutcome outcome = data.writeSac(folder.path(), cancelAtHalf);
        QVERIFY(!outcome.ok);
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), outcome.files.size());
        QVERIFY(outcome.files.size() > 0 && outcome.files.size() < data.sacFileNames().size());
        QVERIFY(outcome.messages.last().contains("cancelled"));
    }

    void asksBeforeFilesAreReplaced()
    {
        TraceView view;
        addRow(view, {sawTooth("XX.AAA..HHZ", 0, 10, 100)});
        view.resize(600, 300);
        view.setAlignment(Start);
        view.timeScale()->setSelection(0, 10);
        QTemporaryDir folder;
        const QString file = writeText(folder.filePath("XX.AAA..HHZ.2024-01-05T101112.sac"), "old");
        QSettings().setValue("Workbench/exportFolder", folder.path());

        QMainWindow owner;
        Bench bench;
        ExportActions exports(&view, bench.rows(), &owner);
        QSignalSpy done(&exports, SIGNAL(done(QString)));
        // First the dialog for the folder, which it starts in, then the question.
        const auto answer = [&](const QString &buttonText) {
            QTimer::singleShot(0, [buttonText] {
                QTimer::singleShot(0, [buttonText] {
                    auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
                    for (QAbstractButton *button : box->buttons()) {
                        if (button->text().remove('&') == buttonText)
                            button->click();
                    }
                });
                qobject_cast<QDialog *>(QApplication::activeModalWidget())->accept();
            });
            exports.askForSac();
        };
        answer("Cancel");
        QCOMPARE(contentOf(file), QByteArray("old"));
        answer("Replace");
        QCOMPARE(done.size(), 1);
        QVERIFY(readBack({file}) ==
                samplesOf({sawTooth("XX.AAA..HHZ", 0, 10, 100)}, window(0, 10)));
    }

private:
    QString path(const QString &name) const { return _folder.filePath(name); }

    QTemporaryDir _folder;
};

QTEST_MAIN(TestDataExport)
#include "tst_dataexport.moc"
