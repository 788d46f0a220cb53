// A read cursor over a buffer of bytes that the stream owns.
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

    // Reading: get() answers -1 at the end.
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

// The whole of a file, read at once. Throws HException "can't open file NAME" or "can't read file
// NAME".
class HFileInputByteStream : public HByteStream {
public:
    explicit HFileInputByteStream(const std::string& name);
};
