// The frames of the debug channel and of the bootloader, and what they mean in words.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace jtag {

// First bytes of debug frames. The numbers behind them are little-endian.
enum DebugCommand : unsigned char {
    DebugRegister = 0x10, // plus the register's number; its value follows when it is written
    StopCPU = 0x1F,
    Poll = 0x20, // also the last byte of several frames
    ReadRegisterMap = 0x21,
    ReadMemory = 0x22,
    WriteRegister = 0x24,
    WriteMemory = 0x25,
    Step = 0x26,
    Run = 0x27,
    ReadRegister = 0x29,
};

// First bytes of bootloader commands: the family in the high nibble, the number in the low one.
enum LoaderCommand : unsigned char {
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

// The debug engine counts 16-bit words, and this bit of a word address selects code memory.
constexpr uint32_t CodeSpace = 0x800000;

// For a user who reads a trace; a frame that nobody knows is said to be unknown.
std::string debugFrameInWords(std::span<const unsigned char> frame);
std::string loaderFrameInWords(std::span<const unsigned char> frame);
// What an instruction of the TAP selects.
std::string instructionInWords(unsigned char instruction);

} // namespace jtag
