#include "script/engine/ESHeap.h"

#include "script/engine/ESClass.h"
#include "script/engine/ESCode.h"
#include "script/engine/ESException.h"
#include "script/engine/ESStringPool.h"
#include "script/engine/ESValue.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

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
        charge(BlockBytes);
        void* memory = std::aligned_alloc(BlockBytes, BlockBytes);
        if (!memory)
            throw std::bad_alloc();
        block = new (memory) Block{this, CellSizes[kind], 0, {}};
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
    case ESObject::Boxed:
        object = new (memory) ESBoxed;
        ESCollector::allocated(sizeof(ESBoxed));
        break;
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
        if (kind == ESObject::Arguments)
            ESCollector::allocated(2 * sizeof(ESArray));
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
    if (!m_freeScopes) {
        charge(ScopesAtOnce * sizeof(ESScope));
        m_scopeBlocks.push_back(new ESScope[ScopesAtOnce]);
        for (uint32_t i = 0; i < ScopesAtOnce; ++i)
            m_scopeBlocks.back()[i].next = std::exchange(m_freeScopes, m_scopeBlocks.back() + i);
    }
    ESScope* scope = m_freeScopes;
    m_freeScopes = scope->next;
    *scope = {next, object, false};
    return scope;
}

void ESHeap::freeScope(ESScope* scope)
{
    if (scope->object->kind() == ESObject::Activation) {
        giveBack(scope->object);
        return;
    }
    *scope = {m_freeScopes, nullptr, false};
    m_freeScopes = scope;
}

void ESHeap::giveBack(ESObject* object)
{
    Pool& pool = m_pools[object->kind()];
    object->release();
    object->m_shape = ESObject::KindCount;
    object->m_flags = 0;
    object->prototype = static_cast<ESObject*>(pool.free);
    pool.free = object;
}

bool ESHeap::mark(const ESObject* object)
{
    Block* block = blockOf(object);
    auto cell = uint32_t((reinterpret_cast<const char*>(object) - block->cell(0))) / block->cellBytes;
    uint64_t bit = uint64_t(1) << (cell % 64);
    if (block->marks[cell / 64] & bit)
        return false;
    block->marks[cell / 64] |= bit;
    return true;
}

void ESHeap::markValues(ESMarker& marker)
{
    for (const Pool& pool : m_pools) {
        for (Block* block : pool.blocks) {
            for (uint32_t n = 0; n < block->used; ++n) {
                auto* object = reinterpret_cast<ESObject*>(block->cell(n));
                if (object->isCollectable())
                    break; // as all of its block are
                if (object->kind() == ESObject::KindCount)
                    continue;
                marker.valuesOf(object);
            }
        }
    }
    for (ESScope* block : m_scopeBlocks)
        for (uint32_t i = 0; i < ScopesAtOnce; ++i)
            if (block[i].object)
                marker.object(block[i].object);
}

void ESHeap::sweep()
{
    for (ESObject::Kind kind : {ESObject::Boxed, ESObject::Arguments}) {
        for (Block* block : m_pools[kind].blocks) {
            for (uint32_t n = 0; n < block->used; ++n) {
                auto* object = reinterpret_cast<ESObject*>(block->cell(n));
                bool marked = block->marks[n / 64] >> (n % 64) & 1;
                if (!marked && object->kind() != ESObject::KindCount)
                    giveBack(object);
            }
            std::memset(block->marks, 0, sizeof block->marks);
        }
    }
}

void ESHeap::finishFunction(ESFunctionObject* function)
{
    ESObject* prototype = make(ESObject::Plain, m_plainPrototype, m_plainClass);
    prototype->append(g_constructorString, ESProperty::DontEnum, ESValue(function));
    function->reserve(2);
    function->append(g_lengthString, ESProperty::DontEnum, ESValue(double(function->code->formalCount)));
    function->append(g_prototypeString, ESProperty::DontEnum, ESValue(prototype));
}

void ESHeap::charge(size_t bytes)
{
    if (m_bytes + ESStringPool::bytes() + bytes > m_limit)
        throw ESFatalError("out of memory");
    m_bytes += bytes;
}

void* ESHeap::allocate(size_t bytes)
{
    charge(bytes);
    void* memory = std::malloc(bytes);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

void* ESHeap::reallocate(void* memory, size_t old, size_t bytes)
{
    charge(bytes - std::min(old, bytes));
    void* moved = std::realloc(memory, bytes);
    if (!moved)
        throw std::bad_alloc();
    m_bytes -= old - std::min(old, bytes);
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
