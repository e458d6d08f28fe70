// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/timewindow.h>

class QPainter;

namespace Tellarix {
namespace Gui {

class RecordMarker;
class RecordMarkers;
class RecordWidget;
struct RecordRow;
struct RowLook;

// What lies above the traces.

/** Draws the markers that aren't hidden; @p widget is what they are told that they are drawn in. */
void drawMarkers(QPainter &painter, const RecordMarkers &markers, const RecordMarker *current,
                 RecordWidget *widget, const RowLook &look);

/** Draws label and id of each slot that has room for them. */
void drawSlotTexts(QPainter &painter, const RecordRow &row, const RowLook &look);

/** Draws a band over a time range, if it isn't empty. */
void drawSelection(QPainter &painter, const RecordRow &row, const Core::TimeWindow &selection,
                   const RowLook &look);

/** Draws the line of the cursor, if its time is valid. */
void drawCursor(QPainter &painter, const RecordRow &row, const Core::Time &time,
                const RowLook &look);

/** Draws the frame of the canvas and lines between rows. */
void drawFrame(QPainter &painter, const RecordRow &row, const RowLook &look);

} // namespace Gui
} // namespace Tellarix
