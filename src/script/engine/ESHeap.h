// Where the objects of one context and the memory of their properties come from. Objects lie in blocks of one
// kind each; small rows of slots come from lists by their size; what is larger is allocated by itself. All of
// it goes back together, when the heap goes.
#pragma once

#include "script/engine/ESClass.h"
#include "script/engine/ESCollector.h"
#include "script/engine/ESObject.h"
#include "script/engine/limits.h"

#include <cstddef>
#include <vector>

// One link of the scope chain.
struct ESScope {
    ESScope* next = nullptr;
    ESObject* object = nullptr; // null in a link that is free
    bool captured = false;      // a function was made in it, or a script saw its object
};

struct ESActivationObject : ESObject {
    ESScope scope; // the link that leads to this object
};

class ESHeap {
public:
    static constexpr int SlotClasses = 13;

    ESHeap();
    ~ESHeap();
    ESHeap(const ESHeap&) = delete;
    ESHeap& operator=(const ESHeap&) = delete;

    // The heap of an object.
    static ESHeap& of(const ESObject* object) { return *blockOf(object)->heap; }

    ESObject* make(ESObject::Kind kind, ESObject* prototype, ESClass* cls)
    {
        Pool& pool = m_pools[kind];
        void* memory = pool.free;
        if (memory)
            pool.free = *static_cast<void**>(memory);
        else
            memory = carve(kind);
        return construct(memory, kind, prototype, cls);
    }
    ESScope* makeScope(ESScope* next, ESObject* object);
    // Takes a link, and the activation that it lies in, back; nothing leads to it any more.
    void freeScope(ESScope* scope);

    // Marks an object that can be given back; false when it has its mark already.
    static bool mark(const ESObject* object);
    // Marks what the objects that stay lead to.
    void markValues(ESMarker& marker);
    // Gives the objects back that have no mark, and takes the marks off.
    void sweep();
    // Memory that the heap has taken, and may take together with the strings.
    size_t bytes() const { return m_bytes; }
    void setLimit(size_t bytes) { m_limit = bytes; }

    // What plain objects are made of, for those that functions are given as `prototype`.
    void setPlain(ESObject* prototype, ESClass* cls)
    {
        m_plainPrototype = prototype;
        m_plainClass = cls;
    }
    // Gives a function object its `length` and `prototype`.
    void finishFunction(ESFunctionObject* function);

    // Memory that counts. Throws std::bad_alloc, and ESFatalError "out of memory" beyond the limit.
    void* allocate(size_t bytes);
    void* reallocate(void* memory, size_t old, size_t bytes);
    void free(void* memory, size_t bytes);
    ESProperty* allocateSlots(int sizeClass, uint32_t slots)
    {
        ESProperty* row = m_freeSlots[sizeClass];
        if (!row)
            return carveSlots(slots);
        m_freeSlots[sizeClass] = *reinterpret_cast<ESProperty**>(row);
        return row;
    }
    void freeSlots(ESProperty* row, int sizeClass)
    {
        if (!sizeClass)
            return;
        *reinterpret_cast<ESProperty**>(row) = m_freeSlots[sizeClass];
        m_freeSlots[sizeClass] = row;
    }

private:
    static constexpr size_t BlockBytes = 32768;
    struct Block {
        ESHeap* heap;
        uint32_t cellBytes;
        uint32_t used; // cells that were ever given out
        uint64_t marks[(BlockBytes / sizeof(ESBoxed) + 63) / 64];
        char* cell(uint32_t n) { return reinterpret_cast<char*>(this) + HeaderBytes + size_t(n) * cellBytes; }
        static constexpr size_t HeaderBytes = 128;
    };
    struct Pool {
        void* free = nullptr;
        std::vector<Block*> blocks;
    };
    static Block* blockOf(const ESObject* object)
    {
        return reinterpret_cast<Block*>(reinterpret_cast<uintptr_t>(object) & ~uintptr_t(BlockBytes - 1));
    }
    void giveBack(ESObject* object);
    void charge(size_t bytes);
    void* carve(ESObject::Kind kind);
    ESProperty* carveSlots(uint32_t slots);
    static ESObject* construct(void* memory, ESObject::Kind kind, ESObject* prototype, ESClass* cls);

    Pool m_pools[ESObject::KindCount];
    ESProperty* m_freeSlots[SlotClasses] = {};
    std::vector<void*> m_slotBlocks;
    char* m_slotNext = nullptr;
    char* m_slotEnd = nullptr;
    std::vector<ESScope*> m_scopeBlocks;
    ESScope* m_freeScopes = nullptr;
    ESObject* m_plainPrototype = nullptr;
    ESClass* m_plainClass = nullptr;
    size_t m_bytes = 0;
    size_t m_limit = ESLimits::MemoryBytes;
};
