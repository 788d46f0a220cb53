// The steps that every instruction of an executable takes several times, for the reader's own sources.
#pragma once

#include "zoff/ZOFFReader.h"

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
