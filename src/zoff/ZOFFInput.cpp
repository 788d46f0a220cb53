#include "zoff/ZOFFInput.h"

#include "support/HByteStream.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr size_t WindowSize = 128 * 1024;

} // namespace

ZOFFInput::ZOFFInput(std::span<const unsigned char> bytes)
    : m_at(bytes.data()), m_end(bytes.data() + bytes.size()), m_size(bytes.size())
{
}

ZOFFInput::ZOFFInput(HFileBlocks* file)
    : m_size(file->left()), m_left(m_size), m_file(file),
      m_window(std::make_unique_for_overwrite<unsigned char[]>(WindowSize))
{
    m_at = m_end = m_window.get();
}

ZOFFInput::~ZOFFInput() = default;

void ZOFFInput::fill()
{
    if (m_left == 0)
        return;
    size_t kept = left();
    memmove(m_window.get(), m_at, kept);
    size_t more = std::min(m_left, WindowSize - kept);
    m_file->read(m_window.get() + kept, more);
    m_left -= more;
    m_at = m_window.get();
    m_end = m_at + kept + more;
}

void ZOFFInput::skipAll()
{
    m_at = m_end;
    m_left = 0;
}

std::string_view ZOFFInput::take(size_t size)
{
    if (size > left() + m_left)
        return {};
    if (!m_file) {
        const auto* bytes = reinterpret_cast<const char*>(m_at);
        m_at += size;
        return {bytes, size};
    }
    auto& bytes = m_taken.emplace_back(std::make_unique_for_overwrite<unsigned char[]>(size));
    size_t there = std::min(size, left());
    memcpy(bytes.get(), m_at, there);
    m_at += there;
    if (size > there) {
        m_file->read(bytes.get() + there, size - there);
        m_left -= size - there;
    }
    return {reinterpret_cast<const char*>(bytes.get()), size};
}
