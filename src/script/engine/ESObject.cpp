#include "script/engine/ESObject.h"

#include "script/engine/ESHeap.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <type_traits>

static_assert(std::is_trivially_copyable_v<ESProperty>);

// What stands in front of the slots of an object with many: the index over its names, an open table at most
// three quarters full, and the empty slots that can be used again. The objects of Fixed slots have no list of
// empty ones, and activations no index.
struct ESObject::Table {
    uint32_t* index;   // slot + 1; 0 where none ever was, Gone where one was
    uint32_t mask;     // entries of the index - 1
    uint32_t entered;  // entries that are not 0
    uint32_t capacity; // slots
    uint32_t freeSlot; // slot + 1 of the first empty one, whose bits lead to the next
    uint32_t freeCount;
    uint32_t unused;
};

namespace {

constexpr uint32_t Gone = 0xFFFFFFFF;
// Slots of the small classes of memory, by class.
constexpr uint32_t ClassSizes[] = {0, 1, 2, 3, 4, 6, 8, 12, 16, 24, 32, 48, 64};
constexpr int ClassCount = int(std::size(ClassSizes));
static_assert(ClassCount <= ESHeap::SlotClasses);
// Objects with more slots than this have an index, but for activations.
constexpr uint32_t UnindexedSlots = 8;
// Elements up to here come from the lists of small rows, by the same classes as slots.
constexpr uint32_t SmallElements = ClassSizes[ClassCount - 1];
constexpr uint32_t SlotBound = 1u << 27;

int classFor(uint32_t slots)
{
    int c = 0;
    while (ClassSizes[c] < slots)
        ++c;
    return c;
}

uint32_t spread(uint32_t nameIndex)
{
    uint32_t h = nameIndex * 0x9E3779B1u;
    return h ^ h >> 15;
}

} // namespace

ESObject::Table* ESObject::table() const
{
    static_assert(sizeof(Table) == 2 * sizeof(ESProperty));
    return reinterpret_cast<Table*>(m_slots - 2);
}

uint32_t ESObject::capacity() const
{
    return isLarge() ? table()->capacity : ClassSizes[m_shape >> 4];
}

void ESObject::setClass(ESClass* c)
{
    cls = c;
    m_flags = uint8_t(m_flags & ~(OwnAccess | OwnPut));
    if (!c)
        return;
    if (c->access() == ESClass::Access::Own)
        m_flags |= OwnAccess | OwnPut;
    if (c->access() == ESClass::Access::Array)
        m_flags |= OwnPut;
}

ESValue ESObject::internal() const
{
    switch (kind()) {
    case Boxed: return static_cast<const ESBoxed*>(this)->value;
    case Native: return static_cast<const ESNativeFunctionObject*>(this)->value;
    default: return g_undefined;
    }
}

void ESObject::setInternal(const ESValue& value)
{
    assert(kind() == Boxed || kind() == Native);
    if (kind() == Boxed)
        static_cast<ESBoxed*>(this)->value = value;
    else
        static_cast<ESNativeFunctionObject*>(this)->value = value;
}

ESProperty* ESObject::search(ESString* name)
{
    if (is(Unmade))
        make();
    uint32_t wanted = uint32_t(name->index());
    if (isLarge() && table()->index) {
        const Table& t = *table();
        for (uint32_t at = spread(wanted) & t.mask; t.index[at]; at = (at + 1) & t.mask) {
            uint32_t slot = t.index[at] - 1;
            if (t.index[at] != Gone && m_slots[slot].nameIndex == wanted) {
                name->setSlotHint(slot);
                return m_slots + slot;
            }
        }
        return nullptr;
    }
    for (uint32_t slot = 0; slot < m_count; ++slot) {
        if (m_slots[slot].nameIndex == wanted) {
            name->setSlotHint(slot);
            return m_slots + slot;
        }
    }
    return nullptr;
}

void ESObject::enter(uint32_t nameIndex, uint32_t slot)
{
    Table* t = table();
    uint32_t at = spread(nameIndex) & t->mask;
    while (t->index[at])
        at = (at + 1) & t->mask;
    t->index[at] = slot + 1;
    ++t->entered;
}

// Makes the index anew, for at least so many names.
void ESObject::rebuildIndex(uint32_t names)
{
    Table* t = table();
    uint32_t live = names - std::min(names, t->freeCount);
    uint32_t entries = 16;
    while (entries < live * 2)
        entries *= 2;
    ESHeap& heap = ESHeap::of(this);
    auto* index = static_cast<uint32_t*>(heap.allocate(size_t(entries) * sizeof(uint32_t)));
    std::memset(index, 0, size_t(entries) * sizeof(uint32_t));
    if (t->index)
        heap.free(t->index, (size_t(t->mask) + 1) * sizeof(uint32_t));
    t->index = index;
    t->mask = entries - 1;
    t->entered = 0;
    for (uint32_t slot = 0; slot < m_count; ++slot) {
        if (!m_slots[slot].isNamed())
            continue;
        uint32_t at = spread(m_slots[slot].nameIndex) & t->mask;
        while (t->index[at])
            at = (at + 1) & t->mask;
        t->index[at] = slot + 1;
        ++t->entered;
    }
}

// Moves the slots to memory for at least so many.
void ESObject::grow(uint32_t slots)
{
    ESHeap& heap = ESHeap::of(this);
    if (slots > SlotBound)
        throw std::bad_alloc();
    bool indexed = kind() != Activation;
    if (slots <= (indexed ? UnindexedSlots : ClassSizes[ClassCount - 1])) {
        int c = classFor(slots);
        ESProperty* grown = heap.allocateSlots(c, ClassSizes[c]);
        std::copy_n(m_slots, m_count, grown);
        if (m_slots)
            heap.freeSlots(m_slots, m_shape >> 4);
        m_slots = grown;
        m_shape = uint8_t((m_shape & 15) | c << 4);
        return;
    }
    size_t bytes = (size_t(slots) + 2) * sizeof(ESProperty);
    if (isLarge()) {
        Table* t = table();
        auto* moved =
            static_cast<Table*>(heap.reallocate(t, (size_t(t->capacity) + 2) * sizeof(ESProperty), bytes));
        moved->capacity = slots;
        m_slots = reinterpret_cast<ESProperty*>(moved) + 2;
        return;
    }
    auto* fresh = static_cast<Table*>(heap.allocate(bytes));
    *fresh = {nullptr, 0, 0, slots, 0, 0, 0};
    auto* grown = reinterpret_cast<ESProperty*>(fresh) + 2;
    std::copy_n(m_slots, m_count, grown);
    if (m_slots)
        heap.freeSlots(m_slots, m_shape >> 4);
    m_slots = grown;
    m_shape = uint8_t((m_shape & 15) | LargeShape << 4);
    if (!indexed)
        return;
    for (uint32_t slot = 0; slot < m_count && !is(Fixed); ++slot) {
        if (m_slots[slot].isNamed())
            continue;
        m_slots[slot].bits = fresh->freeSlot;
        fresh->freeSlot = slot + 1;
        ++fresh->freeCount;
    }
    rebuildIndex(slots);
}

void ESObject::reserve(uint32_t slots)
{
    if (slots > capacity())
        grow(slots);
}

uint32_t ESObject::append(ESString* name, unsigned attributes, const ESValue& v)
{
    if (is(Unmade))
        make();
    uint32_t slot = m_count;
    // Room in the index comes first: memory may be out, and then nothing has changed.
    if (isLarge() && table()->index && (table()->entered + 1) * 4 > (table()->mask + 1) * 3)
        rebuildIndex(m_count + 1);
    if (isLarge() && table()->freeSlot && name) {
        Table* t = table();
        slot = t->freeSlot - 1;
        t->freeSlot = uint32_t(m_slots[slot].bits);
        --t->freeCount;
    } else if (m_count == capacity()) {
        if (!isLarge() && !is(Fixed) && kind() != Activation)
            for (uint32_t empty = 0; empty < m_count; ++empty)
                if (!m_slots[empty].isNamed())
                    slot = empty;
        if (slot == m_count)
            grow(m_count < 4 ? m_count + 1 : m_count + m_count / 2);
    }
    m_slots[slot].nameIndex = 0;
    if (name) {
        m_slots[slot].nameIndex = uint32_t(name->index());
        m_names = uint16_t(m_names | name->nameBit());
        if (name->arrayIndex() >= 0)
            setFlag(IndexNames);
    }
    m_slots[slot].attributes = uint8_t(attributes);
    m_slots[slot].setValue(v);
    if (slot == m_count)
        ++m_count;
    if (name && isLarge() && table()->index)
        enter(uint32_t(name->index()), slot);
    return slot;
}

void ESObject::define(ESString* name, unsigned attributes, const ESValue& v)
{
    if (ESArray* elements = array(); elements && name->arrayIndex() >= 0)
        elements->erase(uint32_t(name->arrayIndex()));
    if (ESProperty* slot = find(name)) {
        slot->setValue(v);
        slot->attributes = uint8_t(attributes);
    } else {
        append(name, attributes, v);
    }
}

void ESObject::remove(ESProperty* slot)
{
    uint32_t number = uint32_t(slot - m_slots);
    if (isLarge() && table()->index) {
        Table* t = table();
        uint32_t at = spread(slot->nameIndex) & t->mask;
        while (t->index[at] != number + 1)
            at = (at + 1) & t->mask;
        t->index[at] = Gone;
    }
    *slot = ESProperty();
    if (isLarge() && table()->index && !is(Fixed)) {
        Table* t = table();
        slot->bits = t->freeSlot;
        t->freeSlot = number + 1;
        ++t->freeCount;
    }
}

void ESObject::tidy()
{
    if (!isLarge() || is(Fixed) || !table()->index || table()->freeCount < m_count - m_count / 4 ||
        m_count < 64)
        return;
    uint32_t live = 0;
    for (uint32_t slot = 0; slot < m_count; ++slot)
        if (m_slots[slot].isNamed())
            m_slots[live++] = m_slots[slot];
    m_count = live;
    table()->freeSlot = 0;
    table()->freeCount = 0;
    grow(std::max(live + live / 2, UnindexedSlots + 1));
    rebuildIndex(live);
}

void ESObject::fillSlots(std::span<const ESProperty> parameters, std::span<const ESValue> arguments,
                         std::span<const ESProperty> locals, uint16_t names)
{
    assert(!m_count && arguments.size() >= parameters.size());
    m_names = names;
    reserve(uint32_t(arguments.size() + locals.size()));
    ESProperty* slot = m_slots;
    for (size_t i = 0; i < arguments.size(); ++i, ++slot) {
        if (i < parameters.size())
            *slot = parameters[i];
        else
            *slot = {0, 0, ESProperty::DontEnum, 0};
        slot->setValue(arguments[i]);
    }
    for (const ESProperty& local : locals)
        *slot++ = local;
    m_count = uint32_t(slot - m_slots);
}

void ESObject::release()
{
    ESHeap& heap = ESHeap::of(this);
    if (isLarge()) {
        Table* t = table();
        if (t->index)
            heap.free(t->index, (size_t(t->mask) + 1) * sizeof(uint32_t));
        heap.free(t, (size_t(t->capacity) + 2) * sizeof(ESProperty));
    } else if (m_slots) {
        heap.freeSlots(m_slots, m_shape >> 4);
    }
    m_slots = nullptr;
    m_count = 0;
    m_names = 0;
    m_shape = uint8_t(m_shape & 15);
    if (ESArray* elements = array())
        elements->releaseElements();
}

void ESObject::make()
{
    m_flags = uint8_t(m_flags & ~Unmade);
    m_names = 0;
    ESHeap::of(this).finishFunction(static_cast<ESFunctionObject*>(this));
}

// Elements.

void ESArray::reserveElements(uint32_t values)
{
    if (values <= room)
        return;
    ESHeap& heap = ESHeap::of(this);
    ESValue* base = elements - head;
    if (head > count && values <= head + room) {
        std::memmove(static_cast<void*>(base), elements, size_t(count) * sizeof(ESValue));
        room += head;
        head = 0;
        elements = base;
        return;
    }
    if (values > SlotBound)
        throw std::bad_alloc();
    static_assert(sizeof(ESValue) == sizeof(ESProperty));
    uint32_t held = head + room;
    uint32_t wanted = std::max(values, values < SlotBound / 2 ? count + count / 2 : values);
    if (held > SmallElements) {
        wanted += head;
        base = static_cast<ESValue*>(
            heap.reallocate(base, size_t(held) * sizeof(ESValue), size_t(wanted) * sizeof(ESValue)));
        elements = base + head;
        room = wanted - head;
        return;
    }
    ESValue* fresh;
    if (wanted <= SmallElements) {
        int c = classFor(wanted);
        wanted = ClassSizes[c];
        fresh = reinterpret_cast<ESValue*>(heap.allocateSlots(c, wanted));
    } else {
        fresh = static_cast<ESValue*>(heap.allocate(size_t(wanted) * sizeof(ESValue)));
    }
    std::copy_n(elements, count, fresh);
    if (elements)
        heap.freeSlots(reinterpret_cast<ESProperty*>(base), classFor(held));
    elements = fresh;
    head = 0;
    room = wanted;
}

void ESArray::insert(uint32_t index, const ESValue& value)
{
    if (index >= count) {
        reserveElements(index + 1);
        std::fill(elements + count, elements + index, ESValue(ESValue::Hole, 0));
        count = index + 1;
    }
    elements[index] = value;
    ++filled;
    undefinedInside = undefinedInside || value.isUndefined();
    if (index >= uint32_t(ESLimits::ReadyNumbers))
        ESStringPool::meetNumber(index);
}

void ESArray::fill(std::span<const ESValue> values)
{
    assert(!count);
    if (values.empty())
        return;
    reserveElements(uint32_t(values.size()));
    for (uint32_t i = 0; i < values.size(); ++i) {
        elements[i] = values[i];
        undefinedInside = undefinedInside || values[i].isUndefined();
        if (i >= uint32_t(ESLimits::ReadyNumbers))
            ESStringPool::meetNumber(i);
    }
    count = filled = uint32_t(values.size());
}

void ESArray::erase(uint32_t index)
{
    if (!at(index))
        return;
    --filled;
    elements[index] = ESValue(ESValue::Hole, 0);
    if (index + 1 == count)
        --count;
    if (!filled)
        count = 0;
}

void ESArray::truncate(uint32_t length)
{
    for (; count > length; --count)
        filled -= elements[count - 1].type() != ESValue::Hole;
}

void ESArray::dropFirst()
{
    filled -= elements[0].type() != ESValue::Hole;
    ++elements;
    ++head;
    --room;
    if (!--count) {
        elements -= head;
        room += head;
        head = 0;
    }
}

void ESArray::dropUndefined(uint32_t first)
{
    for (uint32_t i = first; i < count; ++i) {
        if (elements[i].isUndefined()) {
            elements[i] = ESValue(ESValue::Hole, 0);
            --filled;
        }
    }
    undefinedInside = false;
    if (!filled)
        count = 0;
}

void ESArray::densify()
{
    uint32_t last = 0;
    uint32_t found = 0;
    for (const ESProperty& p : properties()) {
        int index = p.isNamed() && !p.attributes ? p.name()->arrayIndex() : -1;
        if (index < 0)
            continue;
        ++found;
        last = std::max(last, uint32_t(index));
    }
    sparse = found;
    if (last / 8 >= filled + found)
        return;
    reserveElements(last + 1);
    for (ESProperty& p : properties()) {
        int index = p.isNamed() && !p.attributes ? p.name()->arrayIndex() : -1;
        if (index < 0)
            continue;
        ESValue value = p.value();
        remove(&p);
        insert(uint32_t(index), value);
    }
    sparse = 0;
    bool named = false;
    for (const ESProperty& p : properties())
        named = named || (p.isNamed() && p.name()->arrayIndex() >= 0);
    if (!named)
        clearFlag(IndexNames);
}

void ESArray::releaseElements()
{
    uint32_t held = head + room;
    if (held > SmallElements)
        ESHeap::of(this).free(elements - head, size_t(held) * sizeof(ESValue));
    else if (elements)
        ESHeap::of(this).freeSlots(reinterpret_cast<ESProperty*>(elements - head), classFor(held));
    elements = nullptr;
    head = count = room = filled = 0;
}
