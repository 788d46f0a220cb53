// The core as a whole: memories, errors, decoded forms, run and its ends, peripherals.
#include "bench/sim/CrcProgram.h"
#include "sim/Core.h"
#include "sim/Program.h"
#include "sim/limits.h"

#include <stdexcept>

namespace maxq30 {

namespace {

class SimulatedCore : public CoreTest {};

} // namespace

TEST_F(SimulatedCore, RunsAProgramToItsKnownResult)
{
    Words program(std::begin(crcProgram), std::end(crcProgram));
    put(program);
    for (uint32_t i = 0; i < 256; i += 4)
        setData(i, i | (i + 1) << 8 | (i + 2) << 16 | (i + 3) << 24);
    uint32_t crc = 0xFFFFFFFF;
    for (uint32_t i = 0; i < 255; ++i) {
        crc ^= i;
        for (int bit = 0; bit < 8; ++bit)
            crc = crc & 1 ? crc >> 1 ^ 0xEDB88320 : crc >> 1;
    }
    const uint32_t end[] = {18};
    core.setStops(end);
    EXPECT_LT(core.run(1'000'000), 20'000u);
    EXPECT_EQ(core.ip(), 18u);
    EXPECT_EQ(get(reg::A(0)), crc);
    EXPECT_EQ(events.take().size(), 255u);
}

TEST_F(SimulatedCore, ResetStateAndWhatItKeeps)
{
    setData(8, 0x12345678);
    execute(imm(reg::A(1), 5) + imm(reg::AP, 1));
    set(reg::APC, 3);
    setCarry(true);
    core.reset();
    EXPECT_EQ(core.ip(), 0u);
    EXPECT_EQ(get(reg::SP), 0x1000u);
    EXPECT_EQ(get(reg::A(1)), 0u);
    EXPECT_EQ(get(reg::PSF), FlagZ);
    EXPECT_EQ(data(8), 0x12345678u);
    execute(imm(dest::acc, 1));
    EXPECT_EQ(get(reg::AP), 0u);
    for (uint32_t bad : {0u, 60u, 66u, 0x1000004u})
        EXPECT_THROW(Core(bad, 0x1000), std::invalid_argument);
}

TEST_F(SimulatedCore, AccessesOutsideAndUnaligned)
{
    auto through = [&](uint32_t address, const Words& words) {
        set(reg::DP0, address);
        execute(words);
        return events.take();
    };
    Words readByte = move(reg::A(1), pointer(0)), readWord = move(reg::A(1), pointer(8)),
          readLong = move(reg::A(1), pointer(9)), writeByte = imm(pointer(0), 0x55),
          writeWord = imm(pointer(8), 0x5566), writeLong = imm(pointer(9), 0x55667788);
    EXPECT_EQ(through(0x1000, readByte), Log{"bad read 1000"});
    EXPECT_EQ(get(reg::A(1)), 0u);
    EXPECT_EQ(through(0xFFE, readLong), Log{"bad read ffe"});
    EXPECT_EQ(through(0xFFFFFFFE, writeLong), Log{"bad write fffffffe"});
    EXPECT_EQ(through(0xFFE, writeWord), Log{"write.W ffe=5566"});
    EXPECT_EQ(through(0xFFE, readWord), Log{"read.W ffe=5566"});
    EXPECT_EQ(through(0xFFF, readByte), Log{"read.B fff=55"});
    EXPECT_EQ(through(0x101, writeWord), (Log{"odd write 101", "write.W 100=5566"}));
    EXPECT_EQ(through(0x101, readLong), (Log{"odd read 101", "read.W 102=0", "read.W 100=5566"}));
    EXPECT_EQ(through(0x103, writeByte), Log{"write.B 103=55"});
    EXPECT_EQ(through(0xFFF, readWord), (Log{"odd read fff", "read.W ffe=5566"}));

    // The code memory, from its window on, can be read and not written.
    unsigned char text[] = {'a', 'b', 'c', 'd'};
    ASSERT_TRUE(core.writeCode(0x3FFC, 4, text));
    EXPECT_EQ(through(0x1003FFC, readLong), (Log{"read.W 1003ffe=6463", "read.W 1003ffc=6261"}));
    EXPECT_EQ(get(reg::A(1)), 0x64636261u);
    EXPECT_EQ(through(0x1003FFE, readLong), Log{"bad read 1003ffe"});
    EXPECT_EQ(through(0x1003FFC, writeByte), Log{"bad write 1003ffc"});
    EXPECT_EQ(data(0x1003FFC), 0x64636261u);
}

TEST_F(SimulatedCore, FetchOutsideStaysInPlace)
{
    put({0xDA3A}, 0x1FFF);
    set(reg::IP, 0x1FFF);
    core.step();
    EXPECT_EQ(core.ip(), 0x2000u);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(core.step(), 1u);
        EXPECT_EQ(core.ip(), 0x2000u);
        EXPECT_EQ(events.take(), Log{"fetch 4000"});
    }
    execute(imm(dest::jump(dest::Always), 0x123456));
    EXPECT_EQ(core.ip(), 0x123456u);
    EXPECT_EQ(core.run(3), 3u);
    EXPECT_EQ(events.take(), (Log{"fetch 2468ac", "fetch 2468ac", "fetch 2468ac"}));
    put({0x0B00}, 0x1FFF); // a prefix word with nothing behind it
    set(reg::IP, 0x1FFF);
    core.step();
    EXPECT_EQ(core.ip(), 0x1FFFu);
    EXPECT_EQ(events.take(), Log{"fetch 4000"});
}

TEST_F(SimulatedCore, WrittenWordsAreDecodedAgain)
{
    Words program = imm(reg::A(1), 0x11223344);
    put(program);
    core.step();
    EXPECT_EQ(get(reg::A(1)), 0x11223344u);
    for (uint32_t word = 0; word < 4; ++word) { // any word of the chain
        unsigned char byte = 0x99;
        ASSERT_TRUE(core.writeCode(word * 2, 1, &byte));
        core.reset();
        core.step();
        uint32_t expected = 0x11223344;
        for (uint32_t i = 0; i <= word; ++i)
            expected = (expected & ~(0xFFu << (24 - 8 * i))) | 0x99u << (24 - 8 * i);
        EXPECT_EQ(get(reg::A(1)), expected);
    }
    // The whole memory at once.
    std::vector<unsigned char> all(core.codeBytes());
    for (size_t i = 0; i < all.size(); i += 2)
        all[i] = 0x3A, all[i + 1] = 0xDA;
    ASSERT_TRUE(core.writeCode(0, uint32_t(all.size()), all.data()));
    core.reset();
    core.step();
    EXPECT_EQ(core.ip(), 1u);
    EXPECT_EQ(get(reg::A(1)), 0u);
}

TEST_F(SimulatedCore, HostRangesAreChecked)
{
    std::vector<unsigned char> buffer(0x5000, 0xEE);
    EXPECT_TRUE(core.readCode(0, 0x4000, buffer.data()));
    EXPECT_FALSE(core.readCode(1, 0x4000, buffer.data()));
    EXPECT_FALSE(core.writeCode(0x4000, 1, buffer.data()));
    EXPECT_TRUE(core.writeCode(0x4000, 0, buffer.data()));
    EXPECT_FALSE(core.writeCode(0xFFFFFFFF, 2, buffer.data()));
    EXPECT_TRUE(core.writeData(0, 0x1000, buffer.data()));
    EXPECT_FALSE(core.writeData(0xFFF, 2, buffer.data()));
    EXPECT_FALSE(core.readData(0xFFFFFFFF, 0xFFFFFFFF, buffer.data()));
    EXPECT_FALSE(core.writeData(limits::CodeWindow, 4, buffer.data()));
    EXPECT_EQ(core.readRegister(512), 0u);
}

TEST_F(SimulatedCore, RunStopsWhereItShould)
{
    put(Words(10, 0xDA3A) + imm(dest::jump(dest::Always), 0xF5));
    const uint32_t stops[] = {4, 7};
    core.setStops(stops);
    EXPECT_EQ(core.run(1000), 4u);
    EXPECT_EQ(core.ip(), 4u);
    EXPECT_EQ(core.run(1000), 3u); // not stopped again by the first instruction
    EXPECT_EQ(core.ip(), 7u);
    EXPECT_EQ(core.run(1000), 8u);
    EXPECT_EQ(core.ip(), 4u);
    EXPECT_EQ(core.run(0), 0u);
    core.setStops({});
    EXPECT_EQ(core.run(25), 25u);
    EXPECT_EQ(core.cycles(), 40u);
}

TEST_F(SimulatedCore, CallbacksStopAndDivertARun)
{
    struct Diverting : Recorder {
        void onDataAccess(bool, unsigned address, unsigned, unsigned) override
        {
            ipSeen = core->ip();
            if (address == 0x10)
                core->requestStop();
            if (address == 0x20)
                core->writeRegister(reg::IP, 0x200);
        }
        Core* core = nullptr;
        uint32_t ipSeen = 0;
    } diverting;
    diverting.core = &core;
    core.setCallBacks(&diverting);
    put({0xDA3A, uint16_t(0x8000 | reg::A(1) << 8 | 0x1F), 0xDA3A, uint16_t(0x8000 | reg::A(1) << 8 | 0x1F)});
    put({0xDA3A, 0xDA3A}, 0x200);
    set(reg::DP0, 0x10);
    EXPECT_EQ(core.run(1000), 2u);
    EXPECT_EQ(core.ip(), 2u);
    EXPECT_EQ(diverting.ipSeen, 1u); // in the callback, IP still is at the instruction
    set(reg::DP0, 0x20);
    EXPECT_EQ(core.run(3), 3u);
    EXPECT_EQ(core.ip(), 0x201u);
}

// What a callback changes under the running program holds from the next instruction on, and the counts stay
// right.
TEST_F(SimulatedCore, CallbacksRewriteTheRunningCode)
{
    struct Rewriting : Recorder {
        void onDataAccess(bool, unsigned, unsigned, unsigned) override
        {
            const unsigned char longer[] = {0x12, 0x0B, 0x34, 0x19}; // MOVE A[1], #0x1234, at words 0 and 1
            core->writeCode(0, sizeof longer, longer);
            executed = core->count(0).executed;
            const uint32_t stops[] = {4};
            core->setStops(stops);
        }
        Core* core = nullptr;
        uint64_t executed = 0;
    } rewriting;
    rewriting.core = &core;
    core.setCallBacks(&rewriting);
    put(move(reg::A(1), pointer(0)) + Words{0xDA3A, 0xDA3A} + imm(dest::jump(dest::Always), 0xFC) +
        Words{0xDA3A});
    EXPECT_EQ(core.run(6), 6u);
    EXPECT_EQ(get(reg::A(1)), 0x1234u);
    EXPECT_EQ(core.ip(), 3u);
    EXPECT_EQ(rewriting.executed, 0u); // the instruction at hand is not done yet
    const uint64_t executed[] = {2, 1, 2, 1, 0};
    for (uint32_t i = 0; i < 5; ++i)
        EXPECT_EQ(core.count(i).executed, executed[i]) << i;
    EXPECT_EQ(core.count(3).taken, 1u);
    core.writeRegister(reg::IP, 0x10);
    core.writeRegister(reg::IP, 4);
    core.step();
    EXPECT_EQ(core.count(3).executed, 1u);
    EXPECT_EQ(core.count(4).executed, 1u);
    core.resetCounts();
    EXPECT_EQ(core.count(4).executed, 0u);
}

// However long a run is, the instructions that hand over to each other take no room for that.
TEST_F(SimulatedCore, LongRunsNeedNoStack)
{
    put(imm(dest::jump(dest::Always), 0xFF) + Words(64, 0xDA3A));
    EXPECT_EQ(core.run(20'000'000), 20'000'000u);
    EXPECT_EQ(core.count(0).taken, 20'000'000u);
}

TEST_F(SimulatedCore, PeripheralWindow)
{
    put(imm(registerNumber(2, 1), 0x1234) + move(reg::A(1), registerNumber(2, 1)) +
        imm(dest::jump(dest::Always), 0xFF));
    core.run(2);
    EXPECT_EQ(get(reg::A(1)), 0x1234u); // plain storage
    EXPECT_EQ(events.take(), Log{});

    core.setCallBacks(&events, MAXQSIM_Peripherals);
    core.reset();
    events.loaded = 0x77;
    core.run(2);
    EXPECT_EQ(get(reg::A(1)), 0x77u);
    EXPECT_EQ(events.take(), (Log{"store 12=1234", "load 12=4"}));
    set(reg::IV, 0x300);
    set(reg::IMR, 2);
    set(reg::IC, InterruptEnable);
    put(imm(dest::jump(dest::Always), 0xFF), 0x300);
    events.requests = 2;
    core.run(limits::PeripheralPollInterval + 2);
    EXPECT_EQ(events.polls, 1u);
    EXPECT_EQ(core.ip(), 0x300u);
    EXPECT_EQ(get(reg::IIR), 2u);

    events.take();
    core.setCallBacks(&events);
    set(registerNumber(2, 1), 5);
    EXPECT_EQ(get(registerNumber(2, 1)), 5u);
    EXPECT_EQ(events.take(), Log{});
}

// Arbitrary words neither crash nor leave the memories, whatever they mean.
TEST_F(SimulatedCore, RandomProgramsStayInside)
{
    core.setCallBacks(nullptr);
    uint32_t state = 12345;
    std::vector<unsigned char> code(core.codeBytes());
    for (int program = 0; program < 20; ++program) {
        for (unsigned char& byte : code) {
            state = state * 1664525 + 1013904223;
            byte = uint8_t(state >> 24);
        }
        ASSERT_TRUE(core.writeCode(0, uint32_t(code.size()), code.data()));
        core.reset();
        EXPECT_EQ(core.run(20'000), 20'000u);
        for (unsigned number = 0; number < RegisterNumbers; ++number)
            get(number);
    }
}

} // namespace maxq30
