// SPDX-License-Identifier: LGPL-3.0-or-later

#include "core/recordtesting.h"
#include "rowname.h"
#include "spectrograms.h"

#include <norvu/gui/recordspectrogram.h>
#include <norvu/gui/spectrogramimage.h>

#include <QtTest>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <tuple>
#include <vector>

using namespace Norvu::Gui;
using namespace RecordTesting;
using Core::Time;
using Table = Norvu::Utils::LUT<double, unsigned int>;

namespace {

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

/** A spectrogram of a ramp of 100 samples at 10 Hz that begins at the time base. */
std::unique_ptr<RecordSpectrogram<float>> fedSpectrogram()
{
    auto spectrogram = std::make_unique<RecordSpectrogram<float>>(settingsOf("freqs(1,4,2,3)"));
    spectrogram->feed(ramp(0, 60, 10).get());
    spectrogram->feed(ramp(6, 40, 10).get());
    return spectrogram;
}

constexpr double SamplingFrequency = 20;

/** Spectrogram of a signal whose amplitude varies a lot; @p broken puts a sample in that is no
 *  number. */
template <typename T>
void fill(Spectrogram<T> &spectrogram, int rows, int columns, unsigned seed, bool broken = false)
{
    spectrogram.init(settingsOf("freqs_log(0.5,8,4," + std::to_string(rows) + ')'));
    spectrogram.setSamplingFrequency(SamplingFrequency);

    std::minstd_rand random(seed);
    std::vector<T> samples(static_cast<size_t>(columns));
    for (T &sample : samples)
        sample = static_cast<T>(static_cast<int>(random() % 20001) - 10000);
    if (broken)
        samples[samples.size() / 2] = std::numeric_limits<T>::quiet_NaN();
    spectrogram.pushData(columns, samples.data());
}

/** A table of 1024 different pixels, some of them transparent. */
Table tableFor(double minimum, double maximum)
{
    Table table;
    unsigned int pixel = 0;
    table.fill(minimum, maximum, [&](double) { return 0x01020304u * ++pixel; });
    return table;
}

/** One pixel after the other, in the plainest way. */
template <typename T>
class PlainPicture
{
public:
    PlainPicture(const Spectrogram<T> &spectrogram, const Table &table, int firstColumn, int count)
        : _matrix(spectrogram.data() +
                  static_cast<std::ptrdiff_t>(firstColumn) * spectrogram.rows()),
          _rows(spectrogram.rows()), _columns(count), _table(table)
    {}

    QImage picture(int width, int height, int64_t xStep) const
    {
        QImage image(width, height, QImage::Format_ARGB32);
        const int64_t yStep = (static_cast<int64_t>(_rows) << 32) / height;
        int64_t y = 0;
        for (int line = height - 1; line >= 0; --line, y += yStep) {
            auto *pixels = reinterpret_cast<QRgb *>(image.scanLine(line));
            int64_t x = 0;
            for (int i = 0; i < width; ++i, x += xStep)
                pixels[i] = _table.at(static_cast<double>(valueAt(x, y)));
        }
        return image;
    }

private:
    T at(int column, int row) const { return _matrix[column * _rows + row]; }

    T mixed(T from, T to, int64_t position) const
    {
        const T share = static_cast<T>(static_cast<uint32_t>(position));
        return (to * share + from * (static_cast<T>(4294967296.0) - share)) *
               static_cast<T>(2.3283064365386963e-10);
    }

    T inRow(int64_t x, int row) const
    {
        const auto column = static_cast<int>(std::min<int64_t>(x >> 32, _columns - 1));
        return column + 1 < _columns ? mixed(at(column, row), at(column + 1, row), x)
                                     : at(column, row);
    }

    T valueAt(int64_t x, int64_t y) const
    {
        const auto row = static_cast<int>(y >> 32);
        return row + 1 < _rows ? mixed(inRow(x, row), inRow(x, row + 1), y) : inRow(x, row);
    }

    const T *_matrix;
    int _rows;
    int _columns;
    const Table &_table;
};

template <typename T>
void compareRandomPictures(unsigned seed)
{
    std::mt19937 random(seed);
    const auto upTo = [&](int most) { return std::uniform_int_distribution<int>(1, most)(random); };
    for (int round = 0; round < 120; ++round) {
        const int rows = upTo(round % 3 ? 70 : 2);
        const int columns = upTo(round % 4 ? 3000 : 3);
        Spectrogram<T> spectrogram;
        fill(spectrogram, rows, columns, random(), round % 5 == 0);
        // Some are drawn by several threads.
        const bool large = round % 40 == 39;
        const int width = large ? 900 + upTo(200) : upTo(round % 6 ? 400 : 3);
        const int height = large ? 300 : upTo(round % 7 ? 300 : 2);
        const int first = upTo(columns) - 1;
        const int available = columns - first;
        // Values lie below, within and above the table.
        const double range = spectrogram.maximum() - spectrogram.minimum();
        const Table table =
            tableFor(spectrogram.minimum() + 0.2 * range, spectrogram.maximum() - 0.2 * range);

        const int count = upTo(available + 2) - 1;
        const int used = count < 1 || count > available ? available : count;
        QImage image;
        QVERIFY(generateImageCW(image, &spectrogram, &table, width, height, first, count));
        QCOMPARE(image, PlainPicture<T>(spectrogram, table, first, used)
                            .picture(width, height, (static_cast<int64_t>(used) << 32) / width));

        // Up to one and a half times as many pixels as the columns fill.
        const double columnsPerPixel = available * 0.01 * upTo(150) / width;
        const double scale = SamplingFrequency / columnsPerPixel;
        const double step = SamplingFrequency / scale;
        const auto xStep = (static_cast<int64_t>(step) << 32) +
                           static_cast<int64_t>((step - std::floor(step)) * 4294967296.0);
        QVERIFY(generateImagePPS(image, &spectrogram, &table, width, height, first, scale));
        QCOMPARE(
            image,
            PlainPicture<T>(spectrogram, table, first, available).picture(width, height, xStep));
    }
}

} // namespace

class SpectrogramMatrixTest : public QObject
{
    Q_OBJECT

private slots:
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

    void keepsLatestColumnsInRing()
    {
        using Numbers = std::vector<int>;
        const std::tuple<const char *, Numbers, Numbers, Numbers> rows[] = {
            {"just full", Numbers{}, Numbers{4, 6}, Numbers{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}},
            {"wraps in a push", Numbers{}, Numbers{4, 4, 4},
             Numbers{10, 11, 2, 3, 4, 5, 6, 7, 8, 9}},
            {"goes round twice", Numbers{}, Numbers{7, 7, 7, 2},
             Numbers{20, 21, 22, 13, 14, 15, 16, 17, 18, 19}},
            {"moves on by the whole push", Numbers{}, Numbers{25, 3},
             Numbers{15, 16, 17, 18, 19, 25, 26, 27, 23, 24}},
            {"limit set later", Numbers{36}, Numbers{3}, Numbers{0, 1, 2, 3, 4, 5, 36, 37, 38, 9}}};
        for (const auto &[name, before, pushes, sources] : rows) {
            const RowName shown(name);
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
            QCOMPARE(sourcesOf(*ring, *all), sources);

            // Columns that a raised limit adds elsewhere than at the head are zero.
            const auto kept = matrixOf(*ring);
            ring->setMaximumSeconds(2.0);
            push(1);
            QVERIFY(
                std::all_of(ring->data() + kept.size(), ring->data() + 3 * size_t(ring->columns()),
                            [&](double v) { return v == 0 || done - 1 == int(kept.size() / 3); }));
        }
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

    void trims()
    {
        const std::tuple<const char *, int, int, int, int> rows[] = {
            {"beyond all", -5, 105, 0, 100}, {"front", 30, 100, 30, 70},
            {"end", 0, 60, 0, 60},           {"empty", 50, 50, 0, 100},
            {"reversed", 60, 50, 0, 100},    {"behind all", 100, 101, 0, 0},
            {"before all", -9, 0, 0, 0}};
        for (const auto &[name, first, last, kept, columns] : rows) {
            const RowName shown(name);
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
            std::vector<float> expected(whole.begin() + kept * 3,
                                        whole.begin() + (kept + columns) * 3);
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
        const std::tuple<double, double, double, int> cases[] = {
            {2.55, 20, 2.5, 75}, {-1, 4, 0, 40}, {10, 20, 0, 0}, {-20, -10, 0, 0}};
        for (const auto &[start, end, newStart, columns] : cases) {
            const auto spectrogram = fedSpectrogram();
            spectrogram->trim(at(start), at(end));
            QCOMPARE(spectrogram->columns(), columns);
            QCOMPARE(spectrogram->startTime(), at(newStart));
            QCOMPARE(spectrogram->endTime(), at(newStart + columns / 10.0));
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

    void hasThePixelsOfThePlainForm()
    {
        const unsigned seed = std::random_device()();
        qInfo("seed %u", seed);
        compareRandomPictures<float>(seed);
        compareRandomPictures<double>(seed);
    }

    void limitsIndicesToTheTable()
    {
        const double infinity = std::numeric_limits<double>::infinity();
        const struct
        {
            double minKey, scale; // relative to the value, which is 0
            int entry;
        } cases[] = {{-1022.5, 1, 1022}, {-1025, 1, 1023},  {0.5, 1, 0},
                     {-1e12, 1, 0},      {-1, infinity, 0}, {0, infinity, 0}};
        Spectrogram<double> spectrogram;
        fill(spectrogram, 1, 1, 2);
        const double zero = 0;
        spectrogram.reset();
        spectrogram.setSamplingFrequency(SamplingFrequency);
        spectrogram.pushData(1, &zero);
        for (const auto &item : cases) {
            Table table = tableFor(0, 1);
            table._minKey = item.minKey;
            table._scale = item.scale;
            QImage image;
            QVERIFY(generateImageCW(image, &spectrogram, &table, 40, 1, 0, 0));
            for (int x = 0; x < 40; ++x)
                QCOMPARE(image.pixel(x, 0), table._table[item.entry]);
        }
    }

    void survivesImpossibleScales()
    {
        Spectrogram<float> spectrogram;
        fill(spectrogram, 5, 20, 3);
        const Table table = tableFor(spectrogram.minimum(), spectrogram.maximum());
        for (const double scale : {0.0, 1e-300, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
            QImage image;
            QVERIFY(generateImagePPS(image, &spectrogram, &table, 300, 10, 4, scale));
            QCOMPARE(image.pixel(0, 9), table.at(static_cast<double>(spectrogram.data()[4 * 5])));
        }
    }

    void leavesImageAloneWithoutPicture()
    {
        Spectrogram<float> spectrogram;
        fill(spectrogram, 5, 20, 3);
        const Spectrogram<float> empty;
        const Table table = tableFor(0, 1);
        QImage image(7, 8, QImage::Format_ARGB32);
        image.fill(Qt::green);
        const QImage before = image.copy();

        QVERIFY(!generateImageCW<float>(image, &spectrogram, nullptr, 10, 10, 0, 0));
        QVERIFY(!generateImageCW<float>(image, nullptr, &table, 10, 10, 0, 0));
        QVERIFY(!generateImageCW(image, &empty, &table, 10, 10, 0, 0));
        for (const int first : {-1, 20, 21})
            QVERIFY(!generateImagePPS(image, &spectrogram, &table, 10, 10, first, 1));
        for (const QSize size : {QSize(0, 10), QSize(10, 0), QSize(-3, 10)})
            QVERIFY(
                !generateImagePPS(image, &spectrogram, &table, size.width(), size.height(), 0, 1));
        QCOMPARE(image, before);
    }
};

QTEST_APPLESS_MAIN(SpectrogramMatrixTest)
#include "tst_spectrogrammatrix.moc"
