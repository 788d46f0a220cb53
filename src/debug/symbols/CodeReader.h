// The code memory of the target as the debugger reads it: what was read once is kept until somebody says
// that it may have changed, so that a scan over a source line costs one access to the target.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <span>
#include <unordered_map>

class TargetInterface;
class TargetMemoryInterface;

class CodeReader {
public:
    // Null is none; then nothing can be read but what is given.
    void setTarget(TargetInterface* target);
    void clear() { m_pages.clear(); }

    // Reads what is not here yet of a range, in one access where none of it is. Throws HException for a range
    // that is no code memory, and what the target throws.
    void load(uint32_t start, uint32_t size);
    // Takes bytes that the caller has for those of the memory.
    void load(uint32_t start, std::span<const unsigned char> bytes);
    // The little-endian word at an address, read when it is not here; 0 where no memory is.
    uint16_t word(uint32_t address);

    // The range of code memory around an address; false outside.
    bool range(uint32_t address, uint32_t& low, uint32_t& high) const;
    bool hasMemory() const { return memory() != nullptr; }

private:
    static constexpr uint32_t PageBytes = 256;
    struct Page {
        std::array<unsigned char, PageBytes> bytes;
        std::bitset<PageBytes> known;
    };

    TargetMemoryInterface* memory() const;
    bool exists(uint32_t start, uint32_t size) const;
    bool known(uint32_t address) const;

    TargetInterface* m_target = nullptr;
    std::unordered_map<uint32_t, Page> m_pages; // by address, divided
};
