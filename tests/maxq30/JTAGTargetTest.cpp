// The debug engine: connection, run control, breakpoints, memories and registers, frame by frame.
#include "debug/monitor/DebuggerBreakpointFailure.h"
#include "debug/monitor/HBreakpoint.h"
#include "maxq30/FakeDevice.h"
#include "maxq30/cpu/MAXQ30Registers.h"
#include "maxq30/jtag/DebugAccess.h"
#include "maxq30/jtag/MAXQ30JTAGMemoryInterface.h"
#include "maxq30/jtag/MAXQ30JTAGRegisters.h"
#include "maxq30/jtag/MAXQ30JTAGTargetInterface.h"
#include "support/Endian.h"
#include "support/Failure.h"
#include "support/HException.h"
#include "target/memory/TargetMemoryInterface.h"

#include <cstdio>

namespace {

constexpr char NoBreakpoints[] = "in15ffffff in16ffffff in17ffffff in18ffffff in19ffffffff in1affffffff ";

// A target whose CPU has stopped.
void stopAt(FakeJTAGTarget& target, uint32_t wordAddress)
{
    Endian::packUINT32(target.device.map.data(), 2 + 0x2D0, wordAddress, Endian::Little);
    target.device.otherwise = {1, 0};
    EXPECT_TRUE(target.isStopped());
    target.device.take();
}

} // namespace

TEST(JTAGTarget, ConnectChecksTheScanChain)
{
    FakeJTAGTarget target;
    target.connect(true);
    EXPECT_EQ(target.device.take(), "trst ir7 scan5a scan42 scan scan7f ");
    EXPECT_TRUE(target.isConnected());
    target.disconnect();
    EXPECT_EQ(target.device.take(), "close ");
    EXPECT_FALSE(target.isConnected());
    target.disconnect();
    EXPECT_EQ(target.device.take(), "");

    struct Deaf : FakeJTAGTarget {
        void connect(bool) override
        {
            openAlone();
            device.scans = {{0, 0xB4}, {0, 0x85}, {3, 0xFF}};
            MAXQ30JTAGTargetInterface::connect(true);
        }
    } deaf;
    EXPECT_EQ(
        failureOf([&] { deaf.connect(true); }),
        "The JTAG interface is not responding - Check the JTAG connections and that the target is powered");
    EXPECT_EQ(deaf.device.take(), "trst ir7 scan5a scan42 scan ");
    EXPECT_FALSE(deaf.isConnected());
}

TEST(JTAGTarget, EveryOperationOfAClosedTargetSaysSo)
{
    FakeJTAGTarget target;
    unsigned char byte = 0;
    HBreakpoint breakpoint;
    std::function<void()> operations[] = {
        [&] { target.reset(true, true); },
        [&] { target.go(); },
        [&] { target.start(false, 0); },
        [&] { target.stop(); },
        [&] { target.clear(); },
        [&] { target.isStopped(); },
        [&] { target.setBreakpoint(&breakpoint); },
        [&] { target.codeMemory()->peekBytes(0, 1, &byte); },
        [&] { target.dataMemory()->pokeBytes(0, 1, &byte); },
        [&] { target.registers()->getPC(); },
        [&] { target.loadBegin(); },
        [&] { target.executeEraseScript(); },
    };
    for (auto& operation : operations)
        EXPECT_EQ(failureOf(operation), "Target is not connected");
    EXPECT_EQ(target.debugAccessDepth(), 0);
    EXPECT_EQ(target.loadDepth(), 0);
    EXPECT_EQ(target.numBreakpoints(), 0);
}

TEST(JTAGTarget, RunControlFrames)
{
    FakeJTAGTarget target;
    FakeDevice& device = target.connected().device;
    auto frames = [&](const std::function<void()>& body) {
        body();
        return device.take();
    };
    EXPECT_EQ(frames([&] { target.reset(true, false); }), "nrst0 trst sp0 ir2 in1f nrst1 ");
    EXPECT_EQ(frames([&] { EXPECT_TRUE(target.isStopped()); }), "") << "a stopped target is not asked";
    device.scans = {{0, 0}, {2, 0}};
    EXPECT_EQ(frames([&] { target.reset(true, true); }), "nrst0 trst sp1 nrst1 scan scan ");
    EXPECT_EQ(frames([&] { target.reset(false, false); }), "nrst0 trst sp0 nrst1 ");
    EXPECT_EQ(frames([&] { target.start(true, 0x100); }), "nrst0 trst sp0 ir2 nrst1 ");
    const std::string begin = std::string("nrst0 trst sp0 ir2 in1180 ") + NoBreakpoints;
    EXPECT_EQ(frames([&] { target.startDebugging(true, 0, false); }), begin + "nrst1 ");
    EXPECT_EQ(frames([&] { target.startDebugging(false, 0x100, false); }), begin + "nrst1 ");
    // To stop, or to run from elsewhere, the CPU stops as it leaves reset.
    EXPECT_EQ(frames([&] { target.startDebugging(true, 0x100, true); }),
              begin + "in1f nrst1 in20 scan in240c008000000020 ");
    EXPECT_EQ(frames([&] { EXPECT_TRUE(target.isStopped()); }), "");
    EXPECT_EQ(frames([&] { target.startDebugging(true, 0, true); }),
              begin + "in1f nrst1 in20 scan in240c000000000020 ");
    EXPECT_EQ(frames([&] { target.startDebugging(true, 0x100, false); }),
              begin + "in1f nrst1 in20 scan in240c008000000020 in2120 out240 out240 out240 out34 in27 ");
    target.reset(false, false);
    device.take();
    EXPECT_EQ(frames([&] { target.attach(); }), std::string("trst sp0 ir2 in1180 ") + NoBreakpoints);
    EXPECT_EQ(frames([&] { target.stop(); }), "in1f ");
    EXPECT_EQ(frames([&] { target.step(); }), "in26 ");
    EXPECT_EQ(frames([&] { target.go(); }), std::string(NoBreakpoints) + "in27 ");
    device.otherwise = {0, 0};
    EXPECT_EQ(frames([&] { EXPECT_FALSE(target.isStopped()); }), "in20 scan ");
    EXPECT_EQ(frames([&] { target.clear(); }), "in1100 ");
    stopAt(target, 0x10);
    EXPECT_EQ(frames([&] { target.clear(); }), "in1100 in27 ");
    EXPECT_EQ(target.readDebugRegister8(target.DebugControl), 0x11);
    EXPECT_EQ(target.readDebugRegister24(target.CodeBreakpoint0), 0x332211u);
    EXPECT_EQ(target.readDebugRegister32(target.DataBreakpoint0), 0x44332211u);
    EXPECT_EQ(device.take(), "in11 out1 in15 out3 in19 out4 ");
}

TEST(JTAGTarget, BreakpointsFillTheirRegisters)
{
    FakeJTAGTarget target;
    FakeDevice& device = target.connected().device;
    HBreakpoint code[5], data[3];
    for (unsigned i = 0; i < 5; ++i)
        code[i].address = 0x1234 + 2 * i;
    for (unsigned i = 0; i < 3; ++i) {
        data[i].address = 0x2001 + i;
        data[i].trigger = 2;
    }
    // A running program gets them at once, a stopped one when it goes on.
    EXPECT_TRUE(target.setBreakpoint(&code[0]));
    EXPECT_EQ(device.take(), "in151a0900 in16ffffff in17ffffff in18ffffff in19ffffffff in1affffffff ");
    stopAt(target, 0);
    for (HBreakpoint* b : {&data[0], &code[1], &code[2], &data[1], &code[3], &code[3]})
        EXPECT_TRUE(target.setBreakpoint(b));
    EXPECT_EQ(device.take(), "");
    target.go();
    EXPECT_EQ(device.take(), "in151a0900 in1901200000 in161b0900 in171c0900 in1a02200000 in181d0900 in27 ");

    EXPECT_EQ(failureOf([&] { target.setBreakpoint(&code[4]); }), "No more code breakpoints available");
    EXPECT_THROW(target.setBreakpoint(&data[2]), DebuggerBreakpointFailure);
    EXPECT_EQ(target.numBreakpoints(), 6);
    EXPECT_EQ(device.take(), "");
    EXPECT_FALSE(target.removeBreakpoint(&code[1]));
    EXPECT_EQ(device.take(), "in151a0900 in1901200000 in161c0900 in1a02200000 in171d0900 in18ffffff ");

    // The later of two at the program counter is the one that matched.
    code[0].address = code[2].address = 0x400;
    stopAt(target, 0x200);
    EXPECT_EQ(target.matched(), &code[2]);
    target.removeBreakpoint(&code[2]);
    EXPECT_EQ(target.matched(), nullptr);

    // A fault while they are written leaves the new one out, for its owner drops it.
    target.step();
    device.failAfter = 3;
    EXPECT_EQ(failureOf([&] { target.setBreakpoint(&code[1]); }), "link lost");
    EXPECT_EQ(target.numBreakpoints(), 4);
}

TEST(JTAGTarget, WhatTheHardwareCannotDoIsRefused)
{
    FakeJTAGTarget target;
    target.connected();
    HBreakpoint plain;
    plain.trigger = HBreakpoint::Write;
    HBreakpoint outside = plain, range = plain, code, ofRegister = plain, linked = plain, ring = plain;
    outside.inverted = true;
    range.length = 5;
    code.length = 2;
    ofRegister.isRegister = true;
    linked.next = &range;
    ring.next = &ring;
    const std::pair<HBreakpoint*, const char*> cases[] = {
        {&outside, "The target cannot watch what lies outside of a range"},
        {&range, "The target cannot watch a range of 5 bytes"},
        {&code, "The target cannot watch a range of 2 bytes"},
        {&ofRegister, "The target cannot watch a register"},
        {&linked, "The target cannot watch a range of 5 bytes"},
        {&ring, "The target cannot test so many conditions"},
    };
    for (auto [breakpoint, text] : cases)
        EXPECT_EQ(failureOf([b = breakpoint, &target] { target.setBreakpoint(b); }), text);
    EXPECT_EQ(target.numBreakpoints(), 0);
    EXPECT_STREQ(target.getTrigger(target.getWriteTriggerNumber()), "Write");
    EXPECT_STREQ(target.getTrigger(HBreakpoint::ReadWrite), "Read/Write");
    EXPECT_EQ(target.numTriggers(), 4);

    // What is not enabled takes no register. It may find them taken when it is.
    HBreakpoint many[6];
    for (HBreakpoint& b : many) {
        b.enabled = false;
        EXPECT_TRUE(target.setBreakpoint(&b));
    }
    EXPECT_EQ(target.device.take().find("in1500"), std::string::npos);
    for (int i = 0; i < 5; ++i)
        many[i].enabled = true;
    EXPECT_EQ(failureOf([&] { target.setBreakpoint(&many[4]); }), "No more code breakpoints available");
    EXPECT_EQ(target.numBreakpoints(), 6);
    EXPECT_EQ(failureOf([&] { target.go(); }), "No more code breakpoints available");
}

// Stops that are no code breakpoint's: which record they belong to, and whether its condition holds.
TEST(JTAGTarget, DataStopsAreLookedAtInMemory)
{
    FakeJTAGTarget target;
    FakeDevice& device = target.connected().device;
    target.setDebugSession(true);
    auto watch = [](uint32_t address) {
        HBreakpoint b;
        b.address = address;
        b.length = 2;
        b.trigger = HBreakpoint::Write;
        return b;
    };
    auto stops = [&] {
        device.otherwise = {1, 0};
        return target.isStopped();
    };
    device.words[0x80] = 7;
    HBreakpoint one = watch(0x100), two = watch(0x104);
    target.setBreakpoint(&one);
    EXPECT_TRUE(stops());
    EXPECT_EQ(target.matched(), &one) << "the only one, whatever it holds";
    target.removeBreakpoint(&one);
    EXPECT_EQ(target.matched(), nullptr);

    // With a condition the program goes on while it fails, by the run frame alone.
    one.hasValue = true;
    one.mask = 0x0F;
    one.value = 3;
    target.setBreakpoint(&one);
    target.go();
    device.take();
    EXPECT_FALSE(stops());
    EXPECT_EQ(device.take(), "in20 scan in290c0020 out4 in2280000000010000 out2 in27 ") << "without the map";
    device.words[0x80] = 0x53;
    EXPECT_TRUE(stops());
    EXPECT_EQ(target.matched(), &one);
    // A hit to ignore is one at which the condition holds.
    one.count = 1;
    target.go();
    device.words[0x80] = 0;
    EXPECT_FALSE(stops());
    EXPECT_EQ(one.count, 1);
    device.words[0x80] = 3;
    EXPECT_FALSE(stops());
    EXPECT_EQ(one.count, 0);
    EXPECT_TRUE(stops());
    // A record of the link counts as well.
    one.next = &two;
    two.hasValue = true;
    two.mask = 0xFFFF;
    two.comparison = HBreakpoint::Less;
    two.value = 5;
    target.go();
    device.words[0x82] = 5;
    EXPECT_FALSE(stops());
    device.words[0x82] = 4;
    EXPECT_TRUE(stops());

    // Of two without conditions the one that has changed.
    one.hasValue = two.hasValue = false;
    one.next = nullptr;
    target.setBreakpoint(&two);
    target.go();
    device.words[0x80] = 8;
    EXPECT_TRUE(stops());
    EXPECT_EQ(target.matched(), &one);
    target.go();
    device.words[0x82] = 8;
    EXPECT_TRUE(stops());
    EXPECT_EQ(target.matched(), &two);
    // A stop that was asked for, and a step, are nobody's.
    target.go();
    target.stop();
    EXPECT_TRUE(stops());
    EXPECT_EQ(target.matched(), nullptr);
    target.step();
    EXPECT_TRUE(stops());
    EXPECT_EQ(target.matched(), nullptr);
    // A record that is not enabled matches nothing, neither data nor code.
    one.enabled = two.enabled = false;
    target.go();
    EXPECT_TRUE(stops());
    EXPECT_EQ(target.matched(), nullptr);
}

TEST(JTAGTarget, AStoppedTargetIsReadOnce)
{
    FakeJTAGTarget target;
    FakeDevice& device = target.connected().device;
    for (unsigned i = 0; i < 0x400; ++i)
        device.words[i] = uint16_t(i);
    target.setDebugSession(true);
    stopAt(target, 0x10);
    TargetMemoryInterface& memory = *target.dataMemory();
    EXPECT_EQ(memory.peekUint32(0x100), 0x00810080u);
    EXPECT_EQ(device.take(), "in2280000000020000 out4 ");
    EXPECT_EQ(memory.peekUint32(0x100), 0x00810080u);
    EXPECT_EQ(memory.peekUint16(0x102), 0x81u);
    EXPECT_EQ(memory.peekByte(0x101), 0u);
    EXPECT_EQ(device.take(), "");
    EXPECT_EQ(target.codeMemory()->peekByte(0x100), 0u);
    EXPECT_EQ(device.take(), "in2280008000010000 out2 ") << "another memory";
    // What is written is read anew, and what the program may have changed, too.
    memory.pokeUint16(0x102, 0x1234);
    device.take();
    EXPECT_EQ(memory.peekUint32(0x100), 0x12340080u);
    EXPECT_NE(device.take(), "");
    device.otherwise = {1, 0};
    target.step();
    device.words[0x80] = 0x4321;
    EXPECT_TRUE(target.isStopped());
    device.take();
    EXPECT_EQ(memory.peekUint16(0x100), 0x4321u);
    EXPECT_NE(device.take(), "");

    // A walk in short reads takes fewer frames than steps.
    for (unsigned address = 0x200; address < 0x400; address += 2)
        EXPECT_EQ(memory.peekUint16(address), address / 2);
    std::string frames = device.take();
    EXPECT_LT(std::count(frames.begin(), frames.end(), ' '), 24) << frames;
    // Up to the last address, and not beyond.
    for (uint32_t address = 0xFFFFC0; address <= 0xFFFFFE; address += 2)
        memory.peekUint16(address);
    device.take();

    // Without a session everything is read.
    target.setDebugSession(false);
    memory.peekUint16(0x200);
    memory.peekUint16(0x200);
    EXPECT_EQ(device.take(), "in2200010000010000 out2 in2200010000010000 out2 ");
}

TEST(JTAGTarget, ALostLinkEndsEveryWait)
{
    FakeJTAGTarget target;
    FakeDevice& device = target.connected().device;
    target.setDebugSession(true);
    target.step();
    device.failAfter = 1;
    EXPECT_FALSE(target.isStopped());
    EXPECT_TRUE(target.hasBeenExternallyDisconnected());
    EXPECT_NE(target.helpers.messages.find("link lost"), std::string::npos);
    device.take();
    device.failAfter = -1;
    EXPECT_FALSE(target.isStopped());
    unsigned char byte;
    EXPECT_EQ(failureOf([&] { target.dataMemory()->peekBytes(0, 1, &byte); }),
              "Target connection has been lost");
    EXPECT_EQ(failureOf([&] { target.clear(); }), "Target connection has been lost");
    EXPECT_EQ(device.take(), "") << "nothing more is sent";
    target.disconnect();
    target.connected();
    EXPECT_FALSE(target.hasBeenExternallyDisconnected());
    device.otherwise = {1, 0};
    EXPECT_TRUE(target.isStopped());
}

TEST(JTAGTarget, DebugAccessStopsARunningProgramOnce)
{
    FakeJTAGTarget target;
    FakeDevice& device = target.connected().device;
    unsigned char bytes[4];
    {
        DebugAccess outer(target);
        target.dataMemory()->peekBytes(0x100, 4, bytes);
        EXPECT_EQ(device.take(), "in1f in20 scan in2280000000020000 out4 ");
        outer.end();
    }
    EXPECT_EQ(device.take(), "in27 ");

    // On a stopped target neither the stop nor the resume is sent.
    stopAt(target, 0);
    target.dataMemory()->peekBytes(0x100, 2, bytes);
    EXPECT_EQ(device.take(), "in2280000000010000 out2 ");

    target.step();
    device.take();
    device.otherwise = {0, 0};
    EXPECT_EQ(failureOf([&] { target.codeMemory()->peekBytes(0, 2, bytes); }), "Cannot stop CPU");
    EXPECT_EQ(device.take(), "in1f in20 scan ");
    EXPECT_EQ(target.debugAccessDepth(), 0);

    // A fault anywhere in an access leaves it closed; the resume is tried.
    device.otherwise = {1, 0};
    for (int operations = 0; operations < 9; ++operations) {
        device.failAfter = operations;
        EXPECT_EQ(failureOf([&] { target.dataMemory()->pokeBytes(0x101, 2, bytes); }), "link lost");
        EXPECT_EQ(target.debugAccessDepth(), 0);
    }
}

TEST(JTAGTarget, MemoryIsReadAndWrittenInWords)
{
    FakeJTAGTarget target;
    FakeDevice& device = target.connected().device;
    stopAt(target, 0);
    for (unsigned i = 0; i < 0x400; ++i) {
        device.words[i] = uint16_t((2 * i + 1) << 8 | (2 * i & 0xFF));
        device.words[0x800000 + i] = uint16_t(~device.words[i]);
    }
    auto peek = [&](TargetMemoryInterface* memory, uint32_t address, unsigned count) {
        std::vector<unsigned char> bytes(count);
        memory->peekBytes(address, count, bytes.data());
        unsigned char flip = memory == target.codeMemory() ? 0xFF : 0;
        for (unsigned i = 0; i < count; ++i)
            EXPECT_EQ(bytes[i], (unsigned char)((address + i) ^ flip)) << "at " << address + i;
        return device.take();
    };
    EXPECT_EQ(peek(target.dataMemory(), 0x11, 1), "in2208000000010000 out2 ");
    EXPECT_EQ(peek(target.codeMemory(), 0x11, 3), "in2208008000010000 out2 in2209008000010000 out2 ");
    EXPECT_EQ(peek(target.dataMemory(), 0x10, 3), "in2208000000010000 out2 in2209000000010000 out2 ");
    EXPECT_EQ(peek(target.codeMemory(), 0x100, 300),
              "in2280008000400000 out128 in22c0008000400000 out128 in2200018000160000 out44 ");
    EXPECT_EQ(peek(target.dataMemory(), 0, 0), "");

    const unsigned char bytes[] = {0xA0, 0xA1, 0xA2, 0xA3};
    target.dataMemory()->pokeBytes(0x20, 1, bytes);
    EXPECT_EQ(device.take(), "in2210000000010000 out2 in2510000000a02120 ");
    target.codeMemory()->pokeBytes(0x21, 4, bytes);
    EXPECT_EQ(device.take(), "in2210008000010000 out2 in2510008000dfa0 in2511008000a1a2 "
                             "in2212008000010000 out2 in2512008000a3da ");
    target.codeMemory()->pokeBytes(0x20, 0, bytes);
    EXPECT_EQ(device.take(), "");
}

TEST(JTAGTarget, RegistersComeInOneMapAStop)
{
    FakeJTAGTarget target;
    FakeDevice& device = target.connected().device;
    auto& registers = *dynamic_cast<MAXQ30Registers*>(target.registers());
    auto put = [&](unsigned offset, uint32_t value) {
        Endian::packUINT32(device.map.data(), 2 + offset, value, Endian::Little);
    };
    put(0x290, 0x12345678);             // A[0]
    put(0x2D4, 0x40);                   // SP
    put(0x280, 0xEEDDCCBB);             // AP, 1 byte, APC, 1 byte, PSF, 2 bytes
    put((3 * 32 + 31) * 4, 0xCAFE0001); // M3[31]
    put(0x2E8, 0x55AA55AA);             // the last slot
    device.registers[0x88] = 0x1234;    // SC, live
    put(0x286, 0xFFFFFFFF);             // and its copy in the map
    device.otherwise = {1, 0};
    put(0x2D0, 0x800);
    ASSERT_TRUE(target.isStopped());
    EXPECT_EQ(device.take(), "in20 scan in2120 out240 out240 out240 out34 ");
    EXPECT_EQ(registers.getPC(), 0x1000u);
    EXPECT_EQ(registers.getPC(), 0x1000u) << "doubled once";
    EXPECT_EQ(registers.getValue(9), 0x12345678u);
    EXPECT_EQ(registers.getValue(8), 0xBBu);
    EXPECT_EQ(registers.getValue(24), 0xCCu);
    EXPECT_EQ(registers.getValue(72), 0xEEDDu);
    EXPECT_EQ(registers.getValue(31 << 4 | 3), 0xCAFE0001u);
    EXPECT_EQ(registers.getValue(13 << 4 | 15), 0x55AA55AAu);
    EXPECT_EQ(device.take(), "");
    EXPECT_EQ(registers.getValue(0x88), 0x1234u);
    EXPECT_EQ(device.take(), "in29880020 out4 ");

    registers.setPC(0x2468);
    EXPECT_EQ(device.take(), "in240c003412000020 ");
    registers.setSP(0x50);
    EXPECT_EQ(device.take(), "in241d005100000020 ");
    EXPECT_EQ(registers.getPC(), 0x2468u);
    EXPECT_EQ(registers.getSP(), 0x40u) << "the map is asked for what was not read before";
    EXPECT_EQ(registers.getValue(127), 0u);
    registers.setValue(127, 7); // not in the map
    EXPECT_EQ(registers.getValue(127), 7u);
    EXPECT_EQ(registers.getValue(512), 0u);
    device.take();

    // The next stop fetches anew; a map that was cut off is not kept.
    target.step();
    put(0x2D0, 0x900);
    device.failAfter = 5;
    EXPECT_EQ(failureOf([&] { target.isStopped(); }), "link lost");
    device.failAfter = -1;
    // What the map frame left unread is gone with the link.
    target.disconnect();
    target.connected();
    ASSERT_TRUE(target.isStopped());
    EXPECT_EQ(registers.getPC(), 0x1200u);
}

TEST(JTAGTarget, TraceTellsWhatEachOperationMeans)
{
    FakeJTAGTarget target;
    testing::internal::CaptureStderr();
    target.setTraceEnabled(true);
    target.connect(true);
    stopAt(target, 0);
    unsigned char bytes[128];
    target.codeMemory()->peekBytes(0x1000, 128, bytes);
    HBreakpoint breakpoint;
    breakpoint.address = 0x1234;
    target.setBreakpoint(&breakpoint);
    target.go();
    target.loadBegin();
    const unsigned char data[] = {1, 2};
    target.codeMemory()->pokeBytes(0x100, 2, data);
    target.loadEnd();
    target.device.failAfter = 0;
    EXPECT_THROW(target.stop(), HException);
    target.device.failAfter = -1;
    target.disconnect();
    std::string trace = testing::internal::GetCapturedStderr();
    // Milliseconds come first, and differ.
    for (const char* part :
         {" trst  ", " TAP to Run-Test/Idle\n", " 07  select the bypass register\n", "5a b4  status 0\n",
          "22 00 08 80 00 40 00 00  read 128 bytes of code memory at 0x1000\n", "answer of 128 bytes\n",
          "15 1a 09 00  code breakpoint 0 at 0x1234\n", "27  return from debug mode\n",
          " 01  the bootloader starts at the next reset\n", "05  bootloader: get supported commands\n",
          "10 f0 00 00 01 00 01 02 ff", "bootloader: load 240 bytes at 0x0100\n",
          "bootloader: load 16 bytes at 0x01f0\n", "1f  failed: link lost\n"})
        EXPECT_NE(trace.find(part), std::string::npos) << part << "\n" << trace;
    EXPECT_EQ(target.device.take().find("close"), target.device.take().npos);

    testing::internal::CaptureStderr();
    target.setTraceEnabled(false);
    target.connect(true);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
