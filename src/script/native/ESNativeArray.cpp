#include "script/native/ESNativeArray.h"

#include <algorithm>
#include <cmath>

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
    context->put(object, ESContext::numberToEString(index), value);
}

} // namespace

ESNativeArray::ESNativeArray() : ESNative("Array", Access::Array) {}

void ESNativeArray::setLength(ESContext* context, ESObject* array, const ESValue& value)
{
    uint32_t length = context->toUint32(value);
    ESProperty* slot = array->find(g_lengthString);
    uint32_t old = slot ? ESContext::toUint32(slot->value().isNumber() ? slot->value().number() : 0) : 0;
    if (slot && (slot->attributes & ESProperty::ReadOnly))
        return;
    array->define(g_lengthString, slot ? slot->attributes : unsigned(ESProperty::DontEnum),
                  ESValue(double(length)));
    if (length >= old)
        return;
    if (old - length <= array->properties.count()) {
        for (uint32_t index = length; index < old; ++index)
            ESContext::deleteProperty(array, index);
    } else {
        // Far fewer properties than indices.
        for (ESProperty& element : array->properties) {
            int64_t index = element.name ? element.name->arrayIndex() : -1;
            if (index >= length && index < old && !(element.attributes & ESProperty::DontDelete))
                element = ESProperty();
        }
    }
}

void ESNativeArray::put(ESContext* context, ESObject* array, ESString* name, const ESValue& value)
{
    if (name == g_lengthString && !array->call) {
        setLength(context, array, value);
        return;
    }
    int index = name->arrayIndex();
    bool fresh = index >= 0 && uint32_t(index) >= array->indexBound;
    if (fresh)
        array->append(name, 0, value);
    else
        ESContext::plainPut(array, name, value);
    if (index < 0 || array->call)
        return;
    ESProperty* slot = array->find(g_lengthString);
    if (!slot)
        array->append(g_lengthString, ESProperty::DontEnum, ESValue(double(index) + 1));
    else if (double(index) >= slot->value().number() && !(slot->attributes & ESProperty::ReadOnly))
        slot->setValue(ESValue(double(index) + 1));
}

void ESNativeArray::arrayPut(ESContext* context, ESObject* array, unsigned index, const ESValue& value)
{
    if (value.isUndefined())
        ESContext::deleteProperty(array, index);
    else
        context->put(array, ESStringPool::number(index), value);
}

QString ESNativeArray::join(ESContext* context, ESObject* array, const QString& separator)
{
    QString text;
    uint32_t length = lengthOf(context, array);
    for (uint32_t i = 0; i < length && context->keepGoing(); ++i) {
        if (i)
            text += separator;
        ESValue element = context->getIndex(array, i);
        if (!element.isNull())
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
    ESObject* result = context->newArray(0, nullptr);
    unsigned count = 0;
    auto add = [&](const ESValue& value) {
        if (!context->isarray(value)) {
            putIndex(context, result, count++, value);
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
    ESObject* result = context->newArray(0, nullptr);
    for (int64_t i = from; i < to && context->keepGoing(); ++i) {
        ESString* name = ESStringPool::findNumber(unsigned(i));
        if (name && ESContext::hasProperty(self, name))
            putIndex(context, result, double(i - from), context->get(self, name));
    }
    putLength(context, result, double(std::max(int64_t(0), to - from)));
    return ESValue(result);
}

ESValue ESNativeArray::sort(const ESCall& call)
{
    ESContext* context = call.context;
    ESObject* self = call.self;
    ESValue comparator = call.argument(0);
    const int64_t length = lengthOf(context, self);
    ESObject* function = nullptr;
    if (!comparator.isUndefined()) {
        if (!comparator.isObject() || !comparator.object()->call)
            context->throwError(QStringLiteral("Array.prototype.sort argument is not a function"));
        function = comparator.object();
    }
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
        return left == right ? 0 : left->text() < right->text() ? -1 : 1;
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
    return ESValue(ESStringPool::intern(join(call.context, call.self, QStringLiteral(","))));
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
