#include "support/HByteStream.h"

#include "support/HException.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <sys/stat.h>

HByteStream::HByteStream() = default;

HByteStream::~HByteStream()
{
    free(m_start);
}

void HByteStream::adopt(unsigned char* buffer, size_t size)
{
    free(m_start);
    m_start = m_read = buffer;
    m_dataEnd = m_capacityEnd = buffer + size;
}

void HByteStream::put(unsigned char byte)
{
    if (m_dataEnd == m_capacityEnd) {
        // At least one block, and half as much again: a long stream stays linear.
        size_t used = size();
        size_t capacity = used + BlockSize + used / 2;
        size_t read = position();
        auto* grown = static_cast<unsigned char*>(realloc(m_start, capacity));
        if (!grown)
            throw std::bad_alloc();
        m_start = grown;
        m_dataEnd = grown + used;
        m_read = grown + read;
        m_capacityEnd = grown + capacity;
    }
    *m_dataEnd++ = byte;
}

HFileInputByteStream::HFileInputByteStream(const std::string& name)
{
    std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(name.c_str(), "rb"), fclose);
    if (!file)
        throw HException("can't open file " + name);
    struct stat status;
    // A directory opens, and tells a length that means nothing.
    if (fstat(fileno(file.get()), &status) != 0 || !S_ISREG(status.st_mode))
        throw HException("can't read file " + name);
    size_t length = size_t(status.st_size);
    auto* buffer = static_cast<unsigned char*>(malloc(length ? length : 1));
    if (!buffer)
        throw HException("can't read file " + name);
    adopt(buffer, length);
    if (fread(buffer, 1, length, file.get()) != length)
        throw HException("can't read file " + name);
}
