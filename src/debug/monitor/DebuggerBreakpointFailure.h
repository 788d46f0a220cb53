// A breakpoint that cannot be made or set; the text says why.
#pragma once

#include "support/HException.h"

class DebuggerBreakpointFailure : public HException {
public:
    using HException::HException;
};
