#include "support/Endian.h"

#include <gtest/gtest.h>

TEST(Endian, NumbersAndBitFieldsInBothOrders)
{
    const uint8_t bytes[] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(Endian::unpackNumber(bytes, 0, 4, Endian::Big), 0x01020304u);
    EXPECT_EQ(Endian::unpackNumber(bytes, 0, 4, Endian::Little), 0x04030201u);
    EXPECT_EQ(Endian::unpackNumber(bytes, 2, 3, Endian::Big), 0x030405u);
    EXPECT_EQ(Endian::unpackUINT64(bytes, 0, Endian::Big), 0x0102030405060708u);

    // A field of 5 bits at bit 3, counted from either end of a 16-bit number.
    uint8_t word[] = {0, 0};
    Endian::packBitField(word, 0, 0x15, 2, 3, 5, Endian::Little, true);
    EXPECT_EQ(Endian::unpackUINT16(word, 0, Endian::Little), 0x15 << 3);
    EXPECT_EQ(Endian::unpackBitField(word, 0, 2, 3, 5, Endian::Little, true), 0x15u);
    Endian::packBitField(word, 0, 0x1F, 2, 3, 5, Endian::Little, false);
    EXPECT_EQ(Endian::unpackUINT16(word, 0, Endian::Little), 0x15 << 3 | 0x1F << 8);
    EXPECT_EQ(Endian::unpackBitField(word, 0, 2, 19, 5, Endian::Little, false), 0x1Fu); // modulo 16
    EXPECT_EQ(Endian::unpackBitField(word, 0, 2, 14, 5, Endian::Little, false), 0u);    // outside
}
