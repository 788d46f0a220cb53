// The processor under run control: held in reset, running, or stopped in debug mode, with hardware
// breakpoints. Code addresses count words, data addresses bytes.
#pragma once

#include "board/limits.h"
#include "sim/Core.h"
#include "sim/maxqsim.h"

#include <array>
#include <cstdint>
#include <vector>

namespace board {

class Processor : private MAXQSIMExtendedCallBacks {
public:
    Processor(uint32_t codeBytes, uint32_t dataBytes);
    Processor(const Processor&) = delete;
    Processor& operator=(const Processor&) = delete;

    maxq30::Core& core() { return m_core; }

    // The reset line. With `toRun` false the processor stays out of reset without executing, while the
    // bootloader has the device.
    void holdReset();
    void release(bool toRun);
    // In reset: the processor stops as it leaves it.
    void stop();
    void resume();
    // Stopped only: one instruction, or the entry into an interrupt.
    void step();

    bool isStopped() const { return m_state == State::Stopped; }
    bool isRunning() const { return m_state == State::Running; }
    // Running, but nothing changes until the host does something: there is no use in calling run().
    bool isIdle() const { return m_idle; }

    void enableBreakpoints(bool enable);
    // Unused ones have all bits of the register set.
    void setCodeBreakpoint(unsigned index, uint32_t word);
    void setDataBreakpoint(unsigned index, uint32_t address);

    // Executes at most `maximum` steps while nothing stops it.
    void run(uint64_t maximum);

private:
    enum class State { Reset, Parked, Running, Stopped };

    void startRunning();
    void breakpointsChanged();
    bool isAtBreakpoint() const;
    void watch(unsigned address, unsigned width);
    void lookForIdleLoop();

    void onDataAccess(bool read, unsigned address, unsigned value, unsigned byteAccess) override;
    void onLongDataAccess(bool read, unsigned address, unsigned value) override;
    void onDataError(bool, unsigned) override {}
    void onDataAlignmentError(bool, unsigned) override {}
    void onCodeError(unsigned) override {}
    void onInvalidInstruction(unsigned) override {}
    void onMiscError(const char*, unsigned) override {}
    unsigned onPeripheralLoad(unsigned, unsigned) override { return 0; }
    void onPeripheralStore(unsigned, unsigned, unsigned) override {}
    unsigned onPollForInterrupts(unsigned requests) override { return requests; }

    maxq30::Core m_core;
    State m_state = State::Running;
    bool m_stopOnRelease = false;
    bool m_breakpointsEnabled = false;
    std::array<uint32_t, limits::CodeBreakpoints> m_code;
    std::array<uint32_t, limits::DataBreakpoints> m_data;
    std::vector<uint32_t> m_stops; // code breakpoints that are set and enabled
    bool m_watching = false;       // data breakpoints likewise
    bool m_watchHit = false;
    bool m_idle = false;
    uint64_t m_untilIdleLook = limits::FirstIdleLook;
    uint64_t m_idleInterval = limits::FirstIdleLook;
};

} // namespace board
