#include "sim/Machine.h"
#include "sim/Decoder.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>

namespace maxq30 {

namespace {

template <class T> T* zeroed(size_t count)
{
    void* memory = std::calloc(count, sizeof(T));
    if (!memory)
        throw std::bad_alloc();
    return static_cast<T*>(memory);
}

const Op* runOffTheEnd(Machine& m, const Op*)
{
    return m.at(m.codeWords)->run(m, &m.outside);
}

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
constexpr uint32_t apcMasks[8] = {0, 1, 3, 7, 15, 0, 0, 0};

constexpr uint32_t PsfFlags = FlagE | FlagC | FlagS | FlagZ;

} // namespace

const Op* invalidInstruction(Machine& m, const Op* op)
{
    if (m.events)
        m.events->onInvalidInstruction(uint32_t(op - m.ops.get()) * 2);
    return op + op->words;
}

const Op* fetchFault(Machine& m, const Op* op)
{
    if (m.events)
        m.events->onCodeError(op->imm);
    return op;
}

Machine::Machine(uint32_t codeSize, uint32_t dataSize)
    : codeWords(checkedSize(codeSize) / 2), dataBytes(checkedSize(dataSize)), code(zeroed<uint8_t>(codeSize)),
      data(zeroed<uint8_t>(dataSize)), ops(zeroed<Op>(codeWords + 1))
{
    std::memset(code.get(), 0xFF, codeSize);
    outside.run = fetchFault;
    outside.cycles = 1;
    ops[codeWords].run = runOffTheEnd;
    ops[codeWords].cycles = 1;
    reset();
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
    attention = stopRequested || peripherals || interruptDue();
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
    case reg::AP: selectAccumulator(value & registerMasks[reg::AP]); return;
    case reg::APC:
        if (value & ApcClear)
            selectAccumulator(0);
        regs[reg::APC] = value & (ApcModulo | ApcDown);
        apMask = apcMasks[value & ApcModulo];
        apStep = value & ApcDown ? 0xFFFFFFFF : 1;
        return;
    case reg::PSF:
        equal = value & FlagE ? 1 : 0;
        carry = value & FlagC ? 1 : 0;
        regs[reg::PSF] = value & registerMasks[reg::PSF] & ~PsfFlags;
        return;
    case reg::IC:
    case reg::IMR:
    case reg::IIR:
        regs[number] = value & registerMasks[number];
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
        regs[number] = value & registerMasks[number];
}

void Machine::announceWidth(unsigned width, bool read, uint32_t address, uint32_t value)
{
    if (!events)
        return;
    switch (width) {
    case 1: announce<1>(read, address, value); break;
    case 2: announce<2>(read, address, value); break;
    default: announce<4>(read, address, value); break;
    }
}

// The rare accesses: unaligned ones, which are carried out one byte lower, those that reach the code
// memory through its window, and those that reach nothing.
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
    announceWidth(width, true, address, value);
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
    announceWidth(width, false, address, value);
}

void Machine::forget(uint32_t word, uint32_t count)
{
    // Prefix words before the first one may belong to the same instruction.
    uint32_t low = word - std::min(word, limits::MaximumPrefixes);
    low = std::max(low, m_decodedLow);
    uint64_t end = std::min<uint64_t>(uint64_t(word) + count, uint64_t(m_decodedHigh) + 1);
    for (uint64_t i = low; i < end; ++i)
        ops[i].run = nullptr;
}

void Machine::decode(const Op* op)
{
    uint32_t word = uint32_t(op - ops.get());
    m_decodedLow = std::min(m_decodedLow, word);
    m_decodedHigh = std::max(m_decodedHigh, word);
    ops[word] = decodeAt(*this, word);
}

} // namespace maxq30
