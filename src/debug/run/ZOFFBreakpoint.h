// A breakpoint in the debugger's list: the records that the monitor carries out, and what the debugger
// does at a match.
#pragma once

#include "debug/monitor/HBreakpoint.h"
#include "debug/run/DebuggerBreakpoint.h"

#include <cstdint>

class ZOFFBreakpoint : public DebuggerBreakpoint {
public:
    // Takes the record over, with all behind it along the `next` links.
    ZOFFBreakpoint(HBreakpoint* record, bool temporary) : m_record(record), m_temporary(temporary) {}
    ~ZOFFBreakpoint() override;
    ZOFFBreakpoint(const ZOFFBreakpoint&) = delete;
    ZOFFBreakpoint& operator=(const ZOFFBreakpoint&) = delete;

    int getCount() const override { return m_record->count; }
    QString getDescription() const override;
    QString getAddress() const override;
    unsigned getSize() const override { return m_record->length; }

    HBreakpoint* record() const { return m_record; }
    bool temporary() const { return m_temporary; } // removed at the next stop
    // A step goes on while the pc lies in its range.
    bool stepping() const { return m_stepping; }
    bool stepOver() const { return m_stepOver; }
    uint32_t rangeStart() const { return m_rangeStart; }
    uint32_t rangeLength() const { return m_rangeLength; }
    void setStepping(bool over, uint32_t start, uint32_t length);

private:
    HBreakpoint* m_record;
    bool m_temporary;
    bool m_stepping = false;
    bool m_stepOver = false;
    uint32_t m_rangeStart = 0;
    uint32_t m_rangeLength = 0;
};
