// A target that can stop, as the debugger asks for it: breakpoints with triggers and actions, a trace of
// instructions, execution counts, and errors of the program that stop it. A monitor overrides what it
// can do; the defaults say that it cannot.
#pragma once

#include "zoff/ZOFFTargetInterface.h"

#include <cstdint>

class TargetInterfaceHelperFunctions;
struct HBreakpoint;

// Who decides whether a program that has met a breakpoint stands still.
class StopWatcher {
public:
    // Called between two instructions. True when the program goes on at once, with the instruction at its
    // pc; breakpoints may be set, changed and removed in it, but it must not let the target run.
    virtual bool goesOn() = 0;

protected:
    ~StopWatcher() = default;
};

// Who waits for a program to ask for something.
class ControlWordWatcher {
public:
    virtual void controlWordWritten() = 0;

protected:
    ~ControlWordWatcher() = default;
};

class HMonitor : public ZOFFTargetInterface {
public:
    HMonitor(int capabilities, const char* name, TargetInterfaceHelperFunctions* helpers);

    // Whether a debug session runs. In one a target that runs in this process is carried on from the event
    // loop, so that go(), start() and startDebugging() come back at once, as they do on hardware; outside,
    // they block until the program stops.
    virtual void setDebugSession(bool) {}
    // True while the program needs this process to go on: whoever waits for it handles events, and need not
    // sleep in between.
    virtual bool runsOnEvents() const { return false; }

    // Starts the program under the debugger; with `stop` it stays at its first instruction. The address
    // is in bytes.
    virtual void startDebugging(bool setPC, unsigned pc, bool stop) = 0;

    // Errors that the program can make, by index, and which of them stop it, by text.
    virtual int numErrors() { return 0; }
    virtual const char* getError(int) { return nullptr; }
    virtual bool errorEnabled(const char*) { return false; }
    virtual void setErrorEnabled(const char*, bool) {}
    // Text and address of the error that the last run met; null when it met none.
    virtual const char* lastError(unsigned int&) { return nullptr; }

    // The record is not taken over and stays good until it is removed. False when it is refused; a
    // monitor that is out of means throws DebuggerBreakpointFailure.
    virtual bool setBreakpoint(HBreakpoint*) { return false; }
    virtual bool removeBreakpoint(HBreakpoint*) { return false; }
    // The breakpoint that stopped the program, or null.
    virtual HBreakpoint* matched() { return nullptr; }
    // From now on the watcher is asked at each match that would stop the program, once its ignore count is
    // used up; null ends that. False when the target cannot ask, so that stops must be polled for. A monitor
    // that asks also counts down HBreakpoint::count by itself.
    virtual bool watchStops(StopWatcher*) { return false; }
    // Whether a breakpoint can be armed by the match of another.
    virtual bool canChain() { return false; }

    // What a breakpoint can watch for, and what its match does: tables of texts by index.
    virtual int numTriggers() { return 0; }
    virtual const char* getTrigger(int) { return nullptr; }
    virtual int getExecuteTriggerNumber() { return 0; }
    virtual int getWriteTriggerNumber() { return 0; }
    virtual int numActions() { return 1; }
    virtual const char* getAction(int) { return "Stop"; }
    virtual int getStopActionNumber() { return 0; }

    virtual int numHardwareBreakpoints() { return 0; }
    virtual bool hardwareBreakpointInUse(int) { return false; }

    // The trace of executed instructions: getNextTrace yields address, data and cycle count, oldest first,
    // and returns false at the end.
    virtual void setTraceEnabled(bool) {}
    virtual bool getTraceEnabled() { return false; }
    virtual void resetTrace() {}
    virtual void iterateTrace() {}
    virtual bool getNextTrace(unsigned int&, unsigned int&, unsigned int&) { return false; }

    // How often each address was executed: getNextExecutionCount yields byte address, count and 0, and
    // returns false at the end.
    virtual void setExecutionCountEnabled(bool) {}
    virtual bool getExecutionCountEnabled() { return false; }
    virtual void resetExecutionCount() {}
    virtual void iterateExecutionCount() {}
    virtual bool getNextExecutionCount(unsigned int&, unsigned int&, unsigned int&) { return false; }

    // Calls the watcher as soon as the program has put a number other than 0 into the four bytes of data
    // memory at `address`, between two of its instructions; null ends that. False when the target cannot
    // tell, so that the place must be polled.
    virtual bool watchControlWord(uint32_t, ControlWordWatcher*) { return false; }
};
