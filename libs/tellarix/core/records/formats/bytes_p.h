// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QtEndian>

#include <cmath>
#include <cstring>
#include <string>
#include <string_view>

namespace Tellarix {
namespace Formats {

/** Reads numbers of one byte order out of memory that need not be aligned. */
class NumberReader
{
public:
    NumberReader(std::string_view bytes, bool bigEndian) : _bytes(bytes), _bigEndian(bigEndian) {}

    /** The number at byte @p offset; all of it has to lie within the bytes. */
    template <typename T>
    T at(size_t offset) const
    {
        Q_ASSERT(offset + sizeof(T) <= _bytes.size());
        using Bits = typename QIntegerForSizeof<T>::Unsigned;
        const char *source = _bytes.data() + offset;
        const Bits bits =
            _bigEndian ? qFromBigEndian<Bits>(source) : qFromLittleEndian<Bits>(source);
        T value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

    uint8_t byteAt(size_t offset) const { return static_cast<uint8_t>(_bytes[offset]); }

private:
    std::string_view _bytes;
    bool _bigEndian;
};

/** Turns @p count numbers of type T, of either byte order, into the byte order of the machine. */
template <typename T>
void copyNumbers(const char *source, bool bigEndian, size_t count, T *target)
{
    if (bigEndian)
        qFromBigEndian<T>(source, static_cast<qsizetype>(count), target);
    else
        qFromLittleEndian<T>(source, static_cast<qsizetype>(count), target);
}

/** The double of fewest decimal digits that is @p value in single precision: 0.05 for 0.05f. */
double shortestDouble(float value);

/** @p field up to a null byte, without blanks at both ends. */
std::string trimmedField(std::string_view field);

} // namespace Formats
} // namespace Tellarix
