// Where the objects and closures of one context come from. They are allocated in chunks and given back
// together, when the heap goes.
#pragma once

#include "script/engine/ESObject.h"

#include <memory>
#include <vector>

class ESHeap {
public:
    // A bare object: no class, no prototype, builtin id -1.
    ESObject* object()
    {
        if (!m_freeObjects) [[unlikely]]
            addChunk();
        ESObject* object = m_freeObjects;
        m_freeObjects = object->nextFree;
        object->nextFree = nullptr;
        return object;
    }
    ESClosure* closure(int formalCount);
    // Makes ESLimits::ObjectChunk objects more.
    void addChunk();

private:
    ESObject* m_freeObjects = nullptr;
    std::vector<std::unique_ptr<ESObject[]>> m_chunks;
    std::vector<std::unique_ptr<ESClosure[]>> m_closureChunks;
    int m_closuresLeft = 0;
};
