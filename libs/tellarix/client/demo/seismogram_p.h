// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/demo/demostation.h>

#include <array>
#include <cstdint>
#include <vector>

namespace Tellarix {
namespace Client {

constexpr double DemoSamplingFrequency = 100;
constexpr double DemoSecondsBeforeOrigin = 120;
constexpr double DemoSeconds = 900;

/** Ground velocity in counts on the channels of a station, without gaps, each DemoSeconds long. */
using DemoSeismogram = std::array<std::vector<int>, 3>;

/**
 * The seismogram of the demonstration's earthquake, of a small aftershock and of the noise at
 * @p station.
 *
 * Each body wave is a pulse and a train of scattered waves behind it, both of the omega-square
 * source spectrum of Brune (1970) and attenuated on their way; short periods die out first. A
 * dispersed surface wave follows. The same seed gives the same samples.
 */
DemoSeismogram synthesizeSeismogram(const DemoStation &station, uint64_t seed);

} // namespace Client
} // namespace Tellarix
