// SPDX-License-Identifier: LGPL-3.0-or-later

#include "core/recordtesting.h"
#include "spectrograms.h"

#include <norvu/gui/recordspectrogram.h>

#include <QtTest>

#include <memory>

using namespace Norvu::Gui;
using namespace RecordTesting;
using Core::Time;

namespace {

/** A spectrogram of a ramp of 100 samples at 10 Hz that begins at the time base. */
std::unique_ptr<RecordSpectrogram<float>> fedSpectrogram()
{
    auto spectrogram = std::make_unique<RecordSpectrogram<float>>(settingsOf("freqs(1,4,2,3)"));
    spectrogram->feed(ramp(0, 60, 10).get());
    spectrogram->feed(ramp(6, 40, 10).get());
    return spectrogram;
}

} // namespace

class RecordSpectrogramTest : public QObject
{
    Q_OBJECT

private slots:
    void convertsSamples()
    {
        const auto spectrogram = fedSpectrogram();
        Spectrogram<float> plain(spectrogram->settings());
        plain.setSamplingFrequency(10);
        std::vector<float> samples;
        for (int i = 0; i < 100; ++i)
            samples.push_back(float(i < 60 ? i : i - 60));
        plain.pushData(100, samples.data());
        QCOMPARE(spectrogram->columns(), 100);
        QVERIFY(spectrogram->maximum() > 0);
        QVERIFY(std::equal(plain.data(), plain.data() + 300, spectrogram->data()));
    }

    void keepsTimeOfRecords()
    {
        const auto spectrogram = fedSpectrogram();
        QCOMPARE(spectrogram->startTime(), at(0));
        QCOMPARE(spectrogram->endTime(), at(10));

        // The rate of later records is not looked at, their end is.
        spectrogram->feed(ramp(10.02, 100, 100).get());
        QCOMPARE(spectrogram->samplingFrequency(), 10.0);
        QCOMPARE(spectrogram->columns(), 200);
        QCOMPARE(spectrogram->endTime(), at(11.02));
    }

    void mapsTimesToColumns()
    {
        const QVector<QPair<double, int>> cases{{2.59, 25},
                                                {10.0, 100},
                                                {-0.09, 0},
                                                {-1.25, -12},
                                                {3E9, std::numeric_limits<int>::max()}};
        for (const auto &[seconds, column] : cases)
            QCOMPARE(fedSpectrogram()->mapTime(at(seconds)), column);
    }

    void trimsByTime()
    {
        const struct
        {
            double start, end, newStart;
            int columns;
        } cases[] = {{2.55, 20, 2.5, 75}, {-1, 4, 0, 40}, {10, 20, 0, 0}, {-20, -10, 0, 0}};
        for (const auto &item : cases) {
            const auto spectrogram = fedSpectrogram();
            spectrogram->trim(at(item.start), at(item.end));
            QCOMPARE(spectrogram->columns(), item.columns);
            QCOMPARE(spectrogram->startTime(), at(item.newStart));
            QCOMPARE(spectrogram->endTime(), at(item.newStart + item.columns / 10.0));
        }
    }

    void manyTrimsDoNotShiftTimes()
    {
        // Each sample begins a seventh of a microsecond behind what a time can tell.
        constexpr double Rate = 7;
        RecordSpectrogram<float> spectrogram(settingsOf("freqs(1,4,2,1)"));
        for (int i = 0; i < 20000; ++i) {
            spectrogram.feed(ramp(i / Rate, 1, Rate).get());
            spectrogram.trim(at((i - 2) / Rate), at((i + 1.5) / Rate));
        }
        QVERIFY(spectrogram.columns() <= 4);
        QVERIFY(std::abs((spectrogram.endTime() - at(20000 / Rate)).length()) < 1E-5);
    }

    void keepsTimesWithPeaks()
    {
        RecordSpectrogram<float> spectrogram(settingsOf("freqs(1,4,2,3)"));
        spectrogram.setColumnInterval(8);
        spectrogram.feed(ramp(0, 60, 10).get());
        spectrogram.feed(ramp(6, 40, 10).get());
        QCOMPARE(spectrogram.columns(), 12);
        QCOMPARE(spectrogram.mapTime(at(2.5)), 3);
        // The last four samples, which wait for their column, still count.
        spectrogram.trim(at(2.5), at(10));
        QCOMPARE(spectrogram.startTime(), at(2.4));
        QCOMPARE(spectrogram.endTime(), at(10));
        spectrogram.feed(ramp(10, 4, 10).get());
        QCOMPARE(spectrogram.columns(), 10);
        spectrogram.trim(at(0), at(4.1));
        QCOMPARE(spectrogram.endTime(), at(4));
    }

    void takesNewTimeBaseAfterReset()
    {
        const auto spectrogram = fedSpectrogram();
        const std::vector<float> first(spectrogram->data(), spectrogram->data() + 180);
        spectrogram->reset();
        QVERIFY(!spectrogram->endTime().valid());
        spectrogram->feed(ramp(50, 60, 20).get());
        QCOMPARE(spectrogram->samplingFrequency(), 20.0);
        spectrogram->reset();
        spectrogram->feed(ramp(90, 60, 10).get());
        QCOMPARE(spectrogram->startTime(), at(90));
        QVERIFY(std::equal(first.begin(), first.end(), spectrogram->data()));
    }

    void passesOverRecordsWithoutSamples()
    {
        RecordSpectrogram<double> spectrogram(settingsOf("freqs(1,4,2,3)"));
        spectrogram.feed(nullptr);
        spectrogram.feed(makeRecord(at(0), 0, arrayOf<int>({1, 2, 3})).get());
        QVERIFY(!spectrogram.startTime().valid());
        spectrogram.feed(makeRecord(at(5), 10, nullptr).get());
        QVERIFY(spectrogram.isNull());
        QCOMPARE(spectrogram.endTime(), at(5));
    }

    void feedsManyRecordsAsOneBlock()
    {
        // Enough samples for several blocks, each of them big enough for several threads.
        const SpectrogramSettings settings = settingsOf("periods_log(0.1,10,10,36)");
        RecordSpectrogram<float> single(settings), together(settings);
        std::mt19937 random(11);
        std::vector<RecordCPtr> records;
        std::vector<const Record *> pointers{nullptr};
        for (int done = 0; done < 300000; done += 3000) {
            const auto samples = randomSamples<double>(random, 3000, 2000);
            records.push_back(makeRecord(at(done / 100.0), 100, arrayOf(samples)));
            pointers.push_back(records.back().get());
            single.feed(records.back().get());
        }
        together.feed(pointers);
        QCOMPARE(together.columns(), 300000);
        QCOMPARE(together.startTime(), at(0));
        QCOMPARE(together.endTime(), at(3000));
        QCOMPARE(together.minimum(), single.minimum());
        QCOMPARE(together.maximum(), single.maximum());
        const auto isSame = [](float a, float b) {
            return a == b || (std::isnan(a) && std::isnan(b));
        };
        const size_t size = 300000 * 36;
        QVERIFY(std::equal(single.data(), single.data() + size, together.data(), isSame));
    }
};

QTEST_APPLESS_MAIN(RecordSpectrogramTest)

#include "tst_recordspectrogram.moc"
