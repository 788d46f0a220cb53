// Bounds and fixed places of the simulated processor.
#pragma once

#include <cstddef>
#include <cstdint>

namespace maxq30::limits {

// Each memory lies in an address space of 16 MiB, in bytes.
constexpr uint32_t MaximumMemory = 0x1000000;
constexpr uint32_t MinimumMemory = 64;
constexpr uint32_t DefaultCode = 0x100000;
constexpr uint32_t DefaultData = 0x100000;

// Where data pointers find the code memory, read-only.
constexpr uint32_t CodeWindow = 0x1000000;

// Prefix words that may stand before one instruction word: with its own byte they make 32 bits.
constexpr unsigned MaximumPrefixes = 3;

// Bytes of data memory for which it is noted together whether somebody wants to hear of accesses.
constexpr uint32_t WatchedBytes = 64;

// Instructions between two looks at the simulated peripherals: a script takes some microseconds to say that
// nothing has happened, in which the processor does a thousand.
constexpr unsigned PeripheralPollInterval = 4096;

// Characters of one line of a ROM file: 255 data bytes and everything around them.
constexpr size_t RomLine = 1 + 2 * (1 + 2 + 1 + 255 + 1);
// Characters of a whole one: the largest memory in records of a byte each still fits.
constexpr size_t RomText = size_t(16) * MaximumMemory;

} // namespace maxq30::limits
