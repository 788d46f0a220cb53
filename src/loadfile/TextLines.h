// The line loop of the text readers, in a header of its own since each reader gets its own copy with
// the handler built in.
#pragma once

#include "loadfile/FileInput.h"
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

template <class HandleLine>
bool TextLoadFile::forEachLine(const char* file, size_t longest, HandleLine handleLine)
{
    // Small enough to stay in the cache between the system's copy and the reader.
    constexpr size_t BufferSize = 128 * 1024;
    auto buffer = std::make_unique_for_overwrite<char[]>(BufferSize);
    FileInput input(file);
    size_t held = 0;
    for (;;) {
        size_t got = input.read(buffer.get() + held, BufferSize - held);
        if (got == 0)
            return forEachLine(std::span<const char>(buffer.get(), held), longest, handleLine);
        held += got;
        // Whole lines go out. Without a newline, what is certain: pieces of the longest length.
        const void* newline = memrchr(buffer.get(), '\n', held);
        size_t whole =
            newline ? size_t(static_cast<const char*>(newline) + 1 - buffer.get()) : held / longest * longest;
        if (forEachLine(std::span<const char>(buffer.get(), whole), longest, handleLine))
            return true;
        held -= whole;
        memmove(buffer.get(), buffer.get() + whole, held);
    }
}
