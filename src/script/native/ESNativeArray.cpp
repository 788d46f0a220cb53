#include "script/native/ESNativeArray.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace {

uint32_t lengthOf(ESContext* context, ESObject* object)
{
    return context->toUint32(context->get(object, g_lengthString));
}

void putLength(ESContext* context, ESObject* object, double length)
{
    context->put(object, g_lengthString, ESValue(length));
}

void putIndex(ESContext* context, ESObject* object, double index, const ESValue& value)
{
    if (index < 2147483647)
        context->putIndex(object, unsigned(index), value);
    else
        context->put(object, ESStringPool::name(ESContext::numberToEString(index)), value);
}

// The object, when it is an array whose elements are all that there is to its indices: none stands in a slot,
// the prototypes have none, and `length`, in the first slot, can be written and is not below the elements.
ESArray* plainArray(ESObject* object)
{
    if (object->kind() != ESObject::Array || object->is(ESObject::IndexNames))
        return nullptr;
    auto* array = static_cast<ESArray*>(object);
    if (!array->slotCount() || array->slot(0).nameIndex != uint32_t(g_lengthString->index()) ||
        (array->slot(0).attributes & ESProperty::ReadOnly))
        return nullptr;
    double length = array->slot(0).value().number();
    if (array->slot(0).type != ESValue::Number || !(length >= array->count && length <= 4294967295.0))
        return nullptr;
    for (ESObject* at = array->prototype; at; at = at->prototype)
        if (at->is(ESObject::IndexNames) || (at->array() && at->array()->count))
            return nullptr;
    return array;
}

uint32_t plainLength(const ESArray* array)
{
    return uint32_t(array->slot(0).value().number());
}

void setPlainLength(ESArray* array, double length)
{
    array->slot(0).setValue(ESValue(length));
}

} // namespace

ESNativeArray::ESNativeArray() : ESNative("Array", Access::Array) {}

void ESNativeArray::setLength(ESContext* context, ESObject* object, const ESValue& value)
{
    uint32_t length = context->toUint32(value);
    ESProperty* slot = object->find(g_lengthString);
    uint32_t old = slot ? ESContext::toUint32(slot->value().isNumber() ? slot->value().number() : 0) : 0;
    if (slot && (slot->attributes & ESProperty::ReadOnly))
        return;
    object->define(g_lengthString, slot ? slot->attributes : unsigned(ESProperty::DontEnum),
                   ESValue(double(length)));
    if (length >= old)
        return;
    ESArray* array = object->array();
    if (array && old >= array->count)
        array->truncate(length);
    else
        for (uint32_t index = length; array && index < old; ++index)
            array->erase(index);
    if (!object->is(ESObject::IndexNames))
        return;
    for (ESProperty& element : object->properties()) {
        int64_t index = element.isNamed() ? element.name()->arrayIndex() : -1;
        if (index >= length && index < old && !(element.attributes & ESProperty::DontDelete))
            object->remove(&element);
    }
}

void ESNativeArray::put(ESContext* context, ESObject* object, ESString* name, const ESValue& value)
{
    ESArray* array = object->array();
    if (array && name == g_lengthString)
        setLength(context, object, value);
    else if (array && name->arrayIndex() >= 0)
        ESContext::putElement(array, unsigned(name->arrayIndex()), value, name);
    else
        ESContext::plainPut(object, name, value);
}

void ESNativeArray::arrayPut(ESContext* context, ESObject* array, unsigned index, const ESValue& value)
{
    if (value.isUndefined())
        ESContext::deleteProperty(array, index);
    else
        context->putIndex(array, index, value);
}

QString ESNativeArray::join(ESContext* context, ESObject* array, const QString& separator)
{
    QString text;
    uint32_t length = lengthOf(context, array);
    for (uint32_t i = 0; i < length && context->keepGoing(); ++i) {
        if (i)
            text += separator;
        ESValue element = context->getIndex(array, i);
        if (element.isNumber() || element.type() == ESValue::String)
            text += context->toEString(element)->view();
        else if (!element.isNull())
            text += context->toString(element, 10);
        if (text.size() > ESLimits::StringLength)
            throw ESFatalError("string too long");
    }
    return text;
}

ESObject* ESNativeArray::make(ESContext* context, int argc, const ESValue* argv)
{
    if (argc != 1 || !argv[0].isNumber())
        return context->newArray(argc, argv);
    double length = argv[0].number();
    if (ESContext::toUint32(length) != length)
        context->throwRangeError(QStringLiteral("bad length in array constructor"));
    ESObject* array = context->newArray(0, nullptr);
    putLength(context, array, length);
    return array;
}

ESValue ESNativeArray::concat(const ESCall& call)
{
    ESContext* context = call.context;
    ESArray* result = context->newArray(0, nullptr);
    unsigned count = 0;
    auto add = [&](const ESValue& value) {
        if (!context->isarray(value)) {
            putIndex(context, result, count++, value);
            return;
        }
        if (ESArray* from = plainArray(value.object())) {
            result->reserveElements(result->count + from->count);
            for (uint32_t i = 0; i < from->count; ++i)
                if (ESValue* element = from->at(i); element && !element->isUndefined())
                    result->insert(count++, *element);
            return;
        }
        uint32_t length = lengthOf(context, value.object());
        for (uint32_t i = 0; i < length && context->keepGoing(); ++i) {
            ESValue element = context->getIndex(value.object(), i);
            if (!element.isUndefined())
                putIndex(context, result, count++, element);
        }
    };
    add(ESValue(call.self));
    for (int i = 0; i < call.argc; ++i)
        add(call.argv[i]);
    putLength(context, result, count);
    return ESValue(result);
}

ESValue ESNativeArray::pop(const ESCall& call)
{
    ESContext* context = call.context;
    ESObject* self = call.self;
    if (ESArray* array = plainArray(self)) {
        uint32_t length = plainLength(array);
        if (!length)
            return g_undefined;
        ESValue* element = array->at(length - 1);
        ESValue last = element ? *element : g_undefined;
        array->erase(length - 1);
        setPlainLength(array, length - 1.0);
        return last;
    }
    uint32_t length = lengthOf(context, self);
    if (length == 0) {
        putLength(context, self, 0);
        return g_undefined;
    }
    ESValue last = context->getIndex(self, length - 1);
    ESContext::deleteProperty(self, length - 1);
    putLength(context, self, length - 1.0);
    return last;
}

ESValue ESNativeArray::push(const ESCall& call)
{
    ESArray* array = plainArray(call.self);
    if (array && plainLength(array) == array->count && array->accepts(array->count + uint32_t(call.argc))) {
        for (int i = 0; i < call.argc; ++i)
            array->insert(array->count, call.argv[i]);
        setPlainLength(array, array->count);
        return ESValue(double(array->count));
    }
    double length = lengthOf(call.context, call.self);
    for (int i = 0; i < call.argc; ++i)
        putIndex(call.context, call.self, length + i, call.argv[i]);
    putLength(call.context, call.self, length + call.argc);
    return ESValue(length + call.argc);
}

ESValue ESNativeArray::reverse(const ESCall& call)
{
    ESContext* context = call.context;
    ESObject* self = call.self;
    if (ESArray* array = plainArray(self);
        array && array->filled == plainLength(array) && !array->undefinedInside) {
        std::reverse(array->elements, array->elements + array->count);
        return ESValue(self);
    }
    uint32_t length = lengthOf(context, self);
    for (uint32_t low = 0; low < length / 2 && context->keepGoing(); ++low) {
        uint32_t high = length - 1 - low;
        ESValue first = context->getIndex(self, low);
        ESValue last = context->getIndex(self, high);
        arrayPut(context, self, low, last);
        arrayPut(context, self, high, first);
    }
    return ESValue(self);
}

ESValue ESNativeArray::shift(const ESCall& call)
{
    ESContext* context = call.context;
    ESObject* self = call.self;
    if (ESArray* array = plainArray(self)) {
        uint32_t length = plainLength(array);
        if (!length)
            return g_undefined;
        ESValue* element = array->at(0);
        ESValue first = element ? *element : g_undefined;
        // What moves and is undefined is an element no more.
        if (array->undefinedInside)
            array->dropUndefined(1);
        if (array->count)
            array->dropFirst();
        setPlainLength(array, length - 1.0);
        return first;
    }
    uint32_t length = lengthOf(context, self);
    if (length == 0) {
        putLength(context, self, 0);
        return g_undefined;
    }
    ESValue first = context->getIndex(self, 0);
    for (uint32_t i = 1; i < length && context->keepGoing(); ++i)
        arrayPut(context, self, i - 1, context->getIndex(self, i));
    ESContext::deleteProperty(self, length - 1);
    putLength(context, self, length - 1.0);
    return first;
}

ESValue ESNativeArray::slice(const ESCall& call)
{
    ESContext* context = call.context;
    ESObject* self = call.self;
    ESValue end = call.argument(1);
    int64_t length = lengthOf(context, self);
    auto clamped = [length](int64_t at) { return std::clamp(at < 0 ? at + length : at, int64_t(0), length); };
    int64_t from = clamped(context->toInt32(call.argument(0)));
    int64_t to = end.isUndefined() ? length : clamped(context->toInt32(end));
    ESArray* result = context->newArray(0, nullptr);
    if (ESArray* array = plainArray(self); array && from < to) {
        int64_t stop = std::min(to, int64_t(array->count));
        if (stop > from)
            result->reserveElements(uint32_t(stop - from));
        for (int64_t i = from; i < stop; ++i)
            if (ESValue* element = array->at(uint32_t(i)))
                context->putIndex(result, unsigned(i - from), *element);
        setPlainLength(result, double(to - from));
        return ESValue(result);
    }
    for (int64_t i = from; i < to && context->keepGoing(); ++i) {
        ESString* name = ESStringPool::findNumber(unsigned(i));
        if (name && ESContext::hasProperty(self, name))
            putIndex(context, result, double(i - from), context->get(self, name));
    }
    putLength(context, result, double(std::max(int64_t(0), to - from)));
    return ESValue(result);
}

namespace {

// Sorts by texts that are made once. Only for elements whose text takes no script to find out, and none of
// which is undefined: then it can be seen from nowhere that the elements were not compared one by one.
bool sortTexts(ESContext* context, ESArray* array)
{
    using Entry = std::pair<ESString*, ESValue>;
    if (array->filled != plainLength(array) || array->undefinedInside)
        return false;
    std::vector<Entry> entries;
    entries.reserve(array->count);
    for (uint32_t i = 0; i < array->count; ++i) {
        if (array->elements[i].isObject())
            return false;
        entries.emplace_back(context->toEString(array->elements[i]), array->elements[i]);
    }
    auto length = int64_t(entries.size());
    for (int64_t gap = (length + 3) / 5; gap >= 1; gap = (gap + 1) / 3) {
        for (int64_t i = length - gap - 1; i >= 0 && context->keepGoing(); --i) {
            Entry key = entries[size_t(i)];
            QStringView text = key.first->view();
            int64_t j = i + gap;
            for (; j < length && QtPrivate::compareStrings(text, entries[size_t(j)].first->view()) > 0;
                 j += gap)
                entries[size_t(j - gap)] = entries[size_t(j)];
            entries[size_t(j - gap)] = key;
        }
    }
    for (uint32_t i = 0; i < array->count; ++i)
        array->elements[i] = entries[i].second;
    return true;
}

} // namespace

ESValue ESNativeArray::sort(const ESCall& call)
{
    ESContext* context = call.context;
    ESObject* self = call.self;
    ESValue comparator = call.argument(0);
    const int64_t length = lengthOf(context, self);
    ESObject* function = nullptr;
    if (!comparator.isUndefined()) {
        if (!comparator.isObject() || !comparator.object()->isCallable())
            context->throwError(QStringLiteral("Array.prototype.sort argument is not a function"));
        function = comparator.object();
    }
    if (ESArray* array = plainArray(self); array && !function && sortTexts(context, array))
        return ESValue(self);
    auto compare = [&](const ESValue& a, const ESValue& b) -> double {
        if (a.isUndefined() || b.isUndefined())
            return a.isUndefined() ? (b.isUndefined() ? 0 : 1) : -1;
        if (function) {
            ESValue arguments[] = {a, b};
            ESValue result;
            context->call(function, self, 2, arguments, &result);
            return context->ToNumber(result);
        }
        ESString* left = context->toEString(a);
        ESString* right = context->toEString(b);
        return QtPrivate::compareStrings(left->view(), right->view());
    };

    for (int64_t gap = (length + 3) / 5; gap >= 1; gap = (gap + 1) / 3) {
        for (int64_t i = length - gap - 1; i >= 0 && context->keepGoing(); --i) {
            ESValue key = context->getIndex(self, unsigned(i));
            int64_t last = i;
            for (int64_t j = i + gap; j < length; j += gap) {
                ESValue element = context->getIndex(self, unsigned(j));
                double order = compare(key, element);
                if (order <= 0)
                    break;
                arrayPut(context, self, unsigned(j - gap), element);
                last = j;
            }
            if (last != i)
                arrayPut(context, self, unsigned(last), key);
        }
    }
    return ESValue(self);
}

ESValue ESNativeArray::toString(const ESCall& call)
{
    if (!call.context->isarray(ESValue(call.self)))
        call.context->throwTypeError(QStringLiteral("Array.prototype.toString requires an array"));
    return ESValue(ESStringPool::text(join(call.context, call.self, QStringLiteral(","))));
}

void ESNativeArray::install(ESContext* context)
{
    static constexpr ESHandler Make = [](const ESCall& call) {
        return ESValue(make(call.context, call.argc, call.argv));
    };
    static constexpr Builtin MemberTable[] = {
        row("toString", "Array.prototype.toString", 0, toString),
        row("toLocaleString", "Array.prototype.toLocaleString", 0, toString),
        row("concat", "Array.prototype.concat", 0, concat),
        row("pop", "Array.prototype.pop", 0, pop),
        row("push", "Array.prototype.push", 0, push),
        row("reverse", "Array.prototype.reverse", 0, reverse),
        row("shift", "Array.prototype.shift", 0, shift),
        row("slice", "Array.prototype.slice", 2, slice),
        row("sort", "Array.prototype.sort", 1, sort),
    };
    installConstructor(context, constructorRow("Array", 0, Make), context->arrayPrototype());
    installMembers(context, context->arrayPrototype(), MemberTable);
}

ESObject* ESNativeArray::construct(ESContext* context, ESObject*, int argc, ESValue* argv)
{
    return make(context, argc, argv);
}
