// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QPalette>

namespace Workbench {

/** A palette for dark rooms, for the Fusion style. */
QPalette darkPalette();

/** Switches the application between its own palette and the dark one. */
void setDarkColors(bool dark);
bool hasDarkColors();

} // namespace Workbench
