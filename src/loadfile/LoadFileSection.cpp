#include "loadfile/LoadFileSection.h"

#include "support/HException.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

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

namespace {

// Room for sections, all of one size. Blocks are given back when the last section has gone.
class SectionRoom {
public:
    void* take()
    {
        if (!m_free && m_used == SectionsOfBlock) {
            m_blocks.push_back(std::make_unique_for_overwrite<Place[]>(SectionsOfBlock));
            m_used = 0;
        }
        ++m_taken;
        if (!m_free)
            return &m_blocks.back()[m_used++];
        return std::exchange(m_free, m_free->next);
    }
    void give(void* section)
    {
        auto* place = static_cast<Place*>(section);
        place->next = std::exchange(m_free, place);
        if (--m_taken)
            return;
        m_free = nullptr;
        m_used = SectionsOfBlock;
        m_blocks.clear();
    }

private:
    static constexpr size_t SectionsOfBlock = 1024;
    union Place {
        Place* next; // of those that are free
        alignas(ExpandingLoadFileSection) unsigned char section[sizeof(ExpandingLoadFileSection)];
    };
    std::vector<std::unique_ptr<Place[]>> m_blocks;
    size_t m_used = SectionsOfBlock; // of the latest block
    size_t m_taken = 0;
    Place* m_free = nullptr;
};

// Never destroyed: a load file may go later than this file's objects.
SectionRoom& room()
{
    static SectionRoom& room = *new SectionRoom;
    return room;
}

} // namespace

void* ExpandingLoadFileSection::operator new(size_t size)
{
    assert(size == sizeof(ExpandingLoadFileSection)); // nobody derives from it
    return room().take();
}

void ExpandingLoadFileSection::operator delete(void* section)
{
    room().give(section);
}

ExpandingLoadFileSection::ExpandingLoadFileSection(std::string name, uint32_t address)
    : StandardLoadFileSection(std::move(name), address, 0, m_inner)
{
}

ExpandingLoadFileSection::~ExpandingLoadFileSection()
{
    if (m_data != m_inner)
        free(m_data);
}

void ExpandingLoadFileSection::grow(uint32_t count)
{
    if (end() + count > LoadFileLimits::AddressSpace)
        throw HException("data beyond the end of the address space");
    uint64_t needed = uint64_t(m_length) + count;
    uint64_t capacity = std::max<uint64_t>(needed, uint64_t(m_length) + m_length / 2);
    capacity = std::min<uint64_t>(capacity, UINT32_MAX);
    // A section of all 2^32 bytes has no 32-bit length; no file is that large (MaxFileSize).
    if (needed > capacity)
        throw HException("data beyond the end of the address space");
    bool inside = m_data == m_inner;
    auto* grown = static_cast<unsigned char*>(realloc(inside ? nullptr : m_data, capacity));
    if (!grown)
        throw std::bad_alloc();
    if (inside)
        memcpy(grown, m_inner, m_length);
    m_data = grown;
    m_capacity = uint32_t(capacity);
}
