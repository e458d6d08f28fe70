// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QPixmap>

namespace Workbench {

/**
 * A picture of the widget kit: one row for each widget, in its normal, focused and disabled state.
 *
 * It has the colours of the application's present palette. Nothing appears on the screen.
 */
QPixmap widgetGallery();

} // namespace Workbench
