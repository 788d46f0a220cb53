#include "sim/Dispatch.h"
#include "sim/Operands.h"

#include <array>

namespace maxq30 {

namespace {

// An operation for each pair of a source and a destination.

template <class Source, class Destination> const Op* carry(Machine& m, const Op* op)
{
    Destination::write(m, op, Source::read(m, op));
    return op + op->words;
}

#define X(name, condition)                                                                                   \
    template <class Source> const Op* go##name(Machine& m, const Op* op)                                     \
    {                                                                                                        \
        if (!(condition))                                                                                    \
            return op + op->words;                                                                           \
        uint32_t target = Source::read(m, op);                                                               \
        if constexpr (DestinationKind::name == DestinationKind::Call)                                        \
            m.push(uint32_t(op - m.ops.get()) + op->words);                                                  \
        return m.at(target);                                                                                 \
    }
MAXQ30_JUMPS(X)
#undef X

#define X(name) +1
constexpr size_t Places = 0 MAXQ30_PLACES(X);
constexpr size_t Sources = 0 MAXQ30_SOURCES(X);
constexpr size_t Plain = 0 MAXQ30_PLACES(X) MAXQ30_SINKS(X);
#undef X
#define X(name, condition) +1
constexpr size_t Destinations = Plain MAXQ30_JUMPS(X);
#undef X

using Row = std::array<Op::Run, Destinations>;

template <class Source> constexpr Row row()
{
    return {
#define X(name) carry<Source, destination::name>,
        MAXQ30_PLACES(X) MAXQ30_SINKS(X)
#undef X
#define X(name, condition) go##name<Source>,
            MAXQ30_JUMPS(X)
#undef X
    };
}

constexpr std::array<Row, Sources> transports = {
#define X(name) row<source::name>(),
    MAXQ30_SOURCES(X)
#undef X
};

template <class Place> const Op* change(Machine& m, const Op* op)
{
    Place::change(m, op);
    return op + op->words;
}

constexpr std::array<Op::Run, Places> bitChanges = {
#define X(name) change<destination::name>,
    MAXQ30_PLACES(X)
#undef X
};

// The operations without operands.

#define X(destinationIndex, sourceIndex, name, statement)                                                    \
    const Op* operate##name(Machine& m, const Op* op)                                                        \
    {                                                                                                        \
        uint32_t& a = *m.acc;                                                                                \
        [[maybe_unused]] uint32_t& c = m.carry;                                                              \
        statement;                                                                                           \
        m.accumulatorWritten();                                                                              \
        return op + op->words;                                                                               \
    }
MAXQ30_ACCUMULATOR_OPERATIONS(X)
#undef X

#define X(destinationIndex, sourceIndex, name, statement)                                                    \
    const Op* operate##name(Machine& m, const Op* op)                                                        \
    {                                                                                                        \
        [[maybe_unused]] uint32_t& c = m.carry;                                                              \
        statement;                                                                                           \
        return op + op->words;                                                                               \
    }
MAXQ30_CARRY_OPERATIONS(X)
#undef X

#define X(destinationIndex, name, statement)                                                                 \
    const Op* operate##name(Machine& m, const Op* op)                                                        \
    {                                                                                                        \
        [[maybe_unused]] uint32_t bit = *m.acc >> op->dst & 1;                                               \
        uint32_t& c = m.carry;                                                                               \
        statement;                                                                                           \
        return op + op->words;                                                                               \
    }
MAXQ30_BIT_OPERATIONS(X)
#undef X

} // namespace

Op::Run transport(SourceKind source, DestinationKind destination)
{
    return transports[size_t(source)][size_t(destination)];
}

Op::Run bitChange(DestinationKind place)
{
    return size_t(place) < Places ? bitChanges[size_t(place)] : nullptr;
}

Op::Run accumulatorOperation(unsigned destinationIndex, unsigned sourceIndex)
{
    switch (destinationIndex << 8 | sourceIndex) {
#define X(d, s, name, statement)                                                                             \
    case (d) << 8 | (s): return operate##name;
        MAXQ30_ACCUMULATOR_OPERATIONS(X)
        MAXQ30_CARRY_OPERATIONS(X)
#undef X
    }
    return nullptr;
}

Op::Run bitOperation(unsigned destinationIndex)
{
    switch (destinationIndex) {
#define X(d, name, statement)                                                                                \
    case d: return operate##name;
        MAXQ30_BIT_OPERATIONS(X)
#undef X
    }
    return nullptr;
}

} // namespace maxq30
