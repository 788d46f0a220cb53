#include "script/engine/ESConversions.h"

#include "script/engine/ESException.h"
#include "script/engine/ESNumberText.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESOpcodes.h"
#include "script/engine/ESString.h"
#include "script/engine/ESStringPool.h"
#include "script/engine/limits.h"

#include <charconv>
#include <cmath>
#include <cstring>

namespace {

QStringView textOf(const ESValue& value)
{
    return value.type() == ESValue::String ? value.string()->view() : QStringView(*value.text());
}

ESString* owned(const ESValue& value)
{
    return value.type() == ESValue::String ? value.string() : ESStringPool::text(*value.text());
}

// A double as text: whole numbers as 64-bit integers in the radix, beyond that clamped; others with six
// significant digits. Returns the length.
int formatNumber(double number, int radix, char (&buffer)[80])
{
    char* end = buffer + sizeof buffer;
    auto word = [&](const char* text) { return int(stpcpy(buffer, text) - buffer); };
    if (std::isnan(number))
        return word("NaN");
    if (std::isinf(number))
        return word(number < 0 ? "-Infinity" : "Infinity");
    if (number != std::trunc(number))
        return int(std::to_chars(buffer, end, number, std::chars_format::general, 6).ptr - buffer);
    if (radix < 2 || radix > 36)
        radix = 10;
    constexpr double TwoTo63 = 9223372036854775808.0;
    char* at = buffer;
    double magnitude = std::fabs(number);
    uint64_t whole;
    if (magnitude < TwoTo63)
        whole = uint64_t(magnitude);
    else if (radix == 10)
        whole = number < 0 ? uint64_t(1) << 63 : (uint64_t(1) << 63) - 1;
    else
        whole = magnitude < 2 * TwoTo63 ? uint64_t(magnitude) : ~uint64_t(0);
    if (number < 0)
        *at++ = '-';
    return int(std::to_chars(at, end, whole, radix).ptr - buffer);
}

double parseNumber(QStringView text)
{
    QStringView stripped = text.trimmed();
    if (stripped.isEmpty())
        return 0;
    bool ok = false;
    if (stripped.startsWith(u"0x", Qt::CaseInsensitive)) {
        // The sign that the conversion would take behind the prefix is no digit.
        QStringView digits = stripped.mid(2);
        unsigned long value = 0;
        if (!digits.isEmpty() && digits[0] != u'-' && digits[0] != u'+')
            value = digits.toULong(&ok, 16);
        return ok ? double(value) : NaN;
    }
    bool negative = stripped[0] == u'-';
    QStringView magnitude = negative || stripped[0] == u'+' ? stripped.mid(1) : stripped;
    double value = Infinity;
    if (magnitude != u"Infinity" && !decimalToNumber(magnitude, value))
        return NaN;
    return negative ? -value : value;
}

} // namespace

bool ESConversions::toBoolean(const ESValue& value)
{
    switch (value.type()) {
    case ESValue::Undefined:
    case ESValue::Null: return false;
    case ESValue::Boolean:
    case ESValue::Number: return value.number() != 0 && !std::isnan(value.number());
    case ESValue::Text: return !value.text()->isEmpty();
    case ESValue::String: return value.string()->length() > 0;
    case ESValue::Object: return true;
    default: throw ESFatalError("bad type in toBoolean");
    }
}

bool ESConversions::identical(const ESValue& a, const ESValue& b)
{
    if (a.isString() && b.isString()) {
        if (a.type() == ESValue::String && b.type() == ESValue::String) {
            const ESString* left = a.string();
            const ESString* right = b.string();
            if (left == right)
                return true;
            if ((left->isName() && right->isName()) || left->length() != right->length())
                return false;
        }
        return textOf(a) == textOf(b);
    }
    if (a.type() != b.type())
        return false;
    switch (a.type()) {
    case ESValue::Undefined:
    case ESValue::Null: return true;
    case ESValue::Boolean:
    case ESValue::Number: return a.number() == b.number();
    default: return a.bits() == b.bits();
    }
}

bool ESConversions::equal(ESValue a, ESValue b)
{
    for (;;) {
        if (a.type() == b.type() || (a.isString() && b.isString()))
            return identical(a, b);
        bool aNone = a.isUndefined() || a.isNull();
        bool bNone = b.isUndefined() || b.isNull();
        if (aNone || bNone)
            return aNone && bNone;
        if (a.isBoolean() || (a.isString() && b.isNumber()))
            hardToNumber(a);
        else if (b.isBoolean() || (b.isString() && a.isNumber()))
            hardToNumber(b);
        else if (a.isObject())
            hardToPrimitive(a, NoHint);
        else if (b.isObject())
            hardToPrimitive(b, NoHint);
        else
            return false;
    }
}

bool ESConversions::less(const ESValue& left, const ESValue& right)
{
    ESValue a = CoerceToVal(left, NumberHint);
    ESValue b = CoerceToVal(right, NumberHint);
    if (a.isString() && b.isString())
        return textOf(a) < textOf(b);
    double l = ToNumber(a);
    return l < ToNumber(b);
}

bool ESConversions::lessOrEqual(const ESValue& left, const ESValue& right)
{
    ESValue a = CoerceToVal(left, NumberHint);
    ESValue b = CoerceToVal(right, NumberHint);
    if (a.isString() && b.isString())
        return textOf(a) <= textOf(b);
    double l = ToNumber(a);
    return l <= ToNumber(b);
}

ESString* ESConversions::numberToEString(double number, int radix)
{
    // The texts of the numbers that are met most often are kept as names.
    if (radix == 10 && number >= 0 && number < ESLimits::NumberStrings) {
        auto whole = unsigned(number);
        if (whole == number)
            return ESStringPool::number(whole);
    }
    char buffer[80];
    int length = formatNumber(number, radix, buffer);
    return ESStringPool::text(buffer, length);
}

QString ESConversions::toString(const ESValue& value, int radix)
{
    switch (value.type()) {
    case ESValue::Undefined: return g_undefinedString->text();
    case ESValue::Null: return g_nullString->text();
    case ESValue::Boolean: return (value.bits() ? g_trueString : g_falseString)->text();
    case ESValue::Number: {
        char buffer[80];
        int length = formatNumber(value.number(), radix, buffer);
        return QString::fromLatin1(buffer, length);
    }
    case ESValue::Text: return *value.text();
    case ESValue::String: return value.string()->text();
    case ESValue::Object: {
        ESValue primitive = value;
        hardToPrimitive(primitive, StringHint);
        return toString(primitive, radix);
    }
    default: throw ESFatalError("unknown type in toString");
    }
}

ESString* ESConversions::toEString(const ESValue& value)
{
    switch (value.type()) {
    case ESValue::String: return value.string();
    case ESValue::Number: return numberToEString(value.number());
    case ESValue::Object: {
        ESValue primitive = value;
        hardToPrimitive(primitive, StringHint);
        return toEString(primitive);
    }
    case ESValue::Undefined: return g_undefinedString;
    case ESValue::Null: return g_nullString;
    case ESValue::Boolean: return value.bits() ? g_trueString : g_falseString;
    default: return ESStringPool::text(toString(value, 10));
    }
}

double ESConversions::convertToNumber(const ESValue& value)
{
    switch (value.type()) {
    case ESValue::Undefined: return NaN;
    case ESValue::Null: return 0;
    case ESValue::Boolean:
    case ESValue::Number: return value.number();
    case ESValue::Text:
    case ESValue::String: return parseNumber(textOf(value));
    case ESValue::Object: {
        ESValue primitive = value;
        hardToPrimitive(primitive, NumberHint);
        return convertToNumber(primitive);
    }
    default: throw ESFatalError("bad type in toNumber");
    }
}

uint32_t ESConversions::hugeToUint32(double number)
{
    if (std::isnan(number) || std::isinf(number))
        return 0;
    double low = std::fmod(std::trunc(number), 4294967296.0);
    return uint32_t(int64_t(low));
}

double ESConversions::toInteger(const ESValue& value)
{
    double number = ToNumber(value);
    return std::isnan(number) ? 0 : std::trunc(number);
}

ESObject* ESConversions::convertToObject(const ESValue& value)
{
    switch (value.type()) {
    case ESValue::Undefined: typeError(QStringLiteral("can't convert undefined to an object"));
    case ESValue::Null: typeError(QStringLiteral("can't convert null to an object"));
    case ESValue::Boolean:
    case ESValue::Number: return wrap(value);
    case ESValue::Text:
    case ESValue::String: return wrap(ESValue(owned(value)));
    case ESValue::Object: return value.object();
    default: throw ESFatalError("unknown type in toObject");
    }
}

void ESConversions::hardToPrimitive(ESValue& value, int hint)
{
    if (!value.isObject())
        return;
    if (isGlobal(value.object())) {
        value = ESValue(ESStringPool::intern("[object global]"));
        return;
    }
    ESValue result;
    defaultValue(value.object(), hint, &result);
    if (result.isObject())
        throw ESFatalError("bad type in toPrimitive");
    value = result;
}

void ESConversions::defaultValue(ESObject* object, int hint, ESValue* result)
{
    bool textFirst = hint == StringHint || (hint == NoHint && prefersText(object));
    ESString* order[] = {textFirst ? g_toStringString : g_valueOfString,
                         textFirst ? g_valueOfString : g_toStringString};
    for (ESString* name : order) {
        ESValue returned;
        switch (callMethod(object, name, &returned)) {
        case Method::Missing: continue;
        case Method::Called:
            if (returned.isUndefined() || returned.isObject())
                continue;
            *result = returned;
            return;
        case Method::Stopped: // has no result, and that is no fault
            *result = returned.isObject() ? g_undefined : returned;
            return;
        }
    }
    typeError(QStringLiteral("type error: no default value"));
}

ESValue ESConversions::add(ESValue left, ESValue right)
{
    coerceToVal(left, NoHint);
    coerceToVal(right, NoHint);
    if (left.isString() || right.isString()) {
        ESString* head = toEString(left);
        return ESValue(ESStringPool::concat(head, toEString(right)));
    }
    double l = ToNumber(left);
    return ESValue(l + ToNumber(right));
}

ESValue ESConversions::binary(int opcode, const ESValue& left, const ESValue& right)
{
    if (opcode == VM_ADD)
        return add(left, right);
    double l = ToNumber(left);
    double r = ToNumber(right);
    switch (opcode) {
    case VM_SUB: return ESValue(l - r);
    case VM_MUL: return ESValue(l * r);
    case VM_DIV: return ESValue(l / r);
    case VM_MOD: return ESValue(std::fmod(l, r));
    case VM_BITAND: return ESValue(double(toInt32(l) & toInt32(r)));
    case VM_BITOR: return ESValue(double(toInt32(l) | toInt32(r)));
    case VM_BITXOR: return ESValue(double(toInt32(l) ^ toInt32(r)));
    case VM_SHL: return ESValue(double(int32_t(toUint32(l) << (toUint32(r) & 31))));
    case VM_SHR: return ESValue(double(toInt32(l) >> (toUint32(r) & 31)));
    default: return ESValue(double(toUint32(l) >> (toUint32(r) & 31)));
    }
}
