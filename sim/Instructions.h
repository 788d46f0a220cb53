// The instructions: kinds of sources and destinations, conditions, and operations, each written down once.
#pragma once

#include <cstddef>
#include <cstdint>

namespace maxq30 {

// Kinds of sources. An Op gives the details: `imm` for Immediate, the register number in `src`, for the
// accesses through a pointer the step in `srcStep`.
#define MAXQ30_SOURCES(X)                                                                                    \
    X(Immediate)                                                                                             \
    X(Register) /* plain storage */                                                                          \
    X(Accumulator)                                                                                           \
    X(FramePointer)                                                                                          \
    X(Special) /* registers that are computed, or belong to a simulated peripheral */                        \
    X(Pop)                                                                                                   \
    X(PopInterrupt)                                                                                          \
    X(PointerByte) /* through DP[0] or DP[1] */                                                              \
    X(PointerWord)                                                                                           \
    X(PointerLong)                                                                                           \
    X(FrameByte) /* at BP + OFFS */                                                                          \
    X(FrameWord)                                                                                             \
    X(FrameLong)

// Kinds of destinations that can also be the place of one changed bit: `imm` then is the bit's new
// value and `src` its mask.
#define MAXQ30_PLACES(X)                                                                                     \
    X(Register)                                                                                              \
    X(Numbered) /* A[n] */                                                                                   \
    X(Accumulator)                                                                                           \
    X(FramePointer)                                                                                          \
    X(Special)                                                                                               \
    X(PointerByte)                                                                                           \
    X(PointerWord)                                                                                           \
    X(PointerLong)                                                                                           \
    X(FrameByte)                                                                                             \
    X(FrameWord)                                                                                             \
    X(FrameLong)

// Destinations that only take a value.
#define MAXQ30_SINKS(X)                                                                                      \
    X(Nul)                                                                                                   \
    X(Push)

// Operations that give the accumulator a new value: what happens to its value `a` and the carry `c`.
#define MAXQ30_ARITHMETIC(X)                                                                                 \
    X(And, a &= value)                                                                                       \
    X(Or, a |= value)                                                                                        \
    X(Xor, a ^= value)                                                                                       \
    X(ClearBits, a &= ~value)                                                                                \
    X(Add, a += value; c = a < value)                                                                        \
    X(Sub, c = a < value; a -= value)                                                                        \
    X(AddCarry, uint64_t sum = uint64_t(a) + value + c; a = uint32_t(sum); c = uint32_t(sum >> 32))          \
    X(SubBorrow, uint64_t rest = uint64_t(a) - value - c; a = uint32_t(rest); c = uint32_t(rest >> 32) & 1)  \
    X(CountLeadingZeros, a = uint32_t(std::countl_zero(value)))                                              \
    X(Insert, a = (a & ~op->mask) | (value << op->dst & op->mask))

// Operations that only set a flag.
#define MAXQ30_TESTS(X)                                                                                      \
    X(Compare, m.equal = acc == value)                                                                       \
    X(CarryFromBit, m.carry = value >> op->dst & 1)

// Destinations whose value is a code target in words. The source is read only when the jump is taken.
#define MAXQ30_JUMPS(X)                                                                                      \
    X(Jump, true)                                                                                            \
    X(JumpZero, acc == 0)                                                                                    \
    X(JumpCarry, m.carry)                                                                                    \
    X(JumpEqual, m.equal)                                                                                    \
    X(JumpSign, acc >> 31)                                                                                   \
    X(JumpNotZero, acc != 0)                                                                                 \
    X(JumpNotCarry, !m.carry)                                                                                \
    X(JumpNotEqual, !m.equal)                                                                                \
    X(LoopZero, (m.regs[reg::LC0] = (m.regs[reg::LC0] - 1) & 0xFFFF) != 0)                                   \
    X(LoopOne, (m.regs[reg::LC1] = (m.regs[reg::LC1] - 1) & 0xFFFF) != 0)                                    \
    X(Call, true)

enum class SourceKind : uint8_t {
#define X(name) name,
    MAXQ30_SOURCES(X)
#undef X
};

// Places first, jumps last.
enum class DestinationKind : uint8_t {
#define X(name, ...) name,
    MAXQ30_PLACES(X) MAXQ30_SINKS(X) MAXQ30_ARITHMETIC(X) MAXQ30_TESTS(X) MAXQ30_JUMPS(X)
#undef X
};

#define X(...) +1
inline constexpr size_t SourceKinds = 0 MAXQ30_SOURCES(X);
inline constexpr size_t PlaceKinds = 0 MAXQ30_PLACES(X);
inline constexpr size_t JumpKinds = 0 MAXQ30_JUMPS(X);
inline constexpr size_t PlainKinds = PlaceKinds MAXQ30_SINKS(X) MAXQ30_ARITHMETIC(X) MAXQ30_TESTS(X);
inline constexpr size_t DestinationKinds = PlainKinds + JumpKinds;
#undef X

// Operations without operands that rewrite the accumulator: index of the destination in module 10,
// index of the source in module 10, name, what happens to the value `a` and the carry `c`.
#define MAXQ30_ACCUMULATOR_OPERATIONS(X)                                                                     \
    X(0, 1, Complement, a = ~a)                                                                              \
    X(0, 2, ShiftLeft, c = a >> 31; a <<= 1)                                                                 \
    X(0, 3, ShiftLeft2, c = a >> 30 & 1; a <<= 2)                                                            \
    X(0, 4, RotateLeft, a = a << 1 | a >> 31)                                                                \
    X(0, 5, RotateLeftCarry, uint32_t out = a >> 31; a = a << 1 | c; c = out)                                \
    X(0, 6, ShiftLeft4, c = a >> 28 & 1; a <<= 4)                                                            \
    X(0, 7, ExchangeNibbles, a = (a & 0x0F0F0F0F) << 4 | (a >> 4 & 0x0F0F0F0F))                              \
    X(0, 8, ExchangeBytes, a = (a & 0x00FF00FF) << 8 | (a >> 8 & 0x00FF00FF))                                \
    X(0, 9, Negate, a = 0 - a)                                                                               \
    X(0, 10, ShiftRight, c = a & 1; a >>= 1)                                                                 \
    X(0, 11, ArithmeticRight4, c = a >> 3 & 1; a = uint32_t(int32_t(a) >> 4))                                \
    X(0, 12, RotateRight, a = a >> 1 | a << 31)                                                              \
    X(0, 13, RotateRightCarry, uint32_t out = a & 1; a = a >> 1 | c << 31; c = out)                          \
    X(0, 14, ArithmeticRight2, c = a >> 1 & 1; a = uint32_t(int32_t(a) >> 2))                                \
    X(0, 15, ArithmeticRight, c = a & 1; a = uint32_t(int32_t(a) >> 1))                                      \
    X(4, 0, Byte1, a = a & 0xFF)                                                                             \
    X(4, 1, Byte2, a = a >> 8 & 0xFF)                                                                        \
    X(4, 2, Byte3, a = a >> 16 & 0xFF)                                                                       \
    X(4, 3, Byte4, a = a >> 24)                                                                              \
    X(4, 4, Word1, a = a & 0xFFFF)                                                                           \
    X(4, 5, Word2, a = a >> 16)                                                                              \
    X(4, 6, ExtendByte, a = uint32_t(int32_t(int8_t(a))))                                                    \
    X(4, 7, ExtendWord, a = uint32_t(int32_t(int16_t(a))))                                                   \
    X(4, 8, ExchangeWords, a = a << 16 | a >> 16)                                                            \
    X(4, 9, ExchangeEnds, a = a << 24 | (a & 0xFF00) << 8 | (a >> 8 & 0xFF00) | a >> 24)

// The same for the carry alone.
#define MAXQ30_CARRY_OPERATIONS(X)                                                                           \
    X(5, 0, ClearCarry, c = 0)                                                                               \
    X(5, 1, SetCarry, c = 1)                                                                                 \
    X(5, 2, ComplementCarry, c ^= 1)                                                                         \
    X(5, 3, NoOperation, )

// Operations of the carry and the accumulator bit that the source index names; `bit` is its value and
// `dst` of the Op its number.
#define MAXQ30_BIT_OPERATIONS(X)                                                                             \
    X(1, AndCarry, c &= bit)                                                                                 \
    X(2, OrCarry, c |= bit)                                                                                  \
    X(3, XorCarry, c ^= bit)                                                                                 \
    X(6, LoadCarry, c = bit)                                                                                 \
    X(7, StoreCarry, a = (a & ~(uint32_t(1) << op->dst)) | c << op->dst)

} // namespace maxq30
