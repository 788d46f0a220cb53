// The bootloader in the device's ROM, byte by byte over data scans. A scan carries a byte each way and
// two status bits: bit 0 says that the byte of this very scan will be taken, bit 1 that the byte shifted
// out is new. A byte that is not taken is to be sent again.
//
// Commands without an answer end with the prompt. An answer is fetched with zero bytes: each one that is
// taken brings the next answer byte into the following scan, and the prompt behind the last.
#pragma once

#include "board/Flash.h"
#include "board/Journal.h"
#include "board/Settings.h"

#include <cstdint>
#include <vector>

namespace board {

class Bootloader {
public:
    enum Error : uint8_t {
        NoError = 0,
        FamilyNotSupported = 1,
        InvalidCommand = 2,
        NoPasswordMatch = 3,
        BadParameter = 4,
    };
    static constexpr uint8_t Prompt = 0x3E;

    // Nothing is owned.
    Bootloader(const Settings& settings, Flash& flash, Journal& journal);

    // As it is entered from reset.
    void start();
    // The begin of a scan: status bits in bits 0 and 1, the data byte above them.
    uint16_t capture();
    // Its end, with the byte that came in.
    void update(uint8_t byte);

    // Milliseconds of erasing since the last call.
    unsigned takeErasingTime();

private:
    enum class Phase { Starting, Idle, Collecting, Answering };

    void busy(unsigned scans) { m_busyScans = scans; }
    // Bytes that belong to the command collected so far; more as its header tells.
    size_t commandLength() const;
    void execute();
    void load(uint32_t address, size_t headerBytes);
    void answer(std::vector<uint8_t> bytes);
    void finish(Error error);
    void prompt();

    const Settings& m_settings;
    Flash& m_flash;
    Journal& m_journal;
    Phase m_phase = Phase::Starting;
    unsigned m_busyScans = 0;
    bool m_taking = false; // the scan under way will be taken
    uint8_t m_out = 0;
    bool m_outNew = false;
    std::vector<uint8_t> m_command;
    std::vector<uint8_t> m_answer; // what is still to come, last byte first
    Error m_error = NoError;
    bool m_memoryChanged = false;
    unsigned m_erasingTime = 0;
};

} // namespace board
