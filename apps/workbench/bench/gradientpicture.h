// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/gradient.h>

#include <QPalette>
#include <QPixmap>
#include <QSize>

namespace Workbench {

/** Where the picture of a gradient in steps ends. */
enum class PictureEnd
{
    LastStep, /**< the last colour has as much room as the first one */
    LastKey,  /**< as a range of values is coloured: only its upper end has the last colour */
};

/**
 * A bar of all colours of a gradient from the left to the right, in a thin frame. Where they can be
 * seen through, there is a checkerboard in shades of the palette.
 * @param discrete  bands of one colour from stop to stop
 * @param size      with the frame, in units of which @p ratio pixels each are drawn
 * @param end       matters to @p discrete bars only
 * @return a checkerboard if the gradient has no stops; null for an empty size
 */
QPixmap gradientPicture(const Tellarix::Gui::Gradient &gradient, bool discrete, const QSize &size,
                        qreal ratio, const QPalette &palette,
                        PictureEnd end = PictureEnd::LastStep);

} // namespace Workbench
