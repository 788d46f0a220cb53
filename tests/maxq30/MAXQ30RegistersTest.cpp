// The register numbering, names, sizes and map offsets, and the computed register.
#include "maxq30/cpu/MAXQ30Registers.h"

#include <gtest/gtest.h>

TEST(MAXQ30Registers, NamesNumbersSizesAndMapOffsets)
{
    struct Case {
        const char* name;
        unsigned number;
        unsigned bytes;
        int offset;
    };
    const Case cases[] = {
        {"AP", 8, 1, 0x280},     {"APC", 24, 1, 0x281},   {"PSF", 72, 2, 0x282},    {"IC", 88, 1, 0x284},
        {"SC", 136, 2, 0x286},   {"IPR0", 152, 2, 0x288}, {"IPR1", 168, 2, 0x28A},  {"CKCN", 232, 2, 0x28C},
        {"WDCN", 248, 1, 0x28E}, {"A[0]", 9, 4, 0x290},   {"A[15]", 249, 4, 0x2CC}, {"PFX", 11, 2, -1},
        {"IP", 12, 4, 0x2D0},    {"SP", 29, 4, 0x2D4},    {"LC[0]", 109, 2, 0x2D8}, {"LC[1]", 125, 2, 0x2DA},
        {"BP", 14, 4, 0x2DC},    {"OFFS", 62, 4, 0x2E0},  {"FP", 190, 4, -1},       {"DP[0]", 63, 4, 0x2E4},
        {"DP[1]", 127, 4, -1},
    };
    MAXQ30Registers registers;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(registers.nameToNumber(c.name), c.number);
        EXPECT_EQ(registers.numberToName(c.number), c.name);
        EXPECT_EQ(registers.sizeInBytes(c.number), c.bytes);
        EXPECT_EQ(MAXQ30Registers::offsetInRegisterMap(c.number), c.offset);
    }
    EXPECT_EQ(registers.numberToName(0x134), "M4[19]");
    EXPECT_EQ(registers.numberToName(16 << 4 | 9), "M9[16]");
    EXPECT_EQ(registers.sizeInBytes(0x134), 0u);
    EXPECT_EQ(MAXQ30Registers::offsetInRegisterMap(0x134), (4 * 32 + 19) * 4);
    EXPECT_EQ(MAXQ30Registers::offsetInRegisterMap(13 << 4 | 15), 0x2E8);
    EXPECT_EQ(MAXQ30Registers::offsetInRegisterMap(5), -1);
    EXPECT_EQ(MAXQ30Registers::offsetInRegisterMap(512), -1);
    for (auto [name, number] : {std::pair{"A", 9u},
                                {"LC", 4096u},
                                {"DP", 4097u},
                                {"0x1D", 29u},
                                {"12", 12u},
                                {"M88", 88u},
                                {"A[16]", 0u},
                                {"ap", 0u},
                                {"", 0u}})
        EXPECT_EQ(registers.nameToNumber(name), number) << name;
}

TEST(MAXQ30Registers, FramePointerIsComputedAndCopied)
{
    MAXQ30Registers registers;
    registers.setValue(MAXQ30Registers::BP, 0xF0);
    registers.setValue(MAXQ30Registers::FP, 0x100);
    EXPECT_EQ(registers.getValue(MAXQ30Registers::OFFS), 0x10u);
    registers.setValue(MAXQ30Registers::BP, 0x200);
    EXPECT_EQ(registers.getValue(MAXQ30Registers::FP), 0x210u);
    registers.setPC(0x1234);
    registers.setSP(0x80);
    registers.setValue(5, 7); // without a size: not copied
    registers.setValue(512, 7);
    EXPECT_EQ(registers.getValue(512), 0u);
    MAXQ30Registers copy(&registers);
    EXPECT_EQ(copy.getPC(), 0x1234u);
    EXPECT_EQ(copy.getSP(), 0x80u);
    EXPECT_EQ(copy.getValue(MAXQ30Registers::FP), 0x210u);
    EXPECT_EQ(copy.getValue(5), 0u);
}
