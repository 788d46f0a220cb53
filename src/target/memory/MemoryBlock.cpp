#include "target/memory/MemoryBlock.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr unsigned NumberSize = 8;
constexpr unsigned StringPiece = 64;

unsigned clampedSize(int size)
{
    return unsigned(std::clamp(size, 0, int(NumberSize)));
}

} // namespace

MemoryBlock::MemoryBlock(std::vector<unsigned char> bytes, Endian::EndianType endian)
    : m_bytes(std::move(bytes)), m_endian(endian)
{
}

void MemoryBlock::getBytes(unsigned count, unsigned char* bytes)
{
    size_t there = m_position < m_bytes.size() ? std::min<size_t>(count, m_bytes.size() - m_position) : 0;
    if (there)
        memcpy(bytes, m_bytes.data() + m_position, there);
    if (count > there)
        memset(bytes + there, 0, count - there);
    m_position += count;
}

void MemoryBlock::putBytes(unsigned count, const unsigned char* bytes)
{
    size_t there = m_position < m_bytes.size() ? std::min<size_t>(count, m_bytes.size() - m_position) : 0;
    if (there)
        memcpy(m_bytes.data() + m_position, bytes, there);
    m_position += count;
}

uint64_t MemoryBlock::getInt(int size)
{
    unsigned char buffer[NumberSize];
    getBytes(clampedSize(size), buffer);
    return Endian::unpackNumber(buffer, 0, clampedSize(size), m_endian);
}

void MemoryBlock::putInt(unsigned long long value, int size)
{
    unsigned char buffer[NumberSize];
    Endian::packNumber(buffer, 0, value, clampedSize(size), m_endian);
    putBytes(clampedSize(size), buffer);
}

void MemoryBlock::getNullTerminatedString(unsigned maximum, char* text)
{
    if (maximum == 0)
        return;
    unsigned length = 0;
    while (length + 1 < maximum && m_position + length < m_bytes.size() && m_bytes[m_position + length])
        ++length;
    if (length)
        memcpy(text, m_bytes.data() + m_position, length);
    text[length] = 0;
}

uint64_t MemoryBlock::unpackBitField(unsigned size, unsigned bitOffset, unsigned bitWidth, unsigned lsbFirst)
{
    unsigned char buffer[NumberSize];
    unsigned position = m_position;
    size = std::min(size, NumberSize);
    getBytes(size, buffer);
    m_position = position;
    return Endian::unpackBitField(buffer, 0, size, bitOffset, bitWidth, m_endian, lsbFirst != 0);
}

void MemoryBlock::packBitField(unsigned long long value, unsigned size, unsigned bitOffset, unsigned bitWidth,
                               unsigned lsbFirst)
{
    unsigned char buffer[NumberSize];
    unsigned position = m_position;
    size = std::min(size, NumberSize);
    getBytes(size, buffer);
    Endian::packBitField(buffer, 0, value, size, bitOffset, bitWidth, m_endian, lsbFirst != 0);
    m_position = position;
    putBytes(size, buffer);
    m_position = position;
}

LazyMemoryBlock::LazyMemoryBlock(LiveMemory* memory, Endian::EndianType endian, int kind, unsigned base)
    : m_memory(memory), m_endian(endian), m_kind(kind), m_base(base)
{
}

void LazyMemoryBlock::getBytes(unsigned count, unsigned char* bytes)
{
    unsigned address = m_base + m_offset;
    m_offset += count;
    switch (m_kind) {
    case Peripheral: m_memory->readPeripheralMemory(address, count, bytes); break;
    case Eeprom: m_memory->readEepromMemory(address, count, bytes); break;
    case Code: m_memory->readCodeMemory(address, count, bytes); break;
    case Data: m_memory->readMemory(address, count, bytes); break;
    default: break;
    }
}

void LazyMemoryBlock::putBytes(unsigned count, const unsigned char* bytes)
{
    unsigned address = m_base + m_offset;
    m_offset += count;
    switch (m_kind) {
    case Peripheral: m_memory->writePeripheralMemory(address, count, bytes); break;
    case Eeprom: m_memory->writeEepromMemory(address, count, bytes); break;
    case Code: m_memory->writeCodeMemory(address, count, bytes); break;
    case Data: m_memory->writeMemory(address, count, bytes); break;
    default: break;
    }
}

uint64_t LazyMemoryBlock::getInt(int size)
{
    unsigned char buffer[NumberSize] = {};
    getBytes(clampedSize(size), buffer);
    return Endian::unpackNumber(buffer, 0, clampedSize(size), m_endian);
}

void LazyMemoryBlock::putInt(unsigned long long value, int size)
{
    unsigned char buffer[NumberSize];
    Endian::packNumber(buffer, 0, value, clampedSize(size), m_endian);
    putBytes(clampedSize(size), buffer);
}

void LazyMemoryBlock::getNullTerminatedString(unsigned maximum, char* text)
{
    if (maximum == 0)
        return;
    unsigned start = m_offset;
    unsigned length = 0;
    bool ended = false;
    while (!ended && length + 1 < maximum) {
        unsigned char piece[StringPiece] = {};
        unsigned count = std::min(StringPiece, maximum - 1 - length);
        getBytes(count, piece);
        const void* zero = memchr(piece, 0, count);
        unsigned there = zero ? unsigned(static_cast<const unsigned char*>(zero) - piece) : count;
        memcpy(text + length, piece, there);
        length += there;
        ended = zero != nullptr;
    }
    text[length] = 0;
    m_offset = start;
}

uint64_t LazyMemoryBlock::unpackBitField(unsigned size, unsigned bitOffset, unsigned bitWidth,
                                         unsigned lsbFirst)
{
    unsigned char buffer[NumberSize] = {};
    unsigned start = m_offset;
    size = std::min(size, NumberSize);
    getBytes(size, buffer);
    m_offset = start;
    return Endian::unpackBitField(buffer, 0, size, bitOffset, bitWidth, m_endian, lsbFirst != 0);
}

void LazyMemoryBlock::packBitField(unsigned long long value, unsigned size, unsigned bitOffset,
                                   unsigned bitWidth, unsigned lsbFirst)
{
    unsigned char buffer[NumberSize] = {};
    unsigned start = m_offset;
    size = std::min(size, NumberSize);
    getBytes(size, buffer);
    Endian::packBitField(buffer, 0, value, size, bitOffset, bitWidth, m_endian, lsbFirst != 0);
    m_offset = start;
    putBytes(size, buffer);
    m_offset = start;
}
