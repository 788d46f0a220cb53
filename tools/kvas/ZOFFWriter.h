// The bytes of an executable: a stream of records for a stack machine, and the pool of texts in front.
#pragma once

#include "tools/kvas/Tags.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace kvas {

class ZOFFWriter {
public:
    void tag(Tag tag) { m_records += char(tag); }
    void literal(int64_t value);
    // Views must last as long as the writer.
    void string(std::string_view text);
    // The same for code bytes, which come and go.
    void bytes(std::string_view bytes);
    void record(Tag t, int64_t operand)
    {
        literal(operand);
        tag(t);
    }

    int32_t newAlias() { return m_aliases++; }
    void makeAlias(int32_t number) { record(Tag::MakeAlias, number); }
    void alias(int32_t number) { record(Tag::Alias, number); }

    // The whole file. Throws std::length_error when the pool is too large for the format.
    std::string finish() const;

private:
    void reference(size_t offset, size_t length);

    std::string m_records;
    std::string m_pool;
    std::unordered_map<std::string_view, size_t> m_offsets;
    std::unordered_map<uint64_t, size_t> m_shortOffsets;
    int32_t m_aliases = 0;
};

} // namespace kvas
