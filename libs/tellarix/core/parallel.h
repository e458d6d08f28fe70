// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>

#include <functional>

namespace Tellarix {
namespace Core {

/**
 * Calls @p work with each number from 0 to @p count - 1, in this thread and in idle ones of Qt's
 * global thread pool, and returns when all calls have returned. A count below 1 does nothing.
 *
 * The numbers are taken in ascending order, each by whichever thread is free. This thread waits for
 * no other that hasn't begun: on a busy machine that can take longer than the work itself.
 *
 * @param work     must not throw; is called by several threads at the same time
 * @param threads  how many at most, this one included; 0 for as many as the pool may have
 */
TELLARIX_CORE_API void parallelFor(int count, const std::function<void(int)> &work,
                                   int threads = 0);

} // namespace Core
} // namespace Tellarix
