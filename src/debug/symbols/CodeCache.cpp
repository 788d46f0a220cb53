#include "debug/symbols/CodeCache.h"

#include "target/memory/TargetMemoryInterface.h"

#include <utility>

bool CodeCache::holds(uint32_t start, uint32_t size) const
{
    return start >= m_start && uint64_t(start) + size <= uint64_t(m_start) + m_bytes.size();
}

void CodeCache::load(TargetMemoryInterface* memory, uint32_t start, uint32_t size)
{
    if (!m_bytes.empty() && holds(start, size))
        return;
    std::vector<unsigned char> bytes(size);
    if (size > 0)
        memory->peekBytes(start, size, bytes.data());
    load(start, std::move(bytes));
}

void CodeCache::load(uint32_t start, std::vector<unsigned char> bytes)
{
    m_start = start;
    m_bytes = std::move(bytes);
}

bool CodeCache::word(uint32_t address, uint16_t& value) const
{
    if (!holds(address, 2))
        return false;
    const unsigned char* at = m_bytes.data() + (address - m_start);
    value = uint16_t(at[0] | at[1] << 8);
    return true;
}
