// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/formats/miniseed.h>

#include <tellarix/core/records/formats/bytes_p.h>
#include <tellarix/core/records/formats/oldencodings_p.h>
#include <tellarix/core/records/formats/steim_p.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/records/typedarray.h>
#include <tellarix/core/strings.h>

#include <algorithm>
#include <vector>

namespace Tellarix {
namespace Formats {

namespace {

template <typename T>
Core::SmartPointer<TypedArray<T>> makeSamples(int64_t count, SampleMemory *memory)
{
    const int size = static_cast<int>(count);
    return memory ? new TypedArray<T>(size, *memory) : new TypedArray<T>(size);
}

template <typename T>
ArrayPtr decodePlain(const char *payload, bool bigEndian, int64_t count, SampleMemory *memory)
{
    const auto samples = makeSamples<T>(count, memory);
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
int64_t sampleSize(int encoding)
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
        return oldSampleSize(encoding);
    }
}

bool isSteim(int encoding)
{
    return encoding == static_cast<int>(MiniSeedEncoding::Steim1) ||
           encoding == static_cast<int>(MiniSeedEncoding::Steim2);
}

SteimPayload steimPayload(const MiniSeedHeader &header, std::string_view record)
{
    SteimPayload payload;
    payload.data = record.data() + header.dataOffset;
    payload.size = static_cast<size_t>(header.dataLength);
    payload.version = header.encoding == static_cast<int>(MiniSeedEncoding::Steim1) ? 1 : 2;
    payload.bigEndian = header.bigEndianData;
    return payload;
}

bool samplesFit(const MiniSeedHeader &header, std::string_view record)
{
    if (isSteim(header.encoding))
        return header.sampleCount <= steimPayload(header, record).capacity();
    return header.sampleCount <= header.dataLength / sampleSize(header.encoding);
}

StreamCodesCPtr codesFromFields(std::string_view fields)
{
    return StreamCodesCPtr(
        new StreamCodes(trimmedField(fields.substr(10, 2)), trimmedField(fields.substr(0, 5)),
                        trimmedField(fields.substr(5, 2)), trimmedField(fields.substr(7, 3))));
}

std::string fewerSamples(int count, int wanted)
{
    return "record holds " + std::to_string(count) + " of " + std::to_string(wanted) + " samples";
}

ArrayPtr decodeOld(const MiniSeedHeader &header, std::string_view record, std::string &cause)
{
    const std::string_view payload = record.substr(static_cast<size_t>(header.dataOffset));
    const int wanted = static_cast<int>(header.sampleCount);
    const ArrayPtr samples =
        decodeOldSamples(header.encoding, payload, header.bigEndianData, wanted);
    if (!samples)
        cause = "gain-ranged samples are damaged";
    else if (samples->size() < wanted)
        cause = fewerSamples(samples->size(), wanted);
    return samples;
}

ArrayPtr decodeCompressed(const MiniSeedHeader &header, std::string_view record, std::string &cause,
                          SampleMemory *memory)
{
    const SteimPayload payload = steimPayload(header, record);
    const int wanted = static_cast<int>(header.sampleCount);
    const auto samples = makeSamples<int>(wanted, memory);
    const int count = static_cast<int>(decodeSteim(payload, wanted, samples->typedData()));
    if (count == 0) {
        cause = "compressed samples are damaged";
        return ArrayPtr();
    }
    if (count < wanted) {
        cause = fewerSamples(count, wanted);
        samples->resize(count);
        return samples;
    }

    const int last = (*samples)[count - 1];
    const int expected = steimLastSample(payload);
    if (last != expected)
        cause = "integrity check of the compressed samples failed: the last one is " +
                std::to_string(last) + " and should be " + std::to_string(expected);
    return samples;
}

ArrayPtr decodeSamples(const MiniSeedHeader &header, std::string_view record, std::string &cause,
                       SampleMemory *memory)
{
    const bool supported = isSteim(header.encoding) || sampleSize(header.encoding) > 0;
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
        !samplesFit(header, record)) {
        cause = std::to_string(header.sampleCount) + " samples don't fit into " +
                std::to_string(header.dataLength) + " bytes of data";
        return ArrayPtr();
    }
    const char *payload = record.data() + header.dataOffset;
    switch (static_cast<MiniSeedEncoding>(header.encoding)) {
    case MiniSeedEncoding::Text:
        return decodePlain<char>(payload, header.bigEndianData, header.sampleCount, memory);
    case MiniSeedEncoding::Int16:
        return decodeShort(payload, header.bigEndianData, header.sampleCount);
    case MiniSeedEncoding::Int32:
        return decodePlain<int>(payload, header.bigEndianData, header.sampleCount, memory);
    case MiniSeedEncoding::Float32:
        return decodePlain<float>(payload, header.bigEndianData, header.sampleCount, memory);
    case MiniSeedEncoding::Float64:
        return decodePlain<double>(payload, header.bigEndianData, header.sampleCount, memory);
    case MiniSeedEncoding::Steim1:
    case MiniSeedEncoding::Steim2:
        return decodeCompressed(header, record, cause, memory);
    default:
        return decodeOld(header, record, cause);
    }
}

} // namespace

const MiniSeedDecoder::Stream &MiniSeedDecoder::stream(const MiniSeedHeader &header)
{
    // Neighbouring records are often of one stream.
    if (_last.codes && header.identifier == _lastIdentifier)
        return _last;

    // Damaged input may hold any number of streams.
    constexpr size_t MaxStreams = 100000;
    if (_streams.size() >= MaxStreams)
        _streams.clear();
    _lastIdentifier = header.identifier;
    Stream &stream = _streams[_lastIdentifier];
    if (!stream.codes) {
        stream.codes = header.version == 2 ? codesFromFields(_lastIdentifier)
                                           : codesFromSourceIdentifier(_lastIdentifier);
        stream.memory = new SampleMemory;
    }
    _last = stream;
    return _last;
}

RecordPtr MiniSeedDecoder::decode(const MiniSeedHeader &header, std::string_view record,
                                  std::string &cause)
{
    return decodeMiniSeed(header, record, codes(header), cause);
}

RecordPtr decodeMiniSeed(const MiniSeedHeader &header, std::string_view record,
                         const StreamCodesCPtr &codes, std::string &cause, SampleMemory *memory)
{
    cause.clear();
    const ArrayPtr samples = decodeSamples(header, record, cause, memory);
    if (!samples)
        return RecordPtr();
    return RecordPtr(new Record(codes, header.startTime, header.samplingFrequency, samples,
                                header.timingQuality));
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
