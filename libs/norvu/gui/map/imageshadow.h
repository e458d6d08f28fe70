// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QRect>

class QImage;

namespace Norvu {
namespace Gui {

// Images of another format than QImage::Format_ARGB32 are looked at as if converted to it.

/**
 * The smallest rectangle that holds all pixels that are not fully transparent.
 * @return an invalid rectangle if that is the whole image, or if all of it is transparent
 */
NORVU_GUI_API QRect trimmedImageRect(const QImage &image);

/** Cuts fully transparent borders off; leaves an image alone that has none or nothing else. */
NORVU_GUI_API void trimImage(QImage &image);

/**
 * Replaces each pixel by the mean of the square about it, as far as that lies in the image: alpha,
 * red, green and blue each for itself, rounded down. The cost does not depend on the radius.
 * @param radius  pixels on each side of the middle; below 1 the image stays as it is, and otherwise
 *                becomes one of QImage::Format_ARGB32
 */
NORVU_GUI_API void blurImage(QImage &image, int radius);

} // namespace Gui
} // namespace Norvu
