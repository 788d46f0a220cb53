// Runs and stops of the program: whether it stands, why it does, and whether it goes on from there.
// poll() drives all of it; between two polls nothing happens but what the target does by itself.
#pragma once

#include "debug/monitor/HMonitor.h"
#include "debug/run/Stepper.h"

class BreakpointList;
class CallFrames;
class DebuggerHelperFunctions;
class DebugProcessor;
class Frame;
class HitListener;
class ProgramRequests;
class ZOFFBreakpoint;

class RunControl : private StopWatcher {
public:
    RunControl(DebuggerHelperFunctions* helper, DebugProcessor& processor, BreakpointList& breakpoints,
               CallFrames& frames, Stepper& stepper, ProgramRequests& requests)
        : m_helper(helper), m_processor(processor), m_breakpoints(breakpoints), m_frames(frames),
          m_stepper(stepper), m_requests(requests)
    {
    }
    ~RunControl();
    void setMonitor(HMonitor* monitor);
    void setHitListener(HitListener* listener) { m_hitListener = listener; }

    // The target must be a monitor for all of these.
    void start(uint32_t address, bool stop);
    void go();
    void step(bool instruction, bool over);
    void stepOut(const Frame* caller);
    // Asks the target; the next polls find that it has stopped.
    void stop();
    // The target lets a program run that it has found.
    void noteRun();
    // The session has ended: nothing runs that would be looked for.
    void clear();

    // Serves requests, notices a stop, and lets the program go on from one that is none for the user. True
    // when it stands for the user to look at. A link that fails is displayed as an error, once, and the next
    // poll tries again.
    bool poll();
    // What the last poll found.
    bool stopped() const { return m_stopped; }

private:
    bool look();
    void resume();
    void carryOn(Stepper::Resume resume);
    bool goesOn() override;
    std::optional<Stepper::Resume> wayOn();
    bool isPassed(ZOFFBreakpoint& hit);
    bool stoppedByError() const;
    void finishStop();

    DebuggerHelperFunctions* m_helper;
    DebugProcessor& m_processor;
    BreakpointList& m_breakpoints;
    CallFrames& m_frames;
    Stepper& m_stepper;
    ProgramRequests& m_requests;
    HMonitor* m_monitor = nullptr;
    HitListener* m_hitListener = nullptr;
    bool m_running = false; // as far as the last poll has seen
    bool m_stopped = false; // for the user to look at
    bool m_stopAsked = false;
    bool m_stopDecided = false; // by the listener, for the stop that is not found yet
};
