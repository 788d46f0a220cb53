#include "sim/Machine.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace maxq30 {

namespace {

uint32_t checkedSize(uint32_t bytes)
{
    if (bytes < limits::MinimumMemory || bytes > limits::MaximumMemory || bytes % 4)
        throw std::invalid_argument("memory size out of range");
    return bytes;
}

// Bits of APC: the number of low AP bits that count, the direction, and a write-only clear.
constexpr uint32_t ApcModulo = 0x07;
constexpr uint32_t ApcDown = 0x40;
constexpr uint32_t ApcClear = 0x80;
constexpr uint32_t ApcMasks[8] = {0, 1, 3, 7, 15, 0, 0, 0};

constexpr uint32_t PsfFlags = FlagE | FlagC | FlagS | FlagZ;

} // namespace

Machine::Machine(uint32_t codeSize, uint32_t dataSize)
    : codeWords(checkedSize(codeSize) / 2), dataBytes(checkedSize(dataSize)), code(zeroed<uint8_t>(codeSize)),
      data(zeroed<uint8_t>(dataSize)), watched(zeroed<uint8_t>(dataSize / limits::WatchedBytes + 1)),
      ops(zeroed<Op>(codeWords + 1)), flow(codeWords)
{
    std::memset(code.get(), 0xFF, codeSize);
    outside.run = executeOutside;
    outside.cycles = 1;
    ops[codeWords].run = runOffTheEnd;
    reset();
    flowAt = next;
    flow.enter(0);
}

void Machine::reset()
{
    regs.fill(0);
    regs[reg::SP] = dataBytes;
    carry = equal = 0;
    apMask = apStep = 0;
    selectAccumulator(0);
    next = at(0);
    updateAttention();
}

void Machine::updateAttention()
{
    attention = stopRequested || interruptDue() || m_forgetEnd;
}

void Machine::leaveInterrupt()
{
    regs[reg::IC] &= ~InterruptInService;
    updateAttention();
}

uint32_t Machine::readRegister(unsigned number)
{
    switch (number) {
    case reg::PSF:
        return regs[reg::PSF] | (equal ? FlagE : 0) | (carry ? FlagC : 0) | (*acc >> 31 ? FlagS : 0) |
               (*acc == 0 ? FlagZ : 0);
    case reg::ACC:
    case reg::ActiveA: return *acc;
    case reg::IP: return ip();
    case reg::FP: return regs[reg::BP] + regs[reg::OFFS];
    case reg::DP1ForDebuggers: return regs[reg::DP1];
    }
    if (isPeripheral(number) && peripherals)
        return peripherals->onPeripheralLoad(number, 4);
    return regs[number];
}

void Machine::writeRegister(unsigned number, uint32_t value)
{
    switch (number) {
    case reg::AP: selectAccumulator(value & RegisterMasks[reg::AP]); return;
    case reg::APC:
        if (value & ApcClear)
            selectAccumulator(0);
        regs[reg::APC] = value & (ApcModulo | ApcDown);
        apMask = ApcMasks[value & ApcModulo];
        apStep = value & ApcDown ? 0xFFFFFFFF : 1;
        return;
    case reg::PSF:
        equal = value & FlagE ? 1 : 0;
        carry = value & FlagC ? 1 : 0;
        regs[reg::PSF] = value & RegisterMasks[reg::PSF] & ~PsfFlags;
        return;
    case reg::IC:
    case reg::IMR:
    case reg::IIR:
        regs[number] = value & RegisterMasks[number];
        updateAttention();
        return;
    case reg::ACC:
    case reg::ActiveA: *acc = value; return;
    case reg::IP: next = at(value); return;
    case reg::FP: regs[reg::OFFS] = value - regs[reg::BP]; return;
    case reg::DP1ForDebuggers: regs[reg::DP1] = value; return;
    }
    if (isPeripheral(number) && peripherals)
        peripherals->onPeripheralStore(number, 4, value);
    else
        regs[number] = value & RegisterMasks[number];
}

void Machine::setDataRanges(std::vector<MAXQSIMDataRange> ranges, bool all)
{
    m_ranges = std::move(ranges);
    m_tellAll = all;
    updateWatched();
}

void Machine::updateWatched()
{
    size_t blocks = dataBytes / limits::WatchedBytes + 1;
    std::memset(watched.get(), events && m_tellAll, blocks);
    if (!events || m_tellAll)
        return;
    for (const MAXQSIMDataRange& range : m_ranges) {
        // An access of four bytes may begin three bytes before the range.
        uint32_t first = range.first - std::min(range.first, 3u);
        if (first < dataBytes && range.first <= range.last)
            std::memset(watched.get() + first / limits::WatchedBytes, 1,
                        std::min(range.last, dataBytes - 1) / limits::WatchedBytes -
                            first / limits::WatchedBytes + 1);
    }
}

bool Machine::isWatched(uint32_t address, unsigned width) const
{
    return m_tellAll || std::any_of(m_ranges.begin(), m_ranges.end(), [=](const MAXQSIMDataRange& range) {
               return address <= range.last && address + (width - 1) >= range.first;
           });
}

void Machine::announce(unsigned width, bool read, uint32_t address, uint32_t value)
{
    if (!events || !isWatched(address, width))
        return;
    if (width == 1) {
        events->onDataAccess(read, address, value & 0xFF, 1);
    } else if (width == 2) {
        events->onDataAccess(read, address, value & 0xFFFF, 0);
    } else if (longEvents) {
        longEvents->onLongDataAccess(read, address, value);
    } else {
        events->onDataAccess(read, address + 2, value >> 16, 0);
        events->onDataAccess(read, address, value & 0xFFFF, 0);
    }
}

// The accesses that are not quick: told ones, unaligned ones, which are carried out one byte lower, those
// that reach the code memory through its window, and those that reach nothing.
uint32_t Machine::loadElsewhere(uint32_t address, unsigned width)
{
    if (width > 1 && (address & 1)) {
        if (events)
            events->onDataAlignmentError(true, address);
        address &= ~1u;
    }
    const uint8_t* from = nullptr;
    uint32_t codeOffset = address - limits::CodeWindow;
    if (address <= dataBytes - width)
        from = data.get() + address;
    else if (codeOffset <= codeWords * 2 - width)
        from = code.get() + codeOffset;
    if (!from) {
        if (events)
            events->onDataError(true, address);
        return 0;
    }
    uint32_t value = width == 1 ? fetch<1>(from) : width == 2 ? fetch<2>(from) : fetch<4>(from);
    announce(width, true, address, value);
    return value;
}

void Machine::storeElsewhere(uint32_t address, unsigned width, uint32_t value)
{
    if (width > 1 && (address & 1)) {
        if (events)
            events->onDataAlignmentError(false, address);
        address &= ~1u;
    }
    if (address > dataBytes - width) {
        if (events)
            events->onDataError(false, address);
        return;
    }
    if (width == 1)
        put<1>(data.get() + address, value);
    else if (width == 2)
        put<2>(data.get() + address, value);
    else
        put<4>(data.get() + address, value);
    announce(width, false, address, value);
}

} // namespace maxq30
