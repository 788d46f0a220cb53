// Interned narrow strings, compared by address: two texts that are equal after interning are one
// object. Entries are never freed. For object-file and debugger code; the main thread only.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

class HString {
public:
    // How a text is changed on its way in. AsIs takes it as it stands. Otherwise the low four bits
    // choose the case (0 upper, 1 lower, other values none) and the high four bits the separator
    // (16 turns backslashes into slashes, 32 slashes into backslashes).
    using Modifier = unsigned;
    static constexpr Modifier AsIs = 2;
    static constexpr Modifier LowerCase = 1;
    static constexpr Modifier ToSlash = 16;
    static constexpr Modifier ToBackslash = 32;

    static const HString* intern(const char* text, int length, Modifier modifier);
    static const HString* intern(const char* text, Modifier modifier = AsIs);
    static const HString* intern(const std::string& text, Modifier modifier = AsIs);
    static const HString* intern(std::string_view text, Modifier modifier = AsIs);
    // The decimal text of a number.
    static const HString* intern(long number);

    const char* c_str() const { return reinterpret_cast<const char*>(this + 1); }
    int length() const { return m_length; }
    std::string_view view() const { return {c_str(), size_t(m_length)}; }
    unsigned hash() const { return m_hash; }
    // Position in the order of interning, from 0: a sort key that two runs share, which an address
    // is not.
    unsigned serial() const { return m_serial; }

    // Orders by serial.
    struct Earlier {
        bool operator()(const HString* a, const HString* b) const { return a->m_serial < b->m_serial; }
    };

private:
    HString(unsigned hash, int length, unsigned serial) : m_hash(hash), m_length(length), m_serial(serial) {}

    // The text stands right behind the entry, with a zero at its end.
    unsigned m_hash;
    int m_length;
    unsigned m_serial;
};
