#include "support/Pool.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <sys/mman.h>

namespace {

constexpr size_t ChunkSize = 8192;
// Chunks of ordinary size are cut from slabs. The first ones are small, since most pools are; large ones
// are filled with pages at once, which costs a large module far less than a fault for each page.
constexpr size_t SmallSlab = 256 * 1024;
constexpr size_t LargeSlab = 1024 * 1024;
constexpr size_t LargeSlabsFrom = 1024 * 1024; // bytes taken so far

void* newSlab(size_t size)
{
    if (size <= SmallSlab)
        return malloc(size);
    void* slab = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (slab == MAP_FAILED)
        return nullptr;
    madvise(slab, size, MADV_POPULATE_WRITE); // mere advice: without it all works the same
    return slab;
}

// Chunks are never given back to the system, so a slab needs no record of its own.
void* cutFromSlab(size_t size)
{
    static char* slab = nullptr;
    static size_t left = 0;
    static size_t taken = 0;
    if (left < size) {
        left = taken < LargeSlabsFrom ? SmallSlab : LargeSlab;
        slab = static_cast<char*>(newSlab(left));
        if (!slab) {
            left = 0;
            return nullptr;
        }
        taken += left;
    }
    void* at = slab;
    slab += size;
    left -= size;
    return at;
}

} // namespace

Pool* Pool::s_currentPool = nullptr;
Pool::Chunk* Pool::s_releasedChunks = nullptr;

void* Pool::refuse()
{
    throw std::bad_alloc();
}

void* Pool::allocateFromNewChunk(size_t rounded)
{
    size_t wanted = rounded > ChunkSize ? rounded : ChunkSize;
    Chunk** link = &s_releasedChunks;
    while (*link && (*link)->size < wanted)
        link = &(*link)->next;
    Chunk* chunk = *link;
    if (chunk) {
        *link = chunk->next;
    } else {
        if (wanted > size_t(-1) - sizeof(Chunk))
            refuse();
        size_t size = sizeof(Chunk) + wanted;
        chunk = static_cast<Chunk*>(wanted == ChunkSize ? cutFromSlab(size) : newSlab(size));
        if (!chunk)
            refuse();
        chunk->size = wanted;
    }
    chunk->next = m_chunks;
    m_chunks = chunk;
    m_data = chunk->data();
    m_size = chunk->size;
    m_used = rounded;
    return m_data;
}

char* Pool::copyString(std::string_view text)
{
    char* copy = static_cast<char*>(allocate(text.size() + 1));
    if (!text.empty())
        memcpy(copy, text.data(), text.size());
    copy[text.size()] = 0;
    return copy;
}

void Pool::clear()
{
    while (Chunk* chunk = m_chunks) {
        m_chunks = chunk->next;
        memset(chunk->data(), 0xFE, chunk->size);
        chunk->next = s_releasedChunks;
        s_releasedChunks = chunk;
    }
    m_data = nullptr;
    m_used = 0;
    m_size = 0;
}

size_t Pool::capacity() const
{
    size_t sum = 0;
    for (Chunk* chunk = m_chunks; chunk; chunk = chunk->next)
        sum += chunk->size;
    return sum;
}

Pool* Pool::setCurrentPool(Pool* pool)
{
    Pool* previous = s_currentPool;
    s_currentPool = pool;
    return previous;
}

Pool* Pool::makeLastResort()
{
    static Pool* lastResort = new Pool;
    return s_currentPool = lastResort;
}
