// The state of the processor, and the accesses that its operations share. Core is the door for users;
// this is for the decoder and the operations.
//
// Invariants: `acc` points at the A register that AP selects; `next` points into `ops` or at
// `outside`; an Op with a `run` is the decoded form of the words that now stand at its place;
// `attention` is set whenever something other than the next instruction may have to happen.
#pragma once

#include "sim/RegisterFile.h"
#include "sim/limits.h"
#include "sim/maxqsim.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace maxq30 {

struct Machine;

// One decoded instruction, at the place of its first word. What a field means is up to the source and
// destination that `run` was made for.
struct Op {
    // Executes and answers the instruction that follows.
    using Run = const Op* (*)(Machine&, const Op*);

    Run run;        // null until the words here have been decoded
    uint32_t imm;   // immediate value, or target in words
    uint32_t mask;  // bits that the destination keeps
    uint16_t src;   // register number of the source, or of its pointer
    uint16_t dst;   // the same for the destination, or a bit number
    int8_t srcStep; // what the access adds to the source's pointer
    int8_t dstStep;
    uint8_t words; // with prefix words
    uint8_t cycles;
};

struct Machine {
    Machine(uint32_t codeBytes, uint32_t dataBytes);
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    // Registers to their reset state; memories stay.
    void reset();

    // Any register number, without side effects on pointers or the stack; 0 where nothing is.
    uint32_t readRegister(unsigned number);
    void writeRegister(unsigned number, uint32_t value);

    uint32_t ip() const { return next == &outside ? outsideIp : uint32_t(next - ops.get()); }
    // The place of a word address to go on from, which may lie outside the code memory.
    const Op* at(uint32_t word)
    {
        if (word < codeWords) [[likely]]
            return &ops[word];
        outsideIp = word;
        outside.imm = word * 2;
        return &outside;
    }

    // Memory as programs see it. Accesses of two and four bytes lie at even addresses.
    template <unsigned Width> uint32_t load(uint32_t address)
    {
        if (address <= dataBytes - Width && (Width == 1 || !(address & 1))) [[likely]] {
            uint32_t value = fetch<Width>(data.get() + address);
            if (events)
                announce<Width>(true, address, value);
            return value;
        }
        return loadElsewhere(address, Width);
    }
    template <unsigned Width> void store(uint32_t address, uint32_t value)
    {
        if (address <= dataBytes - Width && (Width == 1 || !(address & 1))) [[likely]] {
            put<Width>(data.get() + address, value);
            if (events)
                announce<Width>(false, address, value);
            return;
        }
        storeElsewhere(address, Width, value);
    }
    void push(uint32_t value)
    {
        regs[reg::SP] -= 4;
        store<4>(regs[reg::SP], value);
    }
    uint32_t pop()
    {
        uint32_t value = load<4>(regs[reg::SP]);
        regs[reg::SP] += 4;
        return value;
    }

    // After an instruction that wrote the whole accumulator.
    void accumulatorWritten()
    {
        if (apMask) [[unlikely]]
            selectAccumulator((regs[reg::AP] & ~apMask) | ((regs[reg::AP] + apStep) & apMask));
    }
    void selectAccumulator(uint32_t n)
    {
        regs[reg::AP] = n;
        acc = &regs[reg::A(n)];
    }
    void leaveInterrupt();
    void updateAttention();
    bool interruptDue() const
    {
        return (regs[reg::IC] & (InterruptEnable | InterruptInService)) == InterruptEnable &&
               (regs[reg::IIR] & regs[reg::IMR]);
    }

    // Fills in an Op of `ops` from the words at its place.
    void decode(const Op* op);
    // Forgets the decoded form of what reaches into `count` words from `word`.
    void forget(uint32_t word, uint32_t count);
    uint16_t codeWord(uint32_t word) const { return uint16_t(fetch<2>(code.get() + word * 2)); }

    template <unsigned Width> static uint32_t fetch(const uint8_t* b)
    {
        if constexpr (Width == 1)
            return b[0];
        else if constexpr (Width == 2)
            return uint32_t(b[0] | b[1] << 8);
        else
            return uint32_t(b[0]) | uint32_t(b[1]) << 8 | uint32_t(b[2]) << 16 | uint32_t(b[3]) << 24;
    }
    template <unsigned Width> static void put(uint8_t* b, uint32_t value)
    {
        for (unsigned i = 0; i < Width; ++i)
            b[i] = uint8_t(value >> (8 * i));
    }

    std::array<uint32_t, RegisterNumbers> regs{}; // PSF without the four flags; no IP, no FP
    uint32_t* acc = nullptr;
    uint32_t carry = 0; // flag C
    uint32_t equal = 0; // flag E; Z and S are looked up in the accumulator
    uint32_t apMask = 0;
    uint32_t apStep = 0;
    const Op* next = nullptr;
    MAXQSIMCallBacks* events = nullptr;              // may be null
    MAXQSIMExtendedCallBacks* longEvents = nullptr;  // null: long accesses are told as two words
    MAXQSIMExtendedCallBacks* peripherals = nullptr; // null: the window is plain registers
    bool stopRequested = false;
    bool attention = false;

    uint32_t codeWords;
    uint32_t dataBytes;
    struct Free {
        void operator()(void* p) const { std::free(p); }
    };
    // From calloc, so that what no program touches costs no memory. One Op stands behind the last
    // word, for programs that run off the end.
    std::unique_ptr<uint8_t[], Free> code;
    std::unique_ptr<uint8_t[], Free> data;
    std::unique_ptr<Op[], Free> ops;
    Op outside{};
    uint32_t outsideIp = 0;

private:
    // As two words a long access is told upper half first, so that whoever keeps the latest access has
    // the address of the whole.
    template <unsigned Width> void announce(bool read, uint32_t address, uint32_t value)
    {
        if constexpr (Width == 4) {
            if (longEvents) {
                longEvents->onLongDataAccess(read, address, value);
                return;
            }
            events->onDataAccess(read, address + 2, value >> 16, 0);
            events->onDataAccess(read, address, value & 0xFFFF, 0);
        } else {
            events->onDataAccess(read, address, value & (Width == 1 ? 0xFF : 0xFFFF), Width == 1);
        }
    }
    void announceWidth(unsigned width, bool read, uint32_t address, uint32_t value);
    uint32_t loadElsewhere(uint32_t address, unsigned width);
    void storeElsewhere(uint32_t address, unsigned width, uint32_t value);

    uint32_t m_decodedLow = 0xFFFFFFFF; // bounds of what has been decoded
    uint32_t m_decodedHigh = 0;
};

// Operations that the decoder sets for what cannot execute. invalidInstruction goes on behind it,
// fetchFault stays where it is.
const Op* invalidInstruction(Machine&, const Op*);
const Op* fetchFault(Machine&, const Op*);

} // namespace maxq30
