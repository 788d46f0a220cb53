#include "debug/evaluation/ReadAhead.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr uint32_t PieceSize = 1024;

} // namespace

void ReadAhead::announce(uint32_t address, uint32_t size)
{
    uint32_t at = address - m_start;
    if (at < m_size && size <= m_size - at)
        return;
    m_start = address;
    m_size = size;
}

unsigned ReadAhead::fetch(int kind, unsigned address, unsigned count, unsigned char* bytes)
{
    switch (kind) {
    case LazyMemoryBlock::Peripheral: return m_memory.readPeripheralMemory(address, count, bytes);
    case LazyMemoryBlock::Eeprom: return m_memory.readEepromMemory(address, count, bytes);
    case LazyMemoryBlock::Code: return m_memory.readCodeMemory(address, count, bytes);
    default: return m_memory.readMemory(address, count, bytes);
    }
}

unsigned ReadAhead::read(int kind, unsigned address, unsigned count, unsigned char* bytes)
{
    uint32_t at = address - m_start; // in what is announced, or beyond it
    if (kind == m_kind && count <= PieceSize && at < m_size && count <= m_size - at) {
        uint32_t there = address - m_piece;
        if (there >= m_bytes.size() || count > m_bytes.size() - there) {
            m_bytes.resize(std::min(PieceSize, m_size - at));
            m_piece = address;
            there = 0;
            if (fetch(kind, address, unsigned(m_bytes.size()), m_bytes.data()) != m_bytes.size())
                m_bytes.clear(); // it ends in nowhere; its beginning may still be there
        }
        if (!m_bytes.empty()) {
            memcpy(bytes, m_bytes.data() + there, count);
            return count;
        }
    }
    unsigned moved = fetch(kind, address, count, bytes);
    if (moved != count) {
        m_failed = true;
        memset(bytes, 0, count);
    }
    return moved;
}

unsigned ReadAhead::readPeripheralMemory(unsigned address, unsigned count, unsigned char* bytes)
{
    return read(LazyMemoryBlock::Peripheral, address, count, bytes);
}

unsigned ReadAhead::readEepromMemory(unsigned address, unsigned count, unsigned char* bytes)
{
    return read(LazyMemoryBlock::Eeprom, address, count, bytes);
}

unsigned ReadAhead::readCodeMemory(unsigned address, unsigned count, unsigned char* bytes)
{
    return read(LazyMemoryBlock::Code, address, count, bytes);
}

unsigned ReadAhead::readMemory(unsigned address, unsigned count, unsigned char* bytes)
{
    return read(LazyMemoryBlock::Data, address, count, bytes);
}

unsigned ReadAhead::writePeripheralMemory(unsigned address, unsigned count, const unsigned char* bytes)
{
    m_bytes.clear();
    return m_memory.writePeripheralMemory(address, count, bytes);
}

unsigned ReadAhead::writeEepromMemory(unsigned address, unsigned count, const unsigned char* bytes)
{
    m_bytes.clear();
    return m_memory.writeEepromMemory(address, count, bytes);
}

unsigned ReadAhead::writeCodeMemory(unsigned address, unsigned count, const unsigned char* bytes)
{
    m_bytes.clear();
    return m_memory.writeCodeMemory(address, count, bytes);
}

unsigned ReadAhead::writeMemory(unsigned address, unsigned count, const unsigned char* bytes)
{
    m_bytes.clear();
    return m_memory.writeMemory(address, count, bytes);
}
