// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>
#include <norvu/gui/spectrogram.h>
#include <norvu/utils/lut.h>

#include <QImage>
#include <QSize>

namespace Norvu {
namespace Gui {

/**
 * Paints a stretch of a spectrogram, fitted into the width of the picture.
 *
 * Row 0 of the matrix stands at the bottom. Values are interpolated bilinearly and coloured by the
 * table as they are: its keys decide which amplitude has which colour. Columns are taken in the
 * order of data().
 *
 * @param image        is overwritten if it has the size wanted (and 32 bits a pixel), else replaced
 *                     by one of QImage::Format_ARGB32
 * @param lut          finished pixels, written with their alpha
 * @param firstColumn  column at the left edge
 * @param columnCount  columns that the picture shows; below 1 for all there are
 * @return false, leaving the image alone, without a table, data at @p firstColumn or an image of
 *         this size
 */
template <typename T>
NORVU_GUI_API bool generateImageCW(QImage &image, const Spectrogram<T> *spectrogram,
                                   const Utils::LUT<double, unsigned int> *lut, int width,
                                   int height, int firstColumn, int columnCount);

/**
 * The same at a scale in pixels per second. Pixels behind the last column show that one again:
 * whoever doesn't want them asks for a smaller width.
 */
template <typename T>
NORVU_GUI_API bool generateImagePPS(QImage &image, const Spectrogram<T> *spectrogram,
                                    const Utils::LUT<double, unsigned int> *lut, int width,
                                    int height, int firstColumn, double pixelsPerSecond);

/** The same with @p shift of the first column, 0 and above and below 1, left of the picture. */
template <typename T>
NORVU_GUI_API bool generateImageFrom(QImage &image, const Spectrogram<T> *spectrogram,
                                     const Utils::LUT<double, unsigned int> *lut, const QSize &size,
                                     int firstColumn, double shift, double pixelsPerSecond);

} // namespace Gui
} // namespace Norvu
