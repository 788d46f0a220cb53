// Region allocation. Everything made from a Pool dies with it: nothing is freed one by one, and no
// destructor of a pool object runs. Released chunks are kept for the next pool.
#pragma once

#include <cstddef>
#include <string_view>

class Pool {
public:
    Pool() = default;
    ~Pool() { clear(); }
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;

    // `size` bytes, aligned to 8, uninitialised. Throws std::bad_alloc when memory is out.
    void* allocate(size_t size)
    {
        size_t rounded = (size + 7) & ~size_t(7);
        if (rounded < size)
            return refuse();
        if (m_size - m_used >= rounded) {
            void* at = m_data + m_used;
            m_used += rounded;
            return at;
        }
        return allocateFromNewChunk(rounded);
    }

    // A zero-terminated copy of a text.
    char* copyString(std::string_view text);

    // Hands all chunks back to the released list, each filled with the byte 0xFE so that a
    // pointer kept too long is soon noticed.
    void clear();

    // Bytes of all chunks that this pool holds.
    size_t capacity() const;

    // The pool from which pool objects are made, process-wide; may be null. Returns the earlier one.
    static Pool* setCurrentPool(Pool* pool);
    // The current pool; when none is set a fresh one is made, which lives as long as the process.
    static Pool* currentPool() { return s_currentPool ? s_currentPool : makeLastResort(); }

private:
    struct Chunk {
        Chunk* next;
        size_t size;
        char* data() { return reinterpret_cast<char*>(this + 1); }
    };
    void* allocateFromNewChunk(size_t rounded);
    [[noreturn]] static void* refuse();
    static Pool* makeLastResort();

    Chunk* m_chunks = nullptr; // newest first
    char* m_data = nullptr;    // data of the newest chunk
    size_t m_used = 0;
    size_t m_size = 0;

    static Pool* s_currentPool;
    static Chunk* s_releasedChunks;
};

// Makes a pool the current one for a scope; the earlier one comes back on every way out.
class CurrentPool {
public:
    explicit CurrentPool(Pool* pool) : m_previous(Pool::setCurrentPool(pool)) {}
    ~CurrentPool() { Pool::setCurrentPool(m_previous); }
    CurrentPool(const CurrentPool&) = delete;
    CurrentPool& operator=(const CurrentPool&) = delete;

private:
    Pool* m_previous;
};

// Base of everything that lives in the current pool. `delete` of one is a no-op.
class PoolObject {
public:
    static void* operator new(size_t size) { return Pool::currentPool()->allocate(size); }
    static void* operator new(size_t, void* at) { return at; }
    static void operator delete(void*) {}
    static void operator delete(void*, void*) {}
};
