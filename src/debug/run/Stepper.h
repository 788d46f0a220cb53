// Steps of one statement, of one instruction, and out of a call. A step is a temporary breakpoint where
// the program leaves its range of code, or else, while it goes on in there, where its next instruction leads.
// When the target has no breakpoint left, it steps instruction by instruction.
//
// The instruction at the pc is passed before a breakpoint there counts: that is what a monitor's go() does.
#pragma once

#include "debug/run/ZOFFBreakpoint.h"

#include <cstdint>
#include <optional>

class BreakpointList;
class DebugProcessor;
class Frame;
class HMonitor;
class SymbolTables;
class TargetRegisterInterface;

class Stepper {
public:
    // How the program is to go on: by a run, or by one step of the target.
    enum class Resume { Go, Step };

    Stepper(DebugProcessor& processor, const SymbolTables& tables, BreakpointList& breakpoints)
        : m_processor(processor), m_tables(tables), m_breakpoints(breakpoints)
    {
    }
    void setMonitor(HMonitor* monitor) { m_monitor = monitor; }

    // Begins a step of the stopped target; `byTarget` leaves one instruction to the target itself. Throws
    // DebuggerBreakpointFailure when it needs a breakpoint that the target refuses; then nothing has changed.
    Resume begin(bool instruction, bool over, bool byTarget);
    // Until the frame, a caller, is the innermost one. Throws HException "no calling frame" for null.
    Resume beginOut(const Frame* caller);

    // At a stop in the breakpoint of a step: what makes the program go on, or nothing when the step is done.
    std::optional<Resume> goOn(ZOFFBreakpoint& breakpoint);
    // While the target steps by itself: as for a breakpoint.
    bool steppingByTarget() const { return m_byTarget.has_value(); }
    std::optional<Resume> goOnByTarget();
    // Whatever step there was is over; its breakpoint goes with the other temporary ones.
    void end() { m_byTarget.reset(); }

private:
    TargetRegisterInterface& registers() const;
    // Notes in the step what the instruction at the pc means for it; returns the address to stop at.
    uint32_t aim(SourceStep& step) const;
    Resume setOut(const SourceStep& step, uint32_t address);
    Resume stepByTarget(const SourceStep& step);

    DebugProcessor& m_processor;
    const SymbolTables& m_tables;
    BreakpointList& m_breakpoints;
    HMonitor* m_monitor = nullptr;
    std::optional<SourceStep> m_byTarget;
};
