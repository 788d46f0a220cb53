// Packing of numbers into bytes, in either byte order. Offsets and sizes are in bytes; callers own
// the buffer and have checked that offset + size lies inside it.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace Endian {

// 0 is little-endian, any other value big-endian.
using EndianType = int;
constexpr EndianType Little = 0;
constexpr EndianType Big = 1;

// A number of `size` bytes, 1 to 8; never sign-extended.
inline uint64_t unpackNumber(const uint8_t* buffer, unsigned offset, unsigned size, EndianType order)
{
    uint64_t value = 0;
    for (unsigned i = 0; i < size; ++i) {
        unsigned at = order == Little ? size - 1 - i : i;
        value = value << 8 | buffer[offset + at];
    }
    return value;
}

inline void packNumber(uint8_t* buffer, unsigned offset, uint64_t value, unsigned size, EndianType order)
{
    for (unsigned i = 0; i < size; ++i) {
        unsigned at = order == Little ? i : size - 1 - i;
        buffer[offset + at] = uint8_t(value);
        value >>= 8;
    }
}

inline uint16_t unpackUINT16(const uint8_t* b, unsigned offset, EndianType order)
{
    return uint16_t(unpackNumber(b, offset, 2, order));
}
inline int16_t unpackINT16(const uint8_t* b, unsigned offset, EndianType order)
{
    return int16_t(unpackNumber(b, offset, 2, order));
}
inline uint32_t unpackUINT32(const uint8_t* b, unsigned offset, EndianType order)
{
    return uint32_t(unpackNumber(b, offset, 4, order));
}
inline int32_t unpackINT32(const uint8_t* b, unsigned offset, EndianType order)
{
    return int32_t(unpackNumber(b, offset, 4, order));
}
inline uint64_t unpackUINT64(const uint8_t* b, unsigned offset, EndianType order)
{
    return unpackNumber(b, offset, 8, order);
}

inline void packUINT16(uint8_t* b, unsigned offset, uint16_t value, EndianType order)
{
    packNumber(b, offset, value, 2, order);
}
inline void packINT16(uint8_t* b, unsigned offset, int16_t value, EndianType order)
{
    packNumber(b, offset, uint16_t(value), 2, order);
}
inline void packUINT32(uint8_t* b, unsigned offset, uint32_t value, EndianType order)
{
    packNumber(b, offset, value, 4, order);
}
inline void packINT32(uint8_t* b, unsigned offset, int32_t value, EndianType order)
{
    packNumber(b, offset, uint32_t(value), 4, order);
}
inline void packUINT64(uint8_t* b, unsigned offset, uint64_t value, EndianType order)
{
    packNumber(b, offset, value, 8, order);
}

// Bit fields of a number of `size` bytes (1 to 8). With lsbFirst the field starts at bit
// `bitOffset & 255`, counted from the least significant bit; otherwise bitOffset counts from the
// most significant one, modulo the number's width. A field may not reach beyond 64 bits; bits
// outside the number read as 0 and are dropped on writing.
uint64_t unpackBitField(const uint8_t* buffer, unsigned offset, unsigned size, unsigned bitOffset,
                        unsigned bitWidth, EndianType order, bool lsbFirst);
void packBitField(uint8_t* buffer, unsigned offset, uint64_t value, unsigned size, unsigned bitOffset,
                  unsigned bitWidth, EndianType order, bool lsbFirst);

} // namespace Endian
