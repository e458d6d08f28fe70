// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>

#include <QLoggingCategory>

/** Log categories; users switch them with QT_LOGGING_RULES, e.g. "tellarix.io.debug=true". */
namespace Tellarix {
namespace Log {

TELLARIX_CORE_API const QLoggingCategory &general(); /**< "tellarix" */
TELLARIX_CORE_API const QLoggingCategory &io();      /**< "tellarix.io" */
TELLARIX_CORE_API const QLoggingCategory &records(); /**< "tellarix.records" */
TELLARIX_CORE_API const QLoggingCategory &gui();     /**< "tellarix.gui" */

} // namespace Log
} // namespace Tellarix
