// Gives every item its address and every instruction its length, then checks values against their places.
//
// Sections of one memory stand one behind another in the order of their making; an origin moves what
// follows it. Instructions start at their shortest form and only ever grow, until a round changes nothing.
#pragma once

#include "tools/kvas/Diagnostics.h"
#include "tools/kvas/Expression.h"
#include "tools/kvas/Program.h"

#include <map>
#include <optional>

namespace kvas {

struct Placement {
    uint32_t code = 0;
    // Where data begins; without it at the value of _RAM_Start_Address, and without that at 0.
    std::optional<uint32_t> data;
};

class Layout {
public:
    Layout(Program& program, Diagnostics& diagnostics, Placement placement)
        : m_program(program), m_diagnostics(diagnostics), m_placement(placement)
    {
    }

    // Faults are reported; then the program is not fit to be written.
    void run();

private:
    uint32_t startOfData();
    void decideLinkIfs();
    bool assignAddresses();
    bool place(Fragment& fragment, uint64_t& pc);
    bool measure(Item& item, uint64_t pc);
    bool grow();
    void check();
    void checkSection(Section& section);
    void checkItem(const Section& section, Item& item);
    void checkOverlaps();
    void checkRange(const Item& item, unsigned bytes);

    Program& m_program;
    Diagnostics& m_diagnostics;
    Placement m_placement;
    Evaluator m_evaluator;
    unsigned m_pass = 0;
};

} // namespace kvas
