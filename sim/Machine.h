// The state of the processor, and the accesses that its operations share. Core is the door for users;
// this is for the decoder and the operations.
//
// Invariants: `acc` points at the A register that AP selects; `next` points into `ops` or at `outside`;
// an Op with `words` is the decoded form of the words that now stand at its place, and the Ops to which it
// hands over have a `run`; `attention` is set whenever something other than the next instruction may have
// to happen.
#pragma once

#include "sim/FlowCounts.h"
#include "sim/RegisterFile.h"
#include "sim/Zeroed.h"
#include "sim/limits.h"
#include "sim/maxqsim.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace maxq30 {

struct Machine;
struct Op;

// In the place of an instruction that has not been decoded yet: decodes and executes it.
bool decodeHere(Machine&, Op*, uint64_t left, uint64_t cycles, uint32_t acc);

// One decoded instruction, at the place of its first word. What a field means is up to the source and
// destination that `run` was made for.
struct Op {
    // Executes the instruction, and hands over to the one behind it until `left` of them are done or
    // something asks for attention. `cycles` is the time so far, `acc` the value of the accumulator. See
    // Threading.h.
    using Run = bool (*)(Machine&, Op*, uint64_t left, uint64_t cycles, uint32_t acc);

    // The source number of a jump whose target lies `imm` words on, as a signed number.
    static constexpr uint16_t FixedTarget = 0xFFFF;

    Run run;        // null where no instruction has led so far
    uint32_t imm;   // immediate value, or target in words
    uint32_t mask;  // bits that the destination keeps
    uint64_t taken; // how often this jump was taken, see FlowCounts
    uint16_t src;   // register number of the source, or of its pointer
    uint16_t dst;   // register number of the destination, or of its pointer, or a bit number
    int8_t srcStep; // what the access adds to the source's pointer
    int8_t dstStep;
    uint8_t words; // with prefix words; 0 until they have been decoded
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

    uint32_t ip() const { return next == &outside ? outsideIp : wordOf(next); }
    uint32_t wordOf(const Op* op) const { return uint32_t(op - ops.get()); }
    // The place of a word address to go on from, which may lie outside the code memory.
    Op* at(uint32_t word)
    {
        if (word < codeWords) [[likely]] {
            lead(&ops[word]);
            return &ops[word];
        }
        outsideIp = word;
        outside.imm = word * 2;
        return &outside;
    }

    // At most this many instructions from `next` on, a stop at the first one being passed over. Ends early
    // before another stop and behind an instruction that asks for attention. Adds to `done` what was
    // executed, also when a callback throws.
    void execute(uint64_t maximum, uint64_t& done);

    // Memory as programs see it. Accesses of two and four bytes lie at even addresses.
    template <unsigned Width> uint32_t load(uint32_t address)
    {
        if (!isQuick<Width>(address)) [[unlikely]]
            return loadElsewhere(address, Width);
        return fetch<Width>(data.get() + address);
    }
    template <unsigned Width> void store(uint32_t address, uint32_t value)
    {
        if (isQuick<Width>(address)) [[likely]]
            put<Width>(data.get() + address, value);
        else
            storeElsewhere(address, Width, value);
    }
    // Whether an access at this address succeeds and nobody wants to hear of it.
    template <unsigned Width> bool isQuick(uint32_t address) const
    {
        return address <= dataBytes - Width && (Width == 1 || !(address & 1)) &&
               !watched[address / limits::WatchedBytes];
    }
    void push(uint32_t value)
    {
        regs[reg::SP] -= 4;
        store<4>(regs[reg::SP], value);
    }

    // Behind an instruction that wrote the whole accumulator, when AP moves by itself.
    void moveAccumulator()
    {
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

    // Only accesses to these ranges are told; all of them without a list.
    void setDataRanges(std::vector<MAXQSIMDataRange> ranges, bool all);
    void updateWatched();

    // Word addresses before which a run ends.
    void setStops(std::span<const uint32_t> words);
    bool isStop(uint32_t word) const;

    // What executes the instruction, also where a stop lies.
    Op::Run& runOf(Op* op);
    // Fills in an Op of `ops` from the words at its place.
    void decode(Op* op);
    // So that what is known of the next instruction can be looked at.
    void decodeNext();
    // Forgets the decoded form of what reaches into `count` words from `word`, at the latest behind the
    // current instruction.
    void forget(uint32_t word, uint32_t count);
    uint16_t codeWord(uint32_t word) const { return uint16_t(fetch<2>(code.get() + word * 2)); }
    // What was executed so far, and taken; good until the next run.
    const MAXQSIMCount* counts();
    void resetCounts();

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
        b[0] = uint8_t(value);
        if constexpr (Width > 1)
            b[1] = uint8_t(value >> 8);
        if constexpr (Width > 2) {
            b[2] = uint8_t(value >> 16);
            b[3] = uint8_t(value >> 24);
        }
    }

    // Where a run is, for who looks at the processor before it is over: the instruction at hand, and how many
    // steps are left with it.
    void suspend(Op* op, uint64_t stepsLeft, uint64_t cyclesSoFar)
    {
        next = flowAt = op;
        left = stepsLeft;
        cycles = cyclesSoFar;
    }

    std::array<uint32_t, RegisterNumbers> regs{}; // PSF without the four flags; no IP, no FP
    uint32_t* acc = nullptr;
    uint32_t carry = 0; // flag C
    uint32_t equal = 0; // flag E; Z and S are looked up in the accumulator
    uint32_t apMask = 0;
    uint32_t apStep = 0;
    uint32_t codeWords;
    uint32_t dataBytes;
    Op* next = nullptr;
    Op* flowAt = nullptr; // the place that the counted flow has reached; `next`, unless IP was set since
    uint64_t left = 0;
    uint64_t cycles = 0;                             // since construction
    MAXQSIMCallBacks* events = nullptr;              // may be null
    MAXQSIMExtendedCallBacks* longEvents = nullptr;  // null: long accesses are told as two words
    MAXQSIMExtendedCallBacks* peripherals = nullptr; // null: the window is plain registers
    bool stopRequested = false;
    bool attention = false;

    Zeroed<uint8_t> code;
    Zeroed<uint8_t> data;
    Zeroed<uint8_t> watched; // not 0 for blocks of the data memory where an access may have to be told
    // One Op stands behind the last word, for programs that run off the end.
    Zeroed<Op> ops;
    FlowCounts flow;
    Op outside{};
    uint32_t outsideIp = 0;

private:
    struct Executing;
    struct Stop {
        uint32_t word;
        Op::Run run; // of the instruction, in whose place the stop stands
    };

    // As two words a long access is told upper half first, so that whoever keeps the latest access has
    // the address of the whole.
    void announce(unsigned width, bool read, uint32_t address, uint32_t value);
    bool isWatched(uint32_t address, unsigned width) const;
    uint32_t loadElsewhere(uint32_t address, unsigned width);
    void storeElsewhere(uint32_t address, unsigned width, uint32_t value);
    // Makes an Op one that may be executed.
    static void lead(Op* op)
    {
        if (!op->run) [[unlikely]]
            op->run = decodeHere;
    }
    void forgetNow(uint32_t word, uint32_t count);

    std::vector<MAXQSIMDataRange> m_ranges;
    bool m_tellAll = true;
    std::vector<Stop> m_stops;          // ascending; words outside the code memory may be among them
    uint32_t m_decodedLow = 0xFFFFFFFF; // bounds of what has been decoded
    uint32_t m_decodedHigh = 0;
    bool m_executing = false;
    bool m_counted = false;            // there is something to add up in `flow`
    uint32_t m_forgetLow = 0xFFFFFFFF; // what is to be forgotten behind the current instruction
    uint32_t m_forgetEnd = 0;
};

// Operations for what cannot execute. invalidInstruction goes on behind it, fetchFault stays where it is.
// executeOutside is fetchFault for places outside the code memory, at which a stop may lie; runOffTheEnd
// stands behind the last word.
bool invalidInstruction(Machine&, Op*, uint64_t left, uint64_t cycles, uint32_t acc);
bool fetchFault(Machine&, Op*, uint64_t left, uint64_t cycles, uint32_t acc);
bool executeOutside(Machine&, Op*, uint64_t left, uint64_t cycles, uint32_t acc);
bool runOffTheEnd(Machine&, Op*, uint64_t left, uint64_t cycles, uint32_t acc);

} // namespace maxq30
