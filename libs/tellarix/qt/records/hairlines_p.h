// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QLine>
#include <QPen>
#include <QRect>
#include <QVector>

class QPainter;

namespace Tellarix {
namespace Gui {

// Lines of one pixel. Where a painter puts pixels one to one into an image they are filled, which
// looks the same and takes a fraction of the time of stroking them.

/** A pen that is one pixel wide at any scale. */
QPen hairline(const QColor &color);

/** Draws the outermost pixels of @p rect. */
void drawRectangle(QPainter &painter, const QPen &pen, const QRect &rect);

/** Draws upright and level lines, which must lead downwards and to the right. */
void drawLines(QPainter &painter, const QPen &pen, const QVector<QLine> &lines);

} // namespace Gui
} // namespace Tellarix
