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
 * key. All exist from the load of the library to the end of the process.
 */
namespace Gradients {

extern NORVU_GUI_API const Tellarix::Gui::Gradient Default; /**< fades to transparent at its foot */
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

/** All of them by name. */
extern NORVU_GUI_API const QMap<QString, const Tellarix::Gui::Gradient *> Registry;

} // namespace Gradients

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

/**
 * Fills a table with the pixels of a gradient over its own key range, alpha included.
 * @param discrete  bands of one colour from stop to stop
 * @return false, leaving the table alone, if the gradient has no stops
 */
NORVU_GUI_API bool fillTable(Utils::LUT<double, unsigned int> &table,
                             const Tellarix::Gui::Gradient &gradient, bool discrete = false);

/**
 * Colours a button.
 * @param autoTextColor  black or white text, whichever can be read; @p textColor is ignored then
 */
NORVU_GUI_API void setColor(QAbstractButton *button, const QColor &color, bool autoTextColor = true,
                            const QColor &textColor = QColor());

/** A colour for an index: neighbours in the count are far apart in hue (golden ratio).
 *  @param saturation, value  0 to 255 */
NORVU_GUI_API QColor generateColor(int index, int saturation, int value);

/**
 * A colour of hue 0 whose saturation is the golden ratio fraction of the index times 9972, with
 * value @p a and alpha @p b; invalid for most indices but 0.
 */
NORVU_GUI_API QColor generateColorF(int index, double a, double b);

} // namespace Gui
} // namespace Norvu
