#include "maxq30/jtag/JTAGBreakpoints.h"

#include "debug/monitor/DebuggerBreakpointFailure.h"
#include "support/Bracket.h"
#include "target/memory/TargetMemoryInterface.h"

#include <algorithm>

namespace {

constexpr int LongestLink = 64; // records; a link may lead back into itself

void refuseWhatCannotBeDone(const HBreakpoint* b)
{
    if (b->isRegister)
        throw DebuggerBreakpointFailure("The target cannot watch a register");
    if (b->inverted)
        throw DebuggerBreakpointFailure("The target cannot watch what lies outside of a range");
    if (b->length > (JTAGBreakpoints::isCode(b) ? 1 : JTAGBreakpoints::LongestData))
        throw DebuggerBreakpointFailure(
            QStringLiteral("The target cannot watch a range of %1 bytes").arg(b->length));
}

} // namespace

void JTAGBreakpoints::add(HBreakpoint* breakpoint)
{
    int records = 0;
    for (const HBreakpoint* b = breakpoint; b; b = b->next) {
        if (++records > LongestLink)
            throw DebuggerBreakpointFailure("The target cannot test so many conditions");
        refuseWhatCannotBeDone(b);
    }
    bool isNew = std::find(m_list.begin(), m_list.end(), breakpoint) == m_list.end();
    if (isNew)
        m_list.push_back(breakpoint);
    Bracket adding([&] {
        if (isNew)
            m_list.pop_back();
    });
    toProgram();
    adding.dismiss();
}

void JTAGBreakpoints::clear()
{
    m_list.clear();
    m_noted.clear();
}

unsigned JTAGBreakpoints::enabled(bool code) const
{
    return unsigned(std::count_if(m_list.begin(), m_list.end(),
                                  [code](const HBreakpoint* b) { return b->enabled && isCode(b) == code; }));
}

std::vector<const HBreakpoint*> JTAGBreakpoints::toProgram() const
{
    if (enabled(true) > NumCode)
        throw DebuggerBreakpointFailure("No more code breakpoints available");
    if (enabled(false) > NumData)
        throw DebuggerBreakpointFailure("No more data breakpoints available");
    std::vector<const HBreakpoint*> records;
    std::copy_if(m_list.begin(), m_list.end(), std::back_inserter(records),
                 [](const HBreakpoint* b) { return b->enabled; });
    return records;
}

uint32_t JTAGBreakpoints::value(const HBreakpoint* b) const
{
    return uint32_t(m_dataMemory.peekNumber(b->address, std::clamp<uint32_t>(b->length, 1, LongestData)));
}

void JTAGBreakpoints::noteValues()
{
    m_noted.clear();
    for (const HBreakpoint* b : m_list)
        if (b->enabled && !isCode(b))
            m_noted[b] = value(b);
}

bool JTAGBreakpoints::changed(const HBreakpoint* b) const
{
    auto noted = m_noted.find(b);
    return noted != m_noted.end() && noted->second != value(b);
}

bool JTAGBreakpoints::dataChanged()
{
    for (const HBreakpoint* b : m_list) {
        if (!b->enabled || isCode(b))
            continue;
        uint32_t now = value(b);
        if (m_noted.try_emplace(b, now).first->second != now)
            return true;
    }
    return false;
}

HBreakpoint* JTAGBreakpoints::codeAt(uint32_t pc) const
{
    HBreakpoint* found = nullptr;
    for (HBreakpoint* b : m_list)
        if (b->enabled && isCode(b) && b->address == pc)
            found = b;
    return found;
}

HBreakpoint* JTAGBreakpoints::match(uint32_t pc) const
{
    if (HBreakpoint* code = codeAt(pc))
        return code;
    std::vector<HBreakpoint*> data;
    std::copy_if(m_list.begin(), m_list.end(), std::back_inserter(data),
                 [](const HBreakpoint* b) { return b->enabled && !isCode(b); });
    if (data.size() < 2)
        return data.empty() ? nullptr : data.front();
    // Of several, one that shows its access: it has changed, or its condition holds. Then one whose access
    // need not show; one that has changed, but not to what it waits for, comes before it.
    HBreakpoint* plain = nullptr;
    HBreakpoint* accessed = nullptr;
    HBreakpoint* met = nullptr;
    for (HBreakpoint* b : data) {
        bool isPlain = !b->hasValue && !b->next;
        bool hasChanged = changed(b);
        if (isPlain)
            plain = b;
        if (hasChanged || (!isPlain && !m_noted.contains(b)))
            accessed = b;
        if (isPlain ? hasChanged : holds(b))
            met = b;
    }
    return met ? met : accessed ? accessed : plain ? plain : data.back();
}

bool JTAGBreakpoints::holds(const HBreakpoint* breakpoint) const
{
    int records = 0;
    for (const HBreakpoint* b = breakpoint; b && ++records <= LongestLink; b = b->next)
        if (!isCode(b) && b->hasValue && !b->meets(value(b), std::min(b->length, LongestData)))
            return false;
    return true;
}
