// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>

namespace Tellarix {
namespace Core {

/**
 * Has the heap grow in large steps, in all threads, for programs that hold many records; for their
 * main functions, before there is a second thread. Without it each few records that a thread makes
 * cost a call of the system.
 */
TELLARIX_CORE_API void setUpMemory();

} // namespace Core
} // namespace Tellarix
