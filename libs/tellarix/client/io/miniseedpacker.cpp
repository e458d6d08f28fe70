// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/miniseedpacker.h>

#include <tellarix/core/records/formats/miniseed.h>

namespace Tellarix {
namespace IO {

namespace {

constexpr int ShortestRecord = 512;
constexpr int LongestRecord = 4096;
constexpr int SmallestHeader = 64;

/** Bytes that the record takes at least: Steim2 puts up to seven samples into four bytes. */
double leastBytes(const Record &record)
{
    const double perSample =
        record.dataType() == DataType::Int ? 4.0 / 7 : record.data()->elementSize();
    return SmallestHeader + perSample * record.sampleCount();
}

} // namespace

MiniSeedPacker::MiniSeedPacker()
{
    _buffer.open(QIODevice::ReadWrite);
    for (int length = ShortestRecord; length <= LongestRecord; length *= 2)
        _writers.push_back(std::make_unique<Formats::MiniSeedWriter>(&_buffer, length));
}

MiniSeedPacker::~MiniSeedPacker() = default;

bool MiniSeedPacker::pack(const Record &record, std::vector<PackedRecord> *result)
{
    result->clear();
    int length = ShortestRecord;
    for (const auto &writer : _writers) {
        const bool isLast = length == LongestRecord;
        if (!isLast && record.data() && leastBytes(record) > length) {
            length *= 2;
            continue;
        }
        _buffer.buffer().clear();
        _buffer.seek(0);
        if (!writer->write(record)) {
            _errorString = writer->errorString();
            return false;
        }
        if (isLast || _buffer.buffer().size() == length)
            break;
        length *= 2;
    }
    const QByteArray &bytes = _buffer.buffer();
    for (int begin = 0; begin < bytes.size(); begin += length) {
        if (!append(bytes.mid(begin, length), record, result))
            return false;
    }
    return true;
}

bool MiniSeedPacker::append(const QByteArray &bytes, const Record &record,
                            std::vector<PackedRecord> *result)
{
    PackedRecord packed{bytes, record.startTime()};
    if (!result->empty()) {
        Formats::MiniSeedHeader header;
        const std::string_view view(bytes.constData(), static_cast<size_t>(bytes.size()));
        if (Formats::parseMiniSeedHeader(view, true, header) != Formats::Finding::Record) {
            _errorString = record.streamID() + ": samples can't be encoded as miniSEED";
            return false;
        }
        packed.startTime = header.startTime;
    }
    result->push_back(std::move(packed));
    return true;
}

} // namespace IO
} // namespace Tellarix
