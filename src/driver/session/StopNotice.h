// Tells that a program which is served, and not debugged, has stopped, as nobody asked it to.
#pragma once

#include "driver/session/ProgramRun.h"

class StopNotice : public ProgramRun::StopListener {
public:
    explicit StopNotice(ProgramRun& run) : m_run(run) {}
    // A warning "the program has stopped at ADDRESS", with function and line as far as they are known.
    void onBreakpoint() override;

private:
    ProgramRun& m_run;
};
