// Instructions both ways: what disassembly prints is what the assembler reads.
#include "tools/kvas/Instruction.h"
#include "maxq30/cpu/ZOFFMAXQ30Insn.h"
#include "support/Pool.h"
#include "tools/kvas/Cursor.h"
#include "tools/kvas/Diagnostics.h"
#include "tools/kvas/Expression.h"
#include "tools/kvas/ExpressionParser.h"
#include "tools/kvas/Program.h"

#include <gtest/gtest.h>
#include <iterator>

namespace {

using namespace kvas;

class Instruction : public ::testing::Test, public Names {
public:
    Symbol* reference(std::string_view name, uint32_t) override { return program.newSymbol(name); }
    Marker* here() override
    {
        Marker* marker = program.newMarker();
        marker->pc = int64_t(pc);
        return marker;
    }

    Place placeAt(uint32_t column) const override { return {0, 1, column}; }

    // The opcode of one instruction at `at`; a text in place of it when it has a fault.
    std::string assemble(std::string_view text, uint32_t at, uint64_t& opcode)
    {
        pc = at;
        Cursor cursor(text);
        ExpressionParser expressions(program, *this);
        Item item;
        item.pc = at;
        try {
            const Mnemonic* mnemonic = findMnemonic(cursor.identifier());
            if (!mnemonic)
                return "no mnemonic";
            parseInstruction(*mnemonic, cursor, expressions, item);
            cursor.expectEnd();
        } catch (const SyntaxError& error) {
            return error.text;
        }
        int64_t value = item.operand ? Evaluator().evaluate(item.operand).number : 0;
        if (item.operand)
            item.size = uint8_t(wordsNeeded(item, value));
        opcode = encodeInstruction(item, value);
        return {};
    }

    static std::string print(uint64_t opcode, long at)
    {
        Pool pool;
        CurrentPool current(&pool);
        auto* insn = new ZOFFMAXQ30Insn(opcode);
        insn->setPC(at);
        return insn->printString();
    }

    void expectRoundTrip(uint64_t opcode, long at)
    {
        std::string text = print(opcode, at);
        uint64_t back = 0;
        std::string fault = assemble(text, at < 0 ? 0x2000 : uint32_t(at), back);
        EXPECT_EQ(fault, "") << text;
        EXPECT_EQ(back, opcode) << std::hex << opcode << " prints as" << text << " which assembles to "
                                << back;
    }

    Program program;
    uint32_t pc = 0;
};

// "MOVE C, ACC.n" has two words for n from 0 to 7; the text stands for the one that knows all sixteen bits.
// What is popped into an operation is printed as POP, which the assembler wants written as the operation.
bool isSynonym(unsigned opcode)
{
    bool isPop = (opcode & 0x80FF) == 0x800D;
    unsigned destination = opcode >> 8 & 0x7F;
    return (opcode & 0x8FFF) == 0x870A ||
           (isPop &&
            ((destination & 15) == 7 || ((destination & 15) == 10 && destination > 10) ||
             destination == 0x78 || destination == 0x3D || destination == 0x4D || destination == 0x5D));
}

} // namespace

TEST_F(Instruction, EveryWordComesBackFromItsText)
{
    for (long at : {-1L, 0L, 0x1234L}) {
        for (unsigned opcode = 0; opcode <= 0xFFFF && !HasFailure(); ++opcode) {
            if (!isSynonym(opcode))
                expectRoundTrip(opcode, at);
        }
    }
    uint64_t back = 0;
    EXPECT_EQ(assemble(print(0xB70A, 0), 0, back), "");
    EXPECT_EQ(back, 0xEA3Au);
}

TEST_F(Instruction, PrefixedWordsComeBackFromTheirText)
{
    // Immediate values of two to four words, to every destination and through every operation.
    const uint64_t prefixes[] = {0x0B01, 0x0B80, 0x0BFF'0B00, 0x0B12'0B34, 0x0B7F'0B00'0B01};
    for (uint64_t prefix : prefixes) {
        for (unsigned destination = 0; destination < 0x80; ++destination) {
            for (uint64_t bits : {0u, 0x2000u, 0x4000u, 0x6000u}) {
                uint64_t opcode = prefix << 16 | bits << 16 | destination << 8 | 0x5A;
                // Bits of the destination in front of a code target, a bit of a value or PUSH change
                // nothing in the text.
                bool ignored = (destination & 7) == 7 || (destination & 15) == 12 || (destination & 15) == 13;
                // Calls and jumps near enough for one word are printed no differently.
                bool isMove = !(bits && ignored) && (bits != 0x4000 || destination != 10);
                if (isMove && (destination & 15) != 7)
                    expectRoundTrip(opcode, 0x100000);
            }
        }
    }
    // Sources and destinations beyond the numbers of one word.
    for (unsigned source = 0; source < 0x200; ++source) {
        if ((source & 15) == 7 || (source & 15) == 10)
            continue;
        for (unsigned destination : {9u, 0x19u, 0x8Fu, 0xFFu, 0x13Fu}) {
            uint64_t prefix = (source & 0x100) << 4 | (destination & 0x180) << 6;
            uint64_t opcode =
                (prefix ? (0x0B00 | prefix) << 16 : 0) | 0x8000 | (destination & 0x7F) << 8 | (source & 0xFF);
            if (source < 0x100 || (source & 0xFF) != 13) // printed as POP, which has no prefix
                expectRoundTrip(opcode, 0);
        }
    }
    for (uint64_t opcode : {0x2B00'0A05ull, 0x2B00'1A00ull, 0x2B12'7A34ull, 0x0B01'2B12'7A34ull,
                            0x2B00'8A0Aull, 0x1B00'8AFAull, 0x1B00'8C3Full, 0x1B00'8D3Full, 0x1B00'C70Full})
        expectRoundTrip(opcode, 0x400);
}

TEST_F(Instruction, TransportsIntoAnOperationAreWrittenAsTheOperation)
{
    struct {
        const char* transport;
        const char* operation; // the word that the transport would have
        uint64_t opcode;
    } cases[] = {
        {"MOVE A[AP], A[3]", "AND A[3]", 0x9A39},
        {"MOVE A[AP], #5", "AND #5", 0x1A05},
        {"MOVE A[AP], #0x1234", "AND #0x1234", 0x0B12'1A34},
        {"MOVE A[AP], @DP[1].L", "AND @DP[1].L", 0x1B00'9A3F},
        {"MOVE M10[2], A[0]", "OR A[0]", 0xAA09},
        {"MOVE M10[7], #1", "SUBB #1", 0x7A01},
        {"MOVE M10[8], @DP[1].L", "BIC @DP[1].L", 0x3B00'8A3F},
        {"MOVE M10[15], ACC", "MLW2 ACC", 0x2B00'FA0A},
        {"MOVE M8[7], SP", "CMP SP", 0xF81D},
        {"MOVE M7[3], A[0]", "MOVE C, A[0].3", 0xB709},
        {"MOVE M12[1], #0x402", "JUMP Z, 0x402", 0x1C00},
        {"MOVE M13[3], A[0]", "CALL A[0]", 0xBD09},
        {"MOVE M13[5], #0x402", "DJNZ LC[1], 0x402", 0x5D00},
        {"POP A[AP]", "AND @SP++", 0x9A0D},
        {"POP M8[7]", "CMP @SP++", 0xF80D},
        {"POP M7[2]", "MOVE C, @SP++.2", 0xA70D},
        {"POP M13[4]", "DJNZ LC[0], @SP++", 0xCD0D},
    };
    for (const auto& c : cases) {
        uint64_t opcode = 0;
        EXPECT_NE(assemble(c.transport, 0x400, opcode), "") << c.transport << std::hex << " gives " << opcode;
        EXPECT_EQ(assemble(c.operation, 0x400, opcode), "") << c.operation;
        EXPECT_EQ(opcode, c.opcode) << c.operation << std::hex << " gives " << opcode;
    }
}

TEST_F(Instruction, RefusesWhatHasNoEncoding)
{
    uint64_t opcode = 0;
    for (const char* text : {"ADD ACC",
                             "AND A[AP]",
                             "MOVE ACC, A[AP]",
                             "MOVE A[0], M7[3]",
                             "MOVE @SPI++, A[0]",
                             "ADD M10[9]",
                             "JUMP M7[0]",
                             "MOVE ACC.8, #1",
                             "MOVE ACC.16, C",
                             "MOVE A[0].3, C",
                             "MOVE A[0].1, #2",
                             "MOVE C, #2",
                             "MOVE A[0].8, #1",
                             "MOVE @SP++, #1",
                             "MOVE A[16], #1",
                             "MOVE A[0]",
                             "MOVE A[0], 5",
                             "ADD 5",
                             "DJNZ A[0], 5",
                             "RET X",
                             "NOP 1",
                             "POP #1",
                             "JUMP #5",
                             "MOVE A[0], #SP",
                             "MOVE C, ACC",
                             "PUSH @DP[2].B",
                             "MOVE M16[0], #1",
                             "MOVE @DP[0].B+, #1"})
        EXPECT_NE(assemble(text, 0, opcode), "") << text << std::hex << " gives " << opcode;
}

TEST_F(Instruction, CodeTargetsTakeTheShortFormExactlyWithinReach)
{
    struct {
        const char* text;
        uint32_t at;
        uint64_t opcode;
    } cases[] = {
        {"JUMP 0x1000", 0x1000, 0x0CFF},
        {"JUMP 0x1100", 0x1000, 0x0C7F},
        {"JUMP 0x1102", 0x1000, 0x0B08'0C81},
        {"JUMP 0x0F02", 0x1000, 0x0C80},
        {"JUMP 0x0F00", 0x1000, 0x0B07'0C80},
        // Far, and below word 256: a single word would be taken for a distance.
        {"JUMP 0x10", 0x1000, 0x0B00'0C08},
        {"CALL 0x20000", 0x1000, 0x0B01'0B00'3D00},
        {"DJNZ LC[1], 0xFFE", 0x1000, 0x5DFE},
        {"JUMP NE, .+4", 0x1000, 0x7C01},
        {"MOVE A[0], #-1", 0, 0x0BFF'0BFF'0BFF'09FF},
        {"MOVE A[0], #256", 0, 0x0B01'0900},
        {"MOVE A[0], #0xFFFFFF", 0, 0x0BFF'0BFF'09FF},
        {"MOVE A[0], #0x1000000", 0, 0x0B01'0B00'0B00'0900},
        // Addresses wrap at 32 bits.
        {"JUMP 0xFFFFFFFE", 0, 0x0CFE},
        {"MOVE DP[1], #0", 0, 0x2B00'5F00},
    };
    for (const auto& c : cases) {
        uint64_t opcode = 0;
        EXPECT_EQ(assemble(c.text, c.at, opcode), "") << c.text;
        EXPECT_EQ(opcode, c.opcode) << c.text << std::hex << " gives " << opcode;
    }
}
