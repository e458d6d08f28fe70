#include <tellarix/core/records/formats/miniseed.h>

#include <tellarix/core/records/formats/bytes_p.h>
#include <tellarix/core/records/formats/libmseed_p.h>
#include <tellarix/core/records/typedarray.h>
#include <tellarix/core/strings.h>

#include <algorithm>
#include <vector>

namespace Tellarix {
namespace Formats {

namespace {

constexpr int64_t SteimFrameSize = 64;
constexpr int64_t SteimWordsPerFrame = 15;
// libmseed takes records of this layout and nothing shorter than its smallest record.
constexpr int64_t LibmseedHeaderSize = 48;

template <typename T>
ArrayPtr decodePlain(const char *payload, bool bigEndian, int64_t count)
{
    Core::SmartPointer<TypedArray<T>> samples(new TypedArray<T>(static_cast<int>(count)));
    copyNumbers(payload, bigEndian, static_cast<size_t>(count), samples->typedData());
    return samples;
}

ArrayPtr decodeShort(const char *payload, bool bigEndian, int64_t count)
{
    std::vector<int16_t> shorts(static_cast<size_t>(count));
    copyNumbers(payload, bigEndian, shorts.size(), shorts.data());
    Core::SmartPointer<IntArray> samples(new IntArray(static_cast<int>(count)));
    std::copy(shorts.begin(), shorts.end(), samples->typedData());
    return samples;
}

/** Bytes of a sample where each takes the same; 0 for compressed and unknown encodings. */
int64_t plainSampleSize(int encoding)
{
    switch (static_cast<MiniSeedEncoding>(encoding)) {
    case MiniSeedEncoding::Text:
        return 1;
    case MiniSeedEncoding::Int16:
        return 2;
    case MiniSeedEncoding::Int32:
    case MiniSeedEncoding::Float32:
        return 4;
    case MiniSeedEncoding::Float64:
        return 8;
    default:
        return 0;
    }
}

bool isSteim(int encoding)
{
    return encoding == static_cast<int>(MiniSeedEncoding::Steim1) ||
           encoding == static_cast<int>(MiniSeedEncoding::Steim2);
}

int64_t mostSteimSamples(const MiniSeedHeader &header)
{
    const int64_t perWord = header.encoding == static_cast<int>(MiniSeedEncoding::Steim1) ? 4 : 7;
    return header.dataLength / SteimFrameSize * SteimWordsPerFrame * perWord;
}

bool samplesFit(const MiniSeedHeader &header)
{
    if (isSteim(header.encoding))
        return header.sampleCount <= mostSteimSamples(header);
    return header.sampleCount <= header.dataLength / plainSampleSize(header.encoding);
}

StreamCodesCPtr codesFromFields(std::string_view fields)
{
    return StreamCodesCPtr(
        new StreamCodes(trimmedField(fields.substr(10, 2)), trimmedField(fields.substr(0, 5)),
                        trimmedField(fields.substr(5, 2)), trimmedField(fields.substr(7, 3))));
}

} // namespace

/** Steim decompression by libmseed, with an MSRecord and a sample buffer that are used again. */
class MiniSeedDecoder::Steim
{
public:
    Steim();
    ~Steim();

    Steim(const Steim &) = delete;
    Steim &operator=(const Steim &) = delete;

    /** Decoded samples, at most the header's count; null with a cause if there are none. */
    ArrayPtr decode(const MiniSeedHeader &header, std::string_view record, std::string &cause);

private:
    void setPayload(const MiniSeedHeader &header, std::string_view record);

    MSRecord *_record;
    fsdh_s _fixedHeader{};
    char _short[MINRECLEN]{};
};

MiniSeedDecoder::Steim::Steim() : _record(msr_init(nullptr))
{
    silenceLibmseed();
    _record->fsdh = &_fixedHeader;
}

MiniSeedDecoder::Steim::~Steim()
{
    _record->fsdh = nullptr;
    msr_free(&_record);
}

void MiniSeedDecoder::Steim::setPayload(const MiniSeedHeader &header, std::string_view record)
{
    const int64_t offset = std::min<int64_t>(header.dataOffset, UINT16_MAX);
    const char *payload = record.data() + header.dataOffset;
    if (offset >= LibmseedHeaderSize && offset + header.dataLength >= MINRECLEN) {
        _record->record = const_cast<char *>(payload - offset);
        _record->reclen = static_cast<int32_t>(offset + header.dataLength);
        _fixedHeader.data_offset = static_cast<uint16_t>(offset);
        return;
    }
    const int64_t start = MINRECLEN - header.dataLength;
    std::copy(payload, payload + header.dataLength, _short + start);
    _record->record = _short;
    _record->reclen = MINRECLEN;
    _fixedHeader.data_offset = static_cast<uint16_t>(start);
}

ArrayPtr MiniSeedDecoder::Steim::decode(const MiniSeedHeader &header, std::string_view record,
                                        std::string &cause)
{
    setPayload(header, record);
    _record->encoding = static_cast<int8_t>(header.encoding);
    _record->samplecnt = header.sampleCount;
    const bool swap = header.bigEndianData != (ms_bigendianhost() != 0);
    const int count = msr_unpack_data(_record, swap, 0);
    if (count <= 0) {
        cause = count == MS_STBADCOMPFLAG ? "compressed samples are damaged"
                                          : "compressed samples can't be unpacked";
        return ArrayPtr();
    }

    const int *samples = static_cast<const int *>(_record->datasamples);
    const int last = NumberReader(record, header.bigEndianData).at<int32_t>(header.dataOffset + 8);
    if (count < header.sampleCount)
        cause = "holds " + std::to_string(count) + " of " + std::to_string(header.sampleCount) +
                " samples";
    else if (samples[count - 1] != last)
        cause = "integrity check of the compressed samples failed: the last one is " +
                std::to_string(samples[count - 1]) + " and should be " + std::to_string(last);
    return ArrayPtr(new IntArray(count, samples));
}

MiniSeedDecoder::MiniSeedDecoder() = default;
MiniSeedDecoder::~MiniSeedDecoder() = default;

const StreamCodesCPtr &MiniSeedDecoder::codes(const MiniSeedHeader &header)
{
    // Damaged input may hold any number of streams.
    constexpr size_t MaxStreams = 100000;

    const auto known = _codes.find(std::string(header.identifier));
    if (known != _codes.end())
        return known->second;
    if (_codes.size() >= MaxStreams)
        _codes.clear();
    const std::string identifier(header.identifier);
    return _codes
        .emplace(identifier, header.version == 2 ? codesFromFields(identifier)
                                                 : codesFromSourceIdentifier(identifier))
        .first->second;
}

RecordPtr MiniSeedDecoder::decode(const MiniSeedHeader &header, std::string_view record,
                                  std::string &cause)
{
    cause.clear();
    const ArrayPtr samples = decodeSamples(header, record, cause);
    if (!samples)
        return RecordPtr();
    return RecordPtr(new Record(codes(header), header.startTime, header.samplingFrequency, samples,
                                header.timingQuality));
}

ArrayPtr MiniSeedDecoder::decodeSamples(const MiniSeedHeader &header, std::string_view record,
                                        std::string &cause)
{
    const bool supported = isSteim(header.encoding) || plainSampleSize(header.encoding) > 0;
    if (!supported) {
        cause = "unsupported encoding " + std::to_string(header.encoding);
        return ArrayPtr();
    }
    if (header.sampleCount <= 0) {
        cause = "record has no samples";
        return ArrayPtr();
    }
    if (header.dataOffset < 0 || header.dataLength < 0 ||
        header.dataOffset + header.dataLength > static_cast<int64_t>(record.size()) ||
        !samplesFit(header)) {
        cause = std::to_string(header.sampleCount) + " samples don't fit into " +
                std::to_string(header.dataLength) + " bytes of data";
        return ArrayPtr();
    }
    if (isSteim(header.encoding) && header.dataLength > MAXRECLEN - UINT16_MAX) {
        cause = "compressed data of " + std::to_string(header.dataLength) + " bytes are too long";
        return ArrayPtr();
    }

    const char *payload = record.data() + header.dataOffset;
    switch (static_cast<MiniSeedEncoding>(header.encoding)) {
    case MiniSeedEncoding::Text:
        return decodePlain<char>(payload, header.bigEndianData, header.sampleCount);
    case MiniSeedEncoding::Int16:
        return decodeShort(payload, header.bigEndianData, header.sampleCount);
    case MiniSeedEncoding::Int32:
        return decodePlain<int>(payload, header.bigEndianData, header.sampleCount);
    case MiniSeedEncoding::Float32:
        return decodePlain<float>(payload, header.bigEndianData, header.sampleCount);
    case MiniSeedEncoding::Float64:
        return decodePlain<double>(payload, header.bigEndianData, header.sampleCount);
    default:
        break;
    }
    if (!_steim)
        _steim = std::make_unique<Steim>();
    return _steim->decode(header, record, cause);
}

StreamCodesCPtr codesFromSourceIdentifier(const std::string &identifier)
{
    const size_t colon = identifier.find(':');
    const std::string scheme = colon == std::string::npos ? "" : identifier.substr(0, colon);
    const std::vector<std::string> parts =
        Core::split(identifier.substr(colon == std::string::npos ? 0 : colon + 1), "_", false);
    if ((scheme != "FDSN" && scheme != "XFDSN") || parts.size() != 6) {
        std::string station = identifier;
        std::replace(station.begin(), station.end(), '.', '_');
        return StreamCodesCPtr(new StreamCodes("", station, "", ""));
    }

    const bool singleCharacters = std::all_of(
        parts.begin() + 3, parts.end(), [](const std::string &part) { return part.size() <= 1; });
    const std::string separator = singleCharacters ? "" : "_";
    return StreamCodesCPtr(new StreamCodes(parts[0], parts[1], parts[2],
                                           parts[3] + separator + parts[4] + separator + parts[5]));
}

} // namespace Formats
} // namespace Tellarix
