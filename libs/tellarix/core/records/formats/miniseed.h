// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/formats/checksumindex.h>
#include <tellarix/core/records/forward.h>
#include <tellarix/core/records/samplememory.h>
#include <tellarix/core/timewindow.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace Tellarix {
namespace Formats {

/** Encodings of samples in miniSEED that can be read; the numbers are those of the format. */
enum class MiniSeedEncoding
{
    Text = 0,
    Int16 = 1,
    Int32 = 3,
    Float32 = 4,
    Float64 = 5,
    Steim1 = 10,
    Steim2 = 11,
    Geoscope24 = 12,
    Geoscope16Exponent3 = 13, /**< gain-ranged, 3 bits of 16 for the exponent */
    Geoscope16Exponent4 = 14,
    Cdsn = 16,
    Sro = 30,
    Dwwssn = 32,
};

/** What the bytes at some place turn out to be. */
enum class Finding
{
    Record,     /**< a data record */
    Filler,     /**< control header or noise record of a full volume: nothing to read in it */
    Incomplete, /**< more bytes are needed to tell */
    Damaged,    /**< begins like a record, but can't be one */
    Foreign,    /**< nothing of this format */
};

/** Header of a miniSEED record of either version. */
struct TELLARIX_CORE_API MiniSeedHeader
{
    int version{2};
    int64_t length{0}; /**< bytes of the whole record; 0 if the header doesn't tell */
    int64_t dataOffset{0};
    int64_t dataLength{0}; /**< bytes of the payload; 0 as long as the length is not known */
    int encoding{0};       /**< a MiniSeedEncoding, or a number that can't be read */
    bool bigEndianData{true};
    int64_t sampleCount{0};
    Core::Time startTime; /**< with microseconds and the clock correction */
    double samplingFrequency{0};
    int timingQuality{-1};
    uint32_t checksum{0}; /**< CRC-32C that a version 3 header gives */
    /** The code fields of version 2, the source identifier of version 3; lies in the parsed bytes
     *  and holds as long as these do. */
    std::string_view identifier;
    size_t needed{0};  /**< bytes needed from the start of the record if Incomplete */
    std::string cause; /**< why the header is damaged; otherwise a part that can't be read */

    /** First sample to the end of the last one; both the start if there is no rate. */
    Core::TimeWindow timeWindow() const;
    /** Sets the length of a version 2 record; false with a cause if its data can't lie in it. */
    bool setLength(int64_t recordLength);
};

constexpr int64_t MiniSeedMinLength = 128;
constexpr int64_t MiniSeed2MaxLength = 1 << 20;
constexpr int64_t MiniSeed3MaxLength = 128 << 20;

/** True if @p bytes begin like a record, control header or noise record; 48 bytes are enough to
 *  be sure, with fewer than 8 the answer is false. */
TELLARIX_CORE_API bool beginsLikeMiniSeed(std::string_view bytes);

/**
 * Reads the header of a miniSEED 2 or 3 record.
 *
 * @param bytes     from the beginning of the record on; need not hold all of it
 * @param complete  no further bytes will come, so that nothing is Incomplete
 * @param header    result, also in part for what is Damaged
 */
TELLARIX_CORE_API Finding parseMiniSeedHeader(std::string_view bytes, bool complete,
                                              MiniSeedHeader &header);

/**
 * Length of a record that does not tell it itself, from the beginning of the next header.
 * @return 0 if more bytes are needed, -1 if it can't be told
 */
TELLARIX_CORE_API int64_t guessMiniSeedLength(std::string_view bytes, bool complete);

/** CRC-32C of a version 3 record, its own field counted as zero, that begins at @p offset of the
 *  run of bytes that @p index is about. */
TELLARIX_CORE_API uint32_t miniSeed3Checksum(std::string_view record, int64_t offset,
                                             ChecksumIndex &index);

/**
 * Codes of a version 3 source identifier.
 *
 * "FDSN:NET_STA_LOC_B_S_SS" gives the four codes, the channel being "BSSS" if band, source and
 * subsource are single characters and "B_S_SS" otherwise. Any other identifier becomes the station
 * code of a stream without network, dots replaced by underscores.
 */
TELLARIX_CORE_API StreamCodesCPtr codesFromSourceIdentifier(const std::string &identifier);

/**
 * Turns a record in memory into a Record object; any number of threads may do so at once.
 *
 * @param header  of the record; its identifier is not looked at
 * @param record  all bytes of the record
 * @param codes   of the stream, not null
 * @param cause   why null is returned; with a result, what is doubtful about it or empty
 * @param memory  for the samples of this stream; null for memory of their own
 */
TELLARIX_CORE_API RecordPtr decodeMiniSeed(const MiniSeedHeader &header, std::string_view record,
                                           const StreamCodesCPtr &codes, std::string &cause,
                                           SampleMemory *memory = nullptr);

/** Turns records in memory into Record objects; records of a stream share their codes. Not to be
 *  used by two threads at once. */
class TELLARIX_CORE_API MiniSeedDecoder
{
public:
    /** What the records of a stream share. */
    struct Stream
    {
        StreamCodesCPtr codes;
        SampleMemoryPtr memory; /**< for whoever reads many records at once */
    };

    const Stream &stream(const MiniSeedHeader &header);
    /** The shared codes of a header's stream. */
    const StreamCodesCPtr &codes(const MiniSeedHeader &header) { return stream(header).codes; }

    /** decodeMiniSeed() with the shared codes; the samples get memory of their own. */
    RecordPtr decode(const MiniSeedHeader &header, std::string_view record, std::string &cause);

private:
    std::unordered_map<std::string, Stream> _streams;
    std::string _lastIdentifier;
    Stream _last;
};

} // namespace Formats
} // namespace Tellarix
