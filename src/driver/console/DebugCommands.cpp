// The script object, and the commands that let the program go on, stop, or end.
#include "driver/console/DebugCommands.h"

#include "debug/SymbolicDebuggerInterface.h"
#include "driver/console/CommandArguments.h"
#include "driver/console/ShortCommands.h"
#include "driver/session/Loader.h"
#include "driver/session/SessionFace.h"
#include "support/HException.h"

#include <algorithm>
#include <string_view>

namespace {

int argumentCount(std::string_view arguments)
{
    return arguments.empty() ? 0 : int(std::count(arguments.begin(), arguments.end(), ',')) + 1;
}

} // namespace

DebugCommands::DebugCommands(ProgramRun& run) : ESClass("Debug"), m_run(run), m_view(run) {}

ESObject* DebugCommands::installScriptObject(ESContext* context)
{
    ESObject* object = context->mkobj(context->objectPrototype(), context->objectClass());
    context->valinstant(context->globalObject(), ESProperty::DontEnum, ESStringPool::intern("Debug"),
                        ESValue(object));
    for (const Command& command : commands()) {
        QByteArray fullName = QByteArray("Debug.prototype.") + command.name;
        biinst(context, object,
               {command.name, fullName.constData(), argumentCount(command.arguments), false, command.number},
               context->functionPrototype(), this);
    }
    return object;
}

void DebugCommands::call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv)
{
    for (const Command& command : commands()) {
        if (command.number != function->builtinId())
            continue;
        checkStateForCommand(command);
        Arguments arguments(context, argc, argv);
        argv[0] = (this->*command.handler)(arguments);
        return;
    }
    ESClass::call(context, function, self, argc, argv);
}

void DebugCommands::checkStateForCommand(const Command& command) const
{
    if (command.state == State::Stopped && !m_run.stopped())
        throw HException("not stopped");
    if (command.state == State::Running && m_run.stopped())
        throw HException("already stopped");
}

void DebugCommands::show(const QStringList& lines) const
{
    m_run.loader().face().showLines(lines);
}

// The session counts as running only when the debugger has sent the program on, also when that failed
// half-way.
template <typename Resume> ESValue DebugCommands::resume(Resume&& action)
{
    try {
        action();
    } catch (const HException&) {
        if (!debugger().isStopped())
            m_run.setRunning();
        throw;
    }
    m_run.setRunning();
    return g_undefined;
}

ESValue DebugCommands::breaknow(Arguments&)
{
    debugger().stop();
    return g_undefined;
}

ESValue DebugCommands::stepinto(Arguments& arguments)
{
    return resume([&] { debugger().stepinto(arguments.boolean(0, !m_view.sourceMode())); });
}

ESValue DebugCommands::stepover(Arguments& arguments)
{
    return resume([&] { debugger().stepover(arguments.boolean(0, !m_view.sourceMode())); });
}

ESValue DebugCommands::go(Arguments&)
{
    return resume([&] { debugger().go(); });
}

ESValue DebugCommands::stepout(Arguments&)
{
    return resume([&] { debugger().stepout(debugger().getFrame(1)); });
}

ESValue DebugCommands::wait(Arguments& arguments)
{
    if (!m_run.waitForStop(arguments.number(0)))
        return ESValue(0.0);
    const NumberedBreakpoints::Info* matched =
        m_breakpoints.findBreakpoint(debugger().lastMatchedBreakpoint());
    return ESValue(matched ? double(matched->number) : 0.0);
}

ESValue DebugCommands::setnext(Arguments& arguments)
{
    QString file = arguments.text(0);
    int line = int(arguments.number(1));
    if (!debugger().setNextStatement(debugger().getFrame(0), sourceFile(file), line))
        throw HException(QStringLiteral("no code at %1:%2").arg(file).arg(line));
    debugger().locate();
    m_view.locate(0);
    return g_undefined;
}

ESValue DebugCommands::quit(Arguments&)
{
    m_run.quit();
    return g_undefined;
}

ESValue DebugCommands::exit(Arguments& arguments)
{
    m_run.quit(int(arguments.number(0)));
    return g_undefined;
}

ESValue DebugCommands::assertion(Arguments& arguments)
{
    if (!arguments.boolean(0))
        throw HException(QLatin1String("assertion failed: ") + arguments.text(1));
    return g_undefined;
}

ESValue DebugCommands::echo(Arguments& arguments)
{
    show({arguments.text(0)});
    return g_undefined;
}

ESValue DebugCommands::help(Arguments&)
{
    QStringList lines;
    for (const Command& command : commands())
        lines.append(QStringLiteral("Debug.%1(%2): %3")
                         .arg(QLatin1String(command.name), QLatin1String(command.arguments),
                              QLatin1String(command.help)));
    lines.append(QStringLiteral("At the prompt: ") + ShortCommands::help().join(QLatin1String("; ")));
    show(lines);
    return g_undefined;
}
