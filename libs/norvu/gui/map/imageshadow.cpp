// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/map/imageshadow.h>

#include <QImage>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <vector>

namespace Norvu {
namespace Gui {

namespace {

constexpr QRgb Transparent = 0x00ffffff; // The largest pixel without any alpha.

/** Read as they are, other pixels would be too few bytes, or colours that alpha has darkened. */
QImage readable(const QImage &image)
{
    return image.convertToFormat(QImage::Format_ARGB32);
}

using Channels = std::array<uint64_t, 4>;

const QRgb *lineOf(const QImage &image, int y)
{
    return reinterpret_cast<const QRgb *>(image.constScanLine(y));
}

void add(Channels &sum, QRgb pixel)
{
    for (size_t i = 0; i < sum.size(); ++i)
        sum[i] += pixel >> 8 * i & 0xff;
}

void subtract(Channels &sum, QRgb pixel)
{
    for (size_t i = 0; i < sum.size(); ++i)
        sum[i] -= pixel >> 8 * i & 0xff;
}

QRgb meanOf(const Channels &sum, uint64_t count)
{
    QRgb pixel = 0;
    for (size_t i = 0; i < sum.size(); ++i)
        pixel |= static_cast<QRgb>(sum[i] / count) << 8 * i;
    return pixel;
}

/** Pixels from -radius to radius about a place that lie in 0 to size - 1. */
int reach(int place, int radius, int size)
{
    return std::min(place + radius, size - 1) - std::max(place - radius, 0) + 1;
}

/** A line of means from the sums of the columns over @p rows rows. */
void blurLine(const std::vector<Channels> &columns, int radius, int rows, QRgb *pixels)
{
    const auto width = static_cast<int>(columns.size());
    Channels sum{};
    const auto apply = [&sum](const Channels &column, auto operation) {
        std::transform(sum.begin(), sum.end(), column.begin(), sum.begin(), operation);
    };
    for (int x = 0; x < std::min(radius, width); ++x)
        apply(columns[static_cast<size_t>(x)], std::plus<>());
    for (int x = 0; x < width; ++x) {
        if (x + radius < width)
            apply(columns[static_cast<size_t>(x + radius)], std::plus<>());
        if (x - radius > 0)
            apply(columns[static_cast<size_t>(x - radius - 1)], std::minus<>());
        pixels[x] = meanOf(sum, static_cast<uint64_t>(rows) *
                                    static_cast<uint64_t>(reach(x, radius, width)));
    }
}

} // namespace

QRect trimmedImageRect(const QImage &source)
{
    const QImage image = readable(source);
    int left = image.width();
    int top = image.height();
    int right = -1;
    int bottom = -1;
    for (int y = 0; y < image.height(); ++y) {
        const QRgb *line = lineOf(image, y);
        for (int x = 0; x < image.width(); ++x) {
            if (line[x] <= Transparent)
                continue;
            left = std::min(left, x);
            right = std::max(right, x);
            top = std::min(top, y);
            bottom = y;
        }
    }
    if (bottom < 0)
        return QRect(QPoint(left, top), image.rect().bottomRight());

    const QRect filled(QPoint(left, top), QPoint(right, bottom));
    return filled == image.rect() ? QRect() : filled;
}

void trimImage(QImage &image)
{
    const QRect filled = trimmedImageRect(image);
    if (filled.isValid())
        image = image.copy(filled);
}

void blurImage(QImage &image, int radius)
{
    if (radius < 1 || image.isNull())
        return;

    const QImage source = readable(image);
    const int width = source.width();
    const int height = source.height();
    // Wider than the image, a square is the whole of it.
    const int limited = std::min(radius, std::max(width, height));
    QImage result = source;
    std::vector<Channels> columns(static_cast<size_t>(width));
    const auto eachColumn = [&](int y, auto operation) {
        const QRgb *line = lineOf(source, y);
        for (int x = 0; x < width; ++x)
            operation(columns[static_cast<size_t>(x)], line[x]);
    };
    for (int y = 0; y < std::min(limited, height); ++y)
        eachColumn(y, add);
    for (int y = 0; y < height; ++y) {
        if (y + limited < height)
            eachColumn(y + limited, add);
        if (y - limited > 0)
            eachColumn(y - limited - 1, subtract);
        blurLine(columns, limited, reach(y, limited, height),
                 reinterpret_cast<QRgb *>(result.scanLine(y)));
    }
    image = result;
}

} // namespace Gui
} // namespace Norvu
