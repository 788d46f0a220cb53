// A program that runs under the debugger, with its requests served on the console, until it ends.

#include "debug/SymbolicDebuggerInterface.h"
#include "driver/System.h"
#include "driver/session/Interrupt.h"
#include "driver/session/StandardOutput.h"
#include "driver/terminal/TextTargetIOServerTerminal.h"
#include "loadfile/LoadFileInterface.h"
#include "project/BuildSystem.h"
#include "support/HException.h"
#include "support/Numbers.h"
#include "support/QTx.h"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace {

constexpr int ClosedPipeStatus = 141; // as a shell tells of a program that SIGPIPE ended
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

// What a run sets up in the session and the debugger, for exactly as long as it lasts.
class System::RunScope {
public:
    RunScope(System* system, TextTargetIOServerTerminal* terminal) : m_system(system)
    {
        m_system->m_terminal = terminal;
        debugger->setTargetInterface(m_system->m_loader.targetInterface());
        debugger->setTargetIOServer(terminal->server());
        // The simulator serves requests without waiting for a poll, and would only be slowed down by more
        // of them than the loop in run() has passes.
        m_timer.setObjectName(QStringLiteral("qburn-debug-timer"));
        QObject::connect(&m_timer, &QTimer::timeout, m_system, [this] { poll(); });
        m_timer.start(PassMilliseconds);
    }
    ~RunScope()
    {
        m_timer.stop();
        debugger->setTargetIOServer(nullptr);
        m_system->m_terminal = nullptr;
    }
    RunScope(const RunScope&) = delete;
    RunScope& operator=(const RunScope&) = delete;

    bool idle() const { return m_idlePolls == IdleAfterPolls; }

private:
    void poll()
    {
        uint64_t before = m_system->m_terminal->server()->requests();
        double start = processorMilliseconds();
        m_system->poll();
        double cost = processorMilliseconds() - start;
        bool asked = m_system->m_terminal->server()->requests() != before;
        m_idlePolls = asked ? 0 : std::min(m_idlePolls + 1, IdleAfterPolls);
        int interval = PassMilliseconds;
        if (idle())
            interval =
                std::clamp(int(std::min(cost / IdleShare, 1e3)), IdlePollMilliseconds, IdlePollMaximum);
        if (interval != m_timer.interval())
            m_timer.setInterval(interval);
    }

    System* m_system;
    QTimer m_timer{m_system};
    int m_idlePolls = 0;
};

// Where the program begins, as the debugger takes it; empty when nobody says. A number from the command
// line is in hexadecimal already.
QString System::entryPoint() const
{
    LoadFileInterface* first = m_loader.loadFiles().items().front().file;
    if (first->hasEntryPoint())
        return toHexString(uint32_t(first->entryPoint()));
    if (!m_entry.isEmpty() || !m_activeProject)
        return m_entry;
    const PropertyClass* symbol = buildSystem->findPropertyClass(QStringLiteral("debug_entry_point_symbol"));
    return buildSystem->settingForExpanded(m_activeProject, symbol, m_configuration);
}

void System::run(const QString& entry)
{
    TextTargetIOServerTerminal terminal(m_targetArguments);
    terminal.setWaitingTarget(m_loader.targetInterface());
    RunScope scope(this, &terminal);
    try {
        for (const LoadFileListItem& item : m_loader.loadFiles().items())
            if (item.file->hasSymbols())
                debugger->loadSymbols(Path(item.name), 0);
        m_loader.setRunning();
        debugger->start(entry, false);
        while (!terminal.exited()) {
            QCoreApplication::processEvents();
            Interrupt::check();
            if (!terminal.exited())
                QTx::sleep(scope.idle() ? IdlePassMilliseconds : PassMilliseconds);
        }
        Interrupt::check();
    } catch (const Interrupted&) {
        abandonRun();
        throw;
    }
    m_exitStatus = terminal.exitCode();
    if (const auto& failure = terminal.outputFailure()) {
        abandonRun();
        if (!StandardOutput::pipeClosed())
            throw *failure;
        m_exitStatus = ClosedPipeStatus;
    }
}

// The user has lost interest, so a target that does not answer any more is not worth a word.
void System::abandonRun()
{
    try {
        debugger->stop();
        debugger->clear();
    } catch (const HException&) {
    }
}

void System::poll()
{
    m_loader.pollDebugger();
}
