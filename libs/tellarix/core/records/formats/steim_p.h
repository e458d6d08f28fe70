// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <cstddef>
#include <cstdint>

namespace Tellarix {
namespace Formats {

/** Frames of 64 bytes of Steim compressed samples. */
struct SteimPayload
{
    const char *data{nullptr};
    size_t size{0};
    int version{2}; /**< 1 or 2 */
    bool bigEndian{true};

    static constexpr size_t FrameSize = 64;
    static constexpr int WordsPerFrame = 15; /**< without the word of codes */

    /** The most samples that can lie in the payload. */
    int64_t capacity() const
    {
        return static_cast<int64_t>(size / FrameSize) * WordsPerFrame * (version == 1 ? 4 : 7);
    }
};

/**
 * Decodes Steim 1 and 2 compressed samples; SEED reference manual 2.4, appendix B.
 *
 * @param count    samples wanted, room for which is at @p samples
 * @return number of samples decoded; below @p count if the payload ends before, or at a word that
 *         the format does not know
 */
int64_t decodeSteim(const SteimPayload &payload, int64_t count, int *samples);

/** The last sample as the first frame gives it, for a check; the payload must hold a frame. */
int steimLastSample(const SteimPayload &payload);

} // namespace Formats
} // namespace Tellarix
