// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/formats/bytes_p.h>
#include <tellarix/core/records/formats/miniseed.h>
#include <tellarix/core/records/formats/writing_p.h>

#include <algorithm>
#include <cctype>

namespace Tellarix {
namespace Formats {

namespace {

constexpr size_t FixedHeaderSize2 = 48;
constexpr size_t FixedHeaderSize3 = 40;
constexpr size_t SignatureSize = 8;

bool isOneOf(char c, const char *set)
{
    return c != '\0' && std::strchr(set, c);
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool hasSequenceNumber(const char *bytes)
{
    return std::all_of(bytes, bytes + 6,
                       [](char c) { return isDigit(c) || c == ' ' || c == '\0'; });
}

bool beginsLikeData2(std::string_view bytes)
{
    return bytes.size() >= SignatureSize && isOneOf(bytes[6], "DRQM") &&
           (bytes[7] == ' ' || bytes[7] == '\0') && hasSequenceNumber(bytes.data());
}

bool beginsLikeControl(std::string_view bytes)
{
    return bytes.size() >= SignatureSize && isOneOf(bytes[6], "VAST") &&
           (bytes[7] == ' ' || bytes[7] == '*') &&
           std::all_of(bytes.begin(), bytes.begin() + 6, isDigit);
}

bool beginsLikeNoise(std::string_view bytes)
{
    if (bytes.size() < FixedHeaderSize2 || !std::all_of(bytes.begin(), bytes.begin() + 6, isDigit))
        return false;
    return bytes.substr(6, FixedHeaderSize2 - 6).find_first_not_of(' ') == std::string_view::npos;
}

bool beginsLikeData3(std::string_view bytes)
{
    return bytes.size() >= SignatureSize && bytes[0] == 'M' && bytes[1] == 'S' && bytes[2] == 3;
}

Finding incomplete(MiniSeedHeader &header, size_t needed)
{
    header.needed = needed;
    return Finding::Incomplete;
}

Finding damaged(MiniSeedHeader &header, const std::string &cause)
{
    header.cause = cause;
    return Finding::Damaged;
}

bool plausibleDate(int year, int dayOfYear)
{
    return year >= MinYear && year <= MaxYear && dayOfYear >= 1 && dayOfYear <= 366;
}

bool plausibleDate2(const NumberReader &numbers)
{
    return plausibleDate(numbers.at<uint16_t>(20), numbers.at<uint16_t>(22));
}

/** The order in which year and day of the start time make sense. A few years read well both ways:
 *  then the offset of the first blockette, which is small, decides. */
bool isBigEndian2(std::string_view bytes)
{
    const bool big = plausibleDate2(NumberReader(bytes, true));
    const bool little = plausibleDate2(NumberReader(bytes, false));
    if (big != little)
        return big;
    return NumberReader(bytes, true).at<uint16_t>(46) <=
           NumberReader(bytes, false).at<uint16_t>(46);
}

/** Sets the start time; false with a cause if the fields are not those of a time. */
bool setStartTime(MiniSeedHeader &header, const Core::TimeFields &fields, int64_t usecs)
{
    if (plausibleDate(fields.year, fields.dayOfYear) && fields.hour <= 23 && fields.minute <= 59 &&
        fields.second <= 60) {
        header.startTime = Core::Time::FromDayOfYear(fields.year, fields.dayOfYear, fields.hour,
                                                     fields.minute, fields.second);
        header.startTime += Core::TimeSpan::FromUSecs(usecs);
    }
    if (header.startTime.valid())
        return true;

    char text[96];
    std::snprintf(text, sizeof text, "start time is out of range: year %d, day %d, %02d:%02d:%02d",
                  fields.year, fields.dayOfYear, fields.hour, fields.minute, fields.second);
    header.cause = text;
    return false;
}

bool checkSamplingFrequency(MiniSeedHeader &header)
{
    // Written so that not-a-number fails as well.
    if (header.samplingFrequency >= 0 && header.samplingFrequency <= MaxSamplingFrequency)
        return true;

    char text[64];
    std::snprintf(text, sizeof text, "sampling frequency of %g Hz is out of range",
                  header.samplingFrequency);
    header.cause = text;
    return false;
}

double nominalRate(int factor, int multiplier)
{
    double rate = factor >= 0 ? factor : -1.0 / factor;
    if (multiplier > 0)
        rate *= multiplier;
    else if (multiplier < 0)
        rate /= -multiplier;
    return rate;
}

bool isPrintable(std::string_view field)
{
    return std::all_of(field.begin(), field.end(),
                       [](char c) { return c == '\0' || (c >= ' ' && c <= '~'); });
}

/** What the blockettes of a version 2 record add to its fixed header. */
struct Blockettes
{
    bool has1000{false};
    bool has100{false};
    float actualRate{0};
    int usecs{0};
};

size_t sizeOfBlockette(int type)
{
    switch (type) {
    case 100:
        return 12;
    case 1000:
    case 1001:
        return 8;
    default:
        return 4;
    }
}

void readBlockette(const NumberReader &numbers, int type, size_t offset, MiniSeedHeader &header,
                   Blockettes &blockettes)
{
    switch (type) {
    case 100:
        blockettes.has100 = true;
        blockettes.actualRate = numbers.at<float>(offset + 4);
        break;
    case 1000: {
        blockettes.has1000 = true;
        header.encoding = numbers.byteAt(offset + 4);
        header.bigEndianData = numbers.byteAt(offset + 5) != 0;
        const int exponent = numbers.byteAt(offset + 6);
        header.length = exponent < 32 ? int64_t(1) << exponent : -1;
        break;
    }
    case 1001:
        header.timingQuality = numbers.byteAt(offset + 4) <= 100 ? numbers.byteAt(offset + 4) : -1;
        blockettes.usecs = numbers.at<int8_t>(offset + 5);
        break;
    default:
        break;
    }
}

std::string brokenChain(size_t offset, const std::string &why)
{
    return "blockette chain points to byte " + std::to_string(offset) + " of the record, " + why;
}

/**
 * Follows the chain of blockettes. A chain that breaks is told in the header's cause; what was
 * read before that counts.
 */
Finding readBlockettes(std::string_view bytes, bool complete, const NumberReader &numbers,
                       MiniSeedHeader &header, Blockettes &blockettes)
{
    size_t offset = numbers.at<uint16_t>(46);
    size_t last = 0;
    for (int left = numbers.byteAt(39); left > 0 && offset != 0; --left) {
        if (offset < FixedHeaderSize2 || offset <= last) {
            header.cause = brokenChain(offset, "not behind what precedes it");
            break;
        }
        if (header.sampleCount > 0 && offset + 4 > static_cast<size_t>(header.dataOffset)) {
            header.cause = brokenChain(offset, "behind the beginning of the data");
            break;
        }
        size_t end = offset + 4;
        if (end <= bytes.size())
            end = offset + sizeOfBlockette(numbers.at<uint16_t>(offset));
        if (end > bytes.size()) {
            if (!complete)
                return incomplete(header, end);
            header.cause = brokenChain(offset, "which is missing");
            break;
        }
        readBlockette(numbers, numbers.at<uint16_t>(offset), offset, header, blockettes);
        last = offset;
        offset = numbers.at<uint16_t>(offset + 2);
    }
    return Finding::Record;
}

void setSamplingFrequency2(MiniSeedHeader &header, const NumberReader &numbers,
                           const Blockettes &blockettes)
{
    header.samplingFrequency = nominalRate(numbers.at<int16_t>(32), numbers.at<int16_t>(34));
    // Blockette 100 has single precision: the nominal rate is the better number if they agree.
    if (blockettes.has100 && blockettes.actualRate != 0 &&
        blockettes.actualRate != static_cast<float>(header.samplingFrequency))
        header.samplingFrequency = shortestDouble(blockettes.actualRate);
}

int64_t clockCorrectionUSecs(const NumberReader &numbers)
{
    constexpr int CorrectionApplied = 2;
    if (numbers.byteAt(36) & CorrectionApplied)
        return 0;
    return int64_t(numbers.at<int32_t>(40)) * 100;
}

bool checkLength2(MiniSeedHeader &header)
{
    if (header.length >= MiniSeedMinLength && header.length <= MiniSeed2MaxLength)
        return header.setLength(header.length);
    header.cause = "blockette 1000 gives a record length that is out of range";
    header.length = 0;
    return false;
}

Finding parseHeader2(std::string_view bytes, bool complete, MiniSeedHeader &header)
{
    if (bytes.size() < FixedHeaderSize2)
        return incomplete(header, FixedHeaderSize2);

    const NumberReader numbers(bytes, isBigEndian2(bytes));
    header.version = 2;
    header.identifier = bytes.substr(8, 12);
    header.sampleCount = numbers.at<uint16_t>(30);
    header.dataOffset = numbers.at<uint16_t>(44);
    header.bigEndianData = isBigEndian2(bytes);
    header.encoding = static_cast<int>(MiniSeedEncoding::Steim1);

    Blockettes blockettes;
    if (readBlockettes(bytes, complete, numbers, header, blockettes) == Finding::Incomplete)
        return Finding::Incomplete;
    if (!blockettes.has1000 && !header.cause.empty())
        return Finding::Damaged;
    if (blockettes.has1000 && !checkLength2(header))
        return Finding::Damaged;
    if (!isPrintable(header.identifier))
        return damaged(header, "codes of the stream are not readable");

    Core::TimeFields fields;
    fields.year = numbers.at<uint16_t>(20);
    fields.dayOfYear = numbers.at<uint16_t>(22);
    fields.hour = numbers.byteAt(24);
    fields.minute = numbers.byteAt(25);
    fields.second = numbers.byteAt(26);
    const int64_t usecs = numbers.at<uint16_t>(28) * 100 + blockettes.usecs;
    if (!setStartTime(header, fields, usecs + clockCorrectionUSecs(numbers)))
        return Finding::Damaged;

    setSamplingFrequency2(header, numbers, blockettes);
    return checkSamplingFrequency(header) ? Finding::Record : Finding::Damaged;
}

Finding parseHeader3(std::string_view bytes, MiniSeedHeader &header)
{
    if (bytes.size() < FixedHeaderSize3)
        return incomplete(header, FixedHeaderSize3);

    const NumberReader numbers(bytes, false);
    const size_t identifierLength = numbers.byteAt(33);
    header.version = 3;
    header.encoding = numbers.byteAt(15);
    header.bigEndianData = header.encoding == static_cast<int>(MiniSeedEncoding::Steim1) ||
                           header.encoding == static_cast<int>(MiniSeedEncoding::Steim2);
    header.sampleCount = numbers.at<uint32_t>(24);
    header.checksum = numbers.at<uint32_t>(28);
    header.dataOffset = FixedHeaderSize3 + identifierLength + numbers.at<uint16_t>(34);
    header.dataLength = numbers.at<uint32_t>(36);
    header.length = header.dataOffset + header.dataLength;
    if (header.length > MiniSeed3MaxLength) {
        const int64_t length = header.length;
        header.length = 0;
        return damaged(header,
                       "record length of " + std::to_string(length) + " bytes is out of range");
    }
    if (bytes.size() < FixedHeaderSize3 + identifierLength)
        return incomplete(header, FixedHeaderSize3 + identifierLength);

    header.identifier = bytes.substr(FixedHeaderSize3, identifierLength);
    if (!isPrintable(header.identifier))
        return damaged(header, "source identifier is not readable");

    Core::TimeFields fields;
    fields.year = numbers.at<uint16_t>(8);
    fields.dayOfYear = numbers.at<uint16_t>(10);
    fields.hour = numbers.byteAt(12);
    fields.minute = numbers.byteAt(13);
    fields.second = numbers.byteAt(14);
    const int64_t nanoseconds = numbers.at<uint32_t>(4);
    if (!setStartTime(header, fields, (nanoseconds + 500) / 1000))
        return Finding::Damaged;

    const double rate = numbers.at<double>(16);
    header.samplingFrequency = rate < 0 ? -1 / rate : rate;
    return checkSamplingFrequency(header) ? Finding::Record : Finding::Damaged;
}

} // namespace

Core::TimeWindow MiniSeedHeader::timeWindow() const
{
    if (samplingFrequency <= 0)
        return Core::TimeWindow(startTime, startTime);
    return Core::TimeWindow(startTime, Core::TimeSpan(sampleCount / samplingFrequency));
}

bool MiniSeedHeader::setLength(int64_t recordLength)
{
    length = recordLength;
    dataLength = std::max<int64_t>(0, length - dataOffset);
    if (sampleCount == 0 || (dataOffset >= int64_t(FixedHeaderSize2) && dataOffset < length))
        return true;
    cause = "data begin at byte " + std::to_string(dataOffset) + " of a record of " +
            std::to_string(length) + " bytes";
    return false;
}

bool beginsLikeMiniSeed(std::string_view bytes)
{
    return beginsLikeData2(bytes) || beginsLikeData3(bytes) || beginsLikeControl(bytes) ||
           beginsLikeNoise(bytes);
}

Finding parseMiniSeedHeader(std::string_view bytes, bool complete, MiniSeedHeader &header)
{
    header = MiniSeedHeader();
    if (bytes.size() < SignatureSize)
        return complete ? Finding::Foreign : incomplete(header, SignatureSize);

    Finding finding = Finding::Foreign;
    if (beginsLikeData2(bytes))
        finding = parseHeader2(bytes, complete, header);
    else if (beginsLikeData3(bytes))
        finding = parseHeader3(bytes, header);
    else if (beginsLikeControl(bytes) || beginsLikeNoise(bytes))
        finding = Finding::Filler;
    else if (bytes.size() < FixedHeaderSize2 && !complete && bytes[6] == ' ' && bytes[7] == ' ')
        finding = incomplete(header, FixedHeaderSize2);

    if (finding == Finding::Incomplete && complete)
        return damaged(header,
                       "header is cut off after " + std::to_string(bytes.size()) + " bytes");
    return finding;
}

int64_t guessMiniSeedLength(std::string_view bytes, bool complete)
{
    const auto asLength = [](size_t size) {
        return (size & (size - 1)) == 0 ? static_cast<int64_t>(size) : -1;
    };
    // A header at another place belongs to a record that must not be swallowed.
    for (size_t size = MiniSeedMinLength; size <= MiniSeed2MaxLength; size += MiniSeedMinLength) {
        if (complete && size == bytes.size())
            return asLength(size);
        if (bytes.size() < size + FixedHeaderSize2)
            return complete ? -1 : 0;
        if (beginsLikeMiniSeed(bytes.substr(size)))
            return asLength(size);
    }
    return -1;
}

uint32_t miniSeed3Checksum(std::string_view record, int64_t offset, ChecksumIndex &index)
{
    constexpr size_t ChecksumOffset = 28;
    constexpr size_t ChecksumSize = 4;
    constexpr size_t Rest = ChecksumOffset + ChecksumSize;
    uint32_t checksum = addToChecksum(ChecksumStart, record.substr(0, ChecksumOffset));
    checksum = addToChecksum(checksum, std::string_view("\0\0\0", ChecksumSize));
    return ~index.add(checksum, record.substr(Rest), offset + static_cast<int64_t>(Rest));
}

} // namespace Formats
} // namespace Tellarix
