#include "board/SerialAdapter.h"

#include "board/Device.h"
#include "board/Journal.h"
#include "board/Tap.h"
#include "board/limits.h"

#include <cstdio>

namespace board {

namespace {

enum Command : uint8_t {
    SelectIR = 1,
    SelectDR = 2,
    ThreeBits = 3,
    ResetHigh = 4,
    ResetLow = 5,
    CycleTCK = 6,
    ReadTDO = 7,
    EightBits = 8,
    TMSHigh = 9,
    TMSLow = 10,
    TDIHigh = 11,
    TDILow = 12,
};

constexpr char Prompt = '>';

void append(std::vector<uint8_t>& answer, std::string_view text)
{
    answer.insert(answer.end(), text.begin(), text.end());
}

} // namespace

SerialAdapter::SerialAdapter(Device& device, Journal& journal)
    : m_device(device), m_journal(journal), m_scans(device)
{
    restart();
}

void SerialAdapter::restart()
{
    m_mode = Mode::Text;
    m_line.clear();
    m_instructionSelected = false;
    m_threeBits = false;
    m_instruction = Tap::Bypass;
    m_pacing = false;
    m_scans.testReset();
}

void SerialAdapter::receive(uint8_t byte, std::vector<uint8_t>& answer)
{
    switch (m_mode) {
    case Mode::Text: return textByte(byte, answer);
    case Mode::FrameStart:
        m_left = byte;
        m_frameRefused = false;
        m_mode = byte ? Mode::Data : Mode::Command;
        return;
    case Mode::Command: m_mode = Mode::FrameStart; return command(byte, answer);
    case Mode::Data:
        if (!--m_left)
            m_mode = Mode::FrameStart;
        ScanResult result = shift(byte);
        answer.push_back(result.status);
        answer.push_back(result.data);
    }
}

// Echoes what is typed. A line other than "Z" or an empty one is none that a program would send.
void SerialAdapter::textByte(uint8_t byte, std::vector<uint8_t>& answer)
{
    if (byte != '\r') {
        if (byte >= 0x20 && byte < 0x7F)
            answer.push_back(byte);
        if (m_line.size() < limits::TextLine)
            m_line += char(byte);
        return;
    }
    std::string line;
    line.swap(m_line);
    append(answer, "\r\n");
    if (line == "Z") {
        m_mode = Mode::FrameStart;
        return;
    }
    if (!line.empty()) {
        m_journal.complain("unknown line of " + std::to_string(line.size()) + " characters in text mode");
        append(answer, "?\r\n");
    }
    answer.push_back(Prompt);
}

// Every command answers with itself, but for the one that reads.
void SerialAdapter::command(uint8_t command, std::vector<uint8_t>& answer)
{
    switch (command) {
    case SelectIR:
    case SelectDR: m_instructionSelected = command == SelectIR; break;
    case ThreeBits:
    case EightBits: m_threeBits = command == ThreeBits; break;
    case ResetHigh:
        m_pacing = m_systemProgramming == 1;
        m_device.setReset(true);
        break;
    case ResetLow:
        m_pacing = false;
        m_device.setReset(false);
        break;
    case CycleTCK:
        m_device.setTMS(m_tms);
        m_device.pulseTCK();
        break;
    case ReadTDO: answer.push_back(m_device.tdo()); return;
    case TMSHigh:
    case TMSLow: m_tms = command == TMSHigh; break;
    case TDIHigh:
    case TDILow: m_device.setTDI(command == TDIHigh); break;
    default:
        char text[40];
        std::snprintf(text, sizeof text, "unknown adapter command 0x%02x", command);
        m_journal.complain(text);
        return;
    }
    answer.push_back(command);
}

ScanResult SerialAdapter::shift(uint8_t byte)
{
    if (m_instructionSelected) {
        if (!m_threeBits)
            m_journal.complain("an instruction of 8 bits");
        m_instruction = byte & 7;
        return {0, m_scans.shiftIR(m_instruction)};
    }
    if (m_threeBits) {
        if (m_instruction == Tap::SystemProgramming)
            m_systemProgramming = byte & 7;
        return {0, m_scans.shiftDR3(byte)};
    }
    if (!m_pacing || m_instruction != Tap::Channel)
        return m_scans.shiftDR(byte);
    if (m_frameRefused)
        return {0, 0};
    bool taken;
    ScanResult result = m_scans.shiftLoader(byte, taken);
    m_frameRefused = !taken;
    return result;
}

} // namespace board
