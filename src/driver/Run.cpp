// A program that runs under the debugger, with its requests served on the console, until it ends.

#include "debug/SymbolicDebuggerInterface.h"
#include "debug/evaluation/ExpressionContext.h"
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
    ProgramRun::Scope scope(m_run, *terminal.server(), m_options.debug);
    m_debugCommands.clear();
    if (m_options.debug) {
        m_run.setStopListener(&m_debugCommands.view());
        terminal.setCompleter(&m_completion);
    } else {
        m_run.setStopListener(&m_stopNotice);
    }
    try {
        m_run.loadSymbols();
        if (m_options.debug) {
            startDebugging(entry);
            debug();
        } else {
            m_run.start(entry, false);
            while (!terminal.exited() && !Interrupt::requested())
                m_run.pass();
        }
        Interrupt::check();
    } catch (const Interrupted&) {
        m_run.abandon();
        throw;
    }
    m_exitStatus = m_run.exitStatus().value_or(terminal.exitCode());
    if (const auto& failure = terminal.outputFailure()) {
        m_run.abandon();
        if (!StandardOutput::pipeClosed())
            throw *failure;
        m_exitStatus = ClosedPipeStatus;
    }
}

// --- Under commands ---------------------------------------------------------------------------

void System::startDebugging(const QString& entry)
{
    bool stop = false;
    if (!m_options.breakSymbol.isEmpty())
        try {
            debugger->setBreakpoint(ExpressionContext(), m_options.breakSymbol, QString(), 0, true, true,
                                    QString(), QString());
        } catch (const HException& failure) {
            m_terminal->showOutputWithPrompt({failure.text() + QLatin1String("- stopping at entry point")});
            stop = true;
        }
    repeatExceptions();
    m_run.start(entry, stop);
}

// The settings are the debugger's; the target hears of them now.
void System::repeatExceptions()
{
    const int classes = int(debugger->getExceptionClasses().size());
    for (int i = 0; i < classes; ++i)
        if (debugger->targetHasExceptionClass(i))
            for (const auto& [name, enabled] : debugger->getExceptionTypes(i))
                debugger->setExceptionEnabled(name, enabled);
}

// Until the program ends, a command quits, or nobody is left who could send the program on.
void System::debug()
{
    if (!m_options.scriptFile.isEmpty())
        guarded([this] { execScriptFile(Path(m_options.scriptFile)); });
    if (!m_terminal->exited() && !m_run.quitting())
        m_terminal->setPromptString(QStringLiteral(">"));
    while (!m_terminal->exited() && !m_run.quitting()) {
        if (m_terminal->inputLines() > 0) {
            const QByteArray line = m_terminal->getInputLine().toLatin1();
            guarded([&] {
                try {
                    command(QString::fromLocal8Bit(line));
                } catch (const HException& failure) {
                    m_terminal->showOutputWithPrompt({failure.text()});
                }
            });
            continue;
        }
        if (m_terminal->inputEnded() && (m_terminal->keyboard() || m_run.stopped()))
            return;
        if (connectionLost()) {
            m_terminal->showOutputWithPrompt({QStringLiteral("Target connection has been lost")});
            return;
        }
        guarded([this] {
            m_run.pass();
            Interrupt::check();
        });
    }
}

void System::command(const QString& line)
{
    const QString script = m_shortCommands.translate(line);
    if (script.isEmpty())
        return;
    m_scriptSystem.setSourceName(QString());
    m_scriptSystem.execute(script, true);
}

// Ctrl-C ends what a command does and comes back to the prompt, where there is one.
void System::guarded(const std::function<void()>& action)
{
    try {
        action();
    } catch (const Interrupted&) {
        if (!interruptsCommand() || !interruptCommand())
            throw;
    }
}

bool System::interruptsCommand() const
{
    return m_terminal && m_options.debug && m_terminal->keyboard() && Interrupt::byKey();
}

// Gives up the line, and stops the program when it runs. False for the second one within a second, which ends
// the run.
bool System::interruptCommand()
{
    constexpr int TwiceMilliseconds = 1000;
    bool twice = m_lastInterrupt.isValid() && !m_lastInterrupt.hasExpired(TwiceMilliseconds);
    m_lastInterrupt.start();
    if (twice)
        return false;
    Interrupt::forget();
    m_terminal->dropLine();
    try {
        if (!m_run.stopped())
            debugger->stop();
    } catch (const HException& failure) {
        m_loader.displayError(failure.text());
    }
    return true;
}

bool System::connectionLost() const
{
    TargetInterface* target = m_loader.targetInterface();
    return !target->isConnected() || target->hasBeenExternallyDisconnected();
}

void System::programExited()
{
    m_run.quit();
    m_debugCommands.clear();
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
