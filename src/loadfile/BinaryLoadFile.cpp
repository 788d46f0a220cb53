#include "loadfile/BinaryLoadFile.h"

#include "loadfile/LoadFileSection.h"
#include "loadfile/limits.h"
#include "support/HException.h"

void BinaryLoadFile::setLoadAddress(unsigned long address)
{
    if (uint32_t(address) == m_loadAddress)
        return;
    m_loadAddress = uint32_t(address);
    invalidateLoadFileSections();
}

bool BinaryLoadFile::createLoadFileSections()
{
    if (uint64_t(m_loadAddress) + m_bytes.size() > LoadFileLimits::AddressSpace)
        throw HException("data beyond the end of the address space");
    m_sections.add(std::make_unique<StandardLoadFileSection>("data", m_loadAddress, uint32_t(m_bytes.size()),
                                                             m_bytes.bytes()));
    return true;
}
