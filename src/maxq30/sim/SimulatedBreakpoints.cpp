#include "maxq30/sim/SimulatedBreakpoints.h"

#include <algorithm>

namespace {

// The access touches a byte of the range.
bool touches(const HBreakpoint* b, uint32_t address, uint32_t length)
{
    return uint64_t(address) < uint64_t(b->address) + b->length &&
           uint64_t(b->address) < uint64_t(address) + length;
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

bool matchesCode(const HBreakpoint* b, uint32_t pc)
{
    return b->enabled && b->trigger == SimulatedBreakpoints::Execute && touches(b, pc, 1) != b->inverted;
}

bool matchesRegister(const HBreakpoint* b, unsigned number, unsigned length, unsigned value, bool read)
{
    return b->enabled && b->isRegister && b->address == number && triggersOn(b, read) &&
           (!b->hasValue || meetsValue(b, length, value));
}

bool isData(const HBreakpoint* b)
{
    return b->enabled && b->trigger != SimulatedBreakpoints::Execute && !b->isRegister;
}

// One of four bytes is compared as a whole and by halves, since a value of two bytes may lie in it.
bool matchesLongData(const HBreakpoint* b, unsigned address, unsigned value, bool read)
{
    return SimulatedBreakpoints::matchesData(b, address, 4, value, read) ||
           (b->hasValue && (SimulatedBreakpoints::matchesData(b, address, 2, value & 0xFFFF, read) ||
                            SimulatedBreakpoints::matchesData(b, address + 2, 2, value >> 16, read)));
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
    std::erase(m_list, breakpoint);
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
    if (!m_code.empty())
        m_codePlaces.fill(0);
    if (!m_data.empty())
        m_dataPlaces.fill(0);
    m_code.clear();
    m_data.clear();
    m_registers.clear();
    m_chains = m_codeEverywhere = m_dataEverywhere = false;
    ++m_generation;
    for (HBreakpoint* b : m_list) {
        m_chains |= b->chainFrom != nullptr;
        if (!b->enabled)
            continue;
        if (b->trigger == Execute)
            noteCode(b), m_code.push_back(b);
        else if (b->isRegister)
            m_registers.push_back(b->address);
        else
            noteData(b), m_data.push_back(b);
    }
}

void SimulatedBreakpoints::noteCode(const HBreakpoint* b)
{
    if (b->inverted || b->length > LongestNoted) {
        m_codePlaces.fill(1);
        m_codeEverywhere = true;
        return;
    }
    for (uint32_t offset = 0; offset < b->length; ++offset)
        m_codePlaces[codePlace(b->address + offset)] = 1;
}

// By the first byte of an access, which may lie before the range.
void SimulatedBreakpoints::noteData(const HBreakpoint* b)
{
    if (b->inverted || b->length >= Places * LongestAccess) {
        m_dataPlaces.fill(1);
        m_dataEverywhere = true;
        return;
    }
    uint32_t first = b->address - (LongestAccess - 1);
    for (uint64_t offset = 0; offset < uint64_t(b->length) + 2 * LongestAccess; offset += LongestAccess)
        m_dataPlaces[dataPlace(first + uint32_t(offset))] = 1;
}

std::vector<unsigned> SimulatedBreakpoints::codeAddresses() const
{
    std::vector<unsigned> addresses;
    for (const HBreakpoint* b : m_code)
        for (uint32_t offset = b->address & 1; offset < b->length; offset += 2)
            addresses.push_back(b->address + offset);
    return addresses;
}

std::vector<MAXQSIMDataRange> SimulatedBreakpoints::dataRanges() const
{
    std::vector<MAXQSIMDataRange> ranges;
    for (const HBreakpoint* b : m_data)
        if (b->length)
            ranges.push_back({b->address, b->address + std::min(b->length - 1, UINT32_MAX - b->address)});
    return ranges;
}

bool SimulatedBreakpoints::arms(const HBreakpoint* b) const
{
    return m_chains && std::any_of(m_list.begin(), m_list.end(),
                                   [b](const HBreakpoint* other) { return other->chainFrom == b; });
}

void SimulatedBreakpoints::arm(const HBreakpoint* b)
{
    for (HBreakpoint* other : m_list)
        if (other->chainFrom == b)
            other->enabled = true;
    refresh();
}

void SimulatedBreakpoints::setMatched(HBreakpoint* breakpoint, unsigned address, unsigned data)
{
    if (breakpoint && arms(breakpoint)) {
        arm(breakpoint);
        return;
    }
    m_matchedAddress = address;
    m_matchedData = data;
    m_matched = breakpoint;
}

// The last one of the list that matches with all records of its link and arms no other. The list changes
// when something is armed, which is done at the end.
template <class Test>
HBreakpoint* SimulatedBreakpoints::lastMatch(const std::vector<HBreakpoint*>& list, Test&& test)
{
    HBreakpoint* last = nullptr;
    std::vector<const HBreakpoint*> arming;
    for (HBreakpoint* b : list) {
        const HBreakpoint* part = b;
        unsigned parts = 0; // a link may lead back into itself
        while (part && test(part) && ++parts <= LongestLink)
            part = part->next;
        if (part)
            continue;
        if (arms(b))
            arming.push_back(b);
        else
            last = b;
    }
    for (const HBreakpoint* b : arming)
        arm(b);
    return last;
}

void SimulatedBreakpoints::matchCode(uint32_t pc)
{
    m_matched = nullptr;
    if (HBreakpoint* b = lastMatch(m_code, [pc](const HBreakpoint* part) { return matchesCode(part, pc); }))
        setMatched(b, pc, 0);
}

bool SimulatedBreakpoints::matchesData(const HBreakpoint* b, unsigned address, unsigned length,
                                       unsigned value, bool read)
{
    if (!isData(b) || !triggersOn(b, read))
        return false;
    if (!b->hasValue)
        return touches(b, address, length) != b->inverted;
    return b->address == address && b->length == length && meetsValue(b, length, value);
}

void SimulatedBreakpoints::matchData(unsigned address, unsigned length, unsigned value, bool read)
{
    HBreakpoint* b = lastMatch(
        m_data, [=](const HBreakpoint* part) { return matchesData(part, address, length, value, read); });
    if (b)
        setMatched(b, address, value);
}

void SimulatedBreakpoints::matchLongData(unsigned address, unsigned value, bool read)
{
    HBreakpoint* b = lastMatch(
        m_data, [=](const HBreakpoint* part) { return matchesLongData(part, address, value, read); });
    if (!b)
        return;
    // One that lies in a half has matched that half.
    if (!b->inverted && b->address >= address + 2)
        setMatched(b, address + 2, value >> 16);
    else if (!b->inverted && b->address + b->length <= address + 2)
        setMatched(b, address, value & 0xFFFF);
    else
        setMatched(b, address, value);
}

void SimulatedBreakpoints::matchRegister(unsigned number, unsigned length, unsigned value, bool read)
{
    HBreakpoint* b = lastMatch(
        m_list, [=](const HBreakpoint* part) { return matchesRegister(part, number, length, value, read); });
    if (b)
        setMatched(b, number, value);
}
