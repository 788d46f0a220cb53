// The test access port and the debug engine, from the pins.
#include "Probe.h"
#include "board/limits.h"
#include "sim/Program.h"
#include "sim/RegisterFile.h"

namespace board {

namespace {

using maxq30::operator+;
using maxq30::Words;
namespace dest = maxq30::dest;
namespace reg = maxq30::reg;

constexpr uint8_t Jump = 0x0C; // unconditional, relative to the next word
const Words loopForever = {0x0CFF};

class BoardDebug : public BoardTest {
protected:
    void SetUp() override
    {
        settings.codeBytes = 0x1000;
        settings.dataBytes = 0x1000;
        powerUp();
    }
    uint32_t readRegister(unsigned number)
    {
        return little(probe->ask({0x29, uint8_t(number), uint8_t(number >> 8), 0x20}, 4), 0, 4);
    }
    void writeRegister(unsigned number, uint32_t value)
    {
        probe->send({0x24, uint8_t(number), uint8_t(number >> 8), uint8_t(value), uint8_t(value >> 8),
                     uint8_t(value >> 16), uint8_t(value >> 24), 0x20});
    }
    Bytes readMemory(uint32_t word, unsigned words)
    {
        return probe->ask({0x22, uint8_t(word), uint8_t(word >> 8), uint8_t(word >> 16), 0, uint8_t(words),
                           uint8_t(words >> 8), 0x00},
                          2 * words);
    }
    void setCodeBreakpoint(unsigned index, uint32_t word)
    {
        probe->send({uint8_t(0x15 + index), uint8_t(word), uint8_t(word >> 8), uint8_t(word >> 16)});
    }
    void setDataBreakpoint(unsigned index, uint32_t address)
    {
        probe->send({uint8_t(0x19 + index), uint8_t(address), uint8_t(address >> 8), uint8_t(address >> 16),
                     uint8_t(address >> 24)});
    }
};

} // namespace

TEST_F(BoardDebug, BypassDelaysByOneBitAndScansAreFifteenPulses)
{
    for (unsigned instruction : {7u, 0u, 5u}) {
        probe->shiftIR(instruction);
        for (uint8_t byte : {0x5A, 0x42, 0x00, 0x7F}) {
            probe->pulses = 0;
            EXPECT_EQ(probe->shiftDR(byte) >> 1, byte);
            EXPECT_EQ(probe->pulses, 15u);
        }
    }
    // The system programming register is three bits long and shows what it holds.
    probe->systemProgramming(5);
    EXPECT_EQ(probe->shiftDR(0xFF) & 1, 1);
    EXPECT_EQ(probe->status, 1);
}

TEST_F(BoardDebug, StopByteInResetStopsBeforeTheFirstInstruction)
{
    put(maxq30::imm(reg::A(0), 1) + loopForever);
    probe->restart(0, {0x1F});
    device->run(100);
    EXPECT_TRUE(probe->isStopped());
    EXPECT_EQ(readRegister(reg::IP), 0u);
    EXPECT_EQ(readRegister(reg::A(0)), 0u);
    // Without it the program runs, and the stop byte stops it there also with the engine disabled.
    probe->restart(0);
    device->run(100);
    EXPECT_FALSE(probe->isStopped());
    probe->send({0x1F});
    EXPECT_TRUE(probe->isStopped());
    EXPECT_EQ(readRegister(reg::IP), 1u);
    EXPECT_EQ(readRegister(reg::A(0)), 1u);
    EXPECT_TRUE(journal.complaints().empty());
}

TEST_F(BoardDebug, StatusIsThatOfTheLatestPoll)
{
    put(loopForever);
    stopInReset();
    probe->shiftDR(0);
    EXPECT_EQ(probe->status, 0);
    probe->shiftDR(0x20);
    probe->shiftDR(0x27);
    EXPECT_EQ(probe->status, 1);
    probe->shiftDR(0);
    EXPECT_EQ(probe->status, 0);
}

TEST_F(BoardDebug, MemoryFramesOfBothSpaces)
{
    stopInReset();
    // The long form for data memory, the short one, without a last byte, for code memory.
    probe->send({0x25, 0x34, 0x01, 0x00, 0x00, 0xCD, 0xAB, 0x20});
    probe->send({0x25, 0x34, 0x01, 0x80, 0x00, 0x02, 0x00});
    probe->send({0x25, 0x35, 0x01, 0x80, 0x00, 0xFF, 0x0F});
    EXPECT_EQ(data(0x268, 2), (Bytes{0xCD, 0xAB}));
    EXPECT_EQ(readMemory(0x134, 2), (Bytes{0xCD, 0xAB, 0, 0}));
    EXPECT_EQ(readMemory(0x800134, 2), (Bytes{0x02, 0x00, 0xFF, 0x0F}));
    // Cells take ones here, unlike in the bootloader.
    probe->send({0x25, 0x34, 0x01, 0x80, 0x00, 0xFD, 0xFF});
    EXPECT_EQ(readMemory(0x800134, 1), (Bytes{0xFD, 0xFF}));
    // Across the ends of the memories, and far beyond.
    EXPECT_EQ(readMemory(0x7FF, 2), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(readMemory(0x8007FF, 2), (Bytes{0xFF, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(readMemory(0x7FFFFF, 2), (Bytes{0, 0, 0, 0}));
    EXPECT_TRUE(readMemory(0, 0).empty());
    probe->send({0x25, 0x00, 0x08, 0x00, 0x00, 0xCD, 0xAB, 0x20}); // outside: nothing happens
    EXPECT_TRUE(probe->isStopped());
    EXPECT_TRUE(journal.complaints().empty());
}

// Every slot of the map holds the register that the table gives for it, and nothing else.
TEST_F(BoardDebug, RegisterMap)
{
    struct Slot {
        unsigned offset, bytes, number;
    };
    std::vector<Slot> slots = {
        {0x280, 1, reg::AP},   {0x281, 1, reg::APC},  {0x282, 2, reg::PSF},  {0x284, 1, reg::IC},
        {0x286, 2, reg::SC},   {0x288, 2, reg::IPR0}, {0x28A, 2, reg::IPR1}, {0x28C, 2, reg::CKCN},
        {0x28E, 1, reg::WDCN}, {0x2D0, 4, reg::IP},   {0x2D4, 4, reg::SP},   {0x2D8, 2, reg::LC0},
        {0x2DA, 2, reg::LC1},  {0x2DC, 4, reg::BP},   {0x2E0, 4, reg::OFFS}, {0x2E4, 4, reg::DP0},
        {0x2E8, 4, reg::DP1},
    };
    for (unsigned n = 0; n < 16; ++n)
        slots.push_back({0x290 + 4 * n, 4, reg::A(n)});
    for (unsigned module = 0; module < 5; ++module)
        for (unsigned index = 0; index < 32; ++index)
            slots.push_back({(module * 32 + index) * 4, 4, maxq30::registerNumber(module, index)});
    stopInReset();
    for (size_t i = 0; i < slots.size(); ++i)
        device->core().writeRegister(slots[i].number, uint32_t(0x01020304 + 0x01010101 * i) & 0x7FFFFF3F);
    Bytes answer = probe->ask({0x21, 0x20}, 754);
    Bytes map(answer.begin() + 2, answer.end());
    Bytes wanted(752);
    for (const Slot& slot : slots) {
        uint32_t value = device->core().readRegister(slot.number);
        for (unsigned i = 0; i < slot.bytes; ++i)
            wanted[slot.offset + i] = uint8_t(value >> (8 * i));
    }
    EXPECT_EQ(map, wanted);
    EXPECT_NE(little(map, 0x2E8, 4), 0u);
    // The answer is over: the next scan begins a frame again.
    EXPECT_TRUE(probe->isStopped());
}

TEST_F(BoardDebug, RegistersAreWrittenAsTheyAreReadButForTheStackPointer)
{
    stopInReset();
    writeRegister(reg::A(7), 0x89ABCDEF);
    writeRegister(reg::IP, 0x123);
    writeRegister(reg::SP, 0x801);
    EXPECT_EQ(readRegister(reg::A(7)), 0x89ABCDEFu);
    EXPECT_EQ(readRegister(reg::IP), 0x123u);
    EXPECT_EQ(readRegister(reg::SP), 0x800u);
    EXPECT_EQ(readRegister(511), 0u);
    EXPECT_EQ(readRegister(0xFFFF), 0u);
}

TEST_F(BoardDebug, SingleStepsAndResume)
{
    put(maxq30::imm(reg::A(1), 0x11) + maxq30::imm(reg::A(2), 0x2233) + loopForever);
    stopInReset();
    probe->send({0x26});
    EXPECT_TRUE(probe->isStopped());
    EXPECT_EQ(readRegister(reg::IP), 1u);
    EXPECT_EQ(readRegister(reg::A(1)), 0x11u);
    EXPECT_EQ(readRegister(reg::A(2)), 0u);
    probe->send({0x26});
    EXPECT_EQ(readRegister(reg::IP), 3u);
    probe->send({0x27});
    EXPECT_FALSE(probe->isStopped());
    device->run(10);
    EXPECT_FALSE(probe->isStopped());
    EXPECT_TRUE(journal.complaints().empty());
}

TEST_F(BoardDebug, CodeBreakpointsStopBeforeTheirInstruction)
{
    // 0: A[0] := 1; 1: A[1] := 2; 2: A[2] := 3; 3: back to 0
    put(maxq30::imm(reg::A(0), 1) + maxq30::imm(reg::A(1), 2) + maxq30::imm(reg::A(2), 3) +
        Words{Jump << 8 | 0xFC});
    probe->restart(0, {0x11, 0x80, 0x15, 0, 0, 0}); // at the reset address
    EXPECT_TRUE(probe->isStopped());
    setCodeBreakpoint(0, 2);
    setCodeBreakpoint(3, 0);
    probe->send({0x27});
    for (unsigned slice = 0; slice < 4; ++slice)
        device->run(1); // slices that end just before a breakpoint do not lose it
    EXPECT_TRUE(probe->isStopped());
    EXPECT_EQ(readRegister(reg::IP), 2u);
    EXPECT_EQ(readRegister(reg::A(2)), 0u);
    probe->send({0x27});
    device->run(1000);
    EXPECT_TRUE(probe->isStopped());
    EXPECT_EQ(readRegister(reg::IP), 0u);
    EXPECT_EQ(readRegister(reg::A(2)), 3u);
    // The engine disabled, nothing stops the program; enabled again, the next one does.
    probe->send({0x11, 0x00, 0x27});
    device->run(1000);
    EXPECT_FALSE(probe->isStopped());
    probe->send({0x11, 0x80});
    device->run(1000);
    EXPECT_TRUE(probe->isStopped());
    // A reset forgets breakpoints, and disables the engine for new ones.
    for (const Bytes& whileInReset : {Bytes{0x11, 0x80}, Bytes{0x15, 2, 0, 0}}) {
        probe->restart(0, whileInReset);
        device->run(1000);
        EXPECT_FALSE(probe->isStopped());
    }
}

TEST_F(BoardDebug, DataBreakpointsStopBehindTheAccess)
{
    struct Case {
        unsigned place; // @DP[0] as .B, .W, .L
        uint32_t address;
        uint32_t watched;
        bool stops;
    };
    const Case cases[] = {
        {maxq30::pointer(0), 0x41, 0x41, true}, {maxq30::pointer(0), 0x41, 0x40, false},
        {maxq30::pointer(8), 0x40, 0x41, true}, {maxq30::pointer(8), 0x40, 0x42, false},
        {maxq30::pointer(9), 0x40, 0x43, true}, {maxq30::pointer(9), 0x44, 0x43, false},
    };
    for (bool write : {false, true})
        for (const Case& c : cases) {
            SCOPED_TRACE(testing::Message() << c.place << " " << c.address << " " << write);
            stopInReset();
            Words access = write ? maxq30::move(c.place, reg::A(1)) : maxq30::move(reg::A(1), c.place);
            put(access + loopForever);
            writeRegister(reg::DP0, c.address);
            setDataBreakpoint(0, 0xFFFFFFFF);
            setDataBreakpoint(1, c.watched);
            probe->send({0x27});
            device->run(100);
            EXPECT_EQ(probe->isStopped(), c.stops);
            if (c.stops) {
                EXPECT_EQ(readRegister(reg::IP), access.size());
            }
        }
}

TEST_F(BoardDebug, DebugRegistersShowWhatTheyHeldWhileANewValueComesIn)
{
    stopInReset();
    setCodeBreakpoint(1, 0x123456);
    setDataBreakpoint(0, 0x789ABCDE);
    EXPECT_EQ(probe->ask({0x16}, 3), (Bytes{0x56, 0x34, 0x12}));
    EXPECT_EQ(probe->ask({0x16}, 3), (Bytes{0, 0, 0}));
    EXPECT_EQ(probe->ask({0x19}, 4), (Bytes{0xDE, 0xBC, 0x9A, 0x78}));
    EXPECT_EQ(probe->ask({0x15}, 3), (Bytes{0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(probe->ask({0x11}, 1), (Bytes{0x80}));
}

TEST_F(BoardDebug, RefusesWhatNoHostShouldSend)
{
    put(loopForever);
    auto complaintsAfter = [&](const Bytes& bytes) {
        size_t before = journal.complaints().size();
        probe->send(bytes);
        return journal.complaints().size() - before;
    };
    stopInReset();
    EXPECT_EQ(complaintsAfter({0x33}), 1u);
    EXPECT_EQ(complaintsAfter({0x12}), 1u); // a debug register that is not there
    EXPECT_EQ(complaintsAfter({0x24, 0x09, 0x00, 1, 0, 0, 0, 0x21}), 1u);
    EXPECT_EQ(readRegister(reg::A(0)), 0u);
    EXPECT_EQ(complaintsAfter({0x21, 0x00}), 1u);
    EXPECT_TRUE(probe->isStopped()); // the frames around are understood
    probe->send({0x27});
    EXPECT_EQ(complaintsAfter({0x25, 0, 0, 0, 0, 1, 1, 0x20}), 1u);
    EXPECT_EQ(data(0, 2), (Bytes{0, 0}));
    EXPECT_EQ(complaintsAfter({0x26}), 1u);
    // A read gives zeros then, but as many as the host waits for.
    EXPECT_EQ(probe->ask({0x29, 0x0C, 0x00, 0x20}, 4), (Bytes{0, 0, 0, 0}));
    EXPECT_FALSE(probe->isStopped());
}

TEST_F(BoardDebug, TestResetForgetsAHalfFrameAndAHalfAnswer)
{
    put(loopForever);
    stopInReset();
    for (const Bytes& half : {Bytes{0x24, 0x09}, Bytes{0x21, 0x20, 0, 0}}) {
        probe->send(half);
        probe->testReset();
        probe->shiftIR(2);
        EXPECT_TRUE(probe->isStopped());
    }
    EXPECT_EQ(readRegister(reg::IP), 0u);
    EXPECT_TRUE(journal.complaints().empty());
}

// A program that only waits for the host costs nothing, also when it waits in several instructions with
// calls, and goes on when the host has done something.
TEST_F(BoardDebug, WaitingProgramIsIdleUntilTheHostActs)
{
    // 0: DP[0] := 0x40; 1: ACC := @DP[0].L; 2: call 8; 4: jump Z, 1; 5: A[5] += 1 for ever. 8: return
    put(maxq30::imm(reg::DP0, 0x40) + maxq30::move(reg::A(0), maxq30::pointer(9)) +
        maxq30::imm(dest::call, 8, 1) + maxq30::imm(dest::jump(dest::Z), 0xFC) + maxq30::imm(reg::AP, 5) +
        maxq30::imm(dest::add, 1) + Words{Jump << 8 | 0xFE});
    put(maxq30::move(dest::jump(dest::Always), maxq30::src::pop), 8);
    probe->restart(0);
    for (int slice = 0; slice < 10; ++slice)
        device->run(limits::SliceSteps);
    EXPECT_FALSE(device->isExecuting());
    EXPECT_FALSE(probe->isStopped()); // idle is no state that the host sees
    probe->send({0x1F, 0x20, 0x25, 0x20, 0, 0, 0, 1, 0, 0x20, 0x27});
    EXPECT_TRUE(device->isExecuting());
    for (int slice = 0; slice < 10; ++slice)
        device->run(limits::SliceSteps);
    EXPECT_TRUE(device->isExecuting()); // it counts
    probe->send({0x1F});
    EXPECT_FALSE(device->isExecuting());
    EXPECT_GT(readRegister(reg::A(5)), limits::SliceSteps);
    probe->reset(false);
    EXPECT_FALSE(device->isExecuting());
    // Equal registers are not enough: this one counts in memory. It is looked at in each of its places.
    put(maxq30::imm(reg::DP0, 0x40) + maxq30::move(reg::A(0), maxq30::pointer(9)) +
        maxq30::imm(dest::add, 1) + maxq30::move(maxq30::pointer(9), reg::A(0)) + maxq30::imm(reg::A(0), 0) +
        Words{Jump << 8 | 0xF9});
    for (unsigned place = 0; place < 6; ++place) {
        probe->restart(0);
        device->run(limits::FirstIdleLook + place);
        EXPECT_TRUE(device->isExecuting());
    }
}

} // namespace board
