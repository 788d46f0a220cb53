// What the processor's side of the debugger knows: where instructions lead, and which calls lie on the stack.
#include "debug/evaluation/ExpressionContext.h"
#include "expression/ExpressionType.h"
#include "maxq30/cpu/MAXQ30Registers.h"
#include "support/HException.h"
#include "support/Path.h"
#include "tests/debug/DebuggerFixture.h"
#include "tests/debug/FakeProgram.h"
#include "tests/support/Failure.h"

namespace {

class Processor : public Debugger {};

} // namespace

TEST_F(Processor, CallsAreFoundOnTheStack)
{
    program(".LIBRARY console\n.PUBLIC main, far\n.CODE\n.FUNC main\nPUSH A[4]\n.ADJUST -4\nPUSH "
            "A[5]\n.ADJUST -8\n"
            "CALL near\nPOP A[5]\n.ADJUST -4\nPOP A[4]\n.ADJUST 0\nRET\n.ENDFUNC\n.FUNC near\nCALL "
            "far\nRET\n.ENDFUNC\n"
            "ORG 0x4000\n.FUNC far\nNOP\nNOP\n.ENDFUNC\n");
    subject.start("start", true);
    wait();
    breakAt(22);
    subject.go();
    EXPECT_EQ(wait(), 22);
    ASSERT_EQ(subject.numcalls(), 4u) << "one of the calls has prefix words";
    EXPECT_EQ(function(0) + function(1) + function(2) + function(3), "farnearmainstart");
    EXPECT_TRUE(subject.getFrame(0)->live());
    EXPECT_FALSE(subject.getFrame(1)->live());
    EXPECT_NO_THROW(subject.setRegister(subject.getFrame(0), MAXQ30Registers::LC0, 5));
    EXPECT_EQ(target.file.getValue(MAXQ30Registers::LC0), 5u);
    EXPECT_THROW(subject.setRegister(subject.getFrame(1), MAXQ30Registers::LC0, 6), HException);

    subject.setMaximumCalls(0);
    subject.locate();
    EXPECT_EQ(subject.numcalls(), 1u);
    subject.locate(uint32_t(0x4000));
    EXPECT_EQ(function(0), "far");
    EXPECT_FALSE(subject.getFrame(0)->live());
}

TEST_F(Processor, WhereAnInstructionLeads)
{
    program(".CODE\nstart: NOP\nNOP\nJUMP start\n"     // 0, 2, 4
            "JUMP Z, start\nCALL start\nRET\nRET NZ\n" // 6, 8, 10, 12
            "DJNZ LC[0], start\nJUMP skip\nNOP\n"      // 14, 16, 18
            "skip: NOP\nJUMP A[3]\nJUMP 0x2000\n",     // 20, 22, 24
            false);
    using R = MAXQ30Registers;
    R registers;
    auto next = [&](uint32_t pc, uint32_t start, uint32_t length, bool over = false) {
        registers.setPC(pc);
        return subject.nextInstruction(&registers, over, start, length);
    };
    registers.setSP(0x100);
    target.data.pokeUint32(0x100, 0x321);
    registers.setValue(R().nameToNumber("A[3]"), 0x111);
    EXPECT_EQ(next(0, 0, 4), 4u);
    EXPECT_EQ(next(40, 0, 4), 40u) << "outside the range";
    EXPECT_EQ(next(4, 4, 2), 0u);
    EXPECT_EQ(next(6, 6, 2), 8u) << "Z is clear";
    registers.setValue(R::PSF, R::FlagZ);
    EXPECT_EQ(next(6, 6, 2), 0u);
    EXPECT_EQ(next(8, 8, 2), 0u);
    EXPECT_EQ(next(8, 8, 2, true), 10u);
    EXPECT_EQ(next(10, 10, 2), 0x642u);
    EXPECT_EQ(next(12, 12, 2), 14u);
    EXPECT_EQ(next(14, 14, 2), 0u);
    registers.setValue(R::LC0, 1);
    EXPECT_EQ(next(14, 14, 2), 16u);
    // A jump inside the range is followed: what stands at its target decides, without the registers.
    EXPECT_EQ(next(16, 16, 6), 22u);
    EXPECT_EQ(next(4, 0, 6), 2u);
    EXPECT_EQ(next(6, 4, 6), 0u);
    EXPECT_EQ(next(22, 22, 2), 0x222u);
    EXPECT_EQ(next(24, 24, 4), 0x2000u);

    // Through the data pointers: a byte, 16 or 32 bits, or the pointer itself. Indexes from 16 up need the
    // prefix's source bit.
    registers.setValue(R::DP0, 0x200);
    registers.setValue(R::DP1, 0x300);
    target.data.pokeUint32(0x200, 0x1122);
    target.data.pokeUint32(0x300, 0x3344);
    constexpr uint32_t byte0 = 0x44, word0 = 0x2244, pointer0 = 0x400;
    constexpr uint32_t byte1 = 0x88, word1 = 0x6688, pointer1 = 0x600;
    const uint32_t expected[] = {byte0, byte0, byte0, pointer0, word0, word0, word0,
                                 word0, word0, word0, byte1,    byte1, byte1, pointer1,
                                 word1, word1, word1, word1,    word1, word1, pointer0};
    for (unsigned index = 0; index < std::size(expected); ++index) {
        unsigned jump = 0x8C0F | (index & 15) << 4;
        unsigned char code[] = {0, 0x1B, uint8_t(jump), uint8_t(jump >> 8)};
        ASSERT_EQ(subject.setMemory("Code", 0x1000, sizeof code, code), sizeof code);
        unsigned first = index < 16 ? 0x1002 : 0x1000;
        EXPECT_EQ(next(first, first, 0x1004 - first), expected[index]) << index;
    }
    // All bits of a word address count, of a register and of an entry of the stack.
    registers.setValue(R().nameToNumber("A[3]"), 0xFF812345);
    EXPECT_EQ(next(22, 22, 2), 0x102468Au);
    target.data.pokeUint32(0x100, 0x812345);
    EXPECT_EQ(next(10, 10, 2), 0x102468Au);
    unsigned char fromInterrupt[] = {0x8D, 0x8C};
    subject.setMemory("Code", 10, sizeof fromInterrupt, fromInterrupt);
    EXPECT_EQ(next(10, 10, 2), 0x102468Au);

    uint32_t length = 0, destination = 0;
    bool isJump = false;
    EXPECT_EQ(subject.disassemble(24, length, isJump, destination), "0b100c00            JUMP\t0x2000");
    EXPECT_EQ(length, 4u);
    EXPECT_TRUE(isJump);
    EXPECT_EQ(destination, 0x2000u);
}

// Two calls; the inner function saves A[4] and A[6] and has a local of four bytes.
constexpr char Saving[] = ".TYPE int, INT(4)\n"                // 1
                          ".PUBLIC start\n.CODE\n"             // 2
                          "start: MOVE SP, #0x400\n"           // 4
                          " MOVE A[4], #0x44444444\n"          // 5
                          " MOVE A[6], #0x66666666\n"          // 6
                          " CALL inner\n"                      // 7
                          ".end: JUMP .end\n"                  // 8
                          ".FUNC inner, FRAME=4, SAVED=0x50\n" // 9
                          ".PARAM a, int, A[0]\n"              // 10
                          ".LOCAL here, int, SP - 12\n"        // 11
                          " PUSH A[4]\n.ADJUST -4\n"           // 12
                          " PUSH A[6]\n.ADJUST -8\n"           // 14
                          " PUSH #0x55\n.ADJUST -12\n"         // 16
                          " MOVE A[4], #1\n"                   // 18
                          " MOVE A[6], #2\n"                   // 19
                          " POP A[7]\n.ADJUST -8\n"            // 20
                          " POP A[6]\n.ADJUST -4\n"            // 22
                          " POP A[4]\n.ADJUST 0\n"             // 24
                          " RET\n.ENDFUNC\n";

TEST_F(Processor, CallersHaveTheRegistersThatWereSaved)
{
    program(Saving, false);
    subject.start("start", true);
    wait();
    unsigned a4 = MAXQ30Registers().nameToNumber("A[4]"), a6 = MAXQ30Registers().nameToNumber("A[6]");
    // Nothing pushed, one, both, both under the local, and on the way out again.
    for (int place : {12, 14, 16, 20, 22, 24}) {
        breakAt(place, 0, true);
        subject.go();
        ASSERT_EQ(wait(), place);
        ASSERT_EQ(subject.numcalls(), 2u) << place;
        EXPECT_EQ(line(1), 7) << place;
        EXPECT_EQ(subject.getFrame(1)->registers()->getValue(a4), 0x44444444u) << place;
        EXPECT_EQ(subject.getFrame(1)->registers()->getValue(a6), 0x66666666u) << place;
        EXPECT_EQ(subject.getFrame(1)->registers()->getSP(), 0x400u) << place;
    }
    TextBuilder locals;
    locals.radix = 16;
    breakAt(18, 0, true);
    subject.start("start", true);
    subject.go();
    ASSERT_EQ(wait(), 18);
    subject.getLocalVariables(subject.getFrame(0), &locals);
    EXPECT_NE(locals.text.find("here=0x00000055 "), std::string::npos) << locals.text;
}

TEST_F(Processor, AStackOfGarbageEnds)
{
    program(Loop);
    subject.start("main", true);
    wait();
    for (uint32_t sp : {0u, 0xFFFFFFFFu, 0xFFFEu, 0x7FFFFFFEu, 0x10u}) {
        target.file.setSP(sp);
        subject.locate();
        EXPECT_GE(subject.numcalls(), 1u);
    }
    // A stack full of addresses behind a call: the limit ends the search.
    int64_t twice = address("twice");
    QString file;
    for (uint32_t at = 0x800; at < 0x1000; at += 4)
        target.data.pokeUint32(at, uint32_t((subject.getLineAddress(file, Path(source), 9)) / 2));
    target.file.setSP(0x800);
    target.file.setPC(uint32_t(twice));
    subject.setMaximumCalls(20);
    subject.locate();
    EXPECT_LE(subject.numcalls(), 21u);
    EXPECT_GT(subject.numcalls(), 2u);
    // Reads of the stack are few.
    target.data.reads = 0;
    subject.setMaximumCalls(100);
    subject.locate();
    EXPECT_EQ(target.data.reads, 0) << "nobody has asked for callers";
    subject.numcalls();
    EXPECT_LT(target.data.reads, 20);
}

TEST_F(Processor, RegistersByNameNumberAndWord)
{
    program(Loop);
    TextBuilder registers;
    subject.start("main", true);
    wait();
    subject.getRegisters(subject.getFrame(0), &registers);
    EXPECT_EQ(registers.text.find("AP=0 APC="), 0u) << registers.text;
    EXPECT_NE(registers.text.find(" A[0]="), std::string::npos);
    EXPECT_EQ(registers.paths.size(), int(subject.numRegisterWords()));
    EXPECT_EQ(registers.paths.last(), "@DP[1]");

    std::vector<unsigned> words(subject.numRegisterWords());
    for (size_t i = 0; i < words.size(); ++i)
        words[i] = unsigned(100 + i);
    subject.locate(words.data());
    registers.clear();
    subject.getRegisters(subject.getFrame(0), &registers);
    EXPECT_EQ(registers.text.find("AP=100 APC=101 PSF=102 IC=103 "), 0u) << registers.text;
    EXPECT_NE(registers.text.find("A[0]=109 A[1]=110 "), std::string::npos) << registers.text;
    EXPECT_NE(registers.text.find("PFX=125 IP=126 SP=127 LC[0]=128 LC[1]=129 BP=130 "), std::string::npos);

    ExpressionContext context;
    subject.getLocateContext(context);
    auto valueOf = [&](const char* text) {
        return failureOf([&] {
            ExpressionType value;
            subject.evaluateExpression(context, text, value);
            value.evaluate();
            throw HException(value.toStr(10, false, false, nullptr));
        });
    };
    EXPECT_EQ(valueOf("@A[2]"), "111");
    EXPECT_EQ(valueOf("@LC[1]"), "129");
    EXPECT_EQ(valueOf("sizeof(@LC[0])"), "2");
    EXPECT_EQ(valueOf("@M8"), "100") << "the decimal behind an M is a number, that of AP";
    EXPECT_EQ(valueOf("@XYZ"), "no such register");
    EXPECT_EQ(valueOf("@A[99]"), "no such register");
    EXPECT_EQ(valueOf("@A[0] = 5"), "cannot change the register value in this context");
    subject.locate();
    subject.getLocateContext(context);
    EXPECT_EQ(valueOf("@A[0] = 5"), "5");
    EXPECT_EQ(target.file.getValue(9), 5u);
}
