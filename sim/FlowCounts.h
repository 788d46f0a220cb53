// How often each instruction was executed, without counting each one. Only what leaves the straight line is
// counted during a run: `Op::taken` at each jump, `enter` where flow arrives that no fixed jump led there. An
// instruction was executed as often as flow came in from the one before it, from fixed jumps and by `enter`.
// Adding this up takes time in proportion to the decoded code.
#pragma once

#include "sim/Zeroed.h"
#include "sim/maxqsim.h"

#include <cstdint>

namespace maxq30 {

struct Op;

class FlowCounts {
public:
    explicit FlowCounts(uint32_t words);

    // Flow arrives at an instruction, or, with -1, goes elsewhere without executing it.
    void enter(uint32_t word, uint64_t times = 1) { m_entered[word] += times; }
    // Adds what the Ops from `low` to `high` have counted to the totals, and lets them begin anew. Flow that
    // has come to `word` has not executed anything there yet.
    void addUp(Op* ops, uint32_t low, uint32_t high, uint32_t word);
    void reset();
    const MAXQSIMCount* totals() const { return m_totals.get(); }

private:
    uint32_t m_words;
    Zeroed<uint64_t> m_entered; // and one behind the last word
    Zeroed<MAXQSIMCount> m_totals;
};

} // namespace maxq30
