// The table of commands, and those that let the program go on, stop, or end.
#include "driver/console/DebugCommands.h"

#include "debug/SymbolicDebuggerInterface.h"
#include "driver/console/CommandArguments.h"
#include "driver/console/ShortCommands.h"
#include "driver/session/Loader.h"
#include "driver/session/SessionFace.h"
#include "support/HException.h"

#include <algorithm>

namespace {

using State = DebugCommands::State;

} // namespace

std::span<const DebugCommands::Command> DebugCommands::commands()
{
    static constexpr Command Commands[] = {
#define COMMAND(number, name, handler, arguments, state, help)                                               \
    {number, name, "Debug.prototype." name, arguments, State::state, &DebugCommands::handler, help},
        COMMAND(0, "breakexpr", breakexpr, "expression, [temporary, [count, [enabled, [trigger, [action]]]]]",
                Any,
                "stop at an address, or at an access to data") COMMAND(1, "breakline", breakline,
                                                                       "file, line, [temporary, [count, "
                                                                       "[enabled, [trigger, [action]]]]]",
                                                                       Any,
                                                                       "stop at a line") COMMAND(3,
                                                                                                 "breaknow",
                                                                                                 breaknow, "",
                                                                                                 Running,
                                                                                                 "stop the "
                                                                                                 "program")
            COMMAND(4, "deletebreak", deletebreak, "number", Any, "delete a breakpoint, 0 for all") COMMAND(
                5, "chainbreak", chainbreak, "first, second", Any,
                "let the first breakpoint arm the second, 0 for none")
                COMMAND(6, "showbreak", showbreak, "number", Any, "show a breakpoint, 0 for all") COMMAND(
                    7, "showexceptions", showexceptions, "", Any,
                    "show what the target can stop for") COMMAND(8, "enableexception", enableexception,
                                                                 "name, enabled", Any,
                                                                 "stop for an exception or not")
                    COMMAND(9, "stepinto", stepinto, "[instruction]", Stopped,
                            "step one line, into calls") COMMAND(10, "stepover", stepover, "[instruction]",
                                                                 Stopped, "step one line, over calls")
                        COMMAND(11, "go", go, "", Stopped, "let the program run") COMMAND(
                            12, "stepout", stepout, "", Stopped,
                            "run to the caller") COMMAND(13, "evaluate", evaluate, "expression",
                                                         Stopped, "the value of an expression")
                            COMMAND(
                                15,
                                "print",
                                print, "expression, [format]", Stopped,
                                "show a value; formats b c d e f g i o p s "
                                "u x") COMMAND(16, "printregisters", printregisters, "", Stopped,
                                               "show the registers of the frame")
                                COMMAND(
                                    17,
                                    "printlocals",
                                    printlocals, "", Any,
                                    "show the local "
                                    "variables of the "
                                    "frame") COMMAND(18, "printglobals", printglobals, "",
                                                     Any, "show the global variables")
                                    COMMAND(
                                        19,
                                        "wait",
                                        wait, "milliseconds", Any,
                                        "wait for a "
                                        "stop: the "
                                        "breakpoint's "
                                        "number, or 0") COMMAND(20, "quit", quit, "", Any, "end the run")
                                        COMMAND(21, "where", where, "", Stopped, "show the calls") COMMAND(
                                            22, "locate", locate, "[frame]", Stopped,
                                            "select a frame, 0 "
                                            "is the innermost")
                                            COMMAND(23, "locatepc", locatepc, "address", Stopped,
                                                    "select a place by its address")
                                                COMMAND(24, "locateregisters", locateregisters, "words",
                                                        Stopped, "select a place by a block of registers")
                                                    COMMAND(25, "setmode", setmode, "mode", Stopped,
                                                            "show code as "
                                                            "\"source\" or "
                                                            "as "
                                                            "\"disassembly"
                                                            "\"") COMMAND(26, "getfilename", getfilename, "",
                                                                          Stopped,
                                                                          "the source file of the place")
                                                        COMMAND(
                                                            27,
                                                            "getlinenumber", getlinenumber, "", Stopped,
                                                            "th"
                                                            "e "
                                                            "li"
                                                            "ne"
                                                            " o"
                                                            "f "
                                                            "th"
                                                            "e "
                                                            "pl"
                                                            "ac"
                                                            "e") COMMAND(28, "list", list, "before, after",
                                                                         Stopped,
                                                                         "show so many lines around "
                                                                         "the place") COMMAND(29,
                                                                                              "setprintradix",
                                                                                              setprintradix,
                                                                                              "radix", Any,
                                                                                              "print numbers "
                                                                                              "in "
                                                                                              "radix 2, 8, "
                                                                                              "10 or 16")
                                                            COMMAND(
                                                                30,
                                                                "setprintarray", setprintarray, "count", Any,
                                                                "print so many elements of an array")
                                                                COMMAND(
                                                                    31,
                                                                    "setprintstring", setprintstring, "on",
                                                                    Any,
                                                                    "print what a char pointer points to")
                                                                    COMMAND(
                                                                        32,
                                                                        "echo",
                                                                        echo, "text", Any,
                                                                        "show a text") COMMAND(33, "exit",
                                                                                               exit, "status",
                                                                                               Any,
                                                                                               "end the run "
                                                                                               "with an exit "
                                                                                               "status")
                                                                        COMMAND(
                                                                            34,
                                                                            "assert", assertion,
                                                                            "condition, text", Any,
                                                                            "fail unless the condition holds")
                                                                            COMMAND(
                                                                                35,
                                                                                "lastexception",
                                                                                lastexception, "", Any,
                                                                                "the exception of the last "
                                                                                "stop, "
                                                                                "or \"\"")
                                                                                COMMAND(
                                                                                    36,
                                                                                    "enablebreak",
                                                                                    enablebreak, "number, on",
                                                                                    Any,
                                                                                    "switch a "
                                                                                    "breakpoint "
                                                                                    "on or "
                                                                                    "off") COMMAND(37,
                                                                                                   "setnext",
                                                                                                   setnext,
                                                                                                   "file, "
                                                                                                   "line",
                                                                                                   Stopped,
                                                                                                   "go on at "
                                                                                                   "a line")
                                                                                    COMMAND(
                                                                                        38,
                                                                                        "set",
                                                                                        set, "expression, value",
                                                                                        Stopped,
                                                                                        "assign to a "
                                                                                        "variable or "
                                                                                        "register") COMMAND(39,
                                                                                                            "dump", dump,
                                                                                                            "address, length",
                                                                                                            Stopped,
                                                                                                            "show memory in "
                                                                                                            "hexadecimal")
                                                                                        COMMAND(
                                                                                            40,
                                                                                            "trace", trace,
                                                                                            "on", Any,
                                                                                            "record the "
                                                                                            "instructions "
                                                                                            "that are "
                                                                                            "executed")
                                                                                            COMMAND(
                                                                                                41, "showtrace",
                                                                                                showtrace,
                                                                                                "count", Any,
                                                                                                "show the "
                                                                                                "last "
                                                                                                "instructions"
                                                                                                ", newest "
                                                                                                "last")
                                                                                                COMMAND(
                                                                                                    42,
                                                                                                    "showcoun"
                                                                                                    "ts",
                                                                                                    showcounts,
                                                                                                    "", Any,
                                                                                                    "show "
                                                                                                    "how "
                                                                                                    "often "
                                                                                                    "each "
                                                                                                    "line "
                                                                                                    "was "
                                                                                                    "execute"
                                                                                                    "d")
                                                                                                    COMMAND(
                                                                                                        43,
                                                                                                        "hel"
                                                                                                        "p",
                                                                                                        help,
                                                                                                        "",
                                                                                                        Any,
                                                                                                        "show"
                                                                                                        " the"
                                                                                                        " com"
                                                                                                        "mand"
                                                                                                        "s")
#undef COMMAND
    };
    return Commands;
}

DebugCommands::DebugCommands(ProgramRun& run) : ESClass("Debug"), m_run(run), m_view(run) {}

ESObject* DebugCommands::installScriptObject(ESContext* context)
{
    ESObject* object = context->mkobj(context->objectPrototype(), context->objectClass());
    context->valinstant(context->globalObject(), ESProperty::DontEnum, ESStringPool::intern("Debug"),
                        ESValue(object));
    for (const Command& command : commands())
        biinst(context, object,
               {command.name, command.fullName, int(QByteArray(command.arguments).count(',')) + 1, false,
                command.number},
               context->functionPrototype(), this);
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

// The session counts as running only when the debugger has sent the program on.
template <typename Resume> ESValue DebugCommands::resume(Resume&& action)
{
    action();
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
