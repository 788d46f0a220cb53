#include "driver/session/ProgramRun.h"

#include "debug/SymbolicDebuggerInterface.h"
#include "debug/monitor/HMonitor.h"
#include "driver/session/Interrupt.h"
#include "driver/session/Loader.h"
#include "loadfile/LoadFileInterface.h"
#include "support/HException.h"
#include "support/QTx.h"
#include "target/io/TargetIOServer.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <ctime>

namespace {

constexpr int PassMilliseconds = 1;
// A program that has asked for nothing lately is polled less often: each poll of a board stops it for a
// moment, and costs both sides. Polls then aim at a fiftieth of this processor, and a request is still seen
// within the longest interval.
constexpr int IdlePassMilliseconds = 9;
constexpr int IdlePollMilliseconds = 5;
constexpr int IdlePollMaximum = 18; // milliseconds
constexpr double IdleShare = 0.02;
constexpr int IdleAfterPolls = 100;

double processorMilliseconds()
{
    timespec time;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

} // namespace

ProgramRun::Scope::Scope(ProgramRun& run, TargetIOServer& server, bool debugging) : m_run(run)
{
    SymbolicDebuggerInterface& debugger = run.debugger();
    TargetInterface* target = run.m_loader.targetInterface();
    run.m_server = &server;
    run.m_debugging = debugging;
    run.m_idlePolls = 0;
    run.m_quit = false;
    run.m_exitStatus.reset();
    debugger.setTargetInterface(target);
    debugger.setTargetIOServer(&server);
    run.m_monitor = dynamic_cast<HMonitor*>(target);
    if (run.m_monitor)
        run.m_monitor->setDebugSession(debugging);
    run.m_timer.start(PassMilliseconds);
}

ProgramRun::Scope::~Scope()
{
    m_run.m_timer.stop();
    if (m_run.m_debugging)
        try { // whatever ended the run, and a link that is gone has nothing to be cleared
            m_run.debugger().clear();
        } catch (const HException&) {
        }
    if (m_run.m_monitor)
        m_run.m_monitor->setDebugSession(false);
    m_run.m_monitor = nullptr;
    m_run.debugger().setTargetIOServer(nullptr);
    m_run.m_server = nullptr;
}

// The simulator serves requests without waiting for a poll, and would only be slowed down by more of them
// than pass() makes passes.
ProgramRun::ProgramRun(Loader& loader) : m_loader(loader)
{
    m_timer.setObjectName(QStringLiteral("qburn-debug-timer"));
    QObject::connect(&m_timer, &QTimer::timeout, this, &ProgramRun::timedPoll);
}

SymbolicDebuggerInterface& ProgramRun::debugger() const
{
    if (!m_debugger)
        throw HException("no debugger");
    return *m_debugger;
}

void ProgramRun::loadSymbols()
{
    for (const LoadFileListItem& item : m_loader.loadFiles().items())
        if (item.file->hasSymbols())
            debugger().loadSymbols(Path(item.name), 0);
}

void ProgramRun::start(const QString& entry, bool stop)
{
    setRunning();
    debugger().start(entry, stop);
    if (stop) // known before the first command
        poll();
}

// Under commands a stop is to be known at once: a program in this process is looked at after each slice, and
// any other right after it was sent on, since most steps are short; after that the timer looks.
void ProgramRun::pass()
{
    if (m_pollAtOnce) {
        m_pollAtOnce = false;
        poll();
        if (m_stopped)
            return;
    }
    bool sliced = m_debugging && m_monitor && m_monitor->runsOnEvents();
    QCoreApplication::processEvents(m_debugging ? QEventLoop::WaitForMoreEvents : QEventLoop::AllEvents);
    if (Interrupt::requested() || m_quit)
        return;
    if (!m_debugging)
        QTx::sleep(idle() ? IdlePassMilliseconds : PassMilliseconds);
    else if (!m_stopped && sliced)
        poll();
}

void ProgramRun::setRunning()
{
    m_stopped = false;
    m_pollAtOnce = true;
    m_idlePolls = 0;
    m_timer.setInterval(PassMilliseconds);
}

bool ProgramRun::idle() const
{
    return m_idlePolls == IdleAfterPolls;
}

// A failure is told, and does not go into the event loop.
void ProgramRun::poll()
{
    try {
        // A stop that is the session's end is not told.
        if (debugger().isStopped() && !m_stopped && !Interrupt::requested()) {
            m_stopped = true;
            if (m_listener)
                m_listener->onBreakpoint();
        }
    } catch (const HException& failure) {
        m_loader.displayError(failure.text());
    }
}

void ProgramRun::timedPoll()
{
    if (m_debugging && m_stopped) {
        m_timer.setInterval(IdlePollMaximum);
        return;
    }
    uint64_t before = m_server->requests();
    double start = processorMilliseconds();
    poll();
    double cost = processorMilliseconds() - start;
    bool asked = m_server->requests() != before;
    m_idlePolls = asked ? 0 : std::min(m_idlePolls + 1, IdleAfterPolls);
    int interval = PassMilliseconds;
    if (idle())
        interval = std::clamp(int(std::min(cost / IdleShare, 1e3)), IdlePollMilliseconds, IdlePollMaximum);
    if (interval != m_timer.interval())
        m_timer.setInterval(interval);
}

bool ProgramRun::waitForStop(unsigned milliseconds)
{
    QElapsedTimer timer;
    timer.start();
    while (!m_stopped && !m_quit && !timer.hasExpired(milliseconds)) {
        pass();
        Interrupt::check();
    }
    return m_stopped;
}

// The user has lost interest, so a target that does not answer any more is not worth a word.
void ProgramRun::abandon()
{
    try {
        debugger().stop();
        debugger().clear();
    } catch (const HException&) {
    }
}

void ProgramRun::quit(int status)
{
    m_exitStatus = status;
    quit();
}
