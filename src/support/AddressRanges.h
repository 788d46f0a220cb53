// Closed ranges of 32-bit target addresses, read/write or read-only, and sets of them sorted by low
// address. A plain value type, used by load files and target memories.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

struct AddressRange {
    enum Type { ReadWrite = 0, ReadOnly = 1 };

    // Swaps the addresses when they come in the wrong order.
    AddressRange(uint32_t a, uint32_t b, Type kind = ReadWrite)
        : low(a < b ? a : b), high(a < b ? b : a), type(kind)
    {
    }

    uint64_t length() const { return uint64_t(high) - low + 1; }
    bool contains(uint32_t a, uint32_t b) const { return low <= a && a <= high && low <= b && b <= high; }
    // The ranges share at least one address.
    bool occludedBy(const AddressRange& other) const { return low <= other.high && other.low <= high; }

    uint32_t low;
    uint32_t high; // included
    Type type;
};

class AddressRanges {
public:
    using const_iterator = std::vector<AddressRange>::const_iterator;

    // With `merge`, ranges of the same type that overlap or touch become one; without it a range is
    // only put at its sorted place, and may overlap others. Cost: a search plus the shift of the
    // entries behind; at the end of the list nothing shifts.
    void add(uint32_t low, uint32_t high, AddressRange::Type type, bool merge);
    void add(uint32_t low, uint32_t high, bool merge) { add(low, high, AddressRange::ReadWrite, merge); }
    // Many at once, in any order, not merged; n log n for the lot.
    void add(std::vector<AddressRange> ranges);
    void add(const AddressRanges& other) { add(other.m_ranges); }

    // The range that holds the address, or both addresses; null when there is none. The pointer is
    // good until the set changes.
    const AddressRange* find(uint32_t address) const { return find(address, address); }
    const AddressRange* find(uint32_t low, uint32_t high) const;

    // Some range shares an address with the given range, or with a range of the given set.
    bool isOccludedBy(uint32_t low, uint32_t high) const;
    bool isOccludedBy(const AddressRanges& other) const;
    // Each range lies whole inside one range of the given set.
    bool isSubsetOf(const AddressRanges& other) const;

    size_t count() const { return m_ranges.size(); }
    bool isEmpty() const { return m_ranges.empty(); }
    void clear() { m_ranges.clear(); }
    const_iterator remove(const_iterator at);
    const_iterator begin() const { return m_ranges.begin(); }
    const_iterator end() const { return m_ranges.end(); }

private:
    void addMerged(AddressRange range);
    void insert(const AddressRange& range);
    std::vector<AddressRange> m_ranges;    // sorted by low
    mutable std::vector<uint32_t> m_reach; // highest `high` among the entries up to each; see reach()
    const std::vector<uint32_t>& reach() const;
};
