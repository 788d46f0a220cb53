// The debug engine in the device, byte by byte over data scans under the debug channel's instruction.
// Frames begin with a command byte; answers follow in the scans behind the frame, which then ignores
// what comes in. The status bits tell what the last poll found: 0 while the processor executes, bit 0 in
// debug mode, bit 1 with it while an answer is on its way.
#pragma once

#include "board/Flash.h"
#include "board/Journal.h"
#include "board/Processor.h"

#include <cstdint>
#include <vector>

namespace board {

class DebugEngine {
public:
    // Nothing is owned.
    DebugEngine(Processor& processor, Flash& flash, Journal& journal);

    // The reset line of the device fell.
    void reset();
    // Forgets a frame or an answer that is under way; settings stay.
    void restart();

    // The begin of a scan: status bits in bits 0 and 1, the data byte above them; and its end.
    uint16_t capture();
    void update(uint8_t byte);

private:
    void take(uint8_t byte);
    size_t frameLength() const;
    void execute();
    void writeDebugRegister(unsigned number, uint32_t value);
    uint32_t debugRegister(unsigned number) const;
    static unsigned debugRegisterBytes(unsigned number);
    bool needsStop(const char* what);
    bool tailIs(uint8_t wanted);
    void readMemory(uint32_t address, uint32_t words);
    void writeMemory(uint32_t address, const uint8_t* bytes);
    void writeRegister(unsigned number, uint32_t value);
    void answerMap();
    void answer(std::vector<uint8_t> bytes);
    void refuse(const std::string& what);

    Processor& m_processor;
    Flash& m_flash;
    Journal& m_journal;
    std::vector<uint8_t> m_frame;
    std::vector<uint8_t> m_answer;
    size_t m_answered = 0;
    bool m_answering = false; // the scan under way carries an answer byte
    bool m_polledStopped = false;
    uint8_t m_control = 0;
    std::vector<uint32_t> m_breakpoints; // by debug register number
};

} // namespace board
