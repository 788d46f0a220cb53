#include "board/Bootloader.h"

#include "board/limits.h"

#include <algorithm>
#include <span>
#include <utility>

namespace board {

namespace {

enum Command : uint8_t {
    MasterErase = 0x02,
    GetFlagsAndError = 0x04,
    GetSupportedCommands = 0x05,
    GetCodeSize = 0x06,
    GetDataSize = 0x07,
    GetROMVersion = 0x09,
    GetDeviceId = 0x0D,
    LoadVariable = 0x10,
    LoadFixed = 0x90,
};

enum Family { General = 0, VariableLoadFamily = 1, FixedLoadFamily = 9 };

constexpr size_t LoadHeader = 6;
constexpr uint8_t ReadyBit = 1;
constexpr uint8_t NewByteBit = 2;

// Sizes are reported as the number of the last word; 0 tells nothing, and is what remains for a memory
// that 16 bits cannot express.
uint32_t reportedSize(uint32_t bytes)
{
    uint32_t lastWord = bytes / 2 - 1;
    return lastWord <= 0xFFFF ? lastWord : 0;
}

uint32_t threeBytes(const uint8_t* bytes)
{
    return uint32_t(bytes[0] | bytes[1] << 8 | bytes[2] << 16);
}

} // namespace

Bootloader::Bootloader(const Settings& settings, Flash& flash, Journal& journal)
    : m_settings(settings), m_flash(flash), m_journal(journal)
{
}

void Bootloader::start()
{
    m_phase = Phase::Starting;
    m_out = 0;
    m_outNew = false;
    m_command.clear();
    m_answer.clear();
    m_error = NoError;
    m_memoryChanged = false;
    busy(m_settings.bootScans);
}

uint16_t Bootloader::capture()
{
    m_taking = false;
    if (!m_settings.bootloaderStarts)
        return 0;
    if (m_busyScans) {
        --m_busyScans;
        return 0;
    }
    if (m_phase == Phase::Starting)
        prompt();
    m_taking = true;
    return uint16_t(ReadyBit | (m_outNew ? NewByteBit : 0) | m_out << 2);
}

void Bootloader::update(uint8_t byte)
{
    if (!m_taking)
        return;
    m_taking = false;
    // Zero bytes between commands mean nothing: a transfer ends with one.
    if (m_phase == Phase::Idle && !byte)
        return;
    if (m_phase == Phase::Answering && !byte) {
        if (m_answer.empty()) {
            prompt();
        } else {
            m_out = m_answer.back();
            m_outNew = true;
            m_answer.pop_back();
        }
        return;
    }
    if (m_phase != Phase::Collecting) {
        m_phase = Phase::Collecting;
        m_command.clear();
        m_out = 0;
        m_outNew = false;
    }
    m_command.push_back(byte);
    if (m_command.size() >= commandLength())
        execute();
}

unsigned Bootloader::takeErasingTime()
{
    return std::exchange(m_erasingTime, 0);
}

size_t Bootloader::commandLength() const
{
    switch (m_command[0]) {
    case MasterErase: return 2;
    case LoadVariable:
        return m_command.size() < 3 ? LoadHeader : LoadHeader + (m_command[1] | m_command[2] << 8);
    case LoadFixed: return m_command.size() < 2 ? LoadHeader : LoadHeader + 2 * m_command[1];
    default: return 1;
    }
}

void Bootloader::execute()
{
    const std::vector<uint8_t>& c = m_command;
    switch (c[0]) {
    case MasterErase:
        if (m_settings.locked)
            return finish(NoPasswordMatch);
        if (c[1] != 0)
            return finish(BadParameter);
        m_journal.note("bootloader: erase everything");
        m_flash.eraseAll();
        m_memoryChanged = true;
        m_erasingTime += m_settings.eraseMilliseconds;
        finish(NoError);
        return busy(m_settings.eraseScans);
    case GetFlagsAndError: {
        uint8_t error = m_error;
        return answer({uint8_t(m_memoryChanged ? 1 : 0), error});
    }
    case GetSupportedCommands: {
        unsigned families = 1u << General | unsigned(m_settings.variableLoad) << VariableLoadFamily |
                            unsigned(m_settings.fixedLoad) << FixedLoadFamily;
        return answer({uint8_t(families), uint8_t(families >> 8), m_settings.fixedCodeWords,
                       m_settings.fixedDataWords});
    }
    case GetCodeSize:
    case GetDataSize: {
        uint32_t size = reportedSize(c[0] == GetCodeSize ? m_settings.codeBytes : m_settings.dataBytes);
        return answer({uint8_t(size), uint8_t(size >> 8)});
    }
    case GetROMVersion: return answer({m_settings.romMinor, m_settings.romMajor});
    case GetDeviceId: {
        std::vector<uint8_t> text(m_settings.deviceId.begin(), m_settings.deviceId.end());
        text.push_back(0);
        return answer(std::move(text));
    }
    // A load's data is swallowed also when nothing comes of it, or it would be taken for commands.
    case LoadVariable:
        if (!m_settings.variableLoad)
            return finish(FamilyNotSupported);
        return load(threeBytes(&c[3]), LoadHeader);
    case LoadFixed:
        if (!m_settings.fixedLoad)
            return finish(FamilyNotSupported);
        if (c[1] != m_settings.fixedCodeWords || c[2] != 0)
            return finish(BadParameter);
        return load(threeBytes(&c[3]) * 2, LoadHeader);
    default:
        unsigned family = c[0] >> 4;
        bool known = family == General || (family == VariableLoadFamily && m_settings.variableLoad) ||
                     (family == FixedLoadFamily && m_settings.fixedLoad);
        return finish(known ? InvalidCommand : FamilyNotSupported);
    }
}

void Bootloader::load(uint32_t address, size_t headerBytes)
{
    if (m_settings.locked)
        return finish(NoPasswordMatch);
    std::span<const uint8_t> data = std::span(m_command).subspan(headerBytes);
    m_journal.note("bootloader: load " + std::to_string(data.size()) + " bytes at " +
                   std::to_string(address));
    if (!m_flash.program(address, data))
        return finish(BadParameter);
    m_memoryChanged = true;
    finish(NoError);
    busy(m_settings.loadScans);
}

// Asking does not change the error of the command before.
void Bootloader::answer(std::vector<uint8_t> bytes)
{
    if (m_command[0] != GetFlagsAndError)
        m_error = NoError;
    m_answer = std::move(bytes);
    std::reverse(m_answer.begin(), m_answer.end());
    m_phase = Phase::Answering;
}

// A refused command shows in the transfer that brought it: its closing byte is not taken.
void Bootloader::finish(Error error)
{
    m_error = error;
    if (error) {
        busy(limits::LoaderTries);
        m_journal.note("bootloader: error " + std::to_string(error) + " after command " +
                       std::to_string(m_command[0]));
    }
    prompt();
}

void Bootloader::prompt()
{
    m_phase = Phase::Idle;
    m_out = Prompt;
    m_outNew = true;
}

} // namespace board
