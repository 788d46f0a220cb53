#include "target/memory/TargetMemoryInterface.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr unsigned StringPiece = 64;
constexpr unsigned MemsetPiece = 256;
constexpr unsigned VerifyPiece = 1024;
constexpr unsigned ElementBytes = 256; // bytes a piece of the 16- and 32-bit operations

template <class Value> constexpr unsigned ElementsAPiece = ElementBytes / sizeof(Value);

// Elements of a fixed width travel through a buffer of bytes in the memory's order.
template <class Value>
void pokeMult(TargetMemoryInterface& memory, uint32_t address, unsigned count, const Value* values)
{
    unsigned char buffer[ElementBytes];
    while (count > 0) {
        unsigned piece = std::min(count, ElementsAPiece<Value>);
        for (unsigned i = 0; i < piece; ++i)
            Endian::packNumber(buffer, i * sizeof(Value), values[i], sizeof(Value), memory.endian());
        memory.pokeBytes(address, piece * sizeof(Value), buffer);
        address += piece * sizeof(Value);
        values += piece;
        count -= piece;
    }
}

template <class Value>
void peekMult(TargetMemoryInterface& memory, uint32_t address, unsigned count, Value* values)
{
    unsigned char buffer[ElementBytes];
    while (count > 0) {
        unsigned piece = std::min(count, ElementsAPiece<Value>);
        memory.peekBytes(address, piece * sizeof(Value), buffer);
        for (unsigned i = 0; i < piece; ++i)
            values[i] =
                Value(Endian::unpackNumber(buffer, i * sizeof(Value), sizeof(Value), memory.endian()));
        address += piece * sizeof(Value);
        values += piece;
        count -= piece;
    }
}

template <class Value>
void memsetMult(TargetMemoryInterface& memory, uint32_t address, unsigned count, Value value)
{
    Value values[ElementsAPiece<Value>];
    std::fill(std::begin(values), std::end(values), value);
    while (count > 0) {
        unsigned piece = std::min(count, ElementsAPiece<Value>);
        pokeMult(memory, address, piece, values);
        address += piece * sizeof(Value);
        count -= piece;
    }
}

} // namespace

TargetMemoryInterface::TargetMemoryInterface(Endian::EndianType endian, unsigned wordLength, bool erase)
    : m_endian(endian), m_wordLength(wordLength), m_erase(erase), m_displayWidth(wordLength)
{
}

std::string TargetMemoryInterface::peekString(uint32_t address, unsigned maximum)
{
    std::string text;
    while (text.size() < maximum) {
        unsigned char piece[StringPiece];
        unsigned count = std::min<unsigned>(StringPiece, maximum - unsigned(text.size()));
        peekBytes(address, count, piece);
        const void* zero = memchr(piece, 0, count);
        size_t length = zero ? size_t(static_cast<const unsigned char*>(zero) - piece) : count;
        text.append(reinterpret_cast<const char*>(piece), length);
        if (zero)
            break;
        address += count;
    }
    return text;
}

void TargetMemoryInterface::downloadBytes(uint32_t address, unsigned count, const unsigned char* bytes)
{
    pokeBytes(address, count, bytes);
}

// Only a memory that has a load to close looks at the mark of the final piece.
void TargetMemoryInterface::downloadBytes(uint32_t address, unsigned count, const unsigned char* bytes, bool)
{
    downloadBytes(address, count, bytes);
}

void TargetMemoryInterface::uploadBytes(uint32_t address, unsigned count, unsigned char* bytes)
{
    peekBytes(address, count, bytes);
}

void TargetMemoryInterface::memsetBytes(uint32_t address, unsigned count, unsigned char value)
{
    unsigned char piece[MemsetPiece];
    memset(piece, value, sizeof piece);
    while (count > 0) {
        unsigned length = std::min(count, MemsetPiece);
        pokeBytes(address, length, piece);
        address += length;
        count -= length;
    }
}

bool TargetMemoryInterface::verifyBytes(uint32_t address, unsigned count, const unsigned char* bytes)
{
    unsigned char piece[VerifyPiece];
    while (count > 0) {
        unsigned length = std::min(count, VerifyPiece);
        uploadBytes(address, length, piece);
        if (memcmp(piece, bytes, length) != 0)
            return false;
        address += length;
        bytes += length;
        count -= length;
    }
    return true;
}

void TargetMemoryInterface::eraseBytes(uint32_t address, unsigned count, unsigned* erasedAddress,
                                       unsigned* erasedCount)
{
    if (erasedAddress)
        *erasedAddress = address;
    if (erasedCount)
        *erasedCount = count;
}

void TargetMemoryInterface::pokeMultUint16(uint32_t address, unsigned count, const unsigned short* values)
{
    pokeMult(*this, address, count, values);
}

void TargetMemoryInterface::peekMultUint16(uint32_t address, unsigned count, unsigned short* values)
{
    peekMult(*this, address, count, values);
}

void TargetMemoryInterface::memsetUint16(uint32_t address, unsigned count, unsigned short value)
{
    memsetMult(*this, address, count, value);
}

void TargetMemoryInterface::pokeMultUint32(uint32_t address, unsigned count, const unsigned int* values)
{
    pokeMult(*this, address, count, values);
}

void TargetMemoryInterface::peekMultUint32(uint32_t address, unsigned count, unsigned int* values)
{
    peekMult(*this, address, count, values);
}

void TargetMemoryInterface::memsetUint32(uint32_t address, unsigned count, unsigned int value)
{
    memsetMult(*this, address, count, value);
}

void TargetMemoryInterface::pokeByte(uint32_t address, unsigned char value)
{
    pokeBytes(address, 1, &value);
}

unsigned char TargetMemoryInterface::peekByte(uint32_t address)
{
    unsigned char value = 0;
    peekBytes(address, 1, &value);
    return value;
}

void TargetMemoryInterface::pokeUint16(uint32_t address, unsigned short value)
{
    pokeMultUint16(address, 1, &value);
}

unsigned short TargetMemoryInterface::peekUint16(uint32_t address)
{
    unsigned short value = 0;
    peekMultUint16(address, 1, &value);
    return value;
}

void TargetMemoryInterface::pokeUint32(uint32_t address, unsigned int value)
{
    pokeMultUint32(address, 1, &value);
}

unsigned int TargetMemoryInterface::peekUint32(uint32_t address)
{
    unsigned int value = 0;
    peekMultUint32(address, 1, &value);
    return value;
}

void TargetMemoryInterface::pokeWord(uint32_t address, uint64_t value)
{
    pokeNumber(address, m_wordLength, value);
}

uint64_t TargetMemoryInterface::peekWord(uint32_t address)
{
    return peekNumber(address, m_wordLength);
}

void TargetMemoryInterface::pokeNumber(uint32_t address, unsigned size, uint64_t value)
{
    unsigned char buffer[8];
    size = std::min(size, 8u);
    Endian::packNumber(buffer, 0, value, size, endian());
    pokeBytes(address, size, buffer);
}

uint64_t TargetMemoryInterface::peekNumber(uint32_t address, unsigned size)
{
    unsigned char buffer[8] = {};
    size = std::min(size, 8u);
    peekBytes(address, size, buffer);
    return Endian::unpackNumber(buffer, 0, size, endian());
}

bool TargetMemoryInterface::memoryExists(uint32_t address, unsigned count)
{
    if (count > 0 && address > UINT32_MAX - (count - 1))
        return false;
    return addressRanges().find(address, address + (count > 0 ? count - 1 : 0)) != nullptr;
}
