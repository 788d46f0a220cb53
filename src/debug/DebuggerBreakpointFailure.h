// A breakpoint that cannot be set, with the reason as its text.
#pragma once

#include "support/HException.h"

class DebuggerBreakpointFailure : public HException {
public:
    using HException::HException;
};
