// SPDX-License-Identifier: LGPL-3.0-or-later

#include "gradientpicture.h"

#include <QImage>
#include <QPainter>

#include <algorithm>
#include <iterator>

using Tellarix::Gui::Gradient;

namespace Workbench {

namespace {

constexpr double LightCell = 0.1;
constexpr double DarkCell = 0.3;
constexpr double Frame = 0.5;
constexpr int CellSize = 4;

/** A shade of a palette between its background, 0, and its text, 1. */
QColor shade(const QPalette &palette, double share)
{
    Gradient shades;
    shades.setColorAt(0, palette.color(QPalette::Base));
    shades.setColorAt(1, palette.color(QPalette::Text));
    return shades.colorAt(share);
}

void drawCheckerboard(QPainter &painter, const QRect &area, int cellSize, const QPalette &palette)
{
    painter.fillRect(area, shade(palette, LightCell));
    const QColor dark = shade(palette, DarkCell);
    for (int row = 0; row * cellSize < area.height(); ++row) {
        for (int column = row & 1; column * cellSize < area.width(); column += 2) {
            const QRect cell(area.left() + column * cellSize, area.top() + row * cellSize, cellSize,
                             cellSize);
            painter.fillRect(cell & area, dark);
        }
    }
}

double keyAtEnd(const Gradient &gradient, bool discrete, PictureEnd end)
{
    const double last = gradient.lastKey();
    if (!discrete || end == PictureEnd::LastKey || gradient.size() < 2)
        return last;
    return last + std::next(gradient.constBegin()).key() - gradient.firstKey();
}

/** One line of pixels with the ends of a gradient at its own ends. */
QImage colorLine(const Gradient &gradient, bool discrete, int width, PictureEnd end)
{
    QImage line(width, 1, QImage::Format_ARGB32);
    const double first = gradient.firstKey();
    const double last = keyAtEnd(gradient, discrete, end);
    for (int x = 0; x < width; ++x) {
        const double share = x / std::max(1.0, width - 1.0);
        line.setPixelColor(x, 0, gradient.colorAt(first * (1 - share) + last * share, discrete));
    }
    return line;
}

} // namespace

QPixmap gradientPicture(const Gradient &gradient, bool discrete, const QSize &size, qreal ratio,
                        const QPalette &palette, PictureEnd end)
{
    const QSize pixels = (QSizeF(size) * ratio).toSize();
    if (pixels.isEmpty())
        return QPixmap();

    QPixmap picture(pixels);
    picture.fill(shade(palette, Frame));
    const int frame = std::max(1, static_cast<int>(ratio));
    const QRect bar = picture.rect().adjusted(frame, frame, -frame, -frame);
    if (!bar.isEmpty()) {
        QPainter painter(&picture);
        drawCheckerboard(painter, bar, CellSize * frame, palette);
        if (!gradient.isEmpty())
            painter.drawImage(bar, colorLine(gradient, discrete, bar.width(), end));
    }
    picture.setDevicePixelRatio(ratio);
    return picture;
}

} // namespace Workbench
