// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/baseobject.h>

#include <cstddef>
#include <mutex>
#include <utility>

namespace Tellarix {

/** The memory of one array of samples, freed with its owner: its own, or a part of SampleMemory. */
class TELLARIX_CORE_API SampleBlock
{
public:
    SampleBlock() = default;
    /** Memory of its own, aligned for any sample; none for 0 bytes. Throws std::bad_alloc. */
    explicit SampleBlock(size_t bytes);
    SampleBlock(SampleBlock &&other) noexcept
        : _data(std::exchange(other._data, nullptr)), _chunk(std::exchange(other._chunk, nullptr))
    {}
    SampleBlock &operator=(SampleBlock &&other) noexcept
    {
        std::swap(_data, other._data);
        std::swap(_chunk, other._chunk);
        return *this;
    }
    ~SampleBlock();

    void *data() const { return _data; }

private:
    friend class SampleMemory;
    struct Chunk;

    SampleBlock(void *data, Chunk *chunk) : _data(data), _chunk(chunk) {}

    static Chunk *makeChunk(size_t size);
    static void release(Chunk *chunk);

    void *_data{nullptr};
    Chunk *_chunk{nullptr};
};

/**
 * Memory for the many arrays of one stream that come at once, from a file or out of a filter.
 *
 * The arrays lie one behind the other in chunks, which grow with what was asked for until the
 * system gives them as large pages. That costs a fraction of as many allocations, above all where
 * one thread makes the arrays and another one frees them. A chunk is freed with the last of its
 * arrays: records of one stream go together, or in the order of their times. Records of different
 * streams or of different fates should not share it, and those that trickle in for hours need none.
 *
 * Any number of threads may ask at once. Blocks may outlive it.
 */
class TELLARIX_CORE_API SampleMemory : public Core::BaseObject
{
public:
    SampleMemory() = default;
    SampleMemory(const SampleMemory &) = delete;
    SampleMemory &operator=(const SampleMemory &) = delete;
    ~SampleMemory() override;

    /** Memory for @p bytes, aligned for any sample; none for 0 bytes. Throws std::bad_alloc. */
    SampleBlock allocate(size_t bytes);

    /** Gives the system what is kept for the next to ask, at most 256 MB. */
    static void returnSpare();

private:
    std::mutex _mutex;
    SampleBlock::Chunk *_chunk{nullptr};
    size_t _size{0};  /**< of the chunk */
    size_t _used{0};  /**< of the chunk */
    size_t _total{0}; /**< bytes of all chunks up to now */
};

using SampleMemoryPtr = Core::SmartPointer<SampleMemory>;

} // namespace Tellarix
