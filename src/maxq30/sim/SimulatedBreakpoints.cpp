#include "maxq30/sim/SimulatedBreakpoints.h"

#include <algorithm>

namespace {

bool inRange(const HBreakpoint* b, uint32_t address)
{
    return address >= b->address && address - b->address < b->length;
}

bool triggersOn(const HBreakpoint* b, bool read)
{
    return b->trigger == SimulatedBreakpoints::ReadWrite ||
           b->trigger == (read ? SimulatedBreakpoints::Read : SimulatedBreakpoints::Write);
}

// On the low `length` bytes of both sides.
bool meetsValue(const HBreakpoint* b, unsigned length, uint32_t accessed)
{
    uint32_t bits = b->mask & (length >= 4 ? 0xFFFFFFFF : (1u << 8 * length) - 1);
    uint32_t left = accessed & bits;
    uint32_t right = b->value & bits;
    switch (b->comparison) {
    case HBreakpoint::Equal: return left == right;
    case HBreakpoint::GreaterOrEqual: return left >= right;
    case HBreakpoint::LessOrEqual: return left <= right;
    case HBreakpoint::NotEqual: return left != right;
    case HBreakpoint::Less: return left < right;
    case HBreakpoint::Greater: return left > right;
    }
    return false;
}

bool isData(const HBreakpoint* b)
{
    return b->enabled && b->trigger != SimulatedBreakpoints::Execute && !b->isRegister;
}

} // namespace

void SimulatedBreakpoints::add(HBreakpoint* breakpoint)
{
    if (std::find(m_list.begin(), m_list.end(), breakpoint) == m_list.end())
        m_list.push_back(breakpoint);
    refresh();
}

void SimulatedBreakpoints::remove(HBreakpoint* breakpoint)
{
    m_list.erase(std::remove(m_list.begin(), m_list.end(), breakpoint), m_list.end());
    if (m_matched == breakpoint)
        m_matched = nullptr;
    refresh();
}

void SimulatedBreakpoints::clear()
{
    m_list.clear();
    m_matched = nullptr;
    refresh();
}

void SimulatedBreakpoints::refresh()
{
    m_places.fill(0);
    m_data = false;
    m_registers.clear();
    for (const HBreakpoint* b : m_list) {
        if (!b->enabled)
            continue;
        if (b->trigger == Execute)
            noteCode(b);
        else if (b->isRegister)
            m_registers.push_back(b->address);
        else
            m_data = true;
    }
}

void SimulatedBreakpoints::noteCode(const HBreakpoint* b)
{
    if (b->inverted || b->length > LongestNoted) {
        m_places.fill(1);
        return;
    }
    for (uint32_t offset = 0; offset < b->length; ++offset)
        m_places[place(b->address + offset)] = 1;
}

void SimulatedBreakpoints::setMatched(HBreakpoint* breakpoint, unsigned address, unsigned data)
{
    m_matchedAddress = address;
    m_matchedData = data;
    m_matched = breakpoint;
    if (!breakpoint)
        return;
    for (HBreakpoint* b : m_list)
        if (b->chainFrom == breakpoint) {
            b->enabled = true;
            m_matched = nullptr;
        }
    if (!m_matched)
        refresh();
}

void SimulatedBreakpoints::matchCode(uint32_t pc)
{
    m_matched = nullptr;
    for (HBreakpoint* b : m_list)
        if (b->enabled && b->trigger == Execute && inRange(b, pc) != b->inverted)
            setMatched(b, pc, 0);
}

bool SimulatedBreakpoints::matchesData(const HBreakpoint* b, unsigned address, unsigned length,
                                       unsigned value, bool read)
{
    if (!isData(b) || !triggersOn(b, read))
        return false;
    if (!b->hasValue)
        return inRange(b, address) != b->inverted;
    return b->address == address && b->length == length && meetsValue(b, length, value);
}

void SimulatedBreakpoints::matchData(unsigned address, unsigned length, unsigned value, bool read)
{
    for (HBreakpoint* b : m_list)
        if (matchesData(b, address, length, value, read))
            setMatched(b, address, value);
    if (!m_matched)
        return;
    for (const HBreakpoint* b = m_matched->next; b; b = b->next)
        if (!matchesData(b, address, length, value, read)) {
            m_matched = nullptr;
            return;
        }
}

void SimulatedBreakpoints::matchRegister(unsigned number, unsigned length, unsigned value, bool read)
{
    for (HBreakpoint* b : m_list)
        if (b->enabled && b->isRegister && b->address == number && triggersOn(b, read) &&
            (!b->hasValue || meetsValue(b, length, value)))
            setMatched(b, number, value);
}
