// A breakpoint that cannot be made or set; the text says why.
#pragma once

#include "support/HException.h"

class DebuggerBreakpointFailure : public HException {
public:
    using HException::HException;
};

// For a monitor that gives no reason of its own.
inline constexpr char TargetRefuses[] = "the target refuses the breakpoint";
