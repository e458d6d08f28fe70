// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/samplememory.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <new>
#include <vector>

#include <sys/mman.h>

// The sanitizer of addresses is told what of a chunk is in use; for others this is nothing.
#if __has_include(<sanitizer/asan_interface.h>)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(begin, size) ((void)(begin), (void)(size))
#define ASAN_UNPOISON_MEMORY_REGION(begin, size) ((void)(begin), (void)(size))
#endif

namespace Tellarix {
namespace {

constexpr size_t LargePage = 2 << 20;
constexpr size_t SmallestChunk = 64 << 10;
// Larger ones come straight from the system, and go straight back to it: in the heap they would
// leave holes that nothing else fills.
constexpr size_t LargestInHeap = SmallestChunk;
// At most a third of what is there is not in use yet.
constexpr size_t Growth = 2;
// Neighbouring arrays share no line of the cache.
constexpr size_t Alignment = 64;

size_t roundedUp(size_t size, size_t unit)
{
    return (size + unit - 1) / unit * unit;
}

/** The chunk that follows @p total bytes of others: a power of two, up to a large page. */
size_t nextChunkSize(size_t total)
{
    size_t size = SmallestChunk;
    while (size < LargePage && size * 2 * Growth <= total)
        size *= 2;
    return size;
}

/** Chunks above the largest in the heap. Some that were given back wait for the next to ask: to
 *  clear memory again and again costs more than to decode what goes there. */
class ChunkStore
{
public:
    /** Null if there is no memory. */
    void *take(size_t size)
    {
        std::unique_lock<std::mutex> lock(_mutex);
        std::vector<void *> &spare = spareOf(size);
        if (spare.empty()) {
            lock.unlock();
            return size == LargePage ? mapLargePage() : map(size);
        }
        void *chunk = spare.back();
        spare.pop_back();
        _spareBytes -= size;
        ASAN_UNPOISON_MEMORY_REGION(chunk, size);
        return chunk;
    }

    void giveBack(void *chunk, size_t size) noexcept
    {
        if (!keep(chunk, size))
            ::munmap(chunk, size);
    }

    void returnSpare()
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        for (size_t size = LargePage; size > LargestInHeap; size /= 2) {
            for (void *chunk : spareOf(size)) {
                ASAN_UNPOISON_MEMORY_REGION(chunk, size);
                ::munmap(chunk, size);
            }
            spareOf(size).clear();
        }
        _spareBytes = 0;
    }

private:
    static constexpr size_t MostSpareBytes = 256 << 20;

    /** False if there is enough, or no memory to note it. */
    bool keep(void *chunk, size_t size) noexcept
    try {
        const std::lock_guard<std::mutex> lock(_mutex);
        if (_spareBytes + size > MostSpareBytes)
            return false;
        spareOf(size).push_back(chunk);
        _spareBytes += size;
        ASAN_POISON_MEMORY_REGION(chunk, size);
        return true;
    } catch (const std::bad_alloc &) {
        return false;
    }

    static void *map(size_t size)
    {
        void *chunk =
            ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        return chunk == MAP_FAILED ? nullptr : chunk;
    }

    /** Without large pages in the system it consists of small ones, which cost more to get. */
    static void *mapLargePage()
    {
        char *begin = static_cast<char *>(map(2 * LargePage));
        if (!begin)
            return nullptr;
        const size_t before = LargePage - reinterpret_cast<uintptr_t>(begin) % LargePage;
        ::munmap(begin, before);
        if (before < LargePage)
            ::munmap(begin + before + LargePage, LargePage - before);
#ifdef MADV_HUGEPAGE
        ::madvise(begin + before, LargePage, MADV_HUGEPAGE);
#endif
        return begin + before;
    }

    std::vector<void *> &spareOf(size_t size)
    {
        return _spare[size];
    }

    std::mutex _mutex;
    std::map<size_t, std::vector<void *>> _spare; /**< by size */
    size_t _spareBytes{0};
};

/** Never destroyed: samples may be freed at the very end. */
ChunkStore &chunkStore()
{
    static ChunkStore &store = *new ChunkStore;
    return store;
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
    void *memory =
        size > LargestInHeap ? chunkStore().take(size) : std::aligned_alloc(Alignment, size);
    if (!memory)
        throw std::bad_alloc();
    return new (memory) Chunk(size);
}

void SampleBlock::release(Chunk *chunk)
{
    if (chunk->owners.fetch_sub(1, std::memory_order_acq_rel) > 1)
        return;
    const size_t size = chunk->size;
    chunk->~Chunk();
    ASAN_UNPOISON_MEMORY_REGION(chunk, size);
    if (size > LargestInHeap)
        chunkStore().giveBack(chunk, size);
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
    chunkStore().returnSpare();
}

SampleBlock SampleMemory::allocate(size_t bytes)
{
    if (bytes == 0)
        return {};
    const size_t size = roundedUp(bytes, Alignment);
    const std::lock_guard<std::mutex> lock(_mutex);
    if (!_chunk || _used + size > _size) {
        const size_t chunkSize = nextChunkSize(_total);
        if (size > chunkSize / 4)
            return SampleBlock(bytes);
        SampleBlock::Chunk *chunk = SampleBlock::makeChunk(chunkSize);
        if (_chunk)
            SampleBlock::release(_chunk);
        _chunk = chunk;
        _size = chunkSize;
        _used = roundedUp(sizeof(SampleBlock::Chunk), Alignment);
        ASAN_POISON_MEMORY_REGION(reinterpret_cast<char *>(_chunk) + _used, _size - _used);
        _total += chunkSize;
    }
    char *data = reinterpret_cast<char *>(_chunk) + _used;
    _used += size;
    ASAN_UNPOISON_MEMORY_REGION(data, bytes);
    _chunk->owners.fetch_add(1, std::memory_order_relaxed);
    return {data, _chunk};
}

} // namespace Tellarix
