// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <cstdint>
#include <random>

namespace Tellarix {
namespace Client {

/** Random numbers that are the same everywhere; the standard library's distributions aren't. */
class DemoRandom
{
public:
    explicit DemoRandom(uint64_t seed) : _engine(seed) {}

    /** Normal, of unit variance, as a sum of four uniform numbers: at most 3.5. */
    double operator()()
    {
        const uint64_t bits = _engine();
        const auto sum = static_cast<int64_t>((bits & 0xFFFF) + (bits >> 16 & 0xFFFF) +
                                              (bits >> 32 & 0xFFFF) + (bits >> 48));
        return static_cast<double>(sum - 131070) * (1 / 37837.2);
    }

    /** Evenly distributed between @p low and @p high. */
    double uniform(double low, double high)
    {
        return low + (high - low) * static_cast<double>(_engine() >> 11) * 0x1p-53;
    }

    double normal(double mean, double deviation) { return mean + deviation * (*this)(); }

    bool chance(double probability) { return uniform(0, 1) < probability; }

private:
    std::mt19937_64 _engine;
};

} // namespace Client
} // namespace Tellarix
