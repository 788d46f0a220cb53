// The sections of one load file: a list for ordinary target memory and one for EEPROM, both owned.
#pragma once

#include "loadfile/LoadFileSection.h"
#include "support/AddressRanges.h"

#include <memory>
#include <vector>

class LoadFileSections {
public:
    using List = std::vector<std::unique_ptr<LoadFileSectionInterface>>;

    void add(std::unique_ptr<LoadFileSectionInterface> section) { m_sections.push_back(std::move(section)); }
    void addee(std::unique_ptr<LoadFileSectionInterface> section)
    {
        m_eeSections.push_back(std::move(section));
    }

    const List& sections() const { return m_sections; }
    const List& eeSections() const { return m_eeSections; }

    // Sums of the lengths, in bytes.
    uint64_t length() const;
    uint64_t eelength() const;

    // The first section of the first list that holds all of [address, address + count); null when
    // none does.
    LoadFileSectionInterface* find(uint32_t address, uint32_t count) const;

    // Of the first section of the first list; 0 when it is empty.
    uint32_t firstSectionStartAddress() const;

    // Adds the closed range of each section of the first list, read/write and not merged. A section
    // of length 0 has no addresses and adds nothing.
    void getSectionAddressRanges(AddressRanges& ranges) const;

    // Both lists by address ascending; equal addresses keep their order.
    void sort();

    // Empties the first list.
    void clear() { m_sections.clear(); }

private:
    List m_sections;
    List m_eeSections;
};
