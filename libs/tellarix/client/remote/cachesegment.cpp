// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/cachesegment_p.h>

#include <tellarix/core/records/formats/checksumindex.h>
#include <tellarix/core/records/typedarray.h>

#include <QDataStream>
#include <QIODevice>

namespace Tellarix {
namespace IO {

namespace {

constexpr quint32 Magic = 0x54525331; // TRS1
constexpr qint64 FrameSize = 5 * sizeof(quint32);

/** Sizes and check sums in front of a segment. */
struct Frame
{
    quint32 magic{Magic};
    quint32 headerSize{0};
    quint32 recordsSize{0};
    quint32 headerChecksum{0};
    quint32 recordsChecksum{0};
};

quint32 checksumOf(const QByteArray &bytes)
{
    return ~Formats::addToChecksum(Formats::ChecksumStart,
                                   {bytes.constData(), static_cast<size_t>(bytes.size())});
}

/** Of the sizes as well, so that a damaged one is found before it is believed. */
quint32 headerChecksum(const Frame &frame, const QByteArray &header)
{
    QByteArray bytes;
    QDataStream(&bytes, QIODevice::WriteOnly)
        << frame.headerSize << frame.recordsSize << frame.recordsChecksum;
    return checksumOf(bytes + header);
}

QDataStream &operator<<(QDataStream &stream, Core::Time time)
{
    return stream << static_cast<qint64>(time.usecs());
}

QDataStream &operator>>(QDataStream &stream, Core::Time &time)
{
    qint64 usecs = 0;
    stream >> usecs;
    time = Core::Time::FromUSecs(usecs);
    return stream;
}

QByteArray headerOf(const CacheSegment &segment)
{
    QByteArray header;
    QDataStream stream(&header, QIODevice::WriteOnly);
    stream << segment.asked << static_cast<quint32>(segment.stretches.size());
    for (const AskedTime &stretch : segment.stretches)
        stream << stretch.window.startTime() << stretch.window.endTime() << stretch.isEmpty;
    for (const std::string &id : segment.streams)
        stream << QByteArray::fromStdString(id);
    return header;
}

bool readHeader(const QByteArray &header, CacheSegment &segment)
{
    QDataStream stream(header);
    quint32 count = 0;
    stream >> segment.asked >> count;
    for (; count > 0 && stream.status() == QDataStream::Ok; --count) {
        Core::Time start;
        Core::Time end;
        AskedTime stretch;
        stream >> start >> end >> stretch.isEmpty;
        stretch.window.set(start, end);
        segment.stretches.push_back(stretch);
    }
    while (!stream.atEnd() && stream.status() == QDataStream::Ok) {
        QByteArray id;
        stream >> id;
        segment.streams.push_back(id.toStdString());
    }
    return stream.status() == QDataStream::Ok;
}

/** Differences of neighbours, 7 bits a byte, small ones of either sign in one byte. */
QByteArray packed(const NumericArray &samples)
{
    const int *sample = static_cast<const int *>(samples.data());
    QByteArray bytes;
    bytes.reserve(samples.size() * 2);
    quint32 previous = 0;
    for (int i = 0; i < samples.size(); ++i) {
        const auto value = static_cast<quint32>(sample[i]);
        const quint32 step = value - previous;
        quint32 code = (step << 1) ^ (step >> 31 ? ~0u : 0u);
        for (; code >= 0x80; code >>= 7)
            bytes.append(static_cast<char>(code | 0x80));
        bytes.append(static_cast<char>(code));
        previous = value;
    }
    return bytes;
}

ArrayPtr unpacked(const QByteArray &bytes, int count)
{
    // Each sample takes a byte at least.
    if (count < 0 || count > bytes.size())
        return nullptr;
    Core::SmartPointer<IntArray> array(new IntArray(count));
    const char *at = bytes.constData();
    const char *end = at + bytes.size();
    quint32 previous = 0;
    for (int i = 0; i < count; ++i) {
        quint32 code = 0;
        for (int shift = 0;; shift += 7) {
            if (at == end || shift > 28)
                return nullptr;
            const auto byte = static_cast<quint32>(static_cast<unsigned char>(*at++));
            code |= (byte & 0x7F) << shift;
            if (byte < 0x80)
                break;
        }
        previous += (code >> 1) ^ (code & 1 ? ~0u : 0u);
        array->typedData()[i] = static_cast<int>(previous);
    }
    return array;
}

template <typename T>
ArrayPtr arrayOf(const QByteArray &bytes, int count)
{
    if (count < 0 || bytes.size() != count * static_cast<qint64>(sizeof(T)))
        return nullptr;
    return new TypedArray<T>(count, reinterpret_cast<const T *>(bytes.constData()));
}

ArrayPtr samplesOf(DataType type, const QByteArray &bytes, int count)
{
    switch (type) {
    case DataType::Char:
        return arrayOf<char>(bytes, count);
    case DataType::Int:
        return unpacked(bytes, count);
    case DataType::Float:
        return arrayOf<float>(bytes, count);
    case DataType::Double:
        return arrayOf<double>(bytes, count);
    }
    return nullptr;
}

} // namespace

void CacheSegment::appendRecord(const Record &record)
{
    QByteArray samples;
    if (record.data() && record.dataType() == DataType::Int)
        samples = packed(*record.data());
    else if (record.data())
        samples = QByteArray(static_cast<const char *>(record.data()->data()),
                             record.sampleCount() * record.data()->elementSize());

    QDataStream stream(&records, QIODevice::WriteOnly | QIODevice::Append);
    stream << record.startTime() << record.samplingFrequency() << qint32(record.timingQuality())
           << quint8(record.dataType()) << qint32(record.sampleCount()) << samples;
}

bool CacheSegment::readRecords(const StreamCodesCPtr &codes, std::vector<RecordPtr> &result) const
{
    QDataStream stream(records);
    while (!stream.atEnd()) {
        Core::Time start;
        double samplingFrequency = 0;
        qint32 timingQuality = -1;
        quint8 type = 0;
        qint32 count = 0;
        QByteArray bytes;
        stream >> start >> samplingFrequency >> timingQuality >> type >> count >> bytes;
        const ArrayPtr samples = samplesOf(static_cast<DataType>(type), bytes, count);
        if (stream.status() != QDataStream::Ok || !samples)
            return false;
        result.emplace_back(new Record(codes, start, samplingFrequency, samples, timingQuality));
    }
    return true;
}

QByteArray CacheSegment::bytes() const
{
    const QByteArray header = headerOf(*this);
    Frame frame;
    frame.headerSize = static_cast<quint32>(header.size());
    frame.recordsSize = static_cast<quint32>(records.size());
    frame.recordsChecksum = checksumOf(records);
    frame.headerChecksum = headerChecksum(frame, header);

    QByteArray bytes;
    QDataStream(&bytes, QIODevice::WriteOnly)
        << frame.magic << frame.headerSize << frame.recordsSize << frame.headerChecksum
        << frame.recordsChecksum;
    return bytes + header + records;
}

CacheReading readCacheSegment(QIODevice &file, bool withRecords, CacheSegment &segment)
{
    const qint64 start = file.pos();
    const auto stop = [&](CacheReading result) {
        file.seek(start);
        return result;
    };

    const QByteArray frameBytes = file.read(FrameSize);
    if (frameBytes.size() < FrameSize)
        return stop(CacheReading::End);
    Frame frame;
    QDataStream(frameBytes) >> frame.magic >> frame.headerSize >> frame.recordsSize >>
        frame.headerChecksum >> frame.recordsChecksum;
    if (frame.magic != Magic)
        return stop(CacheReading::Damaged);
    const qint64 end = start + FrameSize + frame.headerSize + frame.recordsSize;
    const bool isCutOff = end > file.size();
    if (isCutOff && start + FrameSize + frame.headerSize > file.size())
        return stop(CacheReading::End);

    const QByteArray header = file.read(frame.headerSize);
    segment = CacheSegment();
    if (headerChecksum(frame, header) != frame.headerChecksum || !readHeader(header, segment))
        return stop(CacheReading::Damaged);
    if (isCutOff)
        return stop(CacheReading::End);
    if (!withRecords) {
        file.seek(end);
        return CacheReading::Segment;
    }
    segment.records = file.read(frame.recordsSize);
    return checksumOf(segment.records) == frame.recordsChecksum ? CacheReading::Segment
                                                                : stop(CacheReading::Damaged);
}

} // namespace IO
} // namespace Tellarix
