// What single instructions do to registers, flags and memory.
#include "sim/Program.h"
#include "sim/RegisterFile.h"

namespace maxq30 {

namespace {

class Instruction : public CoreTest {};

} // namespace

// Operations on the accumulator alone: word, accumulator and carry before and after.
TEST_F(Instruction, AccumulatorOperations)
{
    struct Case {
        const char* name;
        uint16_t word;
        uint32_t before;
        bool carryBefore;
        uint32_t after;
        bool carryAfter;
    };
    const Case cases[] = {
        {"CPL", 0x8A1A, 0x00FF00F0, true, 0xFF00FF0F, true},
        {"SLA", 0x8A2A, 0x80000001, false, 0x00000002, true},
        {"SLA2", 0x8A3A, 0xA0000001, true, 0x80000004, false},
        {"SLA2 last bit", 0x8A3A, 0x40000000, false, 0, true},
        {"SLA4", 0x8A6A, 0x1000000F, false, 0x000000F0, true},
        {"RL", 0x8A4A, 0x80000001, false, 0x00000003, false},
        {"RLC", 0x8A5A, 0x80000000, true, 0x00000001, true},
        {"RLC", 0x8A5A, 0x40000000, false, 0x80000000, false},
        {"XCHN", 0x8A7A, 0x12345678, false, 0x21436587, false},
        {"XCH", 0x8A8A, 0x12345678, false, 0x34127856, false},
        {"NEG", 0x8A9A, 1, true, 0xFFFFFFFF, true},
        {"SR", 0x8AAA, 0x80000001, false, 0x40000000, true},
        {"SRA", 0x8AFA, 0x80000001, false, 0xC0000000, true},
        {"SRA2", 0x8AEA, 0x80000002, false, 0xE0000000, true},
        {"SRA2 last bit", 0x8AEA, 0x80000001, true, 0xE0000000, false},
        {"SRA4", 0x8ABA, 0x80000008, false, 0xF8000000, true},
        {"RR", 0x8ACA, 0x00000001, false, 0x80000000, false},
        {"RRC", 0x8ADA, 0x00000001, true, 0x80000000, true},
        {"RRC", 0x8ADA, 0x00000002, false, 0x00000001, false},
        {"MB1", 0xCA0A, 0x12345678, false, 0x78, false},
        {"MB2", 0xCA1A, 0x12345678, false, 0x56, false},
        {"MB3", 0xCA2A, 0x12345678, false, 0x34, false},
        {"MB4", 0xCA3A, 0x12345678, false, 0x12, false},
        {"MW1", 0xCA4A, 0x12345678, false, 0x5678, false},
        {"MW2", 0xCA5A, 0x12345678, false, 0x1234, false},
        {"SEB", 0xCA6A, 0x12345680, false, 0xFFFFFF80, false},
        {"SEW", 0xCA7A, 0x1234F680, false, 0xFFFFF680, false},
        {"XCHW", 0xCA8A, 0x12345678, false, 0x56781234, false},
        {"XCHE", 0xCA9A, 0x12345678, false, 0x78563412, false},
        {"MOVE C,#0", 0xDA0A, 5, true, 5, false},
        {"MOVE C,#1", 0xDA1A, 5, false, 5, true},
        {"CPL C", 0xDA2A, 5, false, 5, true},
        {"NOP", 0xDA3A, 5, true, 5, true},
        {"OR C,ACC.15", 0xAAFA, 0x8000, false, 0x8000, true},
        {"XOR C,ACC.2", 0xBA2A, 4, true, 4, false},
        {"AND C,ACC.2", 0x9A2A, 3, true, 3, false},
        {"MOVE C,ACC.0", 0xEA0A, 1, false, 1, true},
        {"MOVE ACC.9,C", 0xFA9A, 1, true, 0x201, true},
        {"MOVE ACC.0,C", 0xFA0A, 1, false, 0, false},
    };
    set(reg::AP, 3);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        set(reg::A(3), c.before);
        setCarry(c.carryBefore);
        EXPECT_EQ(execute({c.word}), 1u);
        EXPECT_EQ(get(reg::A(3)), c.after);
        EXPECT_EQ(carry(), c.carryAfter);
    }
    EXPECT_EQ(events.take(), Log{});
}

// Operations of the accumulator and a source.
TEST_F(Instruction, ArithmeticAndLogic)
{
    struct Case {
        const char* name;
        unsigned destination;
        uint32_t acc;
        uint32_t source;
        bool carryBefore;
        uint32_t after;
        bool carryAfter;
    };
    const Case cases[] = {
        {"AND", dest::and_, 0xFF0F, 0x0FF0, true, 0x0F00, true},
        {"OR", dest::or_, 0xF000, 0x000F, false, 0xF00F, false},
        {"XOR", dest::xor_, 0xFF00, 0x0FF0, false, 0xF0F0, false},
        {"ADD", dest::add, 0xFFFFFFFF, 1, false, 0, true},
        {"ADD without carry in", dest::add, 1, 1, true, 2, false},
        {"ADDC", dest::addc, 0xFFFFFFFF, 0xFFFFFFFF, true, 0xFFFFFFFF, true},
        {"ADDC carry alone", dest::addc, 0xFFFFFFFF, 0, true, 0, true},
        {"SUB", dest::sub, 1, 2, false, 0xFFFFFFFF, true},
        {"SUB without borrow in", dest::sub, 2, 2, true, 0, false},
        {"SUBB", dest::subb, 5, 5, true, 0xFFFFFFFF, true},
        {"SUBB all ones", dest::subb, 0, 0xFFFFFFFF, true, 0, true},
        {"SUBB none", dest::subb, 5, 3, true, 1, false},
        {"BIC", dest::bic, 0xFFFF, 0x00F0, false, 0xFF0F, false},
        {"CLZ", dest::clz, 7, 0x00010000, false, 15, false},
        {"CLZ of 0", dest::clz, 7, 0, false, 32, false},
        {"MLB1", dest::mlb1, 0x11223344, 0x1FF, false, 0x112233FF, false},
        {"MLB4", dest::mlb1 + 0x30, 0x11223344, 0x1FF, false, 0xFF223344, false},
        {"MLW1", dest::mlw1, 0x11223344, 0xABCDEF01, false, 0x1122EF01, false},
        {"MLW2", dest::mlw1 + 0x10, 0x11223344, 0xABCDEF01, false, 0xEF013344, false},
        {"MOVE ACC", dest::acc, 1, 0xABCDEF01, true, 0xABCDEF01, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        for (bool immediate : {false, true}) {
            set(reg::A(0), c.acc);
            set(reg::A(5), c.source);
            setCarry(c.carryBefore);
            Words words = immediate ? imm(c.destination, c.source) : move(c.destination, reg::A(5));
            EXPECT_EQ(execute(words), words.size());
            EXPECT_EQ(get(reg::ACC), c.after);
            EXPECT_EQ(carry(), c.carryAfter);
        }
    }
}

TEST_F(Instruction, FlagsFollowTheActiveAccumulator)
{
    set(reg::A(1), 0x80000000);
    set(reg::A(2), 7);
    EXPECT_EQ(get(reg::PSF), FlagZ);
    execute(imm(reg::AP, 1));
    EXPECT_EQ(get(reg::PSF), FlagS);
    execute(imm(dest::cmp, 0));
    EXPECT_EQ(get(reg::PSF), FlagS);
    execute(imm(dest::cmp, 0x80000000));
    EXPECT_EQ(get(reg::PSF), FlagS | FlagE);
    EXPECT_EQ(get(reg::A(1)), 0x80000000u);
    // Z and S cannot be written; the bits without a meaning are storage.
    execute(imm(reg::PSF, 0xFFFF));
    EXPECT_EQ(get(reg::PSF), 0xFF7Fu);
    execute(move(reg::A(2), reg::PSF));
    EXPECT_EQ(get(reg::A(2)), 0xFF7Fu);
}

TEST_F(Instruction, ApcMovesTheAccumulatorOnlyAfterWholeWrites)
{
    execute(imm(reg::AP, 7));
    execute(imm(reg::APC, 2)); // modulo 4, upwards
    execute(imm(dest::acc, 1));
    EXPECT_EQ(get(reg::AP), 4u);
    EXPECT_EQ(get(reg::A(7)), 1u);
    execute({0x8A1A});
    EXPECT_EQ(get(reg::AP), 5u);
    for (const Words& still :
         {imm(dest::cmp, 0), Words{0xDA2A}, Words{0xFA0A}, Words{0x8A87}, move(reg::A(0), reg::ACC)}) {
        execute(still);
        EXPECT_EQ(get(reg::AP), 5u);
    }
    execute(imm(reg::APC, 0x41)); // modulo 2, downwards
    execute(imm(dest::add, 1));
    execute(imm(dest::add, 1));
    execute(imm(dest::add, 1));
    EXPECT_EQ(get(reg::AP), 4u);
    execute(imm(reg::APC, 0x80 | 4));
    EXPECT_EQ(get(reg::AP), 0u);
    EXPECT_EQ(get(reg::APC), 4u);
}

TEST_F(Instruction, RegistersKeepTheirWidths)
{
    struct Case {
        unsigned number;
        uint32_t kept;
    };
    const Case cases[] = {{reg::AP, 0xF},
                          {reg::IMR, 0xFFFF},
                          {reg::SC, 0xFFFF},
                          {reg::WDCN, 0xFF},
                          {reg::IPR1, 0xFFFF},
                          {reg::A(15), ~0u},
                          {reg::SP, ~0u},
                          {reg::IV, ~0u},
                          {reg::LC0, 0xFFFF},
                          {reg::LC1, 0xFFFF},
                          {reg::BP, ~0u},
                          {reg::OFFS, ~0u},
                          {reg::DP0, ~0u},
                          {reg::DP1, ~0u},
                          {reg::CKCN, 0xFFFF},
                          {reg::IIR, 0xFFFF},
                          {registerNumber(0, 3), ~0u},
                          {registerNumber(4, 31), ~0u}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.number);
        execute(imm(c.number, 0xFFFFFFFF));
        EXPECT_EQ(get(c.number), c.kept);
        execute(move(reg::A(1), c.number));
        EXPECT_EQ(get(reg::A(1)), c.kept);
    }
    EXPECT_EQ(events.take(), Log{});
    EXPECT_EQ(get(reg::DP1ForDebuggers), 0xFFFFFFFFu);
    set(reg::DP1ForDebuggers, 0x20);
    EXPECT_EQ(get(reg::DP1), 0x20u);
    EXPECT_EQ(get(reg::DP0), 0xFFFFFFFFu);
}

// Each pointer form, as a source and as a destination: width and step.
TEST_F(Instruction, PointerForms)
{
    struct Case {
        unsigned number;
        unsigned pointer;
        unsigned width;
        int step;
    };
    std::vector<Case> cases;
    const int dp[10][2] = {{1, 0}, {1, 1}, {1, -1}, {0, 0}, {2, 1}, {2, -1}, {4, 1}, {4, -1}, {2, 0}, {4, 0}};
    for (unsigned i = 0; i < 10; ++i)
        if (dp[i][0]) {
            cases.push_back({pointer(i), reg::DP0, unsigned(dp[i][0]), dp[i][0] * dp[i][1]});
            cases.push_back({pointer(i + 10), reg::DP1, unsigned(dp[i][0]), dp[i][0] * dp[i][1]});
        }
    const int bp[11][2] = {{0, 0}, {1, 1},  {1, -1}, {0, 0}, {2, 1}, {2, -1},
                           {4, 1}, {4, -1}, {1, 0},  {2, 0}, {4, 0}};
    for (unsigned i = 0; i < 11; ++i)
        if (bp[i][0])
            cases.push_back({frame(i), reg::OFFS, unsigned(bp[i][0]), bp[i][0] * bp[i][1]});

    set(reg::BP, 0x80);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.number);
        uint32_t base = c.pointer == reg::OFFS ? 0x80 : 0;
        uint32_t mask = c.width == 4 ? ~0u : (1u << 8 * c.width) - 1;
        setData(0x100, 0x89ABCDEF);
        set(c.pointer, 0x100 - base);
        unsigned cycles = execute(move(reg::A(1), c.number));
        EXPECT_EQ(cycles, 1u + (c.number >= 0x100) + (c.width == 4));
        EXPECT_EQ(get(reg::A(1)), 0x89ABCDEF & mask);
        EXPECT_EQ(get(c.pointer), 0x100 - base + uint32_t(c.step));

        set(c.pointer, 0x100 - base);
        execute(imm(c.number, 0x11223344));
        EXPECT_EQ(data(0x100), (0x89ABCDEF & ~mask) | (0x11223344 & mask));
        EXPECT_EQ(get(c.pointer), 0x100 - base + uint32_t(c.step));

        set(c.pointer, 0x100 - base);
        execute(move(c.number, registerNumber(7, 8 + 3))); // MOVE place.3, #1
        EXPECT_EQ(data(0x100, 1), 0x4Cu);
        EXPECT_EQ(get(c.pointer), 0x100 - base + uint32_t(c.step));
    }
}

TEST_F(Instruction, SourceMovesBeforeDestination)
{
    setData(0x10, 0x030201);
    set(reg::DP0, 0x10);
    execute(move(pointer(1), pointer(1))); // MOVE @DP[0].B++, @DP[0].B++
    EXPECT_EQ(data(0x10), 0x030101u);
    EXPECT_EQ(get(reg::DP0), 0x12u);
}

TEST_F(Instruction, FramePointerIsBasePlusOffset)
{
    set(reg::BP, 0xF0);
    execute(imm(reg::FP, 0x100));
    EXPECT_EQ(get(reg::OFFS), 0x10u);
    execute(imm(reg::BP, 0x200));
    execute(move(reg::A(4), reg::FP));
    EXPECT_EQ(get(reg::A(4)), 0x210u);
}

TEST_F(Instruction, BitsOfRegistersAndSources)
{
    execute(move(reg::IMR, registerNumber(7, 8 + 7)));
    EXPECT_EQ(get(reg::IMR), 0x80u);
    execute(move(reg::IMR, registerNumber(7, 7)));
    EXPECT_EQ(get(reg::IMR), 0u);
    execute(move(dest::acc, registerNumber(7, 8 + 2)));
    EXPECT_EQ(get(reg::ACC), 4u);
    execute(move(reg::A(9), registerNumber(7, 8)));
    EXPECT_EQ(get(reg::A(9)), 1u);
    execute(move(registerNumber(7, 2), reg::ACC)); // MOVE C, ACC.2
    EXPECT_TRUE(carry());
    execute(imm(registerNumber(7, 1), 0xFD)); // MOVE C, #0xFD.1
    EXPECT_FALSE(carry());
    EXPECT_EQ(events.take(), Log{});
}

TEST_F(Instruction, PrefixesAndInstructionPointerAsSources)
{
    execute({0x0B12, 0x0B34, uint16_t(0x8000 | reg::A(1) << 8 | reg::PFX)});
    EXPECT_EQ(get(reg::A(1)), 0x1234u);
    uint32_t behind = place + 1;
    execute(move(reg::A(1), reg::IP));
    EXPECT_EQ(get(reg::A(1)), behind);
    execute(imm(dest::nul, 0x1234));
    EXPECT_EQ(get(reg::PFX), 0u);
    EXPECT_EQ(events.take(), Log{});
}

// Numbers that mean nothing are reported with the address of the first word and passed over.
TEST_F(Instruction, UnknownInstructions)
{
    const Words unknown[] = {
        move(reg::A(0), registerNumber(5, 0)),
        move(reg::A(0), registerNumber(8, 2)),
        move(reg::A(0), registerNumber(15, 20)),
        move(reg::A(0), registerNumber(14, 12)),
        move(reg::A(0), registerNumber(10, 2)),
        move(registerNumber(6, 1), reg::A(0)),
        imm(registerNumber(8, 3), 0),
        imm(registerNumber(9, 16), 0),
        imm(registerNumber(13, 8), 0),
        imm(registerNumber(12, 8), 0),
        imm(registerNumber(10, 16), 0),
        imm(registerNumber(7, 8), 0),
        {0xCAAA}, // no such operation of the accumulator
        {0xDA4A},
        move(dest::add, registerNumber(7, 0)), // a bit of something that holds none
        move(dest::push, registerNumber(7, 0)),
        move(reg::A(0), registerNumber(7, 16)),
    };
    for (const Words& words : unknown) {
        SCOPED_TRACE(words.back());
        uint32_t at = place;
        EXPECT_EQ(execute(words), words.size());
        char expected[20];
        std::snprintf(expected, sizeof expected, "invalid %x", at * 2);
        EXPECT_EQ(events.take(), Log{expected});
        EXPECT_EQ(core.ip(), at + words.size());
        EXPECT_EQ(get(reg::SP), 0x1000u);
    }
    // Four prefix words: the first is passed over, the rest is an instruction.
    uint32_t at = place;
    execute({0x0B01, 0x0B02, 0x0B03, 0x0B04, uint16_t(reg::A(1) << 8 | 5)});
    EXPECT_EQ(core.ip(), at + 1);
    core.step();
    EXPECT_EQ(get(reg::A(1)), 0x02030405u);
    EXPECT_EQ(core.ip(), at + 5);
}

} // namespace maxq30
