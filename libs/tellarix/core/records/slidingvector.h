// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>
#include <vector>

namespace Tellarix {

/**
 * A contiguous vector that grows and shrinks cheaply at both ends.
 *
 * Elements at its front are given up by releasing them at once; their places are reclaimed when
 * half of the storage is unused. An insertion shifts the shorter side.
 */
template <typename T>
class SlidingVector
{
public:
    using const_iterator = typename std::vector<T>::const_iterator;

    bool isEmpty() const { return _head == _items.size(); }
    int size() const { return static_cast<int>(_items.size() - _head); }
    const T &operator[](int index) const { return _items[_head + static_cast<size_t>(index)]; }
    T &operator[](int index) { return _items[_head + static_cast<size_t>(index)]; }
    const_iterator begin() const { return _items.begin() + offset(0); }
    const_iterator end() const { return _items.end(); }
    const T *data() const { return _items.data() + _head; }

    void append(T item)
    {
        if (_items.size() == _items.capacity())
            _items.reserve(_items.size() + _items.size() / 2 + 8);
        _items.push_back(std::move(item));
    }
    /** True if an insertion at @p index shifts the elements before it instead of those behind. */
    bool shiftsFront(int index) const { return index < size() / 2; }
    void insert(int index, T item)
    {
        if (!shiftsFront(index)) {
            append(T{});
            std::move_backward(_items.begin() + offset(index), _items.end() - 1, _items.end());
        } else {
            if (_head == 0)
                makeRoomAtFront();
            --_head;
            std::move(_items.begin() + offset(1), _items.begin() + offset(index + 1),
                      _items.begin() + offset(0));
        }
        (*this)[index] = std::move(item);
    }
    void resize(int size) { _items.resize(_head + static_cast<size_t>(size)); }
    void clear()
    {
        _items.clear();
        _head = 0;
    }

    void removeFront(int count)
    {
        const size_t head = _head + static_cast<size_t>(count);
        for (size_t i = _head; i < head; ++i)
            _items[i] = T{};
        _head = head;
        if (2 * _head >= _items.size()) {
            _items.erase(_items.begin(), _items.begin() + offset(0));
            _head = 0;
        }
    }

    size_t memorySize() const { return _items.capacity() * sizeof(T); }

private:
    std::ptrdiff_t offset(int index) const { return static_cast<std::ptrdiff_t>(_head) + index; }

    void makeRoomAtFront()
    {
        const size_t room = _items.size() / 2 + 8;
        std::vector<T> grown;
        grown.reserve(_items.size() + room);
        grown.resize(room);
        std::move(_items.begin(), _items.end(), std::back_inserter(grown));
        _items.swap(grown);
        _head = room;
    }

    std::vector<T> _items;
    size_t _head{0};
};

} // namespace Tellarix
