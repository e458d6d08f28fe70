// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/spectrogramimage.h>

#include <norvu/gui/spectrogramtile_p.h>

#include <tellarix/core/parallel.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace Norvu {
namespace Gui {

namespace {

constexpr int FractionBits = 32;
constexpr double FractionUnit = 4294967296.0;
// Below, other threads take longer to begin than one takes to end: some 0.2 ms.
constexpr qint64 ParallelPixels = 262144;

/** The columns that a picture shows, and the way across them in 2^-32 columns: where its left edge
 *  stands in the first one, and a pixel. */
struct Stretch
{
    int first;
    int count;
    int64_t step;
    int64_t start{0};
};

template <typename T>
T fractionOf(int64_t position)
{
    return static_cast<T>(static_cast<uint32_t>(position));
}

/** Columns per pixel; a scale that reaches beyond the data in one pixel doesn't count further. */
int64_t stepOf(double columnsPerPixel, int columns)
{
    if (!(columnsPerPixel > 0))
        return 0;
    if (columnsPerPixel >= columns)
        return static_cast<int64_t>(columns) << FractionBits;
    const auto whole = static_cast<int64_t>(columnsPerPixel);
    const double fraction = columnsPerPixel - static_cast<double>(whole);
    return (whole << FractionBits) | static_cast<int64_t>(fraction * FractionUnit);
}

template <typename T>
std::vector<ColumnMix<T>> mixColumns(const Spectrogram<T> &spectrogram, const Stretch &stretch,
                                     int width)
{
    const int64_t end = static_cast<int64_t>(stretch.count) << FractionBits;
    const auto rows = static_cast<size_t>(spectrogram.rows());
    std::vector<ColumnMix<T>> result(static_cast<size_t>(width));
    int64_t position = stretch.start;
    for (ColumnMix<T> &mix : result) {
        const auto column = std::min(static_cast<int>(position >> FractionBits), stretch.count - 1);
        mix.left = spectrogram.data() + static_cast<size_t>(stretch.first + column) * rows;
        mix.right = column + 1 < stretch.count ? mix.left + rows : nullptr;
        mix.rightWeight = fractionOf<T>(position);
        mix.leftWeight = static_cast<T>(FractionUnit) - mix.rightWeight;
        position = std::min(position + stretch.step, end);
    }
    return result;
}

template <typename T>
std::vector<LineMix<T>> mixLines(int rows, int height)
{
    const int64_t step = (static_cast<int64_t>(rows) << FractionBits) / height;
    std::vector<LineMix<T>> result(static_cast<size_t>(height));
    int64_t position = 0;
    for (LineMix<T> &mix : result) {
        mix.row = static_cast<int>(position >> FractionBits);
        mix.mixed = mix.row + 1 < rows;
        mix.upperWeight = fractionOf<T>(position);
        mix.lowerWeight = static_cast<T>(FractionUnit) - mix.upperWeight;
        position += step;
    }
    return result;
}

/** Makes room for @p width x @p height pixels; leaves the image alone if there is none. */
bool makeImage(QImage &image, int width, int height)
{
    if (image.size() != QSize(width, height) || image.depth() != 32) {
        const QImage made(width, height, QImage::Format_ARGB32);
        if (made.isNull())
            return false;
        image = made;
    }
    return !image.isNull();
}

template <typename T>
void draw(QImage &image, const Spectrogram<T> &spectrogram,
          const Utils::LUT<double, unsigned int> &lut, const Stretch &stretch)
{
    const int width = image.width();
    const int height = image.height();
    const auto columns = mixColumns(spectrogram, stretch, width);
    const auto lines = mixLines<T>(spectrogram.rows(), height);
    const PixelTable table{lut._minKey, lut._scale, lut._size, lut._table};
    auto *bottom = reinterpret_cast<unsigned int *>(image.bits()) +
                   static_cast<std::ptrdiff_t>(height - 1) * width;

    const auto drawTile = [&](int tile) {
        const int left = tile * TileWidth;
        drawSpectrogramTile(columns.data() + left, std::min(TileWidth, width - left),
                            spectrogram.rows(), lines.data(), height, table, bottom + left, width);
    };
    const int64_t pixels = int64_t(width) * height;
    Tellarix::Core::parallelFor((width - 1) / TileWidth + 1, drawTile,
                                pixels < ParallelPixels ? 1 : 0);
}

template <typename T>
bool hasColumn(const Spectrogram<T> *spectrogram, int column)
{
    return spectrogram && column >= 0 && column < spectrogram->columns() &&
           spectrogram->rows() > 0 && spectrogram->data();
}

} // namespace

template <typename T>
bool generateImageCW(QImage &image, const Spectrogram<T> *spectrogram,
                     const Utils::LUT<double, unsigned int> *lut, int width, int height,
                     int firstColumn, int columnCount)
{
    if (!lut || !hasColumn(spectrogram, firstColumn) || !makeImage(image, width, height))
        return false;

    const int available = spectrogram->columns() - firstColumn;
    const int count = columnCount < 1 ? available : std::min(columnCount, available);
    const int64_t step = (static_cast<int64_t>(count) << FractionBits) / width;
    draw(image, *spectrogram, *lut, {firstColumn, count, step});
    return true;
}

template <typename T>
bool generateImagePPS(QImage &image, const Spectrogram<T> *spectrogram,
                      const Utils::LUT<double, unsigned int> *lut, int width, int height,
                      int firstColumn, double pixelsPerSecond)
{
    return generateImageFrom(image, spectrogram, lut, QSize(width, height), firstColumn, 0,
                             pixelsPerSecond);
}

template <typename T>
bool generateImageFrom(QImage &image, const Spectrogram<T> *spectrogram,
                       const Utils::LUT<double, unsigned int> *lut, const QSize &size,
                       int firstColumn, double shift, double pixelsPerSecond)
{
    if (!lut || !hasColumn(spectrogram, firstColumn) ||
        !makeImage(image, size.width(), size.height()))
        return false;

    const int available = spectrogram->columns() - firstColumn;
    const int64_t step = stepOf(spectrogram->columnRate() / pixelsPerSecond, available);
    draw(image, *spectrogram, *lut, {firstColumn, available, step, stepOf(shift, available)});
    return true;
}

template NORVU_GUI_API bool generateImageCW(QImage &, const Spectrogram<float> *,
                                            const Utils::LUT<double, unsigned int> *, int, int, int,
                                            int);
template NORVU_GUI_API bool generateImageCW(QImage &, const Spectrogram<double> *,
                                            const Utils::LUT<double, unsigned int> *, int, int, int,
                                            int);
template NORVU_GUI_API bool generateImagePPS(QImage &, const Spectrogram<float> *,
                                             const Utils::LUT<double, unsigned int> *, int, int,
                                             int, double);
template NORVU_GUI_API bool generateImagePPS(QImage &, const Spectrogram<double> *,
                                             const Utils::LUT<double, unsigned int> *, int, int,
                                             int, double);
template NORVU_GUI_API bool generateImageFrom(QImage &, const Spectrogram<float> *,
                                              const Utils::LUT<double, unsigned int> *,
                                              const QSize &, int, double, double);
template NORVU_GUI_API bool generateImageFrom(QImage &, const Spectrogram<double> *,
                                              const Utils::LUT<double, unsigned int> *,
                                              const QSize &, int, double, double);

} // namespace Gui
} // namespace Norvu
