#pragma once

#include <utility>
#include <vector>

namespace Tellarix {

/**
 * A contiguous vector that also gives up elements at its front cheaply: they are released at once
 * and their places are reclaimed when half of the storage is unused.
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
    const_iterator begin() const { return _items.begin() + static_cast<std::ptrdiff_t>(_head); }
    const_iterator end() const { return _items.end(); }
    const T *data() const { return _items.data() + _head; }

    void append(T item) { _items.push_back(std::move(item)); }
    void insert(int index, T item)
    {
        _items.insert(_items.begin() + static_cast<std::ptrdiff_t>(_head) + index, std::move(item));
    }
    void erase(int index)
    {
        _items.erase(_items.begin() + static_cast<std::ptrdiff_t>(_head) + index);
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
            _items.erase(_items.begin(), _items.begin() + static_cast<std::ptrdiff_t>(_head));
            _head = 0;
        }
    }

    size_t memorySize() const { return _items.capacity() * sizeof(T); }

private:
    std::vector<T> _items;
    size_t _head{0};
};

} // namespace Tellarix
