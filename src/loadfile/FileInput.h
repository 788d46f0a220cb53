// A file opened for reading to its end, once: what the load file readers take their bytes from.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

class FileInput {
public:
    // Throws HException "cannot open NAME" with the system's reason as the hint.
    explicit FileInput(const char* name);
    ~FileInput();
    FileInput(const FileInput&) = delete;
    FileInput& operator=(const FileInput&) = delete;

    // The next bytes, at least one of them; 0 at the end of the file. Throws HException "cannot read
    // NAME", with the reason as the hint: for a directory, for a file that becomes shorter while it
    // is read, and beyond LoadFileLimits::MaxFileSize. A pipe is read to its end.
    size_t read(char* buffer, size_t size);

    // What the file's status tells, in bytes; 0 for a pipe.
    size_t expectedSize() const { return m_sizeKnown ? m_size : 0; }

private:
    [[noreturn]] void fail(const char* reason) const;

    std::string m_name;
    int m_fd;
    bool m_sizeKnown = false;
    size_t m_size = 0;
    size_t m_done = 0;
};

// The whole of a file in memory.
class FileBytes {
public:
    explicit FileBytes(const char* name);

    size_t size() const { return m_size; }
    unsigned char* bytes() { return m_bytes.get(); }

private:
    struct Free {
        void operator()(unsigned char* p) const;
    };
    std::unique_ptr<unsigned char, Free> m_bytes;
    size_t m_size = 0;
};
