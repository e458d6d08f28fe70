// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/math/runningmean.h>

namespace Tellarix {
namespace Math {
namespace Filtering {

/** A moving average: the name under which chains of filters know the running mean. */
template <typename T>
using Average = RunningMean<T>;

} // namespace Filtering
} // namespace Math
} // namespace Tellarix
