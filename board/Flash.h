// The code memory as flash cells over the processor's code memory: programming clears bits, only an
// erase sets them. Addresses and lengths are in bytes.
#pragma once

#include "board/Settings.h"
#include "sim/Core.h"

#include <cstdint>
#include <span>

namespace board {

class Flash {
public:
    // `core` is not owned.
    Flash(maxq30::Core& core, std::vector<Settings::Range> deadCells);

    uint32_t size() const { return m_core.codeBytes(); }
    // Each is false, and nothing is changed, when part of the range lies outside.
    bool read(uint32_t address, std::span<uint8_t> bytes) const;
    // As the bootloader programs: a cell that is not erased keeps its zeros.
    bool program(uint32_t address, std::span<const uint8_t> bytes);
    // As the debug engine writes: each cell takes the new value.
    bool overwrite(uint32_t address, std::span<const uint8_t> bytes);
    void eraseAll();

private:
    bool isDead(uint32_t address) const;
    template <typename NewValue>
    bool change(uint32_t address, std::span<const uint8_t> bytes, NewValue newValue);

    maxq30::Core& m_core;
    std::vector<Settings::Range> m_deadCells;
};

} // namespace board
