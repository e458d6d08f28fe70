// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QVector>

class QFont;
class QPainter;

namespace Tellarix {
namespace Gui {

struct AmplitudeTick;
struct RecordRow;
struct RowLook;

/** A font for axis texts: a bit smaller than @p font, and so small that two lines of it fit into
 *  @p height. */
QFont axisFont(const QFont &font, int height);

/** Ticks of a slot's axis, y counted from the top of the slot. */
QVector<AmplitudeTick> slotTicks(const RecordRow &row, int slot, const RowLook &look);

/** Draws the axes of all slots; of overlaid ones that of the current slot. */
void drawAxes(QPainter &painter, const RecordRow &row, const RowLook &look);

} // namespace Gui
} // namespace Tellarix
