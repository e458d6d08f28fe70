// SPDX-License-Identifier: LGPL-3.0-or-later

#include "spectrograms.h"

#include <norvu/gui/spectrogramimage.h>

#include <QtTest>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

using namespace Norvu::Gui;

using Table = Norvu::Utils::LUT<double, unsigned int>;

namespace {

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

class TestSpectrogramImage : public QObject
{
    Q_OBJECT

private slots:
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

    void writesIntoImageOfTheSize()
    {
        Spectrogram<float> spectrogram;
        fill(spectrogram, 5, 20, 3);
        const Table table = tableFor(0, 1);
        QImage image(30, 10, QImage::Format_ARGB32);
        const uchar *pixels = image.constBits();
        QVERIFY(generateImageCW(image, &spectrogram, &table, 30, 10, 19, 0));
        QCOMPARE(image.constBits(), pixels);
        QVERIFY(generateImageCW(image, &spectrogram, &table, 31, 10, 19, 0));
        QCOMPARE(image.size(), QSize(31, 10));
        QCOMPARE(image.format(), QImage::Format_ARGB32);

        QImage narrow(31, 10, QImage::Format_Grayscale8);
        QVERIFY(generateImageCW(narrow, &spectrogram, &table, 31, 10, 19, 0));
        QCOMPARE(narrow, image);
    }
};

QTEST_APPLESS_MAIN(TestSpectrogramImage)
#include "tst_spectrogramimage.moc"
