#include "loadfile/LoadFileSection.h"

#include "loadfile/limits.h"
#include "support/HException.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

bool operator==(const LoadFileSectionInterface& a, const LoadFileSectionInterface& b)
{
    if (a.address() != b.address() || a.length() != b.length())
        return false;
    const unsigned char* aData = a.data(false);
    const unsigned char* bData = b.data(false);
    if (!aData || !bData)
        return aData == bData;
    return memcmp(aData, bData, a.length()) == 0;
}

StandardLoadFileSection::StandardLoadFileSection(std::string name, uint32_t address, uint32_t length,
                                                 unsigned char* data)
    : m_name(std::move(name)), m_address(address), m_length(length), m_data(data)
{
}

unsigned char* StandardLoadFileSection::createPatch()
{
    if (!m_patch) {
        m_patch = std::make_unique<unsigned char[]>(m_length);
        if (m_data)
            memcpy(m_patch.get(), m_data, m_length);
    }
    return m_patch.get();
}

ExpandingLoadFileSection::ExpandingLoadFileSection(std::string name, uint32_t address)
    : StandardLoadFileSection(std::move(name), address, 0, nullptr)
{
}

ExpandingLoadFileSection::~ExpandingLoadFileSection()
{
    free(m_data);
}

unsigned char* ExpandingLoadFileSection::expand(uint32_t count)
{
    if (end() + count > LoadFileLimits::AddressSpace)
        throw HException("data beyond the end of the address space");
    uint64_t needed = uint64_t(m_length) + count;
    if (needed > m_capacity || !m_data) {
        uint64_t capacity = std::max<uint64_t>({needed, uint64_t(m_length) + m_length / 2, 1});
        capacity = std::min<uint64_t>(capacity, UINT32_MAX);
        // A section of all 2^32 bytes has no 32-bit length; no file is that large (MaxFileSize).
        if (needed > capacity)
            throw HException("data beyond the end of the address space");
        auto* grown = static_cast<unsigned char*>(realloc(m_data, capacity));
        if (!grown)
            throw std::bad_alloc();
        m_data = grown;
        m_capacity = uint32_t(capacity);
    }
    unsigned char* added = m_data + m_length;
    m_length += count;
    return added;
}
