// The breakpoints of a session: those in the list are known to the monitor, in the order of their making.
// One that goes, goes from the monitor first.
#pragma once

#include "debug/monitor/HBreakpoint.h"
#include "debug/run/DebuggerBreakpoint.h"
#include "debug/run/ZOFFBreakpoint.h"

#include <QString>

#include <list>

class HMonitor;

class BreakpointList {
public:
    // The breakpoints of an earlier monitor are forgotten. Null is none.
    void setMonitor(HMonitor* monitor);
    // When the monitor has forgotten them already.
    void forget();
    // From a monitor whose link may be closed: its failures are not passed on.
    void withdrawAll();

    // Hands the records to the monitor; null when it refuses. It may throw what it is out of.
    ZOFFBreakpoint* add(ZOFFBreakpoint::Records records, bool temporary);
    // One on an instruction that stops, counted as given.
    ZOFFBreakpoint* addCode(uint32_t address, bool temporary, bool counted, int count, int limit,
                            const QString& action);
    // What is not in the list is ignored. Those that wait for its match wait no longer.
    void remove(const DebuggerBreakpoint* breakpoint);
    // Temporary ones: the one with that record, or with null all of them.
    void removeTemporary(const HBreakpoint* record);
    // Moves the breakpoint to another address; when the monitor refuses, which is false or what it throws, it
    // has neither.
    bool move(ZOFFBreakpoint& breakpoint, uint32_t address);

    // Null when there is none.
    ZOFFBreakpoint* find(const HBreakpoint* record) const;
    ZOFFBreakpoint* find(const DebuggerBreakpoint* breakpoint) const;
    // The first that stays, on the instruction at an address.
    ZOFFBreakpoint* codeAt(uint32_t address) const;
    // That of a step which is to end there.
    ZOFFBreakpoint* stepAt(uint32_t address) const;

    // For a target that is stepped: whether it has to stop in front of the instruction. Counts a match that
    // is ignored.
    bool stopsAt(uint32_t address);

    // The breakpoint matches nothing until `from` has matched; null takes the chain off. Throws
    // DebuggerBreakpointFailure "Chaining not supported".
    void chain(const DebuggerBreakpoint* breakpoint, const DebuggerBreakpoint* from);
    void setEnabled(const DebuggerBreakpoint* breakpoint, bool on);

    // The monitor's numbers for texts; that of a stop for an empty action, and of an execution for an empty
    // trigger. Of several the last one counts, and 0 is what an unknown text gives.
    int actionNumber(const QString& action) const;
    int triggerNumber(const QString& trigger) const;

private:
    using List = std::list<std::unique_ptr<ZOFFBreakpoint>>;

    void erase(List& list, List::iterator at);
    void change(HBreakpoint* record, bool enabled, HBreakpoint* from);

    HMonitor* m_monitor = nullptr;
    List m_code;
    List m_data;
};
