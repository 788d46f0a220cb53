// What the reader has before it: all bytes of an object file in memory, or a window that moves over the
// file. Records are read once and in order, so a file of any size needs a small buffer only, which stays
// in the processor's cache.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

class HFileBlocks;

class ZOFFInput {
public:
    // No record but the string pool is longer. fill() sees to it that so many bytes are in the window,
    // or all that there are.
    static constexpr size_t LongestRecord = 512;

    explicit ZOFFInput(std::span<const unsigned char> bytes);
    // The file must outlive the input.
    explicit ZOFFInput(HFileBlocks* file);
    ~ZOFFInput();

    // The window.
    const unsigned char* at() const { return m_at; }
    const unsigned char* end() const { return m_end; }
    size_t left() const { return size_t(m_end - m_at); }
    void moveTo(const unsigned char* at) { m_at = at; }

    bool atEnd()
    {
        if (left() < LongestRecord) [[unlikely]]
            fill();
        return m_at == m_end;
    }
    size_t size() const { return m_size; } // of the whole file
    size_t position() const { return m_size - m_left - left(); }
    void skipAll();
    // The next `size` bytes, which stay where they are as long as the input; a null view when there are
    // fewer.
    std::string_view take(size_t size);

private:
    void fill();

    const unsigned char* m_at = nullptr;
    const unsigned char* m_end = nullptr;
    size_t m_size = 0;
    size_t m_left = 0; // behind the window
    HFileBlocks* m_file = nullptr;
    std::unique_ptr<unsigned char[]> m_window;
    std::vector<std::unique_ptr<unsigned char[]>> m_taken;
};
