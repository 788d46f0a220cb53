#include "sim/Core.h"

#include "sim/limits.h"
#include "sim/maxqsim.h"

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

} // namespace

Core::Core(uint32_t codeBytes, uint32_t dataBytes) : m_machine(codeBytes, dataBytes) {}

void Core::setCallBacks(MAXQSIMCallBacks* callBacks)
{
    setCallBacks(callBacks, nullptr, nullptr);
}

void Core::setCallBacks(MAXQSIMExtendedCallBacks* callBacks, unsigned features)
{
    setCallBacks(callBacks, features & MAXQSIM_LongDataAccesses ? callBacks : nullptr,
                 features & MAXQSIM_Peripherals ? callBacks : nullptr);
}

void Core::setCallBacks(MAXQSIMCallBacks* events, MAXQSIMExtendedCallBacks* longEvents,
                        MAXQSIMExtendedCallBacks* peripherals)
{
    m_machine.events = events;
    m_machine.longEvents = longEvents;
    if (m_machine.peripherals != peripherals) {
        // What was decoded for a window of the other kind no longer holds.
        m_machine.peripherals = peripherals;
        m_machine.forget(0, m_machine.codeWords);
        m_pollAt = m_steps + limits::PeripheralPollInterval - 1;
    }
    m_machine.updateWatched();
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
    m_pollAt = m_steps + limits::PeripheralPollInterval - 1;
}

unsigned Core::step()
{
    Machine& m = m_machine;
    m.stopRequested = false;
    uint64_t before = m.cycles;
    advance(m_steps + 1);
    return unsigned(m.cycles - before);
}

// At least one step, up to the number `end`: entries into interrupts are steps of their own, and so is each
// instruction while a trace is written.
void Core::advance(uint64_t end)
{
    Machine& m = m_machine;
    if (m.peripherals) {
        if (m_steps >= m_pollAt)
            pollPeripherals();
        end = std::min(end, m_pollAt);
    }
    if (m.attention)
        m.updateAttention();
    if (m.interruptDue()) {
        enterInterrupt();
    } else if (m_trace) {
        m.decodeNext();
        m_trace->before(m, *m.next);
        m.execute(1, m_steps);
        if (!m_trace->after(m))
            giveUpTrace();
    } else {
        m.execute(end - m_steps, m_steps);
    }
}

void Core::pollPeripherals()
{
    Machine& m = m_machine;
    m_pollAt = m_steps + limits::PeripheralPollInterval;
    uint32_t pending = m.regs[reg::IIR];
    uint32_t polled = m.peripherals->onPollForInterrupts(pending & PeripheralRequests);
    m.writeRegister(reg::IIR, (pending & ~PeripheralRequests) | (polled & PeripheralRequests));
}

void Core::enterInterrupt()
{
    Machine& m = m_machine;
    if (m_trace)
        m_trace->interrupt(m);
    m.push(m.ip());
    m.regs[reg::IC] |= InterruptInService;
    m.next = m.at(m.regs[reg::IV]);
    m.updateAttention();
    m.cycles += InterruptEntryCycles;
    ++m_steps;
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

void Core::runTo(uint64_t end, bool fromStop)
{
    Machine& m = m_machine;
    m.stopRequested = false;
    while (m_steps < end && !m.stopRequested && (fromStop || !m.isStop(m.ip()))) {
        advance(end);
        fromStop = false;
    }
    m.stopRequested = false;
    m.updateAttention();
    flushTrace();
}

uint64_t Core::run(uint64_t maximum)
{
    uint64_t before = m_steps;
    runTo(before + std::min(maximum, UINT64_MAX - before), true);
    return m_steps - before;
}

void Core::run(MAXQSIMRun& run)
{
    struct Account { // also when a callback throws
        ~Account()
        {
            run.steps = core.m_steps - steps;
            run.cycles = core.cycles() - cycles;
            run.atStop = core.m_machine.isStop(core.ip());
        }
        Core& core;
        MAXQSIMRun& run;
        uint64_t steps = core.m_steps;
        uint64_t cycles = core.cycles();
    } account{*this, run};
    runTo(m_steps + std::min<uint64_t>(run.maximum, UINT64_MAX - m_steps), run.fromStop);
}

MAXQSIMCount Core::count(uint32_t word)
{
    return word < m_machine.codeWords ? m_machine.counts()[word] : MAXQSIMCount{};
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
