#include "script/engine/ESObject.h"

#include <cstring>
#include <new>
#include <type_traits>

void ESPropertyArray::reserve(uint32_t slots)
{
    static_assert(std::is_trivially_copyable_v<ESProperty>);
    if (slots <= m_capacity)
        return;
    void* grown = std::realloc(static_cast<void*>(m_data), size_t(slots) * sizeof(ESProperty));
    if (!grown)
        throw std::bad_alloc();
    m_data = static_cast<ESProperty*>(grown);
    m_capacity = slots;
}

ESProperty* ESObject::search(ESString* name)
{
    ESProperty* end = properties.end();
    for (ESProperty* slot = properties.data(); slot != end; ++slot) {
        if (slot->name == name) {
            name->setSlotHint(uint32_t(slot - properties.data()));
            return slot;
        }
    }
    return nullptr;
}

void ESObject::define(ESString* name, unsigned attributes, const ESValue& v)
{
    if (ESProperty* slot = find(name)) {
        slot->setValue(v);
        slot->attributes = uint8_t(attributes);
    } else {
        append(name, attributes, v);
    }
}
