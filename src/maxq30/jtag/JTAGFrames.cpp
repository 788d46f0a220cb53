#include "maxq30/jtag/JTAGFrames.h"

#include "maxq30/cpu/MAXQ30Registers.h"
#include "maxq30/jtag/maxqd.h"
#include "support/Endian.h"

#include <cstdarg>
#include <cstdio>

namespace jtag {
namespace {

using Frame = std::span<const unsigned char>;

__attribute__((format(printf, 1, 2))) std::string format(const char* pattern, ...)
{
    char text[128];
    va_list arguments;
    va_start(arguments, pattern);
    vsnprintf(text, sizeof text, pattern, arguments);
    va_end(arguments);
    return text;
}

unsigned number(Frame frame, unsigned offset, unsigned size)
{
    return unsigned(Endian::unpackNumber(frame.data(), offset, size, Endian::Little));
}

// A word address of the debug engine as memory and byte address.
std::string place(unsigned wordAddress)
{
    return format("%s memory at 0x%04x", wordAddress & CodeSpace ? "code" : "data",
                  (wordAddress & ~CodeSpace) << 1);
}

std::string registerName(unsigned number)
{
    return MAXQ30Registers().numberToName(number % MAXQ30Registers::NumRegisters);
}

std::string debugRegister(Frame frame)
{
    unsigned which = frame[0] - DebugRegister;
    if (frame.size() == 1)
        return format("read debug register %u", which);
    if (frame.size() > 5)
        return format("write debug register %u", which);
    unsigned size = unsigned(frame.size()) - 1;
    unsigned value = number(frame, 1, size);
    if (which == 1)
        return value ? "enable the debug engine" : "disable the debug engine";
    if (which >= 5 && which <= 8)
        return value == 0xFFFFFF ? format("no code breakpoint %u", which - 5)
                                 : format("code breakpoint %u at 0x%04x", which - 5, value << 1);
    if (which == 9 || which == 10)
        return value == 0xFFFFFFFF ? format("no data breakpoint %u", which - 9)
                                   : format("data breakpoint %u at 0x%04x", which - 9, value);
    return format("write debug register %u = 0x%0*x", which, int(2 * size), value);
}

std::string readMemory(Frame frame)
{
    return format("read %u bytes of %s", number(frame, 5, 2) * 2, place(number(frame, 1, 4)).c_str());
}

std::string writeMemory(Frame frame)
{
    return format("write 0x%04x to %s", number(frame, 5, 2), place(number(frame, 1, 4)).c_str());
}

std::string readRegister(Frame frame)
{
    return "read register " + registerName(number(frame, 1, 2));
}

std::string writeRegister(Frame frame)
{
    return format("write register %s = 0x%x", registerName(number(frame, 1, 2)).c_str(), number(frame, 3, 4));
}

std::string loadVariable(Frame frame)
{
    return format("load %u bytes at 0x%04x", number(frame, 1, 2), number(frame, 3, 3));
}

std::string loadFixed(Frame frame)
{
    return format("load %u bytes at 0x%04x", frame[1] * 2u, number(frame, 3, 3) << 1);
}

// One row for each first byte, or range of them. A null function stands for the fixed words.
struct Row {
    unsigned char first, last;
    unsigned minimumLength;
    const char* words;
    std::string (*describe)(Frame);
};

constexpr Row DebugRows[] = {
    {DebugRegister, DebugRegister + 14, 1, nullptr, debugRegister},
    {StopCPU, StopCPU, 1, "stop the CPU", nullptr},
    {Poll, Poll, 1, "poll", nullptr},
    {ReadRegisterMap, ReadRegisterMap, 2, "read the register map", nullptr},
    {ReadMemory, ReadMemory, 8, nullptr, readMemory},
    {WriteRegister, WriteRegister, 8, nullptr, writeRegister},
    {WriteMemory, WriteMemory, 7, nullptr, writeMemory},
    {Step, Step, 1, "single step", nullptr},
    {Run, Run, 1, "return from debug mode", nullptr},
    {ReadRegister, ReadRegister, 4, nullptr, readRegister},
};

constexpr Row LoaderRows[] = {
    {MasterErase, MasterErase, 1, "master erase", nullptr},
    {GetFlagsAndError, GetFlagsAndError, 1, "get flags and error", nullptr},
    {GetSupportedCommands, GetSupportedCommands, 1, "get supported commands", nullptr},
    {GetCodeSize, GetCodeSize, 1, "get code size", nullptr},
    {GetDataSize, GetDataSize, 1, "get data size", nullptr},
    {GetROMVersion, GetROMVersion, 1, "get ROM version", nullptr},
    {GetDeviceId, GetDeviceId, 1, "get device id", nullptr},
    {LoadVariable, LoadVariable, 6, nullptr, loadVariable},
    {LoadFixed, LoadFixed, 6, nullptr, loadFixed},
};

std::string inWords(std::span<const Row> rows, Frame frame)
{
    for (const Row& row : rows)
        if (!frame.empty() && frame[0] >= row.first && frame[0] <= row.last &&
            frame.size() >= row.minimumLength)
            return row.describe ? row.describe(frame) : row.words;
    return "unknown frame";
}

} // namespace

std::string debugFrameInWords(Frame frame)
{
    return inWords(DebugRows, frame);
}

std::string loaderFrameInWords(Frame frame)
{
    return "bootloader: " + inWords(LoaderRows, frame);
}

std::string instructionInWords(unsigned char instruction)
{
    switch (instruction) {
    case maxqd::ChannelInstruction: return "select the debug and bootloader channel";
    case maxqd::SystemProgrammingInstruction: return "select the system programming register";
    case maxqd::BypassInstruction: return "select the bypass register";
    default: return format("select instruction %u", instruction);
    }
}

} // namespace jtag
