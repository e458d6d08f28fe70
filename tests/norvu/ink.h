// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QImage>
#include <QRect>
#include <QWidget>

/** Helpers of tests that ask where the ink of a picture is. */
namespace Ink {

/** A widget as it paints itself and its children, at one device pixel per pixel. */
inline QImage picture(QWidget &widget, QWidget::RenderFlags parts = QWidget::DrawWindowBackground |
                                                                    QWidget::DrawChildren)
{
    QImage image(widget.size(), QImage::Format_RGB32);
    image.fill(Qt::white);
    widget.render(&image, QPoint(), QRegion(), parts);
    return image;
}

/** Smallest rectangle that holds all pixels in @p area for which @p isInk says so. */
template <typename Predicate>
QRect rectOf(const QImage &image, const QRect &area, Predicate isInk)
{
    QRect result;
    const QRect inside = area & image.rect();
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        for (int x = inside.left(); x <= inside.right(); ++x) {
            if (isInk(image.pixel(x, y)))
                result |= QRect(x, y, 1, 1);
        }
    }
    return result;
}

/** Smallest rectangle that holds all pixels of exactly this colour. */
inline QRect rectOfColor(const QImage &image, const QColor &color)
{
    return rectOf(image, image.rect(), [&](QRgb pixel) { return pixel == color.rgb(); });
}

/** Smallest rectangle in @p area that holds all pixels of another colour. */
inline QRect rectOtherThan(const QImage &image, const QRect &area, const QColor &color)
{
    return rectOf(image, area, [&](QRgb pixel) { return pixel != color.rgb(); });
}

/** Smallest rectangle that holds all pixels in which two pictures of one size differ. */
inline QRect rectOfDifference(const QImage &a, const QImage &b)
{
    QRect result;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if (a.pixel(x, y) != b.pixel(x, y))
                result |= QRect(x, y, 1, 1);
        }
    }
    return result;
}

} // namespace Ink
