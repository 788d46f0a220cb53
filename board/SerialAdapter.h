// The serial adapter. It wakes up in a text mode with a prompt; the line "Z" switches to the binary mode,
// whose frames are 0 and a command, or a count and as many bytes to shift through the selected register.
//
// Bytes for the bootloader come in plain frames, so the adapter paces them itself: from a reset that
// starts the bootloader to the next one, a byte that was not taken is sent again.
#pragma once

#include "board/Adapter.h"
#include "board/Device.h"
#include "board/Journal.h"
#include "board/Scans.h"
#include "board/Tap.h"

#include <string>

namespace board {

class SerialAdapter : public Adapter {
public:
    // Nothing is owned.
    SerialAdapter(Device& device, Journal& journal);

    void restart() override;
    void receive(uint8_t byte, std::vector<uint8_t>& answer) override;

private:
    enum class Mode { Text, FrameStart, Command, Data };

    void textByte(uint8_t byte, std::vector<uint8_t>& answer);
    void command(uint8_t command, std::vector<uint8_t>& answer);
    ScanResult shift(uint8_t byte);

    Device& m_device;
    Journal& m_journal;
    Scans m_scans;
    Mode m_mode = Mode::Text;
    std::string m_line;
    unsigned m_left = 0;         // bytes of the frame that are still to come
    bool m_frameRefused = false; // a byte of the frame was not taken, and none behind it is sent
    bool m_instructionSelected = false;
    bool m_threeBits = false;
    uint8_t m_instruction = Tap::Bypass;
    uint8_t m_systemProgramming = 0;
    bool m_pacing = false;
    bool m_tms = false;
};

} // namespace board
