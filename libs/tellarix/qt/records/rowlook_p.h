// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QColor>
#include <QFont>
#include <QPen>
#include <QRect>

class QWidget;

namespace Tellarix {
namespace Gui {

/** Sizes, font and colours of one paint of a row: the scheme's, or on a highlighted background the
 *  palette's. */
struct RowLook
{
    /** What @p widget looks like. */
    RowLook(const QWidget &widget, const QRect &canvas);

    QRect area;   /**< of the whole widget */
    QRect canvas; /**< of the traces */
    QFont font;
    bool enabled;
    bool highlighted;
    QColor text;
    QColor background; /**< what is behind the traces, as far as the widget can know */
    QPen frame;
    QPen gridMajor;
    QPen gridMinor;

    /** @p color, or what stands for it while the widget is disabled. */
    QColor enabledColor(const QColor &color) const;
};

/** A colour with its opacity multiplied by @p alpha. */
QColor withAlpha(QColor color, double alpha);

} // namespace Gui
} // namespace Tellarix
