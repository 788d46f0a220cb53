// What reading each kind of source and writing each kind of destination does. Each struct is one kind;
// Dispatch combines them.
//
// A kind says how far it reaches. What reaches memory is asked first whether the access is quick, and then
// goes straight to the bytes (`Direct`); otherwise, and where the outside may have a say, the instruction is
// executed with `Checked` accesses.
#pragma once

#include "sim/Instructions.h"
#include "sim/Machine.h"

#include <bit>

namespace maxq30 {

enum class Reach { Processor, Memory, Outside };

struct Direct {
    template <unsigned Width> static uint32_t load(Machine& m, uint32_t address)
    {
        return Machine::fetch<Width>(m.data.get() + address);
    }
    template <unsigned Width> static void store(Machine& m, uint32_t address, uint32_t value)
    {
        Machine::put<Width>(m.data.get() + address, value);
    }
};

struct Checked {
    template <unsigned Width> static uint32_t load(Machine& m, uint32_t address)
    {
        return m.load<Width>(address);
    }
    template <unsigned Width> static void store(Machine& m, uint32_t address, uint32_t value)
    {
        m.store<Width>(address, value);
    }
};

// Ways to memory, by the register number of an Op.

struct ByPointer {
    static uint32_t address(const Machine& m, unsigned number) { return m.regs[number]; }
    static void move(Machine& m, unsigned number, int step) { m.regs[number] += uint32_t(step); }
};

struct ByFrame {
    static uint32_t address(const Machine& m, unsigned) { return m.regs[reg::BP] + m.regs[reg::OFFS]; }
    static void move(Machine& m, unsigned, int step) { m.regs[reg::OFFS] += uint32_t(step); }
};

namespace source {

struct Immediate {
    static constexpr Reach reach = Reach::Processor;
    template <class> static uint32_t read(Machine&, const Op* op, uint32_t) { return op->imm; }
};

struct Register {
    static constexpr Reach reach = Reach::Processor;
    template <class> static uint32_t read(Machine& m, const Op* op, uint32_t) { return m.regs[op->src]; }
};

struct Accumulator {
    static constexpr Reach reach = Reach::Processor;
    template <class> static uint32_t read(Machine&, const Op*, uint32_t acc) { return acc; }
};

struct FramePointer {
    static constexpr Reach reach = Reach::Processor;
    template <class> static uint32_t read(Machine& m, const Op*, uint32_t)
    {
        return m.regs[reg::BP] + m.regs[reg::OFFS];
    }
};

struct Special {
    static constexpr Reach reach = Reach::Outside;
    template <class> static uint32_t read(Machine& m, const Op* op, uint32_t)
    {
        return m.readRegister(op->src);
    }
};

template <unsigned Width, class Way> struct Memory {
    static constexpr Reach reach = Reach::Memory;
    static bool isQuick(const Machine& m, const Op* op) { return m.isQuick<Width>(Way::address(m, op->src)); }
    template <class Access> static uint32_t read(Machine& m, const Op* op, uint32_t)
    {
        uint32_t address = Way::address(m, op->src);
        Way::move(m, op->src, op->srcStep);
        return Access::template load<Width>(m, address);
    }
};

using PointerByte = Memory<1, ByPointer>;
using PointerWord = Memory<2, ByPointer>;
using PointerLong = Memory<4, ByPointer>;
using FrameByte = Memory<1, ByFrame>;
using FrameWord = Memory<2, ByFrame>;
using FrameLong = Memory<4, ByFrame>;

// The stack pointer moves behind the access.
struct Pop {
    static constexpr Reach reach = Reach::Memory;
    static bool isQuick(const Machine& m, const Op*) { return m.isQuick<4>(m.regs[reg::SP]); }
    template <class Access> static uint32_t read(Machine& m, const Op*, uint32_t)
    {
        uint32_t value = Access::template load<4>(m, m.regs[reg::SP]);
        m.regs[reg::SP] += 4;
        return value;
    }
};

struct PopInterrupt {
    static constexpr Reach reach = Reach::Outside;
    template <class Access> static uint32_t read(Machine& m, const Op* op, uint32_t acc)
    {
        m.leaveInterrupt();
        return Pop::read<Access>(m, op, acc);
    }
};

} // namespace source

namespace destination {

inline uint32_t withBit(const Op* op, uint32_t value)
{
    return (value & ~uint32_t(op->src)) | op->imm;
}

// Each of these leaves in `acc` the value that the accumulator then has.

struct Register {
    static constexpr Reach reach = Reach::Processor;
    template <class> static void write(Machine& m, const Op* op, uint32_t value, uint32_t&)
    {
        m.regs[op->dst] = value & op->mask;
    }
    template <class Access> static void change(Machine& m, const Op* op, uint32_t& acc)
    {
        write<Access>(m, op, withBit(op, m.regs[op->dst]), acc);
    }
};

// A[n], which may be the accumulator.
struct Numbered {
    static constexpr Reach reach = Reach::Processor;
    template <class> static void write(Machine& m, const Op* op, uint32_t value, uint32_t& acc)
    {
        uint32_t* place = &m.regs[op->dst];
        *place = value;
        acc = place == m.acc ? value : acc;
    }
    template <class Access> static void change(Machine& m, const Op* op, uint32_t& acc)
    {
        write<Access>(m, op, withBit(op, m.regs[op->dst]), acc);
    }
};

struct Accumulator {
    static constexpr Reach reach = Reach::Processor;
    template <class> static void write(Machine& m, const Op*, uint32_t value, uint32_t& acc)
    {
        *m.acc = acc = value;
        if (m.apMask) [[unlikely]] {
            m.moveAccumulator();
            acc = *m.acc;
        }
    }
    template <class> static void change(Machine& m, const Op* op, uint32_t& acc)
    {
        *m.acc = acc = withBit(op, acc);
    }
};

struct FramePointer {
    static constexpr Reach reach = Reach::Processor;
    template <class> static void write(Machine& m, const Op*, uint32_t value, uint32_t&)
    {
        m.regs[reg::OFFS] = value - m.regs[reg::BP];
    }
    template <class Access> static void change(Machine& m, const Op* op, uint32_t& acc)
    {
        write<Access>(m, op, withBit(op, source::FramePointer::read<Access>(m, op, acc)), acc);
    }
};

struct Special {
    static constexpr Reach reach = Reach::Outside;
    template <class> static void write(Machine& m, const Op* op, uint32_t value, uint32_t&)
    {
        m.writeRegister(op->dst, value);
    }
    template <class> static void change(Machine& m, const Op* op, uint32_t&)
    {
        m.writeRegister(op->dst, withBit(op, m.readRegister(op->dst)));
    }
};

template <unsigned Width, class Way> struct Memory {
    static constexpr Reach reach = Reach::Memory;
    static bool isQuick(const Machine& m, const Op* op) { return m.isQuick<Width>(Way::address(m, op->dst)); }
    template <class Access> static void write(Machine& m, const Op* op, uint32_t value, uint32_t&)
    {
        uint32_t address = Way::address(m, op->dst);
        Way::move(m, op->dst, op->dstStep);
        Access::template store<Width>(m, address, value);
    }
    template <class Access> static void change(Machine& m, const Op* op, uint32_t& acc)
    {
        uint32_t value = Access::template load<Width>(m, Way::address(m, op->dst));
        write<Access>(m, op, withBit(op, value), acc);
    }
};

using PointerByte = Memory<1, ByPointer>;
using PointerWord = Memory<2, ByPointer>;
using PointerLong = Memory<4, ByPointer>;
using FrameByte = Memory<1, ByFrame>;
using FrameWord = Memory<2, ByFrame>;
using FrameLong = Memory<4, ByFrame>;

struct Push {
    static constexpr Reach reach = Reach::Memory;
    static bool isQuick(const Machine& m, const Op*) { return m.isQuick<4>(m.regs[reg::SP] - 4); }
    template <class Access> static void write(Machine& m, const Op*, uint32_t value, uint32_t&)
    {
        m.regs[reg::SP] -= 4;
        Access::template store<4>(m, m.regs[reg::SP], value);
    }
};

struct Nul {
    static constexpr Reach reach = Reach::Processor;
    template <class> static void write(Machine&, const Op*, uint32_t, uint32_t&) {}
};

// Operations with the accumulator: its new value, after which AP moves, or a flag.
#define X(name, statement)                                                                                   \
    struct name {                                                                                            \
        static constexpr Reach reach = Reach::Processor;                                                     \
        template <class Access>                                                                              \
        static void write(Machine& m, [[maybe_unused]] const Op* op, uint32_t value, uint32_t& acc)          \
        {                                                                                                    \
            uint32_t a = acc;                                                                                \
            [[maybe_unused]] uint32_t& c = m.carry;                                                          \
            statement;                                                                                       \
            Accumulator::write<Access>(m, op, a, acc);                                                       \
        }                                                                                                    \
    };
MAXQ30_ARITHMETIC(X)
#undef X
#define X(name, statement)                                                                                   \
    struct name {                                                                                            \
        static constexpr Reach reach = Reach::Processor;                                                     \
        template <class>                                                                                     \
        static void write(Machine& m, [[maybe_unused]] const Op* op, uint32_t value,                         \
                          [[maybe_unused]] uint32_t& acc)                                                    \
        {                                                                                                    \
            statement;                                                                                       \
        }                                                                                                    \
    };
MAXQ30_TESTS(X)
#undef X

} // namespace destination

// Conditions of jumps.
namespace condition {

#define X(name, holds)                                                                                       \
    struct name {                                                                                            \
        static bool isMet([[maybe_unused]] Machine& m, [[maybe_unused]] uint32_t acc) { return holds; }      \
    };
MAXQ30_JUMPS(X)
#undef X

} // namespace condition

} // namespace maxq30
