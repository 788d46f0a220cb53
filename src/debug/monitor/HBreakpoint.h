// One breakpoint as a monitor carries it out: a plain record. The debugger makes it, owns it and may
// change it while the target is stopped; monitors read it, and one that chains breakpoints sets `enabled`.
#pragma once

#include <cstdint>

struct HBreakpoint {
    // What a breakpoint watches for: an instruction that is about to execute, or accesses of data.
    enum Trigger { Execute, Read, Write, ReadWrite };
    static constexpr int NumTriggers = 4;
    // "Execute", "Read", "Write", "Read/Write"; the first for any other number.
    static const char* triggerName(int trigger);
    // Comparisons of an access's value with `value`, as unsigned numbers.
    enum Comparison { Equal, GreaterOrEqual, LessOrEqual, NotEqual, Less, Greater };

    bool enabled = true;
    uint32_t address = 0; // byte address, start of a range, or a register number
    bool isRegister = false;
    uint32_t length = 1;   // bytes from `address`
    int trigger = 0;       // index into the monitor's triggers
    int count = 0;         // matches to ignore before a stop; a monitor counts it down
    bool inverted = false; // matches outside the range
    bool hasValue = false; // the access must also meet the comparison
    bool counted = false;  // `limit` applies
    int limit = -1;
    bool monitorFlag = false; // for the monitor's use
    uint32_t mask = 0;        // applied to both sides of the comparison
    uint32_t value = 0;
    HBreakpoint* next = nullptr;      // all records along this link must match the same access
    HBreakpoint* chainFrom = nullptr; // the breakpoint whose match enables this one
    int action = 0;                   // index into the monitor's actions
    int comparison = Equal;

    // The comparison holds for a value of so many bytes, 1 to 4; only these bytes are looked at.
    bool meets(uint32_t accessed, unsigned bytes) const;
};
