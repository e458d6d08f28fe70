// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace Tellarix {
namespace Formats {

/** What a CRC-32C begins with; its result is the register at the end, inverted. */
constexpr uint32_t ChecksumStart = 0xFFFFFFFF;

/** The register of a CRC-32C behind @p bytes. */
TELLARIX_CORE_API uint32_t addToChecksum(uint32_t checksum, std::string_view bytes);

/**
 * CRC-32C of parts of one run of bytes that overlap, as those of headers that all claim the
 * rest of a file.
 *
 * Each byte is added up once and the sum kept for every 64 bytes; what a part needs beyond that
 * does not depend on its length. Cheapest when parts come in the order of their beginnings.
 */
class TELLARIX_CORE_API ChecksumIndex
{
public:
    /** Adds up @p bytes, which begin at @p offset of the run, as far as that is not done yet. */
    void prepare(std::string_view bytes, int64_t offset);
    /** The register behind @p bytes, which begin at @p offset of the run. */
    uint32_t add(uint32_t checksum, std::string_view bytes, int64_t offset);

    void clear() { _sums.clear(); }

private:
    void dropBefore(int64_t offset);

    int64_t _origin{0};          /**< where the first sum holds */
    std::vector<uint32_t> _sums; /**< registers from the origin on, one for every 64 bytes */
};

} // namespace Formats
} // namespace Tellarix
