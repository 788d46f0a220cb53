// Disassembled code as text, with the source lines and labels that belong to it: blocks of code that were
// shown, and the window that is shown now. Addresses are byte addresses, lines count from 0.
#pragma once

#include "support/Path.h"

#include <QStringList>

#include <cstdint>
#include <functional>
#include <list>
#include <map>

// What stands in one block of text.
struct DisassemblyInfo {
    uint32_t start = 0;
    uint32_t end = 0; // behind the last byte
    QStringList lines;
    std::map<int, uint32_t> addresses;               // of each line that shows an instruction
    std::map<uint32_t, int> lineOfAddress;           // of each instruction that is shown
    std::map<int, std::pair<Path, int>> sourceLines; // the source of each line
};

class DisassemblyText {
public:
    // Fills in the lines of a block whose range is given.
    using Generator = std::function<void(DisassemblyInfo& block)>;

    static constexpr uint32_t WindowBytes = 200;
    static constexpr uint32_t MoreBytes = 256;

    void clear() { m_blocks.clear(); }
    // Makes the window hold an address: that of a block that has it, else a new one around it. The
    // limits are those of its memory.
    void locate(uint32_t address, uint32_t low, uint32_t high);
    // Extends the window upward, to lower addresses, or downward.
    void more(bool up, uint32_t low, uint32_t high);
    // The block of the window, made when there is none.
    const DisassemblyInfo& block(const Generator& generate);

private:
    std::list<DisassemblyInfo> m_blocks;
    uint32_t m_start = 0;
    uint32_t m_end = WindowBytes;
};
