#include "loadfile/LoadFileInterface.h"

#include "loadfile/LoadFileSection.h"
#include "support/HException.h"

#include <algorithm>
#include <cstring>

LoadFileSections& LoadFileInterface::loadFileSections()
{
    if (!m_sectionsValid) {
        if (!createLoadFileSections())
            throw HException("cannot read sections from load file");
        m_sectionsValid = true;
    }
    return m_sections;
}

void LoadFileInterface::invalidateLoadFileSections()
{
    m_sections.clear();
    m_sectionsValid = false;
}

void LoadFileInterface::clearPatches()
{
    for (const auto& section : m_sections.sections())
        section->clearPatch();
    for (const auto& section : m_sections.eeSections())
        section->clearPatch();
}

void LoadFileInterface::sortLoadFileSections()
{
    loadFileSections().sort();
}

void LoadFileInterface::makeContiguous(unsigned char fill)
{
    LoadFileSections& sections = loadFileSections();
    uint64_t lowest = UINT32_MAX;
    uint64_t highest = 0;
    for (const auto& section : sections.sections()) {
        lowest = std::min<uint64_t>(lowest, section->address());
        highest = std::max<uint64_t>(highest, uint64_t(section->address()) + section->length());
    }
    if (lowest == UINT32_MAX || highest == 0)
        return;
    auto contiguous = std::make_unique<ExpandingLoadFileSection>("Contiguous section", uint32_t(lowest));
    if (highest > lowest) {
        if (highest - lowest > UINT32_MAX)
            throw HException("load file spans the whole address space");
        unsigned char* buffer = contiguous->expand(uint32_t(highest - lowest));
        memset(buffer, fill, size_t(highest - lowest));
        for (const auto& section : sections.sections())
            if (const unsigned char* data = section->data(false))
                memcpy(buffer + (section->address() - lowest), data, section->length());
    }
    sections.clear();
    sections.add(std::move(contiguous));
}
