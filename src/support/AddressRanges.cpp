#include "support/AddressRanges.h"

#include <algorithm>

namespace {
struct AddressRangeLess {
    bool operator()(const AddressRange& a, const AddressRange& b) const { return a.low < b.low; }
    bool operator()(const AddressRange& a, uint32_t low) const { return a.low < low; }
    bool operator()(uint32_t low, const AddressRange& b) const { return low < b.low; }
};
} // namespace

// Ranges may overlap each other, so a range far to the left can reach over the ones behind it.
// m_reach[i] is the highest address that entries 0 to i reach: a search walks to the left only as
// long as something there can still reach the address in question. It is made on demand.
const std::vector<uint32_t>& AddressRanges::reach() const
{
    size_t known = m_reach.size();
    if (known < m_ranges.size()) {
        m_reach.resize(m_ranges.size());
        for (size_t i = known; i < m_ranges.size(); ++i)
            m_reach[i] = i ? std::max(m_reach[i - 1], m_ranges[i].high) : m_ranges[i].high;
    }
    return m_reach;
}

void AddressRanges::insert(const AddressRange& range)
{
    auto at = std::upper_bound(m_ranges.begin(), m_ranges.end(), range, AddressRangeLess());
    m_reach.resize(std::min(m_reach.size(), size_t(at - m_ranges.begin())));
    m_ranges.insert(at, range);
}

void AddressRanges::add(uint32_t low, uint32_t high, AddressRange::Type type, bool merge)
{
    AddressRange range(low, high, type);
    if (merge)
        addMerged(range);
    else
        insert(range);
}

// One pass over everything that can overlap or touch the new range. Widening to the left can bring
// further neighbours into reach, so the walk to the left goes on with the widened range.
void AddressRanges::addMerged(AddressRange range)
{
    auto joins = [&](const AddressRange& other) {
        if (other.type != range.type)
            return false;
        return other.occludedBy(range) || (range.high != 0xFFFFFFFF && other.low == range.high + 1) ||
               (range.low != 0 && other.high == range.low - 1);
    };
    for (bool changed = true; changed;) {
        changed = false;
        const std::vector<uint32_t>& reached = reach();
        size_t i = size_t(std::upper_bound(m_ranges.begin(), m_ranges.end(),
                                           range.high == 0xFFFFFFFF ? range.high : range.high + 1,
                                           AddressRangeLess()) -
                          m_ranges.begin());
        size_t firstJoined = m_ranges.size();
        while (i > 0 && (range.low == 0 || reached[i - 1] >= range.low - 1)) {
            --i;
            if (joins(m_ranges[i])) {
                range.low = std::min(range.low, m_ranges[i].low);
                range.high = std::max(range.high, m_ranges[i].high);
                m_ranges.erase(m_ranges.begin() + std::ptrdiff_t(i));
                firstJoined = i;
                changed = true;
            }
        }
        m_reach.resize(std::min(m_reach.size(), firstJoined));
    }
    insert(range);
}

void AddressRanges::add(std::vector<AddressRange> ranges)
{
    std::stable_sort(ranges.begin(), ranges.end(), AddressRangeLess());
    size_t before = m_ranges.size();
    m_ranges.insert(m_ranges.end(), ranges.begin(), ranges.end());
    std::inplace_merge(m_ranges.begin(), m_ranges.begin() + std::ptrdiff_t(before), m_ranges.end(),
                       AddressRangeLess());
    m_reach.clear();
}

const AddressRange* AddressRanges::find(uint32_t low, uint32_t high) const
{
    AddressRange wanted(low, high);
    const std::vector<uint32_t>& reached = reach();
    size_t i = size_t(std::upper_bound(m_ranges.begin(), m_ranges.end(), wanted.low, AddressRangeLess()) -
                      m_ranges.begin());
    const AddressRange* found = nullptr;
    while (i > 0 && reached[i - 1] >= wanted.high) {
        --i;
        if (m_ranges[i].contains(wanted.low, wanted.high))
            found = &m_ranges[i]; // the first in order wins
    }
    return found;
}

bool AddressRanges::isOccludedBy(uint32_t low, uint32_t high) const
{
    AddressRange wanted(low, high);
    size_t i = size_t(std::upper_bound(m_ranges.begin(), m_ranges.end(), wanted.high, AddressRangeLess()) -
                      m_ranges.begin());
    return i > 0 && reach()[i - 1] >= wanted.low;
}

bool AddressRanges::isOccludedBy(const AddressRanges& other) const
{
    if (other.m_ranges.size() > m_ranges.size())
        return other.isOccludedBy(*this);
    return std::any_of(other.m_ranges.begin(), other.m_ranges.end(),
                       [this](const AddressRange& range) { return isOccludedBy(range.low, range.high); });
}

bool AddressRanges::isSubsetOf(const AddressRanges& other) const
{
    return std::all_of(m_ranges.begin(), m_ranges.end(), [&other](const AddressRange& range) {
        return other.find(range.low, range.high) != nullptr;
    });
}

AddressRanges::const_iterator AddressRanges::remove(const_iterator at)
{
    m_reach.resize(std::min(m_reach.size(), size_t(at - m_ranges.begin())));
    return m_ranges.erase(at);
}
