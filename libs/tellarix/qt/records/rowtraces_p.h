// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

class QPainter;

namespace Tellarix {
namespace Gui {

struct RecordRow;
struct RowLook;

/** Shades gaps and overlaps that are at least a pixel wide. */
void drawStretches(QPainter &painter, const RecordRow &row, const RowLook &look);

/** Draws the traces as they were prepared. */
void drawTraces(QPainter &painter, const RecordRow &row, const RowLook &look);

} // namespace Gui
} // namespace Tellarix
