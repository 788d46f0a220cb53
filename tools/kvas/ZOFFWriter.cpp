#include "tools/kvas/ZOFFWriter.h"
#include "tools/kvas/limits.h"

#include <stdexcept>

namespace kvas {

void ZOFFWriter::literal(int64_t value)
{
    if (value >= 0 && value <= 7) {
        m_records += char(value);
        return;
    }
    unsigned count = 8;
    if (value > 0) {
        for (count = 1; count < 8 && value >> (8 * count); ++count) {
        }
    }
    tag(Tag::LiteralWide);
    m_records += char(count);
    while (count--)
        m_records += char(uint64_t(value) >> (8 * count));
}

void ZOFFWriter::reference(size_t offset, size_t length)
{
    literal(int64_t(offset));
    literal(int64_t(length));
    tag(Tag::MakeString);
}

void ZOFFWriter::string(std::string_view text)
{
    auto [place, isNew] = m_offsets.try_emplace(text, m_pool.size());
    if (isNew)
        m_pool += text;
    reference(place->second, text.size());
}

void ZOFFWriter::bytes(std::string_view bytes)
{
    size_t offset = m_pool.size();
    bool isNew = true;
    if (bytes.size() < 8) {
        uint64_t key = bytes.size();
        for (char c : bytes)
            key = key << 8 | (unsigned char)c;
        auto found = m_shortOffsets.try_emplace(key, offset);
        offset = found.first->second;
        isNew = found.second;
    }
    if (isNew)
        m_pool += bytes;
    reference(offset, bytes.size());
}

std::string ZOFFWriter::finish() const
{
    if (m_pool.size() > limits::PoolBytes)
        throw std::length_error("the texts and code bytes are more than one executable can hold");
    ZOFFWriter head;
    head.record(Tag::StringPool, int64_t(m_pool.size()));
    return head.m_records + m_pool + m_records;
}

} // namespace kvas
