#include "support/Endian.h"

namespace Endian {

namespace {

// Bit position of a field, from the least significant bit; 64 when it lies wholly outside.
unsigned fieldPosition(unsigned size, unsigned bitOffset, unsigned bitWidth, bool lsbFirst)
{
    if (lsbFirst)
        return (bitOffset & 255) < 64 ? bitOffset & 255 : 64;
    unsigned bits = size * 8;
    unsigned end = (bits ? bitOffset % bits : 0) + bitWidth;
    return end <= bits ? bits - end : 64;
}

uint64_t fieldMask(unsigned bitWidth)
{
    return bitWidth >= 64 ? ~uint64_t(0) : (uint64_t(1) << bitWidth) - 1;
}

} // namespace

uint64_t unpackBitField(const uint8_t* buffer, unsigned offset, unsigned size, unsigned bitOffset,
                        unsigned bitWidth, EndianType order, bool lsbFirst)
{
    unsigned position = fieldPosition(size, bitOffset, bitWidth, lsbFirst);
    if (position >= 64)
        return 0;
    return unpackNumber(buffer, offset, size, order) >> position & fieldMask(bitWidth);
}

void packBitField(uint8_t* buffer, unsigned offset, uint64_t value, unsigned size, unsigned bitOffset,
                  unsigned bitWidth, EndianType order, bool lsbFirst)
{
    unsigned position = fieldPosition(size, bitOffset, bitWidth, lsbFirst);
    if (position >= 64)
        return;
    uint64_t mask = fieldMask(bitWidth) << position;
    uint64_t number = unpackNumber(buffer, offset, size, order);
    packNumber(buffer, offset, (number & ~mask) | (value << position & mask), size, order);
}

} // namespace Endian
