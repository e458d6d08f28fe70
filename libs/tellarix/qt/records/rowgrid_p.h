// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

class QPainter;

namespace Tellarix {
namespace Gui {

struct RecordRow;
struct RowLook;

/** Draws lines at times and round amplitudes, and the alignment. */
void drawGrid(QPainter &painter, const RecordRow &row, const RowLook &look);

} // namespace Gui
} // namespace Tellarix
