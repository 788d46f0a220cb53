// The line loop of the text readers, in a header of its own since each reader gets its own copy with
// the handler built in.
#pragma once

#include "loadfile/TextLoadFile.h"
#include "support/HException.h"

#include <cstring>

template <class HandleLine>
bool TextLoadFile::forEachLine(std::span<const char> text, size_t longest, HandleLine handleLine)
{
    const char* at = text.data();
    const char* end = at + text.size();
    try {
        while (at < end) {
            size_t window = std::min(size_t(end - at), longest);
            const void* newline = memchr(at, '\n', window);
            const char* lineEnd = newline ? static_cast<const char*>(newline) + 1 : at + window;
            if (!handleLine(Cursor{at, lineEnd}))
                return true;
            ++m_line;
            at = lineEnd;
        }
    } catch (HException& failure) {
        appendLineAndThrow(failure);
    }
    return false;
}
