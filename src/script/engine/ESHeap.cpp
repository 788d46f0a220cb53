#include "script/engine/ESHeap.h"

#include "script/engine/ESCode.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace {

constexpr uint32_t CellSizes[] = {sizeof(ESObject),          sizeof(ESBoxed), sizeof(ESNativeFunctionObject),
                                  sizeof(ESFunctionObject),  sizeof(ESArray), sizeof(ESArray),
                                  sizeof(ESActivationObject)};
static_assert(std::size(CellSizes) == ESObject::KindCount);
constexpr size_t SlotBlockBytes = 32768;
constexpr uint32_t ScopesAtOnce = 256;

} // namespace

ESHeap::ESHeap() = default;

ESHeap::~ESHeap()
{
    for (Pool& pool : m_pools) {
        for (Block* block : pool.blocks) {
            for (uint32_t n = 0; n < block->used; ++n)
                reinterpret_cast<ESObject*>(block->cell(n))->release();
            std::free(block);
        }
    }
    for (void* block : m_slotBlocks)
        std::free(block);
    for (ESScope* block : m_scopeBlocks)
        delete[] block;
}

// A cell that was never given out.
void* ESHeap::carve(ESObject::Kind kind)
{
    Pool& pool = m_pools[kind];
    Block* block = pool.blocks.empty() ? nullptr : pool.blocks.back();
    if (!block || block->cell(block->used + 1) > reinterpret_cast<char*>(block) + BlockBytes) {
        void* memory = std::aligned_alloc(BlockBytes, BlockBytes);
        if (!memory)
            throw std::bad_alloc();
        m_bytes += BlockBytes;
        block = new (memory) Block{this, CellSizes[kind], 0};
        pool.blocks.push_back(block);
    }
    return block->cell(block->used++);
}

ESObject* ESHeap::construct(void* memory, ESObject::Kind kind, ESObject* prototype, ESClass* cls)
{
    ESObject* object = nullptr;
    unsigned flags = 0;
    switch (kind) {
    case ESObject::Plain: object = new (memory) ESObject; break;
    case ESObject::Boxed: object = new (memory) ESBoxed; break;
    case ESObject::Native:
        object = new (memory) ESNativeFunctionObject;
        flags = ESObject::Callable;
        break;
    case ESObject::Function:
        object = new (memory) ESFunctionObject;
        flags = ESObject::Callable | ESObject::Constructor | ESObject::Unmade;
        object->m_names = 0xFFFF;
        break;
    case ESObject::Array:
    case ESObject::Arguments:
        object = new (memory) ESArray;
        flags = ESObject::Elements;
        break;
    case ESObject::Activation: object = new (memory) ESActivationObject; break;
    case ESObject::KindCount: break;
    }
    object->prototype = prototype;
    object->m_shape = uint8_t(kind);
    object->m_flags = uint8_t(flags);
    object->setClass(cls);
    return object;
}

ESScope* ESHeap::makeScope(ESScope* next, ESObject* object)
{
    if (!m_scopesLeft) {
        m_scopeBlocks.push_back(new ESScope[ScopesAtOnce]);
        m_scopesLeft = ScopesAtOnce;
        m_bytes += ScopesAtOnce * sizeof(ESScope);
    }
    ESScope* scope = m_scopeBlocks.back() + --m_scopesLeft;
    *scope = {next, object};
    return scope;
}

void ESHeap::finishFunction(ESFunctionObject* function)
{
    ESObject* prototype = make(ESObject::Plain, m_plainPrototype, m_plainClass);
    prototype->append(g_constructorString, ESProperty::DontEnum, ESValue(function));
    function->reserve(2);
    function->append(g_lengthString, ESProperty::DontEnum, ESValue(double(function->code->formalCount)));
    function->append(g_prototypeString, ESProperty::DontEnum, ESValue(prototype));
}

void* ESHeap::allocate(size_t bytes)
{
    void* memory = std::malloc(bytes);
    if (!memory)
        throw std::bad_alloc();
    m_bytes += bytes;
    return memory;
}

void* ESHeap::reallocate(void* memory, size_t old, size_t bytes)
{
    void* moved = std::realloc(memory, bytes);
    if (!moved)
        throw std::bad_alloc();
    m_bytes += bytes - old;
    return moved;
}

void ESHeap::free(void* memory, size_t bytes)
{
    std::free(memory);
    m_bytes -= bytes;
}

ESProperty* ESHeap::carveSlots(uint32_t slots)
{
    size_t bytes = slots * sizeof(ESProperty);
    if (size_t(m_slotEnd - m_slotNext) < bytes) {
        m_slotNext = static_cast<char*>(allocate(SlotBlockBytes));
        m_slotEnd = m_slotNext + SlotBlockBytes;
        m_slotBlocks.push_back(m_slotNext);
    }
    auto* row = reinterpret_cast<ESProperty*>(m_slotNext);
    m_slotNext += bytes;
    return row;
}
