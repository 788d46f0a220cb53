// The whole of a file in memory, for readers that work on bytes.
#pragma once

#include <cstddef>
#include <memory>
#include <span>

class FileBytes {
public:
    // Reads the file at once. Throws HException "cannot open NAME" or "cannot read NAME" with the
    // system's reason as the hint: for a directory, a file that becomes shorter while it is read,
    // and one larger than LoadFileLimits::MaxFileSize. A pipe is read to its end.
    explicit FileBytes(const char* name);

    std::span<const char> text() const { return {reinterpret_cast<const char*>(m_bytes.get()), m_size}; }
    size_t size() const { return m_size; }
    unsigned char* bytes() { return m_bytes.get(); }

private:
    struct Free {
        void operator()(unsigned char* p) const;
    };
    std::unique_ptr<unsigned char[], Free> m_bytes;
    size_t m_size = 0;
};
