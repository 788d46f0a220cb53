// The simulated monitor on a processor of three lines: breakpoints, chains, data matches, errors, trace
// and execution counts.
#include "debug/monitor/HBreakpoint.h"
#include "debug/monitor/HMonitor.h"
#include "maxq30/sim/PeripheralSimulator.h"
#include "maxq30/sim/SimulatedBreakpoints.h"
#include "maxq30/sim/SimulatedHMonitor.h"
#include "project/PropertyValue.h"
#include "support/HException.h"
#include "support/TempDir.h"
#include "target/TargetRegisterInterface.h"
#include "target/memory/TargetMemoryInterface.h"

#include <QCoreApplication>
#include <QTimer>

#include <functional>
#include <map>
#include <random>

namespace {

QCoreApplication& application()
{
    static int argc = 1;
    static char name[] = "test";
    static char* argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    return app;
}

struct Registers : TargetRegisterInterface {
    unsigned numRegisters() override { return 4; }
    std::string numberToName(unsigned) override { return "R"; }
    unsigned nameToNumber(const char*) override { return 0; }
    unsigned sizeInBytes(unsigned) override { return 4; }
    uint32_t getValue(unsigned number) override { return values[number]; }
    void setValue(unsigned number, uint32_t value) override { values[number] = value; }
    unsigned pcIndex() override { return 3; }
    uint32_t getPC() override { return values[3]; }
    uint32_t getSP() override { return 0; }
    void setPC(uint32_t value) override { values[3] = value; }
    void setSP(uint32_t) override {}
    uint32_t values[4] = {};
};

// Each instruction is two bytes; what one does besides is looked up by its address. Execution turns
// back at 0x100.
struct Processor : SimulatedHMonitor {
    Processor() : SimulatedHMonitor("Three Lines", false, true, nullptr)
    {
        application();
        SimulatedHMonitor::connect();
    }
    void connect(bool) override { SimulatedHMonitor::connect(); }
    TargetMemoryInterface* codeMemory() override { return nullptr; }
    TargetMemoryInterface* dataMemory() override { return nullptr; }
    TargetRegisterInterface* registers() override { return &file; }
    void checkReset() override { file.values[3] = 0; }
    void checkIRQ() override {}
    unsigned singleStep() override
    {
        uint32_t pc = file.values[3];
        file.values[3] = pc + 2 == 0x100 ? 0 : pc + 2;
        if (++steps > 100000)
            stop();
        auto found = actions.find(pc);
        if (found != actions.end())
            found->second();
        return 3;
    }
    void access(uint32_t pc, uint32_t address, unsigned length, unsigned value, bool read)
    {
        actions[pc] = [=, this] { matchDataBreakPoint(address, length, value, read); };
    }
    void fail(uint32_t pc, Error error, uint32_t address, const char* text = nullptr)
    {
        actions[pc] = [=, this] { setPendingError(error, address, text); };
    }
    uint32_t runTo()
    {
        go();
        return file.values[3];
    }
    // In a debug session: until the program stands.
    uint32_t carryOn()
    {
        for (int passes = 0; passes < 1000 && !isStopped(); ++passes)
            QCoreApplication::processEvents();
        EXPECT_TRUE(isStopped());
        return file.values[3];
    }
    Registers file;
    std::map<uint32_t, std::function<void()>> actions;
    unsigned steps = 0;
};

HBreakpoint at(uint32_t address, int trigger = 0, uint32_t length = 1)
{
    HBreakpoint b;
    b.address = address;
    b.trigger = trigger;
    b.length = length;
    return b;
}

} // namespace

TEST(SimulatedMonitor, StopsAtCodeAndGoesOnFromThere)
{
    Processor p;
    HBreakpoint b = at(0x10);
    p.setBreakpoint(&b);
    EXPECT_EQ(p.runTo(), 0x10u);
    EXPECT_EQ(p.matched(), &b);
    EXPECT_EQ(p.matchedAddress(), 0x10u);
    unsigned steps = p.steps;
    EXPECT_EQ(p.runTo(), 0x10u); // once around: the match at the start was passed over
    EXPECT_EQ(p.steps, steps + 0x80);
    EXPECT_TRUE(p.removeBreakpoint(&b));
    EXPECT_EQ(p.matched(), nullptr);
    EXPECT_TRUE(p.removeBreakpoint(&b)); // unknown by now
    EXPECT_EQ(p.cycleCount(), p.steps * 3);
}

TEST(SimulatedMonitor, RangesInvertedDisabledAndLaterOnesWin)
{
    Processor p;
    HBreakpoint range = at(0x20, 0, 0x10), same = at(0x22), off = at(0x04);
    off.enabled = false;
    for (HBreakpoint* b : {&off, &range, &same})
        p.setBreakpoint(b);
    p.file.setPC(0x24);
    EXPECT_EQ(p.runTo(), 0x24u);
    p.file.setPC(0x22);
    p.resetMatched();
    EXPECT_EQ(p.runTo(), 0x22u);
    EXPECT_EQ(p.matched(), &same);
    // The debugger changes its records behind the monitor's back.
    range.inverted = true;
    same.enabled = false;
    EXPECT_EQ(p.runTo(), 0x30u);
    EXPECT_EQ(p.matched(), &range);
    range.enabled = false;
    off.enabled = true;
    EXPECT_EQ(p.runTo(), 0x04u);
}

TEST(SimulatedMonitor, LongRangesAndManyBreakpointsBehaveAlike)
{
    Processor p;
    HBreakpoint wide = at(0x80, 0, 0x1000);
    p.setBreakpoint(&wide);
    std::vector<HBreakpoint> far(100);
    for (unsigned i = 0; i < far.size(); ++i) {
        far[i] = at(0x10000 + i * 2);
        p.setBreakpoint(&far[i]);
    }
    EXPECT_EQ(p.numBreakpoints(), 101);
    EXPECT_EQ(p.runTo(), 0x80u);
}

// The short way around the list must find whatever the walk finds.
TEST(SimulatedMonitor, ShortWayAgreesWithTheWalk)
{
    std::mt19937 random(7);
    for (int round = 0; round < 50; ++round) {
        SimulatedBreakpoints breakpoints;
        std::vector<HBreakpoint> records(1 + random() % 6);
        for (HBreakpoint& b : records) {
            const uint32_t lengths[] = {0, 1, 2, 3, 16, 64, 65, 0x9000};
            uint32_t address = random() % 8 ? random() % 0x6000 : 0xFFFFFFF0 + random() % 16;
            b = at(address, random() % 4 ? 0 : 1, lengths[random() % 8]);
            b.inverted = random() % 12 == 0;
            b.enabled = random() % 4;
            breakpoints.add(&b);
        }
        for (uint32_t pc = 0; pc < 0x8000; pc += 2) {
            breakpoints.matchCode(pc);
            bool walk = breakpoints.matched();
            breakpoints.resetMatched();
            ASSERT_TRUE(!walk || breakpoints.mayMatchCode(pc)) << round << " " << pc;
        }
    }
}

TEST(SimulatedMonitor, TraceActionRecordsAndGoesOn)
{
    Processor p;
    HBreakpoint traced = at(0x10), stop = at(0x20);
    traced.action = 1;
    p.setBreakpoint(&traced);
    p.setBreakpoint(&stop);
    EXPECT_EQ(p.runTo(), 0x20u);
    unsigned address = 0, data = 0, cycles = 0;
    p.iterateTrace();
    ASSERT_TRUE(p.getNextTrace(address, data, cycles));
    EXPECT_EQ(address, 0x10u);
    EXPECT_EQ(cycles, 8 * 3u);
    EXPECT_FALSE(p.getNextTrace(address, data, cycles));

    // The instruction trace is bounded; a size of 0 still keeps one entry.
    p.setTraceEnabled(true);
    for (auto [size, kept] : {std::pair(4, 4), std::pair(0, 1)}) {
        p.setTraceBufferSize(size);
        p.resetTrace();
        for (int i = 0; i < 20; ++i)
            p.step();
        p.iterateTrace();
        int count = 0;
        while (p.getNextTrace(address, data, cycles))
            ++count;
        EXPECT_EQ(count, kept);
    }
}

TEST(SimulatedMonitor, ChainedBreakpointIsArmedByAnother)
{
    Processor p;
    EXPECT_TRUE(p.canChain());
    HBreakpoint first = at(0x20), second = at(0x10);
    second.enabled = false;
    second.chainFrom = &first;
    p.setBreakpoint(&first);
    p.setBreakpoint(&second);
    EXPECT_EQ(p.runTo(), 0x10u); // past 0x10, over 0x20 without a stop, around to 0x10
    EXPECT_TRUE(second.enabled);
    EXPECT_EQ(p.matched(), &second);
}

TEST(SimulatedMonitor, DataBreakpoints)
{
    struct Case {
        const char* name;
        HBreakpoint b;
        unsigned address, length, value;
        bool read;
        bool stops;
    };
    HBreakpoint range = at(0x500, 2, 0x10), inverted = range, read = at(0x500, 1, 4), both = at(0x500, 3, 4);
    inverted.inverted = true;
    HBreakpoint value = at(0x500, 2, 2);
    value.hasValue = true;
    value.mask = 0xFFFF;
    value.value = 0x1234;
    HBreakpoint lowByte = value, greater = value, less = value, different = value, masked = value;
    lowByte.length = 1;
    lowByte.value = 0xFF34;
    lowByte.mask = 0xFFFFFFFF;
    greater.comparison = 1;
    less.comparison = 2;
    different.comparison = 3;
    masked.mask = 0xF000;
    HBreakpoint below = value, above = value;
    below.comparison = HBreakpoint::Less;
    above.comparison = HBreakpoint::Greater;
    const Case cases[] = {
        {"inside", range, 0x50F, 1, 0, false, true},
        {"behind", range, 0x510, 1, 0, false, false},
        {"a read is no write", range, 0x500, 1, 0, true, false},
        {"outside of an inverted range", inverted, 0x510, 1, 0, false, true},
        {"inside of an inverted range", inverted, 0x500, 1, 0, false, false},
        {"read", read, 0x503, 1, 0, true, true},
        {"read/write reads", both, 0x500, 2, 0, true, true},
        {"read/write writes", both, 0x500, 2, 0, false, true},
        {"value", value, 0x500, 2, 0x1234, false, true},
        {"another value", value, 0x500, 2, 0x1235, false, false},
        {"value of another length", value, 0x500, 1, 0x1234, false, false},
        {"value next to it", value, 0x501, 2, 0x1234, false, false},
        {"only the low byte", lowByte, 0x500, 1, 0x34, false, true},
        {"greater or equal", greater, 0x500, 2, 0x8000, false, true},
        {"greater or equal, below", greater, 0x500, 2, 0x1233, false, false},
        {"less or equal", less, 0x500, 2, 0x1234, false, true},
        {"not equal", different, 0x500, 2, 0x1235, false, true},
        {"mask", masked, 0x500, 2, 0x1FFF, false, true},
        {"less", below, 0x500, 2, 0x1233, false, true},
        {"less, equal", below, 0x500, 2, 0x1234, false, false},
        {"greater", above, 0x500, 2, 0x1235, false, true},
        {"greater, equal", above, 0x500, 2, 0x1234, false, false},
        {"touches the first byte", range, 0x4FE, 4, 0, false, true},
        {"ends before", range, 0x4FC, 4, 0, false, false},
        {"touches an inverted range", inverted, 0x4FE, 4, 0, false, false},
        {"touches its last byte", inverted, 0x50F, 2, 0, false, false},
        {"low half of four bytes", value, 0x500, 4, 0xFFFF1234, false, true},
        {"high half of four bytes", value, 0x4FE, 4, 0x1234FFFF, false, true},
        {"across both halves", value, 0x4FF, 4, 0x00123400, false, false},
    };
    for (const Case& c : cases) {
        Processor p;
        HBreakpoint b = c.b, end = at(0x80);
        p.setBreakpoint(&b);
        p.setBreakpoint(&end);
        p.access(0x10, c.address, c.length, c.value, c.read);
        EXPECT_EQ(p.runTo(), c.stops ? 0x12u : 0x80u) << c.name;
        if (c.stops && c.length < 4) {
            EXPECT_EQ(p.matchedData(), c.value) << c.name;
        }
    }
}

// The table of places and the test without branches must find whatever the walk finds.
TEST(SimulatedMonitor, ShortWayAgreesWithTheWalkOfData)
{
    std::mt19937 random(11);
    for (int round = 0; round < 3000; ++round) {
        SimulatedBreakpoints breakpoints;
        HBreakpoint b = at(0x100 + random() % 12, 1 + int(random() % 3), 1 + random() % 4);
        b.hasValue = random() % 4;
        b.inverted = random() % 4 == 0;
        b.enabled = random() % 8;
        b.comparison = int(random() % 7);
        b.mask = random() % 2 ? 0xFFFFFFFF : random();
        b.value = random() % 4;
        breakpoints.add(&b);
        for (int access = 0; access < 20; ++access) {
            unsigned length = 1 << random() % 3;
            unsigned address = 0xF8 + random() % 24, value = random() % 2 ? random() % 4 : random();
            bool read = random() % 2;
            bool walk = SimulatedBreakpoints::matchesData(&b, address, length, value, read);
            if (length == 4 && b.hasValue)
                walk = walk || SimulatedBreakpoints::matchesData(&b, address, 2, value & 0xFFFF, read) ||
                       SimulatedBreakpoints::matchesData(&b, address + 2, 2, value >> 16, read);
            breakpoints.resetMatched();
            if (breakpoints.mayMatchData(address))
                breakpoints.matchData(address, length, value, read);
            ASSERT_EQ(breakpoints.matched() != nullptr, walk) << round << " " << access;
        }
    }
}

// A match counts when its link is met and it arms nothing; one that does not count leaves what was there.
TEST(SimulatedMonitor, WhatDoesNotCountLeavesAnEarlierMatch)
{
    SimulatedBreakpoints breakpoints;
    HBreakpoint first = at(0x500, 2, 4), linked = first, condition = at(0x600, 2, 4), arming = first,
                armed = first;
    linked.next = &condition;
    armed.chainFrom = &arming;
    armed.enabled = false;
    for (HBreakpoint* b : {&first, &linked, &arming, &armed})
        breakpoints.add(b);
    breakpoints.matchData(0x500, 4, 7, false);
    EXPECT_EQ(breakpoints.matched(), &first);
    EXPECT_TRUE(armed.enabled) << "armed by this access";
    breakpoints.matchData(0x500, 4, 7, false);
    EXPECT_EQ(breakpoints.matched(), &armed) << "matches from the next access on";
    // A link that leads back into itself is no condition that can be met, and no loop without an end.
    condition.address = 0x500;
    condition.next = &condition;
    breakpoints.remove(&armed);
    EXPECT_EQ(breakpoints.matched(), nullptr);
    breakpoints.matchData(0x500, 4, 7, false);
    EXPECT_EQ(breakpoints.matched(), &arming) << "arms nobody any more";
    // Two that arm each other: nothing but the arming happens.
    arming.chainFrom = &armed;
    breakpoints.add(&armed);
    breakpoints.resetMatched();
    breakpoints.remove(&first);
    for (int access = 0; access < 3; ++access)
        breakpoints.matchData(0x500, 4, 7, false);
    EXPECT_EQ(breakpoints.matched(), nullptr);
}

TEST(SimulatedMonitor, AllRecordsOfALinkMustMatch)
{
    for (bool matches : {true, false}) {
        Processor p;
        HBreakpoint b = at(0x500, 2, 4), also = at(0x500, 2, 2), end = at(0x80);
        also.hasValue = true;
        also.mask = 0xFFFF;
        also.value = matches ? 7 : 8;
        b.next = &also;
        p.setBreakpoint(&b);
        p.setBreakpoint(&end);
        p.access(0x10, 0x500, 2, 7, false);
        EXPECT_EQ(p.runTo(), matches ? 0x12u : 0x80u);
    }
}

TEST(SimulatedMonitor, RegisterBreakpointSeesChanges)
{
    Processor p;
    HBreakpoint b = at(1, 2, 4), end = at(0x80);
    b.isRegister = true;
    b.hasValue = true;
    b.mask = 0xFFFFFFFF;
    b.value = 5;
    p.setBreakpoint(&b);
    p.setBreakpoint(&end);
    p.actions[0x10] = [&] { p.file.values[1] = 4; };
    p.actions[0x20] = [&] { p.file.values[1] = 5; };
    EXPECT_EQ(p.runTo(), 0x22u);
}

TEST(SimulatedMonitor, OnlyEnabledErrorsStop)
{
    Processor p;
    unsigned address = 0;
    EXPECT_EQ(p.numErrors(), 6);
    EXPECT_STREQ(p.getError(3), "Address outsize memory range on instruction fetch");
    EXPECT_STREQ(p.getError(8), "Invalid Error");
    EXPECT_EQ(p.lastError(address), nullptr);
    HBreakpoint end = at(0x80);
    p.setBreakpoint(&end);
    p.fail(0x10, SimulatedHMonitor::OutsideOnWrite, 0x9999);
    EXPECT_EQ(p.runTo(), 0x80u);
    EXPECT_STREQ(p.lastError(address), "Address outside memory range on write");
    EXPECT_EQ(address, 0x9999u);

    p.setErrorEnabled("Address outside memory range on write", true);
    EXPECT_TRUE(p.errorEnabled("Address outside memory range on write"));
    EXPECT_EQ(p.runTo(), 0x12u);
    EXPECT_EQ(p.matched(), nullptr);
    EXPECT_STREQ(p.lastError(address), "Address outside memory range on write");
    // An unknown text enables the error that has a text of its own.
    p.setErrorEnabled("whatever", true);
    EXPECT_TRUE(p.errorEnabled("Misc error"));
    p.fail(0x30, SimulatedHMonitor::MiscError, 0x30, "own words");
    EXPECT_EQ(p.runTo(), 0x32u);
    EXPECT_STREQ(p.lastError(address), "own words");
    // One that does not stop is shown in place of the one that did in an earlier run.
    p.fail(0x40, SimulatedHMonitor::OutsideOnRead, 0x7777);
    EXPECT_EQ(p.runTo(), 0x80u);
    EXPECT_STREQ(p.lastError(address), "Address outside memory range on read");
    EXPECT_EQ(address, 0x7777u);
    p.actions.clear();
    p.removeBreakpoint(&end);
    HBreakpoint early = at(0x40);
    p.setBreakpoint(&early);
    EXPECT_EQ(p.runTo(), 0x40u);
    EXPECT_EQ(p.lastError(address), nullptr);
}

TEST(SimulatedMonitor, ExecutionCountsSkipWhatNeverRan)
{
    Processor p;
    p.setExecutionCountRange(0, 0x20);
    HBreakpoint b = at(0x06);
    p.setBreakpoint(&b);
    p.runTo();
    p.runTo();
    std::string counts;
    unsigned address = 0, count = 0, other = 9;
    p.iterateExecutionCount();
    while (p.getNextExecutionCount(address, count, other))
        counts += std::to_string(address) + ":" + std::to_string(count) + " ";
    EXPECT_EQ(counts, "0:2 2:2 4:2 6:1 8:1 10:1 12:1 14:1 16:1 18:1 20:1 22:1 24:1 26:1 28:1 30:1 ");
    EXPECT_EQ(other, 0u);
    EXPECT_THROW(p.setExecutionCountRange(0, 0xFFFFFFFF), HException);
}

TEST(SimulatedMonitor, EventsComeOnceIn300Rounds)
{
    Processor p;
    QTimer timer;
    int ticks = 0;
    HBreakpoint later = at(0x20);
    later.enabled = false;
    p.setBreakpoint(&later);
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (++ticks == 2)
            p.stop();
        else if (ticks > 2)
            later.enabled = true; // noticed in a run that goes on
    });
    timer.start(0);
    p.go();
    EXPECT_TRUE(p.isStopped());
    EXPECT_EQ(p.steps, 2 * 300u - 1); // the events come before the instruction of their round
    p.go();
    EXPECT_EQ(p.matched(), &later);

    // A failure inside the processor, as of a peripheral's script, leaves the target stopped.
    later.enabled = false;
    timer.stop();
    p.actions[0x30] = [] { throw HException("peripheral"); };
    EXPECT_THROW(p.go(), HException);
    EXPECT_TRUE(p.isStopped());
}

TEST(SimulatedMonitor, ClearAndDisconnectForgetEverything)
{
    Processor p;
    HBreakpoint b = at(0x10);
    p.setBreakpoint(&b);
    p.setErrorEnabled("Misc error", true);
    p.runTo();
    p.clear();
    EXPECT_EQ(p.numBreakpoints(), 0);
    EXPECT_EQ(p.matched(), nullptr);
    EXPECT_FALSE(p.errorEnabled("Misc error"));
    EXPECT_TRUE(p.isStopped());
    EXPECT_GT(p.cycleCount(), 0u);
    p.disconnect();
    EXPECT_EQ(p.cycleCount(), 0u);
    EXPECT_FALSE(p.isConnected());
}

TEST(SimulatedMonitor, ASessionRunsFromTheEventLoop)
{
    Processor p;
    p.setDebugSession(true);
    HBreakpoint b = at(0x10), first = at(0);
    p.setBreakpoint(&b);
    p.setBreakpoint(&first);
    p.startDebugging(true, 0, true);
    EXPECT_TRUE(p.isStopped());
    p.startDebugging(true, 0, false);
    EXPECT_EQ(p.steps, 0u) << "ran before anybody handled events";
    EXPECT_FALSE(p.isStopped());
    EXPECT_TRUE(p.runsOnEvents());
    EXPECT_EQ(p.carryOn(), 0u);
    EXPECT_EQ(p.matched(), &first) << "the start tests the first instruction";
    EXPECT_FALSE(p.runsOnEvents());
    // A resume does not test the instruction at the pc, whether it has matched there or not.
    p.go();
    EXPECT_EQ(p.carryOn(), 0x10u);
    p.resetMatched();
    first.enabled = false;
    p.go();
    EXPECT_EQ(p.carryOn(), 0x10u);
    EXPECT_EQ(p.steps, 8u + 0x80u);
    // A step executes one instruction and forgets what was before.
    p.step();
    EXPECT_EQ(p.file.getPC(), 0x12u);
    EXPECT_EQ(p.matched(), nullptr);

    // A program that does not stop goes on in slices until it is told to.
    p.removeBreakpoint(&b);
    p.steps = 0;
    p.actions[0x30] = [&p] { p.steps = 1; }; // or the processor would stop by itself
    p.go();
    for (int passes = 0; passes < 3; ++passes)
        QCoreApplication::processEvents();
    EXPECT_FALSE(p.isStopped());
    p.stop();
    EXPECT_TRUE(p.isStopped());
    uint32_t pc = p.file.getPC();
    QCoreApplication::processEvents();
    EXPECT_EQ(p.file.getPC(), pc);

    // What a slice fails with is told to whoever asks for the stop, once.
    p.actions[0x40] = [] { throw HException("peripheral"); };
    p.go();
    EXPECT_THROW(p.carryOn(), HException);
    EXPECT_TRUE(p.isStopped());
    p.actions.clear();
    p.go();
    p.setDebugSession(false);
    EXPECT_TRUE(p.isStopped()) << "nobody carries it on any more";
}

TEST(SimulatedMonitor, HitsAreIgnoredWithoutAStop)
{
    Processor p;
    p.setDebugSession(true);
    struct Watcher : StopWatcher {
        bool goesOn() override
        {
            EXPECT_TRUE(monitor->isStopped());
            EXPECT_NE(monitor->matched(), nullptr);
            places += std::to_string(monitor->file.getPC()) + " ";
            if (places.size() > 12)
                return false;
            if (places.size() > 3) // one that resumes by itself has decided, too
                monitor->go();
            return places.size() <= 3;
        }
        Processor* monitor = nullptr;
        std::string places;
    } watcher;
    watcher.monitor = &p;
    EXPECT_TRUE(p.watchStops(&watcher));
    HBreakpoint code = at(0x10), also = at(0x12), data = at(0x500, 2, 1);
    code.count = 2;
    p.setBreakpoint(&code);
    p.setBreakpoint(&data);
    p.access(0x10, 0x500, 1, 0, false);
    // Behind the ignored access stands a breakpoint that is not tested, since the program goes on there.
    p.setBreakpoint(&also);
    data.count = 1;
    p.go();
    EXPECT_EQ(p.carryOn(), 0x12u);
    EXPECT_EQ(code.count, 0);
    EXPECT_EQ(data.count, 0);
    EXPECT_EQ(watcher.places, "18 16 18 16 18 ");
    EXPECT_EQ(p.matched(), &data);
    p.watchStops(nullptr);
    p.go();
    EXPECT_EQ(p.carryOn(), 0x10u);
    EXPECT_EQ(watcher.places.size(), 15u);
}

TEST(PeripheralFile, EventsReachTheScript)
{
    TempDir dir;
    std::string file =
        dir.write("p.js", "var log = '';\n"
                          "function reset() { log = 'reset '; return 1; }\n"
                          "function connect(name) { log += name + ' '; return log.length; }\n"
                          "function loadPeripheral(a, s, f) { return a * 1000 + s * 10 + (f ? 1 : 0); }\n"
                          "function storePeripheral(a, s, v) { return v - 1; }\n"
                          "function pollForInterrupts(r) { if (r == 3) throwIt(); return r | 0x80000000; }\n"
                          "function throwIt() { var o = {}; o.x.y = 1; }\n");
    Processor p;
    PeripheralSimulator peripherals(QString::fromStdString(file), &p);
    EXPECT_EQ(peripherals.reset(), 1);
    EXPECT_EQ(peripherals.connect("u1"), 9);
    EXPECT_EQ(peripherals.loadPeripheral(0x10, 2, true), 16021);
    EXPECT_EQ(peripherals.loadPeripheral(0x10, 2, false), 16020);
    EXPECT_EQ(peripherals.storePeripheral(0, 4, 0xFFFFFFFF), -2);
    EXPECT_EQ(unsigned(peripherals.pollForInterrupts(2)), 0x80000002u);
    EXPECT_THROW(peripherals.pollForInterrupts(3), HException);
    EXPECT_EQ(peripherals.reset(), 1); // usable after a failure

    // No file, an empty script; a file without the function fails at the event.
    PeripheralSimulator none("/none.js", &p);
    EXPECT_THROW(none.reset(), HException);
    // The properties are found, but not shown, unless the target says so.
    PropertyValueList list(false);
    p.getProperties(list);
    ASSERT_EQ(list.size(), 4); // with the device type, since it is connected
    EXPECT_EQ(list[0]->propertyClass()->shortDescription(), QString("Peripheral File"));
    EXPECT_EQ(list[1]->toString(), QString("false"));
    p.setPeripheralFile(QString::fromStdString(file));
    p.connect(true); // not enabled: nothing runs
    p.SimulatedHMonitor::reset();
    p.setPeripheralFile("/none.js");
    p.setEnablePeripheralFile(true);
    p.connect(true);
    EXPECT_THROW(p.SimulatedHMonitor::reset(), HException);
}
