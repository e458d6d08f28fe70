// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <limits>

namespace Norvu {
namespace Utils {

/**
 * A flat table of 1024 values over a range of keys, for tight loops that colour pixels: one
 * subtraction, one multiplication, one truncation and two comparisons a value.
 *
 * Keys outside of the range get the value at its end; a key that is no number, or so far above the
 * range that no int holds its index, gets the first one. A range of one key has an infinite scale
 * and gives the first entry for this key.
 *
 * The entries lie inside the object, some four kilobytes: make it a member, hand it on by pointer.
 * A table that was not filled yet has no defined keys and entries. Copies have entries of their
 * own.
 *
 * @tparam K  a floating point type
 * @tparam V  a value that can be assigned, such as a pixel (QRgb)
 */
template <typename K, typename V>
class LUT
{
public:
    static constexpr int Size = 1024;

    LUT() : _size(Size), _table(_storage) {}
    LUT(const LUT &other) : LUT() { *this = other; }
    LUT &operator=(const LUT &other)
    {
        _minKey = other._minKey;
        _maxKey = other._maxKey;
        _scale = other._scale;
        _size = other._size;
        for (int i = 0; i < Size; ++i)
            _storage[i] = other._storage[i];
        return *this;
    }

    /** The value of a key, without rounding to the nearest entry. */
    V at(K key) const
    {
        const int index = truncated(static_cast<double>((key - _minKey) * _scale));
        if (index < 0)
            return _table[0];
        return index < _size ? _table[index] : _table[_size - 1];
    }

    /** Fills the table with valueAt(key) at 1024 evenly spaced keys from @p minKey to @p maxKey. */
    template <typename Function>
    void fill(K minKey, K maxKey, Function valueAt)
    {
        _minKey = minKey;
        _maxKey = maxKey;
        _scale = (_size - 1) / (_maxKey - _minKey);
        for (int i = 0; i < Size; ++i)
            _table[i] = valueAt(i / _scale + _minKey);
    }

    /** Truncation toward zero; what no int can hold, not-a-number too, gives the lowest one. */
    static int truncated(double value)
    {
#ifdef __SSE2__
        // The instruction does so by itself, which spares two branches a pixel.
        return _mm_cvttsd_si32(_mm_set_sd(value));
#else
        return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int>(value)
                                                             : std::numeric_limits<int>::min();
#endif
    }

    K _minKey; /**< key of entry 0 */
    K _maxKey; /**< key of the last entry */
    K _scale;  /**< entries per key unit */
    int _size; /**< entries in use */
    V *_table; /**< first entry */

private:
    V _storage[Size];
};

} // namespace Utils
} // namespace Norvu
