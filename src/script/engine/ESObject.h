// Script objects and their property arrays. Objects are made by ESContext::mkobj and live as long as
// their context.
#pragma once

#include "script/engine/ESClass.h"
#include "script/engine/ESString.h"
#include "script/engine/ESValue.h"
#include "script/engine/limits.h"

#include <cassert>
#include <cstdint>
#include <cstdlib>

class ESCode;

// One slot of a property array. An empty slot, left by a deletion, has no name.
struct ESProperty {
    enum Attribute : uint8_t { ReadOnly = 1, DontEnum = 2, DontDelete = 4, Parameter = 8 };

    ESString* name = nullptr;
    uint64_t bits = 0;
    int32_t type = ESValue::Undefined;
    uint8_t attributes = 0;

    ESValue value() const { return {type, bits}; }
    void setValue(const ESValue& v)
    {
        bits = v.bits();
        type = v.type();
    }
};

// The flat array of an object's properties, searched from slot 0. Slots never move, so that compiled
// code can keep their numbers; the memory may move whenever a property is added, so nobody keeps a
// pointer into it across a call that can add one.
class ESPropertyArray {
public:
    ESPropertyArray() = default;
    ~ESPropertyArray() { std::free(m_data); }
    ESPropertyArray(const ESPropertyArray&) = delete;
    ESPropertyArray& operator=(const ESPropertyArray&) = delete;

    uint32_t count() const { return m_count; }
    uint32_t capacity() const { return m_capacity; }
    ESProperty* data() const { return m_data; }
    ESProperty& operator[](uint32_t slot) const
    {
        assert(slot < m_count);
        return m_data[slot];
    }
    ESProperty* begin() const { return m_data; }
    ESProperty* end() const { return m_data + m_count; }

    // Room for so many slots in all. Throws std::bad_alloc.
    void reserve(uint32_t slots);
    // Returns the new slot's number. A full array grows by ESLimits::PropertyGrowth slots.
    uint32_t append(ESString* name, unsigned attributes, const ESValue& value)
    {
        if (m_count == m_capacity)
            reserve(m_count + ESLimits::PropertyGrowth);
        ESProperty& slot = m_data[m_count];
        slot.name = name;
        slot.setValue(value);
        slot.attributes = uint8_t(attributes);
        return m_count++;
    }

private:
    ESProperty* m_data = nullptr;
    uint32_t m_count = 0;
    uint32_t m_capacity = 0;
};

// What makes an object callable. For a native the formal count is the number of argument slots that a
// call fills up with undefined, and the rest is empty.
struct ESClosure {
    int formalCount = 0;
    int localCount = 0;
    ESCode* code = nullptr;
    struct ESObject* scope = nullptr;
    ESHandler handler = nullptr; // of a native; null when its class selects by the builtin id
};

struct ESObject {
    ESObject* prototype = nullptr;
    ESValue value; // primitive of a wrapper, time of a Date, full name of a native, scope of a cell
    ESClosure* call = nullptr;
    ESClosure* construct = nullptr;
    ESClass* cls = nullptr;
    ESPropertyArray properties;
    int builtinId = -1; // 0 and up: a call goes to the class, with this number for the operation
    // Every own property that is named by an array index has an index below this.
    uint32_t indexBound = 0;
    // Union of nameBit() of all names that were ever put here: a clear bit spares the search.
    uint64_t names = 0;
    ESObject* nextFree = nullptr;
    ESObject* allObjects = nullptr;

    // The own property, or null.
    ESProperty* find(ESString* name)
    {
        if (!(names & name->nameBit()))
            return nullptr;
        uint32_t hint = name->slotHint();
        if (hint < properties.count() && properties.data()[hint].name == name)
            return properties.data() + hint;
        return search(name);
    }
    ESProperty* search(ESString* name);

    // Adds a slot; the caller knows that there is none of that name.
    uint32_t append(ESString* name, unsigned attributes, const ESValue& v)
    {
        if (name) {
            names |= name->nameBit();
            if (name->arrayIndex() >= 0 && uint32_t(name->arrayIndex()) >= indexBound)
                indexBound = uint32_t(name->arrayIndex()) + 1;
        }
        return properties.append(name, attributes, v);
    }
    // Sets or makes an own property with these attributes, past all checks: for those who build objects.
    void define(ESString* name, unsigned attributes, const ESValue& v);
};
