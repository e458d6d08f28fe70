// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/forward.h>
#include <tellarix/core/time.h>

#include <cstdint>
#include <string>
#include <string_view>

class QIODevice;

namespace Tellarix {
namespace Formats {

/** Header of a binary SAC file of version 6 or 7, either byte order. */
struct TELLARIX_CORE_API SacHeader
{
    int version{6};
    bool bigEndian{false};
    int64_t sampleCount{0};
    Core::Time startTime; /**< reference time plus B */
    double samplingFrequency{0};
    std::string network;
    std::string station;
    std::string location;
    std::string channel;

    /** Bytes of the whole file. */
    int64_t fileSize() const;
};

/** Bytes of the header, which the samples follow. */
constexpr size_t SacHeaderSize = 632;

/** True if @p bytes begin like a SAC file; fewer than SacHeaderSize bytes never do. */
TELLARIX_CORE_API bool beginsLikeSac(std::string_view bytes);

/**
 * Reads the header of a SAC file.
 *
 * Sampling interval and B come from the double precision footer of version 7 if @p bytes reach that
 * far. In single precision B is taken for the nearest round number, and the interval for that or
 * for the inverse of a round frequency, whichever has fewer digits: 0.3f for 0.3 s, 0.01001001f for
 * 99.9 Hz.
 *
 * @param error    why false is returned: no evenly spaced time series, or impossible values
 * @param warning  set if there is no reference time, in which case 1970-01-01 is taken
 */
TELLARIX_CORE_API bool parseSacHeader(std::string_view bytes, SacHeader &header, std::string &error,
                                      std::string &warning);

/**
 * Makes a record of a whole SAC file.
 * @param cause  why null is returned; with a result, what is missing or doubtful, or empty
 */
TELLARIX_CORE_API RecordPtr decodeSac(std::string_view bytes, std::string &cause);

/**
 * Writes @p record as a little-endian SAC file of version 6, samples and sampling interval in
 * single precision. Frequencies of up to four digits are read back as they were.
 * @return false with a reason in @p error if the device does not take the bytes, or if the record
 *         can't be read back: a code that is too long or not ASCII, no samples, times outside of
 *         the years 1900 to 2500, a rate that is not from 1E-9 to 1E9 Hz. In the latter case
 *         nothing has been written.
 */
TELLARIX_CORE_API bool writeSac(QIODevice &device, const Record &record, std::string &error);

} // namespace Formats
} // namespace Tellarix
