#include "board/DebugEngine.h"

#include "board/limits.h"
#include "sim/RegisterFile.h"

#include <cstdio>
#include <utility>

namespace board {

namespace {

enum Frame : uint8_t {
    Stop = 0x1F,
    Poll = 0x20,
    ReadMap = 0x21,
    ReadMemory = 0x22,
    WriteRegister = 0x24,
    WriteMemory = 0x25,
    Step = 0x26,
    Resume = 0x27,
    ReadRegister = 0x29,
};

constexpr uint8_t DebugRegisters = 0x10;
constexpr unsigned ControlRegister = 1;
constexpr unsigned FirstCodeBreakpoint = 5;
constexpr unsigned FirstDataBreakpoint = FirstCodeBreakpoint + limits::CodeBreakpoints;
constexpr unsigned EndOfBreakpoints = FirstDataBreakpoint + limits::DataBreakpoints;
constexpr uint8_t EnableBit = 0x80;

constexpr uint32_t CodeSpace = 0x800000; // in a word address
constexpr uint32_t SpaceMask = 0x7FFFFF;

constexpr uint8_t InDebugModeBit = 1;
constexpr uint8_t AnswerBit = 2;

uint32_t number(const uint8_t* bytes, unsigned count)
{
    uint32_t value = 0;
    for (unsigned i = 0; i < count; ++i)
        value |= uint32_t(bytes[i]) << (8 * i);
    return value;
}

std::string hex(uint32_t value)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%X", value);
    return text;
}

// Where the map holds a register that stands alone.
struct MapEntry {
    uint16_t offset;
    uint8_t bytes;
    uint8_t module;
    uint8_t index;
};
constexpr MapEntry MapEntries[] = {
    {0x280, 1, 8, 0},  {0x281, 1, 8, 1},   {0x282, 2, 8, 4},  {0x284, 1, 8, 5},  {0x286, 2, 8, 8},
    {0x288, 2, 8, 9},  {0x28A, 2, 8, 10},  {0x28C, 2, 8, 14}, {0x28E, 1, 8, 15}, {0x2D0, 4, 12, 0},
    {0x2D4, 4, 13, 1}, {0x2D8, 2, 13, 6},  {0x2DA, 2, 13, 7}, {0x2DC, 4, 14, 0}, {0x2E0, 4, 14, 3},
    {0x2E4, 4, 15, 3}, {0x2E8, 4, 15, 13},
};
constexpr unsigned AccumulatorOffset = 0x290;
constexpr unsigned AccumulatorModule = 9;
constexpr unsigned Accumulators = 16;
constexpr unsigned Indexes = 32;

} // namespace

DebugEngine::DebugEngine(Processor& processor, Flash& flash, Journal& journal)
    : m_processor(processor), m_flash(flash), m_journal(journal)
{
    reset();
}

void DebugEngine::reset()
{
    m_control = 0;
    m_breakpoints.assign(EndOfBreakpoints, 0xFFFFFFFF);
    m_polledStopped = false;
    restart();
}

void DebugEngine::restart()
{
    m_frame.clear();
    m_answer.clear();
    m_answered = 0;
    m_answering = false;
}

uint16_t DebugEngine::capture()
{
    m_answering = m_answered < m_answer.size();
    unsigned status = m_polledStopped ? InDebugModeBit | (m_answering ? AnswerBit : 0) : 0;
    unsigned data = m_answering ? m_answer[m_answered] : 0;
    return uint16_t(status | data << 2);
}

void DebugEngine::update(uint8_t byte)
{
    if (std::exchange(m_answering, false)) {
        // The value bytes of a debug register come in while the old ones go out.
        bool registerFrame = !m_frame.empty();
        if (++m_answered == m_answer.size()) {
            m_answer.clear();
            m_answered = 0;
        }
        if (!registerFrame)
            return;
    }
    take(byte);
}

void DebugEngine::take(uint8_t byte)
{
    if (m_frame.empty() && !byte)
        return;
    m_frame.push_back(byte);
    size_t length = frameLength();
    if (!length) {
        refuse("unknown debug command " + hex(m_frame[0]));
        m_frame.clear();
    } else if (m_frame.size() == length) {
        execute();
        m_frame.clear();
    } else if (m_frame.size() == 1) {
        if (unsigned bytes = debugRegisterBytes(byte - DebugRegisters)) {
            uint32_t value = debugRegister(byte - DebugRegisters);
            for (unsigned i = 0; i < bytes; ++i)
                m_answer.push_back(uint8_t(value >> (8 * i)));
        }
    }
}

// 0 for a command that does not exist.
size_t DebugEngine::frameLength() const
{
    switch (m_frame[0]) {
    case Stop:
    case Poll:
    case Step:
    case Resume: return 1;
    case ReadMap: return 2;
    case ReadRegister: return 4;
    case ReadMemory:
    case WriteRegister: return 8;
    case WriteMemory:
        // A word of code memory goes without the byte at the end.
        return m_frame.size() >= 5 && (number(&m_frame[1], 4) & CodeSpace) ? 7 : 8;
    }
    unsigned bytes = debugRegisterBytes(m_frame[0] - DebugRegisters);
    return bytes ? 1 + bytes : 0;
}

unsigned DebugEngine::debugRegisterBytes(unsigned number)
{
    if (number == ControlRegister)
        return 1;
    if (number >= FirstCodeBreakpoint && number < FirstDataBreakpoint)
        return 3;
    return number >= FirstDataBreakpoint && number < EndOfBreakpoints ? 4 : 0;
}

uint32_t DebugEngine::debugRegister(unsigned number) const
{
    return number == ControlRegister ? m_control : m_breakpoints[number];
}

void DebugEngine::writeDebugRegister(unsigned number, uint32_t value)
{
    if (number == ControlRegister) {
        m_control = uint8_t(value);
        m_processor.enableBreakpoints(value & EnableBit);
        return;
    }
    m_breakpoints[number] = value;
    if (number < FirstDataBreakpoint)
        m_processor.setCodeBreakpoint(number - FirstCodeBreakpoint, value);
    else
        m_processor.setDataBreakpoint(number - FirstDataBreakpoint, value);
}

void DebugEngine::execute()
{
    const uint8_t* f = m_frame.data();
    switch (f[0]) {
    case Stop:
        m_polledStopped = false;
        m_processor.stop();
        return;
    case Poll: m_polledStopped = m_processor.isStopped(); return;
    case Step:
        m_polledStopped = false;
        if (needsStop("single step"))
            m_processor.step();
        return;
    case Resume:
        m_polledStopped = false;
        m_processor.resume();
        return;
    case ReadMap:
        if (tailIs(Poll))
            answerMap();
        return;
    case ReadMemory:
        if (tailIs(0))
            readMemory(number(f + 1, 4), number(f + 5, 2));
        return;
    case WriteMemory:
        if ((m_frame.size() == 7 || tailIs(Poll)) && needsStop("memory write"))
            writeMemory(number(f + 1, 4), f + 5);
        return;
    case WriteRegister:
        if (tailIs(Poll) && needsStop("register write"))
            writeRegister(number(f + 1, 2), number(f + 3, 4));
        return;
    case ReadRegister:
        if (tailIs(Poll)) {
            uint32_t value =
                needsStop("register read") ? m_processor.core().readRegister(number(f + 1, 2)) : 0;
            answer({uint8_t(value), uint8_t(value >> 8), uint8_t(value >> 16), uint8_t(value >> 24)});
        }
        return;
    default: {
        unsigned debugNumber = f[0] - DebugRegisters;
        writeDebugRegister(debugNumber, number(f + 1, debugRegisterBytes(debugNumber)));
    }
    }
}

// Memory and registers are the engine's own only in debug mode. A read then gives zeros, as many as
// were asked for.
bool DebugEngine::needsStop(const char* what)
{
    if (m_processor.isStopped())
        return true;
    refuse(std::string(what) + " while the processor is not in debug mode");
    return false;
}

bool DebugEngine::tailIs(uint8_t wanted)
{
    if (m_frame.back() == wanted)
        return true;
    refuse("debug frame " + hex(m_frame[0]) + " ends with " + hex(m_frame.back()) + " instead of " +
           hex(wanted));
    return false;
}

// Beyond the memories there are the levels of an open bus: zeros for data, ones for code.
void DebugEngine::readMemory(uint32_t address, uint32_t words)
{
    std::vector<uint8_t> bytes(2 * words);
    if (needsStop("memory read")) {
        bool code = address & CodeSpace;
        for (uint32_t i = 0; i < words; ++i) {
            uint8_t* word = &bytes[2 * i];
            uint32_t byteAddress = ((address + i) & SpaceMask) * 2;
            if (!code)
                m_processor.core().readData(byteAddress, 2, word);
            else if (!m_flash.read(byteAddress, {word, 2}))
                word[0] = word[1] = 0xFF;
        }
    }
    answer(std::move(bytes));
}

void DebugEngine::writeMemory(uint32_t address, const uint8_t* bytes)
{
    uint32_t byteAddress = (address & SpaceMask) * 2;
    if (address & CodeSpace)
        m_flash.overwrite(byteAddress, {bytes, 2});
    else
        m_processor.core().writeData(byteAddress, 2, bytes);
}

// The engine has a stack entry of its own in use when SP is written, which a host accounts for by
// adding one.
void DebugEngine::writeRegister(unsigned number, uint32_t value)
{
    m_processor.core().writeRegister(number, number == maxq30::reg::SP ? value - 1 : value);
}

void DebugEngine::answerMap()
{
    std::vector<uint8_t> bytes(limits::MapAnswer);
    if (needsStop("register map")) {
        bytes[0] = uint8_t(limits::MapBytes);
        bytes[1] = uint8_t(limits::MapBytes >> 8);
        auto put = [&](unsigned offset, unsigned size, unsigned module, unsigned index) {
            uint32_t value = m_processor.core().readRegister(maxq30::registerNumber(module, index));
            for (unsigned i = 0; i < size; ++i)
                bytes[2 + offset + i] = uint8_t(value >> (8 * i));
        };
        for (unsigned module = 0; module < maxq30::PeripheralModules; ++module)
            for (unsigned index = 0; index < Indexes; ++index)
                put((module * Indexes + index) * 4, 4, module, index);
        for (unsigned n = 0; n < Accumulators; ++n)
            put(AccumulatorOffset + n * 4, 4, AccumulatorModule, n);
        for (const MapEntry& entry : MapEntries)
            put(entry.offset, entry.bytes, entry.module, entry.index);
    }
    answer(std::move(bytes));
}

void DebugEngine::answer(std::vector<uint8_t> bytes)
{
    m_answer = std::move(bytes);
    m_answered = 0;
}

void DebugEngine::refuse(const std::string& what)
{
    m_journal.complain(what);
}

} // namespace board
