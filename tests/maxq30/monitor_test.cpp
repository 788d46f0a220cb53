// The run loop of a simulated target, on a processor that steps through a table of actions.
#include "maxq30/MAXQ30Registers.h"
#include "maxq30/SimulatedHMonitor.h"
#include "project/PropertyValue.h"
#include "support/HException.h"

#include <QCoreApplication>
#include <QTimer>

#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <random>

namespace {

// Two bytes an instruction, round and round in 0 to `end`; `at` says what an instruction does besides.
class FakeMonitor : public SimulatedHMonitor {
public:
    explicit FakeMonitor(bool alignment = false) : SimulatedHMonitor("Fake", alignment, true, nullptr)
    {
        SimulatedHMonitor::connect();
    }
    void connect(bool) override {}
    TargetMemoryInterface* codeMemory() override { return nullptr; }
    TargetMemoryInterface* dataMemory() override { return nullptr; }
    TargetRegisterInterface* registers() override { return &file; }
    void checkReset() override { file.setPC(0); }
    void checkIRQ() override {}
    unsigned singleStep() override
    {
        unsigned pc = file.getPC();
        file.setPC(pc + 2 < end ? pc + 2 : 0);
        ++steps;
        if (auto found = at.find(pc); found != at.end())
            found->second();
        return 3;
    }
    void access(unsigned address, unsigned length, unsigned value, bool read)
    {
        if (watchesData())
            matchDataBreakPoint(address, length, value, read);
    }
    using SimulatedHMonitor::setPendingError;

    MAXQ30Registers file;
    unsigned end = 0x1000;
    unsigned steps = 0;
    std::map<unsigned, std::function<void()>> at;
};

HBreakpoint code(uint32_t address, uint32_t length = 1)
{
    HBreakpoint b;
    b.address = address;
    b.length = length;
    return b;
}

HBreakpoint data(uint32_t address, uint32_t length, int trigger)
{
    HBreakpoint b = code(address, length);
    b.trigger = trigger;
    return b;
}

HBreakpoint valued(uint32_t address, uint32_t length, uint32_t value, int comparison = HBreakpoint::Equal)
{
    HBreakpoint b = data(address, length, SimulatedBreakpoints::Write);
    b.hasValue = true;
    b.value = value;
    b.mask = 0xFFFFFFFF;
    b.comparison = comparison;
    return b;
}

} // namespace

TEST(SimulatedHMonitor, StopsAtBreakpointsAndResumesPastThem)
{
    FakeMonitor monitor;
    HBreakpoint first = code(0x10), range = code(0x20, 4), disabled = code(0x18), far = code(0x10 + 0x2000);
    disabled.enabled = false;
    for (HBreakpoint* b : {&first, &range, &disabled, &far})
        EXPECT_TRUE(monitor.setBreakpoint(b));
    for (auto [pc, matched] : {std::pair{0x10u, &first}, {0x20u, &range}, {0x22u, &range}, {0x10u, &first}}) {
        monitor.go();
        EXPECT_TRUE(monitor.isStopped());
        EXPECT_EQ(monitor.file.getPC(), pc);
        EXPECT_EQ(monitor.matched(), matched);
        EXPECT_EQ(monitor.matchedAddress(), pc);
    }
    // The records may be edited while the target is stopped.
    disabled.enabled = true;
    range.address = 0x30;
    for (unsigned pc : {0x18u, 0x30u}) {
        monitor.go();
        EXPECT_EQ(monitor.file.getPC(), pc);
    }
    HBreakpoint inverted = code(0x20, 0x10);
    inverted.inverted = true;
    monitor.removeBreakpoint(&range);
    EXPECT_EQ(monitor.matched(), nullptr);
    monitor.setBreakpoint(&inverted);
    monitor.go();
    EXPECT_EQ(monitor.file.getPC(), 0x30u);
    monitor.go();
    EXPECT_EQ(monitor.file.getPC(), 0x32u);
    EXPECT_TRUE(monitor.removeBreakpoint(&range)); // is not there any more
    EXPECT_EQ(monitor.numBreakpoints(), 4);
    monitor.step();
    EXPECT_EQ(monitor.file.getPC(), 0x34u);
    EXPECT_TRUE(monitor.isStopped());
}

// The short way around the list must find exactly what the walk finds.
TEST(SimulatedHMonitor, ShortWayAgreesWithTheWalk)
{
    std::mt19937 random(7);
    for (int round = 0; round < 50; ++round) {
        SimulatedBreakpoints breakpoints;
        std::vector<HBreakpoint> records(1 + random() % 6);
        for (HBreakpoint& b : records) {
            const uint32_t lengths[] = {0, 1, 2, 3, 16, 64, 65, 0x9000};
            b = code(random() % 8 ? random() % 0x6000 : 0xFFFFFFF0 + random() % 16, lengths[random() % 8]);
            b.inverted = random() % 12 == 0;
            b.enabled = random() % 4;
            b.trigger = random() % 4 ? 0 : 1;
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

TEST(SimulatedHMonitor, TraceActionsAndTraceBuffer)
{
    FakeMonitor monitor;
    HBreakpoint note = data(0x100, 4, SimulatedBreakpoints::Write), end = code(0x40), odd = code(0x30);
    note.action = 1;
    odd.action = 7; // neither stops nor traces
    for (HBreakpoint* b : {&note, &end, &odd})
        monitor.setBreakpoint(b);
    monitor.at[8] = [&] { monitor.access(0x102, 2, 0xBEEF, false); };
    monitor.go();
    EXPECT_EQ(monitor.file.getPC(), 0x40u);
    unsigned address, value, cycles;
    monitor.iterateTrace();
    ASSERT_TRUE(monitor.getNextTrace(address, value, cycles));
    EXPECT_EQ(address, 0x102u);
    EXPECT_EQ(value, 0xBEEFu);
    EXPECT_EQ(cycles, 15u);
    EXPECT_FALSE(monitor.getNextTrace(address, value, cycles));

    monitor.setTraceEnabled(true);
    for (auto [size, kept] : {std::pair{3, 3u}, {0, 1u}}) {
        monitor.setTraceBufferSize(size);
        for (int i = 0; i < 8; ++i)
            monitor.step();
        monitor.iterateTrace();
        unsigned count = 0;
        while (monitor.getNextTrace(address, value, cycles))
            ++count;
        EXPECT_EQ(count, kept);
        EXPECT_EQ(address, monitor.file.getPC() - 2);
    }
    monitor.resetTrace();
    monitor.iterateTrace();
    EXPECT_FALSE(monitor.getNextTrace(address, value, cycles));
}

TEST(SimulatedHMonitor, DataBreakpointTests)
{
    struct Case {
        HBreakpoint b;
        unsigned address, length, value;
        bool read, matches;
    };
    HBreakpoint inverted = data(0x100, 4, 2), disabled = data(0x100, 4, 2), masked = valued(0x100, 2, 0xF3),
                ofRegister = data(0x100, 4, 2);
    inverted.inverted = true;
    disabled.enabled = false;
    masked.mask = 0x0F;
    ofRegister.isRegister = true;
    const Case cases[] = {
        {data(0x100, 4, 1), 0x103, 1, 0, true, true},
        {data(0x100, 4, 1), 0x104, 1, 0, true, false},
        {data(0x100, 4, 1), 0x0FF, 2, 0, true, false},
        {data(0x100, 4, 1), 0x100, 1, 0, false, false},
        {data(0x100, 4, 2), 0x100, 1, 0, false, true},
        {data(0x100, 4, 2), 0x100, 1, 0, true, false},
        {data(0x100, 4, 3), 0x100, 1, 0, true, true},
        {data(0x100, 4, 3), 0x100, 1, 0, false, true},
        {code(0x100), 0x100, 1, 0, true, false},
        {inverted, 0x104, 1, 0, false, true},
        {inverted, 0x100, 1, 0, false, false},
        {disabled, 0x100, 1, 0, false, false},
        {ofRegister, 0x100, 1, 0, false, false},
        {valued(0x100, 2, 5), 0x100, 2, 5, false, true},
        {valued(0x100, 2, 5), 0x100, 1, 5, false, false},
        {valued(0x100, 4, 5), 0x102, 4, 5, false, false},
        {valued(0x100, 1, 0x1205), 0x100, 1, 0x3405, false, true}, // the low 8 bits alone
        {valued(0x100, 2, 0x1205), 0x100, 2, 0x3405, false, false},
        {valued(0x100, 4, 0x80000000), 0x100, 4, 0x80000000, false, true},
        {masked, 0x100, 2, 0x43, false, true},
        {masked, 0x100, 2, 0x44, false, false},
        {valued(0, 4, 9, HBreakpoint::GreaterOrEqual), 0, 4, 0xFFFFFFFF, false, true}, // unsigned
        {valued(0, 2, 9, HBreakpoint::LessOrEqual), 0, 2, 10, false, false},
        {valued(0, 2, 9, HBreakpoint::NotEqual), 0, 2, 9, false, false},
        {valued(0, 2, 9, HBreakpoint::Less), 0, 2, 8, false, true},
        {valued(0, 2, 9, HBreakpoint::Greater), 0, 2, 9, false, false},
    };
    FakeMonitor monitor;
    for (size_t i = 0; i < std::size(cases); ++i) {
        Case c = cases[i];
        EXPECT_EQ(monitor.matchDataBreakPoint(&c.b, c.address, c.length, c.value, c.read), c.matches) << i;
        monitor.setBreakpoint(&c.b);
        monitor.matchDataBreakPoint(c.address, c.length, c.value, c.read);
        EXPECT_EQ(monitor.matched() == &c.b, c.matches) << i;
        monitor.removeBreakpoint(&c.b);
    }
    // All records of a `next` chain must match the same access.
    HBreakpoint tail = valued(0x100, 2, 10, HBreakpoint::LessOrEqual);
    HBreakpoint head = valued(0x100, 2, 5, HBreakpoint::GreaterOrEqual);
    head.next = &tail;
    monitor.setBreakpoint(&head);
    for (auto [value, matches] : {std::pair{4u, false}, {7u, true}, {11u, false}}) {
        monitor.resetMatched();
        monitor.matchDataBreakPoint(0x100, 2, value, false);
        EXPECT_EQ(monitor.matched() == &head, matches) << value;
    }
}

TEST(SimulatedHMonitor, ChainedBreakpointsAreArmedByTheEarlierOne)
{
    FakeMonitor monitor;
    HBreakpoint first = code(0x30), second = code(0x10);
    second.enabled = false;
    second.chainFrom = &first;
    monitor.setBreakpoint(&first);
    monitor.setBreakpoint(&second);
    monitor.go();
    EXPECT_EQ(monitor.matched(), &second);
    EXPECT_EQ(monitor.file.getPC(), 0x10u);
    EXPECT_GT(monitor.steps, 0x30u / 2); // past the first, and around
}

TEST(SimulatedHMonitor, RegisterBreakpointsSeeChangedValues)
{
    FakeMonitor monitor;
    HBreakpoint b = valued(MAXQ30Registers::LC0, 2, 3, HBreakpoint::Equal);
    b.isRegister = true;
    monitor.setBreakpoint(&b);
    unsigned counter = 10;
    monitor.at[4] = [&] { monitor.file.setValue(MAXQ30Registers::LC0, --counter); };
    monitor.go();
    EXPECT_EQ(monitor.matched(), &b);
    EXPECT_EQ(monitor.matchedData(), 3u);
    EXPECT_EQ(counter, 3u);
}

TEST(SimulatedHMonitor, OnlyEnabledErrorsStop)
{
    FakeMonitor monitor(true);
    HBreakpoint end = code(0x40);
    monitor.setBreakpoint(&end);
    unsigned address = 0;
    monitor.at[8] = [&] { monitor.setPendingError(SimulatedHMonitor::OutsideOnRead, 0x9999); };
    monitor.at[0x10] = [&] { monitor.setPendingError(SimulatedHMonitor::MiscError, 0x8888, "custom"); };
    EXPECT_EQ(monitor.lastError(address), nullptr);
    monitor.go(); // neither is enabled
    EXPECT_EQ(monitor.matched(), &end);
    EXPECT_STREQ(monitor.lastError(address), "custom");
    EXPECT_EQ(address, 0x8888u);

    monitor.setErrorEnabled("Address outside memory range on read", true);
    monitor.setErrorEnabled("no such text", true);
    EXPECT_TRUE(monitor.errorEnabled("Misc error"));
    EXPECT_FALSE(monitor.errorEnabled("Unsupported opcode"));
    monitor.go();
    EXPECT_TRUE(monitor.isStopped());
    EXPECT_EQ(monitor.matched(), nullptr);
    EXPECT_STREQ(monitor.lastError(address), "Address outside memory range on read");
    EXPECT_EQ(address, 0x9999u);
    monitor.go();
    EXPECT_STREQ(monitor.lastError(address), "custom");
    monitor.go();
    EXPECT_EQ(monitor.matched(), &end);
    EXPECT_EQ(monitor.lastError(address), nullptr);

    EXPECT_EQ(monitor.numErrors(), 8);
    EXPECT_EQ(FakeMonitor().numErrors(), 6);
    EXPECT_STREQ(monitor.getError(7), "Unaligned access on word write");
    EXPECT_STREQ(monitor.getError(8), "Invalid Error");
    EXPECT_STREQ(monitor.getError(-1), "Invalid Error");
    EXPECT_STREQ(monitor.getTrigger(3), "Read/Write");
    EXPECT_STREQ(monitor.getTrigger(4), "Execute");
    EXPECT_STREQ(monitor.getAction(2), "Stop");
}

TEST(SimulatedHMonitor, CountsExecutionsInARange)
{
    FakeMonitor monitor;
    monitor.end = 8;
    monitor.setExecutionCountRange(2, 4);
    for (int i = 0; i < 6; ++i)
        monitor.step();
    unsigned address, count, other;
    std::vector<std::pair<unsigned, unsigned>> counts;
    for (monitor.iterateExecutionCount(); monitor.getNextExecutionCount(address, count, other);)
        counts.push_back({address, count});
    EXPECT_EQ(counts, (std::vector<std::pair<unsigned, unsigned>>{{2, 2}, {4, 1}}));
    monitor.resetExecutionCount();
    EXPECT_FALSE(monitor.getNextExecutionCount(address, count, other));
    EXPECT_THROW(monitor.setExecutionCountRange(0, 0xFFFFFFFF), HException);
    monitor.step();
}

TEST(SimulatedHMonitor, EventsReachARunningTarget)
{
    int argc = 0;
    QCoreApplication app(argc, nullptr);
    FakeMonitor monitor;
    QTimer timer;
    int ticks = 0;
    HBreakpoint later = code(0x20);
    later.enabled = false;
    monitor.setBreakpoint(&later);
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (++ticks == 2)
            monitor.stop();
        else if (ticks > 2)
            later.enabled = true;
    });
    timer.start(0);
    monitor.go();
    EXPECT_TRUE(monitor.isStopped());
    EXPECT_EQ(ticks, 2);
    EXPECT_EQ(monitor.steps, 2 * 300u - 1); // the events come before the instruction of their round
    monitor.go();
    EXPECT_EQ(monitor.matched(), &later);

    // A failure inside the processor ends the run as stopped.
    later.enabled = false;
    timer.stop();
    monitor.at[0x30] = [] { throw HException("peripheral"); };
    EXPECT_THROW(monitor.go(), HException);
    EXPECT_TRUE(monitor.isStopped());
}

TEST(SimulatedHMonitor, StartResetClearAndDisconnect)
{
    FakeMonitor monitor;
    HBreakpoint b = code(0x100);
    monitor.setBreakpoint(&b);
    monitor.startDebugging(true, 0x80, true);
    EXPECT_TRUE(monitor.isStopped());
    EXPECT_EQ(monitor.file.getPC(), 0x80u);
    monitor.start(true, 0xF0);
    EXPECT_EQ(monitor.steps, 8u);
    EXPECT_EQ(monitor.cycleCount(), 24u);
    static_cast<SimulatedHMonitor&>(monitor).reset();
    EXPECT_EQ(monitor.cycleCount(), 0u);
    EXPECT_EQ(monitor.file.getPC(), 0u);
    PropertyValueList list(false);
    monitor.getProperties(list);
    ASSERT_GE(list.size(), 3);
    EXPECT_EQ(list[0]->propertyClass()->saveName(), "peripheralFile");
    EXPECT_EQ(list[2]->propertyClass()->saveName(), "traceBufferSize");
    EXPECT_EQ(monitor.traceBufferSize(), 256);
    monitor.setErrorEnabled("Misc error", true);
    monitor.disconnect();
    EXPECT_FALSE(monitor.isConnected());
    EXPECT_EQ(monitor.numBreakpoints(), 0);
    EXPECT_FALSE(monitor.errorEnabled("Misc error"));
}
