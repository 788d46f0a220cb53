// Commands about breakpoints and exceptions.
#include "debug/SymbolicDebuggerInterface.h"
#include "driver/console/CommandArguments.h"
#include "driver/console/DebugCommands.h"
#include "support/HException.h"

#include <algorithm>

// The optional arguments of both kinds of breakpoints, from some index on.
struct DebugCommands::Options {
    Options(const Arguments& arguments, unsigned first, SymbolicDebuggerInterface& debugger)
        : temporary(arguments.boolean(first)),
          ignored(std::max(int(std::min(arguments.number(first + 1, 1), 0x7FFFFFFFu)) - 1, 0)),
          enabled(arguments.boolean(first + 2, true)),
          trigger(oneOf("trigger", arguments.text(first + 3), debugger.getBreakTriggers())),
          action(oneOf("action", arguments.text(first + 4), debugger.getBreakActions()))
    {
    }

    bool temporary;
    int ignored; // hits in front of the one that stops
    bool enabled;
    QString trigger; // null for the one that the place suggests
    QString action;

private:
    static QString oneOf(const char* what, const QString& name, const QStringList& names)
    {
        if (name.isEmpty())
            return QString();
        if (!names.contains(name))
            throw HException(QStringLiteral("unknown %1 \"%2\" (there is %3)")
                                 .arg(QLatin1String(what), name, names.join(QLatin1String(", "))));
        return name;
    }
};

ESValue DebugCommands::remember(DebuggerBreakpoint* breakpoint, const Arguments& arguments, unsigned optional,
                                bool byExpression, const QString& text, int line)
{
    if (!breakpoint)
        throw HException("the target refuses the breakpoint");
    if (!arguments.boolean(optional + 2, true))
        debugger().setBreakpointEnabled(breakpoint, false);
    if (arguments.boolean(optional))
        return g_undefined;
    return ESValue(double(m_breakpoints.addBreakpoint(breakpoint, byExpression, text, line)));
}

ESValue DebugCommands::breakexpr(Arguments& arguments)
{
    QString expression = arguments.text(0);
    Options options(arguments, 1, debugger());
    DebuggerBreakpoint* made =
        debugger().setBreakpoint(m_view.context(), expression, options.trigger, options.ignored, false,
                                 options.temporary, QString(), options.action);
    return remember(made, arguments, 1, true, expression, 0);
}

ESValue DebugCommands::breakline(Arguments& arguments)
{
    QString file = arguments.text(0);
    int line = int(arguments.number(1));
    Options options(arguments, 2, debugger());
    Path path = sourceFile(file);
    DebuggerBreakpoint* made = nullptr;
    QString executable;
    int64_t address = options.trigger.isEmpty() ? -1 : debugger().getLineAddress(executable, path, line);
    if (address >= 0) // an access to the code of the line
        made = debugger().setBreakpoint(ExpressionContext(), QStringLiteral("*((char*)%1)").arg(address),
                                        options.trigger, options.ignored, false, options.temporary, QString(),
                                        options.action);
    else
        made = debugger().setBreakpoint(QString(), path, line, options.ignored, false, options.temporary,
                                        QString(), options.action);
    return remember(made, arguments, 2, false, file, line);
}

// The source that a user names: a path as the executables have it, or the end of one.
Path DebugCommands::sourceFile(const QString& given) const
{
    Path path(Path(given).osPathQString());
    QStringList found;
    const QString end = u'/' + path.osPathQString();
    for (const QString& executable : debugger().executableNames())
        for (const QString& source : debugger().sourceFileNames(executable)) {
            if (Path(source) == path)
                return path;
            if (source.endsWith(end) && !found.contains(source))
                found.append(source);
        }
    if (found.size() > 1)
        throw HException(
            QStringLiteral("\"%1\" is more than one file: %2").arg(given, found.join(QLatin1String(", "))));
    return found.isEmpty() ? path : Path(found.front());
}

const NumberedBreakpoints::Info& DebugCommands::knownBreakpoint(unsigned number) const
{
    const NumberedBreakpoints::Info* info = m_breakpoints.findBreakpoint(number);
    if (!info)
        throw HException(QStringLiteral("no breakpoint %1").arg(number));
    return *info;
}

ESValue DebugCommands::deletebreak(Arguments& arguments)
{
    unsigned number = arguments.number(0);
    std::list<NumberedBreakpoints::Info> all = m_breakpoints.all();
    for (const NumberedBreakpoints::Info& info : all)
        if (number == 0 || info.number == number) {
            m_breakpoints.remove(info.number);
            debugger().clearBreakpoint(info.breakpoint);
        }
    return g_undefined;
}

ESValue DebugCommands::chainbreak(Arguments& arguments)
{
    unsigned first = arguments.number(0);
    DebuggerBreakpoint* from = first ? knownBreakpoint(first).breakpoint : nullptr;
    debugger().chainFrom(knownBreakpoint(arguments.number(1)).breakpoint, from);
    return g_undefined;
}

ESValue DebugCommands::showbreak(Arguments& arguments)
{
    show(m_breakpoints.describe(arguments.number(0)));
    return g_undefined;
}

ESValue DebugCommands::enablebreak(Arguments& arguments)
{
    unsigned number = arguments.number(0);
    if (number)
        knownBreakpoint(number);
    for (const NumberedBreakpoints::Info& info : m_breakpoints.all())
        if (number == 0 || info.number == number)
            debugger().setBreakpointEnabled(info.breakpoint, arguments.boolean(1, true));
    return g_undefined;
}

ESValue DebugCommands::showexceptions(Arguments&)
{
    QStringList lines;
    int classes = int(debugger().getExceptionClasses().size());
    for (int i = 0; i < classes; ++i)
        if (debugger().targetHasExceptionClass(i))
            for (const auto& [name, enabled] : debugger().getExceptionTypes(i))
                lines.append(name + QLatin1String(enabled ? " enabled" : " disabled"));
    show(lines);
    return g_undefined;
}

ESValue DebugCommands::enableexception(Arguments& arguments)
{
    QString name = arguments.text(0);
    bool known = false;
    int classes = int(debugger().getExceptionClasses().size());
    for (int i = 0; i < classes; ++i)
        for (const auto& type : debugger().getExceptionTypes(i))
            known = known || type.first == name;
    if (!known)
        throw HException(QStringLiteral("unknown exception \"%1\"").arg(name));
    debugger().setExceptionEnabled(name, arguments.boolean(1, true));
    return g_undefined;
}

ESValue DebugCommands::lastexception(Arguments&)
{
    return ESValue(ESStringPool::intern(debugger().lastMatchedException()));
}
