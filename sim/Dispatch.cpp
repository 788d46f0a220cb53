#include "sim/Dispatch.h"
#include "sim/Operands.h"
#include "sim/Threading.h"

#include <array>

namespace maxq30 {

namespace {

// The place behind an instruction. Its length is a template argument where that saves the look at the Op,
// which everything behind it would wait for; 0 stands for any.
template <unsigned Words> Op* behind(Op* op)
{
    return op + (Words ? Words : op->words);
}

// Whether the accesses of an instruction are quick. An access through the same pointer as the one before it
// depends on that.
template <class Source, class Destination> bool isQuick(const Machine& m, const Op* op)
{
    if constexpr (Source::reach == Reach::Memory && Destination::reach == Reach::Memory)
        return op->src != op->dst && Source::isQuick(m, op) && Destination::isQuick(m, op);
    else if constexpr (Source::reach == Reach::Memory)
        return Source::isQuick(m, op);
    else if constexpr (Destination::reach == Reach::Memory)
        return Destination::isQuick(m, op);
    else
        return true;
}

// An operation for each pair of a source and a destination.

template <class Source, class Destination>
[[gnu::noinline]] bool carryCallingOut(Machine& m, Op* op, uint64_t left, uint64_t cycles, uint32_t acc)
{
    m.suspend(op, left, cycles);
    uint32_t value = Source::template read<Checked>(m, op, acc);
    acc = *m.acc; // a callback may have written it
    Destination::template write<Checked>(m, op, value, acc);
    return proceedAfterCallingOut(m, op, behind<0>(op), left, cycles + op->cycles);
}

template <class Source, class Destination, unsigned Words>
[[gnu::flatten]] bool carry(Machine& m, Op* op, uint64_t left, uint64_t cycles, uint32_t acc)
{
    if (!isQuick<Source, Destination>(m, op)) [[unlikely]]
        return carryCallingOut<Source, Destination>(m, op, left, cycles, acc);
    uint32_t value = Source::template read<Direct>(m, op, acc);
    Destination::template write<Direct>(m, op, value, acc);
    return proceed(m, behind<Words>(op), left, cycles + op->cycles, acc);
}

template <class Place>
[[gnu::noinline]] bool changeCallingOut(Machine& m, Op* op, uint64_t left, uint64_t cycles, uint32_t acc)
{
    m.suspend(op, left, cycles);
    Place::template change<Checked>(m, op, acc);
    return proceedAfterCallingOut(m, op, behind<0>(op), left, cycles + op->cycles);
}

template <class Place>
[[gnu::flatten]] bool change(Machine& m, Op* op, uint64_t left, uint64_t cycles, uint32_t acc)
{
    if (!isQuick<source::Immediate, Place>(m, op)) [[unlikely]]
        return changeCallingOut<Place>(m, op, left, cycles, acc);
    Place::template change<Direct>(m, op, acc);
    return proceed(m, behind<0>(op), left, cycles + op->cycles, acc);
}

// A jump whose target the Op itself knows.
struct Fixed : source::Immediate {};

template <class Access, class Source> Op* target(Machine& m, Op* op, uint32_t acc)
{
    if constexpr (std::is_same_v<Source, Fixed>) {
        return op + int32_t(op->imm);
    } else {
        uint32_t word = Source::template read<Access>(m, op, acc);
        if (word < m.codeWords)
            m.flow.enter(word);
        return m.at(word);
    }
}

template <class Condition> constexpr bool isCall = std::is_same_v<Condition, condition::Call>;
template <class Condition>
constexpr bool isLoop =
    std::is_same_v<Condition, condition::LoopZero> || std::is_same_v<Condition, condition::LoopOne>;

template <class Source, class Condition>
[[gnu::noinline]] bool jumpCallingOut(Machine& m, Op* op, uint64_t left, uint64_t cycles, uint32_t acc)
{
    Op* following = behind<0>(op);
    m.suspend(op, left, cycles);
    if (Condition::isMet(m, acc)) {
        uint32_t back = m.wordOf(following);
        following = target<Checked, Source>(m, op, acc);
        if constexpr (isCall<Condition>)
            destination::Push::write<Checked>(m, op, back, acc);
        ++op->taken;
    }
    return proceedAfterCallingOut(m, op, following, left, cycles + op->cycles);
}

template <class Source, class Condition, unsigned Words>
[[gnu::flatten]] bool jump(Machine& m, Op* op, uint64_t left, uint64_t cycles, uint32_t acc)
{
    using Stack = std::conditional_t<isCall<Condition>, destination::Push, destination::Nul>;
    Op* following = behind<Words>(op);
    // A condition that changes something must not be asked twice.
    if constexpr (isLoop<Condition> && Source::reach == Reach::Memory)
        return jumpCallingOut<Source, Condition>(m, op, left, cycles, acc);
    if (!Condition::isMet(m, acc))
        return proceed(m, following, left, cycles + op->cycles, acc);
    if (!isQuick<Source, Stack>(m, op)) [[unlikely]]
        return jumpCallingOut<Source, Condition>(m, op, left, cycles, acc);
    uint32_t back = isCall<Condition> ? m.wordOf(following) : 0;
    following = target<Direct, Source>(m, op, acc);
    Stack::template write<Direct>(m, op, back, acc);
    ++op->taken;
    return proceed(m, following, left, cycles + op->cycles, acc);
}

// From the kinds to the functions.

template <class Source, class Destination, unsigned Words> constexpr Op::Run carrying()
{
    if constexpr (Source::reach == Reach::Outside || Destination::reach == Reach::Outside)
        return carryCallingOut<Source, Destination>;
    else
        return carry<Source, Destination, Words>;
}

template <class Source, class Condition, unsigned Words> constexpr Op::Run jumping()
{
    if constexpr (Source::reach == Reach::Outside)
        return jumpCallingOut<Source, Condition>;
    else
        return jump<Source, Condition, Words>;
}

template <class Place> constexpr Op::Run changing()
{
    if constexpr (Place::reach == Reach::Outside)
        return changeCallingOut<Place>;
    else
        return change<Place>;
}

using Jumps = std::array<Op::Run, JumpKinds>;
using Destinations = std::array<Op::Run, DestinationKinds>;
using Transports = std::array<Destinations, SourceKinds>;

template <class Source, unsigned Words> constexpr Jumps jumpsTo()
{
    return {
#define X(name, ...) jumping<Source, condition::name, Words>(),
        MAXQ30_JUMPS(X)
#undef X
    };
}

template <class Source, unsigned Words> constexpr Destinations transportsOf()
{
    return {
#define X(name, ...) carrying<Source, destination::name, Words>(),
        MAXQ30_PLACES(X) MAXQ30_SINKS(X) MAXQ30_ARITHMETIC(X) MAXQ30_TESTS(X)
#undef X
#define X(name, ...) jumping<Source, condition::name, Words>(),
            MAXQ30_JUMPS(X)
#undef X
    };
}

template <unsigned Words> constexpr Transports transportsOfLength()
{
    return {
#define X(name) transportsOf<source::name, Words>(),
        MAXQ30_SOURCES(X)
#undef X
    };
}

// By the number of words; the first stands for all longer ones.
constexpr size_t Lengths = 3;
constexpr std::array<Transports, Lengths> TransportTable = {transportsOfLength<0>(), transportsOfLength<1>(),
                                                            transportsOfLength<2>()};
constexpr std::array<Jumps, Lengths> FixedJumpTable = {jumpsTo<Fixed, 0>(), jumpsTo<Fixed, 1>(),
                                                       jumpsTo<Fixed, 2>()};

constexpr std::array<Op::Run, PlaceKinds> BitChangeTable = {
#define X(name) changing<destination::name>(),
    MAXQ30_PLACES(X)
#undef X
};

constexpr size_t lengthIndex(unsigned words)
{
    return words < Lengths ? words : 0;
}

// The operations without operands.

#define X(destinationIndex, sourceIndex, name, statement)                                                    \
    template <unsigned Words>                                                                                \
    bool operate##name(Machine& m, Op* op, uint64_t left, uint64_t cycles, uint32_t acc)                     \
    {                                                                                                        \
        uint32_t a = acc;                                                                                    \
        [[maybe_unused]] uint32_t& c = m.carry;                                                              \
        statement;                                                                                           \
        destination::Accumulator::write<Direct>(m, op, a, acc);                                              \
        return proceed(m, behind<Words>(op), left, cycles + op->cycles, acc);                                \
    }
MAXQ30_ACCUMULATOR_OPERATIONS(X)
#undef X

#define X(destinationIndex, sourceIndex, name, statement)                                                    \
    template <unsigned Words>                                                                                \
    bool operate##name(Machine& m, Op* op, uint64_t left, uint64_t cycles, uint32_t acc)                     \
    {                                                                                                        \
        [[maybe_unused]] uint32_t& c = m.carry;                                                              \
        statement;                                                                                           \
        return proceed(m, behind<Words>(op), left, cycles + op->cycles, acc);                                \
    }
MAXQ30_CARRY_OPERATIONS(X)
#undef X

#define X(destinationIndex, name, statement)                                                                 \
    template <unsigned Words>                                                                                \
    bool operate##name(Machine& m, Op* op, uint64_t left, uint64_t cycles, uint32_t acc)                     \
    {                                                                                                        \
        uint32_t& a = acc;                                                                                   \
        [[maybe_unused]] uint32_t bit = a >> op->dst & 1;                                                    \
        uint32_t& c = m.carry;                                                                               \
        statement;                                                                                           \
        *m.acc = acc;                                                                                        \
        return proceed(m, behind<Words>(op), left, cycles + op->cycles, acc);                                \
    }
MAXQ30_BIT_OPERATIONS(X)
#undef X

} // namespace

Op::Run transport(SourceKind source, DestinationKind destination, unsigned words)
{
    return TransportTable[lengthIndex(words)][size_t(source)][size_t(destination)];
}

Op::Run fixedJump(DestinationKind kind, unsigned words)
{
    return FixedJumpTable[lengthIndex(words)][size_t(kind) - PlainKinds];
}

Op::Run bitChange(DestinationKind place)
{
    return size_t(place) < PlaceKinds ? BitChangeTable[size_t(place)] : nullptr;
}

Op::Run accumulatorOperation(unsigned destinationIndex, unsigned sourceIndex, unsigned words)
{
    switch (destinationIndex << 8 | sourceIndex) {
#define X(d, s, name, statement)                                                                             \
    case (d) << 8 | (s): return words == 1 ? operate##name<1> : operate##name<0>;
        MAXQ30_ACCUMULATOR_OPERATIONS(X)
        MAXQ30_CARRY_OPERATIONS(X)
#undef X
    }
    return nullptr;
}

Op::Run bitOperation(unsigned destinationIndex, unsigned words)
{
    switch (destinationIndex) {
#define X(d, name, statement)                                                                                \
    case d: return words == 1 ? operate##name<1> : operate##name<0>;
        MAXQ30_BIT_OPERATIONS(X)
#undef X
    }
    return nullptr;
}

} // namespace maxq30
