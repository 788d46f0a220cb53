#include "driver/console/NumberedBreakpoints.h"

#include "debug/run/DebuggerBreakpoint.h"

unsigned NumberedBreakpoints::addBreakpoint(DebuggerBreakpoint* breakpoint, bool byExpression,
                                            const QString& text, int line)
{
    m_breakpoints.push_back({m_next, breakpoint, byExpression, text, line});
    return m_next++;
}

const NumberedBreakpoints::Info*
NumberedBreakpoints::findBreakpoint(const DebuggerBreakpoint* breakpoint) const
{
    for (const Info& info : m_breakpoints)
        if (info.breakpoint == breakpoint)
            return &info;
    return nullptr;
}

const NumberedBreakpoints::Info* NumberedBreakpoints::findBreakpoint(unsigned number) const
{
    for (const Info& info : m_breakpoints)
        if (info.number == number)
            return &info;
    return nullptr;
}

void NumberedBreakpoints::remove(unsigned number)
{
    m_breakpoints.remove_if([number](const Info& info) { return info.number == number; });
}

QStringList NumberedBreakpoints::describe(unsigned number) const
{
    QStringList lines;
    for (const Info& info : m_breakpoints) {
        if (number != 0 && info.number != number)
            continue;
        QString text = QString::number(info.number) + QLatin1String(") ") + info.text;
        if (!info.byExpression)
            text += u':' + QString::number(info.line);
        lines.append(text + u' ' + info.breakpoint->getDescription());
    }
    return lines;
}
