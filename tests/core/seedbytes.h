// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QByteArray>
#include <QtEndian>

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

inline std::string_view view(const QByteArray &bytes)
{
    return std::string_view(bytes.constData(), static_cast<size_t>(bytes.size()));
}

/** Puts numbers of one byte order into bytes. */
class BytesWriter
{
public:
    BytesWriter(int size, bool bigEndian) : _bytes(size, '\0'), _bigEndian(bigEndian) {}

    template <typename T>
    void put(int offset, T value)
    {
        if (_bigEndian)
            qToBigEndian<T>(&value, 1, _bytes.data() + offset);
        else
            qToLittleEndian<T>(&value, 1, _bytes.data() + offset);
    }

    void putText(int offset, const QByteArray &text) { _bytes.replace(offset, text.size(), text); }

    const QByteArray &bytes() const { return _bytes; }

private:
    QByteArray _bytes;
    bool _bigEndian;
};

/** @p bytes with a little-endian number at @p offset. */
template <typename T>
QByteArray changed(QByteArray bytes, int offset, T value)
{
    qToLittleEndian<T>(&value, 1, bytes.data() + offset);
    return bytes;
}

/** A miniSEED 2 record of 256 bytes with 32-bit integers, built field by field. */
struct Seed2
{
    bool bigEndian{true};
    char quality{'D'};
    QByteArray codes{"ABC  00HHZXX"}; /**< station, location, channel, network */
    int year{2024};
    int day{60};
    int hour{12};
    int second{30};
    int fraction{0};
    int factor{20};
    int multiplier{1};
    int activity{0};
    int correction{0};
    int encoding{3};
    int lengthExponent{8};
    bool has1000{true};
    int dataOffset{128};
    int firstBlockette{48};
    std::optional<int> sampleCount;
    std::optional<int> usecs;
    int timingQuality{100};
    std::optional<float> actualRate;
    std::vector<int> samples{1, 2, 3};

    QByteArray bytes() const
    {
        BytesWriter record(256, bigEndian);
        record.putText(0, "000001");
        record.putText(6, QByteArray(1, quality) + ' ');
        record.putText(8, codes);
        record.put<uint16_t>(20, year);
        record.put<uint16_t>(22, day);
        record.put<uint8_t>(24, hour);
        record.put<uint8_t>(26, second);
        record.put<uint16_t>(28, fraction);
        record.put<uint16_t>(30, sampleCount.value_or(static_cast<int>(samples.size())));
        record.put<int16_t>(32, factor);
        record.put<int16_t>(34, multiplier);
        record.put<uint8_t>(36, activity);
        record.put<uint8_t>(39, int(has1000) + usecs.has_value() + actualRate.has_value());
        record.put<int32_t>(40, correction);
        record.put<uint16_t>(44, dataOffset);
        putBlockettes(record);
        for (size_t i = 0; i < samples.size(); ++i)
            record.put<int32_t>(128 + 4 * static_cast<int>(i), samples[i]);
        return record.bytes();
    }

private:
    void putBlockettes(BytesWriter &record) const
    {
        const int at1001 = usecs ? 56 : 0;
        const int at100 = actualRate ? 64 : 0;
        if (has1000) {
            record.put<uint16_t>(46, firstBlockette);
            record.put<uint16_t>(48, 1000);
            record.put<uint16_t>(50, at1001 ? at1001 : at100);
            record.put<uint8_t>(52, encoding);
            record.put<uint8_t>(53, bigEndian);
            record.put<uint8_t>(54, lengthExponent);
        }
        if (usecs) {
            record.put<uint16_t>(56, 1001);
            record.put<uint16_t>(58, at100);
            record.put<uint8_t>(60, timingQuality);
            record.put<int8_t>(61, *usecs);
        }
        if (actualRate) {
            record.put<uint16_t>(64, 100);
            record.put<float>(68, *actualRate);
        }
    }
};

/** CRC-32C bit by bit. */
inline uint32_t slowCrc32c(const QByteArray &bytes)
{
    uint32_t crc = 0xFFFFFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<uint8_t>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (crc & 1 ? 0x82F63B78u : 0u);
    }
    return ~crc;
}

/** A miniSEED 3 record, built field by field. */
struct Seed3
{
    uint32_t nanoseconds{0};
    int encoding{3};
    double rate{20};
    uint32_t sampleCount{3};
    QByteArray identifier{"FDSN:XX_ABC_00_H_H_Z"};
    QByteArray extra;
    QByteArray payload{QByteArray::fromHex("010000000200000003000000")};

    QByteArray bytes() const
    {
        BytesWriter header(40, false);
        header.putText(0, "MS\3");
        header.put<uint32_t>(4, nanoseconds);
        header.put<uint16_t>(8, 2024);
        header.put<uint16_t>(10, 60);
        header.put<uint8_t>(12, 12);
        header.put<uint8_t>(14, 30);
        header.put<uint8_t>(15, encoding);
        header.put<double>(16, rate);
        header.put<uint32_t>(24, sampleCount);
        header.put<uint8_t>(33, identifier.size());
        header.put<uint16_t>(34, extra.size());
        header.put<uint32_t>(36, payload.size());
        const uint32_t crc = slowCrc32c(header.bytes() + identifier + extra + payload);
        header.put<uint32_t>(28, crc);
        return header.bytes() + identifier + extra + payload;
    }
};

/** Version 3 headers of 40 bytes that all claim what follows, up to @p behind bytes behind the last
 *  one, and whose check sums are wrong. */
inline QByteArray greedyHeaders(int count, int behind = 0)
{
    Seed3 empty;
    empty.identifier.clear();
    empty.payload.clear();
    const QByteArray header = changed<uint32_t>(empty.bytes(), 28, 1);
    QByteArray bytes;
    for (int i = count - 1; i >= 0; --i)
        bytes += changed<uint32_t>(header, 36, static_cast<uint32_t>(40 * i + behind));
    return bytes;
}
