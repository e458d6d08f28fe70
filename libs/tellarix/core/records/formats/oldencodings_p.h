// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/numericarray.h>

#include <cstdint>
#include <string_view>

namespace Tellarix {
namespace Formats {

/** Bytes of a sample in an encoding of recorders of old, each a number by itself; 0 for others. */
int64_t oldSampleSize(int encoding);

/**
 * Decodes gain-ranged and other samples of old recorders; SEED reference manual 2.4, appendix D.
 *
 * @param payload  holds @p count samples
 * @return single precision for GEOSCOPE, integers for others; fewer than @p count if a sample is
 *         none, null if the first one is
 */
ArrayPtr decodeOldSamples(int encoding, std::string_view payload, bool bigEndian, int count);

} // namespace Formats
} // namespace Tellarix
