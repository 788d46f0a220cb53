// The breakpoints that commands have set and that are known by a number. Numbers only grow. The breakpoints
// themselves belong to the debugger.
#pragma once

#include <QString>
#include <QStringList>

#include <list>

class DebuggerBreakpoint;

class NumberedBreakpoints {
public:
    struct Info {
        unsigned number;
        DebuggerBreakpoint* breakpoint;
        bool byExpression; // else by a source line
        QString text;      // of the expression, or the file
        int line;
    };

    unsigned addBreakpoint(DebuggerBreakpoint* breakpoint, bool byExpression, const QString& text, int line);
    // Null for one that is not here.
    const Info* findBreakpoint(const DebuggerBreakpoint* breakpoint) const;
    const Info* findBreakpoint(unsigned number) const;
    const std::list<Info>& all() const { return m_breakpoints; }
    void remove(unsigned number);
    void clear() { m_breakpoints.clear(); }
    // "NUMBER) TEXT DESCRIPTION" of one, or of all for 0.
    QStringList describe(unsigned number) const;

private:
    std::list<Info> m_breakpoints;
    unsigned m_next = 1;
};
