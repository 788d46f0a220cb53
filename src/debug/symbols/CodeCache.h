// A stretch of code memory that was read in one go, so that a scan over a source line costs one access
// to the target.
#pragma once

#include <cstdint>
#include <vector>

class TargetMemoryInterface;

class CodeCache {
public:
    // Makes the range available, unless it is there. Throws what the memory throws.
    void load(TargetMemoryInterface* memory, uint32_t start, uint32_t size);
    // The same from bytes that the caller has.
    void load(uint32_t start, std::vector<unsigned char> bytes);
    void clear() { m_bytes.clear(); }

    // The little-endian word at an address; false when it is not here.
    bool word(uint32_t address, uint16_t& value) const;

private:
    bool holds(uint32_t start, uint32_t size) const;

    uint32_t m_start = 0;
    std::vector<unsigned char> m_bytes;
};
