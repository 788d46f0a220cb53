// The breakpoints of a simulated target: the list in the order of setting, the tests of an access against
// it, and the match that the current step has found.
//
// Every instruction is tested, so there is a short way around the list: `refresh` notes where code
// breakpoints may match and whether data is watched at all. The records belong to the debugger, which
// changes them behind our back; whoever lets it run calls `refresh` afterwards.
#pragma once

#include "debug/monitor/HBreakpoint.h"

#include <array>
#include <vector>

class SimulatedBreakpoints {
public:
    enum Trigger { Execute, Read, Write, ReadWrite };

    void add(HBreakpoint* breakpoint);
    // Drops a match of the breakpoint, too.
    void remove(HBreakpoint* breakpoint);
    void clear();
    int count() const { return int(m_list.size()); }
    void refresh();

    HBreakpoint* matched() const { return m_matched; }
    unsigned matchedAddress() const { return m_matchedAddress; }
    unsigned matchedData() const { return m_matchedData; }
    void resetMatched() { m_matched = nullptr; }

    // False when matchCode would find nothing at this address.
    bool mayMatchCode(uint32_t pc) const { return m_places[place(pc)]; }
    // What mayMatchCode looks up, as a table by word address & placeMask(); it stays up to date.
    const unsigned char* places() const { return m_places.data(); }
    static constexpr unsigned placeMask() { return Places - 1; }
    // False when matchData would change nothing.
    bool mayMatchData() const { return m_data || m_matched; }
    bool watchesRegisters() const { return !m_registers.empty(); }
    // Numbers of the registers that enabled breakpoints watch.
    const std::vector<unsigned>& registers() const { return m_registers; }

    // The match of an access. A breakpoint that another one chains from only enables that one, and
    // leaves no match.
    void setMatched(HBreakpoint* breakpoint, unsigned address, unsigned data);
    // The instruction at `pc` is about to execute.
    void matchCode(uint32_t pc);
    // A data access of `length` bytes, or one of a register. The last match in the list stands, if all
    // records along its `next` link match as well.
    void matchData(unsigned address, unsigned length, unsigned value, bool read);
    void matchRegister(unsigned number, unsigned length, unsigned value, bool read);

    // The test of one breakpoint against a data access.
    static bool matchesData(const HBreakpoint* b, unsigned address, unsigned length, unsigned value,
                            bool read);

private:
    static constexpr unsigned Places = 4096;
    static constexpr unsigned LongestNoted = 64; // bytes; a longer range is tested at every instruction
    static unsigned place(uint32_t address) { return address >> 1 & placeMask(); }
    void noteCode(const HBreakpoint* b);

    std::vector<HBreakpoint*> m_list;
    HBreakpoint* m_matched = nullptr;
    unsigned m_matchedAddress = 0;
    unsigned m_matchedData = 0;

    std::array<unsigned char, Places> m_places{}; // by the low bits of the word address
    bool m_data = false;
    std::vector<unsigned> m_registers;
};
