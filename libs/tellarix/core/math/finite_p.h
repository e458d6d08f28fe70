// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <cmath>
#include <limits>

namespace Tellarix {
namespace Math {
namespace Filtering {

inline bool isSamplingFrequency(double frequency)
{
    return frequency > 0 && std::isfinite(frequency);
}

/** Replaces finite samples by what @p operation makes of them, the others by not-a-number. */
template <typename T, typename Operation>
void forEachFinite(int n, T *samples, Operation operation)
{
    for (int i = 0; i < n; ++i) {
        const double sample = static_cast<double>(samples[i]);
        samples[i] = std::isfinite(sample) ? static_cast<T>(operation(sample))
                                           : std::numeric_limits<T>::quiet_NaN();
    }
}

} // namespace Filtering
} // namespace Math
} // namespace Tellarix
