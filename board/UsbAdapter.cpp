#include "board/UsbAdapter.h"

#include "board/Device.h"
#include "board/Journal.h"
#include "board/Tap.h"
#include "board/limits.h"

#include <cstdio>

namespace board {

namespace {

enum Command : uint8_t {
    Open = 0x80,
    TestReset = 0x82,
    SetReset = 0x83,
    ShiftIR = 0x84,
    ShiftInOutDR = 0x85,
    ShiftInDR = 0x86,
    ShiftOutDR = 0x87,
    LoaderRead = 0x88,
    LoaderWrite = 0x89,
    SystemProgrammingBits = 0x8A,
};

constexpr uint8_t StartBytes[] = {0xF8, 0xF8, 0xF9, 0xF9, 0xF9, 0xFA, Open};

// Bytes behind the command byte, or -1 for a command that does not exist.
int argumentBytes(uint8_t command)
{
    switch (command) {
    case TestReset: return 0;
    case SetReset:
    case ShiftIR:
    case ShiftInOutDR:
    case SystemProgrammingBits: return 1;
    case ShiftInDR:
    case ShiftOutDR:
    case LoaderRead:
    case LoaderWrite: return 4;
    }
    return -1;
}

std::string hex(uint8_t byte)
{
    char text[8];
    std::snprintf(text, sizeof text, "0x%02x", byte);
    return text;
}

} // namespace

UsbAdapter::UsbAdapter(Device& device, Journal& journal)
    : m_device(device), m_journal(journal), m_scans(device)
{
    restart();
}

void UsbAdapter::restart()
{
    m_mode = Mode::Closed;
    m_started = 0;
    m_command.clear();
    m_left = 0;
    m_scans.testReset();
}

void UsbAdapter::receive(uint8_t byte, std::vector<uint8_t>& answer)
{
    switch (m_mode) {
    case Mode::Closed: return startByte(byte);
    case Mode::Command: {
        int arguments = argumentBytes(byte);
        if (byte == StartBytes[0]) {
            m_mode = Mode::Closed;
            m_started = 0;
            return startByte(byte);
        }
        if (arguments < 0)
            return m_journal.complain("unknown adapter command " + hex(byte));
        m_command.assign(1, byte);
        m_mode = Mode::Arguments;
        if (!arguments)
            execute(answer);
        return;
    }
    case Mode::Arguments:
        m_command.push_back(byte);
        if (int(m_command.size()) > argumentBytes(m_command[0]))
            execute(answer);
        return;
    case Mode::ShiftIn:
        m_scans.shiftDR(byte);
        if (!--m_left)
            m_mode = Mode::Command;
        return;
    case Mode::LoaderWrite:
        if (!m_refused) {
            bool taken;
            m_scans.shiftLoader(byte, taken);
            m_refused = !taken;
        }
        if (!--m_left)
            endLoaderWrite(answer);
    }
}

void UsbAdapter::startByte(uint8_t byte)
{
    if (byte != StartBytes[m_started]) {
        m_journal.complain("byte " + hex(byte) + " where a session starts with " +
                           hex(StartBytes[m_started]));
        m_started = 0;
        return;
    }
    if (++m_started == sizeof StartBytes)
        m_mode = Mode::Command;
}

void UsbAdapter::execute(std::vector<uint8_t>& answer)
{
    m_mode = Mode::Command;
    uint8_t argument = m_command.size() > 1 ? m_command[1] : 0;
    switch (m_command[0]) {
    case TestReset: m_scans.testReset(); break;
    case SetReset:
        if (argument > 1)
            m_journal.complain("level " + hex(argument) + " for the reset line");
        m_device.setReset(argument);
        break;
    case ShiftIR: m_scans.shiftIR(argument); break;
    case ShiftInOutDR: {
        ScanResult result = m_scans.shiftDR(argument);
        answer.push_back(result.status);
        answer.push_back(result.data);
        break;
    }
    case SystemProgrammingBits:
        m_scans.shiftIR(Tap::SystemProgramming);
        m_scans.shiftDR3(argument);
        break;
    case ShiftInDR: begin(Mode::ShiftIn, answer); break;
    case LoaderWrite: begin(Mode::LoaderWrite, answer); break;
    case ShiftOutDR:
    case LoaderRead: begin(Mode::Command, answer); break;
    }
}

// The commands that announce a count.
void UsbAdapter::begin(Mode stream, std::vector<uint8_t>& answer)
{
    uint32_t count = uint32_t(m_command[1]) | uint32_t(m_command[2]) << 8 | uint32_t(m_command[3]) << 16 |
                     uint32_t(m_command[4]) << 24;
    if (!count || (stream == Mode::Command && count > limits::UsbRead))
        return m_journal.complain("adapter command " + hex(m_command[0]) + " with a count of " +
                                  std::to_string(count));
    if (stream != Mode::Command) {
        m_mode = stream;
        m_left = count;
        m_refused = false;
        return;
    }
    for (uint32_t i = 0; i < count; ++i) {
        bool taken;
        answer.push_back(m_command[0] == LoaderRead ? m_scans.shiftLoader(0, taken).data
                                                    : m_scans.shiftDR(0).data);
    }
}

void UsbAdapter::endLoaderWrite(std::vector<uint8_t>& answer)
{
    m_mode = Mode::Command;
    if (!m_refused) {
        bool taken;
        m_scans.shiftLoader(0, taken);
        m_refused = !taken;
    }
    answer.push_back(!m_refused);
}

} // namespace board
