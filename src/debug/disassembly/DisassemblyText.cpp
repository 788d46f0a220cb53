#include "debug/disassembly/DisassemblyText.h"

#include <algorithm>

namespace {

constexpr uint32_t WordBytes = 2;

uint32_t below(uint32_t address, uint32_t count, uint32_t low)
{
    return address - low < count ? low : address - count;
}

// Behind the last byte of a window that begins in front of `address`; `high` is the last byte there is.
uint32_t above(uint32_t address, uint32_t count, uint32_t high)
{
    return uint32_t(std::min<uint64_t>(uint64_t(address) + count, uint64_t(high) + 1));
}

} // namespace

void DisassemblyText::locate(uint32_t address, uint32_t low, uint32_t high)
{
    for (const DisassemblyInfo& block : m_blocks)
        if (block.start <= address && address < block.end) {
            m_start = block.start;
            m_end = block.end;
            return;
        }
    address = std::clamp(address, low, high) / WordBytes * WordBytes;
    m_start = below(address, WindowBytes / 2, low);
    m_end = above(address, WindowBytes / 2, high);
}

void DisassemblyText::more(bool up, uint32_t low, uint32_t high)
{
    if (up)
        m_start = below(std::max(m_start, low), MoreBytes, low);
    else
        m_end = above(m_end, MoreBytes, high);
}

const DisassemblyInfo& DisassemblyText::block(const Generator& generate)
{
    // One that could not be read is tried again.
    for (const DisassemblyInfo& block : m_blocks)
        if (block.start == m_start && block.end == m_end && !block.lines.isEmpty())
            return block;
    DisassemblyInfo made;
    made.start = m_start;
    made.end = m_end;
    generate(made);
    // A block inside the new one would be found first, and hide the rest.
    m_blocks.remove_if(
        [&made](const DisassemblyInfo& block) { return block.start >= made.start && block.end <= made.end; });
    m_blocks.push_front(std::move(made));
    return m_blocks.front();
}
