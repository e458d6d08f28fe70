// SPDX-License-Identifier: LGPL-3.0-or-later

#include "spectrograms.h"

#include <QtTest>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

using namespace Norvu::Gui;

namespace {

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

/** Number of the sample that made each column of @p ring, by comparison with all columns. */
std::vector<int> sourcesOf(const Spectrogram<double> &ring, const Spectrogram<double> &all)
{
    const auto rows = size_t(all.rows());
    std::vector<int> sources;
    for (int c = 0; c < ring.columns(); ++c) {
        const double *column = ring.data() + size_t(c) * rows;
        int source = -1;
        for (int i = 0; i < all.columns() && source < 0; ++i) {
            if (std::equal(column, column + rows, all.data() + size_t(i) * rows))
                source = i;
        }
        sources.push_back(source);
    }
    return sources;
}

} // namespace

Q_DECLARE_METATYPE(std::vector<int>)

/** What of a spectrogram's columns is stored, dropped and moved. */
class SpectrogramMatrixTest : public QObject
{
    Q_OBJECT

private slots:
    void keepsLatestColumnsInRing_data()
    {
        using Numbers = std::vector<int>;
        QTest::addColumn<Numbers>("before");
        QTest::addColumn<Numbers>("pushes");
        QTest::addColumn<Numbers>("sources");
        QTest::newRow("just full")
            << Numbers{} << Numbers{4, 6} << Numbers{0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
        QTest::newRow("wraps in a push")
            << Numbers{} << Numbers{4, 4, 4} << Numbers{10, 11, 2, 3, 4, 5, 6, 7, 8, 9};
        QTest::newRow("goes round twice")
            << Numbers{} << Numbers{7, 7, 7, 2} << Numbers{20, 21, 22, 13, 14, 15, 16, 17, 18, 19};
        QTest::newRow("moves on by the whole push")
            << Numbers{} << Numbers{25, 3} << Numbers{15, 16, 17, 18, 19, 25, 26, 27, 23, 24};
        QTest::newRow("limit set later")
            << Numbers{36} << Numbers{3} << Numbers{0, 1, 2, 3, 4, 5, 36, 37, 38, 9};
    }

    void keepsLatestColumnsInRing()
    {
        QFETCH(std::vector<int>, before);
        QFETCH(std::vector<int>, pushes);
        const auto samples = noise<double>(60);
        const auto all = spectrogramOf<double>("freqs(1,4,2,3)", 10);
        all->pushData(60, samples.data());
        const auto ring = spectrogramOf<double>("freqs(1,4,2,3)", 10);
        int done = 0;
        const auto push = [&](int n) {
            ring->pushData(n, samples.data() + done);
            done += n;
        };
        std::for_each(before.begin(), before.end(), push);
        ring->setMaximumSeconds(1.0);
        std::for_each(pushes.begin(), pushes.end(), push);
        QTEST(sourcesOf(*ring, *all), "sources");

        // Columns that a raised limit adds elsewhere than at the head are zero.
        const auto kept = matrixOf(*ring);
        ring->setMaximumSeconds(2.0);
        push(1);
        QVERIFY(std::all_of(ring->data() + kept.size(), ring->data() + 3 * size_t(ring->columns()),
                            [&](double v) { return v == 0 || done - 1 == int(kept.size() / 3); }));
    }

    void countsFirstFilteredSampleInRange()
    {
        std::vector<double> samples(400, 0.0);
        for (int i = 0; i < 40; ++i)
            samples[size_t(i)] = i % 4 < 2 ? 100 : -100;
        const auto all = spectrogramOf<double>("freqs(1,4,1,1)", 10);
        all->pushData(400, samples.data());
        const auto ring = spectrogramOf<double>("freqs(1,4,1,1)", 10);
        ring->setMaximumSeconds(2);
        ring->pushData(40, samples.data());
        ring->resetData();
        QVERIFY(ring->isNull());
        QVERIFY(ring->maximum() > 0);
        ring->pushData(360, samples.data() + 40);
        QCOMPARE(ring->columns(), 20);
        QCOMPARE(ring->maximum(), all->data()[40]);
        QVERIFY(ring->data()[0] < 1E-3 * ring->maximum());
    }

    void trims_data()
    {
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("last");
        QTest::addColumn<int>("kept");
        QTest::addColumn<int>("columns");
        QTest::newRow("beyond all") << -5 << 105 << 0 << 100;
        QTest::newRow("front") << 30 << 100 << 30 << 70;
        QTest::newRow("end") << 0 << 60 << 0 << 60;
        QTest::newRow("empty") << 50 << 50 << 0 << 100;
        QTest::newRow("reversed") << 60 << 50 << 0 << 100;
        QTest::newRow("behind all") << 100 << 101 << 0 << 0;
        QTest::newRow("before all") << -9 << 0 << 0 << 0;
    }

    void trims()
    {
        QFETCH(int, first);
        QFETCH(int, last);
        QFETCH(int, kept);
        QFETCH(int, columns);
        const auto samples = noise<float>(150);
        const auto all = spectrogramOf<float>("freqs(1,4,2,3)", 10);
        all->pushData(150, samples.data());
        const auto whole = matrixOf(*all);
        const auto trimmed = spectrogramOf<float>("freqs(1,4,2,3)", 10);
        trimmed->pushData(100, samples.data());
        int firstKept = -1;
        trimmed->trimData(first, last, &firstKept);
        QCOMPARE(firstKept, kept);
        QCOMPARE(trimmed->columns(), columns);
        QCOMPARE(trimmed->data() == nullptr, columns == 0);
        std::vector<float> expected(whole.begin() + kept * 3, whole.begin() + (kept + columns) * 3);
        QVERIFY(matrixOf(*trimmed) == expected);
        if (columns) {
            const auto range = std::minmax_element(expected.begin(), expected.end());
            QCOMPARE(trimmed->minimum(), double(*range.first));
            QCOMPARE(trimmed->maximum(), double(*range.second));
        }

        // The filters go on whatever became of the matrix.
        trimmed->pushData(50, samples.data() + 100);
        expected.insert(expected.end(), whole.begin() + 300, whole.end());
        QVERIFY(matrixOf(*trimmed) == expected);
    }

    void keepsPeaksOfIntervals()
    {
        constexpr int Interval = 7, Total = 60000, Rows = 21, Kept = 3000;
        auto samples = noise<float>(Total);
        std::fill_n(samples.begin() + 100 * Interval, Interval + 2, float(NaN));
        const auto all = spectrogramOf<float>("freqs(1,20,2,21)", 100);
        all->pushData(Total, samples.data());
        const auto peaks = spectrogramOf<float>("freqs(1,20,2,21)", 100);
        peaks->setColumnInterval(Interval);
        QCOMPARE(peaks->columnRate(), 100.0 / Interval);

        // Bands of several groups, in blocks for one thread and for all.
        std::mt19937 random(6);
        int64_t trimmed = 0;
        for (int done = 0; done < Total;) {
            const int n = std::min(Total - done, 1 + int(random() % 40000));
            peaks->pushData(n, samples.data() + done);
            done += n;
            QCOMPARE(trimmed + peaks->columns(), int64_t(done / Interval));
            QCOMPARE(peaks->pendingSamples(), done % Interval);
            int kept = 0;
            peaks->trimData(peaks->columns() - Kept, peaks->columns(), &kept);
            trimmed += kept;
        }
        for (int c = 0; c < peaks->columns(); ++c) {
            for (int r = 0; r < Rows; ++r) {
                double peak = NaN;
                for (int64_t i = 0; i < Interval; ++i) {
                    const double value = all->data()[((trimmed + c) * Interval + i) * Rows + r];
                    peak = std::isnan(peak) ? value : std::fmax(peak, value);
                }
                const double kept = peaks->data()[c * Rows + r];
                QVERIFY(kept == peak || (std::isnan(kept) && std::isnan(peak)));
            }
        }
        QCOMPARE(peaks->maximum(),
                 double(*std::max_element(peaks->data(), peaks->data() + peaks->columns() * Rows)));
        peaks->setColumnInterval(1);
        QVERIFY(peaks->isNull());
    }

    void keepsTheLatestPeaks()
    {
        const auto samples = noise<float>(1000);
        // A limit below the length of a column is one column, not none.
        for (const auto &[seconds, columns] : {qMakePair(3.0, 15), qMakePair(0.1, 1)}) {
            const auto all = spectrogramOf<float>("freqs(1,20,2,5)", 100);
            all->setColumnInterval(20);
            all->pushData(1000, samples.data());
            const auto latest = spectrogramOf<float>("freqs(1,20,2,5)", 100);
            latest->setColumnInterval(20);
            latest->setMaximumSeconds(seconds);
            for (int done = 0; done < 1000; done += 50)
                latest->pushData(50, samples.data() + done);
            QCOMPARE(latest->columns(), columns);
            QVERIFY(std::equal(latest->data(), latest->data() + columns * 5,
                               all->data() + (50 - columns) * 5));
        }
    }

    void movesOnWithLiveData()
    {
        constexpr int Kept = 5000, Total = 60000;
        const auto samples = noise<float>(Total);
        const auto all = spectrogramOf<float>("freqs(1,20,2,5)", 100);
        all->pushData(Total, samples.data());
        const auto window = spectrogramOf<float>("freqs(1,20,2,5)", 100);
        std::mt19937 random(5);
        for (int done = 0, pushed = 0; pushed < 2 * Total;) {
            if (pushed == Total) {
                window->reset();
                window->setSamplingFrequency(100);
                done = 0;
            }
            const int n = std::min(Total - done, 1 + int(random() % 1500));
            pushed += n;
            window->pushData(n, samples.data() + done);
            done += n;
            window->trimData(window->columns() - Kept, window->columns(), nullptr);
            const int columns = std::min(done, Kept);
            QCOMPARE(window->columns(), columns);
            const float *expected = all->data() + size_t(done - columns) * 5;
            QVERIFY(std::equal(expected, expected + columns * 5, window->data()));
            const auto range = std::minmax_element(expected, expected + columns * 5);
            QCOMPARE(window->minimum(), double(*range.first));
            QCOMPARE(window->maximum(), double(*range.second));
        }

        const size_t memory = window->memorySize();
        window->resetData();
        QVERIFY(memory - window->memorySize() <= size_t(1.5 * Kept * 5 * sizeof(float)));
    }

    void keepsNothingButColumnsOnceFinished()
    {
        const auto samples = noise<float>(30000);
        const auto all = spectrogramOf<float>("freqs(1,20,2,5)", 100);
        all->pushData(30000, samples.data());
        const auto live = spectrogramOf<float>("freqs(1,20,2,5)", 100);
        for (int done = 0; done < 30000; done += 200)
            live->pushData(200, samples.data() + done);
        live->finish();
        live->pushData(200, samples.data());
        QCOMPARE(live->memorySize(), 30000 * 5 * sizeof(float));
        QVERIFY(matrixOf(*live) == matrixOf(*all));

        // All the same it begins anew, and so does what takes its bank over.
        Spectrogram<float> copy;
        copy.initFrom(*live);
        live->reset();
        for (Spectrogram<float> *again : {&copy, live.get()}) {
            again->setSamplingFrequency(100);
            again->pushData(30000, samples.data());
            QVERIFY(matrixOf(*again) == matrixOf(*all));
        }
    }
};

QTEST_APPLESS_MAIN(SpectrogramMatrixTest)
#include "tst_spectrogrammatrix.moc"
