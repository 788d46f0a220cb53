// A program that runs under the debugger, with its requests served on the console, until it ends.

#include "debug/SymbolicDebuggerInterface.h"
#include "driver/System.h"
#include "driver/session/Interrupt.h"
#include "driver/terminal/StandardOutput.h"
#include "loadfile/LoadFileInterface.h"
#include "project/BuildSystem.h"
#include "support/HException.h"
#include "support/Numbers.h"

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

// Where the program begins, as the debugger takes it; empty when nobody says. A number from the command
// line is in hexadecimal already.
QString System::entryPoint() const
{
    LoadFileInterface* first = m_loader.loadFiles().items().front().file;
    if (first->hasEntryPoint())
        return toHexString(uint32_t(first->entryPoint()));
    if (!m_options.entry.isEmpty() || !m_activeProject)
        return m_options.entry;
    const PropertyClass* symbol = buildSystem->findPropertyClass(QStringLiteral("debug_entry_point_symbol"));
    return buildSystem->settingForExpanded(m_activeProject, symbol, m_options.configuration);
}

void System::run(const QString& entry)
{
    TextTargetIOServerTerminal terminal(m_options.targetArguments, *this);
    terminal.setWaitingTarget(m_loader.targetInterface());
    ConsoleScope console(m_terminal, m_face, terminal);
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
