// The breakpoints of a device that stops by its own hardware: which can be carried out at all, and which
// one a stop belongs to. The hardware compares the program counter with four addresses and data accesses,
// reads and writes alike, with two; everything else that a record asks for is looked at after the stop, by
// reading memory. What the registers of the debug engine hold is the target's to write.
#pragma once

#include "debug/monitor/HBreakpoint.h"

#include <map>
#include <vector>

class TargetMemoryInterface;

class JTAGBreakpoints {
public:
    static constexpr unsigned NumCode = 4;
    static constexpr unsigned NumData = 2;
    static constexpr uint32_t LongestData = 4; // bytes; the hardware sees an access to the first of them

    // Data memory is read only while the device is stopped, and outlives this.
    explicit JTAGBreakpoints(TargetMemoryInterface& dataMemory) : m_dataMemory(dataMemory) {}

    // Throws DebuggerBreakpointFailure, and the list stays as it is, when the device cannot do what the
    // record or one of its link asks for, or has no breakpoint left. A record that is there already stays
    // where it is.
    void add(HBreakpoint* breakpoint);
    void remove(HBreakpoint* breakpoint) { std::erase(m_list, breakpoint); }
    void clear();
    unsigned count() const { return unsigned(m_list.size()); }
    // Those that are enabled, in the order of setting. Throws when they have become too many.
    std::vector<const HBreakpoint*> toProgram() const;
    static bool isCode(const HBreakpoint* breakpoint) { return breakpoint->trigger == HBreakpoint::Execute; }

    // The program is about to go on: notes what watched data hold, so that a change can be seen.
    void noteValues();
    // The program stands before an instruction that an enabled record stops at, the last one set; or null.
    HBreakpoint* codeAt(uint32_t pc) const;
    bool hasCode() const { return enabled(true) > 0; }
    // Some watched data hold something else than was noted; notes what was not noted before.
    bool dataChanged();
    // The record that a stop at `pc`, which nobody has asked for, belongs to; null when there is none.
    HBreakpoint* match(uint32_t pc) const;
    // The values that a record and its link ask for are there.
    bool holds(const HBreakpoint* breakpoint) const;

private:
    unsigned enabled(bool code) const;
    uint32_t value(const HBreakpoint* breakpoint) const;
    bool changed(const HBreakpoint* breakpoint) const;

    TargetMemoryInterface& m_dataMemory;
    std::vector<HBreakpoint*> m_list; // each once, in the order of setting; not owned
    std::map<const HBreakpoint*, uint32_t> m_noted;
};
