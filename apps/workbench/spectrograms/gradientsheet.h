// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QPalette>
#include <QPixmap>

namespace Workbench {

/** A table of all ready-made gradients: name, mixed colours, steps, and first and last key.
 *  @param ratio  pixels per unit of its size */
QPixmap gradientSheet(const QPalette &palette, qreal ratio);

} // namespace Workbench
