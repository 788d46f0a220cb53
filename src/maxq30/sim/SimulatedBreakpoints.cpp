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
    return b->trigger == HBreakpoint::ReadWrite ||
           b->trigger == (read ? HBreakpoint::Read : HBreakpoint::Write);
}

// The low bits that an access of so many bytes has.
uint32_t bitsOf(unsigned length)
{
    return length >= 4 ? 0xFFFFFFFF : (1u << 8 * length) - 1;
}

bool matchesCode(const HBreakpoint* b, uint32_t pc)
{
    return b->enabled && b->trigger == HBreakpoint::Execute && touches(b, pc, 1) != b->inverted;
}

bool matchesRegister(const HBreakpoint* b, unsigned number, unsigned length, unsigned value, bool read)
{
    return b->enabled && b->isRegister && b->address == number && triggersOn(b, read) &&
           (!b->hasValue || b->meets(value, length));
}

bool isData(const HBreakpoint* b)
{
    return b->enabled && b->trigger != HBreakpoint::Execute && !b->isRegister;
}

// As matchesData, and an access of four bytes is compared by halves, too: a value of two bytes may lie there.
bool matchesAccess(const HBreakpoint* b, unsigned address, unsigned length, unsigned value, bool read)
{
    return SimulatedBreakpoints::matchesData(b, address, length, value, read) ||
           (length == 4 && b->hasValue &&
            (SimulatedBreakpoints::matchesData(b, address, 2, value & 0xFFFF, read) ||
             SimulatedBreakpoints::matchesData(b, address + 2, 2, value >> 16, read)));
}

// All records along the `next` link match the access. A link may lead back into itself.
template <class Test> bool restMatches(const HBreakpoint* b, Test&& test)
{
    constexpr int LongestLink = 64;
    int records = 0;
    for (const HBreakpoint* part = b->next; part; part = part->next)
        if (++records > LongestLink || !test(part))
            return false;
    return true;
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

void SimulatedBreakpoints::PlaceTable::clear()
{
    if (m_all)
        m_bytes.fill(0);
    for (unsigned place : m_set)
        m_bytes[place] = 0;
    m_all = false;
    m_set.clear();
}

void SimulatedBreakpoints::PlaceTable::set(unsigned place)
{
    if (m_bytes[place])
        return;
    m_bytes[place] = 1;
    m_set.push_back(place);
}

void SimulatedBreakpoints::PlaceTable::setAll()
{
    m_bytes.fill(1);
    m_all = true;
}

void SimulatedBreakpoints::refresh()
{
    m_codePlaces.clear();
    m_dataPlaces.clear();
    m_code.clear();
    m_data.clear();
    m_ranges.clear();
    m_values.clear();
    m_registers.clear();
    m_chains = m_codeEverywhere = m_dataEverywhere = false;
    ++m_generation;
    for (HBreakpoint* b : m_list) {
        m_chains |= b->chainFrom != nullptr;
        if (!b->enabled)
            continue;
        if (b->trigger == HBreakpoint::Execute) {
            noteCode(b);
            m_code.push_back(b);
        } else if (b->isRegister) {
            m_registers.push_back(b->address);
        } else {
            noteData(b);
        }
    }
}

void SimulatedBreakpoints::noteCode(const HBreakpoint* b)
{
    if (b->inverted || b->length > LongestNoted) {
        m_codePlaces.setAll();
        m_codeEverywhere = true;
        return;
    }
    for (uint32_t offset = 0; offset < b->length; ++offset)
        m_codePlaces.set(codePlace(b->address + offset));
}

// The places are those of an access's first byte, which may lie before the range.
void SimulatedBreakpoints::noteData(HBreakpoint* b)
{
    m_data.push_back(b);
    if (b->hasValue)
        noteValue(b);
    else
        m_ranges.push_back(b);
    if ((b->inverted && !b->hasValue) || b->length >= Places) {
        m_dataPlaces.setAll();
        m_dataEverywhere = true;
        return;
    }
    uint32_t first = b->address - (LongestAccess - 1);
    for (uint32_t offset = 0; offset < b->length + 2 * LongestAccess; offset += LongestAccess)
        m_dataPlaces.set(dataPlace(first + offset));
}

void SimulatedBreakpoints::noteValue(const HBreakpoint* b)
{
    bool reads = triggersOn(b, true), writes = triggersOn(b, false);
    auto place = std::find_if(m_values.begin(), m_values.end(), [=](const Values& values) {
        return values.address == b->address && values.length == b->length && values.reads == reads &&
               values.writes == writes;
    });
    if (place == m_values.end())
        place = m_values.insert(m_values.end(), {b->address, b->length, reads, writes, {}});
    uint32_t bits = b->mask & bitsOf(b->length);
    uint32_t value = b->value & bits;
    switch (b->comparison) {
    case HBreakpoint::Equal: place->tests.push_back({bits, value, 0, false}); break;
    case HBreakpoint::NotEqual: place->tests.push_back({bits, value, 0, true}); break;
    case HBreakpoint::GreaterOrEqual: place->tests.push_back({bits, value, ~value, false}); break;
    case HBreakpoint::Less: place->tests.push_back({bits, value, ~value, true}); break;
    case HBreakpoint::LessOrEqual: place->tests.push_back({bits, 0, value, false}); break;
    case HBreakpoint::Greater: place->tests.push_back({bits, 0, value, true}); break;
    }
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

// The last candidate that arms no other; those that do, do. The noted lists change with that.
HBreakpoint* SimulatedBreakpoints::lastOf(std::vector<HBreakpoint*>& candidates)
{
    HBreakpoint* last = nullptr;
    for (HBreakpoint* b : candidates) {
        if (arms(b))
            arm(b);
        else
            last = b;
    }
    return last;
}

void SimulatedBreakpoints::matchCode(uint32_t pc)
{
    m_matched = nullptr;
    std::vector<HBreakpoint*> candidates;
    for (HBreakpoint* b : m_code)
        if (matchesCode(b, pc) &&
            restMatches(b, [=](const HBreakpoint* part) { return matchesCode(part, pc); }))
            candidates.push_back(b);
    if (HBreakpoint* b = lastOf(candidates))
        setMatched(b, pc, 0);
}

bool SimulatedBreakpoints::matchesData(const HBreakpoint* b, unsigned address, unsigned length,
                                       unsigned value, bool read)
{
    if (!isData(b) || !triggersOn(b, read))
        return false;
    if (!b->hasValue)
        return touches(b, address, length) != b->inverted;
    return b->address == address && b->length == length && b->meets(value, length);
}

// A long access meets a value of two bytes in either half.
bool SimulatedBreakpoints::anyMatches(unsigned address, unsigned length, unsigned value, bool read) const
{
    for (const Values& place : m_values) {
        uint32_t offset = place.address - address;
        bool whole = offset == 0 && place.length == length;
        bool half = length == 4 && place.length == 2 && (offset == 0 || offset == 2);
        if (!(read ? place.reads : place.writes) || (!whole && !half))
            continue;
        uint32_t accessed = value >> 8 * offset;
        bool any = false;
        for (const Values::Test& test : place.tests)
            any |= ((accessed & test.bits) - test.low <= test.span) != test.inverted;
        if (any)
            return true;
    }
    for (const HBreakpoint* b : m_ranges)
        if (matchesData(b, address, length, value, read))
            return true;
    return false;
}

void SimulatedBreakpoints::matchData(unsigned address, unsigned length, unsigned value, bool read)
{
    if (!anyMatches(address, length, value, read))
        return;
    auto matches = [=](const HBreakpoint* part) { return matchesAccess(part, address, length, value, read); };
    std::vector<HBreakpoint*> candidates;
    for (HBreakpoint* b : m_data)
        if (matches(b) && restMatches(b, matches))
            candidates.push_back(b);
    HBreakpoint* b = lastOf(candidates);
    if (!b)
        return;
    // One that lies in a half of four bytes has matched that half.
    if (length == 4 && !b->inverted && b->address >= address + 2)
        setMatched(b, address + 2, value >> 16);
    else if (length == 4 && !b->inverted && b->address + b->length <= address + 2)
        setMatched(b, address, value & 0xFFFF);
    else
        setMatched(b, address, value);
}

void SimulatedBreakpoints::matchRegister(unsigned number, unsigned length, unsigned value, bool read)
{
    auto matches = [=](const HBreakpoint* part) {
        return matchesRegister(part, number, length, value, read);
    };
    std::vector<HBreakpoint*> candidates;
    for (HBreakpoint* b : m_list)
        if (matches(b) && restMatches(b, matches))
            candidates.push_back(b);
    if (HBreakpoint* b = lastOf(candidates))
        setMatched(b, number, value);
}
