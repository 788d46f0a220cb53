#include "board/Flash.h"

#include <algorithm>
#include <utility>

namespace board {

Flash::Flash(maxq30::Core& core, std::vector<Settings::Range> deadCells)
    : m_core(core), m_deadCells(std::move(deadCells))
{
}

bool Flash::read(uint32_t address, std::span<uint8_t> bytes) const
{
    return m_core.readCode(address, uint32_t(bytes.size()), bytes.data());
}

bool Flash::program(uint32_t address, std::span<const uint8_t> bytes)
{
    return change(address, bytes, [](uint8_t old, uint8_t wanted) { return uint8_t(old & wanted); });
}

bool Flash::overwrite(uint32_t address, std::span<const uint8_t> bytes)
{
    return change(address, bytes, [](uint8_t, uint8_t wanted) { return wanted; });
}

void Flash::eraseAll()
{
    std::vector<uint8_t> ones(size(), 0xFF);
    m_core.writeCode(0, size(), ones.data());
}

bool Flash::isDead(uint32_t address) const
{
    return std::any_of(m_deadCells.begin(), m_deadCells.end(), [address](const Settings::Range& range) {
        return address >= range.first && address <= range.last;
    });
}

template <typename NewValue>
bool Flash::change(uint32_t address, std::span<const uint8_t> bytes, NewValue newValue)
{
    std::vector<uint8_t> cells(bytes.size());
    if (!read(address, cells))
        return false;
    for (size_t i = 0; i < cells.size(); ++i)
        if (!isDead(address + uint32_t(i)))
            cells[i] = newValue(cells[i], bytes[i]);
    return m_core.writeCode(address, uint32_t(cells.size()), cells.data());
}

} // namespace board
