#include "script/engine/ESHeap.h"

#include <utility>

void ESHeap::addChunk()
{
    m_chunks.push_back(std::make_unique<ESObject[]>(ESLimits::ObjectChunk));
    for (int i = ESLimits::ObjectChunk; i-- > 0;) {
        ESObject& object = m_chunks.back()[size_t(i)];
        object.nextFree = std::exchange(m_freeObjects, &object);
    }
}

ESClosure* ESHeap::closure(int formalCount)
{
    if (!m_closuresLeft) {
        m_closureChunks.push_back(std::make_unique<ESClosure[]>(ESLimits::ObjectChunk));
        m_closuresLeft = ESLimits::ObjectChunk;
    }
    ESClosure* closure = &m_closureChunks.back()[size_t(--m_closuresLeft)];
    closure->formalCount = formalCount;
    return closure;
}
