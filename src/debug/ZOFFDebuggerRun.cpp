// Runs, steps and breakpoints; errors of the program, execution counts and trace, which are the monitor's.

#include "debug/ZOFFDebugger.h"
#include "debug/monitor/DebuggerBreakpointFailure.h"
#include "debug/monitor/DebuggerHelperFunctions.h"
#include "debug/run/DebuggerBreakpoint.h"
#include "debug/run/Frame.h"
#include "debug/run/ZOFFBreakpoint.h"
#include "support/HException.h"
#include "support/Path.h"

void ZOFFDebugger::start(const QString& entry, bool stop)
{
    monitor();
    uint32_t address = getEntryPoint();
    int64_t value = 0;
    if (entry.startsWith(QLatin1String("0x"))) {
        bool number = false;
        address = entry.mid(2).toUInt(&number, 16);
        if (!number)
            throw HException(QLatin1String("bad entry point ") + entry);
    } else if (!entry.isEmpty()) {
        if (getLinkerSymbolValue(entry.toUtf8().constData(), value))
            address = uint32_t(value);
        else
            m_helper->displayError(QStringLiteral("entry point symbol %1 not found").arg(entry));
    }
    m_code.clear();
    m_disassembly.noteRun();
    m_run.start(address, stop);
}

void ZOFFDebugger::attach()
{
    checkedTarget().attach();
    m_code.clear();
    m_run.noteRun();
}

void ZOFFDebugger::go()
{
    monitor();
    m_code.clear(); // a program may write to its own code
    m_disassembly.noteRun();
    m_run.go();
}

void ZOFFDebugger::stop()
{
    monitor();
    m_run.stop();
}

void ZOFFDebugger::stepinto(bool instruction)
{
    monitor();
    m_disassembly.noteRun();
    m_run.step(instruction, false);
}

void ZOFFDebugger::stepover(bool instruction)
{
    monitor();
    m_disassembly.noteRun();
    m_run.step(instruction, true);
}

void ZOFFDebugger::stepout(Frame* frame)
{
    monitor();
    m_disassembly.noteRun();
    m_run.stepOut(frame);
}

bool ZOFFDebugger::isStopped()
{
    return m_run.poll();
}

// --- Breakpoints ------------------------------------------------------------------------------

QStringList ZOFFDebugger::getBreakTriggers()
{
    QStringList names;
    for (int i = 0; m_monitor && i < m_monitor->numTriggers(); ++i)
        names.append(QString::fromLatin1(m_monitor->getTrigger(i)));
    return names;
}

QStringList ZOFFDebugger::getBreakActions()
{
    QStringList names;
    for (int i = 0; m_monitor && i < m_monitor->numActions(); ++i)
        names.append(QString::fromLatin1(m_monitor->getAction(i)));
    return names;
}

QList<bool> ZOFFDebugger::getHardwareBreakPoints()
{
    QList<bool> inUse;
    for (int i = 0; m_monitor && i < m_monitor->numHardwareBreakpoints(); ++i)
        inUse.append(m_monitor->hardwareBreakpointInUse(i));
    return inUse;
}

ZOFFBreakpoint* ZOFFDebugger::setBreakpoint(uint32_t address, bool temporary, bool counted, int count,
                                            int limit, const QString& action)
{
    monitor();
    return m_breakpoints.addCode(address, temporary, counted, count, limit, action);
}

DebuggerBreakpoint* ZOFFDebugger::setBreakpoint(const QString& file, const Path& path, int line, int count,
                                                bool counted, bool temporary, const QString& limit,
                                                const QString& action)
{
    QString executable = file;
    int64_t address = getLineAddress(executable, path, line);
    if (address < 0)
        throw DebuggerBreakpointFailure("No code for breakpoint");
    ZOFFBreakpoint* breakpoint = setBreakpoint(uint32_t(address), temporary, counted, count,
                                               counted && !limit.isEmpty() ? limit.toInt() : -1, action);
    if (!breakpoint)
        throw DebuggerBreakpointFailure(TargetRefuses);
    return breakpoint;
}

bool ZOFFDebugger::canBreakAt(const QString& file, const Path& path, int line, DebuggerBreakpoint*& existing)
{
    QString executable = file;
    int64_t address = getLineAddress(executable, path, line);
    existing = address < 0 ? nullptr : m_breakpoints.codeAt(uint32_t(address));
    return address >= 0;
}

void ZOFFDebugger::setBreakpointEnabled(DebuggerBreakpoint* breakpoint, bool on)
{
    m_breakpoints.setEnabled(breakpoint, on);
}

void ZOFFDebugger::chainFrom(DebuggerBreakpoint* breakpoint, DebuggerBreakpoint* from)
{
    monitor();
    m_breakpoints.chain(breakpoint, from);
}

DebuggerBreakpoint* ZOFFDebugger::lastMatchedBreakpoint()
{
    return m_monitor ? m_breakpoints.find(m_monitor->matched()) : nullptr;
}

// --- Errors of the program, execution counts, trace -------------------------------------------

QStringList ZOFFDebugger::getExceptionClasses()
{
    return {QStringLiteral("Exceptions")};
}

bool ZOFFDebugger::targetHasExceptionClass(int exceptionClass)
{
    return exceptionClass == 0 && m_monitor && m_monitor->numErrors() > 0;
}

QList<ZOFFDebugger::NamedFlag> ZOFFDebugger::getExceptionTypes(int exceptionClass)
{
    QList<NamedFlag> types;
    for (int i = 0; exceptionClass == 0 && m_monitor && i < m_monitor->numErrors(); ++i) {
        const char* name = m_monitor->getError(i);
        types.append({QString::fromLatin1(name), m_monitor->errorEnabled(name)});
    }
    return types;
}

void ZOFFDebugger::setExceptionEnabled(const QString& name, bool on)
{
    monitor().setErrorEnabled(name.toLatin1().constData(), on);
}

QString ZOFFDebugger::lastMatchedException()
{
    unsigned address = 0;
    return m_monitor ? QString::fromLatin1(m_monitor->lastError(address)) : QString();
}

void ZOFFDebugger::resetExecutionCount()
{
    if (m_monitor)
        m_monitor->resetExecutionCount();
}

void ZOFFDebugger::setExecutionCountEnabled(bool on)
{
    if (m_monitor)
        m_monitor->setExecutionCountEnabled(on);
}

bool ZOFFDebugger::getExecutionCountEnabled()
{
    return m_monitor && m_monitor->getExecutionCountEnabled();
}

void ZOFFDebugger::iterateExecutionCount()
{
    if (m_monitor)
        m_monitor->iterateExecutionCount();
}

bool ZOFFDebugger::getExecutionCount(unsigned& address, unsigned& count, unsigned& other)
{
    return m_monitor && m_monitor->getNextExecutionCount(address, count, other);
}

void ZOFFDebugger::resetTrace()
{
    if (m_monitor)
        m_monitor->resetTrace();
}

void ZOFFDebugger::setTraceEnabled(bool on)
{
    if (m_monitor)
        m_monitor->setTraceEnabled(on);
}

bool ZOFFDebugger::getTraceEnabled()
{
    return m_monitor && m_monitor->getTraceEnabled();
}

void ZOFFDebugger::iterateTrace()
{
    if (m_monitor)
        m_monitor->iterateTrace();
}

bool ZOFFDebugger::getTrace(unsigned& address, unsigned& data, unsigned& cycles)
{
    return m_monitor && m_monitor->getNextTrace(address, data, cycles);
}
