// The USB adapter. Messages come in on one bulk endpoint as a stream, each a command with its arguments,
// and answers leave on the other. A session begins with six start bytes and 0x80.
#pragma once

#include "board/Adapter.h"
#include "board/Device.h"
#include "board/Journal.h"
#include "board/Scans.h"

namespace board {

class UsbAdapter : public Adapter {
public:
    // Nothing is owned.
    UsbAdapter(Device& device, Journal& journal);

    void restart() override;
    void receive(uint8_t byte, std::vector<uint8_t>& answer) override;

private:
    enum class Mode { Closed, Command, Arguments, ShiftIn, LoaderWrite };

    void startByte(uint8_t byte);
    void execute(std::vector<uint8_t>& answer);
    void begin(Mode stream, std::vector<uint8_t>& answer);
    void endLoaderWrite(std::vector<uint8_t>& answer);

    Device& m_device;
    Journal& m_journal;
    Scans m_scans;
    Mode m_mode = Mode::Closed;
    size_t m_started = 0; // start bytes that have come
    std::vector<uint8_t> m_command;
    uint32_t m_left = 0; // bytes of a stream that are still to come
    bool m_refused = false;
};

} // namespace board
