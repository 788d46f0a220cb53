// The registers behind MAXQ30JTAGTargetInterface: those of the debug engine, with the breakpoints in them,
// and the frames that read and write those of the CPU.

#include "maxq30/jtag/JTAGFrames.h"
#include "maxq30/jtag/MAXQ30JTAGTargetInterface.h"
#include "support/Bracket.h"
#include "support/Endian.h"

namespace {

void sendFrame(_maxqd_t* maxqd, const unsigned char* frame, unsigned length)
{
    maxqd->multiShiftInDR8(maxqd, frame, length);
}

} // namespace

bool MAXQ30JTAGTargetInterface::setBreakpoint(HBreakpoint* breakpoint)
{
    m_breakpoints.add(breakpoint);
    Bracket setting([&] { m_breakpoints.remove(breakpoint); }); // its owner takes it for not set
    breakpointsChanged();
    setting.dismiss();
    return true;
}

bool MAXQ30JTAGTargetInterface::removeBreakpoint(HBreakpoint* breakpoint)
{
    m_breakpoints.remove(breakpoint);
    if (m_matched == breakpoint)
        m_matched = nullptr;
    breakpointsChanged();
    return false;
}

// A stopped program gets them when it goes on.
void MAXQ30JTAGTargetInterface::breakpointsChanged()
{
    if (!m_loaderMemory && !m_stopped)
        setBreakpoints();
}

void MAXQ30JTAGTargetInterface::setBreakpoints()
{
    unsigned code = 0, data = 0;
    auto writeCode = [&](uint32_t value) {
        writeDebugRegister24(DebugRegister24(CodeBreakpoint0 + code++), value);
    };
    auto writeData = [&](uint32_t value) {
        writeDebugRegister32(DebugRegister32(DataBreakpoint0 + data++), value);
    };
    // The owner may have changed records since they were counted.
    for (const HBreakpoint* breakpoint : m_breakpoints.toProgram()) {
        if (JTAGBreakpoints::isCode(breakpoint))
            writeCode(breakpoint->address >> 1);
        else
            writeData(breakpoint->address);
    }
    while (code < JTAGBreakpoints::NumCode)
        writeCode(NoCodeBreakpoint);
    while (data < JTAGBreakpoints::NumData)
        writeData(NoDataBreakpoint);
}

void MAXQ30JTAGTargetInterface::writeDebugRegister(unsigned which, uint32_t value, unsigned bytes)
{
    unsigned char frame[5] = {static_cast<unsigned char>(jtag::DebugRegister + which)};
    Endian::packNumber(frame, 1, value, bytes, Endian::Little);
    sendFrame(driver(), frame, 1 + bytes);
}

uint32_t MAXQ30JTAGTargetInterface::readDebugRegister(unsigned which, unsigned bytes)
{
    _maxqd_t* maxqd = driver();
    unsigned char answer[4] = {};
    MAXQD_shiftInDR8(maxqd, static_cast<unsigned char>(jtag::DebugRegister + which));
    maxqd->multiShiftOutDR8(maxqd, answer, bytes);
    return uint32_t(Endian::unpackNumber(answer, 0, bytes, Endian::Little));
}

void MAXQ30JTAGTargetInterface::writeDebugRegister8(DebugRegister8 which, uint8_t value)
{
    writeDebugRegister(which, value, 1);
}

void MAXQ30JTAGTargetInterface::writeDebugRegister24(DebugRegister24 which, uint32_t value)
{
    writeDebugRegister(which, value, 3);
}

void MAXQ30JTAGTargetInterface::writeDebugRegister32(DebugRegister32 which, uint32_t value)
{
    writeDebugRegister(which, value, 4);
}

uint8_t MAXQ30JTAGTargetInterface::readDebugRegister8(DebugRegister8 which)
{
    return uint8_t(readDebugRegister(which, 1));
}

uint32_t MAXQ30JTAGTargetInterface::readDebugRegister24(DebugRegister24 which)
{
    return readDebugRegister(which, 3);
}

uint32_t MAXQ30JTAGTargetInterface::readDebugRegister32(DebugRegister32 which)
{
    return readDebugRegister(which, 4);
}

void MAXQ30JTAGTargetInterface::readRegisterMap()
{
    const unsigned char frame[] = {jtag::ReadRegisterMap, jtag::Poll};
    sendFrame(driver(), frame, sizeof frame);
}

uint32_t MAXQ30JTAGTargetInterface::readRegister(unsigned short number)
{
    _maxqd_t* maxqd = driver();
    unsigned char frame[4] = {jtag::ReadRegister, 0, 0, jtag::Poll};
    Endian::packUINT16(frame, 1, number, Endian::Little);
    sendFrame(maxqd, frame, sizeof frame);
    unsigned char answer[4] = {};
    maxqd->multiShiftOutDR8(maxqd, answer, sizeof answer);
    return Endian::unpackUINT32(answer, 0, Endian::Little);
}

void MAXQ30JTAGTargetInterface::writeRegister(unsigned short number, unsigned long value)
{
    unsigned char frame[8] = {jtag::WriteRegister};
    Endian::packUINT16(frame, 1, number, Endian::Little);
    Endian::packUINT32(frame, 3, uint32_t(value), Endian::Little);
    frame[7] = jtag::Poll;
    sendFrame(driver(), frame, sizeof frame);
}
