// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/logging.h>

namespace Tellarix {
namespace Log {

Q_LOGGING_CATEGORY(general, "tellarix", QtInfoMsg)
Q_LOGGING_CATEGORY(io, "tellarix.io", QtInfoMsg)
Q_LOGGING_CATEGORY(records, "tellarix.records", QtInfoMsg)
Q_LOGGING_CATEGORY(gui, "tellarix.gui", QtInfoMsg)

} // namespace Log
} // namespace Tellarix
