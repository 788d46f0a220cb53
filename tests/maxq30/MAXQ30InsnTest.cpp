#include "maxq30/cpu/ZOFFMAXQ30Insn.h"
#include "support/HException.h"
#include "support/HString.h"
#include "support/MAXQ30Records.h" // installs the record
#include "support/Pool.h"
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFMarker.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFTags.h"

#include <gtest/gtest.h>

namespace {

class MAXQ30Insn : public ::testing::Test {
    Pool m_pool;
    CurrentPool m_current{&m_pool};
};

std::string textOf(uint64_t opcode, long pc = -1, ZOFFExpr* operand = nullptr)
{
    ZOFFMAXQ30Insn insn(opcode, operand);
    insn.setPC(pc);
    return insn.printString();
}

std::string bytesOf(uint64_t opcode, int64_t operand, long pc)
{
    auto* insn = new ZOFFMAXQ30Insn(opcode, new ZOFFConstExpr(operand));
    insn->setPC(pc);
    insn->encode();
    EXPECT_EQ(insn->length(), insn->byteCount());
    ZOFFMAXQ30Insn again(insn->opcode(), insn->operand()); // what is encoded is a template of itself
    again.setPC(pc);
    again.encode();
    EXPECT_EQ(again.opcode(), insn->opcode());
    return insn->printOpCode();
}

} // namespace

TEST_F(MAXQ30Insn, OpcodesPrintByTheFirstRuleThatMatches)
{
    struct {
        uint64_t opcode;
        const char* text;
    } cases[] = {
        {0xDA3A, "\tNOP"},
        {0x8A1A, "\tCPL"},
        {0xCA9A, "\tXCHE"},
        {0xDA0A, "\tMOVE\tC, #0"},
        {0x8C0D, "\tRET"},
        {0xFC8D, "\tRETI\tNE"},
        {0x0B008C0D, "\tPOP\tM12[0]"}, // a prefix: no longer a return
        {0x0B000D05, "\tPUSH\t#5"},
        {0xAA5A, "\tOR\tC, ACC.5"},
        {0xBAFA, "\tXOR\tC, ACC.15"},
        {0xEA0A, "\tMOVE\tC, ACC.0"},
        {0x9A1A, "\tAND\tC, ACC.1"},
        {0xFA9A, "\tMOVE\tACC.9, C"},
        {0x89B7, "\tMOVE\tA[0].3, #1"},
        {0x0D10, "\tPUSH\t#0x10"},
        {0x8D09, "\tPUSH\tA[0]"},
        {0x890D, "\tPOP\tA[0]"},
        {0xB709, "\tMOVE\tC, A[0].3"},
        {0x1C05, "\tJUMP\tZ, .+12"},
        {0x0CFE, "\tJUMP\t.+-2"},
        {0xBD09, "\tCALL\tA[0]"},
        {0x4D00, "\tDJNZ\tLC[0], .+2"},
        {0xDD3F, "\tDJNZ\tLC[1], DP[0]"},
        {0x1A0F, "\tAND\t#15"},
        {0x0B121A34, "\tAND\t#0x1234"},
        {0x2B000A05, "\tBIC\t#5"},
        {0x2B008A09, "\tBIC\tA[0]"},
        {0x2B005A09, "\tMLB4\t#9"},
        {0xF809, "\tCMP\tA[0]"},
        {0x8D2D, "\tPUSH\tIV"},
        {0x0B010B020B033905, "\tMOVE\tA[3], #0x1020305"},
        {0x1B00A909, "\tMOVE\tA[2], M9[16]"},
        {0xA80D, "\tPOP\tNUL"},
        {0x2809, "\tMOVE\tNUL, #9"},
        {0xA809, "\tMOVE\tNUL, A[0]"},
        {0xA828, "\tMOVE\tNUL, M8[2]"},
    };
    for (auto& [opcode, text] : cases)
        EXPECT_EQ(textOf(opcode), text) << std::hex << opcode;
    EXPECT_EQ(textOf(0x0CFE, 0x100), "\tJUMP\t0xfe");
    EXPECT_EQ(textOf(0x0B013D10, 0x100), "\tCALL\t0x220");
    auto* operand = ZOFFBinaryExpr::make(
        ZOFFTag::Add, new ZOFFSymbolExpr(new ZOFFSymbol(HString::intern("_f"))), new ZOFFConstExpr(2));
    EXPECT_EQ(textOf(0x3D00, 0, operand), "\tCALL\t_f + 2");
    EXPECT_EQ(textOf(0x0900, 0, operand), "\tMOVE\tA[0], #_f + 2");
    EXPECT_EQ(textOf(0x8909, 0, operand), "\tMOVE\tA[0], A[0]"); // the source is a register
}

TEST_F(MAXQ30Insn, RegistersHaveTheirNames)
{
    EXPECT_EQ(hex(15), "15");
    EXPECT_EQ(hex(16), "0x10");
    EXPECT_EQ(decodeModule(0x08), "AP");
    EXPECT_EQ(decodeModule(0x28), "M8[2]");
    EXPECT_EQ(decodeModule(0xF9), "A[15]");
    EXPECT_EQ(decodeModule(0x13F), "@DP[1].L");
    EXPECT_EQ(decodeModule(0x14F), "M15[20]");
    EXPECT_EQ(decodeModule(0xBE), "FP");
    EXPECT_EQ(decodeModule(0x8D), "@SPI++");
    EXPECT_EQ(decodeModule(0x10A), "M10[16]");
    EXPECT_EQ(decodeDestinationRegister(0x0D00), "@--SP");
    EXPECT_EQ(decodeDestinationRegister(0x2800), "NUL");
    EXPECT_EQ(decodeDestinationRegister(0x2B000F00), "@DP[0].W"); // index bit 3 from the prefix
    EXPECT_EQ(decodeDestinationRegister(0x6B000F00), "M15[24]");
    EXPECT_EQ(ZOFFRegisterExpr::getRegisterName(0x1A), "A[AP]");
}

TEST_F(MAXQ30Insn, LengthsAndTargetsComeFromTheOpcode)
{
    EXPECT_EQ(ZOFFMAXQ30Insn(0xFFFF).length(), 2);
    EXPECT_EQ(ZOFFMAXQ30Insn(0x10000).length(), 4);
    EXPECT_EQ(ZOFFMAXQ30Insn(0x100000000).length(), 6);
    EXPECT_EQ(ZOFFMAXQ30Insn(0x1000000000000).length(), 8);
    auto targetOf = [](uint64_t opcode) {
        ZOFFMAXQ30Insn insn(opcode);
        insn.setPC(0x100);
        uint32_t target = 0;
        return insn.isJump(target) ? int(target) : -1;
    };
    EXPECT_EQ(targetOf(0x0CFE), 0xFE);
    EXPECT_EQ(targetOf(0x5D02), 0x106);
    EXPECT_EQ(targetOf(0x0D02), 0x106); // PUSH shares the pattern
    EXPECT_EQ(targetOf(0x0B013D10), 0x220);
    EXPECT_EQ(targetOf(0x8C09), -1);
    EXPECT_EQ(targetOf(0xDD09), -1);
    EXPECT_EQ(targetOf(0xBD09), -1); // the pattern of a call asks for an immediate here
    EXPECT_TRUE(ZOFFMAXQ30Insn(0xBD09).isCall());
    EXPECT_TRUE(ZOFFMAXQ30Insn(0x3D09).isCall());
    EXPECT_FALSE(ZOFFMAXQ30Insn(0x0D09).isCall());
}

TEST_F(MAXQ30Insn, OperandsAreEncodedInTheShortestForm)
{
    EXPECT_EQ(bytesOf(0x0900, 0x12, 0), "1209\t");
    EXPECT_EQ(bytesOf(0x0900, 0x123, 0), "010B2309");
    EXPECT_EQ(bytesOf(0x0900, 0x12345, 0), "010B230B4509");
    EXPECT_EQ(bytesOf(0x0900, -2, 0), "FF0BFF0BFF0BFE09");
    EXPECT_EQ(bytesOf(0x2B000A00, 5, 0), "002B050A"); // the prefix chooses the operation
    EXPECT_EQ(bytesOf(0x3D00, 0x100, 0x100), "FF3D\t");
    EXPECT_EQ(bytesOf(0x3D00, 0x200, 0x100), "7F3D\t");
    EXPECT_EQ(bytesOf(0x3D00, 0x202, 0x100), "010B013D");
    EXPECT_EQ(bytesOf(0x3D00, 0x04, 0x102), "803D\t");
    EXPECT_EQ(bytesOf(0x3D00, 0x02, 0x102),
              "000B013D"); // beyond reach: without a prefix it would be relative
    EXPECT_EQ(bytesOf(0x4D00, 0x104, 0x100), "014D\t");
    EXPECT_EQ(bytesOf(0x0D00, 0x104, 0x100), "010B040D"); // PUSH takes the number itself

    auto lengthOf = [](uint64_t opcode, int64_t operand, long pc) {
        ZOFFMAXQ30Insn insn(opcode, new ZOFFConstExpr(operand));
        insn.setPC(pc);
        return insn.estimatedLength();
    };
    EXPECT_EQ(lengthOf(0x3D00, 0x1FE, 0x100), 2);
    EXPECT_EQ(lengthOf(0x3D00, 0x200, 0x100), 4); // one short of what encode() reaches
    EXPECT_EQ(lengthOf(0x0900, 0x1000000, 0), 8);
    EXPECT_EQ(lengthOf(0x2B000A00, 5, 0), 4);

    auto* marker = new ZOFFMarker;
    ZOFFMAXQ30Insn forward(0x3D00, new ZOFFMarkerExpr(marker));
    forward.setPC(0);
    EXPECT_EQ(forward.estimatedLength(), 2);
    EXPECT_THROW(forward.encode(), HException);
    marker->setPC(0x400);
    EXPECT_NE(forward.estimatedLength(), forward.length());
    forward.encode();
    EXPECT_EQ(forward.estimatedLength(), forward.length());
    ZOFFMAXQ30Insn plain(0x0B018909);
    plain.encode();
    EXPECT_EQ(plain.printOpCode(), "010B0989");
}
