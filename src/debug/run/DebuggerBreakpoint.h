// A breakpoint as the debugger's user holds it. The debugger owns it; it is good until clearBreakpoint(),
// clear(), or for a temporary one until the next stop.
#pragma once

#include <QString>

class DebuggerBreakpoint {
public:
    virtual ~DebuggerBreakpoint() = default;
    virtual int getCount() const = 0; // matches that are still to be ignored
    // "0x%x", or "0x%x-0x%x" of the first and last byte when there are several.
    virtual QString getDescription() const = 0;
    // "@r" and the number of a register, or "0x" and the address.
    virtual QString getAddress() const = 0;
    virtual unsigned getSize() const = 0; // bytes
    virtual bool isPermanent() const { return false; }
    virtual bool isEnabled() const = 0;
};
