// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/samplememory.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <vector>

#include <sys/mman.h>

namespace Tellarix {
namespace {

constexpr size_t LargePage = 2 << 20;
constexpr size_t SmallestChunk = 64 << 10;
// From here on straight from the system, and straight back to it: in the heap they would leave
// holes that nothing else fills.
constexpr size_t LeastMapped = 128 << 10;
// At most a fifth of what is there is not in use yet.
constexpr size_t Growth = 4;
// Neighbouring arrays share no line of the cache.
constexpr size_t Alignment = 64;

size_t roundedUp(size_t size, size_t unit)
{
    return (size + unit - 1) / unit * unit;
}

/** Pages of LargePage bytes from the system. Some that were given back wait for the next to ask: to
 *  clear memory again and again costs more than to decode what goes there. */
class LargePages
{
public:
    /** Null if there is none. Without large pages in the system it consists of small ones, which
     *  cost more to get. */
    void *take()
    {
        std::unique_lock<std::mutex> lock(_mutex);
        if (_spare.empty()) {
            lock.unlock();
            return map();
        }
        void *page = _spare.back();
        _spare.pop_back();
        return page;
    }

    void giveBack(void *page)
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        if (_spare.size() < MostSpare)
            _spare.push_back(page);
        else
            ::munmap(page, LargePage);
    }

    void returnSpare()
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        for (void *page : _spare)
            ::munmap(page, LargePage);
        _spare.clear();
    }

private:
    static constexpr size_t MostSpare = 128;

    static void *map()
    {
        void *mapping = ::mmap(nullptr, 2 * LargePage, PROT_READ | PROT_WRITE,
                               MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapping == MAP_FAILED)
            return nullptr;
        char *begin = static_cast<char *>(mapping);
        const size_t before = LargePage - reinterpret_cast<uintptr_t>(begin) % LargePage;
        ::munmap(begin, before);
        if (before < LargePage)
            ::munmap(begin + before + LargePage, LargePage - before);
#ifdef MADV_HUGEPAGE
        ::madvise(begin + before, LargePage, MADV_HUGEPAGE);
#endif
        return begin + before;
    }

    std::mutex _mutex;
    std::vector<void *> _spare;
};

/** Never destroyed: samples may be freed at the very end. */
LargePages &largePages()
{
    static LargePages &pages = *new LargePages;
    return pages;
}

} // namespace

/** The begin of a chunk; its arrays follow. */
struct SampleBlock::Chunk
{
    explicit Chunk(size_t bytes) : size(bytes) {}

    size_t size;
    /** Arrays, and the memory that still fills the chunk. */
    std::atomic<int> owners{1};
};

SampleBlock::SampleBlock(size_t bytes) : _data(bytes > 0 ? ::operator new(bytes) : nullptr)
{}

SampleBlock::~SampleBlock()
{
    if (_chunk)
        release(_chunk);
    else
        ::operator delete(_data);
}

SampleBlock::Chunk *SampleBlock::makeChunk(size_t size)
{
    void *memory = size == LargePage     ? largePages().take()
                   : size >= LeastMapped ? ::mmap(nullptr, size, PROT_READ | PROT_WRITE,
                                                  MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)
                                         : std::malloc(size);
    if (!memory || memory == MAP_FAILED)
        throw std::bad_alloc();
    return new (memory) Chunk(size);
}

void SampleBlock::release(Chunk *chunk)
{
    if (chunk->owners.fetch_sub(1, std::memory_order_acq_rel) > 1)
        return;
    const size_t size = chunk->size;
    chunk->~Chunk();
    if (size == LargePage)
        largePages().giveBack(chunk);
    else if (size >= LeastMapped)
        ::munmap(chunk, size);
    else
        std::free(chunk);
}

SampleMemory::~SampleMemory()
{
    if (_chunk)
        SampleBlock::release(_chunk);
}

void SampleMemory::returnSpare()
{
    largePages().returnSpare();
}

SampleBlock SampleMemory::allocate(size_t bytes)
{
    if (bytes == 0)
        return {};
    const size_t size = roundedUp(bytes, Alignment);
    const std::lock_guard<std::mutex> lock(_mutex);
    if (!_chunk || _used + size > _size) {
        const size_t wanted = std::clamp(_total / Growth, SmallestChunk, LargePage);
        if (size > wanted / 4)
            return SampleBlock(bytes);
        const size_t chunkSize = roundedUp(wanted, Alignment);
        SampleBlock::Chunk *chunk = SampleBlock::makeChunk(chunkSize);
        if (_chunk)
            SampleBlock::release(_chunk);
        _chunk = chunk;
        _size = chunkSize;
        _used = roundedUp(sizeof(SampleBlock::Chunk), Alignment);
        _total += chunkSize;
    }
    char *data = reinterpret_cast<char *>(_chunk) + _used;
    _used += size;
    _chunk->owners.fetch_add(1, std::memory_order_relaxed);
    return {data, _chunk};
}

} // namespace Tellarix
