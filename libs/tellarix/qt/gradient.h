// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>

#include <QColor>
#include <QMap>
#include <QMetaType>
#include <QPair>
#include <QString>

namespace Tellarix {
namespace Gui {

/**
 * A colour gradient: a sorted map of a key to a colour and a tag text, and the colours between
 * them.
 *
 * Copies share their data until one of them changes.
 */
class TELLARIX_GUI_API Gradient : public QMap<double, QPair<QColor, QString>>
{
public:
    /** Inserts a stop or replaces the one at exactly this key; a key that is no number is ignored.
     */
    void setColorAt(double key, const QColor &color, const QString &text = QString());

    /**
     * The colour at a key. Keys beyond the ends have the colour of the end.
     * @param key       in the unit of the stops; what is no number has the colour of the first one
     * @param discrete  the colour of the last stop that isn't above the key, instead of a linear
     *                  mixture of red, green, blue and alpha between the stops on either side,
     *                  each rounded to 8 bits
     * @return an invalid colour if there are no stops
     */
    QColor colorAt(double key, bool discrete = false) const;

    /**
     * The same colours and tags with keys stretched linearly so that the first is @p lower and the
     * last @p upper; a single stop goes to @p lower. With @p upper below @p lower the order turns
     * round; with equal ones only the last stop is left.
     */
    Gradient rescaled(double lower, double upper) const;
};

} // namespace Gui
} // namespace Tellarix

Q_DECLARE_METATYPE(Tellarix::Gui::Gradient)
