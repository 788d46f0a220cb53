#include "loadfile/LoadFileSections.h"

#include <algorithm>

namespace {

uint64_t sumOfLengths(const LoadFileSections::List& list)
{
    uint64_t sum = 0;
    for (const auto& section : list)
        sum += section->length();
    return sum;
}

// By keys of address and place, since looking at the sections in every comparison would wait for the memory.
void sortByAddress(LoadFileSections::List& list)
{
    std::vector<uint64_t> keys;
    keys.reserve(list.size());
    for (const auto& section : list)
        keys.push_back(uint64_t(section->address()) << 32 | keys.size());
    if (std::is_sorted(keys.begin(), keys.end()))
        return;
    std::sort(keys.begin(), keys.end());
    LoadFileSections::List sorted;
    sorted.reserve(list.size());
    for (uint64_t key : keys)
        sorted.push_back(std::move(list[uint32_t(key)]));
    list = std::move(sorted);
}

} // namespace

uint64_t LoadFileSections::length() const
{
    return sumOfLengths(m_sections);
}

uint64_t LoadFileSections::eelength() const
{
    return sumOfLengths(m_eeSections);
}

LoadFileSectionInterface* LoadFileSections::find(uint32_t address, uint32_t count) const
{
    for (const auto& section : m_sections) {
        uint64_t end = uint64_t(section->address()) + section->length();
        if (section->address() <= address && uint64_t(address) + count <= end)
            return section.get();
    }
    return nullptr;
}

uint32_t LoadFileSections::firstSectionStartAddress() const
{
    return m_sections.empty() ? 0 : m_sections.front()->address();
}

void LoadFileSections::getSectionAddressRanges(AddressRanges& ranges) const
{
    std::vector<AddressRange> own;
    own.reserve(m_sections.size());
    for (const auto& section : m_sections)
        if (section->length() > 0)
            own.emplace_back(section->address(), section->address() + (section->length() - 1));
    ranges.add(std::move(own));
}

void LoadFileSections::sort()
{
    sortByAddress(m_sections);
    sortByAddress(m_eeSections);
}
