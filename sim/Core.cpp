#include "sim/Core.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace maxq30 {

namespace {

constexpr unsigned InterruptEntryCycles = 2;
constexpr uint32_t PeripheralRequests = (1u << PeripheralModules) - 1;

bool inside(uint32_t address, uint32_t length, uint32_t size)
{
    return address <= size && length <= size - address;
}

bool isAmong(uint32_t word, std::span<const uint32_t> words)
{
    return std::find(words.begin(), words.end(), word) != words.end();
}

} // namespace

Core::Core(uint32_t codeBytes, uint32_t dataBytes) : m_machine(codeBytes, dataBytes) {}

void Core::setCallBacks(MAXQSIMCallBacks* callBacks)
{
    setCallBacks(nullptr, 0);
    m_machine.events = callBacks;
}

void Core::setCallBacks(MAXQSIMExtendedCallBacks* callBacks, unsigned features)
{
    m_machine.events = callBacks;
    m_machine.longEvents = features & MAXQSIM_LongDataAccesses ? callBacks : nullptr;
    m_machine.peripherals = features & MAXQSIM_Peripherals ? callBacks : nullptr;
    // What was decoded for a window of the other kind no longer holds.
    m_machine.forget(0, m_machine.codeWords);
    m_machine.updateAttention();
}

bool Core::openTrace(const std::string& fileName)
{
    m_trace = TraceFile::open(fileName);
    return m_trace != nullptr;
}

void Core::closeTrace()
{
    m_trace.reset();
}

void Core::reset()
{
    m_machine.reset();
    m_pollCount = 0;
}

unsigned Core::step()
{
    Machine& m = m_machine;
    if (m.attention || m_trace) [[unlikely]]
        return stepWithAttention();
    const Op* op = m.next;
    if (!op->run) [[unlikely]]
        m.decode(op);
    unsigned cycles = op->cycles;
    m_cycles += cycles;
    const Op* following = op->run(m, op);
    // A callback may have set IP; it then goes on from there.
    if (m.next == op) [[likely]]
        m.next = following;
    return cycles;
}

// A step when it may be something other than the next instruction, or has to be written down.
unsigned Core::stepWithAttention()
{
    Machine& m = m_machine;
    if (m.stopRequested) {
        m.stopRequested = false;
        m.updateAttention();
    }
    if (m.peripherals && ++m_pollCount >= limits::PeripheralPollInterval) {
        m_pollCount = 0;
        uint32_t pending = m.regs[reg::IIR];
        uint32_t polled = m.peripherals->onPollForInterrupts(pending & PeripheralRequests);
        m.writeRegister(reg::IIR, (pending & ~PeripheralRequests) | (polled & PeripheralRequests));
    }
    if (m.interruptDue()) {
        if (m_trace)
            m_trace->interrupt(m);
        m.push(m.ip());
        m.regs[reg::IC] |= InterruptInService;
        m.next = m.at(m.regs[reg::IV]);
        m.updateAttention();
        m_cycles += InterruptEntryCycles;
        return InterruptEntryCycles;
    }
    const Op* op = m.next;
    if (!op->run)
        m.decode(op);
    unsigned cycles = op->cycles;
    m_cycles += cycles;
    if (m_trace)
        m_trace->before(m, *op);
    const Op* following = op->run(m, op);
    if (m.next == op)
        m.next = following;
    if (m_trace && !m_trace->after(m))
        giveUpTrace();
    return cycles;
}

void Core::giveUpTrace()
{
    closeTrace();
    if (m_machine.events)
        m_machine.events->onMiscError("cannot write the trace file", m_machine.ip() * 2);
}

// A disk that is full is told at the end of a run: when the file is closed nobody listens any more.
void Core::flushTrace()
{
    if (m_trace && !m_trace->flush())
        giveUpTrace();
}

template <bool WithStops> uint64_t Core::runPlain(uint64_t maximum, std::span<const uint32_t> stops)
{
    Machine& m = m_machine;
    std::vector<const Op*> places;
    for (uint32_t word : stops)
        if (word < m.codeWords)
            places.push_back(&m.ops[word]);
    const Op* const* placesEnd = places.data() + places.size();
    uint64_t left = maximum;
    uint64_t cycles = 0;
    const Op* op = m.next;
    do {
        if (!op->run) [[unlikely]]
            m.decode(op);
        cycles += op->cycles;
        m.next = op;
        const Op* following = op->run(m, op);
        if (m.next != op) [[unlikely]]
            following = m.next;
        op = following;
        --left;
        if constexpr (WithStops) {
            const Op* const* place = places.data();
            while (place != placesEnd && *place != op)
                ++place;
            if (place != placesEnd)
                break;
        }
    } while (left && !m.attention);
    m.next = op;
    m_cycles += cycles;
    return maximum - left;
}

uint64_t Core::run(uint64_t maximum, std::span<const uint32_t> stops)
{
    Machine& m = m_machine;
    m.stopRequested = false;
    m.updateAttention();
    uint64_t done = 0;
    while (done < maximum && !m.stopRequested) {
        if (done && isAmong(m.ip(), stops))
            break;
        if (m.attention || m_trace) {
            step();
            ++done;
        } else if (stops.empty()) {
            done += runPlain<false>(maximum - done, stops);
        } else {
            done += runPlain<true>(maximum - done, stops);
        }
    }
    m.stopRequested = false;
    m.updateAttention();
    flushTrace();
    return done;
}

void Core::runAhead(MAXQSIMRunAhead& run)
{
    while (run.steps < run.maximum && !run.interrupted) {
        uint32_t word = m_machine.ip();
        if (run.stops[word & run.stopMask])
            break;
        if (uint32_t offset = word * 2 - run.countBase; offset < run.countSize)
            ++run.counts[offset];
        ++run.steps;
        run.cycles += step();
    }
    flushTrace();
}

void Core::requestStop()
{
    m_machine.stopRequested = true;
    m_machine.attention = true;
}

bool Core::readCode(uint32_t address, uint32_t length, unsigned char* buffer) const
{
    if (!inside(address, length, codeBytes()))
        return false;
    if (length)
        std::memcpy(buffer, m_machine.code.get() + address, length);
    return true;
}

bool Core::writeCode(uint32_t address, uint32_t length, const unsigned char* bytes)
{
    if (!inside(address, length, codeBytes()))
        return false;
    if (length) {
        std::memcpy(m_machine.code.get() + address, bytes, length);
        m_machine.forget(address / 2, (address + length - 1) / 2 - address / 2 + 1);
    }
    return true;
}

bool Core::readData(uint32_t address, uint32_t length, unsigned char* buffer) const
{
    if (address >= limits::CodeWindow)
        return readCode(address - limits::CodeWindow, length, buffer);
    if (!inside(address, length, dataBytes()))
        return false;
    if (length)
        std::memcpy(buffer, m_machine.data.get() + address, length);
    return true;
}

bool Core::writeData(uint32_t address, uint32_t length, const unsigned char* bytes)
{
    if (!inside(address, length, dataBytes()))
        return false;
    if (length)
        std::memcpy(m_machine.data.get() + address, bytes, length);
    return true;
}

uint32_t Core::readRegister(unsigned number)
{
    return number < RegisterNumbers ? m_machine.readRegister(number) : 0;
}

void Core::writeRegister(unsigned number, uint32_t value)
{
    if (number < RegisterNumbers)
        m_machine.writeRegister(number, value);
}

} // namespace maxq30
