#include "support/Pool.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace {
constexpr size_t ChunkSize = 8192;
}

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
        chunk = static_cast<Chunk*>(malloc(sizeof(Chunk) + wanted));
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

Pool* Pool::currentPool()
{
    if (!s_currentPool) {
        static Pool* lastResort = new Pool;
        s_currentPool = lastResort;
    }
    return s_currentPool;
}
