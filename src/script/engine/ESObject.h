// Script objects, their properties and the elements of arrays. Objects come from the heap of their context
// and live as long as it; the heap knows how large each kind is.
#pragma once

#include "script/engine/ESClass.h"
#include "script/engine/ESString.h"
#include "script/engine/ESStringPool.h"
#include "script/engine/ESValue.h"
#include "script/engine/limits.h"

#include <cassert>
#include <cstdint>
#include <span>

class ESCode;
struct ESArray;
struct ESScope;

// One slot of an object's properties. An empty slot, left by a deletion, has no name.
struct ESProperty {
    enum Attribute : uint8_t { ReadOnly = 1, DontEnum = 2, DontDelete = 4, Parameter = 8 };

    uint32_t nameIndex = 0; // in the pool; 0 for none
    int16_t type = ESValue::Undefined;
    uint8_t attributes = 0;
    uint64_t bits = 0;

    bool isNamed() const { return nameIndex; }
    ESString* name() const { return ESStringPool::get(int(nameIndex)); }
    ESValue value() const { return {type, bits}; }
    void setValue(const ESValue& v)
    {
        bits = v.bits();
        type = int16_t(v.type());
    }
};
static_assert(sizeof(ESProperty) == 16);

// An object. Its properties stand in one flat array of slots. Slots don't change their numbers while a
// property lives, and those of the global object and of activations, to which code refers by number, never;
// elsewhere an empty slot is used again. The memory may move whenever a property is added, so nobody keeps a
// pointer into it across a call that can add one. Objects with more than a handful of slots find names
// through an index.
//
// Invariant: m_names has the bit of each name that was ever put here, so a clear bit spares the search.
struct ESObject {
    enum Kind : uint8_t {
        Plain,      // an ESObject
        Boxed,      // an ESBoxed
        Native,     // an ESNativeFunctionObject
        Function,   // an ESFunctionObject
        Array,      // an ESArray
        Arguments,  // an ESArray, whose elements are not enumerated
        Activation, // an ESObject
        KindCount
    };
    enum Flag : uint8_t {
        OwnAccess = 1, // its class has a `get` of its own
        OwnPut = 2,    // its class has a `put` of its own
        Elements = 4,  // it is an ESArray
        Callable = 8,  //
        Constructor = 16,
        IndexNames = 32, // a slot has the name of an array index
        Fixed = 64,      // code refers to its slots
        Unmade = 128     // a function whose `length` and `prototype` are made when somebody looks for them
    };

    ESObject* prototype = nullptr;
    ESClass* cls = nullptr; // set by setClass

    Kind kind() const { return Kind(m_shape & 15); }
    uint8_t flags() const { return m_flags; }
    bool is(Flag flag) const { return m_flags & flag; }
    void setFlag(Flag flag) { m_flags = uint8_t(m_flags | flag); }
    void clearFlag(Flag flag) { m_flags = uint8_t(m_flags & ~flag); }
    void setClass(ESClass* c);

    // What makes an object callable, and what it can be called with `new`.
    bool isCallable() const { return is(Callable); }
    bool isConstructor() const { return is(Constructor); }
    // Made by the engine for itself, so that it is given back when nothing leads to it.
    bool isCollectable() const { return kind() == Boxed || kind() == Arguments; }
    bool isNative() const { return kind() == Native; }
    // The primitive of a wrapper, the time of a Date, the full name of a native function; else undefined.
    ESValue internal() const;
    // Of an object that was made with one.
    void setInternal(const ESValue& value);
    // Which function of its class a native function is; -1 for every other object.
    int builtinId() const;
    // Of an object with elements, else null.
    ESArray* array();
    const ESArray* array() const;

    uint32_t slotCount() const { return m_count; }
    ESProperty* slots() const { return m_slots; }
    ESProperty& slot(uint32_t number) const
    {
        assert(number < m_count);
        return m_slots[number];
    }
    std::span<ESProperty> properties() const { return {m_slots, m_count}; }
    bool mayHave(const ESString* name) const { return m_names & name->nameBit(); }

    // The own property among the slots, or null. Elements of an array are no slots.
    ESProperty* find(ESString* name)
    {
        if (!mayHave(name))
            return nullptr;
        uint32_t hint = name->slotHint();
        if (hint < m_count && m_slots[hint].nameIndex == uint32_t(name->index()))
            return m_slots + hint;
        return search(name);
    }
    ESProperty* search(ESString* name);

    // Adds a property; the caller knows that there is none of that name. Returns its slot. A null name makes
    // a slot that no name leads to.
    uint32_t append(ESString* name, unsigned attributes, const ESValue& v);
    // Sets or makes an own property with these attributes, past all checks: for those who build objects.
    void define(ESString* name, unsigned attributes, const ESValue& v);
    // Empties a slot.
    void remove(ESProperty* slot);
    // Room for so many slots in all. Throws std::bad_alloc.
    void reserve(uint32_t slots);
    // Slots that there is room for.
    uint32_t capacity() const;
    // For activations: makes the slots of the parameters with the first arguments for values, nameless ones
    // for the other arguments, and those of the locals.
    void fillSlots(std::span<const ESProperty> parameters, std::span<const ESValue> arguments,
                   std::span<const ESProperty> locals, uint16_t names);
    // Closes the gaps where most slots have become empty, before somebody walks through them all.
    void tidy();
    // Gives the memory of the slots and elements back.
    void release();
    // Makes what an Unmade function lacks.
    void make();

private:
    friend class ESHeap;
    struct Table;
    Table* table() const;
    bool isLarge() const { return (m_shape >> 4) == LargeShape; }
    static constexpr int LargeShape = 15;
    void grow(uint32_t slots);
    void rebuildIndex(uint32_t names);
    void enter(uint32_t nameIndex, uint32_t slot);

    ESProperty* m_slots = nullptr;
    uint32_t m_count = 0;
    uint16_t m_names = 0;
    uint8_t m_shape = 0; // kind, and the class of the slots' memory
    uint8_t m_flags = 0;
};
static_assert(sizeof(ESObject) == 32);

struct ESBoxed : ESObject {
    ESValue value;
};

struct ESNativeFunctionObject : ESObject {
    ESValue value;               // its full name
    ESHandler handler = nullptr; // null when its class selects by the id
    int formalCount = 0;         // argument slots that a call fills up with undefined
    int id = 0;
};

struct ESFunctionObject : ESObject {
    ESCode* code = nullptr;
    ESScope* scope = nullptr; // around it
};

// An object with elements: the properties that are named by the indices below `count`, but for those that are
// holes. All elements have the attributes of their object's kind. Properties with other indices are slots.
struct ESArray : ESObject {
    ESValue* elements = nullptr; // behind `head` values that were shifted out
    uint32_t head = 0;
    uint32_t count = 0;
    uint32_t room = 0;            // values from `elements` on
    uint32_t filled = 0;          // elements that are no holes
    uint32_t sparse = 0;          // slots that were made for indices too far out
    bool undefinedInside = false; // some element may be undefined

    // The element, or null for a hole and beyond.
    ESValue* at(uint32_t index) const
    {
        return index < count && elements[index].type() != ESValue::Hole ? elements + index : nullptr;
    }
    // Sets the element, which there is none of, and which fits (see accepts).
    void insert(uint32_t index, const ESValue& value);
    // Makes the elements of an array that has none.
    void fill(std::span<const ESValue> values);
    // Whether the index lies near enough to the others to become an element.
    bool accepts(uint32_t index) const { return index < ESLimits::DenseElements || index / 8 < filled + 64; }
    // Adds a slot for an index too far out.
    void appendSparse(ESString* name, const ESValue& value)
    {
        append(name, 0, value);
        if (++sparse >= 16 && !(sparse & (sparse - 1)))
            densify();
    }
    // Makes a hole, or shortens the array.
    void erase(uint32_t index);
    void truncate(uint32_t length);
    // Takes the first element out; the others move down by one.
    void dropFirst();
    // Makes holes of the elements from `first` on that are undefined.
    void dropUndefined(uint32_t first);
    void reserveElements(uint32_t values);
    // Moves index-named slots to the elements, if they lie near enough by now.
    void densify();
    void releaseElements();
};

inline ESArray* ESObject::array()
{
    return is(Elements) ? static_cast<ESArray*>(this) : nullptr;
}
inline const ESArray* ESObject::array() const
{
    return is(Elements) ? static_cast<const ESArray*>(this) : nullptr;
}

inline int ESObject::builtinId() const
{
    return isNative() ? static_cast<const ESNativeFunctionObject*>(this)->id : -1;
}

inline ESNativeFunctionObject* nativeFunction(ESObject* object)
{
    return object->isNative() ? static_cast<ESNativeFunctionObject*>(object) : nullptr;
}
