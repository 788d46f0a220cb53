// What the firmware of every adapter does on the pins of the device: scans that begin and end in
// Run-Test/Idle.
#pragma once

#include "board/Device.h"

#include <cstdint>

namespace board {

struct ScanResult {
    uint8_t status; // two bits, 0 where the register has none
    uint8_t data;
};

class Scans {
public:
    // Not owned.
    explicit Scans(Device& device) : m_device(device) {}

    // Run-Test/Idle through Test-Logic-Reset.
    void testReset();
    // Answers what the instruction register held.
    uint8_t shiftIR(uint8_t instruction);
    // Ten bits: status, then data.
    ScanResult shiftDR(uint8_t byte);
    // Three bits without status.
    uint8_t shiftDR3(uint8_t bits);
    // Ten bits, again as long as the low first status bit says that the byte was not taken, but at most
    // limits::LoaderTries times. `taken` tells how it ended.
    ScanResult shiftLoader(uint8_t byte, bool& taken);

private:
    void pulse(bool tms, unsigned count = 1);
    uint8_t shiftBits(uint8_t bits, unsigned count);

    Device& m_device;
};

} // namespace board
