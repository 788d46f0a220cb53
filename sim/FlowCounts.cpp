#include "sim/FlowCounts.h"
#include "sim/Machine.h"
#include "sim/limits.h"

namespace maxq30 {

FlowCounts::FlowCounts(uint32_t words)
    : m_words(words), m_entered(zeroed<uint64_t>(words + 1)), m_totals(zeroed<MAXQSIMCount>(words))
{
}

void FlowCounts::addUp(Op* ops, uint32_t low, uint32_t high, uint32_t word)
{
    enter(word, uint64_t(-1));
    for (uint32_t i = low; i <= high; ++i)
        if (ops[i].taken && ops[i].src == Op::FixedTarget)
            enter(i + ops[i].imm, ops[i].taken);
    // What falls through to the words behind, by the low bits of the address.
    constexpr unsigned Ahead = 8;
    static_assert(limits::MaximumPrefixes + 1 < Ahead);
    uint64_t falling[Ahead] = {};
    for (uint32_t i = low; i <= high; ++i) {
        Op& op = ops[i];
        uint64_t executed = m_entered[i] + falling[i % Ahead];
        m_entered[i] = falling[i % Ahead] = 0;
        if (!executed)
            continue;
        m_totals[i].executed += executed;
        m_totals[i].taken += op.taken;
        falling[(i + op.words) % Ahead] += executed - op.taken;
        op.taken = 0;
    }
    for (uint32_t i = high + 1; i < high + Ahead && i <= m_words; ++i)
        enter(i, falling[i % Ahead]);
    enter(word);
}

void FlowCounts::reset()
{
    // Only what was used is written, so that the rest stays without memory.
    for (uint32_t i = 0; i < m_words; ++i)
        if (m_totals[i].executed)
            m_totals[i] = {};
}

} // namespace maxq30
