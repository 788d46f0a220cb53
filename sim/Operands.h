// What reading each kind of source and writing each kind of destination does. Each struct is one kind;
// Dispatch combines them.
#pragma once

#include "sim/Machine.h"

#include <bit>

namespace maxq30 {

namespace source {

struct Immediate {
    static uint32_t read(Machine&, const Op* op) { return op->imm; }
};

struct Register {
    static uint32_t read(Machine& m, const Op* op) { return m.regs[op->src]; }
};

struct Accumulator {
    static uint32_t read(Machine& m, const Op*) { return *m.acc; }
};

struct Special {
    static uint32_t read(Machine& m, const Op* op) { return m.readRegister(op->src); }
};

struct Pop {
    static uint32_t read(Machine& m, const Op*) { return m.pop(); }
};

struct PopInterrupt {
    static uint32_t read(Machine& m, const Op*)
    {
        m.leaveInterrupt();
        return m.pop();
    }
};

template <unsigned Width> struct Pointer {
    static uint32_t read(Machine& m, const Op* op)
    {
        uint32_t address = m.regs[op->src];
        m.regs[op->src] = address + uint32_t(op->srcStep);
        return m.load<Width>(address);
    }
};

template <unsigned Width> struct Frame {
    static uint32_t read(Machine& m, const Op* op)
    {
        uint32_t address = m.regs[reg::BP] + m.regs[reg::OFFS];
        m.regs[reg::OFFS] += uint32_t(op->srcStep);
        return m.load<Width>(address);
    }
};

using PointerByte = Pointer<1>;
using PointerWord = Pointer<2>;
using PointerLong = Pointer<4>;
using FrameByte = Frame<1>;
using FrameWord = Frame<2>;
using FrameLong = Frame<4>;

} // namespace source

namespace destination {

inline uint32_t withBit(const Op* op, uint32_t value)
{
    return (value & ~uint32_t(op->src)) | op->imm;
}

struct Register {
    static void write(Machine& m, const Op* op, uint32_t value) { m.regs[op->dst] = value & op->mask; }
    static void change(Machine& m, const Op* op) { write(m, op, withBit(op, m.regs[op->dst])); }
};

struct Accumulator {
    static void write(Machine& m, const Op*, uint32_t value)
    {
        *m.acc = value;
        m.accumulatorWritten();
    }
    static void change(Machine& m, const Op* op) { *m.acc = withBit(op, *m.acc); }
};

struct Special {
    static void write(Machine& m, const Op* op, uint32_t value) { m.writeRegister(op->dst, value); }
    static void change(Machine& m, const Op* op)
    {
        m.writeRegister(op->dst, withBit(op, m.readRegister(op->dst)));
    }
};

template <unsigned Width> struct Pointer {
    static void write(Machine& m, const Op* op, uint32_t value)
    {
        uint32_t address = m.regs[op->dst];
        m.regs[op->dst] = address + uint32_t(op->dstStep);
        m.store<Width>(address, value);
    }
    static void change(Machine& m, const Op* op)
    {
        write(m, op, withBit(op, m.load<Width>(m.regs[op->dst])));
    }
};

template <unsigned Width> struct Frame {
    static void write(Machine& m, const Op* op, uint32_t value)
    {
        uint32_t address = m.regs[reg::BP] + m.regs[reg::OFFS];
        m.regs[reg::OFFS] += uint32_t(op->dstStep);
        m.store<Width>(address, value);
    }
    static void change(Machine& m, const Op* op)
    {
        write(m, op, withBit(op, m.load<Width>(m.regs[reg::BP] + m.regs[reg::OFFS])));
    }
};

using PointerByte = Pointer<1>;
using PointerWord = Pointer<2>;
using PointerLong = Pointer<4>;
using FrameByte = Frame<1>;
using FrameWord = Frame<2>;
using FrameLong = Frame<4>;

struct Nul {
    static void write(Machine&, const Op*, uint32_t) {}
};

struct Push {
    static void write(Machine& m, const Op*, uint32_t value) { m.push(value); }
};

struct And {
    static void write(Machine& m, const Op* op, uint32_t value) { Accumulator::write(m, op, *m.acc & value); }
};

struct Or {
    static void write(Machine& m, const Op* op, uint32_t value) { Accumulator::write(m, op, *m.acc | value); }
};

struct Xor {
    static void write(Machine& m, const Op* op, uint32_t value) { Accumulator::write(m, op, *m.acc ^ value); }
};

struct Add {
    static void write(Machine& m, const Op* op, uint32_t value)
    {
        uint32_t sum = *m.acc + value;
        m.carry = sum < value;
        Accumulator::write(m, op, sum);
    }
};

struct AddCarry {
    static void write(Machine& m, const Op* op, uint32_t value)
    {
        uint64_t sum = uint64_t(*m.acc) + value + m.carry;
        m.carry = uint32_t(sum >> 32);
        Accumulator::write(m, op, uint32_t(sum));
    }
};

struct Sub {
    static void write(Machine& m, const Op* op, uint32_t value)
    {
        uint32_t difference = *m.acc - value;
        m.carry = *m.acc < value;
        Accumulator::write(m, op, difference);
    }
};

struct SubBorrow {
    static void write(Machine& m, const Op* op, uint32_t value)
    {
        uint64_t difference = uint64_t(*m.acc) - value - m.carry;
        m.carry = uint32_t(difference >> 32) & 1;
        Accumulator::write(m, op, uint32_t(difference));
    }
};

struct Compare {
    static void write(Machine& m, const Op*, uint32_t value) { m.equal = *m.acc == value; }
};

struct ClearBits {
    static void write(Machine& m, const Op* op, uint32_t value)
    {
        Accumulator::write(m, op, *m.acc & ~value);
    }
};

struct CountLeadingZeros {
    static void write(Machine& m, const Op* op, uint32_t value)
    {
        Accumulator::write(m, op, uint32_t(std::countl_zero(value)));
    }
};

struct Insert {
    static void write(Machine& m, const Op* op, uint32_t value)
    {
        uint32_t mask = op->mask;
        Accumulator::write(m, op, (*m.acc & ~mask) | (value << op->dst & mask));
    }
};

struct CarryFromBit {
    static void write(Machine& m, const Op* op, uint32_t value) { m.carry = value >> op->dst & 1; }
};

} // namespace destination

} // namespace maxq30
