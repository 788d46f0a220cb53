// A MAXQ30 device as its pins show it: TMS, TDI, TCK, TDO and the reset line. Behind them are the test
// access port, the debug engine, the bootloader, the memories and the processor, which executes in run()
// and nowhere else.
#pragma once

#include "board/Bootloader.h"
#include "board/DebugEngine.h"
#include "board/Flash.h"
#include "board/Journal.h"
#include "board/Processor.h"
#include "board/Settings.h"
#include "board/Tap.h"
#include "sim/Core.h"

#include <cstdint>

namespace board {

class Device : private TapChannel {
public:
    // Powered up, out of reset, with the program at address 0 running. `journal` is not owned. Throws
    // std::invalid_argument for memory sizes that do not exist.
    Device(const Settings& settings, Journal& journal);
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    void setTMS(bool level) { m_tms = level; }
    void setTDI(bool level) { m_tdi = level; }
    void pulseTCK();
    bool tdo() const;
    // False holds the device in reset. When it goes high, system programming value 1 starts the
    // bootloader, any other the program.
    void setReset(bool level);

    // Lets the processor execute at most `steps` instructions, unless something stops it.
    void run(uint64_t steps);
    // Whether run() would do anything.
    bool isExecuting() const { return isPowered() && m_processor.isRunning() && !m_processor.isIdle(); }

    // Milliseconds for which erasing kept the device busy since the last call.
    unsigned takeErasingTime() { return m_bootloader.takeErasingTime(); }

    // For whoever prepares or examines the memories, past all that the pins allow.
    maxq30::Core& core() { return m_processor.core(); }
    const Processor& processor() const { return m_processor; }

private:
    bool isPowered() const { return !m_settings.stuckTDO; }
    uint16_t captureChannel() override;
    void updateChannel(uint8_t byte) override;
    void restartChannel() override;

    const Settings m_settings;
    Journal& m_journal;
    Processor m_processor;
    Flash m_flash;
    DebugEngine m_debug;
    Bootloader m_bootloader;
    Tap m_tap;
    bool m_tms = false;
    bool m_tdi = false;
    bool m_reset = true; // level: high is out of reset
    bool m_inBootloader = false;
};

} // namespace board
