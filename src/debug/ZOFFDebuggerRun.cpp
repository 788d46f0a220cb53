// Runs, stops, steps and breakpoints.

#include "debug/DebuggerHelperFunctions.h"
#include "debug/ZOFFDebugger.h"
#include "debug/monitor/DebuggerBreakpointFailure.h"
#include "debug/symbols/SymbolicDebug.h"
#include "support/HException.h"
#include "target/TargetRegisterInterface.h"

#include <algorithm>
#include <exception>

namespace {

bool holds(uint32_t start, uint32_t length, uint32_t address)
{
    return address >= start && address - start < length;
}

} // namespace

void ZOFFDebugger::start(const QString& entry, bool stop)
{
    HMonitor& target = monitor();
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
    // Before the program runs: it may ask for something at once.
    enableDebugIO();
    m_stopped = false;
    target.startDebugging(true, address, stop);
}

void ZOFFDebugger::attach()
{
    checkedTarget().attach();
}

void ZOFFDebugger::go()
{
    HMonitor& target = monitor();
    enableDebugIO();
    m_stopped = false;
    target.go();
}

void ZOFFDebugger::stop()
{
    checkedTarget().stop();
    m_stopped = true;
}

void ZOFFDebugger::clear()
{
    // A link that fails on the way keeps nothing alive here, and no record of ours in the target.
    std::exception_ptr failure;
    auto attempt = [&failure](auto&& step) {
        try {
            step();
        } catch (const HException&) {
            if (!failure)
                failure = std::current_exception();
        }
    };
    if (m_target && m_target->isConnected()) {
        attempt([this] { disableDebugIO(); });
        attempt([this] { m_target->clear(); });
    } else {
        withdraw();
        if (m_monitor) // it takes the record off its list before it finds the link closed
            for (Breakpoints* list : {&m_codeBreakpoints, &m_dataBreakpoints})
                for (const auto& breakpoint : *list)
                    try {
                        m_monitor->removeBreakpoint(breakpoint->record());
                    } catch (const HException&) {
                    }
    }
    m_frames.clear();
    m_context.frame = nullptr;
    m_codeBreakpoints.clear();
    m_dataBreakpoints.clear();
    m_disassembly.clear();
    m_codeCache.clear();
    if (failure)
        std::rethrow_exception(failure);
}

void ZOFFDebugger::handleBreakpoint()
{
    HMonitor& target = monitor();
    ZOFFBreakpoint* hit = findBreakpoint(target.matched());
    if (hit && !m_stopped) {
        if (hit->stepping() && continueStep(hit))
            return;
        if (hit->record()->count > 0) {
            --hit->record()->count;
            go();
            return;
        }
    }
    removeTempBreakpoint(nullptr);
    locate();
    m_stopped = true;
}

// While a step is inside its range, its breakpoint moves on to where the next instruction leads.
bool ZOFFDebugger::continueStep(ZOFFBreakpoint* breakpoint)
{
    HMonitor& target = monitor();
    TargetRegisterInterface* registers = target.registers();
    if (!registers || !holds(breakpoint->rangeStart(), breakpoint->rangeLength(), registers->getPC()))
        return false;
    HBreakpoint* record = breakpoint->record();
    target.removeBreakpoint(record);
    record->address = nextInstruction(registers, breakpoint->stepOver(), breakpoint->rangeStart(),
                                      breakpoint->rangeLength());
    // Without its breakpoint the step would never end, so it ends here.
    if (!target.setBreakpoint(record))
        return false;
    go();
    return true;
}

void ZOFFDebugger::step(bool instruction, bool over)
{
    HMonitor& target = monitor();
    Frame* innermost = getFrame(0);
    TargetRegisterInterface* registers = innermost ? innermost->registers() : target.registers();
    if (!registers || (m_helper->debuggerUseHardwareStep() && instruction && !over)) {
        m_stopped = false;
        target.step();
        return;
    }
    uint32_t start = registers->getPC(), length = 1;
    SymbolicDebug* table = innermost ? innermost->symbols() : symbols(start);
    if (!instruction && table && !table->sourceMap().AddressToRange(start, start, length)) {
        m_stopped = false;
        target.step();
        return;
    }
    ZOFFBreakpoint* breakpoint =
        setBreakpoint(nextInstruction(registers, over, start, length), true, false, 0, -1, QString());
    if (!breakpoint)
        throw DebuggerBreakpointFailure("the target refuses the breakpoint of a step");
    breakpoint->setStepping(over, start, length);
    go();
}

void ZOFFDebugger::stepout(Frame* frame)
{
    if (!frame)
        return;
    if (!setBreakpoint(frame->registers()->getPC(), true, false, 0, -1, QString()))
        throw DebuggerBreakpointFailure("the target refuses the breakpoint of a step");
    go();
}

bool ZOFFDebugger::atStatement() const
{
    Frame* innermost = getFrame(0);
    uint32_t start = 0, length = 0;
    return innermost && innermost->symbols() &&
           innermost->symbols()->sourceMap().AddressToRange(innermost->registers()->getPC(), start, length) &&
           start == innermost->registers()->getPC();
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
    HMonitor& target = monitor();
    auto record = std::make_unique<HBreakpoint>();
    record->address = address;
    record->counted = counted;
    record->count = count;
    record->limit = limit;
    record->action = target.getStopActionNumber();
    if (!action.isEmpty()) {
        record->action = 0;
        for (int i = 0; i < target.numActions(); ++i)
            if (action == QLatin1String(target.getAction(i)))
                record->action = i;
    }
    auto breakpoint = std::make_unique<ZOFFBreakpoint>(record.release(), temporary);
    if (!target.setBreakpoint(breakpoint->record()))
        return nullptr;
    m_codeBreakpoints.push_back(std::move(breakpoint));
    return m_codeBreakpoints.back().get();
}

DebuggerBreakpoint* ZOFFDebugger::setBreakpoint(const QString& file, const Path& path, int line, int count,
                                                bool counted, bool temporary, const QString& limit,
                                                const QString& action)
{
    QString executable = file;
    int64_t address = getLineAddress(executable, path, line);
    if (address < 0)
        throw DebuggerBreakpointFailure("No code for breakpoint");
    return setBreakpoint(uint32_t(address), temporary, counted, count,
                         counted && !limit.isEmpty() ? limit.toInt() : -1, action);
}

void ZOFFDebugger::removeFromMonitor(Breakpoints& list, Breakpoints::iterator at)
{
    std::unique_ptr<ZOFFBreakpoint> breakpoint = std::move(*at);
    list.erase(at);
    if (m_monitor)
        m_monitor->removeBreakpoint(breakpoint->record());
}

void ZOFFDebugger::clearBreakpoint(DebuggerBreakpoint* breakpoint)
{
    for (Breakpoints* list : {&m_codeBreakpoints, &m_dataBreakpoints}) {
        auto found = std::find_if(list->begin(), list->end(),
                                  [breakpoint](const auto& entry) { return entry.get() == breakpoint; });
        if (found != list->end()) {
            removeFromMonitor(*list, found);
            return;
        }
    }
}

void ZOFFDebugger::removeTempBreakpoint(const HBreakpoint* record)
{
    for (Breakpoints* list : {&m_codeBreakpoints, &m_dataBreakpoints})
        for (auto at = list->begin(); at != list->end();) {
            auto current = at++;
            if (!(*current)->temporary() || (record && (*current)->record() != record))
                continue;
            removeFromMonitor(*list, current);
            if (record)
                return;
        }
}

ZOFFBreakpoint* ZOFFDebugger::findBreakpoint(const HBreakpoint* record) const
{
    if (!record)
        return nullptr;
    for (const Breakpoints* list : {&m_codeBreakpoints, &m_dataBreakpoints})
        for (const auto& breakpoint : *list)
            if (breakpoint->record() == record)
                return breakpoint.get();
    return nullptr;
}

bool ZOFFDebugger::canBreakAt(const QString& file, const Path& path, int line, DebuggerBreakpoint*& existing)
{
    existing = nullptr;
    QString executable = file;
    int64_t address = getLineAddress(executable, path, line);
    if (address < 0)
        return false;
    for (const auto& breakpoint : m_codeBreakpoints)
        if (!breakpoint->temporary() && !breakpoint->record()->isRegister &&
            breakpoint->record()->address == address) {
            existing = breakpoint.get();
            break;
        }
    return true;
}

void ZOFFDebugger::chainFrom(DebuggerBreakpoint* breakpoint, DebuggerBreakpoint* from)
{
    if (!monitor().canChain())
        throw DebuggerBreakpointFailure("Chaining not supported");
    HBreakpoint* record = static_cast<ZOFFBreakpoint*>(breakpoint)->record();
    record->enabled = !from;
    record->chainFrom = from ? static_cast<ZOFFBreakpoint*>(from)->record() : nullptr;
}

DebuggerBreakpoint* ZOFFDebugger::lastMatchedBreakpoint()
{
    return m_monitor ? findBreakpoint(m_monitor->matched()) : nullptr;
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
