// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>

#include <QChar>
#include <QString>

namespace Tellarix {
namespace Gui {

/** The degree sign. */
constexpr QChar degrees(0x00B0);

/** A depth in km without its unit; "-" if it is no finite number, and never a zero with a minus. */
TELLARIX_GUI_API QString depthToString(double depth, int decimals);

} // namespace Gui
} // namespace Tellarix
