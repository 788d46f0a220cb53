// A read cursor over a buffer of bytes that the stream owns, and files as such.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

class HByteStream {
public:
    static constexpr int BlockSize = 1024;

    HByteStream();
    virtual ~HByteStream();
    HByteStream(const HByteStream&) = delete;
    HByteStream& operator=(const HByteStream&) = delete;

    const unsigned char* data() const { return m_start; }
    size_t size() const { return size_t(m_dataEnd - m_start); }
    std::span<const unsigned char> bytes() const { return {m_start, size()}; }

    // Reading: get() returns -1 at the end.
    int get() { return m_read < m_dataEnd ? *m_read++ : -1; }
    bool atEnd() const { return m_read == m_dataEnd; }
    size_t position() const { return size_t(m_read - m_start); }
    void rewind() { m_read = m_start; }

    // Writing: appends at the end of the data, growing the buffer by blocks.
    void put(unsigned char byte);

protected:
    // Takes over a buffer made by malloc.
    void adopt(unsigned char* buffer, size_t size);

private:
    unsigned char* m_start = nullptr;
    unsigned char* m_dataEnd = nullptr;
    unsigned char* m_read = nullptr;
    unsigned char* m_capacityEnd = nullptr;
};

// A file read from its first byte to its last, for who keeps no more than a part of it in memory. Throws
// HException "can't open file NAME" or "can't read file NAME", as do the streams made of it.
class HFileBlocks {
public:
    explicit HFileBlocks(const std::string& name);
    ~HFileBlocks();
    HFileBlocks(const HFileBlocks&) = delete;
    HFileBlocks& operator=(const HFileBlocks&) = delete;

    size_t size() const { return m_size; } // in bytes, when it was opened
    size_t left() const { return m_left; }
    // The next `count` bytes, of those that are left. A file that has become shorter can't be read.
    void read(unsigned char* to, size_t count);

private:
    std::string m_name;
    int m_file;
    size_t m_size = 0;
    size_t m_left = 0;
};

// The whole of a file, read at once.
class HFileInputByteStream : public HByteStream {
public:
    explicit HFileInputByteStream(const std::string& name);
};
