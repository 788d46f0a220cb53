// Names and members: the plain behaviour of objects, the scope chain, and what the machine does for
// members out of line.
#include "script/engine/ESContext.h"

#include <algorithm>

void ESContext::plainPut(ESObject* object, ESString* name, const ESValue& value)
{
    if (ESProperty* slot = object->find(name)) {
        if (!(slot->attributes & ESProperty::ReadOnly))
            slot->setValue(value);
        return;
    }
    object->append(name, 0, value);
}

bool ESContext::hasProperty(ESObject* object, ESString* name)
{
    for (; object; object = object->prototype)
        if (object->find(name))
            return true;
    return false;
}

bool ESContext::propertyIsEnumerable(ESObject* object, ESString* name)
{
    ESProperty* slot = object->find(name);
    return slot && !(slot->attributes & ESProperty::DontEnum);
}

bool ESContext::deleteProperty(ESObject* object, ESString* name)
{
    ESProperty* slot = object->find(name);
    if (!slot)
        return true;
    if (slot->attributes & ESProperty::DontDelete)
        return false;
    *slot = ESProperty();
    return true;
}

bool ESContext::deleteProperty(ESObject* object, unsigned index)
{
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

ESValue ESContext::getIndex(ESObject* object, unsigned index)
{
    ESString* name = ESStringPool::findNumber(index);
    return name ? get(object, name) : g_undefined;
}

// Names.

ESObject* ESContext::dynamicGet(ESString* name, ESValue& value)
{
    for (ESObject* cell = m_scope; cell; cell = cell->prototype) {
        ESObject* object = cell->value.object();
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
    for (ESObject* cell = m_scope; cell; cell = cell->prototype) {
        if (hasProperty(cell->value.object(), name)) {
            put(cell->value.object(), name, value);
            return;
        }
    }
    put(m_global, name, value);
}

bool ESContext::dynamicDelete(ESString* name)
{
    for (ESObject* cell = m_scope; cell; cell = cell->prototype)
        if (hasProperty(cell->value.object(), name))
            return deleteProperty(cell->value.object(), name);
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
    if (function && function->builtinId >= 0) {
        if (value.type() == ESValue::String && function->cls == m_realm.cls(ESRealm::String)) {
            m_stringReceiver->value = value;
            return m_stringReceiver;
        }
        if (value.isNumber() && function->cls == m_realm.cls(ESRealm::Number)) {
            m_numberReceiver->value = value;
            return m_numberReceiver;
        }
    }
    return ToObject(value);
}

ESValue ESContext::getByKey(const ESValue& object, const ESValue& key)
{
    if (object.type() == ESValue::Undefined || object.isNull())
        ToObject(object);
    ESValue holder = object;
    return memberOf(holder, toEString(key));
}

void ESContext::putByKey(const ESValue& object, const ESValue& key, const ESValue& value)
{
    ESObject* holder = ToObject(object);
    ESString* name = toEString(key);
    put(holder, name, value);
}

// Puts an array element past the virtual call, for the names that the machine knows to be indices.
void ESContext::putElement(ESObject* array, ESString* name, const ESValue& value)
{
    ESProperty* data = array->properties.data();
    uint32_t index = uint32_t(name->arrayIndex());
    // Nothing can be at or beyond the bound, so there is no need to look for it.
    bool fresh = index >= array->indexBound && !array->call && array->properties.count() &&
                 data[0].name == g_lengthString && !(data[0].attributes & ESProperty::ReadOnly);
    if (!fresh) {
        array->cls->put(this, array, name, value);
        return;
    }
    array->append(name, 0, value);
    ESProperty& length = array->properties[0];
    if (length.value().number() <= index)
        length.setValue(ESValue(double(index) + 1));
}

ESValue ESContext::incrementMember(const ESValue& object, const ESValue& key, int delta, bool post)
{
    ESObject* holder = ToObject(object);
    ESString* name = toEString(key);
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

// The object that for-in steps through: `index` and `length` in the first two slots, and behind them the
// names that can be enumerated, in the order of the pool.
ESObject* ESContext::enumerate(ESObject* object)
{
    std::vector<ESString*> names;
    for (ESObject* at = object; at; at = at->prototype)
        for (const ESProperty& slot : at->properties)
            if (slot.name && !(slot.attributes & ESProperty::DontEnum))
                names.push_back(slot.name);
    std::sort(names.begin(), names.end(), [](ESString* a, ESString* b) { return a->index() < b->index(); });
    names.erase(std::unique(names.begin(), names.end()), names.end());

    ESObject* list = mkplain();
    list->properties.reserve(uint32_t(names.size()) + 2);
    list->append(g_indexString, 0, ESValue(0.0));
    list->append(g_lengthString, 0, ESValue(double(names.size())));
    for (size_t i = 0; i < names.size(); ++i)
        list->append(ESStringPool::number(unsigned(i)), 0, ESValue(names[i]));
    return list;
}
