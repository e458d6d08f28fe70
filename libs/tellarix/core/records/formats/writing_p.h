// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/forward.h>

#include <string>

namespace Tellarix {
namespace Formats {

/** Bounds of what the readers take for a time and a rate; what lies outside is a sign of damage. */
constexpr int MinYear = 1900;
constexpr int MaxYear = 2500;
constexpr double MaxSamplingFrequency = 1E9;
/** Formats express lower rates badly or not at all. */
constexpr double MinWrittenFrequency = 1E-9;

/**
 * Why a reader would not take @p record back: it has no samples, or its times or its rate lie
 * outside of the bounds. A rate of 0 is left to the format. Empty if nothing is wrong.
 */
std::string faultOfRecord(const Record &record);

/** Why a blank padded field of @p size characters can't hold @p code; empty if it can. */
std::string faultOfCode(const std::string &name, const std::string &code, size_t size);

} // namespace Formats
} // namespace Tellarix
