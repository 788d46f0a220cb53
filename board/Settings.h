// What kind of board it is, and what is broken on it.
#pragma once

#include "board/limits.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace board {

struct Settings {
    // Bytes, multiples of 4 from 64 to 16 MiB.
    uint32_t codeBytes = limits::DefaultCode;
    uint32_t dataBytes = limits::DefaultData;

    // The bootloader: which load families it knows, the words that a Fixed command moves, and how it
    // calls itself.
    bool variableLoad = true;
    bool fixedLoad = true;
    uint8_t fixedCodeWords = limits::DefaultFixedWords;
    uint8_t fixedDataWords = limits::DefaultFixedWords;
    std::string deviceId = "MAXQ30 virtual board";
    uint8_t romMajor = 1;
    uint8_t romMinor = 0;
    // Scans that it refuses while it starts, programs and erases, and the time for which an adapter
    // waits out an erase, in milliseconds.
    unsigned bootScans = limits::DefaultBootScans;
    unsigned loadScans = limits::DefaultLoadScans;
    unsigned eraseScans = limits::DefaultEraseScans;
    unsigned eraseMilliseconds = 0;

    // Faults. A board without power drives TDO to one level and hears nothing.
    std::optional<bool> stuckTDO;
    bool bootloaderStarts = true;
    bool locked = false; // the bootloader refuses erases and loads
    // Code cells, as first and last byte address, that an erase clears but nothing can program.
    struct Range {
        uint32_t first;
        uint32_t last;
    };
    std::vector<Range> deadCells;
};

} // namespace board
