// Debugging on the virtual board through the driver of the USB adapter: the processor really runs, and stops
// by its own hardware.
#include "board/Device.h"
#include "board/Journal.h"
#include "board/UsbAdapter.h"
#include "debug/monitor/HBreakpoint.h"
#include "maxq30/cpu/MAXQ30Registers.h"
#include "maxq30/jtag/HDataLink.h"
#include "maxq30/jtag/MAXQ30JTAGTargetInterface.h"
#include "maxq30/jtag/maxqd_tether_usb.h"
#include "target/FakeTarget.h"
#include "target/memory/TargetMemoryInterface.h"

#include <deque>
#include <gtest/gtest.h>

namespace {

constexpr uint64_t StepsOfTransfer = 50; // that the processor does while a transfer is under way

// The cable to a board in this process.
class BoardLink : public HDataLink {
public:
    explicit BoardLink(board::Device& device) : m_device(device), m_adapter(device, m_journal) {}
    int write(const unsigned char* bytes, int count) override
    {
        ++transfers;
        m_device.run(StepsOfTransfer);
        std::vector<uint8_t> answer;
        for (int i = 0; i < count; ++i)
            m_adapter.receive(bytes[i], answer);
        m_pending.insert(m_pending.end(), answer.begin(), answer.end());
        return count;
    }
    int read(unsigned char* bytes, int count) override
    {
        int got = 0;
        while (got < count && !m_pending.empty()) {
            bytes[got++] = m_pending.front();
            m_pending.pop_front();
        }
        return got;
    }
    int transfers = 0;

private:
    board::Device& m_device;
    board::Journal m_journal;
    board::UsbAdapter m_adapter;
    std::deque<uint8_t> m_pending;
};

class BoardTarget : public MAXQ30JTAGTargetInterface {
public:
    explicit BoardTarget(board::Device& device)
        : MAXQ30JTAGTargetInterface("Board", &m_helpers), m_device(device)
    {
    }
    void connect(bool reset) override
    {
        MAXQD_initTetherUSBDriver(&m_driver);
        link = new BoardLink(m_device);
        m_driver.link = link; // which owns it
        const unsigned char start[] = {0xF8, 0xF8, 0xF9, 0xF9, 0xF9, 0xFA, 0x80};
        link->write(start, sizeof start);
        MAXQ30JTAGTargetInterface::connect(reset);
    }
    BoardLink* link = nullptr;

private:
    FakeHelpers m_helpers;
    board::Device& m_device;
};

// MOVE DP[0], #0x20; MOVE A[0], #0; loop: ADD #0x101; MOVE @DP[0].L, ACC; JUMP loop
constexpr unsigned char Counting[] = {0x20, 0x3F, 0x00, 0x09, 0x01, 0x0B, 0x01,
                                      0x4A, 0x00, 0x2B, 0x0A, 0x9F, 0xFB, 0x0C};
constexpr uint32_t Loop = 4, Store = 8, Jump = 12;
constexpr uint32_t Counter = 0x20;

class OnTheBoard : public ::testing::Test {
protected:
    OnTheBoard()
    {
        device.core().writeCode(0, sizeof Counting, Counting);
        target.connect(true);
        target.setDebugSession(true);
    }
    uint32_t runToStop()
    {
        for (int polls = 0; polls < 10000; ++polls)
            if (target.isStopped())
                return target.registers()->getPC();
        ADD_FAILURE() << "the program does not stop";
        return 0;
    }
    uint32_t counter() { return target.dataMemory()->peekUint32(Counter) / 0x101; }
    static HBreakpoint at(uint32_t address, int trigger = HBreakpoint::Execute, uint32_t length = 1)
    {
        HBreakpoint b;
        b.address = address;
        b.trigger = trigger;
        b.length = length;
        return b;
    }

    board::Journal journal;
    board::Device device{board::Settings(), journal};
    BoardTarget target{device};
};

} // namespace

TEST_F(OnTheBoard, CodeBreakpointsStepsAndTheStart)
{
    HBreakpoint jump = at(Jump), start = at(Store);
    target.setBreakpoint(&jump);
    target.startDebugging(true, 0, false);
    EXPECT_EQ(runToStop(), Jump);
    EXPECT_EQ(target.matched(), &jump);
    EXPECT_EQ(counter(), 1u);
    target.step();
    EXPECT_EQ(runToStop(), Loop);
    EXPECT_EQ(target.matched(), nullptr);
    target.go();
    EXPECT_EQ(runToStop(), Jump);
    EXPECT_EQ(counter(), 2u);
    // The start tests its first instruction, wherever it is; with `stop` nothing runs.
    target.setBreakpoint(&start);
    target.startDebugging(true, Store, false);
    EXPECT_EQ(runToStop(), Store);
    EXPECT_EQ(target.matched(), &start);
    target.startDebugging(true, Loop, true);
    EXPECT_EQ(runToStop(), Loop);
    EXPECT_EQ(target.matched(), nullptr);
    target.go();
    EXPECT_EQ(runToStop(), Store);
    target.removeBreakpoint(&start);
    target.removeBreakpoint(&jump);
    target.go();
    EXPECT_FALSE(target.isStopped());
    target.stop();
    runToStop();
    EXPECT_EQ(target.matched(), nullptr);
}

TEST_F(OnTheBoard, DataBreakpointsStopWhenTheirConditionHolds)
{
    HBreakpoint value = at(Counter, HBreakpoint::Write, 4), other = at(0x40, HBreakpoint::ReadWrite, 2);
    value.hasValue = true;
    value.mask = 0xFFFFFFFF;
    value.value = 0x101 * 5;
    value.comparison = HBreakpoint::GreaterOrEqual;
    target.setBreakpoint(&value);
    target.setBreakpoint(&other);
    target.startDebugging(true, 0, false);
    EXPECT_EQ(runToStop(), Jump) << "behind the store";
    EXPECT_EQ(target.matched(), &value);
    EXPECT_EQ(counter(), 5u);
    value.enabled = false;
    target.go();
    for (int polls = 0; polls < 10; ++polls)
        EXPECT_FALSE(target.isStopped());
}

// The debugger looks for requests of the program while it runs. A stop that happens meanwhile is not passed.
TEST_F(OnTheBoard, AnAccessDoesNotRunPastABreakpoint)
{
    HBreakpoint jump = at(Jump);
    target.startDebugging(true, 0, false);
    target.setBreakpoint(&jump);
    device.run(1000);
    target.dataMemory()->peekUint16(0x100);
    uint32_t counted = target.dataMemory()->peekUint32(Counter);
    device.run(1000);
    EXPECT_EQ(target.dataMemory()->peekUint32(Counter), counted) << "the program stays";
    EXPECT_EQ(runToStop(), Jump);
    EXPECT_EQ(target.matched(), &jump);
    target.removeBreakpoint(&jump);

    HBreakpoint watch = at(Counter, HBreakpoint::Write, 4);
    target.setBreakpoint(&watch);
    target.go();
    device.run(1000);
    target.dataMemory()->peekUint16(0x100);
    device.run(1000);
    EXPECT_EQ(runToStop(), Jump);
    EXPECT_EQ(target.matched(), &watch);
    EXPECT_EQ(target.dataMemory()->peekUint32(Counter), counted + 0x101);
}
