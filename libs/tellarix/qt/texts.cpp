// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/texts.h>

#include <cmath>

namespace Tellarix {
namespace Gui {

QString depthToString(double depth, int decimals)
{
    if (!std::isfinite(depth))
        return QStringLiteral("-");

    const QString text = QString::number(depth, 'f', decimals);
    const bool isMinusZero = text.startsWith(QLatin1Char('-')) && text.toDouble() == 0;
    return isMinusZero ? text.mid(1) : text;
}

} // namespace Gui
} // namespace Tellarix
