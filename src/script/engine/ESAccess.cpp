// Names and members: the plain behaviour of objects, the scope chain, and what the machine does for
// members out of line.
#include "script/engine/ESContext.h"

#include <algorithm>
#include <utility>
#include <vector>

void ESContext::plainPut(ESObject* object, ESString* name, const ESValue& value)
{
    if (ESArray* elements = object->array(); elements && name->arrayIndex() >= 0) {
        if (ESValue* element = elements->at(unsigned(name->arrayIndex()))) {
            *element = value;
            elements->undefinedInside = elements->undefinedInside || value.isUndefined();
            return;
        }
    }
    if (ESProperty* slot = object->find(name)) {
        if (!(slot->attributes & ESProperty::ReadOnly))
            slot->setValue(value);
        return;
    }
    object->append(name, 0, value);
}

ESValue ESContext::indexGet(ESObject* object, unsigned index, ESString* name)
{
    for (; object; object = object->prototype) {
        if (ESArray* array = object->array())
            if (ESValue* element = array->at(index))
                return *element;
        if (!object->is(ESObject::IndexNames))
            continue;
        if (!name && !(name = ESStringPool::findNumber(index)))
            return g_undefined;
        if (ESProperty* slot = object->find(name))
            return slot->value();
    }
    return g_undefined;
}

// For an object whose class has a `get` of its own.
ESValue ESContext::getOwnIndex(ESObject* object, unsigned index)
{
    ESString* name = ESStringPool::findNumber(index);
    return name ? object->cls->get(this, object, name) : g_undefined;
}

void ESContext::putElement(ESArray* array, unsigned index, const ESValue& value, ESString* name)
{
    // `length` stands in the first slot, as long as nobody has deleted it.
    const bool usual = array->slotCount() && array->slot(0).nameIndex == uint32_t(g_lengthString->index());
    if (ESValue* element = array->at(index)) {
        *element = value;
        array->undefinedInside = array->undefinedInside || value.isUndefined();
        if (usual)
            return; // and has counted the element already
    } else {
        ESProperty* slot = nullptr;
        if (array->is(ESObject::IndexNames) && (name || (name = ESStringPool::findNumber(index))))
            slot = array->find(name);
        if (slot) {
            if (!(slot->attributes & ESProperty::ReadOnly))
                slot->setValue(value);
        } else if (array->accepts(index)) {
            array->insert(index, value);
        } else {
            array->appendSparse(ESStringPool::number(index), value);
        }
    }
    ESProperty* length = usual ? array->slots() : array->find(g_lengthString);
    if (!length)
        array->append(g_lengthString, ESProperty::DontEnum, ESValue(double(index) + 1));
    else if (double(index) >= length->value().number() && !(length->attributes & ESProperty::ReadOnly))
        length->setValue(ESValue(double(index) + 1));
}

namespace {

// The element of that name, or null.
ESValue* elementOf(ESObject* object, ESString* name)
{
    ESArray* array = object->array();
    return array && name->arrayIndex() >= 0 ? array->at(unsigned(name->arrayIndex())) : nullptr;
}

} // namespace

bool ESContext::hasOwnProperty(ESObject* object, ESString* name)
{
    return elementOf(object, name) || object->find(name);
}

bool ESContext::hasOwnKey(ESObject* object, ESString* text)
{
    if (int index = ESStringPool::arrayIndexOf(text); index >= 0) {
        ESArray* array = object->array();
        if (array && array->at(unsigned(index)))
            return true;
    }
    ESString* name = ESStringPool::findName(text);
    return name && object->find(name);
}

bool ESContext::hasProperty(ESObject* object, ESString* name)
{
    for (; object; object = object->prototype)
        if (hasOwnProperty(object, name))
            return true;
    return false;
}

bool ESContext::propertyIsEnumerable(ESObject* object, ESString* name)
{
    if (elementOf(object, name))
        return object->kind() == ESObject::Array;
    ESProperty* slot = object->find(name);
    return slot && !(slot->attributes & ESProperty::DontEnum);
}

bool ESContext::deleteProperty(ESObject* object, ESString* name)
{
    if (elementOf(object, name)) {
        object->array()->erase(unsigned(name->arrayIndex()));
        return true;
    }
    ESProperty* slot = object->find(name);
    if (!slot)
        return true;
    if (slot->attributes & ESProperty::DontDelete)
        return false;
    object->remove(slot);
    return true;
}

bool ESContext::deleteProperty(ESObject* object, unsigned index)
{
    if (ESArray* array = object->array(); array && array->at(index)) {
        array->erase(index);
        return true;
    }
    if (!object->is(ESObject::IndexNames) && index < 2147483647)
        return true;
    // A number that was never interned names no property.
    ESString* name = ESStringPool::findNumber(index);
    return !name || deleteProperty(object, name);
}

bool ESContext::isPrototypeOf(ESObject* object, const ESValue& value)
{
    if (!value.isObject())
        return false;
    for (ESObject* at = value.object()->prototype; at; at = at->prototype)
        if (at == object)
            return true;
    return false;
}

// Names.

ESObject* ESContext::dynamicGet(ESString* name, ESValue& value)
{
    for (ESScope* cell = m_scope; cell; cell = cell->next) {
        ESObject* object = cell->object;
        if (hasProperty(object, name)) {
            value = get(object, name);
            return object;
        }
    }
    value = get(m_global, name);
    return m_global;
}

void ESContext::dynamicPut(ESString* name, const ESValue& value)
{
    for (ESScope* cell = m_scope; cell; cell = cell->next) {
        if (hasProperty(cell->object, name)) {
            put(cell->object, name, value);
            return;
        }
    }
    put(m_global, name, value);
}

bool ESContext::dynamicDelete(ESString* name)
{
    for (ESScope* cell = m_scope; cell; cell = cell->next)
        if (hasProperty(cell->object, name))
            return deleteProperty(cell->object, name);
    return hasProperty(m_global, name) && deleteProperty(m_global, name);
}

// Members, for the machine.

// Looks a member of a primitive up on its prototype, without making the object that it would have.
ESValue ESContext::memberOf(const ESValue& value, ESString* name)
{
    switch (value.type()) {
    case ESValue::Object: return get(value.object(), name);
    case ESValue::String:
        if (name == g_lengthString)
            return ESValue(double(value.string()->length()));
        return plainGet(stringPrototype(), name);
    case ESValue::Number: return plainGet(numberPrototype(), name);
    default: return get(ToObject(value), name);
    }
}

// The `this` of a method call. Native methods of strings and numbers read their receiver's text or value
// and keep nothing of it, so for them one object serves all primitives.
ESObject* ESContext::receiver(const ESValue& value, ESObject* function)
{
    if (value.isObject())
        return value.object();
    if (function && function->isNative()) {
        if (value.type() == ESValue::String && function->cls == m_realm.cls(ESRealm::String)) {
            m_stringReceiver->setInternal(value);
            return m_stringReceiver;
        }
        if (value.isNumber() && function->cls == m_realm.cls(ESRealm::Number)) {
            m_numberReceiver->setInternal(value);
            return m_numberReceiver;
        }
    }
    return ToObject(value);
}

namespace {

// The number as an array index, or -1.
int64_t indexOf(const ESValue& key)
{
    if (!key.isNumber() || !(key.number() >= 0 && key.number() < 2147483647.0))
        return -1;
    auto index = int64_t(key.number());
    return double(index) == key.number() ? index : -1;
}

} // namespace

ESValue ESContext::getByKey(const ESValue& object, const ESValue& key)
{
    if (object.type() == ESValue::Undefined || object.isNull())
        ToObject(object);
    if (int64_t index = indexOf(key); index >= 0 && object.isObject()) {
        if (index < ESLimits::NumberStrings)
            ESStringPool::meetNumber(unsigned(index));
        return getIndex(object.object(), unsigned(index));
    }
    ESValue holder = object;
    ESString* text = toEString(key);
    int number = ESStringPool::arrayIndexOf(text);
    if (number >= 0 && holder.isObject())
        return getIndex(holder.object(), unsigned(number));
    ESString* name = ESStringPool::findName(text);
    if (!name) {
        // A class of the host may know of what no property is named by.
        if (!holder.isObject() || !holder.object()->is(ESObject::OwnAccess))
            return g_undefined;
        name = ESStringPool::name(text);
    }
    return memberOf(holder, name);
}

void ESContext::putByKey(const ESValue& object, const ESValue& key, const ESValue& value)
{
    ESObject* holder = ToObject(object);
    if (int64_t index = indexOf(key); index >= 0 && holder->kind() == ESObject::Array) {
        putElement(static_cast<ESArray*>(holder), unsigned(index), value, nullptr);
        return;
    }
    ESString* text = toEString(key);
    if (int number = ESStringPool::arrayIndexOf(text); number >= 0)
        putIndex(holder, unsigned(number), value);
    else
        put(holder, ESStringPool::name(text), value);
}

bool ESContext::deleteByKey(ESObject* object, const ESValue& key)
{
    if (int64_t index = indexOf(key); index >= 0)
        return deleteProperty(object, unsigned(index));
    ESString* text = toEString(key);
    if (int number = ESStringPool::arrayIndexOf(text); number >= 0)
        return deleteProperty(object, unsigned(number));
    ESString* name = ESStringPool::findName(text);
    return !name || deleteProperty(object, name);
}

ESValue ESContext::incrementMember(const ESValue& object, const ESValue& key, int delta, bool post)
{
    ESObject* holder = ToObject(object);
    ESString* name = toName(key);
    double old = ToNumber(get(holder, name));
    put(holder, name, ESValue(old + delta));
    return ESValue(post ? old : old + delta);
}

ESValue ESContext::incrementDynamic(ESString* name, int delta, bool post)
{
    ESValue value;
    ESObject* holder = dynamicGet(name, value);
    double old = ToNumber(value);
    put(holder, name, ESValue(old + delta));
    return ESValue(post ? old : old + delta);
}

// The object that for-in steps through: its elements are the names that can be enumerated, in the order in
// which they were first met.
ESObject* ESContext::enumerate(ESObject* object)
{
    using Entry = std::pair<uint64_t, ESString*>;
    std::vector<Entry> names;
    for (ESObject* at = object; at; at = at->prototype) {
        at->tidy();
        if (ESArray* array = at->array(); array && at->kind() == ESObject::Array)
            for (uint32_t i = 0; i < array->count; ++i)
                if (array->at(i))
                    names.emplace_back(ESStringPool::meetNumber(i), numberToEString(i));
        for (const ESProperty& slot : at->properties())
            if (slot.isNamed() && !(slot.attributes & ESProperty::DontEnum))
                names.emplace_back(slot.name()->order(), slot.name());
    }
    auto before = [](const Entry& a, const Entry& b) { return a.first < b.first; };
    if (!std::is_sorted(names.begin(), names.end(), before))
        std::sort(names.begin(), names.end(), before);
    auto same = [](const Entry& a, const Entry& b) { return a.first == b.first; };
    names.erase(std::unique(names.begin(), names.end(), same), names.end());

    auto* list = static_cast<ESArray*>(m_heap.make(ESObject::Arguments, objectPrototype(), objectClass()));
    list->reserveElements(uint32_t(names.size()));
    for (size_t i = 0; i < names.size(); ++i)
        list->elements[i] = ESValue(names[i].second);
    list->count = list->filled = uint32_t(names.size());
    return list;
}
