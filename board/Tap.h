// The test access port: a state machine clocked by TCK, the 3-bit instruction register, and three data
// registers: bypass, system programming, and the 10-bit channel to the debug engine or the bootloader.
#pragma once

#include <cstdint>

namespace board {

// What stands behind the channel register.
class TapChannel {
public:
    // Two status bits below eight data bits, taken as a scan of the channel begins.
    virtual uint16_t captureChannel() = 0;
    // The data bits that a scan brought in.
    virtual void updateChannel(uint8_t byte) = 0;
    // The port went through Test-Logic-Reset.
    virtual void restartChannel() = 0;

protected:
    ~TapChannel() = default;
};

class Tap {
public:
    enum Instruction : uint8_t { Channel = 2, SystemProgramming = 4, Bypass = 7 };

    // `channel` is not owned.
    explicit Tap(TapChannel& channel) : m_channel(channel) {}

    // A full TCK pulse with these levels.
    void clock(bool tms, bool tdi);
    // The level between pulses; high where nothing is shifted, as a pulled-up line is.
    bool tdo() const;

    uint8_t instruction() const { return m_instruction; }
    uint8_t systemProgramming() const { return m_systemProgramming; }

private:
    void capture(bool instruction);
    void update(bool instruction);

    TapChannel& m_channel;
    uint8_t m_state = 0; // Test-Logic-Reset
    uint8_t m_instruction = Bypass;
    uint8_t m_systemProgramming = 0;
    uint16_t m_shift = 0;
    unsigned m_shiftBits = 1;
};

} // namespace board
