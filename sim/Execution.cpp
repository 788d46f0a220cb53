// The decoded code of a Machine, its run loop, and the operations that stand where no instruction does.
#include "sim/Decoder.h"
#include "sim/Machine.h"
#include "sim/Threading.h"
#include "sim/limits.h"
#include "sim/maxqsim.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace maxq30 {

namespace {

// In the place of an instruction at which a stop lies.
bool stopHere(Machine& m, Op* op, uint64_t left, uint64_t cycles, uint32_t)
{
    return leave(m, op, left, cycles);
}

constexpr auto byWord = [](const auto& stop, uint32_t word) { return stop.word < word; };

} // namespace

bool decodeHere(Machine& m, Op* op, uint64_t left, uint64_t cycles, uint32_t acc)
{
    m.decode(op);
    return m.runOf(op)(m, op, left, cycles, acc);
}

bool invalidInstruction(Machine& m, Op* op, uint64_t left, uint64_t cycles, uint32_t)
{
    m.suspend(op, left, cycles);
    if (m.events)
        m.events->onInvalidInstruction(m.wordOf(op) * 2);
    return proceedAfterCallingOut(m, op, op + op->words, left, cycles + op->cycles);
}

bool fetchFault(Machine& m, Op* op, uint64_t left, uint64_t cycles, uint32_t)
{
    m.suspend(op, left, cycles);
    if (m.events)
        m.events->onCodeError(op->imm);
    if (op != &m.outside) { // an instruction that goes to itself
        ++op->taken;
        m.flow.enter(m.wordOf(op));
    }
    return proceedAfterCallingOut(m, op, op, left, cycles + op->cycles);
}

bool executeOutside(Machine& m, Op* op, uint64_t left, uint64_t cycles, uint32_t acc)
{
    return m.isStop(m.outsideIp) ? leave(m, op, left, cycles) : fetchFault(m, op, left, cycles, acc);
}

bool runOffTheEnd(Machine& m, Op*, uint64_t left, uint64_t cycles, uint32_t acc)
{
    return executeOutside(m, m.at(m.codeWords), left, cycles, acc);
}

// While operations run. What was put off meanwhile is done at the end.
struct Machine::Executing {
    Executing(Machine& machine, uint64_t& steps) : m(machine), done(steps) { m.m_executing = true; }
    ~Executing()
    {
        done += maximum - m.left;
        m.m_executing = false;
        if (m.m_forgetEnd) {
            m.forgetNow(m.m_forgetLow, m.m_forgetEnd - m.m_forgetLow);
            m.m_forgetLow = std::numeric_limits<uint32_t>::max();
            m.m_forgetEnd = 0;
            m.updateAttention();
        }
    }
    Machine& m;
    uint64_t& done;
    uint64_t maximum = m.left;
};

void Machine::execute(uint64_t maximum, uint64_t& done)
{
    if (next == &ops[codeWords])
        next = at(codeWords);
    if (flowAt != next) { // IP was set since the last run
        if (flowAt != &outside)
            flow.enter(wordOf(flowAt), uint64_t(-1));
        if (next != &outside)
            flow.enter(wordOf(next));
        flowAt = next;
    }
    m_counted = true;
    left = maximum;
    Executing executing(*this, done);
    Op::Run first = next == &outside ? fetchFault : runOf(next);
    bool goesOn = first(*this, next, left, cycles, *acc);
    while (goesOn)
        goesOn = next->run(*this, next, left, cycles, *acc);
}

void Machine::decode(Op* op)
{
    uint32_t word = wordOf(op);
    m_decodedLow = std::min(m_decodedLow, word);
    m_decodedHigh = std::max(m_decodedHigh, word);
    Op decoded = decodeAt(*this, word);
    runOf(op) = decoded.run;
    decoded.run = op->run;
    *op = decoded;
    lead(op + op->words);
    if (op->src == Op::FixedTarget)
        lead(op + int32_t(op->imm));
}

void Machine::decodeNext()
{
    if (ip() < codeWords && !next->words)
        decode(next);
}

void Machine::forget(uint32_t word, uint32_t count)
{
    if (m_executing) {
        m_forgetLow = std::min(m_forgetLow, word);
        m_forgetEnd = std::max(m_forgetEnd, word + count);
        attention = true;
        return;
    }
    forgetNow(word, count);
}

void Machine::forgetNow(uint32_t word, uint32_t count)
{
    counts();
    // Prefix words before the first one may belong to the same instruction.
    uint32_t low = word - std::min(word, limits::MaximumPrefixes);
    low = std::max(low, m_decodedLow);
    uint64_t end = std::min<uint64_t>(uint64_t(word) + count, uint64_t(m_decodedHigh) + 1);
    for (uint64_t i = low; i < end; ++i) {
        if (!ops[i].words)
            continue;
        runOf(&ops[i]) = decodeHere;
        ops[i].words = 0;
    }
}

void Machine::setStops(std::span<const uint32_t> words)
{
    if (std::equal(words.begin(), words.end(), m_stops.begin(), m_stops.end(),
                   [](uint32_t word, const Stop& stop) { return word == stop.word; }))
        return;
    for (const Stop& stop : m_stops)
        if (stop.word < codeWords)
            ops[stop.word].run = stop.run;
    std::vector<uint32_t> ascending(words.begin(), words.end());
    std::sort(ascending.begin(), ascending.end());
    ascending.erase(std::unique(ascending.begin(), ascending.end()), ascending.end());
    m_stops.clear();
    for (uint32_t word : ascending) {
        m_stops.push_back({word, nullptr});
        if (word < codeWords)
            m_stops.back().run = std::exchange(at(word)->run, stopHere);
    }
}

bool Machine::isStop(uint32_t word) const
{
    if (word < codeWords)
        return ops[word].run == stopHere;
    auto stop = std::lower_bound(m_stops.begin(), m_stops.end(), word, byWord);
    return stop != m_stops.end() && stop->word == word;
}

Op::Run& Machine::runOf(Op* op)
{
    if (op->run != stopHere) [[likely]]
        return op->run;
    return std::lower_bound(m_stops.begin(), m_stops.end(), wordOf(op), byWord)->run;
}

const MAXQSIMCount* Machine::counts()
{
    if (m_counted)
        flow.addUp(ops.get(), m_decodedLow, m_decodedHigh, flowAt == &outside ? codeWords : wordOf(flowAt));
    m_counted = m_executing;
    return flow.totals();
}

void Machine::resetCounts()
{
    counts();
    flow.reset();
}

} // namespace maxq30
