// A program that runs under the debugger, with its requests served on the console, until it ends.

#include "debug/SymbolicDebuggerInterface.h"
#include "driver/System.h"
#include "driver/session/Interrupt.h"
#include "driver/terminal/StandardOutput.h"
#include "support/HException.h"

namespace {

constexpr int ClosedPipeStatus = 141; // as a shell tells of a program that SIGPIPE ended

// The console is known to those who write to it for exactly as long as it lasts.
class ConsoleScope {
public:
    ConsoleScope(TextTargetIOServerTerminal*& place, TerminalFace& face, TextTargetIOServerTerminal& console)
        : m_place(place), m_face(face)
    {
        m_place = &console;
        m_face.setConsole(&console);
    }
    ~ConsoleScope()
    {
        m_place = nullptr;
        m_face.setConsole(nullptr);
    }
    ConsoleScope(const ConsoleScope&) = delete;
    ConsoleScope& operator=(const ConsoleScope&) = delete;

private:
    TextTargetIOServerTerminal*& m_place;
    TerminalFace& m_face;
};

} // namespace

void System::run(const QString& entry)
{
    TextTargetIOServerTerminal terminal(m_options.targetArguments, *this);
    terminal.setWaitingTarget(m_loader.targetInterface());
    ConsoleScope console(m_terminal, m_terminalFace, terminal);
    ProgramRun::Scope scope(m_run, *terminal.server());
    m_run.setStopListener(&m_stopNotice);
    try {
        m_run.loadSymbols();
        m_run.start(entry, false);
        while (!terminal.exited())
            m_run.pass();
        Interrupt::check();
    } catch (const Interrupted&) {
        m_run.abandon();
        throw;
    }
    m_exitStatus = terminal.exitCode();
    if (const auto& failure = terminal.outputFailure()) {
        m_run.abandon();
        if (!StandardOutput::pipeClosed())
            throw *failure;
        m_exitStatus = ClosedPipeStatus;
    }
}

void System::programExited()
{
    debugger->clear();
}

// What went wrong first is what the user is told.
void System::outputFailed()
{
    try {
        debugger->stop();
    } catch (const HException&) {
    }
}
