// Who is asked, when the program has come to a breakpoint whose ignored hits are used up, whether it is to
// stop there. The frames are those of the place then; the program must not be made to go on, nor the
// breakpoint be deleted.
#pragma once

class DebuggerBreakpoint;

class HitListener {
public:
    // Not asked about temporary breakpoints, nor about the places that a step by the target comes to.
    virtual bool stopsAt(DebuggerBreakpoint* breakpoint) = 0;

protected:
    ~HitListener() = default;
};
