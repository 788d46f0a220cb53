#include "support/HByteStream.h"

#include "support/HException.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

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

HFileBlocks::HFileBlocks(const std::string& name) : m_name(name)
{
    do
        m_file = open(name.c_str(), O_RDONLY | O_CLOEXEC);
    while (m_file < 0 && errno == EINTR);
    if (m_file < 0)
        throw HException("can't open file " + name);
    struct stat status;
    // A directory opens, and tells a length that means nothing.
    if (fstat(m_file, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(m_file);
        throw HException("can't read file " + name);
    }
    m_size = m_left = size_t(status.st_size);
}

HFileBlocks::~HFileBlocks()
{
    close(m_file);
}

void HFileBlocks::read(unsigned char* to, size_t count)
{
    while (count > 0) {
        ssize_t got = ::read(m_file, to, count);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0 || size_t(got) > m_left)
            throw HException("can't read file " + m_name);
        to += got;
        count -= size_t(got);
        m_left -= size_t(got);
    }
}

HFileInputByteStream::HFileInputByteStream(const std::string& name)
{
    HFileBlocks file(name);
    auto* buffer = static_cast<unsigned char*>(malloc(file.size() ? file.size() : 1));
    if (!buffer)
        throw HException("can't read file " + name);
    adopt(buffer, file.size());
    file.read(buffer, file.size());
}
