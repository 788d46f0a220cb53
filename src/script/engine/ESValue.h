// A script value: a type tag and eight bytes of payload, passed by value. What the payload points at
// belongs to somebody else: objects to their context, interned strings to the pool, and a Text to the
// native code that made it.
#pragma once

#include <bit>
#include <concepts>
#include <cstdint>
#include <limits>

class QString;
struct ESObject;
class ESString;

inline constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double Infinity = std::numeric_limits<double>::infinity();

class ESValue {
public:
    enum Type : int32_t {
        Undefined = 0,
        Null = 1,
        Boolean = 2, // payload 0.0 or 1.0
        Number = 3,
        Text = 4, // a QString that native code owns; it must outlive the value
        Object = 5,
        Hole = 6,  // no value: an element that an array does not have
        String = 7 // interned; everything that the engine produces
    };

    constexpr ESValue() = default;
    // Copied member by member: two moves that follow the two of the last writing forward quicker than one
    // wide move, and leave the machine's locals in registers.
    constexpr ESValue(const ESValue& other) : m_type(other.m_type), m_bits(other.m_bits) {}
    constexpr ESValue& operator=(const ESValue& other)
    {
        m_type = other.m_type;
        m_bits = other.m_bits;
        return *this;
    }
    constexpr ESValue(double number) : m_type(Number), m_bits(std::bit_cast<uint64_t>(number)) {}
    ESValue(ESObject* object) : ESValue(Object, reinterpret_cast<uintptr_t>(object)) {}
    ESValue(ESString* string) : ESValue(String, reinterpret_cast<uintptr_t>(string)) {}
    explicit ESValue(const QString* text) : ESValue(Text, reinterpret_cast<uintptr_t>(text)) {}
    constexpr ESValue(int32_t type, uint64_t bits) : m_type(type), m_bits(bits) {}
    static constexpr ESValue null() { return {Null, 0}; }
    static constexpr ESValue boolean(bool b) { return {Boolean, b ? std::bit_cast<uint64_t>(1.0) : 0}; }
    // A boolean is made by boolean(), so that no number is taken for one.
    template <std::same_as<bool> T> ESValue(T) = delete;

    constexpr int32_t type() const { return m_type; }
    constexpr uint64_t bits() const { return m_bits; }

    constexpr bool isUndefined() const { return m_type == Undefined; }
    constexpr bool isNull() const { return m_type == Null; }
    constexpr bool isBoolean() const { return m_type == Boolean; }
    constexpr bool isNumber() const { return m_type == Number; }
    constexpr bool isString() const { return m_type == Text || m_type == String; }
    constexpr bool isObject() const { return m_type == Object; }

    // Each is valid for its own type only; number() for booleans as well.
    constexpr double number() const { return std::bit_cast<double>(m_bits); }
    ESObject* object() const { return reinterpret_cast<ESObject*>(uintptr_t(m_bits)); }
    ESString* string() const { return reinterpret_cast<ESString*>(uintptr_t(m_bits)); }
    const QString* text() const { return reinterpret_cast<const QString*>(uintptr_t(m_bits)); }

private:
    int32_t m_type = Undefined;
    uint64_t m_bits = 0;
};

inline constexpr ESValue g_undefined;
inline constexpr ESValue g_null = ESValue::null();
inline constexpr ESValue g_true = ESValue::boolean(true);
inline constexpr ESValue g_false = ESValue::boolean(false);

inline bool isnull(const ESValue& v)
{
    return v.isNull();
}
inline bool isstr(const ESValue& v)
{
    return v.isString();
}
inline bool isnum(const ESValue& v)
{
    return v.isNumber();
}
inline bool isobj(const ESValue& v)
{
    return v.isObject();
}
