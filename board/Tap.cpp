#include "board/Tap.h"

namespace board {

namespace {

enum State : uint8_t {
    TestLogicReset,
    RunTestIdle,
    SelectDR,
    CaptureDR,
    ShiftDR,
    Exit1DR,
    PauseDR,
    Exit2DR,
    UpdateDR,
    SelectIR,
    CaptureIR,
    ShiftIR,
    Exit1IR,
    PauseIR,
    Exit2IR,
    UpdateIR,
};

// By state and TMS, as the standard draws it.
constexpr State following[16][2] = {
    {RunTestIdle, TestLogicReset},
    {RunTestIdle, SelectDR},
    {CaptureDR, SelectIR},
    {ShiftDR, Exit1DR},
    {ShiftDR, Exit1DR},
    {PauseDR, UpdateDR},
    {PauseDR, Exit2DR},
    {ShiftDR, UpdateDR},
    {RunTestIdle, SelectDR},
    {CaptureIR, TestLogicReset},
    {ShiftIR, Exit1IR},
    {ShiftIR, Exit1IR},
    {PauseIR, UpdateIR},
    {PauseIR, Exit2IR},
    {ShiftIR, UpdateIR},
    {RunTestIdle, SelectDR},
};

constexpr unsigned InstructionBits = 3;
constexpr unsigned SystemProgrammingBits = 3;
constexpr unsigned ChannelBits = 10;
constexpr uint16_t InstructionCapture = 1; // the standard asks for 01 in the lowest bits

} // namespace

void Tap::clock(bool tms, bool tdi)
{
    switch (m_state) {
    case CaptureDR: capture(false); break;
    case CaptureIR: capture(true); break;
    case ShiftDR:
    case ShiftIR: m_shift = uint16_t(m_shift >> 1 | unsigned(tdi) << (m_shiftBits - 1)); break;
    default: break;
    }
    m_state = following[m_state][tms];
    switch (m_state) {
    case UpdateDR: update(false); break;
    case UpdateIR: update(true); break;
    case TestLogicReset:
        m_instruction = Bypass;
        m_channel.restartChannel();
        break;
    default: break;
    }
}

bool Tap::tdo() const
{
    return m_state == ShiftDR || m_state == ShiftIR ? m_shift & 1 : true;
}

void Tap::capture(bool instruction)
{
    if (instruction) {
        m_shiftBits = InstructionBits;
        m_shift = InstructionCapture;
    } else if (m_instruction == Channel) {
        m_shiftBits = ChannelBits;
        m_shift = m_channel.captureChannel();
    } else if (m_instruction == SystemProgramming) {
        m_shiftBits = SystemProgrammingBits;
        m_shift = m_systemProgramming;
    } else {
        m_shiftBits = 1;
        m_shift = 0;
    }
}

void Tap::update(bool instruction)
{
    if (instruction)
        m_instruction = uint8_t(m_shift);
    else if (m_instruction == Channel)
        m_channel.updateChannel(uint8_t(m_shift >> 2));
    else if (m_instruction == SystemProgramming)
        m_systemProgramming = uint8_t(m_shift);
}

} // namespace board
