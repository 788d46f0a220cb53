#include "debug/run/RunControl.h"

#include "debug/monitor/DebugProcessor.h"
#include "debug/monitor/DebuggerBreakpointFailure.h"
#include "debug/monitor/DebuggerHelperFunctions.h"
#include "debug/monitor/HMonitor.h"
#include "debug/run/BreakpointList.h"
#include "debug/run/CallFrames.h"
#include "debug/run/HitListener.h"
#include "debug/run/ProgramRequests.h"
#include "debug/run/ZOFFBreakpoint.h"
#include "support/HException.h"

#include <QElapsedTimer>

namespace {

// How long one poll follows a program that stops and goes on, in milliseconds: long enough that the time
// between polls doesn't count, short enough for a user at the keys.
constexpr qint64 PollTime = 20;

} // namespace

RunControl::~RunControl()
{
    if (m_monitor)
        m_monitor->watchStops(nullptr);
}

void RunControl::setMonitor(HMonitor* monitor)
{
    if (m_monitor)
        m_monitor->watchStops(nullptr);
    m_monitor = monitor;
    if (m_monitor)
        m_monitor->watchStops(this);
    m_running = m_stopped = m_stopAsked = false;
}

void RunControl::noteRun()
{
    m_frames.freeze();
    m_running = true;
    m_stopped = false;
}

void RunControl::start(uint32_t address, bool stop)
{
    // Before the program runs: it may ask for something at once.
    m_requests.enable();
    m_stepper.end();
    m_stopAsked = false;
    noteRun();
    m_monitor->startDebugging(true, address, stop);
}

void RunControl::resume()
{
    m_requests.enable();
    noteRun();
    m_monitor->go();
}

void RunControl::go()
{
    m_stepper.end();
    m_stopAsked = false;
    resume();
}

void RunControl::carryOn(Stepper::Resume how)
{
    if (how == Stepper::Resume::Go) {
        resume();
        return;
    }
    noteRun();
    m_monitor->step();
}

void RunControl::step(bool instruction, bool over)
{
    Stepper::Resume how = m_stepper.begin(instruction, over, m_helper->debuggerUseHardwareStep());
    m_stopAsked = false;
    carryOn(how);
}

void RunControl::stepOut(const Frame* caller)
{
    if (!m_frames.live()) {
        m_frames.locate(m_monitor->registers());
        caller = m_frames.at(1);
    }
    Stepper::Resume how = m_stepper.beginOut(caller);
    m_stopAsked = false;
    carryOn(how);
}

void RunControl::stop()
{
    m_stopAsked = true;
    m_monitor->stop();
}

void RunControl::clear()
{
    m_stepper.end();
    m_running = m_stopAsked = false;
}

bool RunControl::poll()
{
    // A program that stands changes nothing, so its target is left alone.
    if (!m_running || m_requests.serving() || !m_monitor)
        return m_stopped;
    try {
        QElapsedTimer time;
        time.start();
        while (look() && time.elapsed() < PollTime)
            ;
        m_requests.noteLink(nullptr);
    } catch (const HException& failure) {
        m_requests.noteLink(&failure);
    }
    return m_stopped;
}

// True when the program has been made to go on, so that another look may find something.
bool RunControl::look()
{
    int operation = 0;
    if (!m_monitor->isStopped()) {
        if (!m_processor.debugOperationUsesBreakpoint())
            m_requests.poll(operation);
        return false;
    }
    if (m_requests.poll(operation)) {
        if (operation == ProgramRequests::ExitOperation)
            return false;
        // The request may be all that it has stopped for.
        if (!m_stopAsked && !m_stepper.steppingByTarget() && !m_breakpoints.find(m_monitor->matched())) {
            resume();
            return true;
        }
    }
    if (!m_monitor->isStopped())
        return false;
    if (std::optional<Stepper::Resume> how = wayOn()) {
        carryOn(*how);
        return true;
    }
    finishStop();
    return false;
}

bool RunControl::stoppedByError() const
{
    unsigned address = 0;
    const char* error = m_monitor->lastError(address);
    return error && m_monitor->errorEnabled(error);
}

// How the program goes on from a stop that is not the user's; nothing at one that is.
std::optional<Stepper::Resume> RunControl::wayOn()
{
    if (m_stopAsked || stoppedByError())
        return {};
    try {
        ZOFFBreakpoint* hit = m_breakpoints.find(m_monitor->matched());
        std::optional<Stepper::Resume> how;
        if (m_stepper.steppingByTarget())
            how = m_stepper.goOnByTarget();
        else if (hit && hit->step())
            how = m_stepper.goOn(*hit);
        else if (hit && isPassed(*hit)) {
            // A step may have come to the same place.
            ZOFFBreakpoint* step = m_breakpoints.stepAt(hit->record()->address);
            how = step ? m_stepper.goOn(*step) : Stepper::Resume::Go;
        }
        return how;
    } catch (const DebuggerBreakpointFailure& failure) { // the step ends here
        m_helper->displayError(failure.text());
        return {};
    }
}

// From within a run of the monitor, which then goes on by itself. What needs more than that, and a link that
// fails, is left to the next poll.
bool RunControl::goesOn()
{
    try {
        return wayOn() == Stepper::Resume::Go;
    } catch (const HException&) {
        return false;
    }
}

// Whether a hit is one that does not stop.
bool RunControl::isPassed(ZOFFBreakpoint& hit)
{
    if (hit.record()->count > 0) {
        --hit.record()->count;
        return true;
    }
    if (!m_hitListener || hit.temporary())
        return false;
    if (m_stopDecided) // from within the run
        return false;
    m_frames.locate(m_monitor->registers());
    m_stopDecided = m_hitListener->stopsAt(&hit);
    if (!m_stopDecided)
        m_frames.freeze();
    return !m_stopDecided;
}

void RunControl::finishStop()
{
    m_stepper.end();
    m_breakpoints.removeTemporary(nullptr);
    m_frames.locate(m_monitor->registers());
    m_stopped = true;
    m_running = m_stopAsked = m_stopDecided = false;
}
