#include "board/Scans.h"

#include "board/limits.h"

namespace board {

namespace {
constexpr uint8_t ReadyBit = 1;
}

void Scans::testReset()
{
    pulse(true, 5);
    pulse(false);
}

uint8_t Scans::shiftIR(uint8_t instruction)
{
    pulse(true, 2);
    pulse(false, 2);
    return shiftBits(instruction, 3);
}

ScanResult Scans::shiftDR(uint8_t byte)
{
    pulse(true);
    pulse(false, 2);
    m_device.setTDI(false);
    uint8_t status = m_device.tdo();
    pulse(false);
    status = uint8_t(status | m_device.tdo() << 1);
    pulse(false);
    return {status, shiftBits(byte, 8)};
}

uint8_t Scans::shiftDR3(uint8_t bits)
{
    pulse(true);
    pulse(false, 2);
    return shiftBits(bits, 3);
}

ScanResult Scans::shiftLoader(uint8_t byte, bool& taken)
{
    ScanResult result{};
    taken = false;
    for (unsigned i = 0; i < limits::LoaderTries && !taken; ++i) {
        result = shiftDR(byte);
        taken = result.status & ReadyBit;
    }
    return result;
}

void Scans::pulse(bool tms, unsigned count)
{
    m_device.setTMS(tms);
    while (count--)
        m_device.pulseTCK();
}

// The last bit goes in on the way out of the shift state.
uint8_t Scans::shiftBits(uint8_t bits, unsigned count)
{
    uint8_t out = 0;
    for (unsigned i = 0; i < count; ++i) {
        out = uint8_t(out | m_device.tdo() << i);
        m_device.setTDI(bits >> i & 1);
        pulse(i + 1 == count);
    }
    pulse(true);
    pulse(false);
    return out;
}

} // namespace board
