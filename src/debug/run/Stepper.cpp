#include "debug/run/Stepper.h"

#include "debug/monitor/DebugProcessor.h"
#include "debug/monitor/DebuggerBreakpointFailure.h"
#include "debug/monitor/HMonitor.h" // a target
#include "debug/run/BreakpointList.h"
#include "debug/run/Frame.h"
#include "debug/symbols/SymbolTables.h"
#include "debug/symbols/SymbolicDebug.h"
#include "support/HException.h"
#include "target/TargetRegisterInterface.h"

TargetRegisterInterface& Stepper::registers() const
{
    TargetRegisterInterface* registers = m_monitor->registers();
    if (!registers)
        throw HException("the target has no registers to step with");
    return *registers;
}

Stepper::Resume Stepper::begin(bool instruction, bool over, bool byTarget)
{
    end();
    if (byTarget && instruction && !over)
        return Resume::Step;
    uint32_t pc = registers().getPC();
    SourceStep step{over, pc, 1, {}};
    const SymbolicDebug* table = instruction ? nullptr : m_tables.at(pc);
    if (table && !table->sourceMap().AddressToRange(pc, step.start, step.length))
        return Resume::Step; // no line is known, so there is no range
    return setOut(step, aim(step));
}

uint32_t Stepper::aim(SourceStep& step) const
{
    TargetRegisterInterface& file = registers();
    step.depth.reset();
    if (step.over && m_processor.isCallAt(file.getPC()))
        step.depth = file.getSP();
    return m_processor.nextInstruction(&file, step.over, step.start, step.length);
}

Stepper::Resume Stepper::setOut(const SourceStep& step, uint32_t address)
{
    try {
        if (ZOFFBreakpoint* breakpoint = m_breakpoints.addCode(address, true, false, 0, -1, QString())) {
            breakpoint->setStep(step);
            return Resume::Go;
        }
        if (step.depth)
            throw DebuggerBreakpointFailure(TargetRefuses);
    } catch (const DebuggerBreakpointFailure&) {
        if (step.depth) // what happens in a call is not for single steps
            throw;
    }
    return stepByTarget(step);
}

Stepper::Resume Stepper::beginOut(const Frame* caller)
{
    if (!caller)
        throw HException("no calling frame");
    end();
    SourceStep step;
    step.depth = caller->registers()->getSP();
    return setOut(step, caller->registers()->getPC());
}

std::optional<Stepper::Resume> Stepper::goOn(ZOFFBreakpoint& breakpoint)
{
    SourceStep& step = *breakpoint.step();
    TargetRegisterInterface& file = registers();
    if (step.depth && file.getSP() < *step.depth)
        return Resume::Go; // a deeper call has come by
    if (!step.holds(file.getPC()))
        return {};
    SourceStep rest = step;
    uint32_t address = aim(rest);
    try {
        if (m_breakpoints.move(breakpoint, address)) {
            step = rest;
            return Resume::Go;
        }
        if (rest.depth)
            throw DebuggerBreakpointFailure(TargetRefuses);
    } catch (const DebuggerBreakpointFailure&) {
        if (rest.depth)
            throw;
    }
    m_breakpoints.remove(&breakpoint);
    return stepByTarget(rest);
}

Stepper::Resume Stepper::stepByTarget(const SourceStep& step)
{
    m_byTarget = step;
    return Resume::Step;
}

std::optional<Stepper::Resume> Stepper::goOnByTarget()
{
    uint32_t pc = registers().getPC();
    if (!m_byTarget->holds(pc) || m_breakpoints.stopsAt(pc))
        return {};
    SourceStep rest = *m_byTarget;
    if (rest.over && m_processor.isCallAt(pc)) {
        end();
        return setOut(rest, aim(rest));
    }
    return Resume::Step;
}
