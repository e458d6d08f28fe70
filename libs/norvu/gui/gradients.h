// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>
#include <norvu/utils/lut.h>

#include <tellarix/qt/gradient.h>

#include <QColor>
#include <QMap>
#include <QString>

class QAbstractButton;

namespace Norvu {
namespace Gui {

/**
 * Ready-made gradients. Their key ranges differ: a user takes the range from the first and the last
 * key, which are 0 and 1 unless noted. All exist from the load of the library to the end of the
 * process, and pointers to them hold as long.
 *
 * Inferno, Plasma and Viridis are samples of the colour maps of these names in matplotlib; PuRd,
 * BuPu, RdYlBu and Blues are schemes of ColorBrewer with eight classes.
 */
namespace Gradients {

extern NORVU_GUI_API const Tellarix::Gui::Gradient Default; /**< transparent at its foot */
extern NORVU_GUI_API const Tellarix::Gui::Gradient Spectrum;
extern NORVU_GUI_API const Tellarix::Gui::Gradient Inferno;
extern NORVU_GUI_API const Tellarix::Gui::Gradient Plasma;
extern NORVU_GUI_API const Tellarix::Gui::Gradient BlackBody;
extern NORVU_GUI_API const Tellarix::Gui::Gradient WhiteBlack;
extern NORVU_GUI_API const Tellarix::Gui::Gradient BlackWhite;
extern NORVU_GUI_API const Tellarix::Gui::Gradient PuRd;   /**< keys 0 to 8, none at 7 */
extern NORVU_GUI_API const Tellarix::Gui::Gradient BuPu;   /**< keys 0 to 8, none at 7 */
extern NORVU_GUI_API const Tellarix::Gui::Gradient RdYlBu; /**< keys 0 to 8, none at 7 */
extern NORVU_GUI_API const Tellarix::Gui::Gradient Blues;  /**< keys 0 to 8, none at 7 */
extern NORVU_GUI_API const Tellarix::Gui::Gradient Circle; /**< keys 0 to 12, a closed hue wheel */
extern NORVU_GUI_API const Tellarix::Gui::Gradient Parula;
extern NORVU_GUI_API const Tellarix::Gui::Gradient Viridis;

/** All of them by name, spelt as the object is; look a name up with value(), which gives null if
 *  there is none. */
extern NORVU_GUI_API const QMap<QString, const Tellarix::Gui::Gradient *> Registry;

} // namespace Gradients

/** @name Flat palette
 *  Opaque colours for marks and buttons.
 *  @{ */
extern NORVU_GUI_API const QColor red;
extern NORVU_GUI_API const QColor orange;
extern NORVU_GUI_API const QColor yellow;
extern NORVU_GUI_API const QColor olive;
extern NORVU_GUI_API const QColor green;
extern NORVU_GUI_API const QColor teal;
extern NORVU_GUI_API const QColor blue;
extern NORVU_GUI_API const QColor violet;
extern NORVU_GUI_API const QColor purple;
extern NORVU_GUI_API const QColor pink;
extern NORVU_GUI_API const QColor brown;
extern NORVU_GUI_API const QColor grey;
extern NORVU_GUI_API const QColor black;
/** @} */

/**
 * Fills a table with the pixels of a gradient over its own key range, alpha included.
 * @param discrete  bands of one colour from stop to stop
 * @return false, leaving the table alone, if the gradient has no stops
 */
NORVU_GUI_API bool fillTable(Utils::LUT<double, unsigned int> &table,
                             const Tellarix::Gui::Gradient &gradient, bool discrete = false);

/**
 * Colours a button by a palette of its own.
 * @param button         not null
 * @param autoTextColor  white text if the luminance of @p color with the weights of Rec. 709 is
 *                       below 161 of 255, or else black; @p textColor is ignored then
 */
NORVU_GUI_API void setColor(QAbstractButton *button, const QColor &color, bool autoTextColor = true,
                            const QColor &textColor = QColor());

/**
 * An opaque colour for an index: neighbours in the count are far apart in hue, whose step is the
 * golden ratio of the circle. An index always gives the same colour.
 * @param index       0 or above
 * @param saturation  0 to 255
 * @param value       0 to 255
 * @return an invalid colour for arguments out of range
 */
NORVU_GUI_API QColor generateColor(int index, int saturation, int value);

/**
 * A colour of hue 0 whose saturation is the golden ratio fraction of the index times 9972. As a
 * saturation ends at 1, most indices but 0 give an invalid colour.
 * @param a  value, 0 to 1
 * @param b  alpha, 0 to 1
 */
NORVU_GUI_API QColor generateColorF(int index, double a, double b);

} // namespace Gui
} // namespace Norvu
