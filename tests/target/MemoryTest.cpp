// What a concrete memory inherits, and the two block cursors.
#include "support/Endian.h"
#include "target/FakeTarget.h"
#include "target/memory/MemoryBlock.h"

#include <gtest/gtest.h>

TEST(TargetMemory, WidthsAndByteOrder)
{
    FakeMemory memory(false, 0x1000);
    memory.pokeUint32(0x10, 0x11223344);
    EXPECT_EQ(memory.peekByte(0x10), 0x44);
    memory.setEndian(Endian::Big);
    EXPECT_EQ(memory.peekUint32(0x10), 0x44332211u);
    EXPECT_EQ(memory.peekUint16(0x12), 0x2211u);
    memory.pokeWord(0x20, 0xAABBCCDD); // 4 bytes, the word length
    EXPECT_EQ(memory.peekNumber(0x20, 3), 0xAABBCCu);
    memory.pokeNumber(0x30, 5, 0x0102030405);
    EXPECT_EQ(memory.peekNumber(0x30, 5), 0x0102030405u);

    // More than one piece each.
    std::vector<unsigned short> shorts(300);
    for (unsigned i = 0; i < shorts.size(); ++i)
        shorts[i] = uint16_t(i * 257);
    memory.log.clear();
    memory.pokeMultUint16(0x100, 300, shorts.data());
    EXPECT_EQ(memory.log, "poke(100,100) poke(200,100) poke(300,58) ");
    std::vector<unsigned short> back(300);
    memory.peekMultUint16(0x100, 300, back.data());
    EXPECT_EQ(back, shorts);
    memory.memsetUint32(0x400, 100, 0x01020304);
    EXPECT_EQ(memory.peekUint32(0x400 + 99 * 4), 0x01020304u);
    EXPECT_EQ(memory.peekByte(0x400 + 100 * 4), 0xFF);
    memory.memsetBytes(0x800, 300, 7);
    EXPECT_EQ(memory.peekUint16(0x800 + 298), 0x0707u);
}

TEST(TargetMemory, StringsAndComparisonStopInTime)
{
    FakeMemory memory(false, 0x200);
    memset(memory.bytes.data(), 'x', 0x200);
    memory.bytes[0x64] = 0;
    EXPECT_EQ(memory.peekString(0, 1000), std::string(0x64, 'x'));
    EXPECT_EQ(memory.peekString(0x70, 10), std::string(10, 'x'));
    EXPECT_EQ(memory.peekString(0, 0), "");
    EXPECT_TRUE(memory.verifyBytes(0x9000, 0, nullptr)); // nothing is read
    std::vector<unsigned char> same(memory.bytes);
    same[0x1FF] ^= 1;
    EXPECT_TRUE(memory.verifyBytes(0, 0x1FF, same.data()));
    EXPECT_FALSE(memory.verifyBytes(0, 0x200, same.data()));

    EXPECT_FALSE(memory.memoryExists(0, 1));
    memory.addressRanges().add(0x100, 0x1FF, false);
    EXPECT_TRUE(memory.memoryExists(0x1F0, 16));
    EXPECT_FALSE(memory.memoryExists(0x1F0, 17));
    EXPECT_FALSE(memory.memoryExists(0x1F0, 0xFFFFFFFF));
}

namespace {

// Answers each byte with its address and kind; notes writes.
struct Live : LiveMemory {
    unsigned fill(unsigned kind, unsigned address, unsigned count, unsigned char* bytes)
    {
        for (unsigned i = 0; i < count; ++i)
            bytes[i] = uint8_t(kind << 6 | ((address + i) & 0x3F));
        return count;
    }
    unsigned note(unsigned kind, unsigned address, unsigned count, const unsigned char* bytes)
    {
        log += std::to_string(kind) + ":" + std::to_string(address) + ":" + std::to_string(count) + ":" +
               std::to_string(bytes[0]) + " ";
        return count;
    }
    unsigned readPeripheralMemory(unsigned a, unsigned c, unsigned char* b) override
    {
        return fill(0, a, c, b);
    }
    unsigned writePeripheralMemory(unsigned a, unsigned c, const unsigned char* b) override
    {
        return note(0, a, c, b);
    }
    unsigned readEepromMemory(unsigned a, unsigned c, unsigned char* b) override { return fill(1, a, c, b); }
    unsigned writeEepromMemory(unsigned a, unsigned c, const unsigned char* b) override
    {
        return note(1, a, c, b);
    }
    unsigned readCodeMemory(unsigned a, unsigned c, unsigned char* b) override { return fill(2, a, c, b); }
    unsigned writeCodeMemory(unsigned a, unsigned c, const unsigned char* b) override
    {
        return note(2, a, c, b);
    }
    unsigned readMemory(unsigned a, unsigned c, unsigned char* b) override { return fill(3, a, c, b); }
    unsigned writeMemory(unsigned a, unsigned c, const unsigned char* b) override { return note(3, a, c, b); }
    std::string log;
};

} // namespace

TEST(MemoryBlock, LazyReadsEachKindAndMovesOn)
{
    Live live;
    for (unsigned kind = 0; kind < 4; ++kind) {
        LazyMemoryBlock block(&live, Endian::Little, int(kind), 0x10);
        EXPECT_EQ(block.getInt(1), kind << 6 | 0x10);
        EXPECT_EQ(block.getInt(2), (kind << 6 | 0x11) | (kind << 6 | 0x12) << 8);
        EXPECT_EQ(block.getMemoryPointer(), 0x13u);
        EXPECT_EQ(block.unpackBitField(1, 0, 4, 1), 3u); // stays where it is
        block.packBitField(0xF, 1, 0, 4, 1);
        block.putInt(9, 1);
        EXPECT_EQ(block.getMemoryPointer(), 0x14u);
    }
    EXPECT_EQ(live.log, "0:19:1:31 0:19:1:9 1:19:1:95 1:19:1:9 2:19:1:159 2:19:1:9 3:19:1:223 3:19:1:9 ");

    LazyMemoryBlock unknown(&live, Endian::Little, 4, 0x10);
    unsigned char byte = 0x5A;
    unknown.getBytes(1, &byte);
    EXPECT_EQ(byte, 0x5A);
    EXPECT_EQ(unknown.getMemoryPointer(), 0x11u);
    EXPECT_EQ(unknown.getInt(4), 0u);

    char text[8];
    LazyMemoryBlock string(&live, Endian::Little, 0, 0x3D); // 3d 3e 3f 00
    string.getNullTerminatedString(sizeof text, text);
    EXPECT_STREQ(text, "=>?");
    string.getNullTerminatedString(3, text);
    EXPECT_STREQ(text, "=>");
    EXPECT_EQ(string.getMemoryPointer(), 0x3Du);
}

TEST(MemoryBlock, PrivateArrayEndsInZeros)
{
    MemoryBlock block({1, 2, 3}, Endian::Big);
    EXPECT_EQ(block.getInt(2), 0x0102u);
    EXPECT_EQ(block.getInt(4), 0x03000000u);
    block.resetMemoryPointer();
    block.putInt(0xAABBCCDD, 4); // the fourth byte has no room
    block.resetMemoryPointer();
    EXPECT_EQ(block.getInt(3), 0xAABBCCu);
    block.setMemoryPointer(1);
    block.packBitField(0x3, 1, 6, 2, 1);
    EXPECT_EQ(block.unpackBitField(1, 0, 8, 1), 0xFBu);
    char text[4];
    block.getNullTerminatedString(4, text);
    EXPECT_EQ(std::string(text), "\xFB\xCC");
}
