// The steps that nearly all records take, for the sources of readers.
#pragma once

#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFReader.h"

#include "zoff/ZOFFSymbol.h"
#include "zoff/limits.h"

#include <bit>
#include <cstring>

// Eight bytes of the file, the first one lowest.
inline uint64_t load(const unsigned char* at)
{
    uint64_t bytes;
    memcpy(&bytes, at, sizeof bytes);
    return std::endian::native == std::endian::little ? bytes : __builtin_bswap64(bytes);
}

// What a wide literal has behind its tag; nine bytes must be there. False, and nothing taken, for one that is
// out of the ordinary: empty, or longer than a number.
inline bool takeNumber(const unsigned char*& at, uint64_t& value)
{
    unsigned count = *at;
    if (count - 1 > 7) [[unlikely]]
        return false;
    value = __builtin_bswap64(load(at + 1)) >> (64 - 8 * count);
    at += 1 + count;
    return true;
}

inline void ZOFFReader::pushEntry(const Entry& entry)
{
    if (m_depth >= ZOFFLimits::StackEntries) [[unlikely]]
        bad("reader stack overflow");
    m_stack[m_depth++] = entry;
}

inline ZOFFReader::Entry ZOFFReader::popEntry()
{
    if (m_depth == 0) [[unlikely]]
        bad("reader empty stack");
    return m_stack[--m_depth];
}

inline void ZOFFReader::pushConst(int64_t value)
{
    Entry entry;
    entry.kind = Entry::Const;
    entry.value = value;
    pushEntry(entry);
}

inline int64_t ZOFFReader::popConst()
{
    Entry entry = popEntry();
    if (entry.kind == Entry::Const) [[likely]]
        return entry.value;
    ZOFFObject* object = entry.objectOfKind(ZOFFKind::ConstExpr);
    if (!object)
        badOperand("constant expression");
    return static_cast<ZOFFConstExpr*>(object)->value();
}

inline int64_t ZOFFReader::popConst(uint64_t min, uint64_t max)
{
    int64_t value = popConst();
    if (uint64_t(value) < min || uint64_t(value) > max) [[unlikely]]
        outOfRange();
    return value;
}

inline ZOFFSymbol* ZOFFReader::popSymbol()
{
    ZOFFObject* object = popEntry().objectOfKind(ZOFFKind::Symbol);
    if (!object) [[unlikely]]
        notASymbol();
    return static_cast<ZOFFSymbol*>(object);
}

inline void ZOFFReader::push(ZOFFObject* object)
{
    Entry entry;
    entry.setObject(object);
    pushEntry(entry);
}
