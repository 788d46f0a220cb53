// The life of the program that the adapter debugs: download, start, runs and stops, and its end.

#include "debug/SymbolicDebuggerInterface.h"
#include "debug/evaluation/ExpressionContext.h"
#include "debug/run/DebuggerBreakpoint.h"
#include "debug/run/Frame.h"
#include "driver/dap/Adapter.h"
#include "driver/dap/RequestArguments.h"
#include "driver/dap/RequestFailure.h"
#include "driver/session/Interrupt.h"
#include "driver/session/Loader.h"
#include "driver/session/Options.h"
#include "driver/session/SessionSteps.h"
#include "support/HException.h"
#include "support/Path.h"
#include "target/TargetInterface.h"

#include <QJsonArray>

namespace {

constexpr unsigned StartMilliseconds = 5000; // for a target to stand at its first instruction

} // namespace

QJsonObject Adapter::launch(const RequestArguments& arguments)
{
    begin(false, arguments);
    return {};
}

QJsonObject Adapter::attach(const RequestArguments& arguments)
{
    begin(true, arguments);
    return {};
}

// An editor sends one launch; what has failed is not tried again in this process.
void Adapter::begin(bool attach, const RequestArguments& arguments)
{
    m_progress.setRequest(m_current);
    try {
        m_launch.emplace(arguments, attach, m_session.options, m_context.client.sourceMap);
        m_session.steps.selectTarget();
        m_session.targetSelected();
        m_session.steps.selectFiles();
        TargetInterface* target = m_session.loader.targetInterface();
        if (m_session.loader.loadFiles().isEmpty())
            throw RequestFailure("no load file is given (\"files\")");
        if (attach && !(target->capabilities() & TargetInterface::CanAttach))
            throw RequestFailure("the target cannot be attached to");
        m_session.loader.connectTarget(m_session.steps.activeProject(), m_session.options.configuration);
        if (!attach)
            m_session.steps.load();
        m_progress.end();
        startProgram();
    } catch (...) {
        m_progress.end();
        endProgram(!attach, false);
        m_afterResponse.push_back([this] { m_messages.event("terminated"); });
        throw;
    }
    m_state = Configuring;
    m_afterResponse.push_back([this] {
        QJsonObject changed{{QStringLiteral("exceptionBreakpointFilters"), exceptionFilters()}};
        m_messages.event("capabilities", {{QStringLiteral("capabilities"), changed}});
        m_messages.event("initialized");
    });
}

void Adapter::startProgram()
{
    m_console = std::make_unique<EditorConsole>(m_messages, m_session.options.targetArguments,
                                                [this](int status) { programExited(status); });
    m_scope = std::make_unique<ProgramRun::Scope>(m_session.run, m_console->server(), true);
    m_session.run.loadSymbols();
    m_context.sources.update();
    if (m_launch->attach) {
        m_session.run.setRunning();
        m_debugger.attach();
        return;
    }
    m_state = Configuring; // so that this stop is not told
    m_session.run.start(m_session.steps.entryPoint(), true);
    if (!m_session.run.waitForStop(StartMilliseconds))
        throw RequestFailure("the target does not stop at the program's first instruction");
}

QJsonObject Adapter::configurationDone(const RequestArguments&)
{
    if (m_launch->attach) {
        m_state = m_session.run.stopped() ? Stopped : Running;
        if (m_state == Stopped)
            m_afterResponse.push_back([this] { tellStop("entry"); });
        return {};
    }
    m_afterResponse.push_back([this] { standAtEntry(); });
    return {};
}

// Stops the program where it begins, or lets it go on from there.
void Adapter::standAtEntry()
{
    m_state = Stopped;
    bool hit = m_breakpoints.hitAt(pc());
    const QString& symbol = m_session.options.breakSymbol;
    try {
        if (!hit && !m_launch->stopOnEntry && !symbol.isEmpty()) {
            if (m_values.codeAddress(symbol) != pc()) {
                m_debugger.setBreakpoint(ExpressionContext(), symbol, QString(), 0, false, true, QString(),
                                         QString());
                m_entryPending = true;
            } else {
                hit = true;
            }
        }
        if (!hit && !m_launch->stopOnEntry) {
            resume(Intent::Go, [this] { m_debugger.go(); });
            return;
        }
    } catch (const HException& failure) {
        warning(failure.text());
    }
    tellStop(m_breakpoints.stopReason() ? m_breakpoints.stopReason() : "entry");
}

uint32_t Adapter::pc()
{
    QString name, function;
    Path path;
    int line = 0;
    uint32_t address = 0;
    m_debugger.locate(m_debugger.getFrame(0), name, path, function, line, address);
    return address;
}

QJsonObject Adapter::restart(const RequestArguments&)
{
    if (m_launch->attach)
        throw RequestFailure("a program that was attached to cannot be restarted");
    m_console->flush();
    m_progress.setRequest(m_current);
    m_breakpoints.forgetStop();
    m_stack.forget();
    m_values.forget();
    try {
        if (m_state == Running)
            m_debugger.stop();
        m_scope.reset();
        m_breakpoints.forgetInstalled();
        m_session.steps.load();
        m_progress.end();
        startProgram();
        m_breakpoints.install();
    } catch (...) {
        m_progress.end();
        endProgram(true, false);
        m_afterResponse.push_back([this] { m_messages.event("terminated"); });
        throw;
    }
    m_afterResponse.push_back([this] { standAtEntry(); });
    return {};
}

QJsonObject Adapter::disconnect(const RequestArguments& arguments)
{
    bool attached = m_launch && m_launch->attach;
    bool terminate = arguments.flag("terminateDebuggee", !attached);
    endProgram(terminate, arguments.flag("suspendDebuggee", false));
    m_afterResponse.push_back([this] { m_done = true; });
    return {};
}

QJsonObject Adapter::terminate(const RequestArguments&)
{
    endProgram(true, false);
    m_afterResponse.push_back([this] { m_messages.event("terminated"); });
    return {};
}

// Leaves the target without breakpoints: stopped, or going on. What a target that does not answer any more
// fails with is told, and does not keep the session from its end.
void Adapter::endProgram(bool terminate, bool suspend)
{
    bool running = m_state == Running;
    if (m_state != Fresh)
        m_state = Ended;
    try {
        if (m_console)
            m_console->flush();
        if (m_scope) {
            m_breakpoints.removeAll();
            if (terminate || suspend) {
                if (running)
                    m_debugger.stop();
            } else if (!running) {
                m_debugger.go();
            }
        }
    } catch (const HException& failure) {
        warning(failure.text());
    }
    m_scope.reset();
    m_stack.forget();
    m_values.forget();
    try {
        Loader& loader = m_session.loader;
        if (m_session.options.disconnect && loader.hasTargetInterface() &&
            loader.targetInterface()->isConnected())
            loader.disconnectTarget();
    } catch (const HException& failure) {
        warning(failure.text());
    }
}

void Adapter::programExited(int status)
{
    m_state = Ended;
    m_stack.forget();
    m_values.forget();
    m_debugger.clear();
    m_breakpoints.forgetInstalled();
    m_messages.event("exited", {{QStringLiteral("exitCode"), status}});
    m_messages.event("terminated");
}

// --- Runs and stops ---------------------------------------------------------------------------

// The act throws when the program does not go on.
template <class Act> void Adapter::resume(Intent intent, Act act)
{
    m_console->flush();
    m_breakpoints.forgetStop();
    act();
    m_session.run.setRunning();
    noteResume();
    m_intent = intent;
    // A step is over before the event loop comes round.
    m_afterResponse.push_back([this] { m_session.run.poll(); });
}

void Adapter::noteResume()
{
    m_stack.forget();
    m_values.forget();
    m_intent = Intent::Go;
    m_pauseAsked = false;
    m_state = Running;
}

QJsonObject Adapter::go(const RequestArguments&)
{
    resume(Intent::Go, [this] { m_debugger.go(); });
    return {{QStringLiteral("allThreadsContinued"), true}};
}

QJsonObject Adapter::step(const RequestArguments& arguments, bool over)
{
    bool instruction = arguments.text("granularity", QString()) == QLatin1String("instruction");
    resume(Intent::Step, [&] { over ? m_debugger.stepover(instruction) : m_debugger.stepinto(instruction); });
    return {};
}

QJsonObject Adapter::stepOut(const RequestArguments&)
{
    resume(Intent::Step, [this] {
        Frame* caller = m_debugger.getFrame(1);
        if (!caller)
            throw RequestFailure("no calling frame");
        m_debugger.stepout(caller);
    });
    return {};
}

// A program that has just stopped by itself is told as that.
QJsonObject Adapter::pause(const RequestArguments&)
{
    if (m_state == Running) {
        m_pauseAsked = true;
        m_debugger.stop();
        m_afterResponse.push_back([this] { m_session.run.poll(); });
    }
    return {};
}

QJsonObject Adapter::jump(const RequestArguments& arguments)
{
    m_stack.jump(arguments);
    m_debugger.locate();
    m_stack.forget();
    m_values.forget();
    m_breakpoints.forgetStop();
    m_afterResponse.push_back([this] { tellStop("goto"); });
    return {};
}

// What a log message or a condition says of the place is told by the table.
bool Adapter::stopsAt(DebuggerBreakpoint* breakpoint)
{
    bool stops = m_breakpoints.hit(breakpoint);
    m_values.forget();
    return stops;
}

void Adapter::onBreakpoint()
{
    m_stoppedInScript = true;
    if (m_state != Running)
        return;
    m_state = Stopped;
    bool entry = m_entryPending;
    m_entryPending = false;
    QString exception = m_debugger.lastMatchedException();
    // A step may end at a breakpoint without running into it.
    if (!m_breakpoints.stopReason() && exception.isEmpty() && m_intent == Intent::Step)
        m_breakpoints.hitAt(pc());
    if (m_breakpoints.stopReason())
        tellStop(m_breakpoints.stopReason());
    else if (!exception.isEmpty())
        tellStop("exception", exception);
    else if (m_pauseAsked)
        tellStop("pause");
    else if (m_intent == Intent::Step)
        tellStop("step");
    else
        tellStop(entry ? "entry" : "pause");
}

void Adapter::tellStop(const char* reason, const QString& text)
{
    m_console->flush();
    QJsonObject body{{QStringLiteral("reason"), QLatin1String(reason)},
                     {QStringLiteral("threadId"), DapContext::ThreadId},
                     {QStringLiteral("allThreadsStopped"), true}};
    if (!text.isEmpty())
        body.insert(QStringLiteral("text"), text);
    if (!m_breakpoints.stopIds().isEmpty())
        body.insert(QStringLiteral("hitBreakpointIds"), m_breakpoints.stopIds());
    m_messages.event("stopped", body);
}

// --- Errors of the program --------------------------------------------------------------------

QJsonArray Adapter::exceptionFilters() const
{
    QJsonArray filters;
    const QStringList classes = m_debugger.getExceptionClasses();
    for (int i = 0; i < classes.size(); ++i) {
        if (!m_debugger.targetHasExceptionClass(i))
            continue;
        const auto types = m_debugger.getExceptionTypes(i);
        for (const auto& [name, on] : types)
            filters.append(QJsonObject{{QStringLiteral("filter"), name},
                                       {QStringLiteral("label"), name},
                                       {QStringLiteral("default"), on}});
    }
    return filters;
}

QJsonObject Adapter::setExceptions(const RequestArguments& arguments)
{
    const QStringList wanted = arguments.texts("filters");
    QStringList known;
    const QJsonArray filters = exceptionFilters();
    for (const QJsonValue& filter : filters)
        known.append(filter.toObject().value(QLatin1String("filter")).toString());
    for (const QString& name : std::as_const(known))
        m_debugger.setExceptionEnabled(name, wanted.contains(name));
    QJsonArray breakpoints;
    for (const QString& name : wanted) {
        QJsonObject body{{QStringLiteral("verified"), known.contains(name)}};
        if (!known.contains(name))
            body.insert(QStringLiteral("message"), QStringLiteral("the target has no such exception"));
        breakpoints.append(body);
    }
    return {{QStringLiteral("breakpoints"), breakpoints}};
}

QJsonObject Adapter::exceptionInfo(const RequestArguments&)
{
    QString text = m_debugger.lastMatchedException();
    if (text.isEmpty())
        throw RequestFailure("the program has stopped at no exception");
    return {{QStringLiteral("exceptionId"), text},
            {QStringLiteral("description"), text},
            {QStringLiteral("breakMode"), QStringLiteral("always")}};
}

// --- The editor's console ---------------------------------------------------------------------

// While the program runs, a line is input for it, if it asks for some.
QJsonObject Adapter::evaluate(const RequestArguments& arguments)
{
    QString text = arguments.text("expression");
    bool console = arguments.text("context", QString()) == QLatin1String("repl");
    if (console && text.trimmed().startsWith(QLatin1Char('>'))) {
        runScript(text.trimmed().mid(1));
        return {{QStringLiteral("result"), QString()}, {QStringLiteral("variablesReference"), 0}};
    }
    if (m_state == Running) {
        if (!console || !m_console->reading())
            throw RequestFailure("notStopped");
        m_console->addInput(text);
        return {{QStringLiteral("result"), QString()}, {QStringLiteral("variablesReference"), 0}};
    }
    QJsonObject body = m_values.evaluate(arguments);
    return body;
}

// A script may make the program go on, and also wait for its next stop.
void Adapter::runScript(const QString& text)
{
    State before = m_state;
    m_stoppedInScript = false;
    m_breakpoints.forgetStop();
    auto note = [&] {
        bool went = m_stoppedInScript || !m_session.run.stopped();
        if (before != Stopped || m_state != Stopped || !went)
            return;
        noteResume();
        m_afterResponse.push_back([this] {
            m_messages.event("continued", {{QStringLiteral("threadId"), DapContext::ThreadId}});
            if (m_session.run.stopped())
                onBreakpoint();
        });
    };
    try {
        m_session.script(text);
    } catch (...) {
        note();
        throw;
    }
    note();
}
