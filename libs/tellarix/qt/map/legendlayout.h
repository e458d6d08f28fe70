// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>

#include <QRect>
#include <QSize>
#include <QVector>

namespace Tellarix {
namespace Gui {
namespace Map {

/** Something that wants a place at a corner or edge. */
struct LegendBox
{
    QSize size; /**< frame included */
    Qt::Alignment alignment;
};

/**
 * Stacks boxes at the corners and edges of a canvas: those at its top downward, those at its bottom
 * upward, those between about the middle. Earlier ones stand nearer to their corner.
 *
 * @param margin  between boxes and the edges of the canvas, in pixels
 * @param gap     between one box and the next
 * @return a rectangle for each box; a null one where it is empty, doesn't fit, or would come too
 * close to an earlier one
 */
TELLARIX_GUI_API QVector<QRect> layOutLegends(const QVector<LegendBox> &boxes, const QSize &canvas,
                                              int margin, int gap);

} // namespace Map
} // namespace Gui
} // namespace Tellarix
