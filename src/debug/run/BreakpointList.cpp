#include "debug/run/BreakpointList.h"

#include "debug/monitor/DebuggerBreakpointFailure.h"
#include "debug/monitor/HBreakpoint.h"
#include "debug/monitor/HMonitor.h"
#include "debug/run/DebuggerBreakpoint.h"
#include "support/HException.h"

#include <algorithm>
#include <utility>

void BreakpointList::setMonitor(HMonitor* monitor)
{
    forget();
    m_monitor = monitor;
}

void BreakpointList::forget()
{
    m_code.clear();
    m_data.clear();
}

void BreakpointList::withdrawAll()
{
    for (List* list : {&m_code, &m_data})
        for (const auto& breakpoint : *list)
            try {
                if (m_monitor)
                    m_monitor->removeBreakpoint(breakpoint->record());
            } catch (const HException&) {
            }
    forget();
}

ZOFFBreakpoint* BreakpointList::add(ZOFFBreakpoint::Records records, bool temporary)
{
    auto breakpoint = std::make_unique<ZOFFBreakpoint>(std::move(records), temporary);
    if (!m_monitor || !m_monitor->setBreakpoint(breakpoint->record()))
        return nullptr;
    bool isCode = breakpoint->record()->trigger == m_monitor->getExecuteTriggerNumber();
    List& list = isCode ? m_code : m_data;
    list.push_back(std::move(breakpoint));
    return list.back().get();
}

ZOFFBreakpoint* BreakpointList::addCode(uint32_t address, bool temporary, bool counted, int count, int limit,
                                        const QString& action)
{
    auto record = std::make_unique<HBreakpoint>();
    record->address = address;
    record->counted = counted;
    record->count = count;
    record->limit = limit;
    record->action = actionNumber(action);
    ZOFFBreakpoint::Records records;
    records.push_back(std::move(record));
    return add(std::move(records), temporary);
}

void BreakpointList::erase(List& list, List::iterator at)
{
    std::unique_ptr<ZOFFBreakpoint> breakpoint = std::move(*at);
    list.erase(at);
    for (List* others : {&m_code, &m_data})
        for (const auto& other : *others)
            if (other->record()->chainFrom == breakpoint->record()) {
                other->record()->chainFrom = nullptr;
                other->record()->enabled = true;
            }
    if (m_monitor)
        m_monitor->removeBreakpoint(breakpoint->record());
}

void BreakpointList::remove(const DebuggerBreakpoint* breakpoint)
{
    for (List* list : {&m_code, &m_data}) {
        auto found = std::find_if(list->begin(), list->end(),
                                  [breakpoint](const auto& entry) { return entry.get() == breakpoint; });
        if (found != list->end()) {
            erase(*list, found);
            return;
        }
    }
}

void BreakpointList::removeTemporary(const HBreakpoint* record)
{
    for (List* list : {&m_code, &m_data})
        for (auto at = list->begin(); at != list->end();) {
            auto current = at++;
            if (!(*current)->temporary() || (record && (*current)->record() != record))
                continue;
            erase(*list, current);
            if (record)
                return;
        }
}

bool BreakpointList::move(ZOFFBreakpoint& breakpoint, uint32_t address)
{
    HBreakpoint* record = breakpoint.record();
    if (record->address == address)
        return true;
    m_monitor->removeBreakpoint(record);
    uint32_t before = std::exchange(record->address, address);
    try {
        if (m_monitor->setBreakpoint(record))
            return true;
    } catch (...) {
        record->address = before;
        throw;
    }
    record->address = before;
    return false;
}

ZOFFBreakpoint* BreakpointList::find(const HBreakpoint* record) const
{
    if (!record)
        return nullptr;
    for (const List* list : {&m_code, &m_data})
        for (const auto& breakpoint : *list)
            if (breakpoint->record() == record)
                return breakpoint.get();
    return nullptr;
}

ZOFFBreakpoint* BreakpointList::find(const DebuggerBreakpoint* wanted) const
{
    for (const List* list : {&m_code, &m_data})
        for (const auto& breakpoint : *list)
            if (breakpoint.get() == wanted)
                return breakpoint.get();
    return nullptr;
}

ZOFFBreakpoint* BreakpointList::codeAt(uint32_t address) const
{
    for (const auto& breakpoint : m_code)
        if (!breakpoint->temporary() && !breakpoint->record()->isRegister &&
            breakpoint->record()->address == address)
            return breakpoint.get();
    return nullptr;
}

ZOFFBreakpoint* BreakpointList::stepAt(uint32_t address) const
{
    for (const auto& breakpoint : m_code)
        if (breakpoint->step() && breakpoint->record()->address == address)
            return breakpoint.get();
    return nullptr;
}

bool BreakpointList::stopsAt(uint32_t address)
{
    bool stops = false;
    for (const auto& breakpoint : m_code) {
        HBreakpoint* record = breakpoint->record();
        bool inRange = address >= record->address && address - record->address < record->length;
        if (!record->enabled || inRange == record->inverted ||
            record->action != m_monitor->getStopActionNumber())
            continue;
        if (record->count > 0)
            --record->count;
        else
            stops = true;
    }
    return stops;
}

// A monitor that programs a device at setBreakpoint() hears of a record's change this way. One that it has no
// room for stays as it was.
void BreakpointList::change(HBreakpoint* record, bool enabled, HBreakpoint* from)
{
    bool wasEnabled = std::exchange(record->enabled, enabled);
    HBreakpoint* before = std::exchange(record->chainFrom, from);
    m_monitor->removeBreakpoint(record);
    try {
        if (m_monitor->setBreakpoint(record))
            return;
        throw DebuggerBreakpointFailure(TargetRefuses);
    } catch (const DebuggerBreakpointFailure&) {
        record->enabled = wasEnabled;
        record->chainFrom = before;
        m_monitor->setBreakpoint(record);
        throw;
    }
}

void BreakpointList::chain(const DebuggerBreakpoint* breakpoint, const DebuggerBreakpoint* from)
{
    if (!m_monitor || !m_monitor->canChain())
        throw DebuggerBreakpointFailure("Chaining not supported");
    ZOFFBreakpoint* chained = find(breakpoint);
    ZOFFBreakpoint* first = find(from);
    if (chained && (first || !from))
        change(chained->record(), !first, first ? first->record() : nullptr);
}

void BreakpointList::setEnabled(const DebuggerBreakpoint* breakpoint, bool on)
{
    ZOFFBreakpoint* found = find(breakpoint);
    if (found && found->record()->enabled != on)
        change(found->record(), on, found->record()->chainFrom);
}

int BreakpointList::actionNumber(const QString& action) const
{
    if (!m_monitor || action.isEmpty())
        return m_monitor ? m_monitor->getStopActionNumber() : 0;
    int number = 0;
    for (int i = 0; i < m_monitor->numActions(); ++i)
        if (action == QLatin1String(m_monitor->getAction(i)))
            number = i;
    return number;
}

int BreakpointList::triggerNumber(const QString& trigger) const
{
    if (!m_monitor || trigger.isEmpty())
        return m_monitor ? m_monitor->getExecuteTriggerNumber() : 0;
    int number = 0;
    for (int i = 0; i < m_monitor->numTriggers(); ++i)
        if (trigger == QLatin1String(m_monitor->getTrigger(i)))
            number = i;
    return number;
}
