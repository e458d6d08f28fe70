// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/formats/checksumindex.h>

#include <QtEndian>

#include <algorithm>
#include <array>

namespace Tellarix {
namespace Formats {

namespace {

constexpr uint32_t Polynomial = 0x82F63B78; // Castagnoli's; the highest bit is that of x^0
constexpr size_t Spacing = 64;
constexpr size_t Slices = 8;

using Table = std::array<uint32_t, 256>;

constexpr uint32_t timesX(uint32_t value)
{
    return (value >> 1) ^ (value & 1 ? Polynomial : 0);
}

/** Product of two polynomials, modulo that of the check sum. */
uint32_t multiply(uint32_t a, uint32_t b)
{
    uint32_t product = 0;
    for (; a != 0; a <<= 1) {
        if (a & 0x80000000)
            product ^= b;
        b = timesX(b);
    }
    return product;
}

/** Tables for eight bytes at a time: what a byte adds if so many others follow it. */
std::array<Table, Slices> makeByteTables()
{
    std::array<Table, Slices> tables{};
    for (uint32_t byte = 0; byte < 256; ++byte) {
        uint32_t sum = byte;
        for (size_t slice = 0; slice < Slices; ++slice) {
            for (int bit = 0; bit < 8; ++bit)
                sum = timesX(sum);
            tables[slice][byte] = sum;
        }
    }
    return tables;
}

/** Factors for as many spacings as each of the four bytes of a number says. */
std::array<Table, 4> makeSpacingTables()
{
    uint32_t step = 0x80000000;
    for (size_t bit = 0; bit < 8 * Spacing; ++bit)
        step = timesX(step);

    std::array<Table, 4> tables{};
    for (Table &table : tables) {
        table[0] = 0x80000000;
        for (size_t i = 1; i < table.size(); ++i)
            table[i] = multiply(table[i - 1], step);
        step = multiply(table.back(), step);
    }
    return tables;
}

/** The register behind @p count further spacings of zeros. */
uint32_t shifted(uint32_t checksum, uint32_t count)
{
    static const std::array<Table, 4> tables = makeSpacingTables();
    for (const Table &table : tables) {
        if (count & 0xFF)
            checksum = multiply(checksum, table[count & 0xFF]);
        count >>= 8;
    }
    return checksum;
}

} // namespace

uint32_t addToChecksum(uint32_t checksum, std::string_view bytes)
{
    static const std::array<Table, Slices> tables = makeByteTables();
    while (bytes.size() >= Slices) {
        const uint32_t low = checksum ^ qFromLittleEndian<uint32_t>(bytes.data());
        const uint32_t high = qFromLittleEndian<uint32_t>(bytes.data() + 4);
        checksum = tables[7][low & 0xFF] ^ tables[6][low >> 8 & 0xFF] ^
                   tables[5][low >> 16 & 0xFF] ^ tables[4][low >> 24] ^ tables[3][high & 0xFF] ^
                   tables[2][high >> 8 & 0xFF] ^ tables[1][high >> 16 & 0xFF] ^
                   tables[0][high >> 24];
        bytes.remove_prefix(Slices);
    }
    for (const char byte : bytes)
        checksum = (checksum >> 8) ^ tables[0][(checksum ^ static_cast<uint8_t>(byte)) & 0xFF];
    return checksum;
}

void ChecksumIndex::prepare(std::string_view bytes, int64_t offset)
{
    const auto covered = [this] {
        return _origin + static_cast<int64_t>((_sums.size() - 1) * Spacing);
    };
    if (_sums.empty() || offset < _origin || offset > covered()) {
        _origin = offset;
        _sums.assign(1, 0);
    }
    dropBefore(offset);

    size_t position = static_cast<size_t>(covered() - offset);
    for (; position + Spacing <= bytes.size(); position += Spacing)
        _sums.push_back(addToChecksum(_sums.back(), bytes.substr(position, Spacing)));
}

uint32_t ChecksumIndex::add(uint32_t checksum, std::string_view bytes, int64_t offset)
{
    prepare(bytes, offset);
    const size_t begin = static_cast<size_t>(offset - _origin);
    const size_t first = (begin + Spacing - 1) / Spacing;
    const size_t last = (begin + bytes.size()) / Spacing;
    if (first >= last)
        return addToChecksum(checksum, bytes);

    checksum = addToChecksum(checksum, bytes.substr(0, first * Spacing - begin));
    checksum = shifted(checksum ^ _sums[first], static_cast<uint32_t>(last - first)) ^ _sums[last];
    return addToChecksum(checksum, bytes.substr(last * Spacing - begin));
}

/** Keeps the sums from growing with a long run; in steps, so that each is moved but a few times. */
void ChecksumIndex::dropBefore(int64_t offset)
{
    const size_t count = static_cast<size_t>(offset - _origin) / Spacing;
    if (count < 1024 || count < _sums.size() / 2)
        return;
    _sums.erase(_sums.begin(), _sums.begin() + static_cast<std::ptrdiff_t>(count));
    _origin += static_cast<int64_t>(count * Spacing);
}

} // namespace Formats
} // namespace Tellarix
