// Conversions between the types of values, and the operators on values of any type. What takes the object
// world (methods of objects, wrappers, errors) is asked of the context, which derives from this.
#pragma once

#include "script/engine/ESStringPool.h"
#include "script/engine/ESValue.h"

#include <QString>
#include <cstdint>

class ESConversions {
public:
    // What a conversion to a primitive is wanted for; the numbers are type tags, 6 for none.
    enum Hint { NumberHint = 3, StringHint = 4, NoHint = 6 };

    static bool toBoolean(const ESValue& value);
    static ESValue es_not(const ESValue& value) { return ESValue::boolean(!toBoolean(value)); }
    static bool identical(const ESValue& a, const ESValue& b);
    bool equal(ESValue a, ESValue b);
    bool less(const ESValue& a, const ESValue& b);
    bool lessOrEqual(const ESValue& a, const ESValue& b);

    QString toString(const ESValue& value, int radix = 10);
    // The text of a value; and its name, where it serves to find a property.
    ESString* toEString(const ESValue& value);
    ESString* toName(const ESValue& value) { return ESStringPool::name(toEString(value)); }
    static ESString* numberToEString(double number, int radix = 10);

    double ToNumber(const ESValue& value)
    {
        return value.isNumber() ? value.number() : convertToNumber(value);
    }
    void hardToNumber(ESValue& value) { value = ESValue(convertToNumber(value)); }
    static int32_t toInt32(double number) { return int32_t(toUint32(number)); }
    static uint32_t toUint32(double number)
    {
        // Truncation to 64 bits is the sign times the floor of the magnitude; its low half is the remainder.
        if (number > -9.2e18 && number < 9.2e18)
            return uint32_t(int64_t(number));
        return hugeToUint32(number);
    }
    int32_t toInt32(const ESValue& value) { return toInt32(ToNumber(value)); }
    uint32_t toUint32(const ESValue& value) { return toUint32(ToNumber(value)); }
    uint16_t toUint16(const ESValue& value) { return uint16_t(toUint32(value)); }
    double toInteger(const ESValue& value);

    ESObject* ToObject(const ESValue& value)
    {
        return value.isObject() ? value.object() : convertToObject(value);
    }
    void hardToObject(ESValue& value) { value = ESValue(convertToObject(value)); }
    void coerceToObj(ESValue& value)
    {
        if (!value.isObject())
            hardToObject(value);
    }
    ESValue CoerceToObj(ESValue value) { return coerceToObj(value), value; }

    void hardToPrimitive(ESValue& value, int hint);
    void coerceToVal(ESValue& value, int hint)
    {
        if (value.isObject())
            hardToPrimitive(value, hint);
    }
    ESValue CoerceToVal(ESValue value, int hint) { return coerceToVal(value, hint), value; }
    // The first of `valueOf` and `toString` that gives a primitive; the other way round where a text is
    // wanted. Throws TypeError "type error: no default value".
    void defaultValue(ESObject* object, int hint, ESValue* result);

    // A binary operator of the instruction set on any two values.
    ESValue binary(int opcode, const ESValue& left, const ESValue& right);
    ESValue add(ESValue left, ESValue right);

protected:
    ESConversions() = default;
    ~ESConversions() = default;

    enum class Method { Missing, Called, Stopped };
    // Calls a method of the object without arguments.
    virtual Method callMethod(ESObject* object, ESString* name, ESValue* result) = 0;
    // The wrapper object of a boolean, number or interned string.
    virtual ESObject* wrap(const ESValue& primitive) = 0;
    virtual bool isGlobal(const ESObject* object) const = 0;
    virtual bool prefersText(const ESObject* object) const = 0;
    [[noreturn]] virtual void typeError(const QString& text) = 0;

private:
    double convertToNumber(const ESValue& value);
    ESObject* convertToObject(const ESValue& value);
    static uint32_t hugeToUint32(double number);
};
