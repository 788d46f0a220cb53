// A breakpoint in the debugger's list: the records that the monitor carries out, and what the debugger
// does at a match.
#pragma once

#include "debug/monitor/HBreakpoint.h"
#include "debug/run/DebuggerBreakpoint.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

// A step that goes on: of a range of code, whose ends the program has not left yet, or out of a call.
struct SourceStep {
    bool over = false;
    uint32_t start = 0;
    uint32_t length = 0; // 0 for a step that ends where its breakpoint is
    // The stack pointer that the program has where the step ends, when it may come by in a deeper call
    // before.
    std::optional<uint32_t> depth;

    bool holds(uint32_t address) const { return address >= start && address - start < length; }
};

class ZOFFBreakpoint : public DebuggerBreakpoint {
public:
    using Records = std::vector<std::unique_ptr<HBreakpoint>>;

    // The records' `next` links go from the first to the last. There is at least one.
    ZOFFBreakpoint(Records records, bool temporary);
    ZOFFBreakpoint(const ZOFFBreakpoint&) = delete;
    ZOFFBreakpoint& operator=(const ZOFFBreakpoint&) = delete;

    int getCount() const override { return record()->count; }
    QString getDescription() const override;
    QString getAddress() const override;
    unsigned getSize() const override { return record()->length; }
    bool isEnabled() const override { return record()->enabled; }

    HBreakpoint* record() const { return m_records.front().get(); }
    const Records& records() const { return m_records; }
    bool temporary() const { return m_temporary; } // removed at the next stop
    // Of the breakpoint of a step; null for any other.
    SourceStep* step() { return m_step ? &*m_step : nullptr; }
    void setStep(const SourceStep& step) { m_step = step; }

private:
    Records m_records;
    bool m_temporary;
    std::optional<SourceStep> m_step;
};
